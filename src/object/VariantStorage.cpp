#include <ZxCore3D/object/VariantStorage.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include <ZxCore3D/object/private/ObjectAccess.h>
#include <ZxCore3D/object/private/StreamAccess.h>
#include <ZxCore3D/object/private/TVariantWords.h>

namespace Zx3D {

// Bytes of the data form of a scalar by base code; 0 where it isn't one of the eleven.
static constexpr unsigned char kWidth[16] = {0, 1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8, 0, 0, 0, 0};

static bool HasArrayFlag(std::uint32_t tag) { return (tag & TVariant::s_ArrayFlag) != 0; }

// Components that a tag asks for, of which a vector of int32 can have up to 4.
static constexpr unsigned long kMaxComponents = 4;

static std::uint32_t ToWord(const unsigned char* bytes) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

static unsigned char* PutWord(unsigned char* to, std::uint32_t word) {
  std::memcpy(to, &word, sizeof word);
  return to + sizeof word;
}

// Copies a few bytes; the two blocks may overlap.
static void CopyShort(unsigned char* to, const void* data, unsigned long size) {
  const auto* from = static_cast<const unsigned char*>(data);
  if (size > 16) {
    std::memmove(to, from, size);
  } else if (size >= 8) {
    std::uint64_t head = 0;
    std::uint64_t tail = 0;
    std::memcpy(&head, from, 8);
    std::memcpy(&tail, from + size - 8, 8);
    std::memcpy(to, &head, 8);
    std::memcpy(to + size - 8, &tail, 8);
  } else if (size >= 4) {
    const std::uint32_t head = ToWord(from);
    const std::uint32_t tail = ToWord(from + size - 4);
    PutWord(to, head);
    PutWord(to + size - 4, tail);
  } else {
    std::memmove(to, from, size);
  }
}

static unsigned char* PutText(unsigned char* to, const void* text, unsigned long length) {
  to = PutWord(to, static_cast<std::uint32_t>(length));
  CopyShort(to, text, length);
  const unsigned long padding = GetPadding(length);
  std::memset(to + length, 0, padding);
  return to + length + padding;
}

static unsigned long GetTextSize(unsigned long length) { return 4 + length + GetPadding(length); }

// Writes an attribute, or a variant alone if `name` is null, straight into the memory behind the
// position. False, with nothing done, wherever this isn't possible: the long way decides then.
static bool SaveAtOnce(TStream* stream, const char* name, unsigned long length,
                       const TVariant& value) {
  TMemoryStream* memory = TMemoryAccess::Of(stream);
  if (memory == nullptr || length > kTrustedLength || value.Type > DATA_TYPE_STRING) {
    return false;
  }
  const std::uint32_t tag = value.Type;
  const unsigned long width = kWidth[tag];
  const char* text = value.GetStringPtr();
  if (width == 0 && tag != DATA_TYPE_NONE && text == nullptr) {
    return false;
  }
  const unsigned long textLength = text != nullptr ? std::strlen(text) : 0;
  if (textLength > kTrustedLength) {
    return false;
  }
  const unsigned long size = (name != nullptr ? GetTextSize(length) : 0) + 4 +
                             (text != nullptr ? GetTextSize(textLength) : width);
  unsigned char* to = TMemoryAccess::Claim(*memory, size);
  if (to == nullptr) {
    return false;
  }
  if (name != nullptr) {
    to = PutText(to, name, length);
  }
  to = PutWord(to, tag);
  if (text != nullptr) {
    PutText(to, text, textLength);
  } else {
    CopyShort(to, value.Value, width);
  }
  TMemoryAccess::Written(*memory, size);
  return true;
}

static bool SaveArrayData(TStream& stream, std::uint32_t tag, const TVariant& value) {
  if ((tag & 0xFE) > 13) {
    return false;
  }
  unsigned long size = 0;
  const void* data = value.GetArrayData(&size);
  // An empty variant and a reference have no count that means anything.
  const bool counted = value.Type != DATA_TYPE_NONE && value.Type != DATA_TYPE_REF;
  const std::uint32_t head[2] = {counted ? static_cast<std::uint32_t>(value.Count) : 0,
                                 static_cast<std::uint32_t>(size)};
  return stream.WriteAll(head, sizeof head) && stream.WriteAll(data, size);
}

static bool SaveVectorData(TStream& stream, DATA_TYPE type, const TVariant& value) {
  const unsigned long components = TVariant::GetComponents(type);
  int values[kMaxComponents];
  return TVariant::GetBaseCode(type) == DATA_TYPE_INT32 && components <= kMaxComponents &&
         value.GetVector(values, components) &&
         stream.WriteAll(values, components * sizeof values[0]);
}

template <class T> static bool SaveAs(TStream& stream, const TVariant& value) {
  const T number = value.Get<T>();
  return stream.WriteAll(&number, sizeof number);
}

bool SaveVariantData(TObjectWriter* writer, DATA_TYPE type, const TVariant& value) {
  TStream* stream = TWriterAccess::GetStream(writer);
  if (stream == nullptr) {
    return false;
  }
  if (HasArrayFlag(type)) {
    return SaveArrayData(*stream, type, value);
  }
  if (TVariant::GetComponents(type) != 1) {
    return SaveVectorData(*stream, type, value);
  }
  switch (static_cast<std::uint32_t>(type)) {
  case DATA_TYPE_NONE:
    return true;
  case DATA_TYPE_BOOL:
    return SaveAs<bool>(*stream, value);
  case DATA_TYPE_INT8:
    return SaveAs<signed char>(*stream, value);
  case DATA_TYPE_UINT8:
    return SaveAs<unsigned char>(*stream, value);
  case DATA_TYPE_INT16:
    return SaveAs<short>(*stream, value);
  case DATA_TYPE_UINT16:
    return SaveAs<unsigned short>(*stream, value);
  case DATA_TYPE_INT32:
    return SaveAs<int>(*stream, value);
  case DATA_TYPE_UINT32:
    return SaveAs<unsigned int>(*stream, value);
  case DATA_TYPE_INT64:
    return SaveAs<long>(*stream, value);
  case DATA_TYPE_UINT64:
    return SaveAs<unsigned long>(*stream, value);
  case DATA_TYPE_FLOAT:
    return SaveAs<float>(*stream, value);
  case DATA_TYPE_DOUBLE:
    return SaveAs<double>(*stream, value);
  case DATA_TYPE_STRING:
    return writer->WriteString(value.GetStringPtr(), ~0UL);
  default:
    return false;
  }
}

static bool SaveTagged(TObjectWriter* writer, TStream& stream, const TVariant& value) {
  const std::uint32_t tag = value.Type;
  return stream.WriteAll(&tag, sizeof tag) && SaveVariantData(writer, value.Type, value);
}

bool SaveVariant(TObjectWriter* writer, const TVariant& value) {
  TStream* stream = TWriterAccess::GetStream(writer);
  return stream != nullptr &&
         (SaveAtOnce(stream, nullptr, 0, value) || SaveTagged(writer, *stream, value));
}

bool SaveAttribute(TObjectWriter* writer, const char* name, unsigned long length,
                   const TVariant& value) {
  TStream* stream = TWriterAccess::GetStream(writer);
  if (stream == nullptr) {
    return false;
  }
  if (length >= ~0UL - 1 && name != nullptr) {
    length = std::strlen(name);
  }
  return (name != nullptr && SaveAtOnce(stream, name, length, value)) ||
         (writer->WriteString(name, length) && SaveTagged(writer, *stream, value));
}

bool SaveAttribute(TObjectWriter* writer, const std::string& name, const TVariant& value) {
  return SaveAttribute(writer, name.data(), name.size(), value);
}

// Makes `value` the owner of a block from `malloc` that is too long to lie inside the record.
static void TakeBlock(TVariant& value, std::uint32_t tag, unsigned long count, void* block,
                      unsigned long size) {
  value.Reset();
  variant::StoreBlock(value.Value, block, size);
  value.Count = count;
  value.Type = static_cast<DATA_TYPE>(tag);
}

// Reads into a fresh block of `size + slack` bytes that has grown with what arrived; null, with
// nothing kept, if that fails.
static unsigned char* ReadBlock(TStream& stream, unsigned long size, unsigned long slack) {
  unsigned char* block = nullptr;
  const auto reserve = [&block, slack](unsigned long needed) -> unsigned char* {
    void* grown = std::realloc(block, needed + slack);
    if (grown != nullptr) {
      block = static_cast<unsigned char*>(grown);
    }
    return static_cast<unsigned char*>(grown);
  };
  if (!ReadGrowing(stream, size, reserve)) {
    std::free(block);
    return nullptr;
  }
  return block;
}

static bool LoadArrayData(TStream& stream, std::uint32_t tag, TVariant& value) {
  const std::uint32_t base = tag & 0xFF;
  std::uint32_t head[2];
  if (base > 13 || !stream.ReadAll(head, sizeof head) || base == 0 || head[0] == 0) {
    return false;
  }
  const unsigned long size = head[0] * TVariant::s_BaseTypeSize[base];
  if (size > kTrustedLength && size > GetRemaining(stream)) {
    // The stream may deliver more than it says, but no length is worth an allocation here.
    value.Reset();
    unsigned char* block = size == head[1] ? ReadBlock(stream, size, 0) : nullptr;
    if (block == nullptr) {
      return false;
    }
    TakeBlock(value, base | TVariant::s_ArrayFlag, head[0], block, size);
    return true;
  }
  if (!value.SetArray(static_cast<DATA_TYPE>(base), head[0], nullptr, 0)) {
    return false;
  }
  void* data = value.GetArrayData(nullptr);
  if (size != head[1] || !stream.ReadAll(data, size)) {
    std::memset(data, 0, size);
    return false;
  }
  return true;
}

static bool LoadVectorData(TStream& stream, DATA_TYPE type, TVariant& value) {
  const unsigned long components = TVariant::GetComponents(type);
  int values[kMaxComponents];
  return TVariant::GetBaseCode(type) == DATA_TYPE_INT32 && components <= kMaxComponents &&
         stream.ReadAll(values, components * sizeof values[0]) &&
         value.SetVector(values, components);
}

template <class T> static bool LoadAs(TStream& stream, TVariant& value) {
  T number{};
  return stream.ReadAll(&number, sizeof number) && value.Set(number);
}

static bool LoadText(TObjectReader& reader, TStream& stream, TVariant& value) {
  unsigned long length = 0;
  if (!reader.ReadStringLen(&length)) {
    return false;
  }
  if (length <= kScratchMax) {
    const char* text = TReaderAccess::ReadText(reader, length);
    return text != nullptr && value.Set(text, std::strlen(text));
  }
  unsigned char* block = ReadBlock(stream, length, 1);
  if (block == nullptr) {
    return false;
  }
  block[length] = 0;
  if (!TReaderAccess::ReadPadding(reader, length)) {
    std::free(block);
    return false;
  }
  const unsigned long kept = std::strlen(reinterpret_cast<const char*>(block));
  if (kept + 1 <= sizeof value.Value) {
    const bool done = value.Set(reinterpret_cast<const char*>(block), kept);
    std::free(block);
    return done;
  }
  if (kept < length) {
    void* cut = std::realloc(block, kept + 1);
    block = cut != nullptr ? static_cast<unsigned char*>(cut) : block;
  }
  TakeBlock(value, DATA_TYPE_STRING, kept, block, kept + 1);
  return true;
}

bool LoadVariantData(TObjectReader* reader, DATA_TYPE type, TVariant& value) {
  TStream* stream = TReaderAccess::GetStream(reader);
  if (stream == nullptr) {
    return false;
  }
  if (HasArrayFlag(type)) {
    return LoadArrayData(*stream, type, value);
  }
  if (TVariant::GetComponents(type) != 1) {
    return LoadVectorData(*stream, type, value);
  }
  switch (static_cast<std::uint32_t>(type)) {
  case DATA_TYPE_NONE:
    value.Reset();
    return true;
  case DATA_TYPE_BOOL: {
    unsigned char byte = 0;
    return stream->ReadAll(&byte, sizeof byte) && value.Set(byte != 0);
  }
  case DATA_TYPE_INT8:
    return LoadAs<signed char>(*stream, value);
  case DATA_TYPE_UINT8:
    return LoadAs<unsigned char>(*stream, value);
  case DATA_TYPE_INT16:
    return LoadAs<short>(*stream, value);
  case DATA_TYPE_UINT16:
    return LoadAs<unsigned short>(*stream, value);
  case DATA_TYPE_INT32:
    return LoadAs<int>(*stream, value);
  case DATA_TYPE_UINT32:
    return LoadAs<unsigned int>(*stream, value);
  case DATA_TYPE_INT64:
    return LoadAs<long>(*stream, value);
  case DATA_TYPE_UINT64:
    return LoadAs<unsigned long>(*stream, value);
  case DATA_TYPE_FLOAT:
    return LoadAs<float>(*stream, value);
  case DATA_TYPE_DOUBLE:
    return LoadAs<double>(*stream, value);
  case DATA_TYPE_STRING:
    return LoadText(*reader, *stream, value);
  default:
    return false;
  }
}

// The scalar of `width` (0 to 8) bytes that begins the `remaining` bytes at `from`.
static void SetScalar(std::uint32_t tag, const unsigned char* from, unsigned long width,
                      unsigned long remaining, TVariant& value) {
  value.Reset();
  if (width == 0) {
    return;
  }
  std::uint64_t word = remaining >= 8
                           ? variant::LoadWord(from) & (~std::uint64_t(0) >> (64 - 8 * width))
                           : variant::LoadRest(from, width);
  if (tag == DATA_TYPE_BOOL) {
    word = word != 0 ? 1 : 0;
  }
  variant::MergeWord(value.Value, word, width);
  value.Count = 1;
  value.Type = static_cast<DATA_TYPE>(tag);
}

// `strnlen` for short texts that seldom hold a zero, eight bytes at a time.
static unsigned long GetTextLength(const unsigned char* text, unsigned long size) {
  const auto hasZero = [](std::uint64_t word) {
    return ((word - 0x0101010101010101U) & ~word & 0x8080808080808080U) != 0;
  };
  bool found = false;
  if (size >= 8) {
    found = hasZero(variant::LoadWord(text + size - 8));
    for (unsigned long i = 0; i + 8 < size; i += 8) {
      found |= hasZero(variant::LoadWord(text + i));
    }
  } else if (size != 0) {
    found = hasZero(variant::LoadRest(text, size) | ~std::uint64_t(0) << (8 * size));
  }
  return found ? strnlen(reinterpret_cast<const char*>(text), size) : size;
}

// How a read straight from memory ended.
enum class TAtOnce { LongWay, Failed, Done };

// Reads a scalar or short string that lies whole behind the position. `LongWay`, with nothing done,
// is the answer in every other case.
static TAtOnce LoadAtOnce(TMemoryStream& memory, TVariant& value) {
  unsigned long remaining = 0;
  const unsigned char* from = TMemoryAccess::Peek(memory, &remaining);
  if (from == nullptr || remaining < 4) {
    return TAtOnce::LongWay;
  }
  const std::uint32_t tag = ToWord(from);
  if (tag <= DATA_TYPE_DOUBLE) {
    const unsigned long width = kWidth[tag];
    if (remaining - 4 < width) {
      return TAtOnce::LongWay;
    }
    TMemoryAccess::Passed(memory, 4 + width);
    SetScalar(tag, from + 4, width, remaining - 4, value);
    return TAtOnce::Done;
  }
  if (tag != DATA_TYPE_STRING || remaining < 8) {
    return TAtOnce::LongWay;
  }
  const unsigned long length = ToWord(from + 4);
  if (length > kTrustedLength || remaining - 4 < GetTextSize(length)) {
    return TAtOnce::LongWay;
  }
  TMemoryAccess::Passed(memory, 4 + GetTextSize(length));
  const auto* text = reinterpret_cast<const char*>(from + 8);
  return value.Set(text, GetTextLength(from + 8, length)) ? TAtOnce::Done : TAtOnce::Failed;
}

// `memory` is the reader's stream if that is memory and nothing else.
static bool LoadFrom(TObjectReader* reader, TStream& stream, TMemoryStream* memory,
                     TVariant& value) {
  if (memory != nullptr) {
    const TAtOnce result = LoadAtOnce(*memory, value);
    if (result != TAtOnce::LongWay) {
      return result == TAtOnce::Done;
    }
  }
  std::uint32_t tag = 0;
  return stream.ReadAll(&tag, sizeof tag) &&
         LoadVariantData(reader, static_cast<DATA_TYPE>(tag), value);
}

bool LoadVariant(TObjectReader* reader, TVariant& value) {
  TStream* stream = TReaderAccess::GetStream(reader);
  return stream != nullptr && LoadFrom(reader, *stream, TMemoryAccess::Of(stream), value);
}

// Reads an attribute's name if it lies whole behind the position.
static bool LoadNameAtOnce(TMemoryStream& memory, std::string& name) {
  unsigned long remaining = 0;
  const unsigned char* from = TMemoryAccess::Peek(memory, &remaining);
  if (from == nullptr || remaining < 4) {
    return false;
  }
  const unsigned long length = ToWord(from);
  if (length > 31 || remaining < GetTextSize(length)) {
    return false;
  }
  TMemoryAccess::Passed(memory, GetTextSize(length));
  // Names tend to be as long as the one before, which then has nothing to be resized.
  const unsigned long kept = GetTextLength(from + 4, length);
  name.resize(kept);
  CopyShort(reinterpret_cast<unsigned char*>(name.data()), from + 4, kept);
  return true;
}

bool LoadAttribute(TObjectReader* reader, std::string& name, TVariant& value) {
  TStream* stream = TReaderAccess::GetStream(reader);
  if (stream == nullptr) {
    return false;
  }
  TMemoryStream* memory = TMemoryAccess::Of(stream);
  try {
    if (memory == nullptr || !LoadNameAtOnce(*memory, name)) {
      char text[32];
      if (!reader->ReadString(text, sizeof text)) {
        return false;
      }
      name = text;
    }
  } catch (const std::bad_alloc&) {
    return false;
  }
  return LoadFrom(reader, *stream, memory, value);
}

} // namespace Zx3D
