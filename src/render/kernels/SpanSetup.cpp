// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*), tests/render/SpanBytes.cpp (SpanBytes.*),
// tests/render/SharedMemory.cpp (SharedMemory.*)

#include <ZxCore3D/render/kernels/SpanJob.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/FragmentTables.h>

namespace Zx3D {

namespace {

using TVec4 = vec_t_<double, 4>;
using TVertices = const TVec4* [3];

// Bounds within which rounding provably cannot change a constant byte: the ratio of the 1/w of a
// triangle, and the distance of 255 c + 0.5 from an integer. Interpolation loses a few units of the
// last place times that ratio, far below the margin.
constexpr double kMaxRatio = 65536.0;
constexpr double kByteMargin = 1e-6;

// --- The chosen functions as numbers; -1 for one that a caller installed

template <class TFunction, std::size_t N>
int IndexOf(const TFunction (&list)[N], TFunction function) {
  const TFunction* const found = std::find(std::begin(list), std::end(list), function);
  return found == std::end(list) ? -1 : static_cast<int>(found - list);
}

int StencilStepOf(TRenderCPU::TStencilFunction operation) {
  constexpr TRenderCPU::TStencilFunction kOperations[] = {
      KeepM_1u8, ZeroM_1u8, ReplaceM_1u8, IncrM_1u8, IncrWrapM_1u8, DecrM_1u8, InvertM_1u8,
  };
  return operation == DecrWrapM_1u8 ? kStencilDecr : IndexOf(kOperations, operation);
}

// --- What a triangle's values prove

// Two doubles in a vector register that every processor of this library has, and what a comparison
// of them gives: all ones or all zeros.
using TPair = double __attribute__((vector_size(16)));
using TPairMask = std::int64_t __attribute__((vector_size(16)));

// What holds for the components of a slot.
struct TComponents {
  TPairMask Low, High;

  TComponents operator&(const TComponents& other) const {
    return {Low & other.Low, High & other.High};
  }
  // A bit for each component.
  unsigned int Bits() const {
    return static_cast<unsigned int>((Low[0] & 1) | (Low[1] & 2) | (High[0] & 4) | (High[1] & 8));
  }
};

// A slot as two pairs.
struct TPairs {
  TPair Low, High;

  explicit TPairs(const TVec4& v) : Low{v.x, v.y}, High{v.z, v.w} {}
};

TComponents Equal(const TPairs& a, const TPairs& b) { return {a.Low == b.Low, a.High == b.High}; }

// The components that lie in 0 to 1.
TComponents Unit(const TPairs& v) {
  constexpr TPair kZero = {0.0, 0.0};
  constexpr TPair kOne = {1.0, 1.0};
  return {(v.Low >= kZero) & (v.Low <= kOne), (v.High >= kZero) & (v.High <= kOne)};
}

unsigned int UnitBits(const TVec4& slot) { return Unit(TPairs(slot)).Bits(); }

unsigned int UnitBits(const TVertices& v, int slot) {
  return (Unit(TPairs(v[0][slot])) & Unit(TPairs(v[1][slot])) & Unit(TPairs(v[2][slot]))).Bits();
}

// The components that are the same at all vertices.
unsigned int SameBits(const TVertices& v, int slot) {
  const TPairs first(v[0][slot]);
  return (Equal(first, TPairs(v[1][slot])) & Equal(first, TPairs(v[2][slot]))).Bits();
}

// Whether the first three components are 0 at all vertices.
bool IsZeroSlot(const TVertices& v, int slot) {
  const TPairs zero(TVec4{0, 0, 0, 0});
  const unsigned int bits = (Equal(zero, TPairs(v[0][slot])) & Equal(zero, TPairs(v[1][slot])) &
                             Equal(zero, TPairs(v[2][slot])))
                                .Bits();
  return (bits & 7) == 7;
}

// Whether the 1/w of the vertices (w of slot 0) differ so little that interpolated values exceed
// those of the vertices by a few units of the last place times kMaxRatio at most.
bool HasSteadyW(const TVertices& v) {
  const double a = v[0][0].w;
  const double b = v[1][0].w;
  const double c = v[2][0].w;
  const double least = std::min(std::min(a, b), c);
  const double most = std::max(std::max(a, b), c);
  return least > 1e-100 && most <= least * kMaxRatio && least < 1e100;
}

// The channel bound E of SpanFloatColors-inl.h: the greatest |c| of a channel at the vertices,
// twice that where one is negative. 0 if single precision is ruled out: a channel too great, 1/w
// outside the range where floats lose nothing, or a triangle too narrow to gain from it.
double ChannelBoundOf(const TVertices& v, unsigned int unit, const TSpanJob& job) {
  if (job.Perspective && !(v[0][0].w > 1e-15 && v[0][0].w < 1e15 && v[1][0].w > 1e-15 &&
                           v[1][0].w < 1e15 && v[2][0].w > 1e-15 && v[2][0].w < 1e15)) {
    return 0.0;
  }
  double least = 0.0;
  double most = 1.0;
  if (unit == 15 && job.SecondarySlot < 0) {
    return most;
  }
  const double left = std::min(std::min(v[0][0].x, v[1][0].x), v[2][0].x);
  const double right = std::max(std::max(v[0][0].x, v[1][0].x), v[2][0].x);
  if (right - left < 8.0) {
    return 0.0;
  }
  for (const TVec4* const at : v) {
    for (std::size_t i = 0; i < 4; ++i) {
      const double c = at[job.ColorSlot][i];
      const double added = job.SecondarySlot >= 0 ? at[job.SecondarySlot][i] : 0.0;
      const double reach = std::fabs(c) + std::fabs(added);
      if (!(reach <= 4.0)) {
        return 0.0;
      }
      least = std::min({least, c, added});
      most = std::max(most, reach);
    }
  }
  return least < 0.0 ? 2.0 * most : most;
}

bool IsWhite(const TVertices& v, int slot) {
  return std::all_of(std::begin(v), std::end(v), [slot](const TVec4* at) {
    return at[slot].x == 1.0 && at[slot].y == 1.0 && at[slot].z == 1.0 && at[slot].w == 1.0;
  });
}

// Whether a channel that is c at all vertices has the byte of c at all pixels.
bool IsConstantByte(double c) {
  const double value = c * 255.0 + 0.5;
  const double part = value - std::floor(value);
  return part > kByteMargin && part < 1.0 - kByteMargin;
}

// Channels whose byte is the same at all pixels. With one w for all vertices the differences are
// zeros, and every pixel computes the same value; otherwise it only stays near.
void SetUpConstantChannels(const TVertices& v, unsigned int unit, TSpanJob* job) {
  const double r = v[0][0].w;
  const bool oneW = v[1][0].w == r && v[2][0].w == r;
  const TVec4& first = v[0][job->ColorSlot];
  unsigned int same = unit & SameBits(v, job->ColorSlot);
  for (; same != 0; same &= same - 1) {
    const int i = std::countr_zero(same);
    const double c = first[static_cast<std::size_t>(i)];
    double value = c;
    if (job->Perspective) {
      if (!oneW && !IsConstantByte(c)) {
        continue;
      }
      if (oneW) {
        value = std::min((c * r) * (1.0 / r), 1.0);
      }
    }
    job->ConstMask |= 1u << i;
    job->ConstColor |= static_cast<std::uint32_t>(ByteOf(value)) << (8 * i);
  }
}

// --- Texture

bool IsByteTexture(const DATASURFACE& surface) {
  // Offsets are computed in 32 bits.
  return surface.Type == DATA_TYPE_UINT8 && surface.Channels == 4 && surface.PixelStride == 4 &&
         surface.RowStride > 0 && surface.Width < (1 << 20) && surface.Height < (1 << 20) &&
         (std::int64_t{surface.Height} + 2) * surface.RowStride < (std::int64_t{1} << 31);
}

// The range of texel coordinates that a mask alone wraps. A linear filter reads one texel further,
// which the mask brings back.
void SetInRangeLimit(std::uint32_t wrap, int size, bool linear, double* range,
                     std::uint32_t* mask) {
  if (wrap == GL_REPEAT && (size & (size - 1)) == 0) {
    *range = 1048576.0;
    *mask = static_cast<std::uint32_t>(size - 1);
  } else {
    *range = size - (linear ? 1 : 0);
    *mask = 0xFFFFFFFFu;
  }
}

// Finds where texels come from. False for a sampling function that a caller installed.
bool SetUpTexels(const TRenderCPU::TTexSampler& sampler, TSpanJob* job) {
  using TSampler = TRenderCPU::TTexSampler;
  job->Sampler = const_cast<TSampler*>(&sampler);
  TSampler chosen = sampler;
  chosen.UpdateGetValueFunc();
  if (sampler.m_GetValue != chosen.m_GetValue) {
    return false;
  }
  job->Texels = TTexelSource::Sampler;
  const DATASURFACE* const surface = sampler.m_Surface;
  if (surface != nullptr && sampler.m_GetValue != &TSampler::GetValueBorder &&
      IsByteTexture(*surface) && sampler.m_SurfaceWidth == surface->Width &&
      sampler.m_SurfaceHeight == surface->Height) {
    const bool linear = sampler.m_FilterMin != GL_NEAREST;
    job->Texels = linear ? TTexelSource::Linear : TTexelSource::Nearest;
    SetInRangeLimit(sampler.m_WrapS, surface->Width, linear, &job->InRangeWidth, &job->MaskX);
    SetInRangeLimit(sampler.m_WrapT, surface->Height, linear, &job->InRangeHeight, &job->MaskY);
  }
  return true;
}

// Whether all filtered texels lie in 0 to 1. With coordinates that are NaN, or too great to have a
// fraction, a mix of texels may be NaN.
bool AreUnitTexels(const TSpanJob& job) {
  if (job.Texels == TTexelSource::Linear) {
    if (job.Perspective && !HasSteadyW(job.Vertex)) {
      return false;
    }
    for (const TVec4* const at : job.Vertex) {
      const TVec4& st = at[job.TexSlot];
      if (!(std::fabs(st.x) < 1e15 && std::fabs(st.y) < 1e15)) {
        return false;
      }
    }
  } else if (job.Texels != TTexelSource::Nearest) {
    return false;
  }
  return UnitBits(job.Sampler->m_BorderColor) == 15;
}

} // namespace

// --- Set-up

bool TRenderEngine::SetUpTargets(TSpanJob* job) const {
  const TTarget& target = Targets.Color;
  const TTarget& depth = Targets.Depth;
  const TTarget& stencil = Targets.Stencil;
  if (gl.m_PixelWrite != nullptr || gl.m_DrawBuffer != nullptr || !Targets.Kernels ||
      target.PixelStride != 4 || TextureIsTarget()) {
    return false;
  }
  job->Width = gl.m_Width;
  job->Height = gl.m_Height;
  job->Color = target.Data;
  job->ColorRowStride = target.RowStride;
  job->Depth = depth.Data;
  job->DepthRowStride = depth.RowStride;
  job->Stencil = gl.m_StencilTest ? stencil.Data : nullptr;
  job->StencilRowStride = stencil.RowStride;
  job->ColorMask = gl.m_ColorMask;
  if (gl.m_ColorMask == 15) {
    job->Blend = gl.m_BlendFunc != nullptr;
    return !job->Blend || gl.m_BlendFunc == &TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub;
  }
  job->Blend = gl.m_BlendFuncM != nullptr;
  return !job->Blend || gl.m_BlendFuncM == &TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub;
}

bool TRenderEngine::SetUpDepthStencil(TSpanJob* job) const {
  const int depthFunc = IndexOf(kDepthCompares, gl.m_DepthCompare);
  job->DepthTest = gl.m_DepthTest;
  job->DepthWrite = gl.m_DepthMask;
  job->DepthFunc = static_cast<std::uint8_t>(depthFunc);
  job->AddOffset = gl.m_PolygonOffsetFill;
  job->Offset = gl.m_PolygonOffsetFactor;
  if (gl.m_DepthTest && depthFunc < 0) {
    return false;
  }
  if (!gl.m_StencilTest) {
    return true;
  }
  const int func = IndexOf(kStencilCompares, gl.m_StencilCompare);
  const int fail = StencilStepOf(gl.m_StencilFailOp);
  const int zfail = StencilStepOf(gl.m_StencilZFailOp);
  const int zpass = StencilStepOf(gl.m_StencilZPassOp);
  job->StencilFunc = static_cast<std::uint8_t>(func);
  job->StencilRef = static_cast<std::uint8_t>(gl.m_StencilRef);
  job->StencilValueMask = static_cast<std::uint8_t>(gl.m_StencilValueMask);
  job->StencilWriteMask = static_cast<std::uint8_t>(gl.m_StencilWriteMask);
  job->StencilFail = static_cast<std::uint8_t>(fail);
  job->StencilZFail = static_cast<std::uint8_t>(zfail);
  job->StencilZPass = static_cast<std::uint8_t>(zpass);
  return func >= 0 && fail >= 0 && zfail >= 0 && zpass >= 0;
}

// The inputs of the standard fragment shader: slots, texels, constant channels, whether to clamp.
bool TRenderEngine::SetUpColors(TSpanJob* job) const {
  const TVertices& v = job->Vertex;
  const bool front = gl.m_Fragment.FrontFacing;
  const auto isLive = [this](int slot) { return slot >= 1 && slot < gl.m_VarCount; };
  job->ColorSlot = front || gl.m_VarBackColor < 0 ? gl.m_VarColor : gl.m_VarBackColor;
  job->SecondarySlot = -1;
  job->TexSlot = -1;
  job->ZeroSecondary = false;
  job->Texels = TTexelSource::None;
  job->Modulate = true;
  job->ConstMask = 0;
  job->ConstColor = 0;
  job->ChannelBound = 0.0;
  job->UsesVertexColor = true;
  const TTexUnit& unit = gl.m_TexUnits[0];
  if (unit.TexEnabled) {
    job->TexSlot = gl.m_VarTexCoord;
    job->Modulate = unit.TexEnvMode == GL_MODULATE;
    if ((!job->Modulate && unit.TexEnvMode != GL_REPLACE) || !isLive(job->TexSlot) ||
        !SetUpTexels(unit.Sampler, job)) {
      return false;
    }
    if (!job->Modulate) {
      job->ColorSlot = -1;
      job->Clamp = !AreUnitTexels(*job);
      job->UsesVertexColor = false;
      job->ChannelBound = 1.0;
      return true;
    }
  }
  if (!isLive(job->ColorSlot)) {
    return false;
  }
  if (gl.m_Lighting) {
    const int secondary =
        front || gl.m_VarBackSecondary < 0 ? gl.m_VarSecondary : gl.m_VarBackSecondary;
    if (!isLive(secondary)) {
      return false;
    }
    job->ZeroSecondary = IsZeroSlot(v, secondary);
    job->SecondarySlot = job->ZeroSecondary ? -1 : secondary;
  }
  const bool steady = !job->Perspective || HasSteadyW(v);
  const unsigned int inside = UnitBits(v, job->ColorSlot);
  job->Clamp = !steady || job->SecondarySlot >= 0 || inside != 15 ||
               (job->Texels != TTexelSource::None && !AreUnitTexels(*job));
  if (steady && job->Texels == TTexelSource::None && job->SecondarySlot < 0) {
    SetUpConstantChannels(v, inside, job);
  }
  if (steady && job->ConstMask != 15 && v[2] != v[1]) { // lines are drawn in doubles
    job->ChannelBound = ChannelBoundOf(v, inside, *job);
    job->UsesVertexColor =
        job->Texels == TTexelSource::None || job->SecondarySlot >= 0 || !IsWhite(v, job->ColorSlot);
  }
  return true;
}

// Set-up that holds for all primitives of a draw.
bool TRenderEngine::SetUpDraw(TSpanJob* job) const {
  if (gl.m_FragmentShader == nullptr || gl.m_FragmentShader != gl.m_StdFragmentShader ||
      gl.m_CalcDepth || GetSpanKernels() == nullptr) {
    return false;
  }
  job->Perspective = gl.m_PerspectiveHint != GL_FASTEST;
  return SetUpTargets(job) && SetUpDepthStencil(job);
}

// Set-up of one primitive. `job->Vertex` is set: the slots as they are before perspective prepares
// them, the position in window coordinates.
bool TRenderEngine::SetUpPrimitive(TSpanJob* job) const {
  // Within this range of the window no operation of row set-up can overflow or give a NaN.
  for (const TVec4* const vertex : job->Vertex) {
    if (!(std::fabs(vertex[0].x) < 1e6 && std::fabs(vertex[0].y) < 1e6)) {
      return false;
    }
  }
  // With w of 1 throughout, perspective multiplies by 1 and nothing else.
  job->Perspective =
      gl.m_PerspectiveHint != GL_FASTEST &&
      !(job->Vertex[0][0].w == 1.0 && job->Vertex[1][0].w == 1.0 && job->Vertex[2][0].w == 1.0);
  job->YSet = false;
  job->DepthSet = false;
  job->ColorSet = false;
  return SetUpColors(job);
}

bool TRenderEngine::SetUpJob(TSpanJob* job) const { return SetUpDraw(job) && SetUpPrimitive(job); }

// --- Running

void TRenderEngine::RunTriangleJob(const VAR_DATA* v, TSpanJob* job) {
  job->RecordColor = DrawJob == nullptr;
  GetSpanKernels()->DrawTriangle(job);

  if (job->YSet) {
    gl.m_Fragment.Y = job->Y;
  }
  if (job->DepthSet) {
    gl.m_Fragment.Depth = job->LastDepth;
  }
  if (!job->ColorSet) {
    return;
  }
  gl.m_Fragment.X = job->LastX;
  TDeferredFragment& pending = DeferredFragment;
  pending.Set = true;
  // No state changes within an array draw: the colour can wait for the last triangle.
  pending.Shade = !job->RecordColor;
  pending.Front = gl.m_Fragment.FrontFacing;
  if (job->RecordColor) {
    gl.m_Fragment.Color = job->LastColor;
  }
  pending.Perspective = job->Perspective;
  pending.Count = gl.m_VarCount;
  pending.X = job->LastX;
  pending.Y = job->LastY;
  pending.Half = job->LastMinorEdge;
  for (int i = 0; i < 3; ++i) {
    // Four slots are all that most states have.
    std::memcpy(pending.Vertex[i].Slots, v[i].Slots, 4 * sizeof v[i].Slots[0]);
    if (gl.m_VarCount > 4) {
      gl.CopyVar(pending.Vertex[i], v[i]);
    }
  }
  if (!gl.m_InBeginEnd || gl.m_VertexShader != gl.m_StdVertexShader) {
    ResolveFragment();
  }
}

void TRenderEngine::RunLineJob(TSpanJob* job, const TLineWalk& walk) {
  GetSpanKernels()->DrawLine(job, walk);
  if (job->DepthSet) {
    gl.m_Fragment.Depth = job->LastDepth;
  }
  if (job->ColorSet) {
    gl.m_Fragment.X = job->LastX;
    gl.m_Fragment.Y = job->LastY;
    gl.m_Fragment.Color = job->LastColor;
  }
}

// Computes the slots of the last fragment by the operations of the reference walker.
void TRenderEngine::ResolveFragment() {
  TDeferredFragment& pending = DeferredFragment;
  if (!pending.Set) {
    return;
  }
  pending.Set = false;
  const int count = gl.m_VarCount;
  const std::uint32_t hint = gl.m_PerspectiveHint;
  gl.m_VarCount = pending.Count;
  gl.m_PerspectiveHint = pending.Perspective ? GL_NICEST : GL_FASTEST;
  EDGE edges[3];
  int longest = 0;
  SetEdges(pending.Vertex, edges, &longest);
  VAR_DATA ends[2];
  const EDGE* const sides[2] = {&edges[longest], &edges[(longest + pending.Half) % 3]};
  for (int i = 0; i < 2; ++i) {
    gl.Value(*sides[i], (pending.Y - sides[i]->Begin->Slots[0].y) / sides[i]->Delta.Slots[0].y,
             &ends[i]);
  }
  EDGE span;
  gl.SetSpan(&span, &ends[0], &ends[1]);
  InterpolateFragment(span, (pending.X - span.Begin->Slots[0].x) / span.Delta.Slots[0].x);
  gl.m_VarCount = count;
  gl.m_PerspectiveHint = hint;
  if (pending.Shade) {
    const bool front = gl.m_Fragment.FrontFacing;
    gl.m_Fragment.FrontFacing = pending.Front;
    gl.m_FragmentShader->Execute(&gl.m_VarFragment, &gl.m_Fragment);
    gl.m_Fragment.FrontFacing = front;
  }
}

} // namespace Zx3D
