// The word forms on one text, against a plain walk along it: the same words, ends and places, and
// nothing else is written.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <ZxCore3D/util/TextWords.h>

namespace {

void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}

constexpr char kUnwritten = '\x5A';

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// A room of just the word and its terminator: the sanitizer sees what is written behind it.
std::vector<char> Room(std::size_t length) { return std::vector<char>(length + 1, kUnwritten); }

void RequireWord(const std::vector<char>& out, const char* word) {
  Require(std::memcmp(out.data(), word, out.size() - 1) == 0 && out.back() == '\0');
}

void BlankWords(const char* text) {
  for (const char* at = text;;) {
    const char* word = at;
    while (IsBlank(*word)) {
      ++word;
    }
    const char* behind = word;
    while (*behind != '\0' && !IsBlank(*behind)) {
      ++behind;
    }
    const auto length = static_cast<unsigned long>(behind - word);
    const char* const following = *behind == '\0' ? behind : behind + 1;

    std::vector<char> out = Room(length);
    const char* next = nullptr;
    Require(StringGetWordEx(at, out.data(), &next) == length && next == following);
    RequireWord(out, word);
    Require(StringSkipWordEx(at, &next) == length && next == following);
    Require(StringGetWordEx(at, out.data(), nullptr) == length);
    Require(StringSkipWordEx(at, nullptr) == length);

    const char* start = text;
    unsigned long found = 77;
    const unsigned long offset = StringFindWordEx(at, &start, &found);
    if (length == 0) {
      Require(offset == 0 && start == text && found == 77);
    } else {
      Require(offset == static_cast<unsigned long>(behind - at) && start == word &&
              found == length);
    }
    if (*behind == '\0') {
      return;
    }
    at = following;
  }
}

void SeparatedWords(const char* text, char separator) {
  for (const char* at = text;;) {
    std::size_t length = 0;
    while (at[length] != '\0' && at[length] != separator) {
      ++length;
    }
    const bool ends = at[length] == '\0';
    std::vector<char> out = Room(length);
    const char* next = nullptr;
    Require(StringGetWord(at, out.data(), separator, &next) == length);
    Require(next == at + length + (ends ? 0 : 1));
    RequireWord(out, at);
    Require(StringGetWord(at, out.data(), separator, nullptr) == length);
    if (ends) {
      return;
    }
    at = next;
  }
}

void Letters(const std::string& text, char from, char to) {
  std::string upper = text;
  AnsiUpperCase(upper.data());
  std::string replaced = text;
  StringCharReplace(replaced.data(), from, to);
  // A replacement by zero bytes cuts nothing off: each place is looked at as the text was.
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const char expected = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    Require(upper[i] == expected && AnsiUpperCase(c) == expected);
    Require(replaced[i] == (c == from ? to : c));
  }
}

} // namespace

// Input: a separator, a byte to put in its place, then the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 4096) {
    return 0;
  }
  const char separator = static_cast<char>(data[0]);
  std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
  text.resize(std::strlen(text.c_str()));
  // Exactly the text in a block of its own, so that the sanitizer guards both ends.
  const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
  BlankWords(exact.data());
  SeparatedWords(exact.data(), separator);
  Letters(text, separator, static_cast<char>(data[1]));
  return 0;
}
