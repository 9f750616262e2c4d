// The text format of sections and keys: bytes as a text that is read, and what could be read is
// written and read again; and bytes as values that are written, which have to come back to the bit.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>

namespace {

void Require(bool condition) {
  if (!condition) {
    __builtin_trap();
  }
}

// False for a value of another type; a message is the only thing that may be thrown.
template <class T> bool Read(const TZxXIniReader& reader, unsigned long item, T* value) {
  try {
    *value = reader.ReadE<T>(item);
    return true;
  } catch (const TZxMessage& message) {
    Require(!message.GetText().empty());
    return false;
  }
}

template <class T>
bool Copy(const TZxXIniReader& from, unsigned long item, const std::string& key,
          TZxXIniWriter* to) {
  T value{};
  return Read(from, item, &value) && (to->WriteS(key, &value), true);
}

void CopySection(TZxXIniReader& from, TZxXIniWriter* to) {
  const unsigned long count = from.GetCount();
  for (unsigned long item = 0; item < count; ++item) {
    const std::string key = from.GetKeyE(item);
    Require(from.FindF(key, 0) == item && from.FindF(key, item + 1) == ~0UL);
    if (Copy<std::string>(from, item, key, to) || Copy<bool>(from, item, key, to) ||
        Copy<long>(from, item, key, to) || Copy<double>(from, item, key, to)) {
      continue;
    }
    try {
      const unsigned long inside = from.BeginSectionE(item);
      try {
        const unsigned long section = to->BeginSectionSE(key);
        CopySection(from, to);
        to->EndSectionE(section);
      } catch (const TZxMessage&) { // no key to write by
      }
      from.EndSectionE(inside);
    } catch (const TZxMessage&) { // no section: an array, a date
    }
  }
}

std::string Rewritten(const std::string& text) {
  TZxXIniReader reader(text);
  TZxXIniWriter writer;
  CopySection(reader, &writer);
  return writer.GetText();
}

void ReadText(const std::string& text) {
  std::string once;
  try {
    once = Rewritten(text);
  } catch (const TZxMessage& message) {
    Require(!message.GetText().empty());
    return;
  }
  // What the writer wrote can be read, all of it: the text stays the same.
  Require(Rewritten(once) == once);
}

void WriteValues(const std::uint8_t* data, std::size_t size) {
  TZxXIniWriter writer;
  double number = 0;
  long whole = 0;
  std::memcpy(&number, data, sizeof number);
  std::memcpy(&whole, data + sizeof number, sizeof whole);
  const std::string text(reinterpret_cast<const char*>(data + 16), size - 16);
  const bool flag = (data[0] & 1) != 0;
  const unsigned long section = writer.BeginSectionSE("section");
  const unsigned long compact = writer.BeginSectionCompactSE("compact");
  Require(writer.WriteS("number", &number) && writer.WriteS("whole", &whole) &&
          writer.WriteS("flag", &flag));
  const bool isText = writer.WriteS("text", &text);
  const bool isKey = writer.WriteS(text, &whole);
  writer.EndSectionE(compact);
  writer.EndSectionE(section);

  TZxXIniReader reader(writer.GetText());
  reader.BeginSectionE(reader.FindFE("section", 0));
  reader.BeginSectionE(reader.FindFE("compact", 0));
  const double back = reader.ReadE<double>(reader.FindFE("number", 0));
  Require(std::memcmp(&back, &number, sizeof back) == 0);
  Require(reader.ReadE<long>(reader.FindFE("whole", 0)) == whole);
  Require(reader.ReadE<bool>(reader.FindFE("flag", 0)) == flag);
  Require((reader.FindF("text", 0) != ~0UL) == isText || text == "text");
  Require(!isText || reader.ReadE<std::string>(reader.FindFE("text", 0)) == text);
  Require(!isKey || reader.ReadE<long>(reader.FindFE(text, 0)) == whole);
}

} // namespace

// Input: one byte, whose last bit chooses, then a text, or a double, a whole number and a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 1024) {
    return 0;
  }
  if ((data[0] & 1) == 0) {
    ReadText(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  } else if (size >= 17) {
    WriteValues(data + 1, size - 1);
  }
  return 0;
}
