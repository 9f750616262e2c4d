#pragma once

#include <memory>
#include <string>

#include <ZxBaseKit/Export.h>

/// Writes the family's hierarchical text format, which is TOML: sections are tables, compact
/// sections are inline tables on one line. The order of writing is not kept: a section's items come
/// out in the order of their keys, its values before its sections that are not compact.
///
/// Keys and texts are UTF-8; a key has no tab, line feed or apostrophe and stands once in a
/// section. Doubles are written with the fewest digits that read back exact to the bit, whatever
/// the locale; the NaNs that TOML has no words for are written as a text of their bits,
/// "0x7ff8000000000001". One object belongs to one thread at a time.
class ZX_BASEKIT_API TZxXIniWriter {
public:
  TZxXIniWriter();
  TZxXIniWriter(const TZxXIniWriter&) = delete;
  TZxXIniWriter& operator=(const TZxXIniWriter&) = delete;
  virtual ~TZxXIniWriter();

  /// Writes one value under `key` in the current section; for `T` = double, long, bool and
  /// std::string. False when the key stands there already, when the key can't be a key or a text
  /// is not UTF-8, or when `value` is null; `RaiseErrorE` then tells why.
  template <class T> bool WriteS(const std::string& key, const T* value);

  /// Throws a `TZxMessage` about the last write that failed.
  virtual void RaiseErrorE() const;

  /// Opens a section in the current one and makes it the current one; the token closes it. Throws
  /// `TZxMessage` when the name stands there already or can't be a key, or at more than 100 levels.
  unsigned long BeginSectionSE(const std::string& name);

  /// The same for a compact section. All sections in a compact one are compact.
  unsigned long BeginSectionCompactSE(const std::string& name);

  /// Closes the section of the token and every one that is open in it. Throws `TZxMessage` when no
  /// such section is open.
  virtual void EndSectionE(unsigned long token);

  /// All that was written so far, as text. Open sections are in it. While it is put together it
  /// takes up to twice its size besides the result.
  std::string GetText() const;

private:
  struct TImpl;
  std::unique_ptr<TImpl> m_Impl;
};

template <>
ZX_BASEKIT_API bool TZxXIniWriter::WriteS<double>(const std::string& key, const double* value);
template <>
ZX_BASEKIT_API bool TZxXIniWriter::WriteS<long>(const std::string& key, const long* value);
template <>
ZX_BASEKIT_API bool TZxXIniWriter::WriteS<bool>(const std::string& key, const bool* value);
template <>
ZX_BASEKIT_API bool TZxXIniWriter::WriteS<std::string>(const std::string& key,
                                                       const std::string* value);
