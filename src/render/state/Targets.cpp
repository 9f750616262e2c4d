#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>

namespace Zx3D {

// --- The frame buffer

bool TRenderCPU::TFrameBuffer::Create(int width, int height) {
  if (width < 1 || height < 1) {
    return false;
  }
  Destroy();
  Color = new (std::nothrow) TDataSurface;
  Depth = new (std::nothrow) TDataSurface;
  Stencil = new (std::nothrow) TDataSurface;
  if (Color == nullptr || Depth == nullptr || Stencil == nullptr ||
      !Color->Create(width, height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, nullptr) ||
      !Depth->Create(width, height, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1, nullptr) ||
      !Stencil->Create(width, height, DATA_FORMAT_STENCIL, DATA_TYPE_UINT8, 1, nullptr)) {
    Destroy();
    return false;
  }
  Width = width;
  Height = height;
  return true;
}

void TRenderCPU::TFrameBuffer::Destroy() {
  for (TDataSurface** surface : {&Color, &Depth, &Stencil}) {
    delete *surface;
    *surface = nullptr;
  }
  Width = 0;
  Height = 0;
}

void TRenderEngine::AdoptSurfaces() {
  gl.m_ColorSurface = gl.m_FrameBuffer->Color;
  gl.m_DepthSurface = gl.m_FrameBuffer->Depth;
  gl.m_StencilSurface = gl.m_FrameBuffer->Stencil;
  gl.m_Width = gl.m_FrameBuffer->Width;
  gl.m_Height = gl.m_FrameBuffer->Height;
}

// The surfaces of the frame buffer are about to go: nothing may draw into them or sample them.
void TRenderEngine::ForgetOwnSurfaces() {
  for (TDataSurface* const surface :
       {gl.m_FrameBuffer->Color, gl.m_FrameBuffer->Depth, gl.m_FrameBuffer->Stencil}) {
    UnbindTexture(surface);
    ForgetTarget(surface);
  }
  gl.m_ColorSurface = nullptr;
  gl.m_DepthSurface = nullptr;
  gl.m_StencilSurface = nullptr;
}

// A surface is about to go: it is no target any more.
void TRenderEngine::ForgetTarget(const TDataSurface* surface) {
  if (surface != nullptr && gl.m_DrawBuffer == surface) {
    gl.SetDrawBuffer(nullptr);
  }
  if (surface != nullptr && gl.m_ColorSurface == surface) {
    gl.BindColorSurface(nullptr);
  }
}

// --- Where drawing goes

void TRenderCPU::BindColorSurface(TDataSurface* surface) {
  if (surface == nullptr) {
    m_ColorSurface = m_FrameBuffer != nullptr ? m_FrameBuffer->Color : nullptr;
  } else {
    if (surface->Width != m_Width || surface->Height != m_Height) {
      _SetError(GL_INVALID_VALUE);
    }
    m_ColorSurface = surface;
  }
}

static TRenderCPU::TPixelWrite PixelWriterOf(const DATASURFACE& surface) {
  const bool isFloat = surface.Type == DATA_TYPE_FLOAT;
  if (!isFloat && surface.Type != DATA_TYPE_DOUBLE) {
    return nullptr;
  }
  switch (surface.Channels) {
  case 1:
    return isFloat ? SetValue1f : SetValue1d;
  case 4:
    return isFloat ? SetValue4f : SetValue4d;
  default:
    return nullptr;
  }
}

void TRenderCPU::SetDrawBuffer(DATASURFACE* surface) {
  if (surface == nullptr) {
    m_DrawBuffer = nullptr;
    m_PixelWrite = nullptr;
    return;
  }
  if (surface->Width != m_Width || surface->Height != m_Height) {
    return;
  }
  const TPixelWrite write = PixelWriterOf(*surface);
  if (write == nullptr) {
    return;
  }
  m_DrawBuffer = surface;
  m_PixelWrite = write;
}

TDataSurface* TRenderCPU::GetColorSurface() { return m_ColorSurface; }

TDataSurface* TRenderCPU::GetDepthSurface() { return m_DepthSurface; }

TDataSurface* TRenderCPU::GetStencilSurface() { return m_StencilSurface; }

// --- Clear values and masks

static void SetClearColor(TRenderCPU& gl, const vec_t_<double, 4>& color) {
  for (std::size_t i = 0; i < 4; ++i) {
    gl.m_ClearColor[i] = ByteOf(color[i]);
  }
}

void TRenderCPU::ClearColor(float r, float g, float b, float a) {
  SetClearColor(*this, {r, g, b, a});
}

void TRenderCPU::ClearColor(const vec_t_<double, 4>& color) { SetClearColor(*this, color); }

void TRenderCPU::ClearColor(const vec_t_<float, 4>& color) {
  for (std::size_t i = 0; i < 4; ++i) {
    m_ClearColor[i] = static_cast<unsigned char>(TruncI64(color[i] * 255.0f + 0.5f));
  }
}

void TRenderCPU::ClearDepth(double depth) { m_ClearDepth = static_cast<float>(depth); }

void TRenderCPU::ClearStencil(int value) { m_ClearStencil = static_cast<unsigned char>(value); }

void TRenderCPU::ColorMask(unsigned char r, unsigned char g, unsigned char b, unsigned char a) {
  m_ColorMask = static_cast<std::uint8_t>((r != 0 ? 1 : 0) | (g != 0 ? 2 : 0) | (b != 0 ? 4 : 0) |
                                          (a != 0 ? 8 : 0));
}

void TRenderCPU::DepthMask(unsigned char on) { m_DepthMask = on != 0; }

void TRenderCPU::StencilMask(unsigned int mask) { m_StencilWriteMask = mask; }

// --- Clearing

// Runs `change` on the pixels of a surface, by columns within rows. Compiled for tight rows as
// well, of which several pixels are changed at once.
template <class TPixel, class TChange>
static void ForEachPixel(const DATASURFACE& surface, TChange change) {
  const auto row = [&surface, change](unsigned char* pixel, std::ptrdiff_t step) {
    for (int x = 0; x < surface.Width; ++x) {
      change(pixel + x * step);
    }
  };
  for (std::ptrdiff_t y = 0; y < surface.Height; ++y) {
    unsigned char* const first = surface.Data + y * surface.RowStride;
    constexpr std::ptrdiff_t kTight = sizeof(TPixel);
    if (surface.PixelStride == kTight) {
      row(first, kTight);
    } else {
      row(first, surface.PixelStride);
    }
  }
}

static void ClearChannels(const DATASURFACE& surface, unsigned int mask,
                          const unsigned char* color) {
  if (surface.Channels == 4 && surface.PixelStride == 4) {
    std::uint32_t value = 0;
    std::uint32_t kept = 0;
    for (std::size_t i = 0; i < kPixelBytes; ++i) {
      const bool clears = (mask >> i & 1) != 0;
      reinterpret_cast<unsigned char*>(&value)[i] = clears ? color[i] : 0;
      reinterpret_cast<unsigned char*>(&kept)[i] = clears ? 0 : 0xFF;
    }
    ForEachPixel<std::uint32_t>(surface, [value, kept](unsigned char* pixel) {
      std::uint32_t word;
      std::memcpy(&word, pixel, sizeof word);
      word = (word & kept) | value;
      std::memcpy(pixel, &word, sizeof word);
    });
    return;
  }
  for (std::ptrdiff_t i = 0; i < 4 && i < surface.PixelStride; ++i) {
    if ((mask >> i & 1) != 0) {
      ForEachPixel<unsigned char>(surface, [i, color](unsigned char* p) { p[i] = color[i]; });
    }
  }
}

// Fills by the strides as drawing takes them: rows may go down in memory.
static bool Fill(const DATASURFACE& surface, const void* value, unsigned long size) {
  DATASURFACE upright = surface;
  if (surface.RowStride < 0 && surface.Data != nullptr && surface.Height > 0) {
    upright.Data += std::ptrdiff_t{surface.Height - 1} * surface.RowStride;
    upright.RowStride = -surface.RowStride;
  }
  return ds::Fill(upright, value, size);
}

void TRenderCPU::Clear(bool color, bool depth, bool stencil) {
  if (!m_Created) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  if (color && m_ColorSurface != nullptr && m_ColorMask != 0) {
    if (m_ColorMask != kAllChannels) {
      if (m_ColorSurface->Data != nullptr) {
        ClearChannels(*m_ColorSurface, m_ColorMask, m_ClearColor);
      }
    } else if (!Fill(*m_ColorSurface, m_ClearColor, 4)) {
      _SetError(GL_INVALID_OPERATION);
      return;
    }
  }
  if (depth && m_DepthMask && m_DepthSurface != nullptr &&
      !Fill(*m_DepthSurface, &m_ClearDepth, sizeof m_ClearDepth)) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  if (!stencil || m_StencilSurface == nullptr) {
    return;
  }
  const auto mask = static_cast<unsigned char>(m_StencilWriteMask);
  if (mask == 255) {
    if (!Fill(*m_StencilSurface, &m_ClearStencil, 1)) {
      _SetError(GL_INVALID_OPERATION);
    }
  } else if (mask != 0 && m_StencilSurface->Data != nullptr) {
    const int value = m_ClearStencil & mask;
    ForEachPixel<unsigned char>(*m_StencilSurface, [mask, value](unsigned char* s) {
      *s = static_cast<unsigned char>((*s & ~mask) | value);
    });
  }
}

void TRenderCPU::Clear(unsigned int mask) {
  Clear((mask & GL_COLOR_BUFFER_BIT) != 0, (mask & GL_DEPTH_BUFFER_BIT) != 0,
        (mask & GL_STENCIL_BUFFER_BIT) != 0);
}

// --- The whole surface, and nothing else

static void ThrowUnderConstruction(const char* signature) {
  throw TZxMessage(std::string("@") + signature + ": " + "Under construction!");
}

void TRenderCPU::Viewport(int x, int y, int width, int height) {
  if (x != 0 || y != 0 || width != m_Width || height != m_Height) {
    ThrowUnderConstruction("virtual void Zx3D::TRenderCPU::Viewport(int, int, int, int)");
  }
}

void TRenderCPU::Scissor(int x, int y, int width, int height) {
  if (x != 0 || y != 0 || width != m_Width || height != m_Height) {
    ThrowUnderConstruction("virtual void Zx3D::TRenderCPU::Scissor(int, int, int, int)");
  }
}

void TRenderCPU::DrawBuffer(unsigned int buffer) {
  if (buffer != GL_FRONT) {
    _SetError(GL_INVALID_VALUE);
  }
}

void TRenderCPU::ReadBuffer(unsigned int buffer) {
  if (buffer != GL_FRONT) {
    _SetError(GL_INVALID_VALUE);
  }
}

} // namespace Zx3D
