#pragma once

#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// A texture from the side of those who have it bound. Its pixels go when it is deleted; the
/// surface itself, empty, stays until the last unit has let go of it, so that no sampler points to
/// freed memory and no other surface has its address meanwhile.
struct TRenderCPU::TTextureHold {
  enum TFate : std::uint8_t { kAlive, kDeleted, kDetached };

  std::atomic<std::uint32_t> Count{1}; ///< its name, and each unit that has it bound
  std::atomic<std::uint8_t> Fate{kAlive};
  /// Null until the name is filled: an entry that was filled by hand is met when it is bound.
  std::atomic<TDataSurface*> Surface{nullptr};

  /// Whether the hold is that of `surface`.
  bool Takes(TDataSurface* surface) {
    TDataSurface* held = nullptr;
    return Surface.compare_exchange_strong(held, surface, std::memory_order_acq_rel) ||
           held == surface;
  }
  void Acquire() { Count.fetch_add(1, std::memory_order_relaxed); }
  void Release() {
    if (Count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      if (Fate.load(std::memory_order_relaxed) == kDeleted) {
        delete Surface.load(std::memory_order_relaxed);
      }
      delete this;
    }
  }
  /// Lets go of the name.
  void Retire(TFate fate) {
    Fate.store(fate, std::memory_order_release);
    Release();
  }
};

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
