#include <ZxCore3D/object/TVariant.h>

#include <string_view>
#include <utility>

#include <ZxCore3D/object/private/TVariantWords.h>
#include <ZxCore3D/util/TextNumbers.h>
#include <ZxRunKit/Format.h>

namespace Zx3D {

namespace {

using variant::Load;
using Zentrix::ssprintf;

const char* BoolName(unsigned char byte) { return byte != 0 ? "true" : "false"; }

// Component i of the payload as the argument that its format takes.
template <class TStored, class TPrinted> TPrinted Printed(const TVariant& v, unsigned int i) {
  return static_cast<TPrinted>(Load<TStored>(v.Value + i * sizeof(TStored)));
}

template <class TStored, class TPrinted>
std::string PrintVector(const TVariant& v, const char* const* formats) {
  const auto at = [&v](unsigned int i) { return Printed<TStored, TPrinted>(v, i); };
  switch (TVariant::GetComponents(v.Type)) {
  case 2:
    return ssprintf(formats[0], at(0), at(1));
  case 3:
    return ssprintf(formats[1], at(0), at(1), at(2));
  default:
    return ssprintf(formats[2], at(0), at(1), at(2), at(3));
  }
}

// Two, three and four components by base code. The names of the last column are what files hold.
constexpr const char* kVectorFormats[12][3] = {
    {},
    {"vec2b(%s,%s)", "vec3b(%s,%s,%s)", "vec4b(%s,%s,%s,%s)"},
    {"vec2i8(%d,%d)", "vec3i8(%d,%d,%d)", "vec3i8(%d,%d,%d,%d)"},
    {"vec2u8(%d,%d)", "vec3u8(%d,%d,%d)", "vec3u8(%d,%d,%d,%d)"},
    {"vec2i16(%d,%d)", "vec3i16(%d,%d,%d)", "vec3i16(%d,%d,%d,%d)"},
    {"vec2u16(%d,%d)", "vec3u16(%d,%d,%d)", "vec3u16(%d,%d,%d,%d)"},
    {"vec2i32(%d,%d)", "vec3i32(%d,%d,%d)", "vec3i32(%d,%d,%d,%d)"},
    {"vec2u32(%u,%u)", "vec3u32(%u,%u,%u)", "vec3u32(%u,%u,%u,%u)"},
    {"vec2i64(%lld,%lld)", "vec3i64(%lld,%lld,%lld)", "vec3i64(%lld,%lld,%lld,%lld)"},
    {"vec2u64(%llu,%llu)", "vec3u64(%llu,%llu,%llu)", "vec3u64(%llu,%llu,%llu,%llu)"},
    {"vec2f(%f,%f)", "vec3f(%f,%f,%f)", "vec3f(%0.16f,%0.16f,%0.16f,%0.16f)"},
    {"vec2d(%f,%f)", "vec3d(%f,%f,%f)", "vec3d(%0.16f,%0.16f,%0.16f,%0.16f)"},
};

std::string PrintBoolVector(const TVariant& v, const char* const* formats) {
  const auto at = [&v](unsigned int i) { return BoolName(v.Value[i]); };
  switch (TVariant::GetComponents(v.Type)) {
  case 2:
    return ssprintf(formats[0], at(0), at(1));
  case 3:
    return ssprintf(formats[1], at(0), at(1), at(2));
  default:
    return ssprintf(formats[2], at(0), at(1), at(2), at(3));
  }
}

// Tags from 16 on.
bool VectorToString(const TVariant& v, std::string* text) {
  const std::uint64_t components = TVariant::GetComponents(v.Type);
  const std::uint32_t base = TVariant::GetBaseCode(v.Type);
  if (components < 2 || components > 4 || base < DATA_TYPE_BOOL || base > DATA_TYPE_DOUBLE) {
    return false;
  }
  const char* const* const formats = kVectorFormats[base];
  switch (base) {
  case DATA_TYPE_BOOL:
    *text = PrintBoolVector(v, formats);
    break;
  case DATA_TYPE_INT8:
    *text = PrintVector<std::int8_t, int>(v, formats);
    break;
  case DATA_TYPE_UINT8:
    *text = PrintVector<std::uint8_t, int>(v, formats);
    break;
  case DATA_TYPE_INT16:
    *text = PrintVector<std::int16_t, int>(v, formats);
    break;
  case DATA_TYPE_UINT16:
    *text = PrintVector<std::uint16_t, int>(v, formats);
    break;
  case DATA_TYPE_INT32:
    *text = PrintVector<std::int32_t, int>(v, formats);
    break;
  case DATA_TYPE_UINT32:
    *text = PrintVector<std::uint32_t, unsigned int>(v, formats);
    break;
  case DATA_TYPE_INT64:
    *text = PrintVector<std::int64_t, long long>(v, formats);
    break;
  case DATA_TYPE_UINT64:
    *text = PrintVector<std::uint64_t, unsigned long long>(v, formats);
    break;
  case DATA_TYPE_FLOAT:
    *text = PrintVector<float, double>(v, formats);
    break;
  default:
    *text = PrintVector<double, double>(v, formats);
    break;
  }
  return true;
}

// The number of a scalar other than bool, behind `before` and ahead of `after`.
std::string PrintNumber(const TVariant& v, const char* before, const char* after) {
  switch (v.Type) {
  case DATA_TYPE_BOOL:
  case DATA_TYPE_UINT8:
    return ssprintf("%s%d%s", before, Printed<std::uint8_t, int>(v, 0), after);
  case DATA_TYPE_INT8:
    return ssprintf("%s%d%s", before, Printed<std::int8_t, int>(v, 0), after);
  case DATA_TYPE_INT16:
    return ssprintf("%s%d%s", before, Printed<std::int16_t, int>(v, 0), after);
  case DATA_TYPE_UINT16:
    return ssprintf("%s%d%s", before, Printed<std::uint16_t, int>(v, 0), after);
  case DATA_TYPE_INT32:
  case DATA_TYPE_UINT32:
    return ssprintf("%s%d%s", before, Printed<std::int32_t, int>(v, 0), after);
  case DATA_TYPE_INT64:
    return ssprintf("%s%lli%s", before, Printed<std::int64_t, long long>(v, 0), after);
  case DATA_TYPE_UINT64:
    return ssprintf("%s%llu%s", before, Printed<std::uint64_t, unsigned long long>(v, 0), after);
  case DATA_TYPE_FLOAT:
    return ssprintf("%s%f%s", before, Printed<float, double>(v, 0), after);
  default:
    return ssprintf("%s%f%s", before, Load<double>(v.Value), after);
  }
}

constexpr const char* kScalarNames[12] = {"",       "",        "int8(",  "uint8(",
                                          "int16(", "uint16(", "int32(", "uint32(",
                                          "int64(", "uint64(", "float(", "double("};

bool StartsWith(const std::string& text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

// Stores `value` cut to `width` bits; false for another width than 8, 16, 32 or 64.
template <class T8, class T16, class T32, class T64>
bool SetWidth(TVariant* v, int width, T64 value) {
  switch (width) {
  case 8:
    return v->Set(static_cast<T8>(value));
  case 16:
    return v->Set(static_cast<T16>(value));
  case 32:
    return v->Set(static_cast<T32>(value));
  case 64:
    return v->Set(value);
  default:
    return false;
  }
}

} // namespace

bool TVariant::ToString(std::string* text) const {
  if (Type > DATA_TYPE_STRING) {
    return VectorToString(*this, text);
  }
  switch (Type) {
  case DATA_TYPE_NONE:
    *text = "<none>";
    return true;
  case DATA_TYPE_BOOL:
    *text = BoolName(Value[0]);
    return true;
  case DATA_TYPE_RESERVED8:
  case DATA_TYPE_RESERVED16:
  case DATA_TYPE_REF:
    return false;
  case DATA_TYPE_STRING: {
    std::string quoted = "\"";
    quoted += GetStringPtr();
    quoted += '"';
    *text = std::move(quoted);
    return true;
  }
  default:
    *text = PrintNumber(*this, kScalarNames[Type], ")");
    return true;
  }
}

std::string TVariant::ToString() const {
  std::string text;
  ToString(&text);
  return text;
}

bool TVariant::AsString(std::string* text) const {
  switch (Type) {
  case DATA_TYPE_NONE:
    *text = "none";
    return true;
  case DATA_TYPE_RESERVED8:
  case DATA_TYPE_RESERVED16:
  case DATA_TYPE_REF:
    return false;
  case DATA_TYPE_STRING:
    return Get(text);
  default:
    if (Type > DATA_TYPE_STRING) {
      return false;
    }
    *text = PrintNumber(*this, "", "");
    return true;
  }
}

bool TVariant::FromString(const std::string& text) {
  const std::size_t size = text.size();
  if (size < 2) {
    return false;
  }
  if (text == "<none>") {
    Reset();
    return true;
  }
  if (text.front() == '"' && text.back() == '"') {
    return Set(text.data() + 1, size - 2);
  }
  if (text == "true" || text == "false") {
    return Set(text == "true");
  }
  const std::size_t open = text.find('(');
  const std::size_t close = open != std::string::npos ? text.find(')', open) : open;
  if (close == std::string::npos) {
    return false;
  }
  const char* const number = text.data() + open + 1;
  const std::size_t digits = close - open - 1;
  int width = 0;
  if (open >= 4 && StartsWith(text, "int")) {
    long value = 0;
    return StringToInt(text.data() + 3, open - 3, &width) &&
           StringToInt64(number, digits, &value) &&
           SetWidth<signed char, short, int, long>(this, width, value);
  }
  if (open >= 5 && StartsWith(text, "uint")) {
    unsigned long value = 0;
    return StringToInt(text.data() + 4, open - 4, &width) &&
           StringToUint64(number, digits, &value) &&
           SetWidth<unsigned char, unsigned short, unsigned int, unsigned long>(this, width, value);
  }
  if (open == 5 && StartsWith(text, "float")) {
    float value = 0.0F;
    StringToFloat(number, &value);
    return Set(value);
  }
  if (open == 6 && StartsWith(text, "double")) {
    double value = 0.0;
    StringToFloat(number, &value);
    return Set(value);
  }
  return false;
}

} // namespace Zx3D
