#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/SurfaceBlock.h>

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
  MeasureTargets();
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

namespace {

// Whether two records are the same, byte by byte.
bool IsSameRecord(const DATASURFACE& a, const DATASURFACE& b) {
  constexpr std::size_t kPlaces[] = {0, 16, 32, sizeof(DATASURFACE) - 16};
  static_assert(sizeof(DATASURFACE) >= 48 && sizeof(DATASURFACE) <= 64);
  std::uint64_t differing = 0;
  for (const std::size_t place : kPlaces) {
    std::uint64_t words[2][2]; // of each record, 16 bytes: a vector for the compiler
    std::memcpy(words[0], reinterpret_cast<const unsigned char*>(&a) + place, sizeof words[0]);
    std::memcpy(words[1], reinterpret_cast<const unsigned char*>(&b) + place, sizeof words[1]);
    differing |= (words[0][0] ^ words[1][0]) | (words[0][1] ^ words[1][1]);
  }
  return differing == 0;
}

// Whether all pixels are addresses of 32-bit words.
bool IsAligned(const DATASURFACE& surface) {
  return reinterpret_cast<std::uintptr_t>(surface.Data) % 4 == 0 && surface.RowStride % 4 == 0;
}

// Bytes that a draw buffer's writer touches: its surface may have been exchanged since it was
// chosen.
std::ptrdiff_t WriteSizeOf(const DATASURFACE& surface, TRenderCPU::TPixelWrite write) {
  const std::ptrdiff_t pixel =
      surface.Channels * static_cast<std::ptrdiff_t>(GetTypeSize(surface.Type));
  const std::ptrdiff_t written = write == &SetValue4d   ? 32
                                 : write == &SetValue4f ? 16
                                 : write == &SetValue1d ? 8
                                                        : 4;
  return std::max(pixel, written);
}

} // namespace

// Measures the targets if one of their surfaces is another one, or not what it was. True if so.
bool TRenderEngine::RefreshTargets() {
  const DATASURFACE* const surfaces[3] = {gl.m_DrawBuffer != nullptr ? gl.m_DrawBuffer
                                                                     : gl.m_ColorSurface,
                                          gl.m_DepthSurface, gl.m_StencilSurface};
  for (int i = 0; i < 3; ++i) {
    if (surfaces[i] != Targets.Surfaces[i] ||
        (surfaces[i] != nullptr && !IsSameRecord(*surfaces[i], Targets.Records[i]))) {
      MeasureTargets();
      return true;
    }
  }
  return false;
}

// What each primitive looks at anew, as others may have changed it: targets and shared textures.
// True if there was a change.
bool TRenderEngine::RefreshState() {
  const bool targets = RefreshTargets();
  return RefreshTextures() || targets;
}

void TRenderEngine::MeasureTargets() {
  TTargets& t = Targets;
  t = {};
  const DATASURFACE* const surfaces[3] = {gl.m_DrawBuffer != nullptr ? gl.m_DrawBuffer
                                                                     : gl.m_ColorSurface,
                                          gl.m_DepthSurface, gl.m_StencilSurface};
  const auto measure = [this, &t, &surfaces](int i, std::ptrdiff_t size, std::ptrdiff_t step,
                                             std::ptrdiff_t stride) -> TTarget {
    const DATASURFACE* const surface = surfaces[i];
    t.Surfaces[i] = surface;
    if (surface == nullptr) {
      return {};
    }
    std::memcpy(&t.Records[i], surface, sizeof *surface); // with the bytes between its fields
    if (surface->Data == nullptr) {
      return {};
    }
    return {surface->Data,
            stride,
            surface->RowStride,
            step,
            size,
            BlockSize(*surface),
            surface->Width >= gl.m_Width && surface->Height >= gl.m_Height &&
                surface->PixelStride >= size};
  };
  const std::ptrdiff_t stride = surfaces[0] != nullptr ? surfaces[0]->PixelStride : 0;
  if (gl.m_DrawBuffer != nullptr) {
    t.Color = measure(0, WriteSizeOf(*gl.m_DrawBuffer, gl.m_PixelWrite), stride, stride);
  } else {
    t.Color = measure(0, 4, 4, stride);
  }
  t.Depth = measure(1, sizeof(float), sizeof(float), sizeof(float));
  t.Stencil = measure(2, 1, 1, 1);
  if (t.Color.Fits && t.Depth.Fits && t.Stencil.Fits && IsAligned(t.Records[0]) &&
      IsAligned(t.Records[1])) {
    const TBlock color = BlockOf(t.Records[0]);
    const TBlock depth = BlockOf(t.Records[1]);
    const TBlock stencil = BlockOf(t.Records[2]);
    t.Kernels = !color.Overlaps(depth) && !color.Overlaps(stencil) && !depth.Overlaps(stencil);
  }
}

// Whether texels share memory with what is drawn into. A texture repeats to a column and a row past
// its end.
bool TRenderEngine::TextureIsTarget() const {
  const DATASURFACE* const texture = gl.m_TexUnits[0].Sampler.m_Surface;
  if (!gl.m_TexUnits[0].TexEnabled || texture == nullptr) {
    return false;
  }
  const std::ptrdiff_t slack = std::abs(std::ptrdiff_t{texture->RowStride}) + texture->PixelStride;
  const TBlock texels = BlockOf(*texture, slack);
  return std::any_of(
      std::begin(Targets.Records), std::end(Targets.Records),
      [&texels](const DATASURFACE& target) { return texels.Overlaps(BlockOf(target)); });
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
  m_Engine->MeasureTargets();
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
    m_Engine->MeasureTargets();
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
  m_Engine->MeasureTargets();
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
    if (m_ColorMask != 15) {
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
