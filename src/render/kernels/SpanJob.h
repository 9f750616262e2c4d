// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*, EachSpanLevel.*)

#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

struct TVertexBatch;
struct TPointBatch;
struct TShapeClasses;
struct TCulling;

/// Where a triangle's texels come from.
enum class TTexelSource : std::uint8_t {
  None,
  Nearest, ///< four bytes a texel, read here
  Linear,
  Sampler, ///< any other state: the sampler's own function, pixel by pixel
};

/// A triangle or line drawn by a kernel: all that its rows and pixels read, set up once for the
/// primitive, and the result for the fragment record.
///
/// Each pixel's operations are those of the reference walker, one by one and in its order; only
/// what can be proven to change no bit is left out.
struct TSpanJob {
  // --- The triangle, in window coordinates and prepared for its kind of interpolation
  const vec_t_<double, 4>* Vertex[3];
  bool Perspective;
  int Width;
  int Height;

  // --- What is interpolated; -1 for a slot that nothing reads
  int ColorSlot;
  int SecondarySlot;
  int TexSlot;

  bool ZeroSecondary; ///< a secondary colour that is 0 at every pixel is still added to the record

  // --- Texture
  TTexelSource Texels;
  bool Modulate; ///< otherwise the texel replaces the colour
  TRenderCPU::TTexSampler* Sampler;
  double InRangeWidth; ///< coordinates in texels from 0 to below it are within, but for the mask
  double InRangeHeight;
  std::uint32_t MaskX;
  std::uint32_t MaskY;

  // --- Colour
  bool Clamp;              ///< needed: values may lie outside 0 to 1, or be NaN
  std::uint32_t ConstMask; ///< bit i: channel i has the byte of `ConstColor` at every pixel
  std::uint32_t ConstColor;
  bool UsesVertexColor; ///< bytes depend on the interpolated colours, not on the texels alone
  double ChannelBound;  ///< of the channels, as SpanFloatColors-inl.h defines it; 0: not in single
                        ///< precision
  std::uint8_t ColorMask;
  bool Blend;
  unsigned char* Color;
  std::ptrdiff_t ColorRowStride;

  // --- Depth
  bool DepthTest;
  bool DepthWrite;
  std::uint8_t DepthFunc; ///< from GL_NEVER on
  bool AddOffset;
  float Offset;
  unsigned char* Depth;
  std::ptrdiff_t DepthRowStride;

  // --- Stencil; a null address is a test that is off
  unsigned char* Stencil;
  std::ptrdiff_t StencilRowStride;
  std::uint8_t StencilFunc; ///< from GL_NEVER on
  std::uint8_t StencilRef;
  std::uint8_t StencilValueMask;
  std::uint8_t StencilWriteMask;
  std::uint8_t StencilFail; ///< operations in the order of `TStencilStep`
  std::uint8_t StencilZFail;
  std::uint8_t StencilZPass;

  bool RecordColor; ///< whether `LastColor` is wanted

  // --- Result for the fragment record, where `...Set` says so
  bool YSet;
  int Y;
  bool DepthSet;
  float LastDepth;
  bool ColorSet;
  int LastX;
  int LastY;
  int LastMinorEdge; ///< 1 or 2: below or above the middle vertex, in the order of drawing
  double LastT;      ///< of a line
  vec_t_<double, 4> LastColor;
};

/// Stencil operations as numbers.
enum TStencilStep : std::uint8_t {
  kStencilKeep,
  kStencilZero,
  kStencilReplace,
  kStencilIncr,
  kStencilIncrWrap,
  kStencilDecr,
  kStencilInvert,
};

/// The pixels of a line. Number i, of those from `First` to `Last`, lies i steps along the axis of
/// the greater difference and floor((2 * Minor * i + Major) / (2 * Major)) along the other; all
/// of them are on the surface. t follows from the coordinate of `Axis`, limited to 0 to 1.
struct TLineWalk {
  int Axis;
  int From[2];
  int Step[2];
  long long Major; ///< the greater difference: at least 1, below 2^22
  long long Minor; ///< the smaller one
  int First;
  int Last;

  /// Steps along the minor axis at pixel i.
  long long MinorStepsAt(long long i) const {
    return Minor == 0 ? 0 : (2 * Minor * i + Major) / (2 * Major);
  }
  /// The first pixel at minor step k, k at least 1. `Minor` must not be 0.
  long long FirstAtMinorStep(long long k) const {
    return (2 * Major * k - Major + 2 * Minor - 1) / (2 * Minor);
  }
  void At(int i, int* x, int* y) const {
    const int along = From[Axis] + Step[Axis] * i;
    const int across = From[1 - Axis] + Step[1 - Axis] * static_cast<int>(MinorStepsAt(i));
    *x = Axis == 0 ? along : across;
    *y = Axis == 0 ? across : along;
  }
};

/// The routines of one instruction set.
struct TSpanKernels {
  const char* Level; ///< the name of the instruction set
  int Lanes;         ///< doubles in a vector
  void (*DrawTriangle)(TSpanJob* job);
  void (*DrawLine)(TSpanJob* job, const TLineWalk& walk);
  void (*TransformBatch)(const double* matrix, int count, TVertexBatch* batch);
  void (*ClassifyTriangles)(const TVertexBatch& batch, const int (&corners)[3], int count,
                            const TCulling& culling, TShapeClasses* out);
  void (*ClassifyLines)(const TVertexBatch& batch, int count, TShapeClasses* out);
  void (*ProjectPoints)(const TVertexBatch& batch, int count, int width, int height,
                        TPointBatch* out);
  void (*PackColors)(const double* colors, int count, TPointBatch* out);
};

/// The kernels of the processor at hand, within what `LimitSpanLevel` allows; null for the
/// reference walker.
const TSpanKernels* GetSpanKernels();

/// \name For tests: the instruction set that spans are drawn with.
/// \{

/// The names of the levels, of all architectures. SSE2 is one only where Highway has it, from
/// version 1.1 on.
inline constexpr const char* kSpanLevels[] = {"SSE2", "SSSE3", "AVX2", "AVX3", "NEON"};

/// The reference walker and all levels.
inline constexpr const char* kSpanPaths[] = {"reference", "SSE2", "SSSE3", "AVX2", "AVX3", "NEON"};

/// "reference" or one of the levels (AVX3 is AVX-512); null takes the limit away. False, changing
/// nothing, for a level that the processor does not have.
bool LimitSpanLevel(const char* name);
const char* GetSpanLevel();
/// \}

} // namespace Zx3D
