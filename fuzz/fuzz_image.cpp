// Bytes as an image file: a sound record, or false and why, and the same pixels each time.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxStream.h>
#include <ZxPixelKit/ZxPixelKit.h>

namespace {

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

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

DATASURFACE Load(const std::uint8_t* data, std::size_t size) {
  DATASURFACE surface = {};
  TBytesStream stream(data, size);
  TZxMessage reason;
  const bool done = LoadImage(&stream, nullptr, &surface, &reason);
  Require(done == (surface.Data != nullptr));
  Require(done == reason.GetText().empty());
  return surface;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > std::size_t{1} << 14) {
    return 0;
  }
  DATASURFACE first = Load(data, size);
  if (first.Data == nullptr) {
    return 0;
  }
  Require(first.Width >= 1 && first.Height >= 1 && first.Depth == 1);
  Require(first.Channels >= 1 && first.Channels <= 4);
  Require(first.PixelStride == static_cast<int>(first.Channels * GetTypeSize(first.Type)));
  Require(first.RowStride == first.PixelStride * first.Width);
  Require(first.DataSize ==
          static_cast<std::uint64_t>(first.RowStride) * static_cast<std::uint64_t>(first.Height));
  // Zeroed slack of a row and a pixel lies behind the data.
  const std::uint8_t* slack = first.Data + first.DataSize;
  Require(std::all_of(slack, slack + first.RowStride + first.PixelStride,
                      [](std::uint8_t byte) { return byte == 0; }));
  DATASURFACE second = Load(data, size);
  Require(second.DataSize == first.DataSize &&
          std::memcmp(first.Data, second.Data, first.DataSize) == 0);
  FreeDataSurfaceData(first);
  FreeDataSurfaceData(second);
  return 0;
}
