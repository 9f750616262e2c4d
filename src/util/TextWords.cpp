#include <ZxCore3D/util/TextWords.h>

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

const char* SkipBlanks(const char* text) {
  while (IsBlank(*text)) {
    ++text;
  }
  return text;
}

const char* WordEnd(const char* word) {
  while (*word != '\0' && !IsBlank(*word)) {
    ++word;
  }
  return word;
}

// Behind the one character that ended a word, unless that is the terminator.
void StoreNext(const char* end, const char** next) {
  if (next != nullptr) {
    *next = *end != '\0' ? end + 1 : end;
  }
}

} // namespace

char AnsiUpperCase(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

void AnsiUpperCase(char* text) {
  for (; *text != '\0'; ++text) {
    *text = AnsiUpperCase(*text);
  }
}

void StringCharReplace(char* text, char from, char to) {
  for (; *text != '\0'; ++text) {
    if (*text == from) {
      *text = to;
    }
  }
}

unsigned long StringGetWord(const char* text, char* out, char separator, const char** next) {
  const char* end = text;
  while (*end != '\0' && *end != separator) {
    *out++ = *end++;
  }
  StoreNext(end, next);
  *out = '\0';
  return static_cast<unsigned long>(end - text);
}

unsigned long StringGetWordEx(const char* text, char* out, const char** next) {
  const char* const word = SkipBlanks(text);
  const char* end = word;
  while (*end != '\0' && !IsBlank(*end)) {
    *out++ = *end++;
  }
  StoreNext(end, next);
  *out = '\0';
  return static_cast<unsigned long>(end - word);
}

unsigned long StringSkipWordEx(const char* text, const char** next) {
  const char* const word = SkipBlanks(text);
  const char* const end = WordEnd(word);
  StoreNext(end, next);
  return static_cast<unsigned long>(end - word);
}

unsigned long StringFindWordEx(const char* text, const char** start, unsigned long* length) {
  const char* const word = SkipBlanks(text);
  if (*word == '\0') {
    return 0;
  }
  const char* const end = WordEnd(word);
  *start = word;
  *length = static_cast<unsigned long>(end - word);
  return static_cast<unsigned long>(end - text);
}
