#include <ZxCore3D/object/TStdStream.h>

namespace Zx3D {

TStdStream::TStdStream(TStream* stream) : m_Stream(stream) {}

TStdStream::~TStdStream() = default;

unsigned long TStdStream::Read(void* data, unsigned long size) {
  return m_Stream != nullptr ? m_Stream->_Read(data, size) : 0;
}

unsigned long TStdStream::Write(const void* data, unsigned long size) {
  return m_Stream != nullptr ? m_Stream->_Write(data, size) : 0;
}

unsigned long TStdStream::getSize() {
  return m_Stream != nullptr ? static_cast<unsigned long>(m_Stream->GetSize()) : 0;
}

bool TStdStream::setSize(unsigned long size) {
  return m_Stream != nullptr && m_Stream->SetSize(static_cast<long>(size));
}

unsigned long TStdStream::getPosition() {
  return m_Stream != nullptr ? static_cast<unsigned long>(m_Stream->GetPos()) : 0;
}

bool TStdStream::setPosition(unsigned long position) {
  return m_Stream != nullptr && m_Stream->SetPos(static_cast<long>(position));
}

TStdStream::operator bool() { return m_Stream != nullptr; }

} // namespace Zx3D
