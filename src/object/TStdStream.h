#pragma once

#include <ZxBaseKit/TZxStream.h>

#include <ZxCore3D/object/TStream.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// Shows a `TStream` to the family's libraries as a `TZxStream`. The wrapped stream isn't owned and
/// has to outlive this object. Without one, counts are 0 and results false.
class ZX_CORE3D_API TStdStream : public TZxStream {
public:
  /// Wraps `stream`, which may be null.
  explicit TStdStream(TStream* stream);

  /// Leaves the wrapped stream alone.
  ~TStdStream() override;

  unsigned long Read(void* data, unsigned long size) override;
  unsigned long Write(const void* data, unsigned long size) override;
  unsigned long getSize() override;
  bool setSize(unsigned long size) override;
  /// The wrapped stream's position, in bytes from the beginning.
  unsigned long getPosition() override;
  /// Moves the wrapped stream; false where it does not move.
  bool setPosition(unsigned long position) override;
  operator bool() override;

private:
  TStream* m_Stream;
};

} // namespace Zx3D
