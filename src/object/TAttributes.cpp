#include <ZxCore3D/object/TAttributes.h>

#include <utility>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/object/private/NullName.h>
#include <ZxCore3D/object/private/Trace.h>

namespace Zx3D {

static constexpr const char kFile[] = "src/Attributes";

TAttributes::TAttributes(const TAttributes& other) = default;

TAttributes& TAttributes::operator=(const TAttributes& other) {
  if (this != &other) {
    TAttributes copy(other);
    m_Values.swap(copy.m_Values);
  }
  return *this;
}

TAttributes::TAttributes(TAttributes&& other) noexcept : m_Values(std::move(other.m_Values)) {
  other.m_Values.clear();
}

TAttributes& TAttributes::operator=(TAttributes&& other) noexcept {
  if (this != &other) {
    // The old values go last: what they let go of may look at either list, or hold the other one.
    TAttributes taken(std::move(other));
    m_Values.swap(taken.m_Values);
  }
  return *this;
}

TAttributes::~TAttributes() = default;

void TAttributes::Clear() { m_Values.clear(); }

unsigned long TAttributes::GetCount() const { return m_Values.size(); }

bool TAttributes::SetValue(const char* name, const TVariant& value) {
  CheckNameE(name);
  return SetValue(std::string(name), value);
}

bool TAttributes::SetValue(const std::string& name, const TVariant& value) {
  m_Values[name] = value;
  return true;
}

bool TAttributes::SetValue(const char* name, TVariant&& value) {
  CheckNameE(name);
  return SetValue(std::string(name), std::move(value));
}

bool TAttributes::SetValue(const std::string& name, TVariant&& value) {
  m_Values[name] = std::move(value);
  return true;
}

bool TAttributes::SetValue(const char* name, const char* text, unsigned long length) {
  CheckNameE(name);
  return SetValue(std::string(name), text, length);
}

bool TAttributes::SetValue(const std::string& name, const char* text, unsigned long length) {
  TVariant value;
  if (!value.Set(text, length)) {
    return false;
  }
  return SetValue(name, std::move(value));
}

TVariant* TAttributes::FindValue(const char* name) {
  return name != nullptr ? FindValue(std::string(name)) : nullptr;
}

TVariant* TAttributes::FindValue(const std::string& name) {
  const auto found = m_Values.find(name);
  return found != m_Values.end() ? &found->second : nullptr;
}

const TVariant* TAttributes::FindValue(const char* name) const {
  return name != nullptr ? FindValue(std::string(name)) : nullptr;
}

const TVariant* TAttributes::FindValue(const std::string& name) const {
  const auto found = m_Values.find(name);
  return found != m_Values.end() ? &found->second : nullptr;
}

// The guarded parts of the throwing forms; `Name` is how the caller gave the name, and `Attributes`
// the list with its constness.
template <class Attributes, class Name> static auto* FindOrThrow(Attributes& list, Name name) {
  auto* found = list.FindValue(name);
  if (found == nullptr) {
    throw TZxMessage("Value \"%1%\" not found") << name;
  }
  return found;
}

static void CheckSzName(const char* name) {
  if (name == nullptr) {
    throw TZxMessage("szName is NULL");
  }
}

TVariant* TAttributes::FindValueE(const char* name) {
  return Traced(kFile, __LINE__, "Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *)",
                [&] {
                  CheckSzName(name);
                  return FindOrThrow<TAttributes, const char*>(*this, name);
                });
}

TVariant* TAttributes::FindValueE(const std::string& name) {
  return Traced(kFile, __LINE__,
                "Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const std::string &)",
                [&] { return FindOrThrow<TAttributes, const std::string&>(*this, name); });
}

const TVariant* TAttributes::FindValueE(const char* name) const {
  return Traced(kFile, __LINE__,
                "const Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *) const", [&] {
                  CheckSzName(name);
                  return FindOrThrow<const TAttributes, const char*>(*this, name);
                });
}

const TVariant* TAttributes::FindValueE(const std::string& name) const {
  return Traced(kFile, __LINE__,
                "const Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const std::string &) const",
                [&] { return FindOrThrow<const TAttributes, const std::string&>(*this, name); });
}

bool TAttributes::GetValue(const char* name, std::string* text) const {
  CheckNameE(name);
  return GetValue(std::string(name), text);
}

bool TAttributes::GetValue(const std::string& name, std::string* text) const {
  const TVariant* value = FindValue(name);
  return value != nullptr && text != nullptr && value->Get(text);
}

bool TAttributes::RemoveValue(const char* name) {
  CheckNameE(name);
  return RemoveValue(std::string(name));
}

bool TAttributes::RemoveValue(const std::string& name) {
  const auto found = m_Values.find(name);
  if (found == m_Values.end()) {
    return false;
  }
  m_Values.erase(found);
  return true;
}

} // namespace Zx3D
