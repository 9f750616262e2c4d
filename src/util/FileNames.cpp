#include <ZxCore3D/util/FileNames.h>

#include <ZxCore3D/util/private/FileNameScan.h>

namespace {

using namespace zx_filename;

template <class TChar> const TChar* FindCharIn(const TChar* text, TChar c) {
  for (; *text != 0; ++text) {
    if (*text == c) {
      return text;
    }
  }
  return nullptr;
}

template <class TChar> const TChar* FindCharRIn(const TChar* text, unsigned long length, TChar c) {
  while (length != 0) {
    if (text[--length] == c) {
      return text + length;
    }
  }
  return nullptr;
}

template <class TChar> const TChar* FindSlashIn(const TChar* text) {
  for (; *text != 0; ++text) {
    if (IsSeparator(*text)) {
      return text;
    }
  }
  return nullptr;
}

template <class TChar> const TChar* FindSlashRIn(const TChar* text, unsigned long length) {
  while (length != 0) {
    if (IsSeparator(text[--length])) {
      return text + length;
    }
  }
  return nullptr;
}

template <class TChar> unsigned long EmptyText(TChar* out) {
  *out = 0;
  return 0;
}

template <class TChar> TTextRange<TChar> FileNamePart(TTextRange<TChar> name) {
  const TChar* const slash = FindSlashRIn(name.Begin, name.Length);
  if (slash == nullptr) {
    return name;
  }
  return {slash + 1, static_cast<unsigned long>(name.Begin + name.Length - (slash + 1))};
}

template <class TChar>
unsigned long ExtractPath(TTextRange<TChar> name, TChar* out, unsigned long size) {
  const TChar* const slash = FindSlashRIn(name.Begin, name.Length);
  if (slash == nullptr) {
    return EmptyText(out);
  }
  return CopyText<TChar>({name.Begin, static_cast<unsigned long>(slash - name.Begin)}, out, size);
}

template <class TChar>
unsigned long ExtractTitle(TTextRange<TChar> name, TChar* out, unsigned long size) {
  if (name.Length == kNoLength) {
    return kFail;
  }
  TTextRange<TChar> part = FileNamePart(name);
  const TChar* const point = FindCharRIn<TChar>(part.Begin, part.Length, '.');
  if (point != nullptr) {
    part.Length = static_cast<unsigned long>(point - part.Begin);
  }
  return CopyText(part, out, size);
}

template <class TChar>
unsigned long ExtractExt(TTextRange<TChar> name, TChar* out, unsigned long size) {
  if (name.Length == kNoLength) {
    return kFail;
  }
  const TChar* const point = FindCharRIn<TChar>(name.Begin, name.Length, '.');
  if (point == nullptr) {
    return EmptyText(out);
  }
  const auto length = static_cast<unsigned long>(name.Begin + name.Length - point);
  if (FindSlashRIn(point, length) != nullptr) {
    return EmptyText(out);
  }
  return CopyText<TChar>({point, length}, out, size);
}

} // namespace

const char* FindChar(const char* text, char c) { return FindCharIn(text, c); }
const wchar_t* FindChar(const wchar_t* text, wchar_t c) { return FindCharIn(text, c); }

const char* FindCharR(const char* text, unsigned long length, char c) {
  return FindCharRIn(text, length, c);
}
const wchar_t* FindCharR(const wchar_t* text, unsigned long length, wchar_t c) {
  return FindCharRIn(text, length, c);
}

const char* FindSlash(const char* text) { return FindSlashIn(text); }
const wchar_t* FindSlash(const wchar_t* text) { return FindSlashIn(text); }

const char* FindSlashR(const char* text, unsigned long length) {
  return FindSlashRIn(text, Measured(text, length));
}
const wchar_t* FindSlashR(const wchar_t* text, unsigned long length) {
  return FindSlashRIn(text, Measured(text, length));
}

unsigned long ExtractFileName(const char* name, unsigned long length, char* out,
                              unsigned long size) {
  return CopyText(FileNamePart(MeasuredEither(name, length)), out, size);
}
unsigned long ExtractFileName(const wchar_t* name, unsigned long length, wchar_t* out,
                              unsigned long size) {
  return CopyText(FileNamePart(MeasuredEither(name, length)), out, size);
}

unsigned long ExtractFilePath(const char* name, unsigned long length, char* out,
                              unsigned long size) {
  return ExtractPath(MeasuredEither(name, length), out, size);
}
unsigned long ExtractFilePath(const wchar_t* name, unsigned long length, wchar_t* out,
                              unsigned long size) {
  return ExtractPath(MeasuredEither(name, length), out, size);
}

unsigned long ExtractFileTitle(const char* name, unsigned long length, char* out,
                               unsigned long size) {
  return ExtractTitle(MeasuredEither(name, length), out, size);
}
unsigned long ExtractFileTitle(const wchar_t* name, unsigned long length, wchar_t* out,
                               unsigned long size) {
  return ExtractTitle<wchar_t>({name, Measured(name, length)}, out, size);
}

unsigned long ExtractFileExt(const char* name, unsigned long length, char* out,
                             unsigned long size) {
  return ExtractExt<char>({name, Measured(name, length)}, out, size);
}
unsigned long ExtractFileExt(const wchar_t* name, unsigned long length, wchar_t* out,
                             unsigned long size) {
  return ExtractExt<wchar_t>({name, Measured(name, length)}, out, size);
}
