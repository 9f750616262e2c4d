#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxStream.h>
#include <ZxPixelKit/ZxPixelKit.h>

// What the targets of images share: bytes as a stream, and what has to hold of a picture that was
// loaded.

namespace fuzz_image {

class TBytesStream : public TZxStream {
public:
  TBytesStream(const std::uint8_t* data, std::size_t size) : m_Data(data), m_Left(size) {}
  unsigned long Read(void* to, unsigned long size) override {
    const unsigned long count = std::min(size, m_Left);
    if (count > 0) {
      std::memcpy(to, m_Data, count);
    }
    m_Data += count;
    m_Left -= count;
    return count;
  }
  operator bool() override { return true; }

private:
  const std::uint8_t* m_Data;
  unsigned long m_Left;
};

inline void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

inline DATASURFACE Load(const std::uint8_t* data, std::size_t size) {
  DATASURFACE surface = {};
  TBytesStream stream(data, size);
  TZxMessage reason;
  const bool done = LoadImage(&stream, nullptr, &surface, &reason);
  Require(done == (surface.Data != nullptr));
  Require(done == reason.GetText().empty());
  return surface;
}

inline void RequireSound(const DATASURFACE& s) {
  Require(s.Width >= 1 && s.Height >= 1 && s.Depth == 1);
  Require(s.Channels >= 1 && s.Channels <= 4);
  Require(s.PixelStride == static_cast<int>(s.Channels * GetTypeSize(s.Type)));
  Require(s.RowStride == s.PixelStride * s.Width);
  Require(s.DataSize ==
          static_cast<std::uint64_t>(s.RowStride) * static_cast<std::uint64_t>(s.Height));
  // Zeroed slack of a row and a pixel lies behind the data.
  const std::uint8_t* slack = s.Data + s.DataSize;
  Require(std::all_of(slack, slack + s.RowStride + s.PixelStride,
                      [](std::uint8_t byte) { return byte == 0; }));
}

/// A sound record, or false and why, and the same pixels each time.
inline void LoadTwice(const std::uint8_t* data, std::size_t size) {
  DATASURFACE first = Load(data, size);
  if (first.Data == nullptr) {
    return;
  }
  RequireSound(first);
  DATASURFACE second = Load(data, size);
  Require(second.DataSize == first.DataSize &&
          std::memcmp(first.Data, second.Data, first.DataSize) == 0);
  FreeDataSurfaceData(first);
  FreeDataSurfaceData(second);
}

} // namespace fuzz_image
