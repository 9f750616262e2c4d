// The object reader with all its loads, on a stream of memory and on one that delivers in pieces:
// both have to read the same, and what was read has to survive another writing and reading.
//
// Input: the count of operations, one byte for each, then the stream.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>

using namespace Zx3D;

namespace {

void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}

// No plain `TMemoryStream` to the reader: it takes the long way, at most five bytes a call.
struct TPieces : TMemoryStream {
  using TMemoryStream::TMemoryStream;
  bool ReadAll(void* data, unsigned long size) override { return TStream::ReadAll(data, size); }
  unsigned long _Read(void* data, unsigned long size) override {
    return TMemoryStream::_Read(data, std::min(size, 5UL));
  }
};

// One load. What was read is told as bytes, those of the written form for a variant.
bool Load(TObjectReader& reader, unsigned operation, std::string* told) {
  TVariant value;
  std::wstring wide;
  char narrow[20] = {};
  wchar_t buffer[20] = {};
  bool read = false;
  switch (operation % 8) {
  case 0:
    return reader.ReadString(told);
  case 1:
    read = reader.ReadString(&wide);
    told->assign(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t));
    return read;
  case 2:
    read = reader.ReadString(narrow, sizeof narrow);
    told->assign(narrow, sizeof narrow);
    return read;
  case 3:
    return reader.ReadString(buffer, 20);
  case 4:
    read = LoadVariantData(&reader, static_cast<DATA_TYPE>(operation * 0x102U / 8), value);
    break;
  default:
    read = operation % 2 != 0 ? LoadAttribute(&reader, *told, value) : LoadVariant(&reader, value);
  }
  if (!read) {
    return false;
  }
  TMemoryStream stream;
  TObjectWriter writer(&stream, false);
  Require(SaveVariant(&writer, value));
  TObjectReader again(&stream, false);
  TVariant back;
  Require(stream.SetPos(0) && LoadVariant(&again, back) && stream.IsEOS());
  Require(back.Type == value.Type && (back.Type == 0 || back.Count == value.Count));
  void* bytes = nullptr;
  void* handle = stream.Map(0, static_cast<unsigned long>(stream.GetSize()), true, false, &bytes);
  told->append(static_cast<char*>(bytes), static_cast<std::size_t>(stream.GetSize()));
  return stream.Unmap(handle);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096 || data[0] >= size) {
    return 0;
  }
  std::vector<std::uint8_t> bytes(data + 1 + data[0], data + size);
  TMemoryStream one(bytes.data(), bytes.size(), false);
  TPieces two(bytes.data(), bytes.size(), false);
  TObjectReader reader(&one, false);
  TObjectReader other(&two, false);
  for (unsigned i = 1; i <= data[0]; ++i) {
    std::string told[2];
    const bool read = Load(reader, data[i], &told[0]);
    Require(Load(other, data[i], &told[1]) == read);
    if (!read) {
      break;
    }
    Require(told[0] == told[1] && one.GetPos() == two.GetPos());
  }
  return 0;
}
