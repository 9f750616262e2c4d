#include <ZxCore3D/object/TVariant.h>

#include <cstdint>
#include <limits>
#include <type_traits>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/object/private/TVariantWords.h>

namespace Zx3D {

namespace {

using variant::Load;

// What the processor's conversion instructions give: the most negative integer for NaNs and for
// values that do not fit, where the language leaves a cast undefined.
std::int32_t Truncate32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<std::int32_t>(value)
                                                       : std::numeric_limits<std::int32_t>::min();
}

std::int64_t Truncate64(double value) {
  return value >= -9223372036854775808.0 && value < 9223372036854775808.0
             ? static_cast<std::int64_t>(value)
             : std::numeric_limits<std::int64_t>::min();
}

std::uint64_t TruncateUnsigned64(double value) {
  if (value < 9223372036854775808.0) {
    return static_cast<std::uint64_t>(Truncate64(value));
  }
  return static_cast<std::uint64_t>(Truncate64(value - 9223372036854775808.0)) | std::uint64_t(1)
                                                                                     << 63;
}

template <class T, class TSource> T FromReal(TSource value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value != TSource(0);
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value);
  } else if constexpr (std::is_same_v<T, unsigned long>) {
    return TruncateUnsigned64(value);
  } else if constexpr (std::is_same_v<T, long> || std::is_same_v<T, unsigned int>) {
    return static_cast<T>(Truncate64(value));
  } else {
    return static_cast<T>(Truncate32(value));
  }
}

template <class T, class TSource> T FromInteger(TSource value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value != 0;
  } else {
    return static_cast<T>(value);
  }
}

template <class T> T FromBool(unsigned char byte) {
  if constexpr (std::is_floating_point_v<T>) {
    return byte != 0 ? T(1) : T(0);
  } else {
    return FromInteger<T>(byte);
  }
}

template <class T> T Convert(const TVariant& v) {
  switch (v.Type) {
  case DATA_TYPE_BOOL:
    return FromBool<T>(v.Value[0]);
  case DATA_TYPE_INT8:
    return FromInteger<T>(Load<std::int8_t>(v.Value));
  case DATA_TYPE_UINT8:
    return FromInteger<T>(Load<std::uint8_t>(v.Value));
  case DATA_TYPE_INT16:
    return FromInteger<T>(Load<std::int16_t>(v.Value));
  case DATA_TYPE_UINT16:
    return FromInteger<T>(Load<std::uint16_t>(v.Value));
  case DATA_TYPE_INT32:
    return FromInteger<T>(Load<std::int32_t>(v.Value));
  case DATA_TYPE_UINT32:
    return FromInteger<T>(Load<std::uint32_t>(v.Value));
  case DATA_TYPE_INT64:
    return FromInteger<T>(Load<std::int64_t>(v.Value));
  case DATA_TYPE_UINT64:
    return FromInteger<T>(Load<std::uint64_t>(v.Value));
  case DATA_TYPE_FLOAT:
    return FromReal<T>(Load<float>(v.Value));
  case DATA_TYPE_DOUBLE:
    return FromReal<T>(Load<double>(v.Value));
  default:
    throw TZxMessage("TVariant::Get failed");
  }
}

} // namespace

template <> bool TVariant::Get<bool>() const { return Convert<bool>(*this); }
template <> signed char TVariant::Get<signed char>() const { return Convert<signed char>(*this); }
template <> unsigned char TVariant::Get<unsigned char>() const {
  return Convert<unsigned char>(*this);
}
template <> short TVariant::Get<short>() const { return Convert<short>(*this); }
template <> unsigned short TVariant::Get<unsigned short>() const {
  return Convert<unsigned short>(*this);
}
template <> int TVariant::Get<int>() const { return Convert<int>(*this); }
template <> unsigned int TVariant::Get<unsigned int>() const {
  return Convert<unsigned int>(*this);
}
template <> long TVariant::Get<long>() const { return Convert<long>(*this); }
template <> unsigned long TVariant::Get<unsigned long>() const {
  return Convert<unsigned long>(*this);
}
template <> float TVariant::Get<float>() const { return Convert<float>(*this); }
template <> double TVariant::Get<double>() const { return Convert<double>(*this); }

} // namespace Zx3D
