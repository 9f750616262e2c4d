#include <ZxCore3D/object/TVariant.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include <ZxCore3D/object/private/TVariantWords.h>

namespace Zx3D {

using namespace variant;

const std::uint64_t TVariant::s_BaseTypeSize[16] = {0, 1, 1, 1, 2, 2,  4, 4,
                                                    8, 8, 4, 8, 8, 16, 8, 0};

namespace {

bool IsArray(DATA_TYPE type) { return (type & TVariant::s_ArrayFlag) != 0; }

bool IsLongText(const TVariant& v) {
  return v.Type == DATA_TYPE_STRING && v.Count + 1 >= kHeapFrom;
}

std::uint64_t ElementSize(DATA_TYPE type) {
  return TVariant::GetComponents(type) * TVariant::s_BaseTypeSize[TVariant::GetBaseCode(type)];
}

// No block is that large, so that the allocator need not be asked.
constexpr std::uint64_t kNoBlock = std::uint64_t(1) << 63;

// Size of an array in bytes; false where it wraps or no block can be as large.
bool ArrayBytes(DATA_TYPE type, std::uint64_t count, std::uint64_t* bytes) {
  return !__builtin_mul_overflow(ElementSize(type), count, bytes) && *bytes < kNoBlock;
}

// Base codes above 13 never own array memory.
std::uint64_t StoredBytes(const TVariant& v) {
  return IsArray(v.Type) && TVariant::GetBaseCode(v.Type) < DATA_TYPE_REF
             ? ElementSize(v.Type) * v.Count
             : 0;
}

} // namespace

TVariant::TVariant(zx::TRef* ref) : Type(DATA_TYPE_NONE) { Set(ref); }

void TVariant::_Clear() {
  if (Type == DATA_TYPE_REF) {
    // Release may run a destructor that looks at this variant, or that destroys it: nothing is
    // touched behind it.
    zx::TRef* const ref = static_cast<zx::TRef*>(LoadPointer(Value));
    StorePointer(Value, nullptr);
    Type = DATA_TYPE_NONE;
    if (ref != nullptr) {
      ref->Release();
    }
    return;
  }
  if (IsLongText(*this)) {
    std::free(LoadPointer(Value));
    Type = DATA_TYPE_NONE;
    return;
  }
  if (IsArray(Type)) {
    if (StoredBytes(*this) >= kHeapFrom) {
      std::free(LoadPointer(Value));
    }
    StorePointer(Value, nullptr);
  }
  Type = DATA_TYPE_NONE;
}

TVariant& TVariant::operator=(const TVariant& other) {
  if (this != &other) {
    _Assign(other);
  }
  return *this;
}

void TVariant::_Assign(const TVariant& other) {
  if (other.Type == DATA_TYPE_REF) {
    Set(static_cast<zx::TRef*>(LoadPointer(other.Value)));
  } else if (other.Type == DATA_TYPE_STRING) {
    if (other.Count + 1 >= kHeapFrom) {
      if (!_SetLongText(static_cast<const char*>(LoadPointer(other.Value)), other.Count)) {
        throw std::bad_alloc();
      }
    } else if (_OwnsNothing()) {
      CopyText(Value, other.Value, other.Count);
      Count = other.Count;
      Type = DATA_TYPE_STRING;
    } else {
      _SetShortText(other.Value, other.Count);
    }
  } else if (IsArray(other.Type)) {
    _CopyArray(other);
  } else if (_OwnsNothing()) {
    _CopyRecord(other);
  } else {
    // The other may go with what this variant lets go of.
    TVariant kept;
    kept._CopyRecord(other);
    _Clear();
    _CopyRecord(kept);
  }
}

void TVariant::_Take(TVariant& other) noexcept {
  const TVariant let(std::move(*this));
  // The last use of the other: it may go with what this variant lets go of.
  _CopyRecord(other);
  other.Type = DATA_TYPE_NONE;
}

void TVariant::_CopyArray(const TVariant& other) {
  if (GetBaseCode(other.Type) >= DATA_TYPE_REF || GetComponents(other.Type) > 4) {
    throw std::invalid_argument("");
  }
  if (!_SetArray(other.Type, other.Count, other.GetArrayData(nullptr))) {
    throw std::bad_alloc();
  }
}

void TVariant::Swap(TVariant& other) {
  const TVariant kept(*this);
  *this = other;
  other = kept;
}

template <class T> bool TVariant::_SetScalar(DATA_TYPE type, T value) {
  std::uint64_t word = 0;
  std::memcpy(&word, &value, sizeof value);
  if (!_OwnsNothing()) {
    _Clear();
  }
  MergeWord(Value, word, sizeof value);
  Count = 1;
  Type = type;
  return true;
}

bool TVariant::Set(bool value) { return _SetScalar(DATA_TYPE_BOOL, value); }
bool TVariant::Set(signed char value) { return _SetScalar(DATA_TYPE_INT8, value); }
bool TVariant::Set(unsigned char value) { return _SetScalar(DATA_TYPE_UINT8, value); }
bool TVariant::Set(short value) { return _SetScalar(DATA_TYPE_INT16, value); }
bool TVariant::Set(unsigned short value) { return _SetScalar(DATA_TYPE_UINT16, value); }
bool TVariant::Set(int value) { return _SetScalar(DATA_TYPE_INT32, value); }
bool TVariant::Set(unsigned int value) { return _SetScalar(DATA_TYPE_UINT32, value); }
bool TVariant::Set(long value) { return _SetScalar(DATA_TYPE_INT64, value); }
bool TVariant::Set(unsigned long value) { return _SetScalar(DATA_TYPE_UINT64, value); }
bool TVariant::Set(float value) { return _SetScalar(DATA_TYPE_FLOAT, value); }
bool TVariant::Set(double value) { return _SetScalar(DATA_TYPE_DOUBLE, value); }

bool TVariant::Set(const char* text, unsigned long length) {
  if (text == nullptr && length != 0) {
    return false;
  }
  if (length == ~0UL) {
    length = std::strlen(text);
  }
  return _SetText(text, length);
}

bool TVariant::Set(const std::string& text) { return _SetText(text.data(), text.size()); }

bool TVariant::_SetText(const char* text, unsigned long length) {
  if (length + 1 >= kHeapFrom) {
    return _SetLongText(text, length);
  }
  _SetShortText(text, length);
  return true;
}

void TVariant::_SetShortText(const void* text, unsigned long length) {
  if (_OwnsNothing() && !_IsInside(text)) {
    StoreText(Value, text, length);
  } else {
    const TKeptBytes kept(text, length);
    Reset();
    StoreText(Value, kept.Bytes, length);
  }
  Count = length;
  Type = DATA_TYPE_STRING;
}

bool TVariant::_IsInside(const void* place) const {
  return reinterpret_cast<std::uintptr_t>(place) - reinterpret_cast<std::uintptr_t>(Value) <
         sizeof Value;
}

bool TVariant::_SetLongText(const char* text, unsigned long length) {
  if (length + 1 >= kNoBlock) {
    return false;
  }
  char* const old = IsLongText(*this) ? static_cast<char*>(LoadPointer(Value)) : nullptr;
  // A text inside the old block has to outlive the copy.
  const bool inside =
      old != nullptr &&
      reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(old) <= Count;
  void* const block =
      inside || old == nullptr ? std::malloc(length + 1) : std::realloc(old, length + 1);
  if (block == nullptr) {
    return false;
  }
  std::memcpy(block, text, length);
  static_cast<char*>(block)[length] = '\0';
  if (inside) {
    std::free(old);
  }
  if (Type != DATA_TYPE_STRING) {
    Reset();
  }
  StorePointer(Value, block);
  Count = length;
  Type = DATA_TYPE_STRING;
  return true;
}

bool TVariant::Set(zx::TRef* ref) {
  if (ref == nullptr) {
    Reset();
    return true;
  }
  zx::TRef* held = nullptr;
  if (Type == DATA_TYPE_REF) {
    held = static_cast<zx::TRef*>(LoadPointer(Value));
    if (held == ref) {
      return true;
    }
  } else {
    Reset();
  }
  ref->AddRef();
  StorePointer(Value, ref);
  Type = DATA_TYPE_REF;
  if (held != nullptr) {
    held->Release();
  }
  return true;
}

bool TVariant::SetVector(const int* values, unsigned long components) {
  if (components < 1 || components > 4) {
    return false;
  }
  const auto type = static_cast<DATA_TYPE>(components * 32 - 26);
  const std::uint64_t bytes = components * sizeof(int);
  if (values != nullptr && (Type == type || _OwnsNothing()) && !_IsInside(values)) {
    StoreBytes(Value, values, bytes);
  } else {
    const TKeptBytes kept(values, values != nullptr ? bytes : 0);
    if (Type != DATA_TYPE_NONE && Type != type) {
      _Clear();
    }
    if (values != nullptr) {
      StoreBytes(Value, kept.Bytes, bytes);
    }
  }
  Count = 1;
  Type = type;
  return true;
}

bool TVariant::_SetArray(DATA_TYPE type, unsigned long count, const void* data) {
  std::uint64_t bytes = 0;
  if (!ArrayBytes(type, count, &bytes)) {
    Reset();
    return false;
  }
  if (bytes < kHeapFrom) {
    const TKeptBytes kept(data, data != nullptr ? bytes : 0);
    Reset();
    if (data != nullptr) {
      StoreBytes(Value, kept.Bytes, bytes);
    }
  } else {
    void* const block = std::malloc(bytes);
    if (block == nullptr) {
      Reset();
      return false;
    }
    if (data != nullptr) {
      std::memcpy(block, data, bytes);
    }
    Reset();
    StoreBlock(Value, block, bytes);
  }
  Count = count;
  Type = type;
  return true;
}

namespace {

// The tag of an array of `components` values of `base`.
DATA_TYPE ArrayTag(DATA_TYPE base, unsigned long components) {
  return static_cast<DATA_TYPE>((components - 1) * 32 | base | TVariant::s_ArrayFlag);
}

} // namespace

bool TVariant::SetArray(const float* values, unsigned long count) {
  return values != nullptr && _SetArray(ArrayTag(DATA_TYPE_FLOAT, 1), count, values);
}

bool TVariant::SetArray(const double* values, unsigned long count) {
  return values != nullptr && _SetArray(ArrayTag(DATA_TYPE_DOUBLE, 1), count, values);
}

bool TVariant::SetArray(const float* values, unsigned long components, unsigned long count) {
  if (components < 1 || components > 4 || (values == nullptr && count == 0)) {
    return false;
  }
  return _SetArray(ArrayTag(DATA_TYPE_FLOAT, components), count, values);
}

bool TVariant::SetArray(const double* values, unsigned long components, unsigned long count) {
  if (components < 1 || components > 4 || (values == nullptr && count == 0)) {
    return false;
  }
  return _SetArray(ArrayTag(DATA_TYPE_DOUBLE, components), count, values);
}

bool TVariant::SetArray(DATA_TYPE type, unsigned long count, const void* data,
                        unsigned long bytes) {
  if (type == DATA_TYPE_NONE || type > DATA_TYPE_RESERVED16 || count == 0) {
    return false;
  }
  std::uint64_t needed = 0;
  if (data != nullptr && (!ArrayBytes(type, count, &needed) || needed > bytes)) {
    return false;
  }
  return _SetArray(ArrayTag(type, 1), count, data);
}

bool TVariant::Get(char* text, unsigned long size) const {
  if (Type != DATA_TYPE_STRING || Count >= size) {
    return false;
  }
  const char* const own = GetStringPtr();
  std::memcpy(text, own, std::strlen(own) + 1);
  return true;
}

bool TVariant::Get(std::string* text) const {
  if (Type != DATA_TYPE_STRING) {
    return false;
  }
  text->assign(GetStringPtr());
  return true;
}

const char* TVariant::GetStringPtr() const {
  if (Type != DATA_TYPE_STRING) {
    return nullptr;
  }
  return IsLongText(*this) ? static_cast<const char*>(LoadPointer(Value))
                           : reinterpret_cast<const char*>(Value);
}

unsigned long TVariant::GetStringLength() const { return Type == DATA_TYPE_STRING ? Count : 0; }

zx::TRef* TVariant::GetRef() const {
  return Type == DATA_TYPE_REF ? static_cast<zx::TRef*>(LoadPointer(Value)) : nullptr;
}

bool TVariant::GetVector(int* values, unsigned long components) const {
  if (components < 1 || components > 4 || Type != components * 32 - 26) {
    return false;
  }
  if (values != nullptr) {
    std::memcpy(values, Value, components * sizeof(int));
  }
  return true;
}

namespace {

bool CopyScalars(const TVariant& v, DATA_TYPE base, void* values, unsigned long count) {
  if ((v.Type & 0x1FFU) != ArrayTag(base, 1) || v.Count < count) {
    return false;
  }
  if (count != 0) {
    if (values == nullptr) {
      return false;
    }
    std::memcpy(values, v.GetArrayData(nullptr), count * TVariant::s_BaseTypeSize[base]);
  }
  return true;
}

} // namespace

bool TVariant::GetArray(float* values, unsigned long count) const {
  return CopyScalars(*this, DATA_TYPE_FLOAT, values, count);
}

bool TVariant::GetArray(double* values, unsigned long count) const {
  return CopyScalars(*this, DATA_TYPE_DOUBLE, values, count);
}

unsigned long TVariant::GetArrayDataSize() const { return StoredBytes(*this); }

void* TVariant::GetArrayData(unsigned long* bytes) {
  return const_cast<void*>(std::as_const(*this).GetArrayData(bytes));
}

const void* TVariant::GetArrayData(unsigned long* bytes) const {
  const std::uint64_t size = StoredBytes(*this);
  if (bytes != nullptr) {
    *bytes = size;
  }
  if (!IsArray(Type) || GetBaseCode(Type) >= DATA_TYPE_REF) {
    return nullptr;
  }
  return size >= kHeapFrom ? LoadPointer(Value) : Value;
}

} // namespace Zx3D
