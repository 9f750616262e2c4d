// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*), tests/render/SpanBytes.cpp (SpanBytes.*),
// tests/render/SharedMemory.cpp (SharedMemory.*)

#include <ZxCore3D/render/kernels/SpanJob.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <new>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/FragmentTables.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/common/SlotTable.h>

namespace Zx3D {

namespace {

using TVec4 = vec_t_<double, 4>;
using TVertices = const TVec4* [3];

// --- The chosen functions as enums

// The place in a list that has the order of an enum; `Unknown` for a function that a caller
// installed.
template <class TEnum, class TFunction, std::size_t N>
TEnum EnumOf(const TFunction (&list)[N], TFunction function) {
  static_assert(static_cast<std::size_t>(TEnum::Unknown) == N);
  const TFunction* const found = std::find(std::begin(list), std::end(list), function);
  return static_cast<TEnum>(found - std::begin(list));
}

TStencilStep StencilStepOf(TRenderCPU::TStencilFunction operation) {
  constexpr TRenderCPU::TStencilFunction kOperations[] = {
      KeepM_1u8, ZeroM_1u8, ReplaceM_1u8, IncrM_1u8, IncrWrapM_1u8, DecrM_1u8, InvertM_1u8,
  };
  return operation == DecrWrapM_1u8 ? TStencilStep::Decr
                                    : EnumOf<TStencilStep>(kOperations, operation);
}

template <class TFunction> TBlend BlendOf(TFunction chosen, TFunction sourceAlpha) {
  return chosen == nullptr       ? TBlend::None
         : chosen == sourceAlpha ? TBlend::SourceAlpha
                                 : TBlend::Unknown;
}

// --- What a triangle's values prove

// Whether all components, or all but alpha, have one value at all vertices, `same` being those that
// have any.
bool IsThroughout(const TVec4& first, double value, unsigned int components, unsigned int same) {
  return (same & components) == components && first.x == value && first.y == value &&
         first.z == value && (components != kAllChannels || first.w == value);
}

// Whether the 1/w of the vertices (w of slot 0) differ so little that interpolated values exceed
// those of the vertices by a few units of the last place times kMaxSteadyRatio at most.
bool HasSteadyW(const TVertices& v) {
  const double a = v[0][0].w;
  const double b = v[1][0].w;
  const double c = v[2][0].w;
  const double least = std::min(std::min(a, b), c);
  const double most = std::max(std::max(a, b), c);
  return least > kMinSteadyW && most < kMaxSteadyW && most <= least * kMaxSteadyRatio;
}

double WidthOf(const TVertices& v) {
  return std::max(std::max(v[0][0].x, v[1][0].x), v[2][0].x) -
         std::min(std::min(v[0][0].x, v[1][0].x), v[2][0].x);
}

// The channel bound E of SpanFloatColors-inl.h: the greatest |c| of a channel at the vertices,
// twice that where one is negative; 0 if a channel is too great. `inUnit`: all are in 0 to 1.
double ChannelBoundOf(const TPrimitive& primitive, bool inUnit) {
  double least = 0.0;
  double most = 1.0;
  if (inUnit) {
    return most;
  }
  for (const TVec4* const at : primitive.Vertex) {
    for (std::size_t i = 0; i < 4; ++i) {
      const double c = at[primitive.ColorSlot][i];
      const double added = primitive.SecondarySlot >= 0 ? at[primitive.SecondarySlot][i] : 0.0;
      const double sum = std::fabs(c) + std::fabs(added);
      if (!(sum <= kMaxChannel)) {
        return 0.0;
      }
      least = std::min({least, c, added});
      most = std::max(most, sum);
    }
  }
  return least < 0.0 ? 2.0 * most : most;
}

TCondition SetUpFloatColors(bool steady, bool inUnit, TPrimitive* out) {
  const TPrimitive& primitive = *out;
  const TVertices& v = primitive.Vertex;
  const int shortPixels = HasByteTexels(primitive.Texels) ? kJoinedPixels : kShortPixels;
  double bound = 0.0;
  ZX_FLOAT_COLOR_CONDITIONS(ZX_RETURN_UNMET)
  out->ChannelBound = bound;
  return TCondition::None;
}

// A factor f with which f b, in floats, rounds to the byte of a texel's byte b under the channel c,
// for all b; negative if there is none.
//
// That byte is k(b) = floor(b c + 0.5), unless b c lies so near to k + 0.5 that the exact path's
// rounding decides. What that path loses is at most 60 * 2^-53 * kMaxSteadyRatio of b c, below
// kTintMargin: where c keeps this distance from all (k +- 0.5) / b, the bytes are those. Two of
// these quotients are the same or 1 / (2 * 255^2) apart, hence from the middle of the interval
// around c to its ends there is more than floats lose in two roundings.
float TintOf(double c) {
  double low = -1.0;
  double high = 2.0;
  for (int b = 1; b < 256; ++b) {
    const double k = static_cast<int>(b * c + 0.5);
    low = std::max(low, (k - 0.5) / b);
    high = std::min(high, (k + 0.5) / b);
  }
  const bool isApart = low < c - kTintMargin * c && c + kTintMargin * c < high;
  return isApart ? static_cast<float>(0.5 * (low + high)) : -1.0f;
}

// Channels of a nearest texel that are one factor times the texel, as those of a texture that is
// faded as a whole. `known` is what was found for the last triangles.
void SetUpTints(unsigned int same, TKnownTints* known, TPrimitive* primitive) {
  const TVec4& first = primitive->Vertex[0][primitive->ColorSlot];
  for (; same != 0; same &= same - 1) {
    const auto i = static_cast<std::size_t>(std::countr_zero(same));
    if (known->Channel[i] != first[i]) {
      known->Channel[i] = first[i];
      known->Tint[i] = TintOf(first[i]);
    }
    if (known->Tint[i] >= 0.0f) {
      primitive->TintMask |= 1u << i;
      primitive->Tint[i] = known->Tint[i];
    }
  }
}

// --- Texture

using TSampler = TRenderCPU::TTexSampler;

bool HasSmallOffsets(const DATASURFACE& surface) {
  const std::int64_t pixelStride = surface.PixelStride;
  const std::int64_t rowStride = surface.RowStride;
  return pixelStride > 0 && rowStride > 0 && surface.Width < kMaxTextureSide &&
         surface.Height < kMaxTextureSide &&
         (surface.Height + 2) * rowStride + (surface.Width + 1) * pixelStride < kMaxTextureBytes;
}

// False where no word lies within the image, as in one of a single byte.
bool SetUpTexelBytes(const TSampler& sampler, TTexelBytes* out) {
  static constexpr std::uint8_t kPlaces[4][4] = {
      {0, 0, 0, 0x80}, {0, 0, 0, 1}, {0, 1, 2, 0x80}, {0, 1, 2, 3}};
  const DATASURFACE& surface = *sampler.m_Surface;
  const int channels = surface.Channels;
  const int stride = surface.PixelStride;
  out->AreWords = channels == 4 && stride == 4;
  out->Alpha = channels % 2 != 0 ? 0xFF000000u : 0;
  if (out->AreWords) {
    return true;
  }
  // A repeat may find one column and one row past the last.
  const int lastX = surface.Width - (sampler.m_WrapS == GL_REPEAT ? 0 : 1);
  const int lastY = surface.Height - (sampler.m_WrapT == GL_REPEAT ? 0 : 1);
  const int end = lastY * surface.RowStride + lastX * stride + channels;
  out->Stride = static_cast<std::uint32_t>(stride);
  out->HasPairs = stride <= 4 && end >= 8;
  out->LastWord = static_cast<std::uint32_t>(end - 4);
  out->LastPair = static_cast<std::uint32_t>(end - 8);
  for (int i = 0; i < 16; ++i) {
    const int place = kPlaces[channels - 1][i % 4];
    out->WordPlaces[i] = static_cast<std::uint8_t>(place + i / 4 * 4);
    out->PairPlaces[i] = static_cast<std::uint8_t>(place + i / 4 % 2 * stride + i / 8 * 8);
  }
  return end >= 4;
}

TTexelAxis TexelAxisOf(std::uint32_t wrap, int size) {
  const auto last = static_cast<std::uint32_t>(size - 1);
  const double n = size;
  if (wrap == GL_REPEAT) {
    return {TTexelWrap::Repeat, (size & (size - 1)) == 0 ? last : kNoTexelMask, last, n, 1.0 / n};
  }
  return {wrap == GL_CLAMP_TO_EDGE ? TTexelWrap::Edge : TTexelWrap::Border, kNoTexelMask, ~0u, n,
          1.0 / n};
}

// Where the coordinates of one axis lie. Those of pixels lie between those of the vertices, but for
// what rounding adds: each of some thirty operations 2^-53 of the greatest at a vertex, times the
// ratio of the vertices' 1/w, which is kMaxSteadyRatio at most. kTexelMargin is more, of what the
// coordinates were before the filter shifted them. Adds the vertices' magnitudes, in texels, to the
// bound: a NaN, which makes that one, leads anywhere.
TTexelReach TexelReachOf(std::size_t component, const TTexelAxis& axis, TPrimitive* primitive) {
  const double a = primitive->Vertex[0][primitive->TexSlot][component];
  const double b = primitive->Vertex[1][primitive->TexSlot][component];
  const double c = primitive->Vertex[2][primitive->TexSlot][component];
  const bool linear = primitive->Texels == TTexelSource::Linear;
  const double shift = linear ? 0.5 : 0.0;
  const double least = std::min({a, b, c}) * axis.Size - shift;
  const double most = std::max({a, b, c}) * axis.Size - shift;
  const double sum = (std::fabs(a) + std::fabs(b) + std::fabs(c)) * axis.Size;
  const double margin = kTexelMargin * (2.0 * sum + 2.0);
  primitive->TexelBound += sum;
  if (!(least > -kInRangeRepeat && most < kInRangeRepeat && sum < 4.0 * kInRangeRepeat)) {
    return TTexelReach::Anywhere;
  }
  if (margin <= least && most + margin < axis.Size - (linear ? 1 : 0)) {
    return TTexelReach::Plain;
  }
  // One texel below zero is the last one, unless it is the first as well.
  if (axis.Wrap != TTexelWrap::Repeat || axis.Last == 0 || least < -0.75) {
    return TTexelReach::Anywhere;
  }
  return axis.Mask != kNoTexelMask ? TTexelReach::Plain : TTexelReach::Periodic;
}

// Finds whether kernels read the texels themselves.
TCondition SetUpTexels(const TSampler& sampler, TPrimitive* primitive) {
  const DATASURFACE* const surface = sampler.m_Surface;
  primitive->Sampler = const_cast<TSampler*>(&sampler);
  primitive->Texels = TTexelSource::Sampler;
  ZX_BYTE_TEXEL_CONDITIONS(ZX_RETURN_UNMET)
  const bool linear = sampler.m_FilterMin != GL_NEAREST;
  primitive->Texels = linear ? TTexelSource::Linear : TTexelSource::Nearest;
  primitive->AxisX = TexelAxisOf(sampler.m_WrapS, surface->Width);
  primitive->AxisY = TexelAxisOf(sampler.m_WrapT, surface->Height);
  return TCondition::None;
}

// Finds where the texel coordinates of a primitive lie. The bound is NaN if one of them is, or may
// be between the vertices.
void SetUpReach(TPrimitive* primitive) {
  if (primitive->Perspective && !HasSteadyW(primitive->Vertex)) {
    primitive->TexelBound = std::numeric_limits<double>::quiet_NaN();
    return;
  }
  primitive->Reach = std::min(TexelReachOf(0, primitive->AxisX, primitive),
                              TexelReachOf(1, primitive->AxisY, primitive));
}

bool IsUnit(double c) { return c >= 0.0 && c <= 1.0; }

// Whether all filtered texels lie in 0 to 1, with steady w. With coordinates that are NaN, or too
// great to have a fraction, a mix of texels may be NaN.
bool AreUnitTexels(const TPrimitive& primitive) {
  const TVec4& border = primitive.Sampler->m_BorderColor;
  return HasByteTexels(primitive.Texels) && primitive.TexelBound < kMaxUnitTexCoord &&
         IsUnit(border.x) && IsUnit(border.y) && IsUnit(border.z) && IsUnit(border.w);
}

bool AreInReach(const TVertices& v) {
  const auto sumOf = [&v](double TVec4::*i) {
    return std::fabs(v[0][0].*i) + std::fabs(v[1][0].*i) + std::fabs(v[2][0].*i);
  };
  return sumOf(&TVec4::x) < kMaxWindow && sumOf(&TVec4::y) < kMaxWindow;
}

} // namespace

bool KnowsStencil(const TDrawState& draw) {
  return draw.StencilFunc != TCompare::Unknown && draw.StencilFail != TStencilStep::Unknown &&
         draw.StencilZFail != TStencilStep::Unknown && draw.StencilZPass != TStencilStep::Unknown;
}

bool IsKnownSampler(const TSampler& sampler) {
  TSampler chosen = sampler;
  chosen.UpdateGetValueFunc();
  return sampler.m_GetValue == chosen.m_GetValue;
}

// --- Set-up

TCondition TRenderEngine::SetUpTargets(TDrawState* out) const {
  TDrawState& draw = *out;
  draw.Width = gl.m_Width;
  draw.Height = gl.m_Height;
  draw.Color = {Targets.Color.Data, Targets.Color.RowStride};
  draw.Depth = {Targets.Depth.Data, Targets.Depth.RowStride};
  draw.Stencil = {Targets.Stencil.Data, Targets.Stencil.RowStride};
  SetUpOutput(gl, &draw);
  ZX_RETURN_FIRST_UNMET(ZX_TARGET_CONDITIONS);
}

void SetUpOutput(const TRenderCPU& gl, TDrawState* draw) {
  draw->ColorMask = gl.m_ColorMask;
  draw->Blend = gl.m_ColorMask == kAllChannels
                    ? BlendOf(gl.m_BlendFunc, &TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub)
                    : BlendOf(gl.m_BlendFuncM, &TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub);
}

TCondition TRenderEngine::SetUpDepthStencil(TDrawState* out) const {
  TDrawState& draw = *out;
  draw.DepthTest = gl.m_DepthTest;
  draw.DepthWrite = gl.m_DepthMask;
  draw.DepthFunc = EnumOf<TCompare>(kDepthCompares, gl.m_DepthCompare);
  draw.Offset = gl.m_PolygonOffsetFactor;
  draw.StencilTest = gl.m_StencilTest;
  if (gl.m_StencilTest) {
    draw.StencilFunc = EnumOf<TCompare>(kStencilCompares, gl.m_StencilCompare);
    draw.StencilRef = static_cast<std::uint8_t>(gl.m_StencilRef);
    draw.StencilValueMask = static_cast<std::uint8_t>(gl.m_StencilValueMask);
    draw.StencilWriteMask = static_cast<std::uint8_t>(gl.m_StencilWriteMask);
    draw.StencilFail = StencilStepOf(gl.m_StencilFailOp);
    draw.StencilZFail = StencilStepOf(gl.m_StencilZFailOp);
    draw.StencilZPass = StencilStepOf(gl.m_StencilZPassOp);
  }
  ZX_RETURN_FIRST_UNMET(ZX_TEST_CONDITIONS);
}

// Set-up that holds for all primitives of a draw, all of one kind. Returns the condition that
// leaves them to the reference walker.
TCondition TRenderEngine::SetUpDraw(TPrimitiveKind kind, TSpanJob* job) {
  job->ExactRuns = &ExactRuns;
  ZX_SHADER_CONDITIONS(ZX_RETURN_UNMET)
  TCondition unmet = SetUpTargets(&job->Draw);
  unmet = unmet != TCondition::None ? unmet : SetUpDepthStencil(&job->Draw);
  return unmet != TCondition::None ? unmet : SetUpSources(kind, &job->Primitive);
}

// What pixels are interpolated from and looked up in, apart from the vertices' own values.
TCondition TRenderEngine::SetUpSources(TPrimitiveKind kind, TPrimitive* out) const {
  TPrimitive& primitive = *out;
  primitive.Kind = kind;
  primitive.AddOffset = gl.m_PolygonOffsetFill &&
                        (kind == TPrimitiveKind::Triangle || gl.m_PrimitiveMode == GL_TRIANGLES);
  const TTexUnit& unit = gl.m_TexUnits[0];
  if (!unit.TexEnabled) {
    return TCondition::None;
  }
  const bool replaces = unit.TexEnvMode == GL_REPLACE;
  primitive.Modulate = unit.TexEnvMode == GL_MODULATE;
  primitive.TexSlot = gl.m_VarTexCoord;
  ZX_TEXTURE_CONDITIONS(ZX_RETURN_UNMET)
  Meets(ActiveKernelCounters(), SetUpTexels(unit.Sampler, &primitive));
  return TCondition::None;
}

bool TRenderEngine::IsLive(int slot) const { return slot >= 1 && slot < gl.m_VarCount; }

// Set-up of one primitive, whose vertices have window coordinates and slots as they are before
// perspective scales them.
TCondition TRenderEngine::SetUpPrimitive(TPrimitive* out) {
  TPrimitive& primitive = *out;
  new (static_cast<TPrimitiveValues*>(out)) TPrimitiveValues; // copied, it would wait for stores
  const TVertices& v = primitive.Vertex;
  const auto [color, secondary] = ColorSlotsOf(gl, gl.m_Fragment.FrontFacing);
  const bool textured = primitive.Texels != TTexelSource::None;
  ZX_PRIMITIVE_CONDITIONS(ZX_RETURN_UNMET)

  // With w of 1 throughout, perspective multiplies by 1 and nothing else.
  primitive.Perspective = gl.m_PerspectiveHint != GL_FASTEST &&
                          !(v[0][0].w == 1.0 && v[1][0].w == 1.0 && v[2][0].w == 1.0);
  if (HasByteTexels(primitive.Texels)) {
    SetUpReach(&primitive);
  }
  const bool steady = !primitive.Perspective || HasSteadyW(v);
  if (!primitive.Modulate) {
    primitive.Clamp = !steady || !AreUnitTexels(primitive);
    primitive.UsesVertexColor = false;
    primitive.ChannelBound = 1.0;
    return TCondition::None;
  }
  ZX_VERTEX_COLOR_CONDITIONS(ZX_RETURN_UNMET)
  primitive.ColorSlot = color;
  const TSpanKernels& kernels = *GetSpanKernels();
  if (gl.m_Lighting) {
    constexpr unsigned int kAdded = kAllChannels & ~kAlphaOnly;
    TSlotFacts added;
    kernels.FindFacts(primitive, secondary, &added);
    primitive.ZeroSecondary = IsThroughout(v[0][secondary], 0.0, kAdded, added.Same);
    primitive.SecondarySlot = primitive.ZeroSecondary ? -1 : secondary;
  }
  TSlotFacts facts;
  kernels.FindFacts(primitive, color, &facts);
  const bool inUnit = primitive.SecondarySlot < 0 && facts.Unit == kAllChannels;
  primitive.Clamp = !steady || !inUnit || (textured && !AreUnitTexels(primitive));
  // The secondary colour is not added to alpha.
  const std::uint32_t same =
      facts.Unit & facts.Same & (primitive.SecondarySlot >= 0 ? kAlphaOnly : kAllChannels);
  if (steady && !textured) {
    primitive.ConstMask = same & facts.Sure;
    primitive.TieMask = same & ~facts.Sure;
    primitive.ConstColor = primitive.SecondarySlot >= 0 ? facts.Bytes & 0xFF000000u : facts.Bytes;
  }
  if (Meets(ActiveKernelCounters(), SetUpFloatColors(steady, inUnit, &primitive))) {
    primitive.UsesVertexColor =
        !textured || !inUnit || !IsThroughout(v[0][color], 1.0, kAllChannels, facts.Same);
    const bool tints = HasByteTexels(primitive.Texels) && primitive.UsesVertexColor;
    if (tints && primitive.TexelBytes.Alpha != 0 && (same & facts.Sure & kAlphaOnly) != 0) {
      primitive.TintMask = kAlphaOnly; // of texels that all have an alpha of 255
      primitive.Tint[3] = static_cast<float>(facts.Bytes >> 24) / 255.0f;
    }
    if (tints && primitive.Texels == TTexelSource::Nearest && WidthOf(v) >= kMinTintWidth) {
      SetUpTints(same & ~primitive.TintMask, &KnownTints, &primitive);
    }
  }
  return TCondition::None;
}

} // namespace Zx3D
