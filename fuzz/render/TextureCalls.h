#pragma once

#include "World.h"

// Bytes as calls for textures and for rectangles of pixels.

namespace fuzz_render {

/// Formats that are stored, among others that are not.
inline unsigned int PixelFormat(TWorld& w) {
  return w.In.Bool() ? 6407 + w.In.Below(4) : w.In.Enum();
}
inline unsigned int PixelType(TWorld& w) { return w.In.Bool() ? 5121 : w.In.Enum(); }

inline void Image(TWorld& w) {
  // At most 32 bytes a texel: 31 by 31 stay inside the memory.
  const unsigned int format = PixelFormat(w);
  const auto size = w.In.Ints<2>();
  const bool level = w.In.Below(8) == 0;
  const unsigned int type = PixelType(w);
  w.R->TexImage2D(3553, level, static_cast<int>(format), size[0] % 32, size[1] % 32, 0, format,
                  type, w.In.Below(4) == 0 ? nullptr : kMemory.data());
}
inline void SubImage(TWorld& w) {
  const unsigned int format = PixelFormat(w);
  const auto at = w.In.Ints<4>();
  w.R->TexSubImage2D(3553, 0, at[0], at[1], at[2] % 32, at[3] % 32, format, PixelType(w),
                     kMemory.data());
}

inline void Textures(TWorld& w) {
  // In braces the numbers are drawn in order.
  unsigned int ids[8] = {w.In.Below(6), w.In.Below(6), w.In.Below(6), w.In.Raw<unsigned int>()};
  switch (w.In.Below(18)) {
  case 0:
    w.R->GenTextures(w.In.Int() % 6, ids);
    break;
  case 1:
    w.R->DeleteTextures(w.In.Int() % 5, ids);
    break;
  case 2:
  case 3:
  case 4:
    w.R->BindTexture(3553, ids[0]);
    break;
  case 5: {
    const unsigned int target = w.In.Enum();
    w.R->BindTexture(target, ids[3]);
    break;
  }
  case 6:
  case 7:
  case 8:
    Image(w);
    break;
  case 9:
    SubImage(w);
    break;
  case 10:
    w.R->MoveTexImage2D(3553, 0, w.NewSurface());
    break;
  case 11:
    if (TDataSurface* s = w.NewSurface()) {
      w.R->AttachTexture(s);
      w.Kept.back().release(); // the table's now
    }
    break;
  case 12:
    if (TDataSurface* s = w.R->DetachTexture(ids[0])) {
      w.Kept.emplace_back(s); // samplers go on reading it
    }
    break;
  case 13: {
    const auto e = w.In.Enums<2>();
    w.R->TexParameteri(3553, e[0], static_cast<int>(e[1]));
    break;
  }
  case 14:
    w.R->TexFilter2D(9728 + ids[0] % 2, 9728 + ids[0] % 2);
    break;
  case 15: {
    const auto e = w.In.Enums<2>();
    w.R->TexWrap2D(e[0], e[1]);
    break;
  }
  case 16:
    w.R->ActiveTexture(w.In.Bool() ? 33984 : w.In.Enum());
    break;
  default:
    w.R->TexEnvi(8960, 8704, static_cast<int>(w.In.Enum()));
    break;
  }
}

/// A bound of how far from the given address a transfer reaches in the caller's memory; in
/// floating point, where nothing overflows.
inline double Span(const TRenderCPU::TPixelStore& store, int width, int height, int x, int y,
                   int surfaceStep) {
  const auto abs = [](double v) { return v < 0 ? -v : v; };
  const double step = 8 + abs(store.Alignment);
  const double row = step * (abs(store.RowLength) + abs(width)) + 40.0 * 40 * surfaceStep;
  return row * (abs(height) + abs(y) + abs(store.SkipRows) + 1) +
         (step + surfaceStep) * (abs(width) + abs(x) + abs(store.SkipRows) + 1);
}

inline void Pixels(TWorld& w) {
  static std::uint8_t s_Room[1 << 18]; // what a read may write
  const auto [x, y, width, height] = w.In.Ints<4>();
  switch (w.In.Below(6)) {
  case 0: {
    const unsigned int name = 3312 + w.In.Below(24);
    w.R->PixelStorei(name, w.In.Int());
    break;
  }
  case 1:
    w.R->WindowPos2i(x, y);
    break;
  case 2:
  case 3:
    if (Span(w.R->m_PixelUnpack, width, height, w.R->m_WindowPos.x, w.R->m_WindowPos.y, 4) <
        static_cast<double>(kMemorySize / 2)) {
      const unsigned int format = PixelFormat(w);
      w.R->DrawPixels(width, height, format, PixelType(w), kMemory.data() + kMemorySize / 2);
    }
    break;
  default:
    if (Span(w.R->m_PixelPack, width, height, x, y, 512) <
        static_cast<double>(sizeof(s_Room) / 2)) {
      w.R->ReadPixels(x, y, width, height, 6408, 5121, s_Room + sizeof(s_Room) / 2);
      w.Tell(s_Room + sizeof(s_Room) / 2, 256);
    }
    break;
  }
}

} // namespace fuzz_render
