#pragma once

#include <cstdint>

/// The conditions of every fast path, and all thresholds. Where a condition does not hold, the next
/// more general path draws: another kernel, the exact colours, or the reference walker.
///
/// A list is expanded where the names of its tests are in scope: `gl` is the context and what has
/// no prefix its engine's; `draw`, `primitive` and `row` are parts of a job; all others are
/// computed beside the expansion. Tests are made in the order of the list, and the first to fail is
/// counted.

// clang-format off
//   path            condition        test                                                    why

#define ZX_SHADER_CONDITIONS(X) \
  X(Shader,          Standard,        gl.m_FragmentShader != nullptr && \
                                      gl.m_FragmentShader == gl.m_StdFragmentShader,          "a caller's shader may do anything with a fragment") \
  X(Shader,          EarlyDepth,      !gl.m_CalcDepth,                                        "a depth that the shader computes is tested after it") \
  X(Shader,          InstructionSet,  GetSpanKernels() != nullptr,                            "the processor has none of the sets, or a test asked for the reference")

#define ZX_TARGET_CONDITIONS(X) \
  X(Target,          OwnWrite,        gl.m_PixelWrite == nullptr,                             "a caller's function writes the pixels") \
  X(Target,          OwnColor,        gl.m_DrawBuffer == nullptr,                             "a draw buffer has pixels of any kind") \
  X(Target,          Apart,           Targets.Kernels,                                        "targets hold every pixel, are aligned and share no memory") \
  X(Target,          FourBytes,       Targets.Color.PixelStride == 4,                         "a vector of colours is one store") \
  X(Target,          TextureApart,    !TextureIsTarget(),                                     "texels that are drawn over change within a row") \
  X(Target,          KnownBlend,      draw.Blend != TBlend::Unknown,                          "a caller's function blends pixel by pixel")

#define ZX_TEST_CONDITIONS(X) \
  X(Test,            KnownDepth,      !draw.DepthTest || draw.DepthFunc != TCompare::Unknown, "a caller's function compares pixel by pixel") \
  X(Test,            KnownStencil,    !draw.StencilTest || KnowsStencil(draw),                "a caller's function compares or steps pixel by pixel")

#define ZX_PRIMITIVE_CONDITIONS(X) \
  X(Primitive,       InReach,         AreInReach(primitive.Vertex),                           "row set-up neither overflows nor gives a NaN")
#define ZX_TEXTURE_CONDITIONS(X) \
  X(Primitive,       KnownEnv,        primitive.Modulate || replaces,                         "other environments leave the colour of the fragment before") \
  X(Primitive,       LiveTexCoord,    IsLive(primitive.TexSlot),                              "a slot that no vertex shader fills is not interpolated") \
  X(Primitive,       KnownSampler,    IsKnownSampler(unit.Sampler),                           "a caller's function may look at anything")
#define ZX_VERTEX_COLOR_CONDITIONS(X) \
  X(Primitive,       LiveColor,       IsLive(color),                                          "as for the texture coordinate") \
  X(Primitive,       LiveSecondary,   !gl.m_Lighting || IsLive(secondary),                    "as for the texture coordinate")

#define ZX_BYTE_TEXEL_CONDITIONS(X) \
  X(ByteTexels,      Image,           surface != nullptr && \
                                      sampler.m_GetValue != &TSampler::GetValueBorder,        "without an image every texel is the border") \
  X(ByteTexels,      Bytes,           surface->Type == DATA_TYPE_UINT8,                       "texels of other types are no words") \
  X(ByteTexels,      SmallOffsets,    HasSmallOffsets(*surface),                              "offsets of texels are computed in 32 bits") \
  X(ByteTexels,      SizeOfImage,     sampler.m_SurfaceWidth == surface->Width && \
                                      sampler.m_SurfaceHeight == surface->Height,             "the sampler scales by sizes of its own") \
  X(ByteTexels,      HasWord,         SetUpTexelBytes(sampler, &primitive->TexelBytes),       "a texel is one 32-bit load within the image")

#define ZX_FLOAT_COLOR_CONDITIONS(X) \
  X(FloatColors,     Triangle,        primitive.Kind == TPrimitiveKind::Triangle,             "runs of a line are too short to gain") \
  X(FloatColors,     SteadyW,         steady,                                                 "the error of interpolation is bounded by the ratio of 1/w") \
  X(FloatColors,     Varying,         !primitive.HasConstColor(),                             "constant bytes need no computing") \
  X(FloatColors,     Wide,            inUnit || WidthOf(v) >= shortPixels,                    "all of a narrow triangle is short rows") \
  X(FloatColors,     ChannelBound,    (bound = ChannelBoundOf(primitive, inUnit)) > 0.0,      "the proof holds for channels up to kMaxChannel")

#define ZX_FLOAT_ROW_CONDITIONS(X) \
  X(FloatRow,        ChannelBound,    primitive.ChannelBound > 0.0,                           "FloatColors has set it") \
  X(FloatRow,        RatioOfW,        !primitive.UsesVertexColor || ratio <= kMaxFloatRatio,  "the margin of the bytes grows with the ratio") \
  X(FloatRow,        TexelBound,      !HasByteTexels(primitive.Texels) || \
                                      ratio * primitive.TexelBound <= kMaxNearTexels,         "so does the error of coordinates without a division a pixel")

#define ZX_FLOAT_RUN_CONDITIONS(X) \
  X(FloatRun,        Untextured,      kTexels == TTexelSource::None,                          "texel coordinates are computed in double") \
  X(FloatRun,        FloatColors,     primitive.HasConstColor() || row.HasFloats,             "else t is needed in double")

#define ZX_FILL_CONDITIONS(X) \
  X(Fill,            OneColor,        primitive.Texels == TTexelSource::None && \
                                      primitive.HasConstColor(),                              "one value is stored throughout") \
  X(Fill,            Overwrites,      !draw.ReadsColor(),                                     "what was there takes no part") \
  X(Fill,            NoTest,          !draw.DepthTest && !draw.StencilTest,                   "every pixel is written") \
  X(Fill,            OneDepth,        !draw.DepthWrite || row.Delta[2] == 0.0,                "one value is stored throughout")

#define ZX_REJECTION_CONDITIONS(X) \
  X(Rejection,       OneWay,          draw.DepthTest && IsOneWay(draw.DepthFunc),             "what an end fails against, all pixels fail against")

#define ZX_TEXEL_CONDITIONS(X) \
  X(Texels,          Fit,             fits,                                                   "indices are 32-bit integers") \
  X(Texels,          SureFloors,      sureFloors,                                             "near a whole number the exact path may find another texel") \
  X(Texels,          Inside,          !isBordered,                                            "a border's colour is no bytes")

#define ZX_LINE_RUN_CONDITIONS(X) \
  X(LineRun,         AlongRows,       walk.Axis == 0,                                         "a steep line has one or two pixels in a row") \
  X(LineRun,         Long,            walk.Minor * kMinLineRunGroups * kLanes <= walk.Major,  "short runs are drawn faster as scattered pixels")

#define ZX_SHADED_ROW_CONDITIONS(X) \
  X(ShadedRows,      Installed,       gl.m_FragmentShader == RowShader,                       "a host set another shader by hand") \
  X(ShadedRows,      Apart,           Targets.Kernels,                                        "a pixel's tests would see the writes of another") \
  X(ShadedRows,      TextureApart,    !AnyTextureIsTarget(gl, Targets),                       "so would its texels, of any unit") \
  X(ShadedRows,      KnownWrite,      IsKnownWrite(gl.m_PixelWrite),                          "a caller's function may look at anything") \
  X(ShadedRows,      KnownBlend,      draw.Blend != TBlend::Unknown,                          "as KnownWrite") \
  X(ShadedRows,      KnownDepth,      !draw.DepthTest || draw.DepthFunc != TCompare::Unknown, "as KnownWrite") \
  X(ShadedRows,      KnownStencil,    !draw.StencilTest || KnowsStencil(draw),                "as KnownWrite")

#define ZX_PIXEL_ROW_CONDITIONS(X) \
  X(PixelRow,        InstructionSet,  GetSpanKernels() != nullptr,                            "as for shaders") \
  X(PixelRow,        KnownBlend,      draw.Blend != TBlend::Unknown,                          "a caller's function blends pixel by pixel") \
  X(PixelRow,        Apart,           apart,                                                  "pixels four bytes apart are read ahead of those that are written")

// What a rounding test, or another test of values, decides group by group.
#define ZX_DEPTH_RANGE_CONDITION(X) \
  X(Values,          DepthRange,      sameDepth || \
                                      (kMinDepthBound < depthBound && depthBound < kMaxDepthBound), "the margin stays above what a float cannot tell from zero")
#define ZX_DEPTH_ROUNDING_TEST(X) \
  X(Values,          Depth,           depthSure,                                              "a depth may round to another float than in double")
#define ZX_BYTE_ROUNDING_TEST(X) \
  X(Values,          Bytes,           bytesSure,                                              "a channel lies between two bytes")

#define ZX_CONDITIONS(X) \
  ZX_SHADER_CONDITIONS(X) ZX_TARGET_CONDITIONS(X) ZX_TEST_CONDITIONS(X) ZX_PRIMITIVE_CONDITIONS(X) \
  ZX_TEXTURE_CONDITIONS(X) ZX_VERTEX_COLOR_CONDITIONS(X) \
  ZX_BYTE_TEXEL_CONDITIONS(X) ZX_FLOAT_COLOR_CONDITIONS(X) ZX_FLOAT_ROW_CONDITIONS(X) \
  ZX_FLOAT_RUN_CONDITIONS(X) \
  ZX_FILL_CONDITIONS(X) ZX_REJECTION_CONDITIONS(X) ZX_TEXEL_CONDITIONS(X) \
  ZX_LINE_RUN_CONDITIONS(X) ZX_SHADED_ROW_CONDITIONS(X) ZX_PIXEL_ROW_CONDITIONS(X) \
  ZX_DEPTH_RANGE_CONDITION(X) ZX_DEPTH_ROUNDING_TEST(X) \
  ZX_BYTE_ROUNDING_TEST(X)

/// As the body of a function that returns the first condition of a list that does not hold.
#define ZX_RETURN_UNMET(path, name, test, why) if (!(test)) { return TCondition::path##name; }
#define ZX_RETURN_FIRST_UNMET(list) list(ZX_RETURN_UNMET) return TCondition::None

namespace Zx3D {

enum class TCondition : std::uint8_t {
#define ZX_ENUMERATOR(path, name, test, why) path##name,
  ZX_CONDITIONS(ZX_ENUMERATOR)
#undef ZX_ENUMERATOR
  None, ///< all hold
};

inline constexpr int kConditions = static_cast<int>(TCondition::None);
inline constexpr int kFirstValueTest = static_cast<int>(TCondition::ValuesDepthRange); ///< last in the list

// --- Thresholds: of time, measured; of proofs, where the proof stands

inline constexpr double kMinTintWidth = 64.0;     ///< pixels of a triangle whose tints are found
inline constexpr double kTintMargin = 1e-9;       ///< of a tint, relative: SpanSetup.cpp
inline constexpr int kShortPixels = 32;           ///< of a short row: more gain by set-up for long ones
inline constexpr int kJoinedPixels = 14;          ///< of a short row with a texture
inline constexpr double kNearBytes = 262144.0;    ///< from a triangle to the next, which is not asked for ahead
inline constexpr int kMostRowsAsked = 16;         ///< of a triangle that is asked for
inline constexpr int kMinLineRunGroups = 2;       ///< of an average run of a line drawn by runs
inline constexpr int kMinBatch = 4;               ///< shapes that a batch is worth while for
inline constexpr int kMostUnfetched = 4;          ///< one shape in so many drawn: values are fetched together
inline constexpr int kExactRuns = 512;            ///< with a texture that have exact coordinates, after runs in which
inline constexpr int kMostUnsure = 4;             ///< more than one pixel in so many had to have them,
inline constexpr int kMostUnsurePixels = 128;     ///< by so many times that number

inline constexpr double kClearMargin = 1.0 / (1 << 20); ///< of a plane's distance: `LiesBeyond`
inline constexpr double kMinClearSum = 0x1p-900;  ///< magnitudes that neither overflow nor underflow
inline constexpr double kMaxClearSum = 0x1p900;
inline constexpr double kMaxWindow = 1e6;         ///< of a primitive's window coordinates, added up: row set-up is exact enough
inline constexpr double kMaxSteadyRatio = 65536.0; ///< of 1/w: SlotFacts-inl.h, constant bytes; and clamping
inline constexpr double kByteMargin = 1e-6;       ///< of 255 c + 0.5 from an integer: SlotFacts-inl.h
inline constexpr double kMinSteadyW = 1e-15;      ///< of 1/w: neither it nor its reciprocal loses digits, as a float
inline constexpr double kMaxSteadyW = 1e15;       ///< either: SpanFloatColors-inl.h
inline constexpr double kMaxFloatRatio = 64.0;    ///< of 1/w in a row: SpanFloatColors-inl.h
inline constexpr double kMaxChannel = 4.0;        ///< SpanFloatColors-inl.h
inline constexpr double kDepthMargin = 1.0 / (std::int64_t{1} << 49); ///< SpanDepthStencil-inl.h
inline constexpr double kMinDepthBound = 1e-20;
inline constexpr double kMaxDepthBound = 1e20;
inline constexpr double kMaxUnitTexCoord = 1e15;  ///< above, a double has no fraction to mix texels by
inline constexpr double kMaxIndex = 2147483000.0; ///< truncates to 32 bits, with room for a neighbour
inline constexpr double kInRangeRepeat = 1048576.0; ///< texel coordinates near enough to be placed by a floor
inline constexpr double kMaxNearTexels = 16777216.0; ///< times the ratio of 1/w: SpanFloatColors-inl.h
inline constexpr double kMaxTexelError = 1.0 / 8388608.0; ///< of near coordinates, in texels: the same
inline constexpr double kTexelMargin = 1e-9;      ///< of texel coordinates, relative: SpanSetup.cpp
inline constexpr int kMaxTextureSide = 1 << 20;   ///< with kMaxTextureBytes: offsets fit 32 bits
inline constexpr std::int64_t kMaxTextureBytes = std::int64_t{1} << 31;

} // namespace Zx3D
// clang-format on
