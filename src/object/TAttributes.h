#pragma once

#include <map>
#include <string>

#include <ZxCore3D/object/TVariant.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// Values by name, in the byte order of the names. Pointers to values stay valid until the entry is
/// removed or the list cleared or destroyed. No locking.
///
/// A null name raises `std::logic_error` except in the `FindValue` forms. Exhausted memory raises
/// `std::bad_alloc`.
class ZX_CORE3D_API TAttributes {
public:
  TAttributes() = default;

  /// Deep copies.
  TAttributes(const TAttributes& other);
  TAttributes& operator=(const TAttributes& other);

  /// Take the values themselves, where they stand: pointers to them stay valid, nothing is
  /// allocated, and `other` is left empty. A list moved to itself keeps its values.
  TAttributes(TAttributes&& other) noexcept;
  TAttributes& operator=(TAttributes&& other) noexcept;

  ~TAttributes();

  /// Removes all values.
  void Clear();

  /// How many values there are.
  unsigned long GetCount() const;

  /// The map itself.
  std::map<std::string, TVariant>& GetValues() { return m_Values; }
  const std::map<std::string, TVariant>& GetValues() const { return m_Values; }

  /// Stores a deep copy of `value` under `name`, in place of what is there. Always true.
  bool SetValue(const char* name, const TVariant& value);
  bool SetValue(const std::string& name, const TVariant& value);

  /// The same, moving `value` into the list: it is empty afterwards.
  bool SetValue(const char* name, TVariant&& value);
  bool SetValue(const std::string& name, TVariant&& value);

  /// Stores `length` characters under `name`; `~0` measures with `strlen`. False, with the list as
  /// it was, if a variant can't take the text.
  bool SetValue(const char* name, const char* text, unsigned long length);
  bool SetValue(const std::string& name, const char* text, unsigned long length);

  /// The value under `name`, or null; a null name gives null.
  TVariant* FindValue(const char* name);
  TVariant* FindValue(const std::string& name);
  const TVariant* FindValue(const char* name) const;
  const TVariant* FindValue(const std::string& name) const;

  /// The value under `name`. Throws a `TZxMessage`, and traces it, where there is none: "szName is
  /// NULL", or "Value \"%1%\" not found" with the name.
  TVariant* FindValueE(const char* name);
  TVariant* FindValueE(const std::string& name);
  const TVariant* FindValueE(const char* name) const;
  const TVariant* FindValueE(const std::string& name) const;

  /// Replaces `*text` by the string under `name`, up to its first zero byte. False if there is no
  /// such value or it is no string.
  bool GetValue(const char* name, std::string* text) const;
  bool GetValue(const std::string& name, std::string* text) const;

  /// Removes the value under `name`; false if there is none.
  bool RemoveValue(const char* name);
  bool RemoveValue(const std::string& name);

private:
  std::map<std::string, TVariant> m_Values;
};

} // namespace Zx3D
