#include <ZxCore3D/object/TMemoryStream.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

#include <ZxCore3D/object/TFileStream.h>

namespace Zx3D {

const char TMemoryStream::s_EOL[2] = {'\r', '\n'};

TMemoryStream::TMemoryStream() { _Take(nullptr, 0, 0, true); }

TMemoryStream::TMemoryStream(void* data, unsigned long size, bool owned) {
  _Take(data, size, size, owned);
}

TMemoryStream::TMemoryStream(void* data, unsigned long size, unsigned long capacity, bool owned) {
  _Take(data, size, capacity, owned);
}

TMemoryStream::TMemoryStream(TBuffer<unsigned char>& buffer, bool owned) {
  _Take(buffer.Data, buffer.Size, buffer.Capacity, owned);
}

TMemoryStream::~TMemoryStream() { Close(); }

void TMemoryStream::_Take(void* data, unsigned long size, unsigned long capacity, bool owned) {
  m_Data = static_cast<unsigned char*>(data);
  m_Capacity = data != nullptr ? std::min<unsigned long>(capacity, LONG_MAX) : 0;
  m_Size = std::min(size, m_Capacity);
  m_Position = 0;
  m_Owned = owned;
}

void TMemoryStream::SetBuffer(unsigned char* data, unsigned long size, bool owned) {
  TBuffer<unsigned char> buffer{data, size, size};
  SetBuffer(buffer, owned);
}

void TMemoryStream::SetBuffer(TBuffer<unsigned char>& buffer, bool owned) {
  if (buffer.Data != m_Data) {
    Close();
  }
  _Take(buffer.Data, buffer.Size, buffer.Capacity, owned);
}

void TMemoryStream::Close() {
  if (m_Data == nullptr) {
    return;
  }
  if (m_Owned) {
    std::free(m_Data);
  }
  _Take(nullptr, 0, 0, true);
}

bool TMemoryStream::_Resize(unsigned long capacity) {
  if (!m_Owned) {
    return false;
  }
  void* data = std::realloc(m_Data, capacity);
  if (data == nullptr) {
    return false;
  }
  m_Data = static_cast<unsigned char*>(data);
  m_Capacity = capacity;
  return true;
}

bool TMemoryStream::Reserve(unsigned long capacity) {
  return m_Capacity >= capacity || _Resize(capacity);
}

bool TMemoryStream::LoadFromFile(const std::string& name) {
  TFileStream file;
  if (!file.Open(name)) {
    return false;
  }
  const auto size = static_cast<unsigned long>(std::max(file.GetSize(), 0L));
  if (!Reserve(size)) {
    return false;
  }
  m_Position = 0;
  m_Size = size;
  if (!file.ReadAll(m_Data, size)) {
    const auto arrived = std::min(static_cast<unsigned long>(file.GetPos()), size);
    std::memset(m_Data + arrived, 0, size - arrived);
    return false;
  }
  return true;
}

bool TMemoryStream::SaveToFile(const std::string& name) {
  TFileStream file;
  return file.Create(name) && file.WriteAll(m_Data, m_Size) && file.SetEOS() && file.Close();
}

bool TMemoryStream::WriteString(const char* text, unsigned long length) {
  if (text == nullptr) {
    return length == 0;
  }
  return WriteAll(text, length >= ~0UL - 1 ? std::strlen(text) : length);
}

bool TMemoryStream::WriteEOL() { return WriteAll(s_EOL, sizeof s_EOL); }

void TMemoryStream::Swap(TMemoryStream& other) {
  std::swap(m_Data, other.m_Data);
  std::swap(m_Size, other.m_Size);
  std::swap(m_Capacity, other.m_Capacity);
  std::swap(m_Position, other.m_Position);
  std::swap(m_Owned, other.m_Owned);
}

bool TMemoryStream::IsEOS() {
  return m_Position >= 0 && static_cast<unsigned long>(m_Position) >= m_Size;
}

bool TMemoryStream::SetEOS() {
  if (m_Position < 0) {
    return false;
  }
  m_Size = static_cast<unsigned long>(m_Position);
  return true;
}

bool TMemoryStream::ReadLine(char* buffer, unsigned long bufferSize, unsigned long* length) {
  if (buffer == nullptr || bufferSize == 0 || m_Position < 0 || IsEOS()) {
    return false;
  }
  const unsigned char* from = m_Data + m_Position;
  const unsigned long range =
      std::min(bufferSize - 1, m_Size - static_cast<unsigned long>(m_Position));
  unsigned long stored = 0;
  while (stored < range && from[stored] != '\n' && from[stored] != '\r') {
    buffer[stored] = static_cast<char>(from[stored]);
    ++stored;
  }
  unsigned long consumed = stored;
  if (consumed < range) {
    const bool feedMayFollow = from[consumed++] == '\r';
    if (feedMayFollow && consumed < range && from[consumed] == '\n') {
      ++consumed;
    }
  }
  buffer[stored] = 0;
  m_Position += static_cast<long>(consumed);
  if (length != nullptr) {
    *length = stored;
  }
  return true;
}

long TMemoryStream::GetPos() const { return m_Position; }

bool TMemoryStream::SetPos(long position) {
  if (position >= 0 && static_cast<unsigned long>(position) > m_Capacity) {
    return false;
  }
  m_Position = position;
  return true;
}

long TMemoryStream::GetSize() const { return static_cast<long>(m_Size); }

bool TMemoryStream::SetSize(long size) {
  if (size < 0 || !Reserve(static_cast<unsigned long>(size))) {
    return false;
  }
  m_Size = static_cast<unsigned long>(size);
  m_Position = std::min(m_Position, size);
  return true;
}

bool TMemoryStream::ReadAll(void* data, unsigned long size) {
  if (size == 0) {
    return true;
  }
  if (m_Position < 0 || IsEOS() || size > m_Size - static_cast<unsigned long>(m_Position)) {
    return false;
  }
  std::memmove(data, m_Data + m_Position, size);
  m_Position += static_cast<long>(size);
  return true;
}

unsigned long TMemoryStream::_Read(void* data, unsigned long size) {
  if (m_Position < 0 || IsEOS()) {
    return 0;
  }
  const unsigned long count = std::min(size, m_Size - static_cast<unsigned long>(m_Position));
  if (count != 0) {
    std::memmove(data, m_Data + m_Position, count);
  }
  m_Position += static_cast<long>(count);
  return count;
}

bool TMemoryStream::_Put(const void* data, unsigned long size) {
  if (m_Position < 0 || size > static_cast<unsigned long>(LONG_MAX - m_Position)) {
    return false;
  }
  const unsigned long end = static_cast<unsigned long>(m_Position) + size;
  const auto* from = static_cast<const unsigned char*>(data);
  if (m_Capacity < end) {
    // `end` is at most LONG_MAX, so the grown capacity can't wrap.
    const std::less<> before;
    const bool inside =
        m_Data != nullptr && !before(from, m_Data) && before(from, m_Data + m_Capacity);
    const unsigned long offset = inside ? static_cast<unsigned long>(from - m_Data) : 0;
    if (!_Resize(CalcCapacity(end))) {
      return false;
    }
    if (inside) {
      from = m_Data + offset;
    }
  }
  if (size != 0) {
    std::memmove(m_Data + m_Position, from, size);
  }
  m_Position = static_cast<long>(end);
  m_Size = std::max(m_Size, end);
  return true;
}

bool TMemoryStream::WriteAll(const void* data, unsigned long size) {
  return size == 0 || _Put(data, size);
}

unsigned long TMemoryStream::_Write(const void* data, unsigned long size) {
  return _Put(data, size) ? size : 0;
}

bool TMemoryStream::Skip(unsigned long size) {
  const auto position = static_cast<unsigned long>(m_Position);
  // From a negative position the way to 0 comes on top of the capacity.
  const unsigned long below = m_Position < 0 ? 0UL - position : 0UL;
  if (size > below && size - below > m_Capacity - (position + below)) {
    return false;
  }
  m_Position = static_cast<long>(position + size);
  return true;
}

void* TMemoryStream::Map(long offset, unsigned long size, bool read, bool write, void** data) {
  if (size == 0 || data == nullptr || offset < 0 || static_cast<unsigned long>(offset) > m_Size ||
      size > m_Size - static_cast<unsigned long>(offset)) {
    return nullptr;
  }
  auto* mapping = static_cast<TStreamMapping*>(std::malloc(sizeof(TStreamMapping)));
  if (mapping == nullptr) {
    return nullptr;
  }
  *data = m_Data + offset;
  *mapping = {offset, size, *data, read, write, 0};
  return mapping;
}

bool TMemoryStream::Unmap(void* mapping) {
  if (mapping == nullptr) {
    return false;
  }
  auto* record = static_cast<TStreamMapping*>(mapping);
  SetPos(record->Offset + static_cast<long>(record->Size));
  std::free(record);
  return true;
}

bool TMemoryStream::SupportMap() { return true; }

} // namespace Zx3D
