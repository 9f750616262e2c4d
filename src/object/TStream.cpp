#include <ZxCore3D/object/TStream.h>

#include <cstdlib>

#include <ZxBaseKit/TZxMessage.h>

namespace Zx3D {

// Whether a transfer moved nothing or failed. A device's error code, -1, is more than was asked
// for, or is all of it where the caller asked for ~0: so much memory nobody has.
static bool Ended(unsigned long count, unsigned long size) {
  return count == 0 || count > size || count == ~0UL;
}

TStream::~TStream() = default;

bool TStream::ReadLine(char*, unsigned long, unsigned long*) { return false; }

long TStream::GetPosE() const { return GetPos(); }

bool TStream::SetPosE(long position) {
  if (!SetPos(position)) {
    throw TZxMessage("TStream::SetPosE failed!");
  }
  return true;
}

bool TStream::ReadAll(void* data, unsigned long size) {
  auto* to = static_cast<unsigned char*>(data);
  while (size != 0) {
    const unsigned long count = _Read(to, size);
    if (Ended(count, size)) {
      return false;
    }
    to += count;
    size -= count;
  }
  return true;
}

bool TStream::ReadAllE(void* data, unsigned long size) {
  if (!ReadAll(data, size)) {
    throw TZxMessage("TStream::ReadAll failed!");
  }
  return true;
}

bool TStream::WriteAll(const void* data, unsigned long size) {
  const auto* from = static_cast<const unsigned char*>(data);
  while (size != 0) {
    const unsigned long count = _Write(from, size);
    if (Ended(count, size)) {
      return false;
    }
    from += count;
    size -= count;
  }
  return true;
}

void* TStream::Map(long offset, unsigned long size, bool read, bool write, void** data) {
  if (size == 0 || data == nullptr) {
    return nullptr;
  }
  void* block = std::malloc(size);
  if (block == nullptr) {
    return nullptr;
  }
  const long before = GetPos();
  SetPos(offset);
  if (read && _Read(block, size) != size) {
    std::free(block);
    SetPos(before);
    return nullptr;
  }
  auto* mapping = static_cast<TStreamMapping*>(std::malloc(sizeof(TStreamMapping)));
  if (mapping == nullptr) {
    std::free(block);
    if (read) {
      SetPos(before);
    }
    return nullptr;
  }
  *data = block;
  *mapping = {offset, size, block, read, write, 0};
  return mapping;
}

bool TStream::Unmap(void* mapping) {
  if (mapping == nullptr) {
    return false;
  }
  auto* record = static_cast<TStreamMapping*>(mapping);
  bool done = true;
  if (record->Write) {
    SetPos(record->Offset);
    done = WriteAll(record->Data, record->Size);
  }
  std::free(record->Data);
  std::free(record);
  return done;
}

bool TStream::SupportMap() { return false; }

} // namespace Zx3D
