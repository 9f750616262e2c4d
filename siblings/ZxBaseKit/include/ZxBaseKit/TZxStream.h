#pragma once

#include <ZxBaseKit/Export.h>

/// The family's byte stream, as its libraries pass it between each other. One object belongs to one
/// thread at a time. The defaults of this base are those of a stream without bytes.
class ZX_BASEKIT_API TZxStream {
public:
  TZxStream() = default;
  TZxStream(const TZxStream&) = delete;
  TZxStream& operator=(const TZxStream&) = delete;
  virtual ~TZxStream();

  /// Reads up to `size` bytes at the position and moves it; returns how many were read.
  virtual unsigned long Read(void* data, unsigned long size);

  /// Writes up to `size` bytes at the position and moves it; returns how many were written.
  virtual unsigned long Write(const void* data, unsigned long size);

  /// The stream's length in bytes.
  virtual unsigned long getSize();

  /// Cuts or grows the stream to `size` bytes.
  virtual bool setSize(unsigned long size);

  /// The position, in bytes from the beginning.
  virtual unsigned long getPosition();
  /// Moves to `position`; false where that is not possible.
  virtual bool setPosition(unsigned long position);

  /// Whether there is something to read from or write to.
  virtual operator bool();
};
