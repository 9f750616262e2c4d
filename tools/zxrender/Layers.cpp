#include "Layers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <ZxPixelKit/Surface.h>

namespace zx_scene {

namespace {

// An image of the layers' size whose channels are values of T.
template <class T>
TLayerImage _Make(const TLayers& layers, DATA_FORMAT format, DATA_TYPE type, int channels,
                  const std::vector<T>& values) {
  TLayerImage image;
  image.Pixels.resize(values.size() * sizeof(T));
  if (!values.empty()) {
    std::memcpy(image.Pixels.data(), values.data(), image.Pixels.size());
  }
  ds::Set(&image.Surface, layers.Width, layers.Height, format, type, channels, image.Pixels.data());
  return image;
}

std::array<std::uint8_t, 3> _IdColor(std::uint32_t id) {
  std::array<std::uint8_t, 3> color = {};
  for (int bit = 7; bit >= 0; --bit, id >>= 3) {
    for (unsigned int c = 0; c < 3; ++c) {
      color[c] = static_cast<std::uint8_t>(color[c] | (id >> c & 1u) << bit);
    }
  }
  return color;
}

// To the nearest; no number is 0.
std::uint16_t _ToUint16(double value) {
  return value > 0 ? static_cast<std::uint16_t>(std::min(std::floor(value + 0.5), 65535.0))
                   : std::uint16_t{0};
}

bool _IsNothing(const TLayers& layers, std::size_t pixel) {
  return std::isinf(layers.Depth[pixel]);
}

} // namespace

double DepthStepFor(const std::vector<TCamera>& cameras) {
  // Written down: a product of tens would not be the double that is nearest to the power.
  static constexpr double kSteps[] = {
      1e-30, 1e-29, 1e-28, 1e-27, 1e-26, 1e-25, 1e-24, 1e-23, 1e-22, 1e-21, 1e-20, 1e-19, 1e-18,
      1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9,  1e-8,  1e-7,  1e-6,  1e-5,
      1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,   1e7,   1e8,
      1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,  1e19,  1e20,  1e21,
      1e22,  1e23,  1e24,  1e25,  1e26,  1e27,  1e28,  1e29,  1e30,  1e31,  1e32,  1e33,  1e34};
  double far = 0;
  for (const TCamera& camera : cameras) {
    far = std::max(far, camera.Far);
  }
  for (const double step : kSteps) {
    if (far <= step * 65535) {
      return step;
    }
  }
  return 1e35; // no float lies farther
}

TLayerImage DepthAsSteps(const TLayers& layers, double step) {
  std::vector<std::uint16_t> values(layers.Depth.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!_IsNothing(layers, i)) {
      values[i] = std::max(_ToUint16(double{layers.Depth[i]} / step), std::uint16_t{1});
    }
  }
  return _Make(layers, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT16, 1, values);
}

TLayerImage DepthAsFloats(const TLayers& layers) {
  return _Make(layers, DATA_FORMAT_LUMINANCE, DATA_TYPE_FLOAT, 1, layers.Depth);
}

TLayerImage NormalsAsColors(const TLayers& layers) {
  std::vector<std::uint16_t> values(layers.Normals.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!_IsNothing(layers, i / 3)) {
      values[i] = _ToUint16((double{layers.Normals[i]} + 1) / 2 * 65535);
    }
  }
  return _Make(layers, DATA_FORMAT_RGB, DATA_TYPE_UINT16, 3, values);
}

TLayerImage NormalsAsFloats(const TLayers& layers) {
  return _Make(layers, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3, layers.Normals);
}

TLayerImage IdsAsColors(const TLayers& layers) {
  std::vector<std::uint8_t> values;
  values.reserve(3 * layers.Ids.size());
  for (const std::uint32_t id : layers.Ids) {
    const std::array<std::uint8_t, 3> color = _IdColor(id);
    values.insert(values.end(), color.begin(), color.end());
  }
  return _Make(layers, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3, values);
}

std::string IdColorText(std::uint32_t id) {
  const std::array<std::uint8_t, 3> color = _IdColor(id);
  char text[16];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", color[0], color[1], color[2]);
  return text;
}

} // namespace zx_scene
