// Shapes that batches drop because all of them lies beyond one plane, although planes before it cut
// them: clipping by the book, plane after plane, leaves nothing of them either.

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include "LevelTest.h"
#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/stages/ClipPlanes.h>

namespace {

using Zx3D::TRenderCPU;
using Zx3D::TShapeClasses;
using Zx3D::TVertexBatch;

using TPoint = std::array<double, 4>; // x, y, z, w
using TTriangle = std::array<TPoint, 3>;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// --- Clipping by the book, positions alone

bool IsInside(const TPoint& p, int plane) {
  const double u = p[static_cast<std::size_t>(plane / 2)];
  return plane % 2 == 0 ? u >= -p[3] : u <= p[3];
}

// `from` is outside, `to` inside.
TPoint Cut(const TPoint& from, const TPoint& to, int plane) {
  const auto axis = static_cast<std::size_t>(plane / 2);
  const double t = plane % 2 == 0
                       ? (from[axis] + from[3]) / (from[axis] - to[axis] + from[3] - to[3])
                       : (from[axis] - from[3]) / (from[axis] - to[axis] - from[3] + to[3]);
  TPoint out;
  for (std::size_t i = 0; i < 4; ++i) {
    out[i] = (to[i] - from[i]) * t + from[i];
  }
  return out;
}

// How many triangles are handed to rasterisation.
int PiecesOf(const TTriangle& v, int plane = 0) {
  if (plane == 6) {
    return 1;
  }
  std::vector<std::size_t> in;
  std::vector<std::size_t> out;
  for (std::size_t i = 0; i < 3; ++i) {
    (IsInside(v[i], plane) ? in : out).push_back(i);
  }
  if (in.empty()) {
    return 0;
  }
  TTriangle first = v;
  TTriangle second = v;
  if (out.size() == 1) {
    const std::size_t o = out[0];
    const std::size_t a = (o + 1) % 3;
    first[o] = Cut(v[o], v[a], plane);
    second[a] = first[o];
    second[o] = Cut(v[o], v[(o + 2) % 3], plane);
    return PiecesOf(first, plane + 1) + PiecesOf(second, plane + 1);
  }
  for (const std::size_t o : out) {
    first[o] = Cut(v[o], v[in[0]], plane);
  }
  return PiecesOf(first, plane + 1);
}

bool IsLineDrawn(TPoint a, TPoint b) {
  for (int plane = 0; plane < 6; ++plane) {
    const bool inA = IsInside(a, plane);
    const bool inB = IsInside(b, plane);
    if (!inA && !inB) {
      return false;
    }
    if (!inA) {
      a = Cut(a, b, plane);
    } else if (!inB) {
      b = Cut(b, a, plane);
    }
  }
  return true;
}

// --- Shapes

std::mt19937_64& Random() {
  static std::mt19937_64 random;
  return random;
}

double Real(double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(Random());
}

std::size_t Below(std::size_t end) { return Random()() % end; }

// A magnitude between two powers of two, either sign.
double Wide(int lowest, int highest) {
  const double magnitude = std::exp2(Real(lowest, highest));
  return Below(2) == 0 ? magnitude : -magnitude;
}

double Nudged(double value) {
  for (std::size_t i = Below(4); i > 0; --i) {
    value = std::nextafter(value, Below(2) == 0 ? kInf : -kInf);
  }
  return value;
}

// Around the volume, of all sizes; w is one, or differs from corner to corner.
TTriangle Around() {
  const double size = std::exp2(Real(-12, 2));
  const bool flat = Below(2) == 0;
  const TPoint center = {Real(-3, 3), Real(-3, 3), Real(-3, 3), flat ? 1 : Real(0, 3)};
  TTriangle v;
  for (TPoint& p : v) {
    for (std::size_t i = 0; i < 4; ++i) {
      p[i] = i == 3 && flat ? 1 : center[i] + Real(-size, size);
    }
  }
  return v;
}

// As `Around`, with one corner at a tiny distance, of any magnitude, from a plane.
TTriangle Close() {
  TTriangle v = Around();
  TPoint& p = v[Below(3)];
  const double side = Below(2) == 0 ? 1 : -1;
  p[Below(3)] = side * p[3] + Wide(-60, -10);
  return v;
}

// The corner `o` sees two points on the line in which two planes meet, and the others lie behind
// these: what the first plane cuts off lies on the second but for rounding. All of it lies beyond a
// third plane.
TTriangle OnAnEdge() {
  const std::size_t x = Below(2);
  const std::size_t y = x == 0 ? 1 + Below(2) : 2;
  const std::size_t z = 3 - x - y;
  const double signX = Below(2) == 0 ? 1 : -1;
  const double signY = Below(2) == 0 ? 1 : -1;
  const double beyond = Below(2) == 0 ? 1 : -1;
  TTriangle v;
  v[0][3] = Real(0.5, 2);
  v[0][x] = signX * v[0][3] * Real(1.1, 2);
  v[0][y] = signY * v[0][3] * Real(1.1, 2);
  v[0][z] = beyond * v[0][3] * Real(1.1, 6);
  for (std::size_t k = 1; k < 3; ++k) {
    TPoint edge;
    edge[3] = Real(0.5, 2);
    edge[x] = signX * edge[3];
    edge[y] = signY * edge[3];
    edge[z] = beyond * edge[3] * Real(1.1, 6);
    const double s = Real(0.1, 0.9);
    for (std::size_t i = 0; i < 4; ++i) {
      v[k][i] = Nudged(edge[i] + (edge[i] - v[0][i]) * s);
    }
  }
  const std::size_t turn = Below(3);
  return {v[turn], v[(turn + 1) % 3], v[(turn + 2) % 3]};
}

// Of numbers that arithmetic finds hard.
TTriangle Wild() {
  constexpr double kNumbers[] = {0.0,         -0.0,       1.0,       -1.0,     1 + 0x1p-52,
                                 1 - 0x1p-53, 2.0,        -2.0,      3.0,      -3.0,
                                 kInf,        -kInf,      kNan,      0x1p1023, -0x1p1023,
                                 0x1p-1074,   -0x1p-1074, 0x1p-1000, 0x1p600,  -0x1p-600};
  const std::size_t count = std::size(kNumbers) - (Below(2) == 0 ? 10 : 0);
  TTriangle v;
  for (TPoint& p : v) {
    for (double& c : p) {
      c = kNumbers[Below(count)];
    }
  }
  return v;
}

// The same at another scale: all comparisons but those with the range of exponents are the same.
TTriangle Scaled(TTriangle v, int power) {
  for (TPoint& p : v) {
    for (double& c : p) {
      c = std::ldexp(c, power);
    }
  }
  return v;
}

TTriangle Any(std::size_t kind) {
  switch (kind) {
  case 0:
    return Around();
  case 1:
    return Close();
  case 2:
    return OnAnEdge();
  case 3:
    return Scaled(Around(), static_cast<int>(Below(2095)) - 1074);
  default:
    return Wild();
  }
}

// Whether the first `corners` all lie outside one plane.
bool IsOutsideOne(const TTriangle& v, std::size_t corners) {
  for (int plane = 0; plane < 6; ++plane) {
    std::size_t out = 0;
    for (std::size_t i = 0; i < corners; ++i) {
      out += IsInside(v[i], plane) ? 0 : 1;
    }
    if (out == corners) {
      return true;
    }
  }
  return false;
}

// --- Classes of a batch

class ClipOutside : public zx_test::TLevelTest {
protected:
  ClipOutside() : TLevelTest(37, 29) { Random().seed(5); }

  static constexpr int kPitch = 32;
  using TShapes = std::array<TTriangle, kPitch>;

  static TVertexBatch BatchOf(const TShapes& shapes) {
    TVertexBatch batch = {};
    batch.Pitch = kPitch;
    for (int s = 0; s < kPitch; ++s) {
      for (int c = 0; c < 3; ++c) {
        const TPoint& p = shapes[static_cast<std::size_t>(s)][static_cast<std::size_t>(c)];
        const int at = c * kPitch + s;
        batch.X[at] = p[0];
        batch.Y[at] = p[1];
        batch.Z[at] = p[2];
        batch.W[at] = p[3];
      }
    }
    return batch;
  }

  // Calls `check` for each shape of many batches at each level: with the shape, its kind, and the
  // classes of it as a triangle and of its first two corners as a line, in bit 0.
  template <class TCheck> static void ForEachShape(int batches, const TCheck& check) {
    for (const char* const level : Zx3D::kSpanLevels) {
      if (!Zx3D::LimitSpanLevel(level)) {
        continue;
      }
      SCOPED_TRACE(level);
      const Zx3D::TSpanKernels& kernels = *Zx3D::GetSpanKernels();
      for (int i = 0; i < batches; ++i) {
        TShapes shapes;
        for (std::size_t s = 0; s < kPitch; ++s) {
          shapes[s] = Any(s % 5);
        }
        const TVertexBatch batch = BatchOf(shapes);
        const TShapeClasses triangles = ClassesOf(kernels, batch, {3, {0, 1, 2}});
        const TShapeClasses lines = ClassesOf(kernels, batch, {2, {0, 1, 1}});
        for (std::size_t s = 0; s < kPitch; ++s) {
          check(shapes[s], s % 5, Of(triangles, s), Of(lines, s));
          if (HasFatalFailure()) {
            return;
          }
        }
      }
    }
  }

  static TShapeClasses ClassesOf(const Zx3D::TSpanKernels& kernels, const TVertexBatch& batch,
                                 const Zx3D::TShapeColumns& columns) {
    Zx3D::TInsideBits inside[4];
    for (int c = 0; c < columns.Count; ++c) {
      kernels.FindInside(batch, c * kPitch, kPitch, &inside[c]);
    }
    TShapeClasses classes = Zx3D::ClassifyShapes(inside, columns);
    std::uint64_t clear[3];
    kernels.FindClear(batch, columns, kPitch, &clear);
    classes.Beyond = Zx3D::LiesBeyond(inside, columns, clear, ~(classes.Inside | classes.Outside));
    return classes;
  }

  static TShapeClasses Of(const TShapeClasses& all, std::size_t shape) {
    TShapeClasses one;
    one.Inside = all.Inside >> shape & 1;
    one.Outside = all.Outside >> shape & 1;
    one.Beyond = all.Beyond >> shape & 1;
    return one;
  }
};

TEST_F(ClipOutside, NothingIsLeftOfWhatBatchesDrop) {
  int beyond[5] = {};
  int linesBeyond[5] = {};
  ForEachShape(4000, [&](const TTriangle& v, std::size_t kind, const TShapeClasses& triangle,
                         const TShapeClasses& line) {
    ASSERT_LE(triangle.Inside + triangle.Outside + triangle.Beyond, 1u);
    if (triangle.Outside + triangle.Beyond != 0) {
      ASSERT_TRUE(IsOutsideOne(v, 3)) << "kind " << kind;
      ASSERT_EQ(0, PiecesOf(v)) << "kind " << kind;
    }
    if (line.Outside + line.Beyond != 0) {
      ASSERT_TRUE(IsOutsideOne(v, 2)) << "kind " << kind;
      ASSERT_FALSE(IsLineDrawn(v[0], v[1])) << "kind " << kind;
    }
    beyond[kind] += static_cast<int>(triangle.Beyond);
    linesBeyond[kind] += static_cast<int>(line.Beyond);
  });
  // There were such shapes of each kind that can have them: at ordinary scales, close to a plane,
  // at the ends of the range of exponents.
  for (const std::size_t kind : {0u, 1u, 3u}) {
    EXPECT_GT(beyond[kind], 500) << kind;
    EXPECT_GT(linesBeyond[kind], 500) << kind;
  }
}

// Lying outside one plane alone does not do: where the cut of an earlier plane meets a second, the
// quotient loses its digits, and the clipper brings back what lay outside the third.
TEST_F(ClipOutside, RoundingBringsBackWhatLiesOutside) {
  int brought = 0;
  ForEachShape(4000, [&](const TTriangle& v, std::size_t kind, const TShapeClasses& triangle,
                         const TShapeClasses&) {
    if (kind != 4 && IsOutsideOne(v, 3) && PiecesOf(v) != 0) {
      ++brought;
      ASSERT_EQ(0u, triangle.Outside + triangle.Beyond);
    }
  });
  EXPECT_GT(brought, 20);
}

// What is dropped would be seen nowhere, and hardly anything that is all outside goes to the
// clipper.
TEST_F(ClipOutside, MostOfWhatLiesOutsideIsDropped) {
  int outside = 0;
  int dropped = 0;
  ForEachShape(1000, [&](const TTriangle& v, std::size_t kind, const TShapeClasses& triangle,
                         const TShapeClasses&) {
    if (kind == 0 && IsOutsideOne(v, 3)) {
      ++outside;
      dropped += static_cast<int>(triangle.Outside + triangle.Beyond);
    }
  });
  EXPECT_GT(dropped, 0.95 * outside) << "of " << outside;
}

// --- Shapes that come one by one

bool IsDropped(const TTriangle& v, bool isLine) {
  vec_t_<double, 4> at[3];
  for (std::size_t i = 0; i < 3; ++i) {
    at[i] = {v[i][0], v[i][1], v[i][2], v[i][3]};
  }
  const vec_t_<double, 4>* const corners[3] = {&at[0], &at[1], &at[isLine ? 1 : 2]};
  return Zx3D::ClipsFrom(corners) < 0;
}

TEST_F(ClipOutside, NothingIsLeftOfSingleShapesThatAreDropped) {
  int cutFirst[5] = {};
  int linesCutFirst[5] = {};
  int outside = 0;
  int dropped = 0;
  for (std::size_t i = 0; i < 600000; ++i) {
    const std::size_t kind = i % 5;
    const TTriangle v = Any(kind);
    const bool isDropped = IsDropped(v, false);
    const bool isLineDropped = IsDropped(v, true);
    if (isDropped) {
      ASSERT_EQ(0, PiecesOf(v)) << "kind " << kind;
    }
    if (isLineDropped) {
      ASSERT_FALSE(IsLineDrawn(v[0], v[1])) << "kind " << kind;
    }
    // Of these, what a plane cuts before.
    const auto isCut = [&](std::size_t corners) {
      for (int plane = 0; plane < 6; ++plane) {
        std::size_t in = 0;
        for (std::size_t c = 0; c < corners; ++c) {
          in += IsInside(v[c], plane) ? 1 : 0;
        }
        if (in != corners) {
          return in != 0;
        }
      }
      return false;
    };
    cutFirst[kind] += isDropped && isCut(3) ? 1 : 0;
    linesCutFirst[kind] += isLineDropped && isCut(2) ? 1 : 0;
    if (kind == 0 && IsOutsideOne(v, 3)) {
      ++outside;
      dropped += isDropped ? 1 : 0;
    }
  }
  for (const std::size_t kind : {0u, 1u, 3u}) {
    EXPECT_GT(cutFirst[kind], 500) << kind;
    EXPECT_GT(linesCutFirst[kind], 500) << kind;
  }
  EXPECT_GT(dropped, 0.95 * outside) << "of " << outside;
}

// --- Whole draws

// Clip z is -1.5 times the depth of a vertex plus 0.5, w is that depth: all planes can cut, and w
// can be of either sign or zero.
constexpr double kSlanted[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1.5, 1, 0, 0, 0.5, 0};
// Depth 0 in the middle has a position of zeros alone, whose 1/w is infinite.
constexpr double kThroughZero[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.5, 1, 0, 0, 0, 0};

std::vector<double> PositionsOf(std::size_t shapes, bool zeros) {
  std::vector<double> positions;
  for (std::size_t s = 0; s < shapes; ++s) {
    const TTriangle v = Any(Below(3));
    for (std::size_t c = 0; c < 4; ++c) {
      // Quads take a corner more; z of the vertex becomes its w.
      const TPoint& p = v[c % 3];
      const double more = c == 3 ? Real(-0.2, 0.2) : 0;
      const bool zero = zeros && s % 7 == 0 && c == s % 4;
      for (const double value : {p[0] + more, p[1] - more, p[3]}) {
        positions.push_back(zero ? 0.0 : value);
      }
    }
  }
  return positions;
}

TEST_F(ClipOutside, DrawsLeaveWhatTheReferencePathLeaves) {
  const std::vector<double> all[2] = {PositionsOf(300, false), PositionsOf(300, true)};
  std::vector<std::uint8_t> colors;
  std::vector<double> coordinates;
  std::vector<double> normals;
  std::vector<std::uint16_t> indices;
  for (std::size_t i = 0; i < 1200; ++i) {
    colors.insert(colors.end(), {static_cast<std::uint8_t>(Below(256)),
                                 static_cast<std::uint8_t>(Below(256)), 99, 255});
    coordinates.insert(coordinates.end(), {Real(0, 1), Real(0, 1)});
    normals.insert(normals.end(), {Real(-1, 1), Real(-1, 1), 1.0});
    indices.push_back(static_cast<std::uint16_t>(Below(1200)));
  }
  for (const std::vector<double>& positions : all) {
    for (const double* const matrix : {kSlanted, kThroughZero}) {
      for (const unsigned int mode :
           {GL_TRIANGLES, GL_QUADS, GL_LINES, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_LINE_STRIP}) {
        for (int state = 0; state < 8; ++state) {
          Expect(testing::PrintToString(mode) + ", state " + std::to_string(state),
                 [&](TRenderCPU& gl) {
                   gl.MatrixMode(GL_PROJECTION);
                   gl.LoadMatrixd(matrix);
                   gl.EnableCullFace((state & 1) != 0);
                   gl._EnableTexture2D(0, (state & 2) != 0);
                   gl.EnableLighting((state & 4) != 0);
                   gl.EnableLight(0, true);
                   gl.VertexPointer(3, GL_DOUBLE, 0, positions.data());
                   gl.ColorPointer(4, GL_UNSIGNED_BYTE, 0, colors.data());
                   gl.TexCoordPointer(2, GL_DOUBLE, 0, coordinates.data());
                   gl.NormalPointer(GL_DOUBLE, 0, normals.data());
                   for (const unsigned int array : {GL_VERTEX_ARRAY, GL_COLOR_ARRAY,
                                                    GL_TEXTURE_COORD_ARRAY, GL_NORMAL_ARRAY}) {
                     gl.EnableClientState(array);
                   }
                   gl.DrawArrays(mode, 0, 1200);
                   gl.DrawElements(mode, 1200, GL_UNSIGNED_SHORT, indices.data());
                 });
        }
      }
    }
  }
}

// Shapes of `corners` corners, of which those that `isCut` names lie across the left plane and
// above the upper one; the others are seen, but that in the first one corner is zeros.
template <class TIsCut>
std::vector<double> CutAndSeen(std::size_t shapes, std::size_t corners, std::size_t zero,
                               std::size_t lone, const TIsCut& isCut) {
  std::vector<double> positions;
  for (std::size_t s = 0; s < shapes; ++s) {
    for (std::size_t c = 0; c < corners; ++c) {
      const double turn = 1.5 * static_cast<double>(c);
      const double x = 0.3 * std::cos(turn);
      const double y = 0.3 * std::sin(turn);
      if (isCut(s)) {
        positions.insert(positions.end(), {c == lone ? -2 : x, 3 + y, 1.0});
      } else {
        const double r = s == 0 && c == zero ? 0.0 : 1.0;
        positions.insert(positions.end(), {r * x, r * y, r});
      }
    }
  }
  return positions;
}

// The slot that no shader fills becomes NaN where a corner of zeros alone is drawn, and each cut
// after that carries it on to another corner.
TEST_F(ClipOutside, CutsCarryTheSpareSlotOn) {
  for (const unsigned int mode : {GL_TRIANGLES, GL_QUADS, GL_LINES}) {
    const std::size_t corners = mode == GL_QUADS ? 4 : mode == GL_TRIANGLES ? 3 : 2;
    for (std::size_t zero = 0; zero < corners; ++zero) {
      for (std::size_t lone = 0; lone < corners; ++lone) {
        constexpr std::size_t kShapes = 9;
        const std::vector<double> positions = CutAndSeen(
            kShapes, corners, zero, lone, [](std::size_t s) { return s != 0 && s != kShapes - 1; });
        Expect(testing::PrintToString(mode), [&](TRenderCPU& gl) {
          gl.MatrixMode(GL_PROJECTION);
          gl.LoadMatrixd(kThroughZero);
          gl.VertexPointer(3, GL_DOUBLE, 0, positions.data());
          gl.EnableClientState(GL_VERTEX_ARRAY);
          const int count = static_cast<int>(kShapes * corners);
          gl.DrawArrays(mode, 0, count);
          if (mode == GL_TRIANGLES) {
            std::vector<std::uint8_t> indices;
            for (int i = 0; i < count; ++i) {
              indices.push_back(static_cast<std::uint8_t>(i));
            }
            gl.DrawElements(mode, count, GL_UNSIGNED_BYTE, indices.data());
          }
        });
      }
    }
  }
}

// The first shape leaves NaN in the slot that no shader fills, and of all others a single one is
// cut and carries it on, though nothing of it is seen: the first of a later batch, whatever a batch
// holds.
TEST_F(ClipOutside, OnlyTheFirstShapeOfABatchIsCut) {
  for (const unsigned int mode : {GL_TRIANGLES, GL_QUADS, GL_LINES}) {
    const std::size_t corners = mode == GL_QUADS ? 4 : mode == GL_TRIANGLES ? 3 : 2;
    for (const std::size_t cut : {16, 24, 32, 48, 64, 96}) {
      for (std::size_t zero = 0; zero < corners; ++zero) {
        for (std::size_t lone = 0; lone < corners; ++lone) {
          const std::size_t shapes = cut + 3;
          const std::vector<double> positions =
              CutAndSeen(shapes, corners, zero, lone, [cut](std::size_t s) { return s == cut; });
          Expect(testing::PrintToString(mode) + ", " + std::to_string(cut), [&](TRenderCPU& gl) {
            gl.MatrixMode(GL_PROJECTION);
            gl.LoadMatrixd(kThroughZero);
            gl.VertexPointer(3, GL_DOUBLE, 0, positions.data());
            gl.EnableClientState(GL_VERTEX_ARRAY);
            gl.DrawArrays(mode, 0, static_cast<int>(shapes * corners));
          });
        }
      }
    }
  }
}

// In strips and fans, whose vertices are drawn from copies, whichever shape is the one that leaves
// something in the slot: the last of a batch as well, shortly before the end of the draw.
TEST_F(ClipOutside, StripsCarryTheSpareSlotIntoTheNextBatch) {
  for (const unsigned int mode :
       {GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_LINE_STRIP, GL_LINE_LOOP}) {
    for (std::size_t count = 30; count < 60; ++count) {
      for (std::size_t zero = count - 6; zero < count; ++zero) {
        std::vector<double> positions;
        for (std::size_t i = 0; i < count; ++i) {
          const double turn = 1.5 * static_cast<double>(i);
          const double r = i == zero ? 0.0 : 1.0;
          positions.insert(positions.end(),
                           {r * 0.3 * std::cos(turn), r * 0.3 * std::sin(turn), r});
        }
        Expect(std::to_string(mode) + ", " + std::to_string(count) + " vertices, zeros at " +
                   std::to_string(zero),
               [&](TRenderCPU& gl) {
                 gl.MatrixMode(GL_PROJECTION);
                 gl.LoadMatrixd(kThroughZero);
                 gl.VertexPointer(3, GL_DOUBLE, 0, positions.data());
                 gl.EnableClientState(GL_VERTEX_ARRAY);
                 gl.DrawArrays(mode, 0, static_cast<int>(count));
               });
      }
    }
  }
}

} // namespace
