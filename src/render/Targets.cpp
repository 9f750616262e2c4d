#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <new>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>

#include "Numbers.h"
#include "SurfaceBlock-inl.h"

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

void TRenderCPU::_TakeSurfaces() {
  m_ColorSurface = m_FrameBuffer->Color;
  m_DepthSurface = m_FrameBuffer->Depth;
  m_StencilSurface = m_FrameBuffer->Stencil;
  m_Width = m_FrameBuffer->Width;
  m_Height = m_FrameBuffer->Height;
  _SettleColorTarget();
}

// --- Where colours go

void TRenderCPU::_SettleColorTarget() {
  TColorTarget& target = m_ColorTarget;
  target = {};
  const DATASURFACE* const surface = m_DrawBuffer != nullptr ? m_DrawBuffer : m_ColorSurface;
  if (surface == nullptr || surface->Data == nullptr) {
    return;
  }
  target.Data = surface->Data;
  target.PixelStride = surface->PixelStride;
  target.RowStride = surface->RowStride;
  target.Step = m_DrawBuffer != nullptr ? surface->PixelStride : 4;
  target.WriteSize =
      m_DrawBuffer != nullptr
          ? static_cast<std::ptrdiff_t>(surface->Channels * GetTypeSize(surface->Type))
          : 4;
  target.Size = BlockSize(*surface);
  target.Fits = surface->Width >= m_Width && surface->Height >= m_Height &&
                target.PixelStride >= target.WriteSize;
}

// Null for a pixel that the block does not hold.
unsigned char* TRenderCPU::_ColorPixel(int x, int y) const {
  const TColorTarget& target = m_ColorTarget;
  const std::ptrdiff_t offset = x * target.PixelStride + y * target.RowStride;
  if (!target.Fits &&
      (target.Data == nullptr || offset < 0 || offset > target.Size - target.WriteSize)) {
    return nullptr;
  }
  return target.Data + offset;
}

// The column at which a span from (x, y) on leaves the block.
int TRenderCPU::_ColorEnd(int x, int y) const {
  const TColorTarget& target = m_ColorTarget;
  if (target.Fits) {
    return m_Width;
  }
  if (_ColorPixel(x, y) == nullptr || target.Step <= 0) {
    return x;
  }
  const std::ptrdiff_t offset = x * target.PixelStride + y * target.RowStride;
  const std::ptrdiff_t pixels = (target.Size - target.WriteSize - offset) / target.Step + 1;
  return static_cast<int>(std::min<std::ptrdiff_t>(x + pixels, m_Width));
}

void TRenderCPU::BindColorSurface(TDataSurface* surface) {
  if (surface == nullptr) {
    m_ColorSurface = m_FrameBuffer != nullptr ? m_FrameBuffer->Color : nullptr;
  } else {
    if (surface->Width != m_Width || surface->Height != m_Height) {
      _SetError(GL_INVALID_VALUE);
    }
    m_ColorSurface = surface;
  }
  _SettleColorTarget();
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
    _SettleColorTarget();
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
  _SettleColorTarget();
}

TDataSurface* TRenderCPU::GetColorSurface() { return m_ColorSurface; }

TDataSurface* TRenderCPU::GetDepthSurface() { return m_DepthSurface; }

TDataSurface* TRenderCPU::GetStencilSurface() { return m_StencilSurface; }

// --- Clear values and masks

void TRenderCPU::ClearColor(float r, float g, float b, float a) {
  ClearColor(vec_t_<double, 4>{r, g, b, a});
}

void TRenderCPU::ClearColor(const vec_t_<double, 4>& color) {
  for (std::size_t i = 0; i < 4; ++i) {
    m_ClearColor[i] = static_cast<unsigned char>(TruncI64(color[i] * 255.0 + 0.5));
  }
}

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

// Runs `change` on the pixels of a surface, by columns within rows.
template <class TChange> static void ForEachPixel(const DATASURFACE& surface, TChange change) {
  for (std::ptrdiff_t y = 0; y < surface.Height; ++y) {
    unsigned char* pixel = surface.Data + y * surface.RowStride;
    for (int x = 0; x < surface.Width; ++x) {
      change(pixel);
      pixel += surface.PixelStride;
    }
  }
}

static void ClearChannels(const DATASURFACE& surface, unsigned int mask,
                          const unsigned char* color) {
  for (std::ptrdiff_t i = 0; i < 4 && i < surface.PixelStride; ++i) {
    if ((mask >> i & 1) != 0) {
      ForEachPixel(surface, [i, color](unsigned char* pixel) { pixel[i] = color[i]; });
    }
  }
}

void TRenderCPU::Clear(bool color, bool depth, bool stencil) {
  if (!m_Created) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  if (color && m_ColorSurface != nullptr && m_ColorMask != 0) {
    if (m_ColorMask != 15) {
      if (m_ColorSurface->Data != nullptr) {
        ClearChannels(*m_ColorSurface, m_ColorMask, m_ClearColor);
      }
    } else if (!ds::Fill(*m_ColorSurface, m_ClearColor, 4)) {
      _SetError(GL_INVALID_OPERATION);
      return;
    }
  }
  if (depth && m_DepthMask && m_DepthSurface != nullptr &&
      !ds::Fill(*m_DepthSurface, &m_ClearDepth, sizeof m_ClearDepth)) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  if (!stencil || m_StencilSurface == nullptr) {
    return;
  }
  const auto mask = static_cast<unsigned char>(m_StencilWriteMask);
  if (mask == 255) {
    if (!ds::Fill(*m_StencilSurface, &m_ClearStencil, 1)) {
      _SetError(GL_INVALID_OPERATION);
    }
  } else if (mask != 0) {
    const int value = m_ClearStencil & mask;
    ForEachPixel(*m_StencilSurface, [mask, value](unsigned char* s) {
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
