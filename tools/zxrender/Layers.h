#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <ZxPixelKit/DATASURFACE.h>

#include "Scene.h"

/// Depth, normals and ids as pixels of image files.
namespace zx_scene {

/// Pixels with a record over them.
struct TLayerImage {
  std::vector<std::uint8_t> Pixels;
  DATASURFACE Surface;
};

/// The least power of ten of which the far ends of all views are at most 65535; 1e-30 at the least.
double DepthStepFor(const std::vector<TCamera>& cameras);

/// One channel of 16 bits: multiples of `step`, rounded, 1 to 65535; 0 for nothing.
TLayerImage DepthAsSteps(const TLayers& layers, double step);

/// One channel of float; infinity for nothing.
TLayerImage DepthAsFloats(const TLayers& layers);

/// Three channels of 16 bits: (component + 1) / 2 of 65535, rounded; 0 for nothing.
TLayerImage NormalsAsColors(const TLayers& layers);

/// Three channels of float; 0 for nothing.
TLayerImage NormalsAsFloats(const TLayers& layers);

/// Three channels of 8 bits; black for nothing.
TLayerImage IdsAsColors(const TLayers& layers);

/// The colour of an id as #rrggbb: bits 0, 1 and 2 of `id` are the highest of red, green and blue,
/// bits 3, 4 and 5 the next, and so on; different for all ids below 2^24.
std::string IdColorText(std::uint32_t id);

} // namespace zx_scene
