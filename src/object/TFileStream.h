#pragma once

#include <string>

#include <ZxCore3D/object/TStream.h>
#include <ZxCore3D/types/Export.h>

class QFile;

namespace Zx3D {

/// A file as a stream: closed, open for reading, or open for writing. On a closed stream every
/// operation fails, with 0 or false. Names are UTF-8. Mapping works by copying.
class ZX_CORE3D_API TFileStream : public TStream {
public:
  /// A closed stream.
  TFileStream();

  /// Closes the file; a failing flush goes unreported.
  ~TFileStream() override;

  /// Opens an existing file for reading, after closing any other. False when there is none or it
  /// can't be opened: the stream is closed then.
  bool Open(const std::string& name);

  /// Opens a file for writing and empties it, after closing any other. False, and closed, when it
  /// can't be made.
  bool Create(const std::string& name);

  /// Flushes and closes. False if no file is open or the flush fails.
  bool Close();

  bool IsEOS() override;
  bool SetEOS() override;
  /// The position, in bytes from the beginning; 0 on a closed stream.
  long GetPos() const override;
  bool SetPos(long position) override;
  /// The length of the file in bytes; 0 on a closed stream.
  long GetSize() const override;

  /// Cuts or grows the file. A position above the new size moves down to it.
  bool SetSize(long size) override;

  /// The device's result as it is: an error is -1 made unsigned.
  unsigned long _Read(void* data, unsigned long size) override;

  /// The device's result as it is: an error is -1 made unsigned.
  unsigned long _Write(const void* data, unsigned long size) override;

  bool Skip(unsigned long size) override;

private:
  bool _Open(const std::string& name, bool write);

  QFile* m_File;
};

} // namespace Zx3D
