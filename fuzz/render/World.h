#pragma once

#include <memory>
#include <vector>

#include <ZxCore3D/render/TRenderCPU.h>

#include "Input.h"

namespace fuzz_render {

using Zx3D::TRenderCPU;

/// Inputs are at most this long. Fuzzing itself makes none of more than 512 bytes, some eighty
/// calls (max_len in the targets' .options): longer ones find nothing that these do not, and there
/// are fewer of them in a second.
inline constexpr std::size_t kMostBytes = 2048;

/// Two contexts, what their bindings need to outlive, and what calls told.
struct TWorld {
  /// With `compared` what is left may be compared between runs: no float shares memory with bytes,
  /// since the bits of a NaN are the processor's choice.
  TWorld(const std::uint8_t* data, std::size_t size, bool compared)
      : In(data, size), IsCompared(compared) {
    const int width = 1 + static_cast<int>(In.Below(33));
    const unsigned int height = In.Byte();
    const unsigned int share = In.Byte();
    m_IsShared = share % 4 != 0;
    m_IsAlone = share >= 128;
    // Rows are what kernels differ by: few of them are enough, most of the time.
    Contexts[0] = new TRenderCPU;
    Contexts[0]->Create(width, 1 + static_cast<int>(height < 224 ? height % 11 : height % 33),
                        nullptr);
    R = Contexts[0];
  }
  ~TWorld() {
    for (TRenderCPU* r : Contexts) {
      if (r != nullptr) {
        r->Release();
      }
    }
  }
  TWorld(const TWorld&) = delete;
  TWorld& operator=(const TWorld&) = delete;

  /// The first context or the second, which is made when it is used first, mostly with the first
  /// one's table of textures. Half of the inputs do without it.
  TRenderCPU* Context(bool second) {
    if (!second || m_IsAlone) {
      return Contexts[0];
    }
    if (Contexts[1] == nullptr) {
      Contexts[1] = new TRenderCPU;
      Contexts[1]->Create(7, 5, m_IsShared ? Contexts[0] : nullptr);
    }
    return Contexts[1];
  }

  TDataSurface* NewSurface();
  const void* Memory() { return kMemory.data() + In.Below(64); }

  /// A caller saw this.
  void Tell(const void* data, std::size_t size) {
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    Told.insert(Told.end(), bytes, bytes + size);
  }
  template <class T> void Tell(const T& value) { Tell(&value, sizeof value); }

  TInput In;
  bool IsCompared;
  TRenderCPU* R;                ///< the context of the present call
  TRenderCPU* Contexts[2] = {}; ///< the second may be null
  std::vector<std::unique_ptr<TDataSurface>> Kept;
  std::vector<std::uint8_t> Told;

private:
  bool m_IsShared;
  bool m_IsAlone;
};

inline TDataSurface* TWorld::NewSurface() {
  static constexpr DATA_TYPE kTypes[8] = {DATA_TYPE(3),  DATA_TYPE(3), DATA_TYPE(3), DATA_TYPE(10),
                                          DATA_TYPE(11), DATA_TYPE(5), DATA_TYPE(1), DATA_TYPE(9)};
  Kept.push_back(std::make_unique<TDataSurface>());
  const bool fits = In.Below(4) != 0;
  const int width = fits ? R->m_Width : static_cast<int>(In.Below(40));
  const int height = fits ? R->m_Height : static_cast<int>(In.Below(40));
  const unsigned int kind = In.Byte();
  Kept.back()->Create(width, height, DATA_FORMAT(kind % 3 != 0 ? 6 : kind % 16), kTypes[kind % 8],
                      1 + static_cast<int>(kind / 8 % 5));
  return Kept.back().get();
}

} // namespace fuzz_render
