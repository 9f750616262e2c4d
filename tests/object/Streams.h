#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include <ZxCore3D/object/TStream.h>

namespace zx_test {

using Bytes = std::vector<unsigned char>;

/// Bytes from pieces that are written as in the format's drawing: "02 00 00 00" "61".
inline Bytes Hex(const std::string& text) {
  Bytes bytes;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == ' ') {
      ++at;
    } else {
      bytes.push_back(static_cast<unsigned char>(std::stoul(text.substr(at, 2), nullptr, 16)));
      at += 2;
    }
  }
  return bytes;
}

/// A stream that implements the pure operations and inherits all the others. It transfers at most
/// `Chunk` bytes a call, and after `Budget` calls it answers with `Answer` instead.
class TPlainStream : public Zx3D::TStream {
public:
  Bytes Data;
  long Position = 0;
  unsigned long Chunk = ~0UL;
  unsigned long Budget = ~0UL;
  unsigned long Answer = 0;
  unsigned long Calls = 0;
  bool Seeks = true;
  bool Writable = true;
  long ReportedSize = -2; ///< what `GetSize` says instead of the truth, from -1 on
  bool* Deleted = nullptr;

  TPlainStream() = default;
  explicit TPlainStream(Bytes data) : Data(std::move(data)) {}
  ~TPlainStream() override {
    if (Deleted != nullptr) {
      *Deleted = true;
    }
  }

  bool IsEOS() override { return Position >= static_cast<long>(Data.size()); }
  bool SetEOS() override { return SetSize(Position); }
  long GetPos() const override { return Position; }
  bool SetPos(long position) override {
    if (!Seeks || position < 0) {
      return false;
    }
    Position = position;
    return true;
  }
  long GetSize() const override {
    return ReportedSize >= -1 ? ReportedSize : static_cast<long>(Data.size());
  }
  bool SetSize(long size) override {
    Data.resize(static_cast<std::size_t>(size));
    return true;
  }
  unsigned long _Read(void* data, unsigned long size) override {
    if (Calls++ >= Budget) {
      return Answer;
    }
    if (IsEOS()) {
      return 0;
    }
    const unsigned long count =
        std::min({size, Chunk, Data.size() - static_cast<unsigned long>(Position)});
    std::memcpy(data, Data.data() + Position, count);
    Position += static_cast<long>(count);
    return count;
  }
  unsigned long _Write(const void* data, unsigned long size) override {
    if (Calls++ >= Budget) {
      return Answer;
    }
    if (!Writable) {
      return 0;
    }
    const unsigned long count = std::min(size, Chunk);
    const unsigned long end = static_cast<unsigned long>(Position) + count;
    Data.resize(std::max(Data.size(), end));
    std::memcpy(Data.data() + Position, data, count);
    Position = static_cast<long>(end);
    return count;
  }
  bool Skip(unsigned long size) override { return SetPos(Position + static_cast<long>(size)); }
};

} // namespace zx_test
