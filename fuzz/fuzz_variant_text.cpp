// TVariant::FromString: no text may crash it, a refused one keeps the value, and what an accepted
// one prints stays the same through another reading, apart from what has no way back.

#include <cstddef>
#include <cstdint>
#include <string>

#include <ZxCore3D/object/TVariant.h>

using Zx3D::TVariant;

namespace {

void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) {
    return 0;
  }
  const std::string text(reinterpret_cast<const char*>(data), size);
  TVariant v;
  v.Set("kept", 4);
  if (!v.FromString(text)) {
    Require(v.Type == DATA_TYPE_STRING && v.Count == 4);
    return 0;
  }
  std::string printed;
  Require(v.Type <= DATA_TYPE_STRING && v.ToString(&printed));
  std::string shown;
  Require(v.AsString(&shown));
  TVariant again;
  const bool read = again.FromString(printed);
  // A uint32 from 2^31 on prints a minus sign.
  Require(read || v.Type == DATA_TYPE_UINT32);
  if (read) {
    // Strings are cut at their first zero byte; a float loses digits in its first printing only.
    std::string second;
    Require(again.Type == v.Type && again.ToString(&second) && second == printed);
  }
  TVariant copy(v);
  v.Swap(copy);
  copy = again;
  Require(v.ToString() == printed);
  if (v.Type >= DATA_TYPE_BOOL && v.Type <= DATA_TYPE_DOUBLE) {
    Require(v.Get<bool>() || !v.Get<bool>());
    (void)(v.Get<signed char>() + v.Get<unsigned char>() + v.Get<short>() +
           v.Get<unsigned short>());
    (void)(static_cast<double>(v.Get<int>()) + v.Get<unsigned int>());
    (void)(static_cast<double>(v.Get<long>()) + static_cast<double>(v.Get<unsigned long>()));
    (void)(v.Get<double>() + static_cast<double>(v.Get<float>()));
  }
  return 0;
}
