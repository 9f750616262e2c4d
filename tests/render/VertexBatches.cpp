// Array draws by batches leave what vertex after vertex leaves: pixels, the fragment record, the
// scratch records and the current values.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>
#include <ZxCore3D/render/stages/LineWalk.h>

#include "LevelTest.h"

namespace {

using Zx3D::TLineWalk;
using Zx3D::TRenderCPU;

constexpr int kWidth = 61;
constexpr int kHeight = 47;
constexpr unsigned int kModes[] = {GL_POINTS,    GL_LINES,          GL_LINE_LOOP,    GL_LINE_STRIP,
                                   GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_QUADS};

class VertexBatches : public zx_test::TLevelTest {
protected:
  VertexBatches() : TLevelTest(kWidth, kHeight) {}

  double Real(double low, double high) { return low + (high - low) * (m_Random() / 4294967295.0); }

  // Each level leaves what the reference path leaves.
  void Compare(const std::function<void(TRenderCPU*)>& scene) {
    Expect("", [&scene](TRenderCPU& gl) { scene(&gl); });
  }

  // Shapes of three vertices, each within `reach` of a place within -spread to spread.
  std::vector<float> Shapes(int vertices, double spread, double reach) {
    std::vector<float> positions;
    double center[3] = {};
    for (int i = 0; i < vertices; ++i) {
      for (double& c : center) {
        c = i % 3 == 0 ? Real(-spread, spread) : c;
        positions.push_back(static_cast<float>(c + Real(-reach, reach)));
      }
    }
    return positions;
  }

  std::vector<unsigned char> Colors(int vertices) {
    std::vector<unsigned char> colors(static_cast<std::size_t>(4 * vertices));
    for (unsigned char& c : colors) {
      c = static_cast<unsigned char>(m_Random());
    }
    return colors;
  }

  static void Bind(TRenderCPU* gl, const std::vector<float>& positions,
                   const std::vector<unsigned char>& colors) {
    gl->VertexPointer(3, GL_FLOAT, 0, positions.data());
    gl->ColorPointer(4, GL_UNSIGNED_BYTE, 0, colors.data());
    gl->_EnableClientState(GL_VERTEX_ARRAY, true);
    gl->_EnableClientState(GL_COLOR_ARRAY, true);
  }

  std::mt19937 m_Random{17};
};

TEST_F(VertexBatches, EveryCountOfEveryMode) {
  const std::vector<float> positions = Shapes(260, 1.1, 0.2);
  const std::vector<unsigned char> colors = Colors(260);
  for (const unsigned int mode : kModes) {
    for (const int count : {1, 2, 3, 4, 7, 15, 16, 20, 21, 95, 96, 97, 99, 100, 193, 200, 250}) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << count << " vertices");
      Compare([&](TRenderCPU* gl) {
        Bind(gl, positions, colors);
        gl->DrawArrays(mode, 5, count);
      });
    }
  }
}

// Elements in any order, some of them again and again, by indices of each size.
TEST_F(VertexBatches, EveryCountOfEveryModeByElements) {
  const std::vector<float> positions = Shapes(200, 1.1, 0.3);
  const std::vector<unsigned char> colors = Colors(200);
  std::vector<std::uint8_t> bytes;
  std::vector<std::uint16_t> shorts;
  std::vector<std::uint32_t> words;
  for (int i = 0; i < 260; ++i) {
    words.push_back(i % 5 == 4 ? words[static_cast<std::size_t>(i) - 1] : m_Random() % 200);
    bytes.push_back(static_cast<std::uint8_t>(words.back()));
    shorts.push_back(static_cast<std::uint16_t>(words.back()));
  }
  int turn = 0;
  for (const unsigned int mode : kModes) {
    for (const int count : {1, 3, 4, 5, 6, 7, 8, 15, 16, 21, 33, 34, 35, 95, 97, 100, 193, 250}) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << count << " vertices");
      ++turn;
      Compare([&](TRenderCPU* gl) {
        gl->EnableCullFace(turn % 3 == 0);
        gl->CullFace(turn % 2 == 0 ? GL_FRONT : GL_BACK);
        gl->EnableLighting(turn % 5 == 0);
        gl->EnableLight(0, true);
        Bind(gl, positions, colors);
        const void* const lists[] = {bytes.data() + 1, shorts.data() + 1, words.data() + 1};
        const unsigned int types[] = {GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT, GL_UNSIGNED_INT};
        gl->DrawElements(mode, count, types[turn % 3], lists[turn % 3]);
      });
    }
  }
}

// Strips, fans and loops with everything that a record can hold, and culled faces on both sides.
TEST_F(VertexBatches, ConnectedShapesInEveryState) {
  const std::vector<float> positions = Shapes(240, 0.9, 0.5);
  const std::vector<float> coordinates = Shapes(160, 1.0, 0.5);
  const std::vector<unsigned char> colors = Colors(240);
  for (const unsigned int mode : kModes) {
    for (int state = 0; state < 64; ++state) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", state " << state);
      Compare([&](TRenderCPU* gl) {
        if ((state & 1) != 0) {
          gl->MatrixMode(GL_PROJECTION);
          gl->Frustum(-1, 1, -1, 1, 0.5, 4);
          gl->Translated(0, 0, -1.2);
        }
        gl->_EnableTexture2D(0, (state & 2) != 0);
        gl->EnableLighting((state & 4) != 0);
        gl->EnableLight(0, true);
        gl->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, (state & 8) != 0);
        gl->EnableCullFace((state & 16) != 0);
        gl->CullFace((state & 8) != 0 ? GL_FRONT : GL_BACK);
        gl->EnableDepthTest((state & 32) != 0);
        gl->TexCoordPointer(2, GL_FLOAT, 0, coordinates.data());
        gl->_EnableClientState(GL_TEXTURE_COORD_ARRAY, true);
        Bind(gl, positions, colors);
        gl->DrawArrays(mode, 1, 150 + state);
      });
    }
  }
}

// A corner in the eye has w = 0 and an infinite 1/w: the slot that no shader fills becomes no
// number there, in the records of that shape and of those after it.
TEST_F(VertexBatches, TheSpareSlotThatIsNoNumberAnyMore) {
  const std::vector<unsigned char> colors = Colors(200);
  std::vector<std::uint8_t> indices;
  for (int i = 0; i < 200; ++i) {
    indices.push_back(static_cast<std::uint8_t>(i));
  }
  for (const unsigned int mode : kModes) {
    for (const std::size_t at : {0u, 1u, 2u, 3u, 7u, 40u, 97u, 150u, 198u}) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", vertex " << at);
      std::vector<float> positions = Shapes(200, 0.5, 0.2);
      for (std::size_t i = 2; i < positions.size(); i += 3) {
        positions[i] -= 2.0f;
      }
      std::fill_n(positions.begin() + static_cast<std::ptrdiff_t>(3 * at), 3, 0.0f);
      Compare([&](TRenderCPU* gl) {
        gl->MatrixMode(GL_PROJECTION);
        const double projection[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.2, -1, 0, 0, 0, 0};
        gl->LoadMatrixd(projection);
        Bind(gl, positions, colors);
        gl->DrawArrays(mode, 0, 200);
        gl->DrawElements(mode, 200, GL_UNSIGNED_BYTE, indices.data());
      });
    }
  }
}

// Colours from an array, all vertices at the current place.
TEST_F(VertexBatches, ArraysWithoutPositions) {
  const std::vector<unsigned char> colors = Colors(40);
  for (const unsigned int mode : kModes) {
    Compare([&](TRenderCPU* gl) {
      gl->m_CurAttrib[0] = {0.25, -0.25, 0, 1};
      gl->ColorPointer(4, GL_UNSIGNED_BYTE, 0, colors.data());
      gl->_EnableClientState(GL_COLOR_ARRAY, true);
      gl->DrawArrays(mode, 0, 40);
    });
  }
}

TEST_F(VertexBatches, NothingForNegativeCounts) {
  const std::vector<float> positions = Shapes(30, 1.0, 0.2);
  const std::vector<unsigned char> colors = Colors(30);
  const std::uint8_t indices[30] = {};
  for (const unsigned int mode : kModes) {
    Compare([&](TRenderCPU* gl) {
      Bind(gl, positions, colors);
      gl->DrawArrays(mode, 0, -20);
      gl->DrawElements(mode, -20, GL_UNSIGNED_BYTE, indices);
    });
  }
}

TEST_F(VertexBatches, ShapesOnAndBehindThePlanes) {
  const std::vector<unsigned char> colors = Colors(240);
  for (const unsigned int mode : {GL_POINTS, GL_LINES, GL_TRIANGLES, GL_QUADS}) {
    // The corners lie on a grid whose outer lines are the planes, and the lines behind them.
    std::vector<float> positions;
    for (int i = 0; i < 720; ++i) {
      positions.push_back(static_cast<float>(static_cast<int>(m_Random() % 7) - 3) * 0.5f);
    }
    for (const bool perspective : {false, true}) {
      SCOPED_TRACE(mode);
      Compare([&](TRenderCPU* gl) {
        if (perspective) { // w is no longer 1, and below 0 for some
          gl->MatrixMode(GL_PROJECTION);
          gl->Frustum(-1, 1, -1, 1, 0.5, 4);
          gl->Translated(0, 0, -1);
        }
        gl->EnableCullFace(perspective);
        gl->CullFace(GL_BACK);
        Bind(gl, positions, colors);
        gl->DrawArrays(mode, 0, 240);
      });
    }
  }
}

TEST_F(VertexBatches, NumbersThatAreNone) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kOdd[] = {
      std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity, 3e38f, -3e38f, 1e-42f, -0.0f};
  std::vector<float> positions = Shapes(240, 1.0, 0.3);
  for (std::size_t i = 0; i < positions.size(); i += 5) {
    positions[i] = kOdd[m_Random() % std::size(kOdd)];
  }
  const std::vector<unsigned char> colors = Colors(240);
  std::vector<std::uint8_t> indices;
  for (int i = 0; i < 240; ++i) {
    indices.push_back(static_cast<std::uint8_t>(m_Random() % 240));
  }
  for (const unsigned int mode : kModes) {
    SCOPED_TRACE(mode);
    Compare([&](TRenderCPU* gl) {
      gl->EnableDepthTest(true);
      gl->DepthFunc(GL_GEQUAL);
      Bind(gl, positions, colors);
      gl->DrawArrays(mode, 0, 240);
      gl->DrawElements(mode, 240, GL_UNSIGNED_BYTE, indices.data());
    });
  }
}

TEST_F(VertexBatches, AllArraysMayComeInAnyType) {
  constexpr int kVertices = 150;
  std::vector<unsigned char> bytes(64 * kVertices);
  for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
    const double value = Real(-1.0, 1.0);
    const auto narrow = static_cast<float>(value);
    if (i % 64 < 32) {
      std::memcpy(bytes.data() + i, &value, 8);
    } else {
      std::memcpy(bytes.data() + i, &narrow, 4);
      std::memcpy(bytes.data() + i + 4, &narrow, 4);
    }
  }
  for (const unsigned int mode : {GL_POINTS, GL_LINES, GL_TRIANGLES, GL_QUADS}) {
    for (const unsigned int type : {GL_FLOAT, GL_DOUBLE, GL_UNSIGNED_BYTE}) {
      for (int size = 1; size <= 4; ++size) {
        SCOPED_TRACE(testing::Message() << mode << ", type " << type << ", size " << size);
        const unsigned char* const at = bytes.data() + (type == GL_DOUBLE ? 0 : 32);
        Compare([&](TRenderCPU* gl) {
          gl->VertexPointer(size, type, 64, at);
          gl->ColorPointer(size, type, 64, at);
          gl->NormalPointer(type, 64, at);
          gl->_EnableClientState(GL_VERTEX_ARRAY, true);
          gl->_EnableClientState(GL_COLOR_ARRAY, true);
          gl->DrawArrays(mode, 0, kVertices);
          gl->_EnableClientState(GL_NORMAL_ARRAY, true);
          gl->EnableLighting(true);
          gl->EnableLight(0, true);
          gl->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
          gl->DrawArrays(mode, 0, kVertices);
        });
      }
    }
  }
}

// The slot that no shader fills is scaled by each triangle that is drawn, and by no other.
TEST_F(VertexBatches, TheSpareSlotIsLeftAsEver) {
  const std::vector<float> positions = Shapes(240, 1.3, 0.3);
  const std::vector<unsigned char> colors = Colors(240);
  const std::vector<float> coordinates = Shapes(160, 1.0, 0.5);
  for (const unsigned int mode : kModes) {
    SCOPED_TRACE(mode);
    Compare([&](TRenderCPU* gl) {
      gl->MatrixMode(GL_PROJECTION);
      gl->Frustum(-1, 1, -1, 1, 0.5, 4);
      gl->Translated(0, 0, -1.5);
      gl->TexCoordPointer(2, GL_FLOAT, 0, coordinates.data());
      gl->_EnableClientState(GL_TEXTURE_COORD_ARRAY, true);
      Bind(gl, positions, colors);
      gl->_EnableTexture2D(0, true);
      gl->DrawArrays(mode, 0, 240);
      gl->_EnableTexture2D(0, false);
      gl->EnableCullFace(true);
      gl->CullFace(GL_FRONT);
      gl->DrawArrays(mode, 0, 240);
      gl->CullFace(GL_FRONT_AND_BACK);
      gl->DrawArrays(mode, 0, 240);
    });
  }
}

// Culled triangles leave which way they faced, and what is lit after them takes its side from that.
TEST_F(VertexBatches, TheLastCulledFaceIsKept) {
  std::vector<float> positions = Shapes(120, 0.8, 0.1);
  const std::vector<unsigned char> colors = Colors(120);
  for (int last = 3; last <= 120; last += 3) {
    for (std::size_t i = 3 * static_cast<std::size_t>(last) - 9; i < positions.size(); ++i) {
      positions[i] = 2.0f; // from here on everything is outside
    }
    Compare([&](TRenderCPU* gl) {
      gl->EnableCullFace(true);
      gl->CullFace(GL_FRONT_AND_BACK);
      Bind(gl, positions, colors);
      gl->DrawArrays(GL_TRIANGLES, 0, 120);
      gl->DrawArrays(GL_QUADS, 0, 120);
    });
    positions = Shapes(120, 0.8, 0.1);
  }
}

TEST_F(VertexBatches, PointsOnOnePixelGoInOrder) {
  std::vector<float> positions;
  for (int i = 0; i < 3 * 200; ++i) {
    positions.push_back(static_cast<float>(static_cast<int>(m_Random() % 3) - 1) * 0.04f);
  }
  const std::vector<unsigned char> colors = Colors(200);
  for (const bool stencil : {false, true}) {
    for (const bool depth : {false, true}) {
      for (const int mask : {15, 5, 0}) {
        Compare([&](TRenderCPU* gl) {
          gl->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
          gl->EnableBlend(true);
          gl->ColorMask(mask & 1, mask >> 1 & 1, mask >> 2 & 1, mask >> 3 & 1);
          gl->_Enable(GL_STENCIL_TEST, stencil);
          gl->StencilFunc(GL_GREATER, 40, 0xFF);
          gl->StencilOp(GL_INVERT, GL_DECR, GL_INCR);
          gl->EnableDepthTest(depth);
          gl->DepthFunc(GL_GEQUAL);
          Bind(gl, positions, colors);
          gl->DrawArrays(GL_POINTS, 0, 200);
        });
      }
    }
  }
}

// A caller's sampling function that gives each fragment it is called for another texel.
struct TCounting : TRenderCPU::TTexSampler {
  void Count(const vec_t_<double, 4>&, vec_t_<double, 4>* out) {
    m_BorderColor.x = m_BorderColor.x < 0.9 ? m_BorderColor.x + 0.01 : 0.0;
    *out = m_BorderColor;
  }
};

TEST_F(VertexBatches, TexturedPoints) {
  const std::vector<float> positions = Shapes(150, 0.9, 0.4);
  const std::vector<float> coordinates = Shapes(100, 1.0, 0.9);
  const std::vector<unsigned char> colors = Colors(150);
  const std::vector<unsigned char> texels = Colors(20);
  constexpr unsigned int kDecal = 0x2101; // leaves the colour of the fragment before
  for (const unsigned int env : {unsigned{GL_MODULATE}, unsigned{GL_REPLACE}, kDecal}) {
    for (int state = 0; state < 32; ++state) {
      SCOPED_TRACE(testing::Message() << "environment " << env << ", state " << state);
      Compare([&](TRenderCPU* gl) {
        unsigned int id = 0;
        gl->GenTextures(1, &id);
        gl->BindTexture(GL_TEXTURE_2D, id);
        gl->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                       texels.data());
        gl->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                          (state & 1) != 0 ? GL_LINEAR : GL_NEAREST);
        EXPECT_EQ(gl->GetError(), 0u);
        gl->_EnableTexture2D(0, true);
        gl->m_TexUnits[0].TexEnvMode = env;
        if ((state & 16) != 0) { // a function that is not the state's own
          gl->m_TexUnits[0].Sampler.m_GetValue =
              static_cast<TRenderCPU::TTexSampler::TGetValueFunc>(&TCounting::Count);
        }
        gl->EnableLighting((state & 2) != 0);
        gl->EnableLight(0, true);
        gl->EnableDepthTest((state & 4) != 0);
        gl->TexCoordPointer(2, GL_FLOAT, 0, coordinates.data());
        gl->_EnableClientState(GL_TEXTURE_COORD_ARRAY, (state & 8) != 0);
        Bind(gl, positions, colors);
        gl->DrawArrays(GL_POINTS, 0, 150);
      });
    }
  }
}

TEST_F(VertexBatches, PointsOnTheBorder) {
  std::vector<float> positions;
  for (int i = 0; i < 3 * 120; ++i) {
    const float side = (m_Random() & 1) != 0 ? 1.0f : -1.0f;
    const float next = std::nextafter(side, (m_Random() & 1) != 0 ? 2.0f : 0.0f);
    positions.push_back((m_Random() & 1) != 0 ? side : next);
  }
  const std::vector<unsigned char> colors = Colors(120);
  Compare([&](TRenderCPU* gl) {
    Bind(gl, positions, colors);
    gl->DrawArrays(GL_POINTS, 0, 120);
  });
}

TEST_F(VertexBatches, IndicesThatShareAPlaceInTheCache) {
  const std::vector<float> positions = Shapes(3 * 1024, 1.1, 0.4);
  const std::vector<unsigned char> colors = Colors(3 * 1024);
  std::vector<std::uint16_t> indices;
  for (int i = 0; i < 300; ++i) {
    indices.push_back(static_cast<std::uint16_t>(m_Random() % 3 * 1024 + m_Random() % 4));
  }
  for (const unsigned int mode : kModes) {
    SCOPED_TRACE(mode);
    Compare([&](TRenderCPU* gl) {
      Bind(gl, positions, colors);
      gl->DrawElements(mode, 300, GL_UNSIGNED_SHORT, indices.data());
      gl->EnableCullFace(true);
      gl->DrawElements(mode, 299, GL_UNSIGNED_SHORT, indices.data());
    });
  }
}

// Each vertex has a material of its own, and the last one's stays.
TEST_F(VertexBatches, ColourMaterialInEveryMode) {
  const std::vector<float> positions = Shapes(210, 0.9, 0.4);
  const std::vector<float> normals = Shapes(210, 0.5, 1.0);
  const std::vector<unsigned char> colors = Colors(210);
  std::vector<std::uint8_t> indices(210);
  for (std::uint8_t& index : indices) {
    index = static_cast<std::uint8_t>(m_Random() % 210);
  }
  indices[199] = indices[197]; // shaded before, and not the last one that is
  constexpr unsigned int kFaces[] = {GL_FRONT, GL_BACK, GL_FRONT_AND_BACK};
  constexpr unsigned int kParts[] = {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR, GL_EMISSION,
                                     GL_AMBIENT_AND_DIFFUSE};
  constexpr int kCounts[] = {200, 1, 2, 57};
  for (const unsigned int mode : kModes) {
    for (int state = 0; state < 60; ++state) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", state " << state);
      const bool indexed = state % 2 == 1;
      const unsigned int face = kFaces[state % 3];
      const unsigned int part = kParts[state % 5];
      const int count = kCounts[state / 2 % 4];
      Compare([&](TRenderCPU* gl) {
        gl->EnableLighting(state % 7 != 6);
        gl->EnableLight(0, true);
        gl->EnableLight(1, state % 4 == 3);
        gl->Materialf(GL_FRONT_AND_BACK, GL_SHININESS, 3);
        gl->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, state % 3);
        gl->_Enable(GL_NORMALIZE, state % 5 < 3);
        gl->_Enable(GL_COLOR_MATERIAL, true);
        gl->ColorMaterial(face, part);
        Bind(gl, positions, colors);
        gl->NormalPointer(GL_FLOAT, 0, normals.data());
        gl->_EnableClientState(GL_NORMAL_ARRAY, true);
        const TRenderCPU::TMaterial before = gl->m_MaterialFront; // the back has the same
        if (indexed) {
          gl->DrawElements(mode, count, GL_UNSIGNED_BYTE, indices.data());
        } else {
          gl->DrawArrays(mode, 3, count);
        }
        const int last = indexed ? indices[static_cast<std::size_t>(count) - 1] : 2 + count;
        const unsigned char* const color = colors.data() + std::ptrdiff_t{4} * last;
        for (std::size_t i = 0; i < 4; ++i) {
          const bool front = face != GL_BACK;
          const bool diffuse = part == GL_DIFFUSE || part == GL_AMBIENT_AND_DIFFUSE;
          EXPECT_DOUBLE_EQ(front && diffuse ? color[i] / 255.0 : before.Diffuse[i],
                           gl->m_MaterialFront.Diffuse[i]);
          EXPECT_DOUBLE_EQ(front && part == GL_EMISSION ? color[i] / 255.0 : before.Emission[i],
                           gl->m_MaterialFront.Emission[i]);
          EXPECT_DOUBLE_EQ(face != GL_FRONT && part == GL_SPECULAR ? color[i] / 255.0
                                                                   : before.Specular[i],
                           gl->m_MaterialBack.Specular[i]);
        }
      });
    }
  }
}

// --- Lines

// The closed form of a walk against the walk by its error.
TEST(LineWalks, StepsAsideAreThoseOfTheErrorWalk) {
  for (long long length = 1; length <= 70; ++length) {
    for (long long aside = 0; aside <= length; ++aside) {
      const int last = static_cast<int>(length) - 1;
      const TLineWalk walk = {0, {0, 0}, {1, 1}, length, aside, 0, last};
      long long error = -length;
      long long steps = 0;
      int first = 0; // with as many steps
      for (int i = 0; i < length; ++i) {
        ASSERT_EQ(walk.MinorStepsAt(i), steps) << length << ", " << aside << ", " << i;
        error += 2 * aside;
        if (error >= 0 || i == last) {
          ASSERT_EQ(walk.LastAsideWith(first), i) << length << ", " << aside;
          ASSERT_EQ(walk.LastAsideWith(i), i) << length << ", " << aside;
          error -= 2 * length;
          ++steps;
          first = i + 1;
        }
      }
    }
  }
}

// The number below `modulus` whose product with `value` leaves 1; the two have no common divisor.
long long InverseModulo(long long value, long long modulus) {
  long long a = value;
  long long b = modulus;
  long long x = 1;
  long long y = 0;
  while (b != 0) {
    const long long q = a / b;
    a = std::exchange(b, a - q * b);
    x = std::exchange(y, x - q * y);
  }
  return ((x % modulus) + modulus) % modulus;
}

// The longest walks, at the pixels whose quotient is an integer or comes nearest to one.
TEST(LineWalks, StepsAsideAreExactNextToIntegers) {
  std::mt19937 random(5);
  int tried = 0;
  for (long long length = (1 << 22) - 1; length > (1 << 22) - 3000; length -= 2) { // odd
    const long long aside = length - 1 - static_cast<long long>(random() % 5000);
    if (std::gcd(aside, length) != 1) {
      continue;
    }
    // Where 2 aside i + length leaves `rest` divided by 2 length: rest is odd, as length is.
    for (const long long rest : {-3, -1, 1, 3}) {
      const long long half = (((rest - length) / 2) % length + length) % length;
      const long long i = half * InverseModulo(aside, length) % length;
      const TLineWalk walk = {0, {0, 0}, {1, 1}, length, aside, 0, 0};
      const long long n = 2 * aside * i + length;
      ASSERT_EQ((n - rest) % (2 * length), 0);
      ASSERT_EQ(walk.MinorStepsAt(i), n / (2 * length)) << length << ", " << aside << ", " << i;
      ++tried;
    }
  }
  EXPECT_GT(tried, 1000);
  // Quotients that are integers: length = 2 a b, aside = a, at odd multiples of b.
  for (const long long a : {1, 3, 49, 127, 343, 1447, 2047}) {
    for (const long long b : {1, 5, 49, 511, 1023}) {
      for (long long m = 1; m <= a; m += 1 + a / 50) {
        const TLineWalk walk = {0, {0, 0}, {1, 1}, 2 * a * b, a, 0, 0};
        ASSERT_EQ(walk.MinorStepsAt((2 * m - 1) * b), m) << a << ", " << b;
        ASSERT_EQ(walk.MinorStepsAt((2 * m - 1) * b - 1), m - 1) << a << ", " << b;
      }
    }
  }
}

// Steep lines of several runs, with steps aside at every place of a vector.
TEST(LineWalks, LongScatteredLines) {
  struct TTall : zx_test::TLevelTest {
    TTall() : TLevelTest(97, 1500) {}
    void TestBody() override {}
    using TLevelTest::Expect;
  } levels;
  std::mt19937 random(11);
  std::vector<float> positions;
  std::vector<unsigned char> colors;
  for (int i = 0; i < 120; ++i) {
    for (int k = 0; k < 3; ++k) {
      positions.push_back(static_cast<float>(random() % 2001) * 0.0012f - 1.2f);
    }
    for (int k = 0; k < 4; ++k) {
      colors.push_back(static_cast<unsigned char>(random()));
    }
  }
  for (int state = 0; state < 32; ++state) {
    levels.Expect("state " + std::to_string(state), [&](TRenderCPU& gl) {
      gl.EnableDepthTest((state & 1) != 0);
      gl.DepthMask((state & 2) != 0);
      gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      gl.EnableBlend((state & 4) != 0);
      gl._Enable(GL_STENCIL_TEST, (state & 8) != 0);
      gl.StencilFunc(GL_GREATER, 1, 0xFF);
      gl.StencilOp(GL_INVERT, GL_DECR, GL_INCR);
      gl.VertexPointer(3, GL_FLOAT, 0, positions.data());
      gl.ColorPointer(4, GL_UNSIGNED_BYTE, 0, colors.data());
      gl._EnableClientState(GL_VERTEX_ARRAY, true);
      gl._EnableClientState(GL_COLOR_ARRAY, (state & 16) != 0);
      gl.DrawArrays(GL_LINES, 0, 120);
    });
  }
}

TEST_F(VertexBatches, LinesOfAllDirections) {
  const std::vector<unsigned char> colors = Colors(2 * 41 * 41);
  std::vector<float> positions;
  for (int y = -20; y <= 20; ++y) {
    for (int x = -20; x <= 20; ++x) {
      for (const int scale : {-1, 1}) {
        positions.push_back(static_cast<float>(scale * x) * 2.0f / kWidth);
        positions.push_back(static_cast<float>(scale * y) * 2.0f / kHeight);
        positions.push_back(static_cast<float>(x) * 0.04f);
      }
    }
  }
  for (const bool tests : {false, true}) {
    for (const unsigned int mode : {GL_LINES, GL_LINE_STRIP}) {
      Compare([&](TRenderCPU* gl) {
        gl->EnableDepthTest(tests);
        gl->DepthFunc(GL_LEQUAL);
        gl->_Enable(GL_STENCIL_TEST, tests);
        gl->StencilFunc(GL_NOTEQUAL, 3, 0xFF);
        gl->StencilOp(GL_ZERO, GL_KEEP, GL_INCR);
        Bind(gl, positions, colors);
        gl->DrawArrays(mode, 0, 2 * 41 * 41);
      });
    }
  }
}

// A pixel that was drawn last is left out, where lines meet and for lines of one pixel.
TEST_F(VertexBatches, LinesThatShareAPixel) {
  std::vector<float> positions;
  int at[2] = {30, 23};
  for (int i = 0; i < 400; ++i) {
    const bool along = (m_Random() & 1) != 0;
    at[along ? 0 : 1] += static_cast<int>(m_Random() % 7) - 3;
    at[0] = std::clamp(at[0], 0, kWidth - 1);
    at[1] = std::clamp(at[1], 0, kHeight - 1);
    positions.push_back((static_cast<float>(at[0]) + 0.5f) * 2.0f / kWidth - 1.0f);
    positions.push_back((static_cast<float>(at[1]) + 0.5f) * 2.0f / kHeight - 1.0f);
    positions.push_back(0.0f);
  }
  const std::vector<unsigned char> colors = Colors(400);
  for (const unsigned int mode : {GL_LINES, GL_LINE_STRIP, GL_LINE_LOOP}) {
    Compare([&](TRenderCPU* gl) {
      gl->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      gl->EnableBlend(true);
      Bind(gl, positions, colors);
      gl->DrawArrays(mode, 0, 400);
    });
  }
}

} // namespace
