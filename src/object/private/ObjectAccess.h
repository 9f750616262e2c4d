#pragma once

#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>

namespace Zx3D {

/// What the variant's stored form needs of a writer's insides.
class TWriterAccess {
public:
  static TStream* GetStream(const TObjectWriter* writer) {
    return writer != nullptr ? writer->m_Stream : nullptr;
  }
};

/// What the variant's stored form needs of a reader's insides.
class TReaderAccess {
public:
  static TStream* GetStream(const TObjectReader* reader) {
    return reader != nullptr ? reader->m_Stream : nullptr;
  }
  static bool ReadPadding(TObjectReader& reader, unsigned long length) {
    return reader._ReadPadding(length);
  }
  static const char* ReadText(TObjectReader& reader, unsigned long length) {
    return reader._ReadText(length);
  }
};

/// Bytes that fill a narrow string of `length` bytes up to a multiple of 4.
constexpr unsigned long GetPadding(unsigned long length) { return (0UL - length) & 3UL; }

/// Strings up to this many bytes are read through the scratch; longer ones go where they will stay,
/// so that they never lie in memory twice.
constexpr unsigned long kScratchMax = 0x40000;

} // namespace Zx3D
