// Tested by: tests/render/VertexBatches.cpp (VertexBatches.*), tests/render/BatchEdges.cpp
// (BatchEdges.*)

#include <ZxCore3D/render/arrays/BatchDraw.h>

#include <cstring>

#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/stages/FragmentStages.h>

namespace Zx3D {

// Colours of a batch of points: those of the fragment shader, clamped where it has to be called.
const vec_t_<double, 4>* TRenderEngine::PointColors(TBatchDraw* draw, int count) {
  vec_t_<double, 4>* const colors = draw->Vectors[1];
  if (!gl.m_Lighting) {
    draw->FetchValues();
  }
  if (!gl.m_Lighting && !gl.m_TexUnits[0].TexEnabled) {
    if (draw->Values[1].Pointer == nullptr) {
      std::fill_n(colors, count, gl.m_CurColor);
    }
    return colors;
  }
  FS_DATA fragment = gl.m_Fragment;
  for (int i = 0; i < count; ++i) {
    ShadeBatched(draw, i, &gl.m_VarCur[0]);
    gl.m_FragmentShader->Execute(gl.m_VarCur, &fragment);
    colors[i] = fragment.Color;
  }
  return colors;
}

namespace {

// The record that the last fragments of a batch of points leave.
struct TLastPoints {
  int Tested = -1; ///< the last one that came to the depth test
  int Shaded = -1; ///< the last one that was shaded
};

// A point whose depth and colour are computed already.
struct TBatchedPoint {
  const TRenderCPU& gl;
  const TPointBatch& Points;
  TLastPoints* Last;
  bool Copied; ///< whether the colour write is a mere copy, decided once for the batch
  unsigned char* Color;
  int Index;

  float Depth() const { return Points.Depth[Index]; }
  void SetDepth() { Last->Tested = Index; }
  bool Shade() {
    Last->Shaded = Index;
    return true;
  }
  void WriteColor() {
    const unsigned char* const bytes = Points.Bytes + kPixelBytes * static_cast<std::size_t>(Index);
    if (Copied) {
      std::memcpy(Color, bytes, kPixelBytes);
    } else {
      WriteBytes(gl, Color, bytes);
    }
  }
};

} // namespace

// Points of a batch in order, since two may fall on one pixel. They are scattered, so their pixels
// are prefetched before the first is drawn.
void TRenderEngine::DrawPoints(const TDrawState& state, const TPointBatch& points,
                               const vec_t_<double, 4>* colors) {
  struct TPixel {
    int Index;
    unsigned char* Color;
    unsigned char* Depth;
    unsigned char* Stencil;
  };
  const bool useDepth = gl.m_DepthTest || gl.m_DepthMask;
  TPixel pixels[TVertexBatch::kMost];
  int count = 0;
  for (int i = 0; i < points.Count; ++i) {
    const int x = points.X[i];
    const int y = points.Y[i];
    if (x < 0) {
      continue;
    }
    auto* const color = reinterpret_cast<unsigned char*>(state.Color.At<std::uint32_t>(x, y));
    pixels[count] = {i, color, useDepth ? DepthPixel(x, y) : nullptr, StencilPixel(x, y)};
    __builtin_prefetch(pixels[count].Color, 1);
    if (useDepth) {
      __builtin_prefetch(pixels[count].Depth, 1);
    }
    if (gl.m_StencilTest) {
      __builtin_prefetch(pixels[count].Stencil, 1);
    }
    ++count;
  }
  const bool copied = IsCopy(gl);
  TLastPoints last;
  for (int k = 0; k < count; ++k) {
    const TPixel& pixel = pixels[k];
    RunFragment(gl, pixel.Depth, pixel.Stencil,
                TBatchedPoint{gl, points, &last, copied, pixel.Color, pixel.Index});
  }
  if (last.Tested >= 0) {
    gl.m_Fragment.Depth = points.Depth[last.Tested];
  }
  if (last.Shaded >= 0) {
    gl.m_Fragment.X = points.X[last.Shaded];
    gl.m_Fragment.Y = points.Y[last.Shaded];
    gl.m_Fragment.Color = Clamped01(colors[last.Shaded]);
  }
}

void TRenderEngine::ReplayPoints(TBatchDraw* draw, const TDrawState& state, int count) {
  const TSpanKernels& kernels = *GetSpanKernels();
  TPointBatch points;
  kernels.ProjectPoints(draw->Batch, count, gl.m_Width, gl.m_Height, &points);
  const vec_t_<double, 4>* const colors = PointColors(draw, count);
  kernels.PackColors(&colors->x, count, &points);
  DrawPoints(state, points, colors);
}

} // namespace Zx3D
