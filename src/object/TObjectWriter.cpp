#include <ZxCore3D/object/TObjectWriter.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <exception>

#include <ZxCore3D/object/TStream.h>
#include <ZxCore3D/object/private/ObjectAccess.h>

namespace Zx3D {

static constexpr unsigned char kZeros[4] = {};

static bool IsMeasured(unsigned long length) { return length >= ~0UL - 1; }

TObjectWriter::TObjectWriter() : m_Stream(nullptr), m_Owned(false), m_Reserved(false) {}

TObjectWriter::TObjectWriter(TStream* stream, bool own)
    : m_Stream(stream), m_Owned(own && stream != nullptr), m_Reserved(false) {}

TObjectWriter::~TObjectWriter() {
  if (m_Owned) {
    delete m_Stream;
  }
}

void TObjectWriter::SetStream(TStream* stream, bool own) {
  if (stream != m_Stream) {
    if (m_Owned) {
      delete m_Stream;
    }
    m_Stream = stream;
  }
  m_Owned = own && stream != nullptr;
}

bool TObjectWriter::WriteBlockBegin(STORE_BLOCK* block) {
  if (m_Stream == nullptr || block == nullptr) {
    return false;
  }
  block->Size = 0;
  if (!m_Stream->WriteAll(&block->Size, sizeof block->Size)) {
    return false;
  }
  block->Pos = static_cast<unsigned long>(m_Stream->GetPos());
  return true;
}

bool TObjectWriter::WriteBlockEnd(STORE_BLOCK* block) {
  if (m_Stream == nullptr || block == nullptr || block->Pos < sizeof block->Size) {
    return false;
  }
  const long end = m_Stream->GetPos();
  m_Stream->SetPos(static_cast<long>(block->Pos - sizeof block->Size));
  block->Size = static_cast<unsigned long>(end) - block->Pos;
  const bool written = m_Stream->WriteAll(&block->Size, sizeof block->Size);
  if (written) {
    m_Stream->SetPos(end);
  }
  return written;
}

void TObjectWriter::WriteBlockBeginE(STORE_BLOCK* block) {
  if (!WriteBlockBegin(block)) {
    throw std::exception();
  }
}

void TObjectWriter::WriteBlockEndE(STORE_BLOCK* block) {
  if (!WriteBlockEnd(block)) {
    throw std::exception();
  }
}

bool TObjectWriter::WriteStringData(const char* text, unsigned long length) {
  if (IsMeasured(length)) {
    length = text != nullptr ? std::strlen(text) : 0;
  }
  return m_Stream != nullptr && (text != nullptr || length == 0) &&
         m_Stream->WriteAll(text, length) && m_Stream->WriteAll(kZeros, GetPadding(length));
}

bool TObjectWriter::WriteStringData(const wchar_t* text, unsigned long length) {
  if (IsMeasured(length)) {
    length = text != nullptr ? std::wcslen(text) : 0;
  }
  return m_Stream != nullptr && (text != nullptr || length == 0) && length <= LONG_MAX / 2 &&
         m_Stream->WriteAll(text, 2 * length) && m_Stream->WriteAll(kZeros, 2 * (length & 1));
}

bool TObjectWriter::WriteString(const char* text, unsigned long length) {
  if (IsMeasured(length)) {
    length = text != nullptr ? std::strlen(text) : 0;
  }
  const auto prefix = static_cast<std::uint32_t>(length);
  return m_Stream != nullptr && (text != nullptr || length == 0) &&
         m_Stream->WriteAll(&prefix, sizeof prefix) && WriteStringData(text, length);
}

bool TObjectWriter::WriteString(const std::string& text) {
  return WriteString(text.data(), text.size());
}

bool TObjectWriter::WriteString(const wchar_t* text, unsigned long length) {
  if (IsMeasured(length)) {
    length = text != nullptr ? std::wcslen(text) : 0;
  }
  const auto prefix = static_cast<std::uint32_t>(length);
  return m_Stream != nullptr && (text != nullptr || length == 0) && length <= LONG_MAX / 2 &&
         m_Stream->WriteAll(&prefix, sizeof prefix) && WriteStringData(text, length);
}

bool TObjectWriter::WriteString(const std::wstring& text) {
  return WriteString(text.data(), text.size());
}

} // namespace Zx3D
