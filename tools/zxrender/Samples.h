#pragma once

#include <cstdint>

#include <ZxPixelKit/DATASURFACE.h>

namespace zx_scene {

/// Averages blocks of `side` by `side` pixels of an RGBA surface of 8 bits into one pixel each.
///
/// The mean is taken in linear light, each sample weighted by its alpha, with integers throughout:
/// the result is the same everywhere. `side` is 1, 2 or 4; `to` holds `from`'s width and
/// height divided by it, four bytes a pixel, without gaps.
void AverageSamples(const DATASURFACE& from, int side, std::uint8_t* to);

} // namespace zx_scene
