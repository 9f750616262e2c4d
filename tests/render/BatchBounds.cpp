// The first shape of a batch, and modes that draw none.

#include <ZxCore3D/render/TRenderCPU.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LevelTest.h"
#include "Scene.h"
#include <ZxCore3D/render/GLEnums.h>

namespace {

using Zx3D::TRenderCPU;

class BatchBounds : public zx_test::TLevelTest {
protected:
  BatchBounds() : TLevelTest(40, 24) {}
};

// The z of a vertex becomes half of its z and its w: a corner of zeros alone has an infinite 1/w.
constexpr double kThroughZero[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.5, 1, 0, 0, 0, 0};

// The first shape leaves NaN in the slot that no shader fills, and of all others a single one is
// cut and carries it on, though nothing of it is seen: the first of a later batch, whatever a batch
// holds.
TEST_F(BatchBounds, OnlyTheFirstShapeIsCut) {
  for (const unsigned int mode : {GL_TRIANGLES, GL_QUADS, GL_LINES}) {
    const std::size_t corners = mode == GL_QUADS ? 4 : mode == GL_TRIANGLES ? 3 : 2;
    for (const std::size_t cut : {16, 24, 32, 48, 64, 96}) {
      for (std::size_t zero = 0; zero < corners; ++zero) {
        for (std::size_t lone = 0; lone < corners; ++lone) {
          const std::size_t shapes = cut + 3;
          std::vector<double> positions;
          for (std::size_t s = 0; s < shapes; ++s) {
            for (std::size_t c = 0; c < corners; ++c) {
              const double turn = 1.5 * static_cast<double>(c);
              const double x = 0.3 * std::cos(turn);
              const double y = 0.3 * std::sin(turn);
              if (s == cut) { // across the left plane, above the upper one
                positions.insert(positions.end(), {c == lone ? -2 : x, 3 + y, 1.0});
              } else { // seen; in the first, one corner is zeros
                const double r = s == 0 && c == zero ? 0.0 : 1.0;
                positions.insert(positions.end(), {r * x, r * y, r});
              }
            }
          }
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

TEST_F(BatchBounds, UnknownModesDrawNothing) {
  const std::vector<float> positions = {-0.9f, -0.9f, 0.9f, -0.9f, 0.9f, 0.9f,
                                        -0.9f, 0.9f,  0.0f, 0.5f,  0.5f, 0.0f};
  const std::uint8_t indices[] = {0, 1, 2, 3, 4, 5};
  for (const unsigned int mode : {9u, 10u, 99u, ~0u}) {
    Expect(std::to_string(mode), [&](TRenderCPU& gl) {
      gl.VertexPointer(2, GL_FLOAT, 0, positions.data());
      gl.EnableClientState(GL_VERTEX_ARRAY);
      gl.DrawArrays(GL_TRIANGLES, 0, 3);
      ASSERT_EQ(gl.GetError(), 0u);
      const std::vector<std::uint8_t> before = zx_test::AllBytes(gl);
      gl.DrawArrays(mode, 0, 6);
      EXPECT_EQ(gl.GetError(), static_cast<unsigned int>(GL_INVALID_ENUM));
      gl.DrawElements(mode, 6, GL_UNSIGNED_BYTE, indices);
      EXPECT_EQ(gl.GetError(), static_cast<unsigned int>(GL_INVALID_ENUM));
      EXPECT_TRUE(zx_test::AllBytes(gl) == before);
      EXPECT_EQ(gl.m_Pending, 0);
    });
  }
}

} // namespace
