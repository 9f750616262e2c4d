#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include <ZxCore3D/render/stages/FragmentStages.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

constexpr float kNanF = std::numeric_limits<float>::quiet_NaN();

// --- Depth

struct TDepthRow {
  unsigned int Enum;
  TRenderCPU::TDepthCompare Function;
  bool Below, Equal, Above, Unordered; ///< the fragment to what is stored
};

const TDepthRow s_DepthRows[] = {
    {512, &Zx3D::Never1f, false, false, false, false},
    {513, &Zx3D::Less1f, true, false, false, false},
    {514, &Zx3D::Equal1f, false, true, false, false},
    {515, &Zx3D::Lequal1f, true, true, false, false},
    {516, &Zx3D::Greater1f, false, false, true, false},
    {517, &Zx3D::NotEqual1f, true, false, true, true},
    {518, &Zx3D::Gequal1f, false, true, true, false},
    {519, &Zx3D::Always1f, true, true, true, true},
};

TEST(DepthCompare, IsThePlainComparison) {
  for (const TDepthRow& row : s_DepthRows) {
    EXPECT_EQ(row.Below, row.Function(0.25f, 0.5f)) << row.Enum;
    EXPECT_EQ(row.Equal, row.Function(0.5f, 0.5f)) << row.Enum;
    EXPECT_EQ(row.Equal, row.Function(-0.0f, 0.0f)) << row.Enum;
    EXPECT_EQ(row.Above, row.Function(0.5f, 0.25f)) << row.Enum;
    EXPECT_EQ(row.Unordered, row.Function(kNanF, 0.5f)) << row.Enum;
    EXPECT_EQ(row.Unordered, row.Function(0.5f, kNanF)) << row.Enum;
    EXPECT_EQ(row.Unordered, row.Function(kNanF, kNanF)) << row.Enum;
  }
}

TEST(DepthFunc, ChoosesTheComparison) {
  TRenderCPU r;
  for (const TDepthRow& row : s_DepthRows) {
    r.DepthFunc(row.Enum);
    EXPECT_EQ(row.Function, r.m_DepthCompare);
    EXPECT_EQ(row.Enum, r.GetDepthFunc());
  }
  EXPECT_EQ(0u, r.GetError());
}

TEST(DepthFunc, StoresWhatItRejects) {
  TRenderCPU r;
  r.DepthFunc(GL_GREATER);
  r.DepthFunc(0);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r.GetError());
  EXPECT_EQ(0u, r.GetDepthFunc());
  EXPECT_EQ(&Zx3D::Greater1f, r.m_DepthCompare);
  r.DepthFunc(0); // the same again is no change
  EXPECT_EQ(0u, r.GetError());
  r.DepthFunc(511);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r.GetError());
  r.DepthFunc(520);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r.GetError());
  EXPECT_EQ(&Zx3D::Greater1f, r.m_DepthCompare);
  // Back to the one in force: stored, and chosen anew.
  r.DepthFunc(GL_GREATER);
  EXPECT_EQ(0u, r.GetError());
  EXPECT_EQ(516u, r.GetDepthFunc());
}

TEST(DepthTest, IsSwitched) {
  TRenderCPU r;
  r.EnableDepthTest(true);
  EXPECT_TRUE(r.m_DepthTest);
  r.EnableDepthTest(false);
  EXPECT_FALSE(r.m_DepthTest);
}

TEST(DepthTest, ComparesTheFragmentWithTheStored) {
  // A quad at depth 0.5 over stored 0.25, 0.5, 0.75 and NaN.
  const float stored[4] = {0.75f, 0.5f, 0.25f, kNanF};
  for (const TDepthRow& row : s_DepthRows) {
    TScene s(4, 1);
    for (int x = 0; x < 4; ++x) {
      s.SetDepth(x, 0, stored[x]);
    }
    s->EnableDepthTest(true);
    s->DepthFunc(row.Enum);
    DrawFullQuad(*s, 0.0);
    const bool passes[4] = {row.Below, row.Equal, row.Above, row.Unordered};
    for (int x = 0; x < 4; ++x) {
      EXPECT_EQ(passes[x] ? 255 : 0, s.Color(x, 0).r) << row.Enum << ", " << x;
      EXPECT_EQ(Bits(passes[x] ? 0.5f : stored[x]), Bits(s.Depth(x, 0))) << row.Enum << ", " << x;
    }
  }
}

// --- Stencil

struct TStencilRow {
  unsigned int Enum;
  TRenderCPU::TStencilCompare Function;
  bool (*Expected)(int ref, int value);
};

const TStencilRow s_StencilRows[] = {
    {512, &Zx3D::NeverM_1u8, [](int, int) { return false; }},
    {513, &Zx3D::LessM_1u8, [](int r, int v) { return r < v; }},
    {514, &Zx3D::EqualM_1u8, [](int r, int v) { return r == v; }},
    {515, &Zx3D::LequalM_1u8, [](int r, int v) { return r <= v; }},
    {516, &Zx3D::GreaterM_1u8, [](int r, int v) { return r > v; }},
    {517, &Zx3D::NotEqualM_1u8, [](int r, int v) { return r != v; }},
    {518, &Zx3D::GequalM_1u8, [](int r, int v) { return r >= v; }},
    {519, &Zx3D::AlwaysM_1u8, [](int, int) { return true; }},
};

constexpr unsigned char kStencilMasks[] = {0, 1, 0x0F, 0x80, 0xAA, 0xF0, 0xFF};

TEST(StencilCompare, HasTheMaskedReferenceOnTheLeft) {
  for (const TStencilRow& row : s_StencilRows) {
    for (const unsigned char mask : kStencilMasks) {
      for (int ref = 0; ref < 256; ++ref) {
        for (int value = 0; value < 256; ++value) {
          ASSERT_EQ(row.Expected(ref & mask, value & mask),
                    row.Function(static_cast<unsigned char>(ref), static_cast<unsigned char>(value),
                                 mask))
              << row.Enum << ", " << ref << ", " << value << ", " << int{mask};
        }
      }
    }
  }
}

TEST(StencilFunc, StoresItsArgumentsAndChooses) {
  TRenderCPU r;
  for (const TStencilRow& row : s_StencilRows) {
    r.StencilFunc(row.Enum, -5, 0x12345678);
    EXPECT_EQ(row.Enum, r.m_StencilFunc);
    EXPECT_EQ(-5, r.m_StencilRef);
    EXPECT_EQ(0x12345678u, r.m_StencilValueMask);
    EXPECT_EQ(row.Function, r.m_StencilCompare);
  }
  EXPECT_EQ(0u, r.GetError());
  r.StencilFunc(GL_LESS, 1, 2);
  for (const unsigned int bad : {0u, 511u, 520u, 0xFFFFFFFFu}) {
    r.StencilFunc(bad, 9, 9);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r.GetError());
    EXPECT_EQ(513u, r.m_StencilFunc);
    EXPECT_EQ(1, r.m_StencilRef);
    EXPECT_EQ(2u, r.m_StencilValueMask);
    EXPECT_EQ(&Zx3D::LessM_1u8, r.m_StencilCompare);
  }
}

struct TOpRow {
  unsigned int Enum;
  TRenderCPU::TStencilFunction Function;
  /// Of the live bits, the reference and the mask; what is outside the mask is kept.
  int (*Expected)(int live, int ref, int mask);
};

const TOpRow s_OpRows[] = {
    {0x1E00, &Zx3D::KeepM_1u8, [](int live, int, int) { return live; }},
    {0, &Zx3D::ZeroM_1u8, [](int, int, int) { return 0; }},
    {0x1E01, &Zx3D::ReplaceM_1u8, [](int, int ref, int mask) { return ref & mask; }},
    {0x1E02, &Zx3D::IncrM_1u8,
     [](int live, int, int mask) { return std::min(live + 1, 255) & mask; }},
    {0x8507, &Zx3D::IncrWrapM_1u8, [](int live, int, int mask) { return (live + 1) & mask; }},
    {0x1E03, &Zx3D::DecrM_1u8,
     [](int live, int, int mask) { return std::max(live - 1, 0) & mask; }},
    {0x8508, &Zx3D::DecrWrapM_1u8,
     [](int live, int, int mask) { return std::max(live - 1, 0) & mask; }},
    {0x150A, &Zx3D::InvertM_1u8, [](int live, int, int mask) { return ~live & mask; }},
};

TEST(StencilOperation, KeepsWhatTheMaskDoesNotHold) {
  for (const TOpRow& row : s_OpRows) {
    for (int mask = 0; mask < 256; ++mask) {
      for (int value = 0; value < 256; ++value) {
        for (const int ref : {0, 1, 0x5A, 0xFF}) {
          auto s = static_cast<unsigned char>(value);
          row.Function(&s, static_cast<unsigned char>(ref), static_cast<unsigned char>(mask));
          ASSERT_EQ(row.Expected(value & mask, ref, mask) | (value & ~mask), int{s})
              << std::hex << row.Enum << ", " << value << ", " << mask << ", " << ref;
        }
      }
    }
  }
}

unsigned char Ran(TRenderCPU::TStencilFunction f, unsigned char s, unsigned char mask) {
  f(&s, 0, mask);
  return s;
}

TEST(StencilOperation, SaturatesAndWrapsInItsOwnWay) {
  EXPECT_EQ(255, Ran(&Zx3D::IncrM_1u8, 255, 0xFF));
  EXPECT_EQ(0, Ran(&Zx3D::IncrWrapM_1u8, 255, 0xFF));
  EXPECT_EQ(0, Ran(&Zx3D::IncrM_1u8, 15, 15)); // the saturation comes before the mask
  EXPECT_EQ(0xF0, Ran(&Zx3D::IncrM_1u8, 0xFF, 15));
  EXPECT_EQ(0, Ran(&Zx3D::DecrM_1u8, 0, 0xFF));
  EXPECT_EQ(0, Ran(&Zx3D::DecrWrapM_1u8, 0, 0xFF)); // stops at 0
}

TEST(StencilOp, StoresEnumsAndFunctions) {
  TRenderCPU r;
  for (std::size_t i = 0; i < 8; ++i) {
    const TOpRow& fail = s_OpRows[i];
    const TOpRow& zfail = s_OpRows[(i + 3) % 8];
    const TOpRow& zpass = s_OpRows[(i + 5) % 8];
    r.StencilOp(fail.Enum, zfail.Enum, zpass.Enum);
    EXPECT_EQ(fail.Enum, r.m_StencilFail);
    EXPECT_EQ(zfail.Enum, r.m_StencilZFail);
    EXPECT_EQ(zpass.Enum, r.m_StencilZPass);
    EXPECT_EQ(fail.Function, r.m_StencilFailOp);
    EXPECT_EQ(zfail.Function, r.m_StencilZFailOp);
    EXPECT_EQ(zpass.Function, r.m_StencilZPassOp);
  }
  EXPECT_EQ(0u, r.GetError());
}

TEST(StencilOp, RejectsAllThreeForOne) {
  TRenderCPU r;
  r.StencilOp(GL_ZERO, GL_INCR, GL_INVERT);
  const unsigned int bad[4][3] = {
      {GL_KEEP, 7, GL_KEEP}, {7, GL_KEEP, GL_KEEP}, {GL_KEEP, GL_KEEP, 7}, {1, 0x1E04, 0x1DFF}};
  for (const auto& ops : bad) {
    r.StencilOp(ops[0], ops[1], ops[2]);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r.GetError());
    EXPECT_EQ(0u, r.m_StencilFail);
    EXPECT_EQ(0x1E02u, r.m_StencilZFail);
    EXPECT_EQ(0x150Au, r.m_StencilZPass);
    EXPECT_EQ(&Zx3D::ZeroM_1u8, r.m_StencilFailOp);
    EXPECT_EQ(&Zx3D::IncrM_1u8, r.m_StencilZFailOp);
    EXPECT_EQ(&Zx3D::InvertM_1u8, r.m_StencilZPassOp);
  }
}

TEST(StencilTest, ReadsLowBytesOnly) {
  TScene s(2, 1);
  s.SetStencil(0, 0, 1);
  s.SetStencil(1, 0, 2);
  s->Enable(GL_STENCIL_TEST);
  s->StencilFunc(GL_EQUAL, 0x101, 0xFF);
  DrawFullQuad(*s);
  EXPECT_EQ(255, s.Color(0, 0).r);
  EXPECT_EQ(0, s.Color(1, 0).r);
  // A mask of 0x100 masks everything away: 0 equals 0.
  s->StencilFunc(GL_EQUAL, 77, 0x100);
  DrawFullQuad(*s);
  EXPECT_EQ(255, s.Color(1, 0).r);
}

TEST(StencilTest, OperationsGetLowBytes) {
  TScene s(1, 1);
  s.SetStencil(0, 0, 0x0F);
  s->Enable(GL_STENCIL_TEST);
  s->StencilFunc(GL_ALWAYS, 0x1A5, 0xFF);
  s->StencilMask(0xFF0);
  s->StencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
  DrawFullQuad(*s);
  EXPECT_EQ(0xAF, s.Stencil(0, 0));
}

TEST(StencilTest, CountsEveryPassWithTheDepthTestOff) {
  TScene s(2, 2);
  s->Enable(GL_STENCIL_TEST);
  s->StencilOp(GL_ZERO, GL_ZERO, GL_INCR);
  for (int i = 1; i <= 3; ++i) {
    DrawFullQuad(*s, 0.5);
    EXPECT_EQ(i, s.Stencil(1, 1));
  }
}

TEST(StencilTest, DepthNeverRunsTheDepthFailOperation) {
  TScene s(2, 2);
  s->Enable(GL_STENCIL_TEST);
  s->EnableDepthTest(true);
  s->DepthFunc(GL_NEVER);
  s->StencilOp(GL_ZERO, GL_INCR, GL_ZERO);
  DrawFullQuad(*s);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(1, s.Stencil(i % 2, i / 2));
  }
  s->DepthFunc(GL_ALWAYS);
  s.Reset(0.0f);
  DrawFullQuad(*s, 1.0);
  EXPECT_EQ(1.0f, s.Depth(0, 0)); // always passes, and writes
}

// --- Blending

TEST(BlendFunc, InstallsForOnePairOnly) {
  const unsigned int factors[] = {0, 1, 0x300, 0x301, 770, 771, 772, 773, 0x306, 0x307, 0x308, 99};
  for (const unsigned int src : factors) {
    for (const unsigned int dst : factors) {
      TRenderCPU r;
      r.BlendFunc(src, dst);
      EXPECT_EQ(src, r.m_BlendSrc);
      EXPECT_EQ(dst, r.m_BlendDst);
      EXPECT_EQ(nullptr, r.m_BlendFunc); // not enabled
      r.EnableBlend(true);
      EXPECT_TRUE(r.m_BlendEnabled);
      const bool blends = src == 770 && dst == 771;
      EXPECT_EQ(blends ? &TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub : nullptr, r.m_BlendFunc);
      EXPECT_EQ(blends ? &TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub : nullptr, r.m_BlendFuncM);
      EXPECT_EQ(0u, r.GetError());
      r.EnableBlend(false);
      EXPECT_EQ(nullptr, r.m_BlendFunc);
      EXPECT_EQ(nullptr, r.m_BlendFuncM);
    }
  }
}

TEST(BlendFunc, FollowsEveryOrderOfSetting) {
  TRenderCPU r;
  r.EnableBlend(true);
  EXPECT_EQ(nullptr, r.m_BlendFunc);
  r.BlendFunc(770, 771);
  EXPECT_EQ(&TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub, r.m_BlendFunc);
  r.BlendFunc(1, 771);
  EXPECT_EQ(nullptr, r.m_BlendFunc);
  EXPECT_EQ(nullptr, r.m_BlendFuncM);
  r.BlendFunc(770, 771);
  r.BlendFunc(770, 1);
  EXPECT_EQ(nullptr, r.m_BlendFunc);

  // The rule by itself, on what the fields hold.
  r.m_BlendSrc = 770;
  r.m_BlendDst = 771;
  r._UpdateBlendFunc();
  EXPECT_EQ(&TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub, r.m_BlendFunc);
  EXPECT_EQ(&TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub, r.m_BlendFuncM);
  r.m_BlendEnabled = false;
  r._UpdateBlendFunc();
  EXPECT_EQ(nullptr, r.m_BlendFunc);
  EXPECT_EQ(nullptr, r.m_BlendFuncM);
  // The same pair as stored is no change, and so looks at nothing.
  r.m_BlendEnabled = true;
  r.BlendFunc(770, 771);
  EXPECT_EQ(nullptr, r.m_BlendFunc);
}

TEST(Blend, IsTruncatedIntegerArithmeticInAllChannels) {
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int value = 0; value < 256; value += 5) {
      for (int old = 0; old < 256; old += 3) {
        const unsigned char src[4] = {static_cast<unsigned char>(value), 255, 0,
                                      static_cast<unsigned char>(alpha)};
        const auto o = static_cast<unsigned char>(old);
        unsigned char dst[4] = {o, o, o, o};
        TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub(src, dst);
        const int rest = old * (255 - alpha);
        ASSERT_EQ((rest + value * alpha) / 255, dst[0]);
        ASSERT_EQ((rest + 255 * alpha) / 255, dst[1]);
        ASSERT_EQ(rest / 255, dst[2]);
        ASSERT_EQ((rest + alpha * alpha) / 255, dst[3]);
      }
    }
  }
}

TEST(Blend, MaskedLeavesTheOthers) {
  for (int mask = 0; mask < 16; ++mask) {
    const unsigned char src[4] = {200, 100, 50, 128};
    unsigned char whole[4] = {10, 20, 30, 40};
    unsigned char dst[4] = {10, 20, 30, 40};
    TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub(src, whole);
    TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub(src, dst, static_cast<unsigned char>(mask));
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ((mask >> i) & 1 ? whole[i] : 10 * (i + 1), dst[i]) << mask;
    }
  }
}

// --- The colour write

/// Draws the one pixel of a frame in a colour that a custom shader leaves as it is.
class ColorWrite : public testing::Test {
protected:
  ColorWrite() : m_Scene(1, 1) {
    m_Scene->_SetFragmentShader(m_Fragment.Get());
    m_Fragment->UseOwnColor = true;
    m_Scene.SetColor(0, 0, {10, 20, 30, 40});
  }
  TPixel Draw(double r, double g, double b, double a) {
    m_Fragment->OwnColor = {r, g, b, a};
    DrawFullQuad(*m_Scene);
    return m_Scene.Color(0, 0);
  }

  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

TEST_F(ColorWrite, RoundsToBytes) {
  EXPECT_EQ((TPixel{255, 255, 255, 128}), Draw(1, 1, 1, 0.5));
  EXPECT_EQ((TPixel{0, 64, 191, 1}), Draw(0, 0.25, 0.75, 1.0 / 255)); // 191.75
  EXPECT_EQ((TPixel{0, 1, 0, 2}), Draw(0.4999 / 255, 0.5001 / 255, -0.0, 1.6 / 255));
}

TEST_F(ColorWrite, ClampsNothing) {
  EXPECT_EQ((TPixel{127, 2, 254, 129}), Draw(1.5, -1.0, 2.0, -0.5));
  EXPECT_EQ((TPixel{0, 0, 0, 0}), Draw(-0.9 / 255, 0, 0, 0)); // -0.4 truncates to 0
}

TEST_F(ColorWrite, HeedsTheColourMask) {
  for (int mask = 0; mask < 16; ++mask) {
    m_Scene.SetColor(0, 0, {10, 20, 30, 40});
    m_Scene->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    const TPixel expected{mask & 1 ? 255 : 10, mask & 2 ? 128 : 20, mask & 4 ? 0 : 30,
                          mask & 8 ? 64 : 40};
    EXPECT_EQ(expected, Draw(1, 0.5, 0, 0.25)) << mask;
  }
}

TEST_F(ColorWrite, BlendsWithinTheMask) {
  m_Scene->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  m_Scene->EnableBlend(true);
  const int old[4] = {10, 20, 30, 40};
  const int src[4] = {255, 128, 0, 64};
  for (int mask = 0; mask < 16; ++mask) {
    m_Scene.SetColor(0, 0, {old[0], old[1], old[2], old[3]});
    m_Scene->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    int expected[4];
    for (int i = 0; i < 4; ++i) {
      expected[i] = (mask >> i) & 1 ? (old[i] * (255 - 64) + src[i] * 64) / 255 : old[i];
    }
    EXPECT_EQ((TPixel{expected[0], expected[1], expected[2], expected[3]}), Draw(1, 0.5, 0, 0.25))
        << mask;
  }
}

// A word's channels do not reach into each other, whatever they are.
TEST_F(ColorWrite, BlendsAWordAsItsBytes) {
  const auto blended = [](std::uint32_t src, std::uint32_t dst, std::uint32_t alpha) {
    return (dst * (255 - alpha) + src * alpha) / 255;
  };
  int wrong = 0;
  for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
    for (std::uint32_t src = 0; src < 256; ++src) {
      for (std::uint32_t dst = 0; dst < 256; ++dst) {
        const std::uint32_t bytes[2][4] = {{src, 255 - src, src ^ 0x5A, alpha},
                                           {dst, dst ^ 0xA5, 255 - dst, dst}};
        std::uint32_t words[2] = {};
        std::uint32_t expected = 0;
        for (std::uint32_t c = 0; c < 4; ++c) {
          words[0] |= bytes[0][c] << 8 * c;
          words[1] |= bytes[1][c] << 8 * c;
          expected |= blended(bytes[0][c], bytes[1][c], alpha) << 8 * c;
        }
        wrong += Zx3D::Blended(words[0], words[1]) != expected ? 1 : 0;
      }
    }
  }
  EXPECT_EQ(0, wrong);
}

TEST_F(ColorWrite, BlendKeepsForAlphaZeroAndReplacesForAlphaOne) {
  m_Scene->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  m_Scene->EnableBlend(true);
  EXPECT_EQ((TPixel{10, 20, 30, 40}), Draw(1, 1, 1, 0));
  EXPECT_EQ((TPixel{255, 128, 0, 255}), Draw(1, 0.5, 0, 1));
}

TEST_F(ColorWrite, OverwritesForAnyOtherPair) {
  m_Scene->EnableBlend(true);
  m_Scene->BlendFunc(GL_ONE, GL_ONE);
  EXPECT_EQ((TPixel{255, 128, 0, 64}), Draw(1, 0.5, 0, 0.25));
  EXPECT_EQ(0u, m_Scene->GetError());
}

TEST(AlphaFunc, OnlyReports) {
  TScene s;
  s->AlphaFunc(GL_NEVER, 1.0f);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  DrawFullQuad(*s);
  EXPECT_EQ(64, s.Painted());
}

} // namespace
