// The file-name functions on two names and a capacity: nothing is written behind the capacity, and
// a result is below it and terminated.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <ZxCore3D/util/FileNames.h>

namespace {

void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}

template <class TChar>
using TExtract = unsigned long (*)(const TChar*, unsigned long, TChar*, unsigned long);

// The sanitizer guards the block's end; one character more where a result may ignore the capacity.
template <class TChar>
void Extract(TExtract<TChar> form, const std::basic_string<TChar>& name, unsigned long size) {
  const std::vector<TChar> exact(name.begin(), name.end());
  std::vector<TChar> out(std::max(size, 1UL));
  const unsigned long length = form(exact.data(), exact.size(), out.data(), size);
  Require(length == ~0UL || (out[length] == 0 && length <= name.size()));
  Require(length == ~0UL || length == 0 || length < size);
}

template <class TChar> void ExtractAll(const std::basic_string<TChar>& name, unsigned long size) {
  Extract<TChar>(&ExtractFileName, name, size);
  Extract<TChar>(&ExtractFilePath, name, size);
  Extract<TChar>(&ExtractFileTitle, name, size);
  Extract<TChar>(&ExtractFileExt, name, size);
  FindSlashR(name.c_str(), ~0UL);
  FindChar(name.c_str(), TChar('.'));
}

using TConvert = unsigned long (*)(const char*, unsigned long, const char*, unsigned long, char*,
                                   unsigned long);

std::string Convert(TConvert form, const std::string& name, const std::string& base,
                    unsigned long size) {
  std::vector<char> out(size);
  const unsigned long length =
      form(name.c_str(), name.size(), base.data(), base.size(), out.data(), size);
  if (length == ~0UL) {
    return "~";
  }
  Require(length < size && out[length] == '\0');
  return std::string(out.data(), length);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 2048) {
    return 0;
  }
  const unsigned long capacity = data[0];
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::size_t middle = std::min(text.find('\n'), text.size());
  const std::string name = text.substr(0, middle);
  const std::string base = middle < text.size() ? text.substr(middle + 1) : std::string();
  ExtractAll(name, capacity);
  ExtractAll(std::wstring(name.begin(), name.end()), capacity);
  for (const TConvert form : {&RelativeToFullFileName, &GetFullFileName, &FullToRelativeFileName}) {
    const std::string roomy = Convert(form, name, base, 8 * text.size() + 8);
    const std::string tight = Convert(form, name, base, capacity);
    Require(tight == roomy || tight == "~");
  }
  return 0;
}
