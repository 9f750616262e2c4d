#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include <ZxBaseKit/TRef.h>
#include <ZxPixelKit/DATASURFACE.h>

#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// A tagged value: nothing, a scalar, a short vector of `int`, a counted array, a string, or a
/// counted reference to a `zx::TRef`. Scalars, vectors, strings of up to 31 characters and arrays
/// of up to 32 bytes live inside the record; longer ones own one block from `malloc`.
///
/// The tag is a packed word: bits 0 to 3 are the base code of `DATA_TYPE`, bits 5 to 7 the
/// component count minus 1, bit 8 (0x100) the array flag.
///
/// A variant is a plain value for one thread at a time. The fields are public so that a writer can
/// look at them; what they own is kept by the operations alone.
class ZX_CORE3D_API TVariant {
public:
  /// The payload. Its first word is the pointer of a reference or of a block on the heap; the
  /// second word of a heap array is the block's size in bytes.
  alignas(8) unsigned char Value[32];
  /// 1 for a scalar or a vector, the length without terminator for a string, the number of elements
  /// for an array. Without meaning for the tags 0 and 14.
  std::uint64_t Count;
  /// The tag.
  DATA_TYPE Type;

  /// Size in bytes of one component by base code; 0 for none and for strings.
  static const std::uint64_t s_BaseTypeSize[16];

  /// The array flag of a tag.
  static constexpr std::uint32_t s_ArrayFlag = 0x100;

  /// Components of one element under tag `type`, 1 to 8.
  static constexpr std::uint64_t GetComponents(DATA_TYPE type) {
    return ((static_cast<std::uint32_t>(type) >> 5) & 7U) + 1U;
  }
  /// Base code of tag `type`, 0 to 15.
  static constexpr std::uint32_t GetBaseCode(DATA_TYPE type) {
    return static_cast<std::uint32_t>(type) & 15U;
  }

  /// The empty variant: tag 0, with `Value` and `Count` left as they are.
  TVariant() : Type(DATA_TYPE_NONE) {}
  /// A deep copy; a reference gains one count. Raises what `operator=` raises.
  TVariant(const TVariant& other) {
    if (other._OwnsNothing()) {
      _CopyRecord(other);
    } else {
      Type = DATA_TYPE_NONE;
      _Assign(other);
    }
  }
  /// Takes what `other` holds, its block or its count included, and leaves `other` empty (tag 0).
  /// Nothing is allocated and no count changes.
  TVariant(TVariant&& other) noexcept {
    _CopyRecord(other);
    other.Type = DATA_TYPE_NONE;
  }
  /// Holds one count of its own on `ref`; a null pointer gives the empty variant.
  TVariant(zx::TRef* ref);
  /// Frees what is owned. An exception out of a `Release` ends the process.
  ~TVariant() {
    if (!_OwnsNothing()) {
      _Clear();
    }
  }

  /// Deep copy. Raises `std::bad_alloc` when memory is exhausted (a string target then keeps its
  /// value, an array target is empty) and `std::invalid_argument` with an empty message for an
  /// array of references or strings or of more than four components, before the target is touched.
  TVariant& operator=(const TVariant& other);

  /// Takes what `other` holds and leaves `other` empty; then frees what the target held, so that
  /// `other` may lie inside it. A variant moved to itself keeps its value. An exception out of a
  /// `Release` ends the process.
  TVariant& operator=(TVariant&& other) noexcept {
    if (this != &other) {
      if (_OwnsNothing()) {
        _CopyRecord(other);
        other.Type = DATA_TYPE_NONE;
      } else {
        _Take(other);
      }
    }
    return *this;
  }

  /// Frees what is owned and makes the variant empty.
  void Reset() {
    if (_OwnsNothing()) {
      Type = DATA_TYPE_NONE;
    } else {
      _Clear();
    }
  }
  /// Exchanges two values by three deep copies; raises what `operator=` raises. `std::swap` moves
  /// them instead, and allocates nothing.
  void Swap(TVariant& other);

  /// Stores a scalar; always true.
  bool Set(bool value);
  bool Set(signed char value);
  bool Set(unsigned char value);
  bool Set(short value);
  bool Set(unsigned short value);
  bool Set(int value);
  bool Set(unsigned int value);
  bool Set(long value);
  bool Set(unsigned long value);
  bool Set(float value);
  bool Set(double value);

  /// Stores a copy of `length` characters, embedded zeros included; `~0` measures with `strlen`.
  /// The text may lie inside this variant. False when memory is exhausted or `text` is null with a
  /// length other than 0: the variant then keeps its value.
  bool Set(const char* text, unsigned long length);
  /// The same with the string's data and size.
  bool Set(const std::string& text);
  /// A literal would silently become a bool; give its length, or `~0`.
  bool Set(const char* text) = delete;

  /// Adds a count to `ref` and holds it; a null pointer empties the variant. Nothing changes when
  /// `ref` is held already. Always true.
  bool Set(zx::TRef* ref);
  /// Empties the variant; always true.
  bool Set(std::nullptr_t) { return Set(static_cast<zx::TRef*>(nullptr)); }

  /// Stores a vector of `components` ints (1 to 4, otherwise false; 1 is the plain int32). With a
  /// null pointer only the tag is set and the payload's bytes stay, so that a vector of the same
  /// size keeps its components.
  bool SetVector(const int* values, unsigned long components);

  /// Stores a counted array of scalars, which may be empty. False for a null pointer, with nothing
  /// changed; false and empty when memory is exhausted.
  bool SetArray(const float* values, unsigned long count);
  bool SetArray(const double* values, unsigned long count);
  /// Stores `count` elements of `components` (1 to 4) values each. With a null pointer and a count
  /// other than 0 the storage is left uninitialised, to be filled through `GetArrayData`. False for
  /// another number of components or a null pointer with a count of 0, with nothing changed; false
  /// and empty when memory is exhausted.
  bool SetArray(const float* values, unsigned long components, unsigned long count);
  bool SetArray(const double* values, unsigned long components, unsigned long count);
  /// Stores `count` (at least 1) elements of the plain base type `type` (1 to 13) from `data`,
  /// which holds `bytes` bytes; a null `data` leaves the storage uninitialised. False for another
  /// type, for a count of 0 or for too few bytes, with nothing changed; false and empty when memory
  /// is exhausted.
  bool SetArray(DATA_TYPE type, unsigned long count, const void* data, unsigned long bytes);

  /// The value as another scalar type, for tags 1 to 11 only: every other tag raises `TZxMessage`
  /// "TVariant::Get failed". Integers are cut or extended by their sign. A float or double is
  /// truncated to the 32-bit or 64-bit signed integer first; what does not fit there, or is a NaN,
  /// becomes the most negative one. As bool it is whether the value differs from 0.
  /// `T` is one of the eleven types of the scalar setters.
  template <class T> T Get() const = delete;

  /// Copies a string's text up to its first zero byte, terminator included. False, with nothing
  /// written, unless the variant is a string and its length is below `size`.
  bool Get(char* text, unsigned long size) const;
  /// Replaces `*text` by the string's text up to its first zero byte. False for anything else.
  bool Get(std::string* text) const;
  /// The terminated text, owned by the variant; null for anything but a string.
  const char* GetStringPtr() const;
  /// The string's length with embedded zeros; 0 for anything but a string.
  unsigned long GetStringLength() const;
  /// The held object without a count for the caller; null for anything but a reference.
  zx::TRef* GetRef() const;
  /// Copies the components of a vector of exactly `components` ints. A null `values` only tests.
  bool GetVector(int* values, unsigned long components) const;
  /// Copies the first `count` elements of an array of float (double) scalars. False for another
  /// tag, for fewer elements, or for a null pointer with a count other than 0.
  bool GetArray(float* values, unsigned long count) const;
  bool GetArray(double* values, unsigned long count) const;
  /// An array's size in bytes; 0 for anything else and for base codes above 13.
  unsigned long GetArrayDataSize() const;
  /// An array's data, owned by the variant; null for anything else and for base codes above 13. If
  /// `bytes` is not null it receives what `GetArrayDataSize` returns.
  void* GetArrayData(unsigned long* bytes);
  const void* GetArrayData(unsigned long* bytes) const;

  /// The value with its type as text, such as int32(5). False, with `*text` untouched, for tags
  /// without a text form. Numbers do not follow the host's locale.
  bool ToString(std::string* text) const;
  /// The same as a fresh string, empty where there is no text form.
  std::string ToString() const;
  /// The value alone as text, for display. False, with `*text` untouched, for vectors, arrays,
  /// references and reserved tags.
  bool AsString(std::string* text) const;
  /// Reads the form that `ToString` writes for scalars, strings and the empty variant. False, with
  /// the value kept, for any other text. Integers are cut to their width without a range check.
  bool FromString(const std::string& text);

private:
  // True only where the clear step has nothing to do but to set the tag; vectors go the long way.
  bool _OwnsNothing() const {
    return Type < DATA_TYPE_REF || (Type == DATA_TYPE_STRING && Count < 32);
  }
  void _Clear();
  template <class T> bool _SetScalar(DATA_TYPE type, T value);
  void _Assign(const TVariant& other);
  void _Take(TVariant& other) noexcept;
  // The whole record, word by word: the barrier on each word keeps the compiler from making wider
  // transfers, which could not be forwarded from the stores that set the value. The one on the
  // pointer says that the bytes of an empty variant may be copied, whatever they are.
  void _CopyRecord(const TVariant& other) {
    const TVariant* from = &other;
    __asm__("" : "+r"(from));
    for (std::size_t i = 0; i < sizeof Value; i += 8) {
      std::uint64_t word;
      std::memcpy(&word, from->Value + i, sizeof word);
      __asm__("" : "+r"(word));
      std::memcpy(Value + i, &word, sizeof word);
    }
    Count = from->Count;
    Type = from->Type;
  }
  [[gnu::visibility("hidden")]] bool _IsInside(const void* place) const;
  [[gnu::visibility("hidden")]] bool _SetText(const char* text, unsigned long length);
  [[gnu::visibility("hidden")]] void _SetShortText(const void* text, unsigned long length);
  [[gnu::visibility("hidden")]] bool _SetLongText(const char* text, unsigned long length);
  [[gnu::visibility("hidden")]] bool _SetArray(DATA_TYPE type, unsigned long count,
                                               const void* data);
  [[gnu::visibility("hidden")]] void _CopyArray(const TVariant& other);
};

static_assert(sizeof(TVariant) == 48 && alignof(TVariant) == 8);

template <> ZX_CORE3D_API bool TVariant::Get<bool>() const;
template <> ZX_CORE3D_API signed char TVariant::Get<signed char>() const;
template <> ZX_CORE3D_API unsigned char TVariant::Get<unsigned char>() const;
template <> ZX_CORE3D_API short TVariant::Get<short>() const;
template <> ZX_CORE3D_API unsigned short TVariant::Get<unsigned short>() const;
template <> ZX_CORE3D_API int TVariant::Get<int>() const;
template <> ZX_CORE3D_API unsigned int TVariant::Get<unsigned int>() const;
template <> ZX_CORE3D_API long TVariant::Get<long>() const;
template <> ZX_CORE3D_API unsigned long TVariant::Get<unsigned long>() const;
template <> ZX_CORE3D_API float TVariant::Get<float>() const;
template <> ZX_CORE3D_API double TVariant::Get<double>() const;

} // namespace Zx3D
