#pragma once

#include <string>

#include <ZxCore3D/object/TVariant.h>
#include <ZxCore3D/types/Export.h>

// Variants and attributes in the persistent format (docs/formats.md), through an object writer and
// an object reader. Each is false where the stream fails, where there is none, and as told below.

namespace Zx3D {

class TObjectReader;
class TObjectWriter;

/// Writes a variant: its tag, then its data. False for tags without a stored form (references,
/// vectors of anything but int32, arrays of vectors).
ZX_CORE3D_API bool SaveVariant(TObjectWriter* writer, const TVariant& value);

/// Writes the data form of tag `type`, to which a scalar `value` is converted. Raises `TZxMessage`
/// "TVariant::Get failed" for a scalar `type` where `value` is no scalar.
ZX_CORE3D_API bool SaveVariantData(TObjectWriter* writer, DATA_TYPE type, const TVariant& value);

/// Writes an attribute: the name (`~0` measures) as a narrow string, then the variant. A reader
/// takes names of up to 31 bytes.
ZX_CORE3D_API bool SaveAttribute(TObjectWriter* writer, const char* name, unsigned long length,
                                 const TVariant& value);
ZX_CORE3D_API bool SaveAttribute(TObjectWriter* writer, const std::string& name,
                                 const TVariant& value);

/// Reads a variant: its tag, then its data.
ZX_CORE3D_API bool LoadVariant(TObjectReader* reader, TVariant& value);

/// Reads the data form of tag `type` into `value`. A failing load of an array leaves an array of
/// zeros, or nothing where that array would take more memory than the bytes that can still come.
ZX_CORE3D_API bool LoadVariantData(TObjectReader* reader, DATA_TYPE type, TVariant& value);

/// Reads an attribute. A stored name of more than 31 bytes is false, with its length consumed.
ZX_CORE3D_API bool LoadAttribute(TObjectReader* reader, std::string& name, TVariant& value);

} // namespace Zx3D
