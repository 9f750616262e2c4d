#pragma once

#include <string>

#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// A name of at most 31 characters inside a record of fixed size.
class ZX_CORE3D_API TZxNamed {
public:
  /// The empty name.
  TZxNamed();
  /// The name of `other`.
  TZxNamed(const TZxNamed& other);
  TZxNamed& operator=(const TZxNamed& other);

  /// Exchanges two names, also of records that overlap.
  void Swap(TZxNamed& other);

  /// Takes `length` characters, where `~0` measures with `strlen`. False, with the old name kept,
  /// for more than 31, and for a null pointer with any length but 0.
  bool SetName(const char* name, unsigned long length);
  bool SetName(const std::string& name);

  /// Copies as much of the name as `size` bytes hold and terminates it. Returns the count of
  /// characters stored; with a size of 0 nothing is written.
  unsigned long GetName(char* name, unsigned long size) const;

  /// The whole name.
  std::string GetName() const;

  /// Compares exactly, up to the terminators. False for null.
  bool IsName(const char* name) const;

private:
  char m_Name[32];
  unsigned long m_Length;
};

} // namespace Zx3D
