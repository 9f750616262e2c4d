#pragma once

#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// What stands behind a handle from `TStream::Map`. Made with `malloc`, released with `free`.
struct TStreamMapping {
  long Offset;           ///< where the range begins in the stream
  unsigned long Size;    ///< its length in bytes
  void* Data;            ///< the mapped bytes
  bool Read;             ///< the bytes were asked for
  bool Write;            ///< the bytes go back to the stream at `Unmap`
  unsigned int Reserved; ///< 0
};

/// A stream of bytes with a position. One stream belongs to one thread at a time. Failures are
/// results; the operations that end in `E` throw a `TZxMessage` instead. Streams can't be copied.
class ZX_CORE3D_API TStream {
public:
  TStream() = default;
  TStream(const TStream&) = delete;
  TStream& operator=(const TStream&) = delete;
  virtual ~TStream();

  /// True when nothing is left to read at the position.
  virtual bool IsEOS() = 0;

  /// Cuts the stream at the position.
  virtual bool SetEOS() = 0;

  /// Reads a line of text. The default knows no lines: false.
  virtual bool ReadLine(char* buffer, unsigned long bufferSize, unsigned long* length);

  /// The position, in bytes from the beginning.
  virtual long GetPos() const = 0;

  /// `GetPos`, under the name of the throwing forms: it never throws.
  virtual long GetPosE() const;

  /// Moves to `position`, in bytes from the beginning.
  virtual bool SetPos(long position) = 0;

  /// `SetPos`; throws a `TZxMessage` "TStream::SetPosE failed!" where that is false.
  virtual bool SetPosE(long position);

  /// The length in bytes.
  virtual long GetSize() const = 0;

  /// Cuts or grows the stream to `size` bytes.
  virtual bool SetSize(long size) = 0;

  /// Reads exactly `size` bytes, by as many `_Read` calls as it takes. False when the stream ends
  /// or fails before; what was read so far stays read. 0 bytes are always true.
  virtual bool ReadAll(void* data, unsigned long size);

  /// `ReadAll`; throws a `TZxMessage` "TStream::ReadAll failed!" where that is false.
  virtual bool ReadAllE(void* data, unsigned long size);

  /// Writes exactly `size` bytes, by as many `_Write` calls as it takes. False when the stream
  /// takes no more; what was written so far stays. 0 bytes are always true.
  virtual bool WriteAll(const void* data, unsigned long size);

  /// One read of up to `size` bytes: the count that was read, 0 at the end. A device's error comes
  /// through as it is, as -1 made unsigned.
  virtual unsigned long _Read(void* data, unsigned long size) = 0;

  /// One write of up to `size` bytes: the count that was written, with errors as in `_Read`.
  virtual unsigned long _Write(const void* data, unsigned long size) = 0;

  /// Moves the position `size` bytes on.
  virtual bool Skip(unsigned long size) = 0;

  /// Makes the bytes from `offset` on addressable, and stores where they are in `*data`. With
  /// `read` the block is filled from the stream; with `write`, `Unmap` writes it back. The default
  /// works on a copy, and the position stays behind what was read. Returns a handle for `Unmap`, or
  /// null.
  virtual void* Map(long offset, unsigned long size, bool read, bool write, void** data);

  /// Ends a mapping and releases its handle. False for null and when writing back fails.
  virtual bool Unmap(void* mapping);

  /// Whether `Map` works without copying.
  virtual bool SupportMap();
};

} // namespace Zx3D
