#pragma once

#include <vector>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

/// Makes and binds a square texture of one grey, `size` texels wide.
inline unsigned int MakeTexture(Zx3D::TRenderCPU& gl, unsigned char grey, int size) {
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  const std::vector<unsigned char> texels(static_cast<std::size_t>(4 * size * size), grey);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  return id;
}
