#pragma once

#include <vector>

#include "StateChecks.h"

namespace zx_test {

using TTexSampler = Zx3D::TRenderCPU::TTexSampler;

/// A context with texture 1 of 2 by 2 RGBA bytes, bound to unit 0.
class TTextured {
public:
  TTextured() : m_Scene(4, 4) {
    unsigned int id = 0;
    m_Scene->GenTextures(1, &id);
    m_Scene->BindTexture(GL_TEXTURE_2D, id);
    std::vector<unsigned char> pixels(16);
    for (std::size_t i = 0; i < 16; ++i) {
      pixels[i] = static_cast<unsigned char>(10 + i);
    }
    m_Scene->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                        pixels.data());
    EXPECT_EQ(0u, m_Scene->GetError());
  }

  Zx3D::TRenderCPU* operator->() { return m_Scene.Get(); }
  Zx3D::TRenderCPU& operator*() { return *m_Scene; }
  TTexSampler& Sampler(int unit = 0) { return m_Scene->m_TexUnits[unit].Sampler; }
  TDataSurface& Texture(unsigned int id = 1) { return *m_Scene->m_Textures->Surfaces[id]; }

  /// The bytes from 10 to 25.
  bool IsUntouched() {
    const TDataSurface& t = Texture();
    if (t.Width != 2 || t.Height != 2 || t.Type != 3 || t.Format != 6 || t.Channels != 4) {
      return false;
    }
    for (std::size_t i = 0; i < 16; ++i) {
      if (t.Data[i] != 10 + i) {
        return false;
      }
    }
    return Sampler().m_SurfaceWidth == 2 && Sampler().m_SurfaceHeight == 2;
  }

private:
  TScene m_Scene;
};

} // namespace zx_test
