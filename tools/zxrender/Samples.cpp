#include "Samples.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "SrgbTables.h"

namespace zx_scene {

namespace {

// The byte whose light is the nearest to `sum` / (16 * 65535).
std::uint8_t _ToByte(std::uint32_t sum) {
  const auto* step = std::upper_bound(std::begin(kSrgbSteps), std::end(kSrgbSteps), sum);
  return static_cast<std::uint8_t>(step - std::begin(kSrgbSteps));
}

// `samples` holds `count` pixels, 4 or 16. A colour counts as far as it is opaque; where nothing
// is, all colours count alike.
void _Average(const std::uint8_t (*samples)[4], std::uint32_t count, std::uint8_t* to) {
  std::uint32_t alphas = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    alphas += samples[i][3];
  }
  const std::uint32_t weights = alphas > 0 ? alphas : count;
  for (std::size_t c = 0; c < 3; ++c) {
    std::uint64_t light = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint32_t weight = alphas > 0 ? samples[i][3] : 1u;
      light += weight * kSrgbToLinear[samples[i][c]];
    }
    to[c] = _ToByte(static_cast<std::uint32_t>(16 * light / weights));
  }
  to[3] = static_cast<std::uint8_t>((alphas + count / 2) / count);
}

} // namespace

void AverageSamples(const DATASURFACE& from, int side, std::uint8_t* to) {
  const int width = from.Width / side;
  const int height = from.Height / side;
  std::uint8_t samples[16][4];
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, to += 4) {
      std::size_t count = 0;
      bool same = true;
      for (int row = 0; row < side; ++row) {
        const std::uint8_t* pixel = from.Data +
                                    static_cast<std::ptrdiff_t>(y * side + row) * from.RowStride +
                                    static_cast<std::ptrdiff_t>(x * side) * from.PixelStride;
        for (int column = 0; column < side; ++column, pixel += from.PixelStride, ++count) {
          std::memcpy(samples[count], pixel, 4);
          same = same && std::memcmp(samples[0], pixel, 4) == 0;
        }
      }
      if (same) {
        std::memcpy(to, samples[0], 4);
      } else {
        _Average(samples, static_cast<std::uint32_t>(count), to);
      }
    }
  }
}

} // namespace zx_scene
