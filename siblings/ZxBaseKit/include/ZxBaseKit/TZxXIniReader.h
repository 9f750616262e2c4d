#pragma once

#include <memory>
#include <string>

#include <ZxBaseKit/Export.h>

/// Reads the family's hierarchical text format (see `TZxXIniWriter`). A section's items are counted
/// from 0 in the order in which their keys first stand in the text. One object belongs to one
/// thread at a time.
///
/// All errors are a thrown `TZxMessage` that begins with "line <l>, column <c>: ", both from 1,
/// where the text has a place to point at.
class ZX_BASEKIT_API TZxXIniReader {
public:
  /// Reads the whole text. Throws `TZxMessage` when it is damaged or has more than 100 levels.
  explicit TZxXIniReader(const std::string& text);
  TZxXIniReader(const TZxXIniReader&) = delete;
  TZxXIniReader& operator=(const TZxXIniReader&) = delete;
  virtual ~TZxXIniReader();

  /// The number of items in the current section.
  unsigned long GetCount() const;

  /// The key of an item of the current section. Throws `TZxMessage` when there is no such item.
  std::string GetKeyE(unsigned long item) const;

  /// The index of the item `key` of the current section, or all bits set when it stands neither at
  /// item `from` nor behind it.
  unsigned long FindF(const std::string& key, unsigned long from) const;

  /// The same, but throws `TZxMessage` when the item is absent.
  unsigned long FindFE(const std::string& key, unsigned long from) const;
  unsigned long FindFE(const char* key, unsigned long from) const;

  /// The value of an item of the current section, for `T` = double, long, bool and std::string. A
  /// double is also read from a whole number and from a text of its bits. Throws `TZxMessage` when
  /// there is no such item or it is of another type.
  template <class T> T ReadE(unsigned long item) const;

  /// Makes the section at an item the current one; the token leads back. Throws `TZxMessage` when
  /// there is no such item or it is no section.
  virtual unsigned long BeginSectionE(unsigned long item);

  /// Leaves the section that gave the token, and every one entered in it. Throws `TZxMessage` when
  /// the reader is in no such section.
  virtual void EndSectionE(unsigned long token);

private:
  struct TImpl;
  std::unique_ptr<TImpl> m_Impl;
};

template <> ZX_BASEKIT_API double TZxXIniReader::ReadE<double>(unsigned long item) const;
template <> ZX_BASEKIT_API long TZxXIniReader::ReadE<long>(unsigned long item) const;
template <> ZX_BASEKIT_API bool TZxXIniReader::ReadE<bool>(unsigned long item) const;
template <> ZX_BASEKIT_API std::string TZxXIniReader::ReadE<std::string>(unsigned long item) const;
