#pragma once

#include <string>

#include <ZxCore3D/object/TAttributes.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// Gives an object an attribute list that costs one pointer until it is first needed. The object
/// owns the list. Reading never makes one.
class ZX_CORE3D_API TAttributable {
public:
  /// No list.
  TAttributable() = default;

  /// Deep copies: a list only where `other` has one.
  TAttributable(const TAttributable& other);
  TAttributable& operator=(const TAttributable& other);

  /// Take the list itself, or that there is none; `other` has no list afterwards. An object moved
  /// to itself keeps its list.
  TAttributable(TAttributable&& other) noexcept;
  TAttributable& operator=(TAttributable&& other) noexcept;

  ~TAttributable();

  /// Exchanges the two lists.
  void Swap(TAttributable& other);

  /// Throws a `TZxMessage` "Attribute list is NULL" if there is no list.
  void CheckAttributesE() const;

  /// Deletes the list; there is none afterwards.
  void ClearAttributes();

  /// Hands the list, or null, to the caller, who owns it then.
  TAttributes* DetachAttributes();

  /// Takes `attributes` over, which may be null, and deletes any other list.
  void AttachAttributes(TAttributes* attributes);

  /// The list; an empty one is made if there is none. Never null.
  TAttributes* QueryAttributes();

  /// Makes the list a copy of `attributes`.
  void SetAttributes(const TAttributes& attributes);

  /// Each makes the list if needed and then does what `TAttributes::SetValue` does. A length of -1
  /// means `strlen`. The form of two strings leaves no entry if a variant can't take the text.
  bool SetAttribute(const char* name, const char* text, int length);
  void SetAttribute(const std::string& name, const std::string& text);
  bool SetAttribute(const char* name, const TVariant& value);
  bool SetAttribute(const std::string& name, const TVariant& value);
  bool SetAttribute(const char* name, TVariant&& value);
  bool SetAttribute(const std::string& name, TVariant&& value);

  /// The value under `name`, or null. It may be changed through a const object.
  TVariant* FindAttribute(const char* name) const;

  /// The value under `name`. Throws a `TZxMessage`, and traces it: "Attribute list is NULL" if
  /// there is no list, otherwise what `TAttributes::FindValueE` throws.
  TVariant* FindAttributeE(const char* name) const;

  /// Removes the value under `name`; false if there is no list or no such value.
  bool RemoveAttribute(const char* name);

private:
  TAttributes* m_Attributes = nullptr;
};

} // namespace Zx3D
