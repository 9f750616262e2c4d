// Draws by arrays in a mode that there is not.

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LevelTest.h"
#include "Scene.h"
#include <ZxCore3D/render/GLEnums.h>

namespace {

using Zx3D::TRenderCPU;

class UnknownModes : public zx_test::TLevelTest {
protected:
  UnknownModes() : TLevelTest(40, 24) {}
};

TEST_F(UnknownModes, DrawNothing) {
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
