#pragma once

#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// The texture that `BindTexture` gave to a unit, and the image that the sampler was set for.
struct TTextureBinding {
  TRenderCPU::TTextureHold* Hold = nullptr; ///< one count held; null if none
  std::int32_t Width = 0;
  std::int32_t Height = 0;
  DATA_TYPE Type = DATA_TYPE_NONE;
  std::uint8_t Channels = 0;
  bool HasPixels = false;

  void Note(const DATASURFACE& surface) {
    Width = surface.Width;
    Height = surface.Height;
    Type = surface.Type;
    Channels = surface.Channels;
    HasPixels = surface.Data != nullptr;
  }
  bool Describes(const DATASURFACE& surface) const {
    return Width == surface.Width && Height == surface.Height && Type == surface.Type &&
           Channels == surface.Channels && HasPixels == (surface.Data != nullptr);
  }
};

} // namespace Zx3D
