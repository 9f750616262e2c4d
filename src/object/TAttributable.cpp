#include <ZxCore3D/object/TAttributable.h>

#include <utility>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/object/private/Trace.h>

namespace Zx3D {

TAttributable::TAttributable(const TAttributable& other)
    : m_Attributes(other.m_Attributes != nullptr ? new TAttributes(*other.m_Attributes) : nullptr) {
}

TAttributable& TAttributable::operator=(const TAttributable& other) {
  TAttributable copy(other);
  Swap(copy);
  return *this;
}

TAttributable::TAttributable(TAttributable&& other) noexcept
    : m_Attributes(std::exchange(other.m_Attributes, nullptr)) {}

TAttributable& TAttributable::operator=(TAttributable&& other) noexcept {
  if (this != &other) {
    AttachAttributes(other.DetachAttributes());
  }
  return *this;
}

TAttributable::~TAttributable() { delete m_Attributes; }

void TAttributable::Swap(TAttributable& other) { std::swap(m_Attributes, other.m_Attributes); }

void TAttributable::CheckAttributesE() const {
  if (m_Attributes == nullptr) {
    throw TZxMessage("Attribute list is NULL");
  }
}

void TAttributable::ClearAttributes() { AttachAttributes(nullptr); }

TAttributes* TAttributable::DetachAttributes() { return std::exchange(m_Attributes, nullptr); }

void TAttributable::AttachAttributes(TAttributes* attributes) {
  if (attributes != m_Attributes) {
    delete std::exchange(m_Attributes, attributes);
  }
}

TAttributes* TAttributable::QueryAttributes() {
  if (m_Attributes == nullptr) {
    m_Attributes = new TAttributes;
  }
  return m_Attributes;
}

void TAttributable::SetAttributes(const TAttributes& attributes) {
  if (m_Attributes == nullptr) {
    m_Attributes = new TAttributes(attributes);
  } else {
    *m_Attributes = attributes;
  }
}

bool TAttributable::SetAttribute(const char* name, const char* text, int length) {
  return QueryAttributes()->SetValue(name, text, static_cast<unsigned long>(length));
}

void TAttributable::SetAttribute(const std::string& name, const std::string& text) {
  QueryAttributes()->SetValue(name, text.data(), text.size());
}

bool TAttributable::SetAttribute(const char* name, const TVariant& value) {
  return QueryAttributes()->SetValue(name, value);
}

bool TAttributable::SetAttribute(const std::string& name, const TVariant& value) {
  return QueryAttributes()->SetValue(name, value);
}

bool TAttributable::SetAttribute(const char* name, TVariant&& value) {
  return QueryAttributes()->SetValue(name, std::move(value));
}

bool TAttributable::SetAttribute(const std::string& name, TVariant&& value) {
  return QueryAttributes()->SetValue(name, std::move(value));
}

TVariant* TAttributable::FindAttribute(const char* name) const {
  return m_Attributes != nullptr ? m_Attributes->FindValue(name) : nullptr;
}

TVariant* TAttributable::FindAttributeE(const char* name) const {
  return Traced("src/Attributable", __LINE__,
                "Zx3D::TVariant *Zx3D::TAttributable::FindAttributeE(const char *) const", [&] {
                  CheckAttributesE();
                  return m_Attributes->FindValueE(name);
                });
}

bool TAttributable::RemoveAttribute(const char* name) {
  return m_Attributes != nullptr && m_Attributes->RemoveValue(name);
}

} // namespace Zx3D
