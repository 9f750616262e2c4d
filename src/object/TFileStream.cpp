#include <ZxCore3D/object/TFileStream.h>

#include <climits>
#include <memory>
#include <new>

#include <QtCore/QFile>
#include <QtCore/QString>
#include <unistd.h>

namespace Zx3D {

TFileStream::TFileStream() : m_File(nullptr) {}

TFileStream::~TFileStream() { Close(); }

bool TFileStream::_Open(const std::string& name, bool write) {
  Close();
  // Names that no file can have: the file layer would complain about them on the error output.
  if (name.empty() || name.size() > INT_MAX || name.find('\0') != std::string::npos) {
    return false;
  }
  try {
    auto file =
        std::make_unique<QFile>(QString::fromUtf8(name.data(), static_cast<int>(name.size())));
    if ((!write && !file->exists()) ||
        !file->open(write ? QIODevice::WriteOnly : QIODevice::ReadOnly)) {
      return false;
    }
    m_File = file.release();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool TFileStream::Open(const std::string& name) { return _Open(name, false); }

bool TFileStream::Create(const std::string& name) { return _Open(name, true); }

bool TFileStream::Close() {
  if (m_File == nullptr) {
    return false;
  }
  const bool flushed = m_File->flush();
  delete m_File;
  m_File = nullptr;
  return flushed;
}

bool TFileStream::IsEOS() { return m_File != nullptr && m_File->atEnd(); }

bool TFileStream::SetEOS() { return m_File != nullptr && m_File->resize(m_File->pos()); }

long TFileStream::GetPos() const { return m_File != nullptr ? m_File->pos() : 0; }

// Where a device has no positions, or not this one, the file layer would complain about it on the
// error output: the system is asked first, with nothing left to be written at the old position.
bool TFileStream::SetPos(long position) {
  return m_File != nullptr && position >= 0 && !m_File->isSequential() && m_File->flush() &&
         lseek(m_File->handle(), position, SEEK_SET) == position && m_File->seek(position);
}

long TFileStream::GetSize() const { return m_File != nullptr ? m_File->size() : 0; }

bool TFileStream::SetSize(long size) {
  if (m_File == nullptr) {
    return false;
  }
  const long before = GetPos();
  if (!SetPos(size)) {
    return false;
  }
  SetEOS();
  if (before < size) {
    SetPos(before);
  }
  return true;
}

// A device in the other mode answers -1 and prints a warning: the same answer is given here
// without the warning. Counts above what the device can be asked for are errors as well.
static constexpr unsigned long kDeviceError = ~0UL;

// The file layer's buffers throw where memory is exhausted: nothing was transferred then.
template <class Transfer> static unsigned long TransferOrZero(const Transfer& transfer) {
  try {
    return static_cast<unsigned long>(transfer());
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

unsigned long TFileStream::_Read(void* data, unsigned long size) {
  if (m_File == nullptr) {
    return 0;
  }
  if (!m_File->isReadable() || size > LONG_MAX) {
    return kDeviceError;
  }
  return TransferOrZero(
      [&] { return m_File->read(static_cast<char*>(data), static_cast<qint64>(size)); });
}

unsigned long TFileStream::_Write(const void* data, unsigned long size) {
  if (m_File == nullptr) {
    return 0;
  }
  if (!m_File->isWritable() || size > LONG_MAX) {
    return kDeviceError;
  }
  return TransferOrZero(
      [&] { return m_File->write(static_cast<const char*>(data), static_cast<qint64>(size)); });
}

bool TFileStream::Skip(unsigned long size) {
  if (m_File == nullptr) {
    return false;
  }
  const long position = GetPos();
  return size <= static_cast<unsigned long>(LONG_MAX - position) &&
         SetPos(position + static_cast<long>(size));
}

} // namespace Zx3D
