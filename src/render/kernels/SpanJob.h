// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*, EachSpanLevel.*)

#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/KernelCounters.h>

namespace Zx3D {

struct TVertexBatch;
struct TPointBatch;
struct TShapeColumns;
struct TInsideBits;
struct TTriangleRows;
struct TLineEnds;
struct TLineWalk;
struct TRenderEngine;

/// The comparison of a depth or stencil test, in the order of the enums from GL_NEVER on.
enum class TCompare : std::uint8_t {
  Never,
  Less,
  Equal,
  LessEqual,
  Greater,
  NotEqual,
  GreaterEqual,
  Always,
  Unknown, ///< a function that a caller installed
};

constexpr bool IsLessOrLessEqual(TCompare func) {
  return func == TCompare::Less || func == TCompare::LessEqual;
}

constexpr bool IsOneWay(TCompare func) {
  return IsLessOrLessEqual(func) || func == TCompare::Greater || func == TCompare::GreaterEqual;
}

enum class TStencilStep : std::uint8_t {
  Keep,
  Zero,
  Replace,
  Incr,
  IncrWrap,
  Decr,
  Invert,
  Unknown, ///< a function that a caller installed
};

enum class TBlend : std::uint8_t {
  None,
  SourceAlpha, ///< the source over the destination, each by the source's alpha
  Unknown,     ///< a function that a caller installed
};

/// Where a primitive's texels come from.
enum class TTexelSource : std::uint8_t {
  None,
  Nearest, ///< four bytes a texel, read here
  Linear,
  Sampler, ///< any other state: the sampler's own function, pixel by pixel
};

/// Whether the float kernels read the texels themselves.
constexpr bool HasByteTexels(TTexelSource source) {
  return source == TTexelSource::Nearest || source == TTexelSource::Linear;
}

enum class TPrimitiveKind : std::uint8_t { Triangle, Line };

/// The set of channels that alpha alone is.
inline constexpr std::uint32_t kAlphaOnly = 8;

/// The rows of a target.
struct TTargetRows {
  unsigned char* Data = nullptr;
  std::ptrdiff_t Stride = 0; ///< bytes from a row to the one above

  template <class T> T* At(int x, int y) const {
    return reinterpret_cast<T*>(Data + y * Stride) + x;
  }
};

/// State that holds for all primitives of a draw.
struct TDrawState {
  int Width;
  int Height;
  TTargetRows Color; ///< four bytes a pixel
  TTargetRows Depth; ///< floats
  TTargetRows Stencil;
  std::uint8_t ColorMask;
  TBlend Blend;
  bool DepthTest;
  bool DepthWrite;
  bool StencilTest;
  TCompare DepthFunc;
  TCompare StencilFunc;
  TStencilStep StencilFail;
  TStencilStep StencilZFail;
  TStencilStep StencilZPass;
  std::uint8_t StencilRef;
  std::uint8_t StencilValueMask;
  std::uint8_t StencilWriteMask;
  float Offset; ///< of depth, in the units of the depth surface

  /// Whether what is written depends on the pixel that was there.
  bool ReadsColor() const { return Blend != TBlend::None || ColorMask != kAllChannels; }
  bool UsesDepth() const { return DepthTest || DepthWrite; }
  /// Whether colours are stored, and nothing else happens to a pixel.
  bool IsPlain() const { return !UsesDepth() && !StencilTest && !ReadsColor(); }
};

/// Where the texel coordinates of a primitive may lie, from those of its vertices.
enum class TTexelReach : std::uint8_t {
  Anywhere,
  Periodic, ///< the floor of a coordinate, within the period, is the index
  Plain,    ///< the floor within `TTexelAxis::Mask`
};

enum class TTexelWrap : std::uint8_t {
  Repeat,
  Edge,   ///< clamped to the texels at the edge
  Border, ///< what lies outside has the border's colour
};

inline constexpr std::uint32_t kNoTexelMask = ~0u;

/// How texel coordinates along an axis become indices.
struct TTexelAxis {
  TTexelWrap Wrap;
  std::uint32_t Mask; ///< of repeats that are a power of two; else `kNoTexelMask`
  std::uint32_t Last; ///< the index after which a repeat begins again
  double Size;
  double InverseSize; ///< rounded
};

/// How the bytes of texels become words, red the lowest, with an alpha of 1 where there is none. A
/// pair is two neighbours of a row, the first in the low half.
struct TTexelBytes {
  std::uint32_t Stride;   ///< from one texel to the next
  bool AreWords;          ///< texels are words as they stand; otherwise:
  bool HasPairs;          ///< neighbours lie within eight bytes
  std::uint32_t LastWord; ///< the last offset of four bytes that lie within the image
  std::uint32_t LastPair; ///< of eight bytes
  std::uint32_t Alpha;    ///< what is put where there is no alpha
  /// The bytes of four words, or of two pairs, within those that are loaded; 0x80: none.
  std::uint8_t WordPlaces[16];
  std::uint8_t PairPlaces[16];
};

/// What a primitive's vertices prove. What is read under a condition alone has no value before that
/// holds, as in `TPrimitive`.
struct TPrimitiveValues {
  bool Perspective = false;

  // --- What is interpolated; -1 for a slot that nothing reads
  int ColorSlot = -1;
  int SecondarySlot = -1;
  bool ZeroSecondary = false; ///< a secondary colour of 0 is still added to the fragment record

  TTexelReach Reach = TTexelReach::Anywhere;
  double TexelBound = 0.0; ///< with byte texels, of |x| + |y| in texels at any vertex

  // --- Colour
  bool Clamp = true;           ///< channels may lie outside 0 to 1, or be NaN
  bool UsesVertexColor = true; ///< bytes depend on the interpolated colours, not on texels alone
  std::uint32_t ConstMask = 0; ///< the channels that have the byte of `ConstColor` at every pixel
  std::uint32_t ConstColor = 0;
  double ChannelBound = 0.0;  ///< of SpanFloatColors-inl.h; 0: not in single precision
  std::uint32_t TintMask = 0; ///< the channels that are `Tint` times the texel, rounded
  std::uint32_t TieMask = 0;  ///< without a texture, those that lie between two bytes throughout
  float Tint[4];              ///< of those channels

  bool HasConstColor() const { return ConstMask == kAllChannels; }
};

/// Inputs of a primitive: its vertices in window coordinates and what interpolation reads of them.
struct TPrimitive : TPrimitiveValues {
  const vec_t_<double, 4>* Vertex[3] = {}; ///< of a line the last two are the same
  bool RecordColor = true;                 ///< whether `LastColor` is wanted

  // --- What follows from state, and holds for all primitives of a draw
  TPrimitiveKind Kind = TPrimitiveKind::Triangle;
  bool AddOffset = false;
  bool Modulate = true; ///< otherwise the texel replaces the colour
  TTexelSource Texels = TTexelSource::None;
  int TexSlot = -1; ///< without a texture
  TRenderCPU::TTexSampler* Sampler = nullptr;
  TTexelAxis AxisX; ///< with byte texels, as `AxisY`
  TTexelAxis AxisY;
  TTexelBytes TexelBytes; ///< likewise
};

/// What a kernel leaves for the fragment record, where a flag says so.
struct TSpanResult {
  bool YSet = false;
  bool DepthSet = false;
  bool ColorSet = false;
  int Y;
  float LastDepth;
  int LastX;
  int LastY;
  int LastMinorEdge; ///< 1 or 2: the one after the major edge, or the one before it; 0: a line
  double LastT;      ///< of a line
  vec_t_<double, 4> LastColor;
};

/// A triangle or line drawn by a kernel: all that its rows and pixels read, and the result.
///
/// Each pixel's operations are those of the reference walker, one by one and in its order; only
/// what can be proven to change no bit is left out.
struct TSpanJob {
  TDrawState Draw;
  TPrimitive Primitive;
  TSpanResult Result;
  TKernelCounters* Counters; ///< null: nobody counts
  int* ExactRuns;            ///< the context's account of exact coordinates: `CountExactGroups`

  void StartPrimitive() {
    Result.YSet = Result.DepthSet = Result.ColorSet = false;
    Counters = ActiveKernelCounters();
    if (Counters != nullptr) [[unlikely]] {
      Counters->StartPrimitive();
    }
  }
  bool Meets(TCondition unmet, int times = 1) const { return Zx3D::Meets(Counters, unmet, times); }
  void StartRow() const {
    if (Counters != nullptr) [[unlikely]] {
      Counters->StartRow();
    }
  }
  void Count(TKernel kernel, int pixels) const {
    if (Counters != nullptr) [[unlikely]] {
      Counters->Add(kernel, pixels);
    }
  }
};

/// How colours are written: mask and blending.
void SetUpOutput(const TRenderCPU& gl, TDrawState* draw);

/// Whether no function of the stencil is a caller's.
bool KnowsStencil(const TDrawState& draw);

/// Whether a sampler fetches by a function of its own, not by one that a caller installed.
bool IsKnownSampler(const TRenderCPU::TTexSampler& sampler);

/// What the vertices of a primitive prove of a slot that has colours; a bit for each channel.
struct TSlotFacts {
  std::uint32_t Unit;  ///< in 0 to 1 at all vertices
  std::uint32_t Same;  ///< the same at all vertices
  std::uint32_t Sure;  ///< of those that are both: the byte of `Bytes` at all pixels
  std::uint32_t Bytes; ///< 0 for all other channels
};

/// The routines of one instruction set.
struct TSpanKernels {
  const char* Level; ///< the name of the instruction set
  int Lanes;         ///< doubles in a vector
  /// `Sure` and `Bytes` hold where 1/w is steady: see `kMaxSteadyRatio`.
  void (*FindFacts)(const TPrimitive& primitive, int slot, TSlotFacts* out);
  void (*DrawTriangle)(TSpanJob* job);
  /// Within the scope of quiet floats of a draw, as `TransformBatch` to `PackColors`.
  void (*DrawPlannedTriangle)(TSpanJob* job, const TTriangleRows& rows, int shape);
  /// Lines that are set up, by the job's own primitive in turn. Leaves that of the last fragment.
  void (*DrawLines)(TSpanJob* job, const TPrimitive* lines, const TLineWalk* walks, int count);
  void (*TransformBatch)(const double* matrix, int count, TVertexBatch* batch);
  void (*FindInside)(const TVertexBatch& batch, int first, int count, TInsideBits* out);
  void (*FindClear)(const TVertexBatch& batch, const TShapeColumns& columns, int count,
                    std::uint64_t (*out)[3]);
  void (*DivideVertices)(const TVertexBatch& batch, int count, TVertexBatch* out);
  std::uint64_t (*FindFront)(const TVertexBatch& divided, const TShapeColumns& columns, int count,
                             bool frontCCW);
  void (*ProjectVertices)(const TVertexBatch& batch, int count, int width, int height,
                          TVertexBatch* window);
  void (*PlanTriangles)(const TVertexBatch& window, const TShapeColumns& columns, int count,
                        int height, TTriangleRows* out);
  void (*ProjectLines)(const TVertexBatch& batch, int count, int width, int height,
                       TVertexBatch* window, TLineEnds* out);
  void (*ProjectPoints)(const TVertexBatch& batch, int count, int width, int height,
                        TPointBatch* out);
  void (*PackColors)(const double* colors, int count, TPointBatch* out);
  /// As `DrawSpansBetweenEdges` and `DrawSpan`, for the reference walker's states.
  void (*ShadeRows)(TRenderEngine* engine, const TRenderCPU::EDGE& a, const TRenderCPU::EDGE& b,
                    TRenderCPU::FS_DATA* fs);
  void (*ShadeSpan)(TRenderEngine* engine, const TRenderCPU::EDGE& span, int y,
                    TRenderCPU::FS_DATA* fs);
  void (*DrawPixelRow)(const TSpanJob& job, const unsigned char* from, unsigned char* to,
                       std::ptrdiff_t count);
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
