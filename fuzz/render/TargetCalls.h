#pragma once

#include "World.h"

// Bytes as calls for the contexts' life and for what they draw into.

namespace fuzz_render {

inline void Life(TWorld& w) {
  switch (w.In.Below(10)) {
  case 0:
    w.R->Destroy();
    break;
  case 1: {
    const int width = 1 + static_cast<int>(w.In.Below(33));
    w.Tell(w.R->Create(width, w.In.Int() % 34, nullptr));
    break;
  }
  case 2:
    w.Tell(w.R->Create(4, 9, w.Context(w.In.Bool())));
    break;
  case 3:
  case 4:
  case 5: {
    const int width = 1 + static_cast<int>(w.In.Below(33));
    w.Tell(w.R->SetSize(width, w.In.Int() % 34));
    break;
  }
  case 6:
    w.Tell(w.R->_Share(w.Context(w.In.Bool())));
    break;
  case 7:
    w.R->MakeCurrent();
    break;
  case 8:
    w.R->DoneCurrent();
    break;
  default:
    w.R->_ClearTextures();
    break;
  }
}

inline void Targets(TWorld& w) {
  switch (w.In.Below(8)) {
  case 0:
    w.R->BindColorSurface(w.NewSurface());
    break;
  case 1:
    w.R->BindColorSurface(nullptr);
    break;
  case 2:
    w.R->SetDrawBuffer(w.NewSurface());
    break;
  case 3:
    w.R->SetDrawBuffer(nullptr);
    break;
  case 4:
    w.R->Clear(w.In.Raw<unsigned int>());
    break;
  case 5: {
    const auto c = w.In.Floats<4>();
    w.R->ClearColor(c[0], c[1], c[2], c[3]);
    break;
  }
  case 6:
    w.R->ClearDepth(w.In.Number());
    break;
  default: {
    const auto v = w.In.Ints<2>();
    w.R->Viewport(0, v[0], w.R->m_Width, v[1]);
    break;
  }
  }
}

/// As a surface's owner may: who samples it is told.
inline void Exchange(TWorld& w, TDataSurface* surface, TDataSurface* other) {
  surface->Swap(*other);
  for (TRenderCPU::TTexUnit& unit : w.R->m_TexUnits) {
    if (unit.Sampler.m_Surface == surface || unit.Sampler.m_Surface == other) {
      unit.Sampler.SetSurface(unit.Sampler.m_Surface);
    }
  }
}

/// Makes both surfaces views of one block, one pixel apart. Without the last row they have the
/// slack behind their pixels that samplers need.
inline void Overlap(TWorld& w, TDataSurface* one, TDataSurface* other) {
  w.Kept.push_back(std::make_unique<TDataSurface>());
  TDataSurface& block = *w.Kept.back();
  block.Create(w.R->m_Width, w.R->m_Height + 1, DATA_FORMAT(6), DATA_TYPE(3), 4);
  int shift = 0;
  for (TDataSurface* surface : {one, other}) {
    w.Kept.push_back(std::make_unique<TDataSurface>());
    const bool depth = surface == w.R->m_FrameBuffer->Depth;
    w.Kept.back()->Create(w.R->m_Width, w.R->m_Height, DATA_FORMAT(depth ? 13 : 6),
                          DATA_TYPE(depth ? 10 : 3), depth ? 1 : 4, block.Data + shift);
    Exchange(w, surface, w.Kept.back().get());
    shift += 4;
  }
}

/// Targets and textures that are the same, overlap or change places.
inline void SharedMemory(TWorld& w) {
  if (w.R->m_FrameBuffer == nullptr) {
    return;
  }
  TDataSurface* const own[3] = {w.R->m_FrameBuffer->Color, w.R->m_FrameBuffer->Depth,
                                w.R->m_FrameBuffer->Stencil};
  TDataSurface* const surface = own[w.IsCompared ? w.In.Below(2) * 2 : w.In.Below(3)];
  switch (w.In.Below(8)) {
  case 0:
    w.R->BindColorSurface(surface);
    break;
  case 1:
    w.R->SetDrawBuffer(surface);
    break;
  case 2:
  case 3:
    w.R->m_TexUnits[w.In.Below(2)].Sampler.SetSurface(surface);
    break;
  case 4:
  case 5:
    w.R->MoveTexImage2D(3553, 0, surface);
    break;
  case 6:
    Exchange(w, surface, w.NewSurface());
    break;
  default:
    Overlap(w, own[0], surface);
    break;
  }
}

} // namespace fuzz_render
