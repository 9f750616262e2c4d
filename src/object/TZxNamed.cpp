#include <ZxCore3D/object/TZxNamed.h>

#include <algorithm>
#include <cstring>

namespace Zx3D {

TZxNamed::TZxNamed() : m_Length(0) { m_Name[0] = 0; }

TZxNamed::TZxNamed(const TZxNamed& other) { SetName(other.m_Name, other.m_Length); }

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): SetName takes a name that overlaps its own.
TZxNamed& TZxNamed::operator=(const TZxNamed& other) {
  SetName(other.m_Name, other.m_Length);
  return *this;
}

void TZxNamed::Swap(TZxNamed& other) {
  char mine[sizeof m_Name];
  char others[sizeof m_Name];
  std::memcpy(mine, m_Name, sizeof mine);
  std::memcpy(others, other.m_Name, sizeof others);
  const unsigned long length = m_Length;
  const unsigned long otherLength = other.m_Length;
  std::memcpy(m_Name, others, sizeof others);
  m_Length = otherLength;
  std::memcpy(other.m_Name, mine, sizeof mine);
  other.m_Length = length;
}

bool TZxNamed::SetName(const char* name, unsigned long length) {
  if (name == nullptr && length != 0) {
    return false;
  }
  if (length == ~0UL) {
    length = std::strlen(name);
  }
  if (length >= sizeof m_Name) {
    return false;
  }
  if (length != 0) {
    std::memmove(m_Name, name, length);
  }
  m_Name[length] = 0;
  m_Length = length;
  return true;
}

bool TZxNamed::SetName(const std::string& name) { return SetName(name.data(), name.size()); }

unsigned long TZxNamed::GetName(char* name, unsigned long size) const {
  if (size == 0 || name == nullptr) {
    return 0;
  }
  const unsigned long stored = std::min(m_Length, size - 1);
  std::memcpy(name, m_Name, stored);
  name[stored] = 0;
  return stored;
}

std::string TZxNamed::GetName() const { return std::string(m_Name, m_Length); }

bool TZxNamed::IsName(const char* name) const {
  return name != nullptr && std::strcmp(name, m_Name) == 0;
}

} // namespace Zx3D
