#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/FragmentOps.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

// --- Clear values

void ExpectClearColor(const TRenderCPU& r, int red, int green, int blue, int alpha) {
  EXPECT_EQ(red, r.m_ClearColor[0]);
  EXPECT_EQ(green, r.m_ClearColor[1]);
  EXPECT_EQ(blue, r.m_ClearColor[2]);
  EXPECT_EQ(alpha, r.m_ClearColor[3]);
}

TEST(ClearColor, RoundsEachChannelToAByte) {
  TRenderCPU r;
  r.ClearColor(0.0f, 1.0f, 0.5f, 0.25f); // 0.25 * 255 + 0.5 = 64.25
  ExpectClearColor(r, 0, 255, 128, 64);
  r.ClearColor(vec_t_<double, 4>{0.25, 0.5, 1.0, 0.0});
  ExpectClearColor(r, 64, 128, 255, 0);
  r.ClearColor(vec_t_<float, 4>{0.5f, 0.0f, 0.25f, 1.0f});
  ExpectClearColor(r, 128, 0, 64, 255);
}

TEST(ClearColor, IsNotClamped) {
  TRenderCPU r;
  // 1.5 * 255 + 0.5 = 383 = 256 + 127; -1 * 255 + 0.5 truncates to -254 = 2 - 256;
  // 2 * 255 + 0.5 truncates to 510 = 256 + 254; -0.5 * 255 + 0.5 = -127 = 129 - 256.
  r.ClearColor(1.5f, -1.0f, 2.0f, -0.5f);
  ExpectClearColor(r, 127, 2, 254, 129);
  r.ClearColor(vec_t_<double, 4>{1.5, -1.0, 2.0, -0.5});
  ExpectClearColor(r, 127, 2, 254, 129);
  r.ClearColor(vec_t_<float, 4>{1.5f, -1.0f, 2.0f, -0.5f});
  ExpectClearColor(r, 127, 2, 254, 129);
}

TEST(ClearColor, OfFourFloatsComputesInDoubleAndOfAVectorInFloat) {
  // The first float whose product with 255 lies so close below a half that the float sum rounds
  // up to the next whole number, while the double sum stays below it.
  float c = 0.0f;
  for (int byte = 128; byte < 255 && c == 0.0f; ++byte) {
    float candidate = static_cast<float>((byte - 0.5) / 255.0);
    for (int step = 0; step < 4; ++step) {
      const float product = candidate * 255.0f;
      const float sum = product + 0.5f;
      const double exact = static_cast<double>(candidate) * 255.0 + 0.5;
      if (sum >= static_cast<float>(byte) && exact < byte && exact > byte - 0.01) {
        c = candidate;
        break;
      }
      candidate = std::nextafter(candidate, 0.0f);
    }
  }
  ASSERT_NE(0.0f, c) << "no float tells the two apart";
  const int high = static_cast<int>(c * 255.0f + 0.5f);
  TRenderCPU r;
  r.ClearColor(c, c, c, c);
  ExpectClearColor(r, high - 1, high - 1, high - 1, high - 1);
  r.ClearColor(vec_t_<double, 4>{c, c, c, c});
  ExpectClearColor(r, high - 1, high - 1, high - 1, high - 1);
  r.ClearColor(vec_t_<float, 4>{c, c, c, c});
  ExpectClearColor(r, high, high, high, high);
}

TEST(ClearDepth, IsStoredAsAFloatAndNotClamped) {
  TRenderCPU r;
  r.ClearDepth(0.1);
  EXPECT_SAME_BITS(0.1f, r.m_ClearDepth);
  r.ClearDepth(-7.5);
  EXPECT_EQ(-7.5f, r.m_ClearDepth);
  r.ClearDepth(1e6);
  EXPECT_EQ(1e6f, r.m_ClearDepth);
}

TEST(ClearStencil, KeepsTheLowByte) {
  TRenderCPU r;
  r.ClearStencil(0x1234);
  EXPECT_EQ(0x34, r.m_ClearStencil);
  r.ClearStencil(-1);
  EXPECT_EQ(0xFF, r.m_ClearStencil);
}

TEST(Masks, TakeAnythingButZeroAsOn) {
  TRenderCPU r;
  const unsigned char ons[] = {1, 2, 128, 255};
  for (int mask = 0; mask < 16; ++mask) {
    const unsigned char on = ons[mask % 4];
    r.ColorMask(mask & 1 ? on : 0, mask & 2 ? on : 0, mask & 4 ? on : 0, mask & 8 ? on : 0);
    EXPECT_EQ(mask, r.m_ColorMask);
  }
  r.DepthMask(0);
  EXPECT_FALSE(r.m_DepthMask);
  r.DepthMask(2);
  EXPECT_TRUE(r.m_DepthMask);
  r.StencilMask(0x12345678);
  EXPECT_EQ(0x12345678u, r.m_StencilWriteMask);
  EXPECT_EQ(0u, r.GetError());
}

// --- Clear

TEST(Clear, FillsWhatItIsAskedFor) {
  for (int which = 0; which < 8; ++which) {
    TScene s(5, 3);
    s->ClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    s->ClearDepth(0.5);
    s->ClearStencil(9);
    s->Clear((which & 1) != 0, (which & 2) != 0, (which & 4) != 0);
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < 5; ++x) {
        EXPECT_EQ(which & 1 ? (TPixel{255, 0, 0, 255}) : kClear, s.Color(x, y));
        EXPECT_EQ(which & 2 ? 0.5f : 0.0f, s.Depth(x, y));
        EXPECT_EQ(which & 4 ? 9 : 0, s.Stencil(x, y));
      }
    }
    EXPECT_EQ(0u, s->GetError());
  }
}

/// Notes what the form with bits hands to the form with flags.
class TClearSpy : public TRenderCPU {
public:
  using TRenderCPU::Clear;
  void Clear(bool color, bool depth, bool stencil) override {
    ++Calls;
    Last = (color ? 1 : 0) | (depth ? 2 : 0) | (stencil ? 4 : 0);
  }
  int Calls = 0;
  int Last = -1;
};

TEST(Clear, ByBitsCallsTheVirtualFormByFlags) {
  TClearSpy spy;
  TRenderCPU& r = spy;
  r.Clear(0x4000u);
  EXPECT_EQ(1, spy.Last);
  r.Clear(0x100u);
  EXPECT_EQ(2, spy.Last);
  r.Clear(0x400u);
  EXPECT_EQ(4, spy.Last);
  r.Clear(0x4500u);
  EXPECT_EQ(7, spy.Last);
  r.Clear(~0x4500u);
  EXPECT_EQ(0, spy.Last);
  EXPECT_EQ(5, spy.Calls);
}

TEST(Clear, WithAColourMaskOfZeroLeavesTheColour) {
  TScene s(3, 3);
  s->ClearColor(1.0f, 1.0f, 1.0f, 1.0f);
  s->ColorMask(0, 0, 0, 0);
  s->Clear(GL_COLOR_BUFFER_BIT);
  EXPECT_EQ(0, s.Painted());
  EXPECT_EQ(0u, s->GetError());
}

TEST(Clear, WritesTheMaskedChannelsOnly) {
  for (int mask = 1; mask < 16; ++mask) {
    TScene s(3, 2);
    s->ClearColor(10 / 255.0f, 20 / 255.0f, 30 / 255.0f, 40 / 255.0f);
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 3; ++x) {
        s.SetColor(x, y, {101, 102, 103, 104});
      }
    }
    s->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    s->Clear(true, false, false);
    const TPixel expected{mask & 1 ? 10 : 101, mask & 2 ? 20 : 102, mask & 4 ? 30 : 103,
                          mask & 8 ? 40 : 104};
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 3; ++x) {
        EXPECT_EQ(expected, s.Color(x, y)) << mask;
      }
    }
  }
}

TEST(Clear, WithTheDepthMaskOffLeavesTheDepth) {
  TScene s(3, 3);
  s->ClearDepth(0.25);
  s->DepthMask(0);
  s->Clear(true, true, true);
  EXPECT_EQ(0.0f, s.Depth(1, 1));
  EXPECT_EQ(0u, s->GetError());
}

TEST(Clear, OfDepthWritesWhatWasGiven) {
  TScene s(2, 2);
  s->ClearDepth(-3.0);
  s->Clear(false, true, false);
  EXPECT_EQ(-3.0f, s.Depth(1, 1));
  s->ClearDepth(std::numeric_limits<double>::quiet_NaN());
  s->Clear(false, true, false);
  EXPECT_NE(s.Depth(0, 0), s.Depth(0, 0));
}

TEST(Clear, OfTheStencilHeedsTheLowByteOfItsMask) {
  const struct {
    unsigned int Mask;
    int Expected;
  } rows[] = {
      {0, 0xA5},          {0x100, 0xA5}, {0xFF, 0x3C},  {0xFFFFFFFF, 0x3C},
      {0x0F, 0xAC},       {0xF0, 0x35},  {0x1C3, 0x24}, // (A5 & ~C3) | (3C & C3) = 24 | 00
      {0xFFFFFF81, 0x24},                               // (A5 & 7E) | (3C & 81)
  };
  for (const auto& row : rows) {
    TScene s(3, 2);
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 3; ++x) {
        s.SetStencil(x, y, 0xA5);
      }
    }
    s->ClearStencil(0x3C);
    s->StencilMask(row.Mask);
    s->Clear(false, false, true);
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 3; ++x) {
        EXPECT_EQ(row.Expected, s.Stencil(x, y)) << std::hex << row.Mask;
      }
    }
    EXPECT_EQ(0u, s->GetError());
  }
}

TEST(Clear, OnAContextThatIsNotCreatedReports) {
  TRenderCPU r;
  r.Clear(true, true, true);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r.GetError());
  r.Clear(0x4500u);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r.GetError());
}

TEST(Clear, ThatCannotFillReportsAndEndsThere) {
  // A bound surface without pixels can't be filled.
  TScene s(2, 2);
  TDataSurface empty;
  s->BindColorSurface(&empty);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  s->ClearDepth(0.5);
  s->ClearStencil(3);
  s->Clear(true, true, true);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  EXPECT_EQ(0.0f, s.Depth(0, 0));
  EXPECT_EQ(0, s.Stencil(0, 0));

  // With no colour asked for the others are cleared.
  s->Clear(false, true, true);
  EXPECT_EQ(0u, s->GetError());
  EXPECT_EQ(0.5f, s.Depth(0, 0));
  EXPECT_EQ(3, s.Stencil(0, 0));
}

TEST(Clear, FillsABoundSurfaceByItsStrides) {
  TScene s(2, 2);
  // Rows of 12 bytes of which 8 are pixels: what lies between them stays.
  std::vector<std::uint8_t> block(24 + 32, 0xEE);
  TDataSurface bound;
  ASSERT_TRUE(bound.Create(2, 2, DATA_FORMAT(6), DATA_TYPE(3), 4, block.data()));
  bound.RowStride = 12;
  bound.DataSize = 24;
  s->BindColorSurface(&bound);
  s->ClearColor(1.0f, 0.0f, 1.0f, 1.0f);
  for (const int mask : {15, 5}) {
    std::fill(block.begin(), block.end(), 0xEE);
    s->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    s->Clear(true, false, false);
    const TPixel expected = mask == 15 ? TPixel{255, 0, 255, 255} : TPixel{255, 0xEE, 255, 0xEE};
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 2; ++x) {
        EXPECT_EQ(expected, s.Color(x, y)) << mask;
      }
      for (int i = 8; i < 12; ++i) {
        EXPECT_EQ(0xEE, block[static_cast<std::size_t>(y * 12 + i)]);
      }
    }
    for (std::size_t i = 24; i < block.size(); ++i) {
      EXPECT_EQ(0xEE, block[i]);
    }
  }
}

TEST(Clear, NeverTouchesTheDrawBuffer) {
  TScene s(2, 2);
  TDataSurface buffer;
  ASSERT_TRUE(buffer.Create(2, 2, DATA_FORMAT(6), DATA_TYPE(10), 4));
  s->SetDrawBuffer(&buffer);
  s->ClearColor(1.0f, 1.0f, 1.0f, 1.0f);
  s->Clear(true, true, true);
  for (const std::uint8_t byte : BytesOf(&buffer)) {
    ASSERT_EQ(0, byte);
  }
  EXPECT_EQ(4, s.Painted());
}

// --- Accepted only in one case

TEST(Targets, DrawAndReadBufferTakeTheFrontOnly) {
  TScene s;
  s->DrawBuffer(0x404);
  s->ReadBuffer(0x404);
  EXPECT_EQ(0u, s->GetError());
  for (const unsigned int other : {0u, 0x405u, 0x408u, 0xFFFFFFFFu}) {
    s->DrawBuffer(other);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
    s->ReadBuffer(other);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  }
}

TEST(Targets, AreHandedOut) {
  TScene s;
  EXPECT_EQ(s->m_ColorSurface, s->GetColorSurface());
  EXPECT_EQ(s->m_DepthSurface, s->GetDepthSurface());
  EXPECT_EQ(s->m_StencilSurface, s->GetStencilSurface());
  TRenderCPU none;
  EXPECT_EQ(nullptr, none.GetColorSurface());
  EXPECT_EQ(nullptr, none.GetDepthSurface());
  EXPECT_EQ(nullptr, none.GetStencilSurface());
}

// --- A bound colour surface

TEST(BindColorSurface, TakesTheDrawing) {
  TScene s(4, 3);
  TDataSurface* const own = s->GetColorSurface();
  TDataSurface bound;
  ASSERT_TRUE(bound.Create(4, 3, DATA_FORMAT(6), DATA_TYPE(3), 4));
  s->BindColorSurface(&bound);
  EXPECT_EQ(0u, s->GetError());
  EXPECT_EQ(&bound, s->GetColorSurface());
  DrawFullQuad(*s);
  for (const std::uint8_t byte : BytesOf(&bound)) {
    EXPECT_EQ(255, byte);
  }
  for (const std::uint8_t byte : BytesOf(own)) {
    EXPECT_EQ(0, byte);
  }
  s->BindColorSurface(nullptr);
  EXPECT_EQ(own, s->GetColorSurface());
  EXPECT_EQ(0u, s->GetError());
  DrawFullQuad(*s);
  EXPECT_EQ(12, s.Painted());
}

TEST(BindColorSurface, OfAnotherSizeIsReportedAndBound) {
  TScene s(4, 4);
  TDataSurface smaller;
  ASSERT_TRUE(smaller.Create(4, 2, DATA_FORMAT(6), DATA_TYPE(3), 4));
  s->BindColorSurface(&smaller);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  EXPECT_EQ(&smaller, s->GetColorSurface());

  // Rows 0 and 1 lie inside its block, the others are not written; depth is whole.
  DrawFullQuad(*s);
  for (const std::uint8_t byte : BytesOf(&smaller)) {
    EXPECT_EQ(255, byte);
  }
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) {
      EXPECT_EQ(0.5f, s.Depth(x, y));
    }
  }

  TDataSurface narrower;
  ASSERT_TRUE(narrower.Create(3, 4, DATA_FORMAT(6), DATA_TYPE(3), 4));
  s->BindColorSurface(&narrower);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  EXPECT_EQ(&narrower, s->GetColorSurface());
}

TEST(BindColorSurface, OfAnotherSizeStaysInsideItsBlock) {
  for (int height = 1; height < 8; ++height) {
    for (int width = 1; width < 8; ++width) {
      TScene s(5, 5);
      TDataSurface bound;
      ASSERT_TRUE(bound.Create(width, height, DATA_FORMAT(6), DATA_TYPE(3), 4));
      s->BindColorSurface(&bound);
      DrawFullQuad(*s);
      s->Begin(GL_LINES);
      s->Vertex2d(-1, -1);
      s->Vertex2d(1, 1);
      s->Vertex2d(-1, 0.9);
      s->Vertex2d(1, 0.9);
      s->End();
      s->Begin(GL_POINTS);
      for (int i = 0; i < 25; ++i) {
        s->Vertex2d(Clip(i % 5, 5), Clip(i / 5, 5));
      }
      s->End();
      // The slack behind the pixels is not the surface's to be drawn into.
      const std::uint8_t* const end = bound.Data + bound.DataSize;
      for (int i = 0; i < bound.RowStride + bound.PixelStride; ++i) {
        ASSERT_EQ(0, end[i]) << width << " by " << height;
      }
    }
  }
}

TEST(BindColorSurface, IsNotOwned) {
  TDataSurface bound;
  ASSERT_TRUE(bound.Create(4, 4, DATA_FORMAT(6), DATA_TYPE(3), 4));
  {
    TScene s(4, 4);
    s->BindColorSurface(&bound);
  }
  EXPECT_EQ(4, bound.Width);
}

// --- The draw buffer

TEST(DrawBuffer, ChoosesItsWriter) {
  TScene s(4, 3);
  const struct {
    int Components;
    unsigned int Type;
    TRenderCPU::TPixelWrite Writer;
  } rows[] = {
      {1, 10, &Zx3D::SetValue1f},
      {1, 11, &Zx3D::SetValue1d},
      {4, 10, &Zx3D::SetValue4f},
      {4, 11, &Zx3D::SetValue4d},
  };
  for (const auto& row : rows) {
    TDataSurface buffer;
    ASSERT_TRUE(buffer.Create(4, 3, DATA_FORMAT(6), DATA_TYPE(row.Type), row.Components));
    s->SetDrawBuffer(&buffer);
    EXPECT_EQ(&buffer, s->m_DrawBuffer);
    EXPECT_EQ(row.Writer, s->m_PixelWrite);
    s->SetDrawBuffer(nullptr);
    EXPECT_EQ(nullptr, s->m_DrawBuffer);
    EXPECT_EQ(nullptr, s->m_PixelWrite);
  }
  EXPECT_EQ(0u, s->GetError());
}

TEST(DrawBuffer, OfAnotherKindIsIgnoredWithoutAWord) {
  TScene s(4, 3);
  TDataSurface good;
  ASSERT_TRUE(good.Create(4, 3, DATA_FORMAT(6), DATA_TYPE(10), 4));
  s->SetDrawBuffer(&good);
  const struct {
    int Width, Height, Components;
    unsigned int Type;
  } rows[] = {{4, 3, 4, 3},  {4, 3, 2, 10}, {4, 3, 3, 11}, {4, 3, 1, 7},
              {3, 3, 4, 10}, {4, 4, 4, 10}, {5, 3, 1, 11}};
  for (const auto& row : rows) {
    TDataSurface other;
    ASSERT_TRUE(
        other.Create(row.Width, row.Height, DATA_FORMAT(6), DATA_TYPE(row.Type), row.Components));
    s->SetDrawBuffer(&other);
    EXPECT_EQ(&good, s->m_DrawBuffer);
    EXPECT_EQ(&Zx3D::SetValue4f, s->m_PixelWrite);
    EXPECT_EQ(0u, s->GetError());
  }
}

TEST(DrawBuffer, WritersKeepTheWholeColour) {
  const vec_t_<double, 4> color = {0.1, -2.5, 1e30, 7.0};
  double doubles[4] = {9, 9, 9, 9};
  float floats[4] = {9, 9, 9, 9};
  Zx3D::SetValue1d(doubles, color);
  EXPECT_SAME_BITS(0.1, doubles[0]);
  EXPECT_EQ(9.0, doubles[1]);
  Zx3D::SetValue1f(floats, color);
  EXPECT_SAME_BITS(0.1f, floats[0]);
  EXPECT_EQ(9.0f, floats[1]);
  Zx3D::SetValue4d(doubles, color);
  EXPECT_SAME_BITS(0.1, doubles[0]);
  EXPECT_EQ(-2.5, doubles[1]);
  EXPECT_EQ(1e30, doubles[2]);
  EXPECT_EQ(7.0, doubles[3]);
  Zx3D::SetValue4f(floats, color);
  EXPECT_SAME_BITS(0.1f, floats[0]);
  EXPECT_EQ(-2.5f, floats[1]);
  EXPECT_EQ(1e30f, floats[2]);
  EXPECT_EQ(7.0f, floats[3]);
}

/// Draws one triangle pair, a line and a point in a colour outside 0 to 1 by a custom pair.
void DrawAllKinds(TScene& s, TSeeingFragmentShader& fragment) {
  fragment.UseOwnColor = true;
  s->_SetFragmentShader(&fragment);
  DrawFullQuad(*s);
}

TEST(DrawBuffer, TakesFragmentsUnquantisedPastMaskAndBlend) {
  THeld<TSeeingFragmentShader> fragment;
  fragment->OwnColor = {0.1, -2.5, 3.0, 0.25};
  TScene s(4, 3);
  TDataSurface buffer;
  ASSERT_TRUE(buffer.Create(4, 3, DATA_FORMAT(6), DATA_TYPE(11), 4));
  s->SetDrawBuffer(&buffer);
  s->ColorMask(0, 0, 0, 0);
  s->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  s->EnableBlend(true);
  DrawAllKinds(s, *fragment);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 4; ++x) {
      double v[4];
      std::memcpy(v, TScene::At(buffer, x, y), sizeof(v));
      EXPECT_SAME_BITS(0.1, v[0]);
      EXPECT_EQ(-2.5, v[1]);
      EXPECT_EQ(3.0, v[2]);
      EXPECT_EQ(0.25, v[3]);
    }
  }
  EXPECT_EQ(0, s.Painted());
}

TEST(DrawBuffer, OfOneComponentTakesRed) {
  THeld<TSeeingFragmentShader> fragment;
  fragment->OwnColor = {0.1, -2.5, 3.0, 0.25};
  TScene s(4, 3);
  TDataSurface buffer;
  ASSERT_TRUE(buffer.Create(4, 3, DATA_FORMAT(3), DATA_TYPE(10), 1));
  s->SetDrawBuffer(&buffer);
  DrawAllKinds(s, *fragment);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 4; ++x) {
      float v;
      std::memcpy(&v, TScene::At(buffer, x, y), sizeof(v));
      EXPECT_SAME_BITS(0.1f, v);
    }
  }
}

TEST(DrawBuffer, IsSteppedByItsOwnStrides) {
  // One float a pixel, every second pixel and every second row of a wider block.
  THeld<TSeeingFragmentShader> fragment;
  fragment->OwnColor = {0.5, 0, 0, 0};
  std::vector<float> block(8 * 6, -1.0f);
  DATASURFACE buffer = {};
  buffer.Width = 4;
  buffer.Height = 3;
  buffer.Depth = 1;
  buffer.PixelStride = 8;
  buffer.RowStride = 64;
  buffer.SliceStride = 192;
  buffer.Format = DATA_FORMAT(3);
  buffer.Type = DATA_TYPE(10);
  buffer.Channels = 1;
  buffer.Data = reinterpret_cast<std::uint8_t*>(block.data());
  buffer.DataSize = 192;
  TScene s(4, 3);
  s->SetDrawBuffer(&buffer);
  DrawAllKinds(s, *fragment);
  s->Begin(GL_POINTS);
  s->Vertex2d(0, 0);
  s->End();
  s->Begin(GL_LINES);
  s->Vertex2d(-1, 0);
  s->Vertex2d(1, 0);
  s->End();
  for (std::size_t i = 0; i < block.size(); ++i) {
    const bool pixel = i % 2 == 0 && (i / 8) % 2 == 0;
    EXPECT_EQ(pixel ? 0.5f : -1.0f, block[i]) << i;
  }
}

TEST(DrawBuffer, ThatNoLongerFitsIsWrittenInsideItsBlockOnly) {
  for (int size = 2; size < 8; ++size) {
    TScene s(3, 3);
    TDataSurface buffer;
    ASSERT_TRUE(buffer.Create(3, 3, DATA_FORMAT(3), DATA_TYPE(11), 1));
    s->SetDrawBuffer(&buffer);
    ASSERT_TRUE(s->SetSize(size, size));
    DrawFullQuad(*s);
    s->Begin(GL_POINTS);
    for (int i = 0; i < size * size; ++i) {
      s->Vertex2d(Clip(i % size, size), Clip(i / size, size));
    }
    s->End();
    s->Begin(GL_LINES);
    s->Vertex2d(-1, 0.99);
    s->Vertex2d(1, 0.99);
    s->End();
    for (int y = 0; y < 3 && y < size; ++y) {
      for (int x = 0; x < 3 && x < size; ++x) {
        double v;
        std::memcpy(&v, TScene::At(buffer, x, y), sizeof(v));
        EXPECT_EQ(1.0, v) << size;
      }
    }
    const std::uint8_t* const end = buffer.Data + buffer.DataSize;
    for (int i = 0; i < buffer.RowStride + buffer.PixelStride; ++i) {
      ASSERT_EQ(0, end[i]) << size;
    }
    EXPECT_EQ(0, s.Painted());
  }
}

TEST(Surfaces, HaveTheirBottomRowFirst) {
  TScene s(4, 4);
  s->Begin(GL_POINTS);
  s->Vertex2d(-1, -1);
  s->End();
  EXPECT_EQ((TPixel{255, 255, 255, 255}), s.Color(0, 0));
  EXPECT_EQ(255, s->m_ColorSurface->Data[0]);
  EXPECT_EQ(1, s.Painted());
}

} // namespace
