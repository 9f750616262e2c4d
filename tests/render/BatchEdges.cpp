// Arrays at the edges of what batches may decide by themselves, with pixels and records that were
// worked out by hand: shapes that lie in a clip plane, points on the border of the surface, lit
// points, what the last fragments leave, and the count of draws when it starts over.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>
#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/arrays/VertexCache.h>

#include "EngineAccess.h"
#include "LevelTest.h"

template struct zx_test::TEngineReach<&Zx3D::TRenderCPU::m_Engine>;

namespace {

using Zx3D::TRenderCPU;
using zx_test::Clip;
using zx_test::TPixel;
using zx_test::TScene;

constexpr int kSize = 8;

class BatchEdges : public testing::Test {
protected:
  ~BatchEdges() override { Zx3D::LimitSpanLevel(nullptr); }

  /// Runs `check` on the reference path and at every level of this processor.
  template <class TCheck> static void AtEveryLevel(const TCheck& check) {
    for (const char* const level : Zx3D::kSpanPaths) {
      if (Zx3D::LimitSpanLevel(level)) {
        SCOPED_TRACE(level);
        check();
      }
    }
  }

  static void DrawArray(TRenderCPU& gl, unsigned int mode, const std::vector<double>& positions) {
    gl.EnableClientState(GL_VERTEX_ARRAY);
    gl.VertexPointer(3, GL_DOUBLE, 0, positions.data());
    gl.DrawArrays(mode, 0, static_cast<int>(positions.size() / 3));
  }
};

// --- In a plane

// A vertex on a plane is inside, so shapes that lie in the near or the far plane are drawn, with a
// depth of exactly 0 or 1.
TEST_F(BatchEdges, ShapesWhollyInThePlaneOfZ) {
  const struct {
    unsigned int Mode;
    std::vector<double> Shape; ///< x and y of its vertices; all cover the pixel at (4, 4)
  } shapes[] = {
      {GL_POINTS, {0.01, 0.01}},
      {GL_LINES, {-0.9, Clip(4, kSize), 0.9, Clip(4, kSize)}},
      {GL_TRIANGLES, {-1, -1, 1, -1, 1, 1}},
      {GL_QUADS, {-1, -1, 1, -1, 1, 1, -1, 1}},
  };
  for (const auto& shape : shapes) {
    for (const double z : {1.0, -1.0}) {
      SCOPED_TRACE(testing::Message() << "mode " << shape.Mode << ", z " << z);
      std::vector<double> positions;
      for (int i = 0; i < 6; ++i) { // the last one takes the reference path: it lies elsewhere
        for (std::size_t k = 0; k < shape.Shape.size(); k += 2) {
          positions.insert(positions.end(),
                           {shape.Shape[k] + (i == 5 ? 5 : 0), shape.Shape[k + 1], z});
        }
      }
      AtEveryLevel([&] {
        TScene s(kSize, kSize);
        s.Reset(0.5f);
        s->Color4d(0, 1, 0, 1);
        DrawArray(*s, shape.Mode, positions);
        EXPECT_EQ((TPixel{0, 255, 0, 255}), s.Color(4, 4));
        EXPECT_EQ(z > 0 ? 1.0f : 0.0f, s.Depth(4, 4));
      });
    }
  }
}

// A corner on a plane does not cut a triangle, and one that only touches the volume with a corner
// or an edge is not outside: its slots are interpolated from the corners as they were given.
TEST_F(BatchEdges, TrianglesThatFillTheVolumeAreNotCut) {
  std::vector<double> positions;
  for (int i = 0; i < 6; ++i) {
    for (const double at : {-1.0, -1.0, 1.0, 1.0, -1.0, -1.0, 1.0, 1.0, 1.0}) {
      positions.push_back(i == 5 ? at + 5 : at);
    }
  }
  AtEveryLevel([&] {
    TScene s(kSize, kSize);
    s.Reset(0.5f);
    DrawArray(*s, GL_TRIANGLES, positions);
    // Depth runs from 1 at the lower left over 0 at the lower right to 1 at the upper right: at the
    // pixel (x, y), its centre at a whole number, it is 1 - (x + 0.5) / 8 + (y + 0.5) / 8.
    for (int x = 0; x < kSize; ++x) {
      EXPECT_NEAR(1 - (x + 0.5) / kSize + 0.5 / kSize, s.Depth(x, 0), 1e-6) << x;
    }
  });
}

// --- Points

// A colour surface with a row of the caller's behind it and one before it.
struct TGuarded {
  TGuarded() : Block(4 * kSize * (kSize + 2), 0xA5) {
    EXPECT_TRUE(Surface.Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
                               Block.data() + 4 * kSize));
    std::memset(Block.data() + 4 * kSize, 0, 4 * kSize * kSize);
  }
  bool GuardsStand() const {
    for (std::size_t i = 0; i < 4 * kSize; ++i) {
      if (Block[i] != 0xA5 || Block[Block.size() - 1 - i] != 0xA5) {
        return false;
      }
    }
    return true;
  }
  int Painted() const {
    int count = 0;
    for (std::size_t i = 4 * kSize; i < 4 * kSize * (kSize + 1); i += 4) {
      count += Block[i + 3] != 0 ? 1 : 0;
    }
    return count;
  }

  std::vector<std::uint8_t> Block;
  TDataSurface Surface;
};

// A point at x = w or y = w lies in the volume, and in the column or row behind the surface: it is
// dropped. At -w it falls on column or row 0.
TEST_F(BatchEdges, PointsOnTheUpperAndTheRightBorderAreDropped) {
  const struct {
    double X;
    double Y;
    int Painted;
  } places[] = {{0.1, 1, 0},  {1, 0.1, 0},   {1, 1, 0},      {-1, 1, 0},
                {1, -1, 0},   {0.1, -1, 1},  {-1, 0.1, 1},   {-1, -1, 1},
                {0.99, 1, 0}, {1, -0.99, 0}, {0.99, 0.99, 1}};
  for (const auto& place : places) {
    SCOPED_TRACE(testing::Message() << "(" << place.X << ", " << place.Y << ")");
    std::vector<double> positions;
    for (int i = 0; i < 12; ++i) {
      positions.insert(positions.end(), {place.X, place.Y, 0.0});
    }
    AtEveryLevel([&] {
      TGuarded guarded;
      TScene s(kSize, kSize);
      s->BindColorSurface(&guarded.Surface);
      DrawArray(*s, GL_POINTS, positions);
      EXPECT_TRUE(guarded.GuardsStand());
      EXPECT_EQ(place.Painted, guarded.Painted());
      s->BindColorSurface(nullptr);
    });
  }
}

// The highlight is a colour of its own, and each of its channels is added: here there is no other.
TEST_F(BatchEdges, LitPointsHaveTheirHighlight) {
  for (const int count : {1, 4, 5, 6, 17, 40, 100}) {
    SCOPED_TRACE(count);
    std::vector<double> positions;
    for (int i = 0; i < count; ++i) {
      positions.insert(positions.end(),
                       {Clip(i % kSize, kSize), Clip(i / kSize % kSize, kSize), 0});
    }
    AtEveryLevel([&] {
      TScene s(kSize, kSize);
      s.Reset();
      s->m_MaterialFront = {{0, 0, 0, 1}, {0, 0, 0, 1}, {1, 0.5, 0.25, 1}, {0, 0, 0, 1}, 1};
      s->EnableLight(0, true); // white, from +z; the half vector is (0, 0, 1)
      s->EnableLighting(true);
      s->Normal3d(0, 0, 1);
      DrawArray(*s, GL_POINTS, positions);
      for (int i = 0; i < count; ++i) {
        EXPECT_EQ((TPixel{255, 128, 64, 255}), s.Color(i % kSize, i / kSize % kSize)) << i;
      }
      // On top of a diffuse colour it is added to it: 0.25 + 0.5, 0.25 + 0.25, 0.25 + 0.125.
      s->m_MaterialFront.Diffuse = {0.25, 0.25, 0.25, 1};
      s->m_MaterialFront.Specular = {0.5, 0.25, 0.125, 1};
      DrawArray(*s, GL_POINTS, positions);
      EXPECT_EQ((TPixel{191, 128, 96, 255}), s.Color(0, 0));
    });
  }
}

// Depth is set for every point that comes to the depth test; the place and the colour only for one
// that passes. A point that is clipped sets nothing.
TEST_F(BatchEdges, TheRecordWhenTheLastPointsFailAndTheFinalOneIsClipped) {
  constexpr int kPoints = 10;
  std::vector<double> positions;
  for (int i = 0; i < kPoints; ++i) {
    const double z = i < 5 ? -0.5 + i * 0.0625 : 0.25 + i * 0.0625;
    positions.insert(positions.end(), {Clip(i % kSize, kSize), Clip(2, kSize), z});
  }
  positions[3 * (kPoints - 1)] = 3.0; // the final one lies outside, and the one before it
  positions[3 * (kPoints - 2)] = 3.0;
  AtEveryLevel([&] {
    TScene s(kSize, kSize);
    s.Reset(0.5f); // points 0 to 4 lie before it, 5 to 7 behind
    s->EnableDepthTest(true);
    s->DepthFunc(GL_LESS);
    std::vector<double> colors;
    for (int i = 0; i < kPoints; ++i) {
      colors.insert(colors.end(), {i * 0.125, 0.5, 0.25, 1.0});
    }
    s->EnableClientState(GL_COLOR_ARRAY);
    s->ColorPointer(4, GL_DOUBLE, 0, colors.data());
    DrawArray(*s, GL_POINTS, positions);
    EXPECT_EQ(5, s.Painted());
    EXPECT_EQ(0.84375f, s->m_Fragment.Depth) << "(0.25 + 7 / 16) / 2 + 0.5, of point 7";
    EXPECT_EQ(4, s->m_Fragment.X);
    EXPECT_EQ(2, s->m_Fragment.Y);
    EXPECT_EQ(0.5, s->m_Fragment.Color.x) << "of point 4";
    EXPECT_EQ(0.375f, s.Depth(4, 2)) << "(-0.5 + 4 / 16) / 2 + 0.5";
  });
}

// No point passes, or none comes to the test: the record stays.
TEST_F(BatchEdges, TheRecordOfPointsThatAllFailOrAreClipped) {
  for (const bool clipped : {false, true}) {
    std::vector<double> positions;
    for (int i = 0; i < 10; ++i) {
      positions.insert(positions.end(), {clipped ? 2.0 : 0.1, 0.1, 0.5});
    }
    AtEveryLevel([&] {
      TScene s(kSize, kSize);
      s.Reset(0.25f);
      s->EnableDepthTest(true);
      s->DepthFunc(GL_LESS);
      s->m_Fragment = {{0.5, 0.25, 0.125, 1}, 6, 7, true, 0.125f};
      DrawArray(*s, GL_POINTS, positions);
      EXPECT_EQ(0, s.Painted());
      EXPECT_EQ(clipped ? 0.125f : 0.75f, s->m_Fragment.Depth);
      EXPECT_EQ(6, s->m_Fragment.X);
      EXPECT_EQ(7, s->m_Fragment.Y);
      EXPECT_EQ(0.5, s->m_Fragment.Color.x);
    });
  }
}

// --- The count of draws

// Shaded vertices are kept by the number of their draw. When the numbers start over, those of the
// first draws are not taken for those of the new one.
TEST_F(BatchEdges, VerticesOfDrawsBeforeTheirNumbersStartedOver) {
  const std::uint16_t indices[] = {0, 1, 2, 0, 2, 3, 0, 1, 2, 0, 2, 3};
  const double lower[] = {-1, -1, 0, 1, -1, 0, 1, 0, 0, -1, 0, 0};
  const double upper[] = {-1, 0, 0, 1, 0, 0, 1, 1, 0, -1, 1, 0};
  for (const unsigned int mode : {GL_TRIANGLES, GL_QUADS, GL_TRIANGLE_STRIP}) {
    // Draws before the number starts over: with each, another draw of the new count meets the tags.
    for (const std::uint32_t before : {0xFFFFFFFFu, 0xFFFFFFFEu, 0xFFFFFFFDu}) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << before);
      AtEveryLevel([&] {
        TScene s(kSize, kSize);
        s.Reset();
        s->EnableClientState(GL_VERTEX_ARRAY);
        s->VertexPointer(3, GL_DOUBLE, 0, lower);
        s->Color4d(1, 0, 0, 1);
        s->DrawElements(mode, 12, GL_UNSIGNED_SHORT, indices);
        s.Reset();
        zx_test::EngineOf(*s).VertexCache->Draw = before;
        s->VertexPointer(3, GL_DOUBLE, 0, upper);
        s->Color4d(0, 0, 1, 1);
        for (int draw = 0; draw < 3; ++draw) {
          s->DrawElements(mode, 12, GL_UNSIGNED_SHORT, indices);
        }
        for (int x = 0; x < kSize; ++x) {
          EXPECT_EQ(zx_test::kClear, s.Color(x, 1)) << x;
        }
        EXPECT_EQ((TPixel{0, 0, 255, 255}), s.Color(6, 5));
      });
    }
  }
}

// --- Triangles in the window

// By hand: divided by w, turned to the window, and facing by the sign of twice the area.
TEST_F(BatchEdges, TrianglesGoToTheWindowInVectors) {
  constexpr int kShapes = 32;
  constexpr int kWidth = 61;
  constexpr int kHeight = 47;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double odd[] = {0.0, -0.0, kInfinity, -kInfinity, std::nan(""), 1e-310, -1e300};
  std::mt19937 random(17);
  const auto component = [&] {
    return random() % 16 == 0 ? odd[random() % std::size(odd)] : random() / 1073741824.0 - 2.0;
  };
  for (const bool frontCCW : {true, false}) {
    Zx3D::TVertexBatch clip = {};
    clip.Pitch = kShapes;
    for (double* const part : {clip.X, clip.Y, clip.Z, clip.W}) {
      for (int i = 0; i < 3 * kShapes; ++i) {
        part[i] = component();
      }
    }
    for (const char* const level : Zx3D::kSpanLevels) {
      if (!Zx3D::LimitSpanLevel(level)) {
        continue;
      }
      SCOPED_TRACE(level);
      Zx3D::TVertexBatch window;
      window.Pitch = kShapes;
      const Zx3D::TSpanKernels& kernels = *Zx3D::GetSpanKernels();
      kernels.DivideVertices(clip, 3 * kShapes, &window);
      const std::uint64_t front = kernels.FindFront(window, {3, {0, 1, 2}}, kShapes, frontCCW);
      kernels.ProjectVertices(clip, 3 * kShapes, kWidth, kHeight, &window);
      const auto expectSame = [](double expected, double got) {
        EXPECT_TRUE(std::isnan(expected) ? std::isnan(got)
                                         : std::memcmp(&expected, &got, sizeof got) == 0)
            << expected << ", got " << got;
      };
      for (int s = 0; s < kShapes; ++s) {
        double x[3];
        double y[3];
        for (int c = 0; c < 3; ++c) {
          const int at = c * kShapes + s;
          const double r = 1.0 / clip.W[at];
          x[c] = clip.X[at] * r;
          y[c] = clip.Y[at] * r;
          expectSame((x[c] * 0.5 + 0.5) * kWidth - 0.5, window.X[at]);
          expectSame((y[c] * 0.5 + 0.5) * kHeight - 0.5, window.Y[at]);
          expectSame((clip.Z[at] * r) * 0.5 + 0.5, window.Z[at]);
          expectSame(r, window.W[at]);
        }
        const double area =
            (x[0] * y[1] - x[1] * y[0]) + (x[1] * y[2] - x[2] * y[1]) + (x[2] * y[0] - x[0] * y[2]);
        EXPECT_EQ(frontCCW ? area >= 0.0 : area < 0.0, (front >> s & 1) != 0) << s;
      }
    }
  }
}

// The rows of a triangle, as they are defined: those in which the edge with the greatest height, of
// edges of one height the first, shares pixel centres with the next edge, then with the one after.
TEST_F(BatchEdges, RowsOfTrianglesArePlannedInVectors) {
  constexpr int kShapes = 32;
  constexpr int kHeight = 40;
  std::mt19937 random(29);
  const auto whole = [&](int end) {
    return static_cast<int>(random() % static_cast<unsigned>(end));
  };
  int planned = 0;
  for (int turn = 0; turn < 200; ++turn) {
    Zx3D::TVertexBatch window = {};
    window.Pitch = kShapes;
    for (int i = 0; i < 3 * kShapes; ++i) {
      // Heights meet often, and pixel centres as often; some corners lie beyond the surface.
      window.Y[i] = whole(2) != 0 ? whole(60) - 10 : (whole(600) - 100) / 8.0;
    }
    for (const char* const level : Zx3D::kSpanLevels) {
      if (!Zx3D::LimitSpanLevel(level)) {
        continue;
      }
      SCOPED_TRACE(level);
      Zx3D::TTriangleRows rows;
      Zx3D::GetSpanKernels()->PlanTriangles(window, {3, {0, 1, 2}}, kShapes, kHeight, &rows);
      for (int s = 0; s < kShapes; ++s) {
        double y[3];
        for (int c = 0; c < 3; ++c) {
          y[c] = window.Y[c * kShapes + s];
        }
        const auto heightOf = [&](int edge) { return std::fabs(y[(edge + 1) % 3] - y[edge % 3]); };
        int major = 0;
        for (int edge = 1; edge < 3; ++edge) {
          major = heightOf(edge) > heightOf(major) ? edge : major;
        }
        const bool upward = y[(major + 1) % 3] >= y[major];
        EXPECT_EQ(2 * major + (upward ? 1 : 0), rows.Order[s]) << s;
        for (int minor = 0; minor < 2; ++minor) {
          const double a = y[(major + 1 + minor) % 3];
          const double b = y[(major + 2 + minor) % 3];
          int first = 0;
          int count = 0;
          for (int row = kHeight - 1; row >= 0 && a != b; --row) {
            // From the truncation of the lower end, half a row up, to that of the upper end.
            if (row > std::fmin(a, b) - 0.5 && row <= std::fmax(std::fmax(a, b), 0.0) &&
                std::fmax(a, b) > -1.0) {
              first = row;
              ++count;
            }
          }
          EXPECT_EQ(count, rows.Count[minor][s]) << s;
          if (count != 0) {
            EXPECT_EQ(first, rows.First[minor][s]) << s;
            ++planned;
          }
        }
      }
    }
  }
  EXPECT_GT(planned, 1000);
}

// --- What triangles in the window leave

struct TPainted {
  std::vector<double> Positions; ///< x, y, z
  std::vector<double> Colors;

  // A vertex at a place of the picture.
  void Add(double x, double y, double red) {
    Positions.insert(Positions.end(), {Clip(x, kSize), Clip(y, kSize), 0});
    Colors.insert(Colors.end(), {red, 0, 0, 1});
  }
  void Draw(TRenderCPU& gl, unsigned int mode) const {
    gl.EnableClientState(GL_VERTEX_ARRAY);
    gl.EnableClientState(GL_COLOR_ARRAY);
    gl.VertexPointer(3, GL_DOUBLE, 0, Positions.data());
    gl.ColorPointer(4, GL_DOUBLE, 0, Colors.data());
    gl.DrawArrays(mode, 0, static_cast<int>(Positions.size() / 3));
  }
};

// A triangle that draws nothing does not disturb the record of the last one that did, although it
// takes the place of its corners, or the next batch of a strip does.
TEST_F(BatchEdges, TheRecordIsThatOfTheLastTriangleThatDrew) {
  for (const unsigned int mode : {GL_TRIANGLES, GL_TRIANGLE_STRIP}) {
    for (const int drawn : {1, 2, 3, 33, 34}) {
      TPainted shapes;
      for (int i = 0; i < 3 * (mode == GL_TRIANGLES ? drawn : 1); ++i) {
        const double red = mode == GL_TRIANGLE_STRIP || i >= 3 * (drawn - 1) ? 0.75 : 0.25;
        shapes.Add(i % 3 == 1 ? 6 : 2, i % 3 == 2 ? 6 : 2, red);
      }
      for (int i = 0; i < 3 * (39 + drawn); ++i) {
        shapes.Add(2, 6, 0.5); // all at one place
      }
      AtEveryLevel([&] {
        TScene s(kSize, kSize);
        s.Reset();
        shapes.Draw(*s, mode);
        EXPECT_DOUBLE_EQ(0.75, s->m_Fragment.Color.x) << mode << ", " << drawn;
        EXPECT_DOUBLE_EQ(0.75, s->m_VarFragment.Slots[1].x) << mode << ", " << drawn;
      });
    }
  }
}

// A corner at the eye makes the slot that no shader fills a NaN, which the triangles after it find
// there.
TEST_F(BatchEdges, TheSpareSlotThatATriangleAtTheEyeLeaves) {
  constexpr double kDepthIsW[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  TPainted shapes;
  for (int i = 0; i < 9 * 3; ++i) {
    shapes.Add(i % 3 == 1 ? 6 : 2, i % 3 == 2 ? 6 : 2, 1);
    shapes.Positions.back() = 1; // w, with the matrix below
    if (i >= 6) {
      shapes.Positions.end()[-3] = 7; // outside
    }
  }
  std::fill_n(shapes.Positions.begin(), 3, 0.0);
  AtEveryLevel([&] {
    TScene s(kSize, kSize);
    s.Reset();
    s->SetPerspectiveCorrectionHint(GL_NICEST);
    s->MatrixMode(GL_PROJECTION);
    s->LoadMatrixd(kDepthIsW);
    shapes.Draw(*s, GL_TRIANGLES);
    EXPECT_DOUBLE_EQ(1.0, s->m_VarFragment.Slots[1].x);
    EXPECT_TRUE(std::isnan(s->m_VarFragment.Slots[2].x));
  });
}

} // namespace
