// Records that a host hands to the rasteriser without having them clipped: what of them lies on the
// surface is drawn, and nothing else.

#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LevelTest.h"
#include "Scene.h"
#include <ZxCore3D/render/GLEnums.h>

namespace {

using Zx3D::TRenderCPU;

constexpr int kWidth = 40;
constexpr int kHeight = 12;
constexpr std::size_t kGuard = 64 * kWidth * 4;
constexpr std::uint8_t kUntouched = 0xA5;

class UnclippedRecords : public zx_test::TLevelTest {
protected:
  UnclippedRecords() : TLevelTest(kWidth, kHeight) {}

  /// Draws into a surface between rows that nobody may write.
  static void Draw(TRenderCPU& gl, const std::array<vec_t_<double, 2>, 3>& corners) {
    std::vector<std::uint8_t> block(kGuard + kWidth * kHeight * 4 + kGuard, kUntouched);
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(kWidth, kHeight, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
                               block.data() + kGuard));
    gl.BindColorSurface(&surface);
    gl.Begin(GL_TRIANGLES);
    TRenderCPU::VAR_DATA v[3] = {};
    for (std::size_t i = 0; i < 3; ++i) {
      v[i].Slots[0] = {corners[i].x, corners[i].y, 0.25, 1.0};
      v[i].Slots[static_cast<std::size_t>(gl.m_VarColor)] = {i == 0 ? 1.0 : 0.0, i == 1 ? 1.0 : 0.0,
                                                             0.5, 1.0};
    }
    gl.RasterizeTriangle(v);
    gl.End();
    gl.BindColorSurface(nullptr);
    const auto isUntouched = [](std::uint8_t byte) { return byte == kUntouched; };
    EXPECT_TRUE(std::all_of(block.data(), block.data() + kGuard, isUntouched));
    EXPECT_TRUE(std::all_of(block.data() + block.size() - kGuard, block.data() + block.size(),
                            isUntouched));
    EXPECT_FALSE(std::all_of(surface.Data, surface.Data + surface.DataSize, isUntouched));
    std::copy_n(surface.Data, surface.DataSize, gl.m_ColorSurface->Data);
  }
};

TEST_F(UnclippedRecords, ReachBeyondEachSide) {
  const std::array<vec_t_<double, 2>, 3> shapes[] = {
      {{{-0.5, -0.3}, {0.5, -0.2}, {0.1, 3.0}}},  // above, from the middle on
      {{{-0.5, 0.3}, {0.5, 0.2}, {0.1, -3.0}}},   // below
      {{{-3.0, -0.5}, {0.5, -0.4}, {0.1, 0.6}}},  // left
      {{{3.0, -0.5}, {-0.5, -0.4}, {0.1, 0.6}}},  // right
      {{{-4.0, -4.0}, {4.0, -4.0}, {0.0, 5.0}}},  // all round
      {{{-2.0, 0.1}, {2.5, 0.2}, {2.5, 4.0}}},    // two sides
      {{{-0.9, 0.5}, {0.9, 2.0}, {-0.9, 2.5}}},   // a short edge and a long one above
      {{{-0.9, -0.2}, {0.9, 1.5}, {-0.9, 3.5}}}}; // both minor edges
  for (const auto& corners : shapes) {
    for (const unsigned int hint : {GL_FASTEST, GL_NICEST}) {
      for (const bool depth : {false, true}) {
        Expect("from " + std::to_string(corners[0].x) + ", " + std::to_string(corners[0].y),
               [&](TRenderCPU& gl) {
                 gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, hint);
                 gl.EnableDepthTest(depth);
                 Draw(gl, corners);
               });
      }
    }
  }
}

} // namespace
