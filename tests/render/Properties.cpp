// What must hold for every scene, on random ones from fixed seeds.

#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "ReferenceScene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

struct TVertex {
  double x, y, z;
  double r, g, b, a;
};

TVertex RandomCorner(TDice& dice, double reach) {
  return {dice.Between(-reach, reach), dice.Between(-reach, reach), dice.Between(-reach, reach),
          dice.Between(0, 1),          dice.Between(0, 1),          dice.Between(0, 1),
          dice.Between(0.2, 1)};
}

void Submit(TRenderCPU& r, const TVertex& v) {
  r.Color4d(v.r, v.g, v.b, v.a);
  r.Vertex3d(v.x, v.y, v.z);
}

void Draw(TRenderCPU& r, unsigned int mode, const std::vector<TVertex>& list) {
  r.Begin(mode);
  for (const TVertex& v : list) {
    Submit(r, v);
  }
  r.End();
}

/// Counts per pixel how many fragments came, by the stencil.
void CountByStencil(TRenderCPU& r) {
  r.Enable(GL_STENCIL_TEST);
  r.StencilFunc(GL_ALWAYS, 0, 0xFF);
  r.StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
}

double Area(const TVertex& a, const TVertex& b, const TVertex& c) {
  return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
}

TEST(Property, TrianglesThatShareAnEdgeCoverEachPixelOnce) {
  for (unsigned int seed = 0; seed < 400; ++seed) {
    TDice dice(seed);
    TScene s(37, 29);
    CountByStencil(*s);
    // Two corners on both sides of an edge; half of the seeds on the grid of pixel centres.
    TVertex v[4];
    for (TVertex& corner : v) {
      corner = RandomCorner(dice, 0.97);
      if (seed % 2 == 0) {
        corner.x = Clip(dice.Below(37), 37);
        corner.y = Clip(dice.Below(29), 29);
      }
    }
    if (Area(v[0], v[1], v[2]) * Area(v[0], v[1], v[3]) >= 0) {
      continue;
    }
    Draw(*s, GL_TRIANGLES, {v[0], v[1], v[2]});
    Draw(*s, GL_TRIANGLES, {v[1], v[0], v[3]});
    for (int y = 0; y < 29; ++y) {
      for (int x = 0; x < 37; ++x) {
        ASSERT_LE(s.Stencil(x, y), 1) << seed << ": " << x << ", " << y;
      }
    }
  }
}

TEST(Property, AFanOverTheWholeFrameLeavesNoGap) {
  for (unsigned int seed = 0; seed < 200; ++seed) {
    TDice dice(100 + seed);
    const int width = 3 + dice.Below(40);
    const int height = 3 + dice.Below(40);
    TScene s(width, height);
    CountByStencil(*s);
    // A hub inside, and a closed ring on the border of the clip square.
    std::vector<double> angles = {0.25, 0.75, 1.25, 1.75}; // the corners, in units of pi
    for (int i = 0; i < 6; ++i) {
      angles.push_back(dice.Between(0, 2));
    }
    std::sort(angles.begin(), angles.end());
    std::vector<TVertex> list = {RandomCorner(dice, 0.9)};
    for (const double angle : angles) {
      const double c = std::cos(angle * 3.141592653589793);
      const double d = std::sin(angle * 3.141592653589793);
      const double m = std::max(std::abs(c), std::abs(d));
      TVertex v = RandomCorner(dice, 0.9);
      v.x = std::round(c / m * 1e9) / 1e9;
      v.y = std::round(d / m * 1e9) / 1e9;
      list.push_back(v);
    }
    list.push_back(list[1]);
    Draw(*s, GL_TRIANGLE_FAN, list);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        ASSERT_EQ(1, s.Stencil(x, y)) << seed << ": " << x << ", " << y;
      }
    }
  }
}

TEST(Property, ClippedTrianglesShowWhatTheUnclippedShowInside) {
  // A frame three times as large with the same pixel grid shows the whole triangle unclipped. What
  // lies in its middle third must be what the small frame shows of the clipped one. Cut vertices
  // are rounded, so that depth and colour are held to a tolerance and border pixels may flip.
  for (unsigned int seed = 0; seed < 300; ++seed) {
    TDice dice(2000 + seed);
    const int size = 15;
    std::vector<TVertex> list;
    for (int i = 0; i < 3; ++i) {
      TVertex v = RandomCorner(dice, 2.9);
      v.z = dice.Between(-0.9, 0.9);
      list.push_back(v);
    }
    TScene small(size, size);
    TScene large(3 * size, 3 * size);
    small.Reset(9.0f);
    large.Reset(9.0f);
    Draw(*small, GL_TRIANGLES, list);
    std::vector<TVertex> shrunk = list;
    for (TVertex& v : shrunk) {
      v.x /= 3;
      v.y /= 3;
    }
    Draw(*large, GL_TRIANGLES, shrunk);
    const auto nearBorder = [&](int x, int y) {
      const double px = Clip(x, size);
      const double py = Clip(y, size);
      for (int e = 0; e < 3; ++e) {
        const TVertex& a = list[static_cast<std::size_t>(e)];
        const TVertex& b = list[static_cast<std::size_t>((e + 1) % 3)];
        const double away = ((b.x - a.x) * (py - a.y) - (px - a.x) * (b.y - a.y)) /
                            std::hypot(b.x - a.x, b.y - a.y);
        if (std::abs(away) < 1e-9) {
          return true;
        }
      }
      return false;
    };
    for (int y = 0; y < size; ++y) {
      for (int x = 0; x < size; ++x) {
        if (nearBorder(x, y)) {
          continue;
        }
        const bool shown = large.Depth(x + size, y + size) != 9.0f;
        ASSERT_EQ(shown, small.Depth(x, y) != 9.0f) << seed << ": " << x << ", " << y;
        if (shown) {
          ASSERT_NEAR(large.Depth(x + size, y + size), small.Depth(x, y), 1e-6);
          const TPixel expected = large.Color(x + size, y + size);
          const TPixel actual = small.Color(x, y);
          ASSERT_NEAR(expected.r, actual.r, 1);
          ASSERT_NEAR(expected.g, actual.g, 1);
          ASSERT_NEAR(expected.b, actual.b, 1);
          ASSERT_NEAR(expected.a, actual.a, 1);
        }
      }
    }
  }
}

TEST(Property, StripsFansAndQuadsGiveTheSurfaceOfTheirTriangles) {
  for (unsigned int seed = 0; seed < 200; ++seed) {
    TDice dice(3000 + seed);
    std::vector<TVertex> list;
    for (int i = 0; i < 8 + dice.Below(3); ++i) {
      list.push_back(RandomCorner(dice, 1.6));
    }
    std::vector<TVertex> fan;
    std::vector<TVertex> strip;
    std::vector<TVertex> quads;
    for (std::size_t i = 0; i + 2 < list.size(); ++i) {
      fan.insert(fan.end(), {list[0], list[i + 1], list[i + 2]});
      const bool odd = i % 2 != 0;
      strip.insert(strip.end(), {list[i + (odd ? 1 : 0)], list[i + (odd ? 0 : 1)], list[i + 2]});
    }
    for (std::size_t i = 0; i + 3 < list.size(); i += 4) {
      quads.insert(quads.end(), {list[i], list[i + 1], list[i + 2]});
      quads.insert(quads.end(), {list[i], list[i + 2], list[i + 3]});
    }
    const struct {
      unsigned int Mode;
      const std::vector<TVertex>& Separate;
    } pairs[] = {{GL_TRIANGLE_FAN, fan}, {GL_TRIANGLE_STRIP, strip}, {GL_QUADS, quads}};
    for (const auto& pair : pairs) {
      TScene a(24, 24);
      TScene b(24, 24);
      for (const TScene* s : {&a, &b}) {
        (*s)->ClearColor(0.5f, 0.25f, 0.125f, 1.0f);
        (*s)->Clear(true, true, true);
        (*s)->EnableDepthTest(seed % 2 == 0);
        (*s)->EnableCullFace(seed % 3 == 0);
        (*s)->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        (*s)->EnableBlend(true);
      }
      Draw(*a, pair.Mode, list);
      Draw(*b, GL_TRIANGLES, pair.Separate);
      ASSERT_EQ(AllBytes(*a), AllBytes(*b)) << seed << ", mode " << pair.Mode;
    }
  }
}

/// A scene of all modes with blending, depth, stencil and a texture.
void DrawEverything(TRenderCPU& r, unsigned int seed) {
  TDice dice(seed);
  r.ClearColor(0.1f, 0.2f, 0.3f, 1.0f);
  r.ClearDepth(1.0);
  r.Clear(true, true, true);
  r.EnableDepthTest(true);
  CountByStencil(r);
  for (unsigned int mode = 0; mode < 8; ++mode) {
    r.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    r.EnableBlend(mode % 2 == 0);
    r.Begin(mode);
    for (int i = 0; i < 12; ++i) {
      r.TexCoord2d(dice.Between(-1, 2), dice.Between(-1, 2));
      Submit(r, RandomCorner(dice, 1.3));
    }
    r.End();
  }
}

TEST(Property, DrawingTwiceGivesTheSameBytes) {
  TScene used(31, 23);
  for (unsigned int seed = 0; seed < 60; ++seed) {
    TScene fresh(31, 23);
    DrawEverything(*fresh, seed);
    const auto first = AllBytes(*fresh);
    DrawEverything(*fresh, seed);
    ASSERT_EQ(first, AllBytes(*fresh)) << seed;
    DrawEverything(*used, seed); // after all the other scenes
    ASSERT_EQ(first, AllBytes(*used)) << seed;
  }
}

unsigned int MakeTexture(TRenderCPU& r) {
  unsigned int id = 0;
  r.GenTextures(1, &id);
  r.BindTexture(GL_TEXTURE_2D, id);
  std::vector<std::uint8_t> texels;
  for (int i = 0; i < 5 * 3 * 4; ++i) {
    texels.push_back(static_cast<std::uint8_t>(i * 37 + 11));
  }
  r.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 3, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  return id;
}

TEST(Property, ASharedTextureDrawsAsOnesOwn) {
  for (const unsigned int filter : {0x2600u, 0x2601u}) {
    TScene own(31, 23);
    MakeTexture(*own);
    TScene giver(8, 8);
    const unsigned int id = MakeTexture(*giver);
    TScene taker(31, 23, giver.Get());
    taker->BindTexture(GL_TEXTURE_2D, id);
    for (const TScene* s : {&own, &taker}) {
      (*s)->Enable(GL_TEXTURE_2D);
      (*s)->TexFilter2D(filter, filter);
      (*s)->TexWrap2D(0x2901, 0x2901);
      ASSERT_EQ(0u, (*s)->GetError());
    }
    for (unsigned int seed = 0; seed < 20; ++seed) {
      DrawEverything(*own, seed);
      DrawEverything(*taker, seed);
      ASSERT_EQ(AllBytes(*own), AllBytes(*taker)) << seed;
    }
    // The texture shows at all.
    const auto textured = AllBytes(*own);
    own->Disable(GL_TEXTURE_2D);
    DrawEverything(*own, 19);
    EXPECT_NE(textured, AllBytes(*own));
  }
}

TEST(Property, PixelsStandWhenTheCallReturns) {
  TScene s(8, 8);
  s->Begin(GL_TRIANGLES);
  s->Vertex2d(-1, -1);
  s->Vertex2d(1, -1);
  EXPECT_EQ(0, s.Painted());
  s->Vertex2d(-1, 1);
  EXPECT_GT(s.Painted(), 20); // before End
  s->End();
}

} // namespace
