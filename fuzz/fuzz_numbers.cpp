// The number forms on one text: nothing outside it is read or written, the decimal forms agree with
// each other, and the floating-point form with the C library.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <ZxCore3D/util/TextNumbers.h>

namespace {

void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}

void Numbers(const char* text, std::size_t length) {
  int i = 0;
  long l = 0;
  unsigned long ul = 0;
  unsigned int u = 0;
  bool b = false;
  const bool isInt = StringToInt(text, &i);
  Require(isInt == StringToLong(text, &l) && (!isInt || i == static_cast<int>(l)));
  int prefix = 0;
  const char* end = nullptr;
  const bool isPrefix = StringToInt(text, ~0UL, &prefix, &end);
  Require(end >= text && end <= text + length);
  Require(!isInt || (isPrefix && prefix == i && end == text + length));
  Require(StringToBool(text, &b) == isInt && (!isInt || b == (i != 0)));
  Require(StringToUlong(text, &ul) == StringToUint(text, &u));
  Require(StringToOct(text, &u) == StringToOct(text, &ul));
  Require(!StringToHex(text, &u) || u == static_cast<unsigned int>(std::strtoull(
                                             length > 8 ? text + length - 8 : text, nullptr, 16)));
  double d = 0;
  Require(StringToFloat(text, &d));
  const double expected = std::strtod(text, nullptr);
  Require(std::memcmp(&d, &expected, sizeof d) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3 || size > 4096) {
    return 0;
  }
  const char separator = static_cast<char>(data[0]);
  const unsigned long count = data[1] % 8;
  // Exactly the text in a block of its own, so that the sanitizer guards both ends.
  std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
  std::vector<char> counted(text.begin(), text.end());
  int ints[8] = {};
  StringToInt(counted.data(), counted.size(), separator, ints, count);
  StringToInt(counted.data(), counted.size(), ints, nullptr);
  StringToInt(counted.data(), counted.size(), ints);
  text.resize(std::strlen(text.c_str()));
  Numbers(text.c_str(), text.size());
  double doubles[8];
  std::string copy = text;
  Require(StringToFloat(copy.c_str(), copy.size() / 2, doubles) && copy == text);
  StringToFloat(copy.c_str(), separator, doubles, count);
  Require(copy == text);
  StringToInt(copy.c_str(), separator, ints, count);
  return 0;
}
