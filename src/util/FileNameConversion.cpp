#include <ZxCore3D/util/FileNames.h>

#include <cstring>

#include <ZxCore3D/util/private/FileNameScan.h>

using namespace zx_filename;

bool IsAlpha(char c) {
  const int upper = static_cast<unsigned char>(c) & ~0x20;
  return upper >= 'A' && upper <= 'Z';
}

bool IsFullFileName(const char* name, unsigned long length) {
  length = Measured(name, length);
  if (length < 3) {
    return false;
  }
  return (IsAlpha(name[0]) && name[1] == ':' && IsSeparator(name[2])) ||
         (name[0] == '\\' && name[1] == '\\');
}

namespace {

// Components of a directory text: each ends at a separator or at the text's end, where a trailing
// separator adds none.
unsigned long CountComponents(const char* at, const char* end) {
  unsigned long count = 0;
  for (; at != end; ++at) {
    if (IsSeparator(*at) || at + 1 == end) {
      ++count;
    }
  }
  return count;
}

// Drops the last directory of out[0..length), which ends in a separator as a rule; `kFail` where
// none can be dropped.
unsigned long DirectoryUp(const char* out, unsigned long length) {
  if (length < 3) {
    return kFail;
  }
  for (--length; length != 0; --length) {
    if (IsSeparator(out[length - 1])) {
      return length;
    }
  }
  return kFail;
}

} // namespace

unsigned long FullToRelativeFileName(const char* name, unsigned long nameLength, const char* base,
                                     unsigned long baseLength, char* out, unsigned long size) {
  nameLength = Measured(name, nameLength);
  baseLength = Measured(base, baseLength);
  if (!IsFullFileName(name, nameLength) || !IsFullFileName(base, baseLength) ||
      name[0] != base[0]) {
    return CopyText<char>({name, nameLength}, out, size);
  }
  unsigned long same = 1;
  while (same < nameLength && same < baseLength && name[same] == base[same]) {
    ++same;
  }
  // A full name has a separator among its first three characters, and the walk gets as far.
  unsigned long slash = same;
  while (slash == nameLength || !IsSeparator(name[slash])) {
    --slash;
  }
  const char* const baseEnd = base + baseLength;
  const char* const baseRest = base + slash + (slash < baseLength ? 1 : 0);
  unsigned long length = 0;
  for (unsigned long up = CountComponents(baseRest, baseEnd); up != 0; --up) {
    if (length + 3 >= size) {
      return kFail;
    }
    // NOLINTNEXTLINE(bugprone-not-null-terminated-result): the end is written with the rest
    std::memcpy(out + length, "..\\", 3);
    length += 3;
  }
  const unsigned long rest =
      CopyText<char>({name + slash + 1, nameLength - (slash + 1)}, out + length, size - length);
  return rest == kFail ? kFail : length + rest;
}

unsigned long RelativeToFullFileName(const char* name, unsigned long /*nameLength*/,
                                     const char* base, unsigned long baseLength, char* out,
                                     unsigned long size) {
  baseLength = Measured(base, baseLength);
  if (baseLength >= size) {
    return kFail;
  }
  std::memmove(out, base, baseLength);
  unsigned long length = baseLength;
  if (length != 0 && !IsSeparator(out[length - 1])) {
    if (length + 1 >= size) {
      return kFail;
    }
    out[length++] = '\\';
  }
  while (*name != '\0') {
    if (name[0] == '.' && IsSeparator(name[1])) {
      name += 2;
    } else if (name[0] == '.' && name[1] == '.' && IsSeparator(name[2])) {
      length = DirectoryUp(out, length);
      if (length == kFail) {
        return kFail;
      }
      name += 3;
    } else {
      out[length++] = *name++;
      if (length >= size) {
        return kFail;
      }
    }
  }
  out[length] = '\0';
  return length;
}

unsigned long GetFullFileName(const char* name, unsigned long nameLength, const char* base,
                              unsigned long baseLength, char* out, unsigned long size) {
  const unsigned long measured = Measured(name, nameLength);
  if (IsFullFileName(name, measured)) {
    return CopyText<char>({name, measured}, out, size);
  }
  return RelativeToFullFileName(name, nameLength, base, baseLength, out, size);
}
