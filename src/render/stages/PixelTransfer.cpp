// Tested by: tests/render/PixelTransfer.cpp (PixelTransfer.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/SurfaceBlock.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/FragmentStages.h>

namespace Zx3D {

// --- State

void TRenderCPU::PixelStorei(unsigned int pname, int v) {
  const bool pack = pname >= GL_PACK_SWAP_BYTES && pname <= GL_PACK_ALIGNMENT;
  TPixelStore& store = pack ? m_PixelPack : m_PixelUnpack;
  switch (pname) {
  case GL_UNPACK_SWAP_BYTES:
  case GL_PACK_SWAP_BYTES:
    store.SwapBytes = v != 0;
    break;
  case GL_UNPACK_LSB_FIRST:
  case GL_PACK_LSB_FIRST:
    store.LsbFirst = v != 0;
    break;
  case GL_UNPACK_ROW_LENGTH:
  case GL_PACK_ROW_LENGTH:
    store.RowLength = v;
    break;
  case GL_UNPACK_SKIP_ROWS:
  case GL_PACK_SKIP_ROWS:
    store.SkipRows = v;
    break;
  case GL_UNPACK_SKIP_PIXELS:
  case GL_PACK_SKIP_PIXELS:
    store.SkipPixels = v;
    break;
  case GL_UNPACK_ALIGNMENT:
  case GL_PACK_ALIGNMENT:
    store.Alignment = v;
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::RasterPos2i(int x, int y) {
  m_RasterPos = {static_cast<double>(x), static_cast<double>(y), 0, 1};
}

void TRenderCPU::RasterPos2iv(const int* v) {
  m_RasterPos = {static_cast<double>(v[0]), static_cast<double>(v[1]), 0, 1};
}

void TRenderCPU::RasterPos2f(float x, float y) { m_RasterPos = {x, y, 0, 1}; }

void TRenderCPU::RasterPos2fv(const float* v) { m_RasterPos = {v[0], v[1], 0, 1}; }

void TRenderCPU::RasterPos2d(double x, double y) { m_RasterPos = {x, y, 0, 1}; }

void TRenderCPU::RasterPos2dv(const double* v) { m_RasterPos = {v[0], v[1], 0, 1}; }

void TRenderCPU::RasterPos(const vec_t_<double, 2>& position) {
  m_RasterPos = {position.x, position.y, 0, 1};
}

void TRenderCPU::RasterPos3i(int x, int y, int z) {
  m_RasterPos = {static_cast<double>(x), static_cast<double>(y), static_cast<double>(z), 1};
}

void TRenderCPU::RasterPos3f(float x, float y, float z) { m_RasterPos = {x, y, z, 1}; }

void TRenderCPU::RasterPos3fv(const float* v) { m_RasterPos = {v[0], v[1], v[2], 1}; }

void TRenderCPU::RasterPos3d(double x, double y, double z) { m_RasterPos = {x, y, z, 1}; }

void TRenderCPU::RasterPos3dv(const double* v) { m_RasterPos = {v[0], v[1], v[2], 1}; }

void TRenderCPU::WindowPos2i(int x, int y) { m_WindowPos = {x, y}; }

void TRenderCPU::PixelZoom(float, float) {}

// --- Steps

namespace {

// Steps through the caller's memory, in bytes.
struct TSteps {
  std::ptrdiff_t Pixel;
  std::ptrdiff_t Row;
  std::ptrdiff_t Start;
};

// False for an alignment that no step can be rounded to.
bool StepsOf(const TRenderCPU::TPixelStore& store, int width, TSteps* out) {
  if (store.Alignment < 1) {
    return false;
  }
  const std::ptrdiff_t alignment = store.Alignment;
  out->Pixel = alignment - (alignment + 3) % alignment + 3;
  out->Row = out->Pixel * (store.RowLength != 0 ? store.RowLength : width);
  out->Start = out->Row * store.SkipRows;
  if (store.SkipPixels != 0) {
    out->Start += store.SkipRows * out->Pixel; // by the rows that are skipped, not by the pixels
  }
  return true;
}

bool IsWhollyOutside(std::int64_t x, std::int64_t y, int width, int height, int W, int H) {
  return width < 1 || x + width <= 0 || height < 1 || x >= W || y + height <= 0 || y >= H;
}

// Of `count` four-byte pixels from `offset` on, `step` apart, those that a block of `size` bytes
// holds.
void CutToBlock(std::ptrdiff_t offset, std::ptrdiff_t step, std::ptrdiff_t size,
                std::ptrdiff_t count, std::ptrdiff_t* first, std::ptrdiff_t* last) {
  const std::ptrdiff_t room = size - 4 - offset;
  *first = offset >= 0 ? 0 : (-offset + step - 1) / step;
  *last = room < 0 ? -1 : std::min(count - 1, room / step);
}

bool IsRGBAub(const TDataSurface* surface) {
  return surface != nullptr && surface->Data != nullptr && surface->Type == DATA_TYPE_UINT8 &&
         surface->Format == DATA_FORMAT_RGBA && surface->PixelStride >= 4;
}

// Whether both rows are one block, and the two blocks do not overlap.
bool AreBlocksApart(const unsigned char* from, std::ptrdiff_t fromStep, const unsigned char* to,
                    std::ptrdiff_t toStep, std::ptrdiff_t count) {
  const auto apart = static_cast<std::size_t>(
      std::abs(reinterpret_cast<std::intptr_t>(to) - reinterpret_cast<std::intptr_t>(from)));
  return fromStep == 4 && toStep == 4 && apart >= static_cast<std::size_t>(count) * 4;
}

// Pixel by pixel, in order: source and destination may be one surface.
void CopyPixels(const unsigned char* from, std::ptrdiff_t fromStep, unsigned char* to,
                std::ptrdiff_t toStep, std::ptrdiff_t count) {
  if (AreBlocksApart(from, fromStep, to, toStep, count)) {
    std::memcpy(to, from, static_cast<std::size_t>(count) * 4);
    return;
  }
  for (; count > 0; --count) {
    std::memmove(to, from, 4);
    from += fromStep;
    to += toStep;
  }
}

} // namespace

// --- Draw

static TCondition UnmetByPixelRow(const TDrawState& draw, bool apart) {
  ZX_RETURN_FIRST_UNMET(ZX_PIXEL_ROW_CONDITIONS);
}

// One row with the colour mask and the blending in force.
static void DrawPixelRow(const TRenderCPU& gl, const TSpanJob& job, const unsigned char* from,
                         std::ptrdiff_t fromStep, unsigned char* to, std::ptrdiff_t toStep,
                         std::ptrdiff_t count) {
  if (IsCopy(gl)) {
    CopyPixels(from, fromStep, to, toStep, count);
    return;
  }
  job.StartRow();
  const bool apart = AreBlocksApart(from, fromStep, to, toStep, count);
  if (job.Meets(UnmetByPixelRow(job.Draw, apart))) {
    job.Count(TKernel::PixelRows, static_cast<int>(count));
    GetSpanKernels()->DrawPixelRow(job, from, to, count);
    return;
  }
  for (; count > 0; --count) {
    WriteBytes(gl, to, from);
    from += fromStep;
    to += toStep;
  }
}

void TRenderCPU::_DrawPixels_RGBAub_RGBAub(int width, int height, const void* pixels) {
  const std::int64_t x = m_WindowPos.x;
  const std::int64_t y = m_WindowPos.y;
  TSteps steps;
  if (pixels == nullptr || m_ColorSurface == nullptr || m_ColorSurface->Data == nullptr ||
      m_ColorSurface->PixelStride < 4 || m_ColorMask == 0 ||
      IsWhollyOutside(x, y, width, height, m_Width, m_Height) ||
      !StepsOf(m_PixelUnpack, width, &steps)) {
    return;
  }
  // A start inside the surface is not taken off the limit: a rectangle over the right or upper edge
  // runs on, within the block.
  const std::int64_t columns =
      std::min<std::int64_t>(width + std::min<std::int64_t>(x, 0), m_Width);
  const std::int64_t rows = std::min<std::int64_t>(height + std::min<std::int64_t>(y, 0), m_Height);
  const std::ptrdiff_t pixelStride = m_ColorSurface->PixelStride;
  const std::ptrdiff_t rowStride = m_ColorSurface->RowStride;
  const std::ptrdiff_t size = BlockSize(*m_ColorSurface);
  const auto* from = static_cast<const unsigned char*>(pixels) + steps.Start;
  from += (x < 0 ? -x * steps.Pixel : 0) + (y < 0 ? -y * steps.Row : 0);
  std::ptrdiff_t offset = (x > 0 ? x * pixelStride : 0) + (y > 0 ? y * rowStride : 0);
  TSpanJob job;
  job.StartPrimitive();
  SetUpOutput(*this, &job.Draw);
  for (std::int64_t row = 0; row < rows; ++row) {
    std::ptrdiff_t first = 0;
    std::ptrdiff_t last = 0;
    CutToBlock(offset, pixelStride, size, columns, &first, &last);
    if (first <= last) {
      DrawPixelRow(*this, job, from + first * steps.Pixel, steps.Pixel,
                   m_ColorSurface->Data + offset + first * pixelStride, pixelStride,
                   last - first + 1);
    }
    from += steps.Row;
    offset += rowStride;
  }
}

void TRenderCPU::DrawPixels(int width, int height, unsigned int format, unsigned int type,
                            const void* pixels) {
  if (!IsRGBAub(m_ColorSurface) || format != GL_RGBA || type != GL_UNSIGNED_BYTE) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  _DrawPixels_RGBAub_RGBAub(width, height, pixels);
}

// --- Read

void TRenderCPU::_ReadPixels_RGBAub_RGBAub(int x, int y, int width, int height, void* pixels) {
  TSteps steps;
  if (pixels == nullptr || m_ColorSurface == nullptr || m_ColorSurface->Data == nullptr ||
      IsWhollyOutside(x, y, width, height, m_Width, m_Height) ||
      !StepsOf(m_PixelPack, width, &steps)) {
    return;
  }
  // The steps are exchanged, and callers rely on it: the surface is walked by the caller's, the
  // caller's memory by the surface's.
  const std::ptrdiff_t pixelStride = m_ColorSurface->PixelStride;
  const std::ptrdiff_t rowStride = m_ColorSurface->RowStride;
  const std::ptrdiff_t size = BlockSize(*m_ColorSurface);
  auto* to = static_cast<unsigned char*>(pixels) + steps.Start;
  std::int64_t columns = width;
  std::int64_t rows = height;
  std::ptrdiff_t offset = 0;
  if (x < 0) {
    to += -std::int64_t{x} * pixelStride;
    columns += x;
  } else {
    offset += x * steps.Pixel;
  }
  if (y < 0) {
    to += -std::int64_t{y} * rowStride;
    rows += y;
  } else {
    offset += y * steps.Row;
  }
  columns = std::min<std::int64_t>(columns, m_Width - std::max(x, 0));
  rows = std::min<std::int64_t>(rows, m_Height - std::max(y, 0));
  for (std::int64_t row = 0; row < rows; ++row) {
    std::ptrdiff_t first = 0;
    std::ptrdiff_t last = 0;
    CutToBlock(offset, steps.Pixel, size, columns, &first, &last);
    if (first <= last) {
      CopyPixels(m_ColorSurface->Data + offset + first * steps.Pixel, steps.Pixel,
                 to + first * pixelStride, pixelStride, last - first + 1);
    }
    to += rowStride;
    offset += steps.Row;
  }
}

void TRenderCPU::ReadPixels(int x, int y, int width, int height, unsigned int format,
                            unsigned int type, void* pixels) {
  if (IsRGBAub(m_ColorSurface) && format == GL_RGBA && type == GL_UNSIGNED_BYTE) {
    _ReadPixels_RGBAub_RGBAub(x, y, width, height, pixels);
  }
}

} // namespace Zx3D
