// Each condition of every fast path, by a scene that meets all conditions of the path and the same
// scene with one change: the counters name the kernel that draws the first and the one condition
// that the second does not meet.

#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LevelTest.h"
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/RowShaderCPU.h>
#include <ZxCore3D/render/common/KernelCounters.h>

namespace {

using namespace Zx3D;
using zx_test::THeld;
using zx_test::TScene;

constexpr int kWidth = 150; // two runs of 64 pixels and a rest
constexpr int kHeight = 64;
constexpr double kRow = 10;
constexpr unsigned int kDecal = 0x2101; // GL_DECAL, which the context does not take

// A triangle that covers one row of pixels, its apex at the right, or a line.
struct TShape {
  double Left = 0;
  double Right = kWidth - 1; ///< column of the apex
  double W[2] = {1, 1};      ///< at the left and at the right, as all that follow
  double Z[2] = {0.5, 0.5};
  /// One byte more from pixel to pixel, never between two.
  double Colors[2][4] = {{10.2 / 255, 20.3 / 255, 30.1 / 255, 1},
                         {159.2 / 255, 169.3 / 255, 179.1 / 255, 1}};
  double S[2] = {0.21, 0.79};
  double T = 0.53; ///< on no texel's edge
  bool IsLine = false;
  double LineTop = kRow;                 ///< of the line's end
  bool IsDirect = false;                 ///< handed to the rasteriser as it is, past the clipper
  const unsigned char* Pixels = nullptr; ///< drawn instead of a shape

  void SetColors(std::initializer_list<double> left, std::initializer_list<double> right) {
    std::copy(left.begin(), left.end(), Colors[0]);
    std::copy(right.begin(), right.end(), Colors[1]);
  }

  void Vertex(TRenderCPU& gl, int end, double y) const {
    const double w = W[end];
    gl.Color4dv(Colors[end]);
    gl.TexCoord2d(S[end], T);
    const double x = end == 0 ? Left : Right;
    gl.Vertex3d(zx_test::Clip(x, kWidth) * w, zx_test::Clip(y, kHeight) * w,
                W[0] == 1 && W[1] == 1 ? Z[end] : w);
  }

  void Draw(TRenderCPU& gl) const {
    if (Pixels != nullptr) {
      gl.DrawPixels(kWidth / 2, 1, GL_RGBA, GL_UNSIGNED_BYTE, Pixels);
      return;
    }
    if (W[0] != 1 || W[1] != 1) { // takes w from z, and leaves 0 for z
      constexpr double kDepthIsW[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
      gl.MatrixMode(GL_PROJECTION);
      gl.LoadMatrixd(kDepthIsW);
    }
    gl.Begin(IsLine ? GL_LINES : GL_TRIANGLES);
    if (IsDirect) {
      TRenderCPU::VAR_DATA v[3] = {};
      const double at[3][2] = {{Left, kRow - 0.4}, {Right, kRow}, {Left, kRow + 0.4}};
      for (int i = 0; i < 3; ++i) {
        v[i].Slots[0] = {zx_test::Clip(at[i][0], kWidth), zx_test::Clip(at[i][1], kHeight),
                         Z[i % 2], 1};
        std::memcpy(&v[i].Slots[1], Colors[i % 2], sizeof Colors[0]);
      }
      gl.RasterizeTriangle(v);
    } else if (IsLine) {
      Vertex(gl, 0, kRow);
      Vertex(gl, 1, LineTop);
    } else {
      Vertex(gl, 0, kRow - 0.4);
      Vertex(gl, 1, kRow);
      Vertex(gl, 0, kRow + 0.4);
    }
    gl.End();
  }
};

using TSetUp = std::function<void(TRenderCPU&, TShape&)>;

struct TCase {
  TCondition Unmet;
  TKernel Kernel; ///< that draws the scene
  TSetUp Scene;
  TSetUp Change;
  bool DrawsStill = false; ///< the kernel goes on, with fallbacks for some of its pixels
};

// Passes a colour and, as the secondary colour, the texture coordinate.
class TSecondaryShader : public zx_test::TPassVertexShader {
public:
  explicit TSecondaryShader(int secondary) : TPassVertexShader(3), m_Secondary(secondary) {}
  void Begin() override {
    TPassVertexShader::Begin();
    m_Render->m_VarTexCoord = -1;
    m_Render->m_VarSecondary = m_Secondary;
  }

private:
  int m_Secondary;
};

template <class TShader, class... TArgs> void UseVertexShader(TRenderCPU& gl, TArgs... args) {
  const THeld<TShader> shader(args...);
  const THeld<TProgramCPU> program;
  program->SetShaderV(shader.Get());
  gl.SetProgram(program.Get());
}

void Nothing(TRenderCPU&, TShape&) {}

void Texture(TRenderCPU& gl, TShape&) {
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  std::vector<unsigned char> texels(8 * 8 * 4);
  for (std::size_t i = 0; i < texels.size(); ++i) {
    texels[i] = static_cast<unsigned char>(37 * i);
  }
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 8, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  gl.TexFilter2D(GL_NEAREST, GL_NEAREST);
  gl.TexWrap2D(GL_REPEAT, GL_REPEAT);
  gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  gl.Enable(GL_TEXTURE_2D);
}

void LinearTexture(TRenderCPU& gl, TShape& shape) {
  Texture(gl, shape);
  gl.TexFilter2D(GL_LINEAR, GL_LINEAR);
}

void DepthTest(TRenderCPU& gl, TShape&) {
  gl.Enable(GL_DEPTH_TEST);
  gl.DepthFunc(GL_LESS);
  gl.DepthMask(1);
}

void StencilTest(TRenderCPU& gl, TShape&) {
  gl.Enable(GL_STENCIL_TEST);
  gl.StencilFunc(GL_ALWAYS, 0, 255);
}

void Blend(TRenderCPU& gl, TShape&) {
  gl.Enable(GL_BLEND);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void Short(TRenderCPU& gl, TShape& shape) {
  shape.Right = 6;
  gl.Disable(GL_DEPTH_TEST);
  gl.DepthMask(0);
}

void Perspective(TRenderCPU&, TShape& shape) {
  shape.W[0] = 2;
  shape.W[1] = 3;
}

void OneColor(TRenderCPU& gl, TShape& shape) {
  shape.SetColors({0.1, 0.2, 0.3, 1}, {0.1, 0.2, 0.3, 1});
  gl.DepthMask(0);
}

void Hidden(TRenderCPU& gl, TShape& shape) {
  DepthTest(gl, shape);
  gl.ClearDepth(0.1);
  gl.Clear(GL_DEPTH_BUFFER_BIT);
}

void Line(TRenderCPU&, TShape& shape) { shape.IsLine = true; }

void BlendedPixels(TRenderCPU& gl, TShape& shape) {
  static constexpr unsigned char kPixels[4 * kWidth] = {1, 2, 3, 4};
  Blend(gl, shape);
  shape.Pixels = kPixels;
}

// Computes rows, as does its base fragment by fragment.
class TRowShader : public TRowFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    f->Color = (*v)[1];
    return true;
  }
  void ExecuteRow(const FS_ROW& row) override {
    for (int c = 0; c < 4; ++c) {
      std::copy_n(row.Slots[1][c], row.Count, row.Color[c]);
    }
  }
};

void ShadedRow(TRenderCPU& gl, TShape&) {
  const THeld<TRowShader> shader;
  gl._SetFragmentShader(shader.Get());
}

void BadBlend(const void*, void*) {}
void OwnWrite(void*, const vec_t_<double, 4>&) {}
void OtherStencilStep(unsigned char*, unsigned char, unsigned char) {}

class KernelConditions : public testing::Test {
protected:
  ~KernelConditions() override {
    StopKernelCounters();
    LimitSpanLevel(nullptr);
  }

  // The best level that reads and writes by masks; null if the processor has none.
  static const char* MaskedLevel() {
    for (const char* const level : {"AVX3", "AVX2"}) {
      if (LimitSpanLevel(level)) {
        return level;
      }
    }
    return nullptr;
  }

  static TKernelCounters Count(const TCase& c, bool changed) {
    LimitSpanLevel(nullptr);
    LimitSpanLevel(MaskedLevel());
    const TScene scene(kWidth, kHeight);
    scene->Clear(true, true, true);
    TShape shape;
    scene->DepthMask(0);
    c.Scene(*scene, shape);
    if (changed) {
      c.Change(*scene, shape);
    }
    StartKernelCounters();
    shape.Draw(*scene);
    StopKernelCounters();
    scene->SetProgram(nullptr);
    scene->_SetFragmentShader(nullptr);
    scene->SetDrawBuffer(nullptr);
    return KernelCounters();
  }

  static std::string NameOf(TCondition condition) {
    const TConditionName& name = kConditionNames[static_cast<int>(condition)];
    return std::string(name.Path) + "." + name.Condition;
  }

  // The conditions that were not met, of the path that `of` belongs to.
  static std::set<std::string> UnmetOfPath(const TKernelCounters& counters, TCondition of) {
    std::set<std::string> names;
    for (int i = 0; i < kConditions; ++i) {
      const auto condition = static_cast<TCondition>(i);
      if (counters.Unmet(condition) != 0 &&
          std::strcmp(kConditionNames[i].Path, kConditionNames[static_cast<int>(of)].Path) == 0) {
        names.insert(NameOf(condition));
      }
    }
    return names;
  }

  std::vector<TCase> Cases();
  void AddReferenceCases(std::vector<TCase>* cases);
  void AddColorCases(std::vector<TCase>* cases);
  void AddRowCases(std::vector<TCase>* cases);
  void AddShadedRowCases(std::vector<TCase>* cases);

  THeld<TRowShader> m_ByHand;
  TDataSurface m_Surface; ///< of a change, longer-lived than the context
};

// What only the reference walker draws.
void KernelConditions::AddReferenceCases(std::vector<TCase>* cases) {
  using C = TCondition;
  const auto add = [cases](C unmet, const TSetUp& scene, const TSetUp& change,
                           TKernel kernel = TKernel::FloatRuns) {
    cases->push_back({unmet, kernel, scene, change});
  };
  add(C::ShaderStandard, Nothing, [](TRenderCPU& gl, TShape&) {
    const THeld<zx_test::TSeeingFragmentShader> shader;
    const THeld<TProgramCPU> program;
    program->SetShaderF(shader.Get());
    gl.SetProgram(program.Get());
  });
  add(C::ShaderEarlyDepth, Nothing, [](TRenderCPU& gl, TShape&) { gl.m_CalcDepth = true; });
  add(C::ShaderInstructionSet, Nothing,
      [](TRenderCPU&, TShape&) { ASSERT_TRUE(LimitSpanLevel("reference")); });
  add(C::TargetOwnWrite, Nothing, [this](TRenderCPU& gl, TShape&) {
    ASSERT_TRUE(m_Surface.Create(kWidth, kHeight, DATA_FORMAT_RGBA, DATA_TYPE_FLOAT, 4));
    gl.SetDrawBuffer(&m_Surface);
  });
  add(C::TargetOwnColor, Nothing, [this](TRenderCPU& gl, TShape&) {
    ASSERT_TRUE(m_Surface.Create(kWidth, kHeight, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
    gl.m_DrawBuffer = &m_Surface;
  });
  add(C::TargetApart, Nothing, [](TRenderCPU& gl, TShape&) {
    TDataSurface low;
    ASSERT_TRUE(low.Create(kWidth, kHeight - 1, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1));
    gl.m_DepthSurface->Swap(low);
  });
  add(C::TargetFourBytes, Nothing, [](TRenderCPU& gl, TShape&) { // every second of twice as many
    TDataSurface wide;
    ASSERT_TRUE(wide.Create(2 * kWidth, kHeight, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
    wide.Width = kWidth;
    wide.PixelStride = 8;
    gl.m_ColorSurface->Swap(wide);
  });
  add(
      C::TargetTextureApart, Texture,
      [](TRenderCPU& gl, TShape&) { gl.m_TexUnits[0].Sampler.SetSurface(gl.GetColorSurface()); },
      TKernel::TextureRuns);
  add(C::TargetKnownBlend, Blend, [](TRenderCPU& gl, TShape&) { gl.m_BlendFunc = BadBlend; });
  add(C::TestKnownDepth, DepthTest, [](TRenderCPU& gl, TShape&) {
    gl.m_DepthCompare = [](float fragment, float stored) { return fragment < stored; };
  });
  add(C::TestKnownStencil, StencilTest,
      [](TRenderCPU& gl, TShape&) { gl.m_StencilZPassOp = OtherStencilStep; });
  add(
      C::PrimitiveInReach, [](TRenderCPU&, TShape& shape) { shape.IsDirect = true; },
      [](TRenderCPU&, TShape& shape) { shape.Left = -1e6 - 1; });
  add(
      C::PrimitiveKnownEnv, Texture,
      [](TRenderCPU& gl, TShape&) { gl.m_TexUnits[0].TexEnvMode = kDecal; }, TKernel::TextureRuns);
  add(
      C::PrimitiveLiveTexCoord,
      [](TRenderCPU& gl, TShape& shape) {
        Texture(gl, shape);
        UseVertexShader<zx_test::TPassVertexShader>(gl, 3);
      },
      [](TRenderCPU& gl, TShape&) { UseVertexShader<zx_test::TPassVertexShader>(gl, 2); },
      TKernel::TextureRuns);
  add(
      C::PrimitiveKnownSampler, Texture,
      [](TRenderCPU& gl, TShape&) {
        gl.m_TexUnits[0].Sampler.m_GetValue = &TRenderCPU::TTexSampler::GetValueBorder;
      },
      TKernel::TextureRuns);
  add(
      C::PrimitiveLiveColor,
      [](TRenderCPU& gl, TShape&) { UseVertexShader<zx_test::TPassVertexShader>(gl, 2); },
      [](TRenderCPU& gl, TShape&) { UseVertexShader<zx_test::TPassVertexShader>(gl, 1); });
  add(
      C::PrimitiveLiveSecondary,
      [](TRenderCPU& gl, TShape&) {
        gl.Enable(GL_LIGHTING);
        UseVertexShader<TSecondaryShader>(gl, 2);
      },
      [](TRenderCPU& gl, TShape&) { UseVertexShader<TSecondaryShader>(gl, 3); });
}

// Texels and colours in float.
void KernelConditions::AddColorCases(std::vector<TCase>* cases) {
  using C = TCondition;
  const auto add = [cases](C unmet, TKernel kernel, const TSetUp& scene, const TSetUp& change,
                           bool drawsStill = false) {
    cases->push_back({unmet, kernel, scene, change, drawsStill});
  };
  constexpr TKernel kTexture = TKernel::TextureRuns;
  constexpr TKernel kFloat = TKernel::FloatRuns;
  const TSetUp tooBright = [](TRenderCPU&, TShape& shape) { shape.Colors[1][0] = 5; };
  add(C::ByteTexelsImage, kTexture, Texture,
      [](TRenderCPU& gl, TShape&) { gl.m_TexUnits[0].Sampler.SetSurface(nullptr); });
  add(C::ByteTexelsBytes, kTexture, Texture, [this](TRenderCPU& gl, TShape&) {
    ASSERT_TRUE(m_Surface.Create(8, 8, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3));
    gl.m_TexUnits[0].Sampler.SetSurface(&m_Surface);
  });
  add(C::ByteTexelsHasWord, kTexture, Texture, [this](TRenderCPU& gl, TShape&) {
    ASSERT_TRUE(m_Surface.Create(1, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
    gl.m_TexUnits[0].Sampler.SetSurface(&m_Surface);
    gl.m_TexUnits[0].Sampler.SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
  });
  add(C::ByteTexelsSmallOffsets, kTexture, Texture, [this](TRenderCPU& gl, TShape&) {
    ASSERT_TRUE(m_Surface.Create(1 << 20, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
    gl.m_TexUnits[0].Sampler.SetSurface(&m_Surface);
  });
  add(C::ByteTexelsSizeOfImage, kTexture, Texture,
      [](TRenderCPU& gl, TShape&) { gl.m_TexUnits[0].Sampler.m_SurfaceWidth = 7; });

  add(C::FloatColorsTriangle, kFloat, Nothing, Line);
  add(C::FloatColorsSteadyW, kFloat, Perspective,
      [](TRenderCPU&, TShape& shape) { shape.W[1] = 2 * 65537.0; });
  add(C::FloatColorsSteadyW, kFloat, Perspective, [](TRenderCPU&, TShape& shape) {
    shape.W[0] = 2e16;
    shape.W[1] = 3e16;
  });
  add(C::FloatColorsVarying, kFloat, Nothing, OneColor);
  add(
      C::FloatColorsWide, kFloat, [](TRenderCPU&, TShape& shape) { shape.Colors[1][0] = 2; },
      [](TRenderCPU&, TShape& shape) { shape.Right = 7; });
  add(C::FloatColorsChannelBound, kFloat, Nothing, tooBright);

  add(C::FloatRowChannelBound, kFloat, Nothing, tooBright);
  add(C::FloatRowRatioOfW, kFloat, Perspective,
      [](TRenderCPU&, TShape& shape) { shape.W[1] = 200; });
  add(C::FloatRowTexelBound, kTexture, Texture,
      [](TRenderCPU&, TShape& shape) { shape.S[1] = 1e7; });

  add(C::FloatRunUntextured, kFloat, Nothing, Texture);
  add(C::FloatRunFloatColors, kFloat, Nothing, tooBright);

  add(
      C::TexelsFit, TKernel::ExactRuns,
      [](TRenderCPU& gl, TShape& shape) {
        Texture(gl, shape);
        shape.S[1] = 1e7;
      },
      [](TRenderCPU&, TShape& shape) { shape.S[1] = 1e12; }, true);
  add(
      C::TexelsSureFloors, kTexture, Texture, [](TRenderCPU&, TShape& shape) { shape.T = 0.5; },
      true);
  add(
      C::TexelsInside, kTexture, LinearTexture,
      [](TRenderCPU& gl, TShape& shape) {
        gl.TexWrap2D(GL_CLAMP, GL_REPEAT);
        shape.S[0] = -1.5;
      },
      true);

  const TSetUp writesDepth = [](TRenderCPU& gl, TShape&) { gl.DepthMask(1); };
  add(
      C::ValuesDepthRange, kFloat,
      [](TRenderCPU& gl, TShape& shape) {
        gl.DepthMask(1);
        shape.IsDirect = true;
      },
      [](TRenderCPU&, TShape& shape) { shape.Z[1] = 1e21; }, true);
  add(
      C::ValuesDepth, kFloat, writesDepth,
      [](TRenderCPU&, TShape& shape) { // about between two floats
        shape.Z[0] = 2 * (0.5 + 1000.5 / (1 << 24)) - 1;
        shape.Z[1] = shape.Z[0] + 1e-15;
      },
      true);
  add(
      C::ValuesBytes, kFloat, Perspective,
      [](TRenderCPU&, TShape& shape) { // between two bytes
        shape.Colors[0][0] = 100.5 / 255;
        shape.Colors[1][0] = 100.5 / 255 + 1e-9;
      },
      true);
}

// Rows and runs of certain kinds.
void KernelConditions::AddRowCases(std::vector<TCase>* cases) {
  using C = TCondition;
  const auto add = [cases](C unmet, TKernel kernel, const TSetUp& scene, const TSetUp& change) {
    cases->push_back({unmet, kernel, scene, change});
  };

  const TSetUp fillWithDepth = [](TRenderCPU& gl, TShape& shape) {
    OneColor(gl, shape);
    gl.DepthMask(1);
  };
  add(C::FillOneColor, TKernel::Fill, OneColor,
      [](TRenderCPU&, TShape& shape) { shape.Colors[1][0] = 0.9; });
  add(C::FillOverwrites, TKernel::Fill, OneColor, Blend);
  add(C::FillNoTest, TKernel::Fill, OneColor, StencilTest);
  add(C::FillOneDepth, TKernel::Fill, fillWithDepth,
      [](TRenderCPU&, TShape& shape) { shape.Z[1] = 0.75; });

  add(C::RejectionOneWay, TKernel::Rejection, Hidden,
      [](TRenderCPU& gl, TShape&) { gl.DepthFunc(GL_EQUAL); });

  const TSetUp testedLine = [](TRenderCPU& gl, TShape& shape) {
    Line(gl, shape);
    DepthTest(gl, shape);
  };
  add(C::LineRunAlongRows, TKernel::LineRuns, testedLine, [](TRenderCPU&, TShape& shape) {
    shape.Right = shape.Left;
    shape.LineTop = kHeight - 1;
  });
  add(C::LineRunLong, TKernel::LineRuns, testedLine, [](TRenderCPU&, TShape& shape) {
    shape.Right = 50;
    shape.LineTop = kRow + 50;
  });

  add(C::PixelRowInstructionSet, TKernel::PixelRows, BlendedPixels,
      [](TRenderCPU&, TShape&) { ASSERT_TRUE(LimitSpanLevel("reference")); });
  add(C::PixelRowKnownBlend, TKernel::PixelRows, BlendedPixels,
      [](TRenderCPU& gl, TShape&) { gl.m_BlendFunc = BadBlend; });
  add(C::PixelRowApart, TKernel::PixelRows, BlendedPixels,
      [](TRenderCPU& gl, TShape& shape) { shape.Pixels = gl.GetColorSurface()->Data + 4; });
}

// Rows that a caller's shader could compute at once.
void KernelConditions::AddShadedRowCases(std::vector<TCase>* cases) {
  using C = TCondition;
  const auto add = [cases](C unmet, const TSetUp& change, const TSetUp& more = Nothing) {
    const TSetUp scene = [more](TRenderCPU& gl, TShape& shape) {
      ShadedRow(gl, shape);
      more(gl, shape);
    };
    cases->push_back({unmet, TKernel::ShadedRows, scene, change});
  };
  add(C::ShadedRowsInstalled, [this](TRenderCPU& gl, TShape&) {
    gl.m_FragmentShader->Release(); // past the context's own functions
    m_ByHand->AddRef();
    gl.m_FragmentShader = m_ByHand.Get();
  });
  add(C::ShadedRowsApart, [](TRenderCPU& gl, TShape&) {
    TDataSurface low;
    ASSERT_TRUE(low.Create(kWidth, kHeight - 1, DATA_FORMAT_STENCIL, DATA_TYPE_UINT8, 1));
    gl.m_StencilSurface->Swap(low);
  });
  add(C::ShadedRowsTextureApart,
      [](TRenderCPU& gl, TShape&) { gl.m_TexUnits[5].Sampler.SetSurface(gl.GetColorSurface()); });
  add(C::ShadedRowsKnownWrite, [](TRenderCPU& gl, TShape&) { gl.m_PixelWrite = OwnWrite; });
  add(
      C::ShadedRowsKnownBlend, [](TRenderCPU& gl, TShape&) { gl.m_BlendFunc = BadBlend; }, Blend);
  add(
      C::ShadedRowsKnownDepth,
      [](TRenderCPU& gl, TShape&) {
        gl.m_DepthCompare = [](float fragment, float stored) { return fragment < stored; };
      },
      DepthTest);
  add(
      C::ShadedRowsKnownStencil,
      [](TRenderCPU& gl, TShape&) { gl.m_StencilZPassOp = OtherStencilStep; }, StencilTest);
}

std::vector<TCase> KernelConditions::Cases() {
  std::vector<TCase> cases;
  AddReferenceCases(&cases);
  AddColorCases(&cases);
  AddRowCases(&cases);
  AddShadedRowCases(&cases);
  return cases;
}

TEST_F(KernelConditions, EachIsMissedByAScene) {
  if (MaskedLevel() == nullptr) {
    GTEST_SKIP() << "this processor has no level with all kernels";
  }
  std::set<TCondition> seen;
  for (const TCase& c : Cases()) {
    SCOPED_TRACE(NameOf(c.Unmet));
    seen.insert(c.Unmet);
    const TKernelCounters met = Count(c, false);
    EXPECT_EQ(std::set<std::string>(), UnmetOfPath(met, c.Unmet));
    EXPECT_LT(0u, met.Of(c.Kernel).Pixels);
    EXPECT_EQ(0u, met.Of(TKernel::Reference).Pixels);
    const TKernelCounters unmet = Count(c, true);
    EXPECT_EQ(std::set<std::string>{NameOf(c.Unmet)}, UnmetOfPath(unmet, c.Unmet));
    EXPECT_EQ(c.DrawsStill, unmet.Of(c.Kernel).Pixels != 0);
  }
  EXPECT_EQ(static_cast<std::size_t>(kConditions), seen.size()) << "a condition has no scene";
}

// What falls to the reference walker, and nothing else does.
TEST_F(KernelConditions, OnlySomeLeadToTheReferenceWalker) {
  if (MaskedLevel() == nullptr) {
    GTEST_SKIP() << "this processor has no level with all kernels";
  }
  const std::set<std::string> paths = {"Shader", "Target", "Test", "Primitive", "ShadedRows"};
  for (const TCase& c : Cases()) {
    SCOPED_TRACE(NameOf(c.Unmet));
    const bool expected = paths.count(kConditionNames[static_cast<int>(c.Unmet)].Path) != 0;
    EXPECT_EQ(expected, Count(c, true).Of(TKernel::Reference).Pixels != 0);
  }
}

// Short rows have one kernel for every state, and one with a texture.
TEST_F(KernelConditions, ShortRowsOfEveryStateShareAKernel) {
  if (MaskedLevel() == nullptr) {
    GTEST_SKIP() << "this processor has no level with all kernels";
  }
  const TSetUp offset = [](TRenderCPU& gl, TShape&) { gl.EnablePolygonOffsetFill(true); };
  const TSetUp mask = [](TRenderCPU& gl, TShape&) { gl.ColorMask(1, 0, 1, 1); };
  const TSetUp greater = [](TRenderCPU& gl, TShape& shape) {
    DepthTest(gl, shape);
    gl.DepthFunc(GL_GREATER);
  };
  const auto expect = [](TKernel kernel, const TSetUp& change) {
    const TKernelCounters counters = Count({TCondition::None, kernel, Short, change}, true);
    for (int i = 0; i < kKernels; ++i) {
      EXPECT_EQ(static_cast<TKernel>(i) == kernel, counters.Of(static_cast<TKernel>(i)).Rows != 0)
          << kKernelNames[i];
    }
  };
  for (const TSetUp& state : {TSetUp(Nothing), TSetUp(DepthTest), TSetUp(StencilTest),
                              TSetUp(Blend), TSetUp(Perspective), offset, mask, greater}) {
    expect(TKernel::ShortRows, state);
  }
  expect(TKernel::JoinedRows, Texture);
}

// The limit is of the magnitudes added up, along either axis, and not itself within reach. Numbers
// of a square whose side is a power of two come to the window as they are.
TEST_F(KernelConditions, CornersAreInReachBelowASum) {
  if (MaskedLevel() == nullptr) {
    GTEST_SKIP() << "this processor has no level with all kernels";
  }
  constexpr int kSide = 64;
  const auto isInReach = [](double far, std::size_t axis) {
    const TScene scene(kSide, kSide);
    TRenderCPU::VAR_DATA v[3] = {};
    for (std::size_t i = 0; i < 3; ++i) {
      const double along = i == 1 ? kSide : far;
      const double across = i == 2 ? kSide : 0;
      v[i].Slots[0] = {0, 0, 0.5, 1};
      v[i].Slots[0][axis] = zx_test::Clip(along, kSide);
      v[i].Slots[0][1 - axis] = zx_test::Clip(across, kSide);
    }
    StartKernelCounters();
    scene->Begin(GL_TRIANGLES);
    scene->RasterizeTriangle(v);
    scene->End();
    StopKernelCounters();
    const std::uint64_t missed = KernelCounters().Unmet(TCondition::PrimitiveInReach);
    const std::uint64_t walked = KernelCounters().Of(TKernel::Reference).Pixels;
    EXPECT_EQ(missed != 0, walked != 0);
    return missed == 0;
  };
  constexpr double kFar = (1e6 - kSide) / 2; // two corners there, one at the side's end
  for (const std::size_t axis : {0u, 1u}) {
    EXPECT_FALSE(isInReach(-kFar, axis));
    EXPECT_TRUE(isInReach(-kFar + 1.0 / 64, axis));
  }
}

TEST_F(KernelConditions, CountsPrimitivesRowsAndPixels) {
  if (MaskedLevel() == nullptr) {
    GTEST_SKIP() << "this processor has no level with all kernels";
  }
  const TScene scene(kWidth, kHeight);
  StartKernelCounters();
  zx_test::DrawFullQuad(*scene); // two triangles, each with a part of every row but one
  StopKernelCounters();
  const TKernelCounters::TCounts fill = KernelCounters().Of(TKernel::Fill);
  const TKernelCounters::TCounts narrow = KernelCounters().Of(TKernel::ShortRows);
  EXPECT_EQ(2u, fill.Primitives);
  EXPECT_EQ(static_cast<std::uint64_t>(kWidth) * kHeight, fill.Pixels + narrow.Pixels);
  EXPECT_LE(2u * kHeight - 2, fill.Rows + narrow.Rows);
  EXPECT_GE(2u * kHeight, fill.Rows + narrow.Rows);

  zx_test::DrawFullQuad(*scene); // nobody counts
  EXPECT_EQ(2u, KernelCounters().Of(TKernel::Fill).Primitives);
  StartKernelCounters();
  EXPECT_EQ(0u, KernelCounters().Of(TKernel::Fill).Primitives);
}

TEST_F(KernelConditions, PrintsOneLineEach) {
  TKernelCounters counters;
  counters.StartPrimitive();
  counters.StartRow();
  counters.Add(TKernel::Fill, 7);
  counters.Add(TKernel::Fill, 3);
  counters.StartRow();
  counters.Add(TKernel::Fill, 1);
  counters.AddUnmet(TCondition::FillNoTest);
  counters.AddUnmet(TCondition::ValuesBytes, 8);
  std::FILE* const file = std::tmpfile();
  ASSERT_NE(nullptr, file);
  PrintKernelCounters(counters, file);
  PrintUnmetConditions(counters, file);
  std::rewind(file);
  char text[200] = {};
  text[std::fread(text, 1, sizeof text - 1, file)] = 0;
  std::fclose(file);
  EXPECT_STREQ("kernel Fill 1 2 11\nfallback Bytes 8\nunmet Fill.NoTest 1\n", text);
}

} // namespace
