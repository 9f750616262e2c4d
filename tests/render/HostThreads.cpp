// Threads of a host that are not as usual: with a small stack, and with another rounding mode.

#include <cfenv>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SmallStack.h"

#include "LevelTest.h"

namespace {

using Zx3D::TRenderCPU;
using zx_test::TScene;

constexpr int kSize = 32;
constexpr int kVertices = 72; // more than a batch has shapes

// Everything that draws, clipped by all planes, lit and textured, in one of `step` states; and what
// moves pixels and state.
void DrawAll(TRenderCPU& gl, int step) {
  std::vector<std::uint8_t> texels(4 * 16 * 16);
  for (std::size_t i = 0; i < texels.size(); ++i) {
    texels[i] = static_cast<std::uint8_t>(i * 37);
  }
  unsigned int texture = 0;
  gl.GenTextures(1, &texture);
  gl.BindTexture(GL_TEXTURE_2D, texture);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 16, 16, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  std::vector<double> positions;
  std::vector<double> colors;
  std::vector<std::uint16_t> indices;
  for (int i = 0; i < kVertices; ++i) {
    const double reach = i % 5 == 0 ? 3 : 0.9;
    positions.insert(positions.end(),
                     {reach * (i * 37 % 21 - 10) / 10.0, reach * (i * 53 % 19 - 9) / 9.0,
                      reach * (i * 29 % 11 - 5) / 5.0});
    colors.insert(colors.end(), {0.1 * (i % 10), 0.5, 0.25 + 0.002 * i, 0.75});
    indices.push_back(static_cast<std::uint16_t>(i * 7 % kVertices));
  }
  gl.VertexPointer(3, GL_DOUBLE, 0, positions.data());
  gl.NormalPointer(GL_DOUBLE, 0, positions.data());
  gl.ColorPointer(4, GL_DOUBLE, 0, colors.data());
  gl.TexCoordPointer(3, GL_DOUBLE, 0, positions.data());
  for (const unsigned int array :
       {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY}) {
    gl.EnableClientState(array);
  }
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  gl.StencilOp(GL_INCR, GL_DECR, GL_INVERT);
  for (int variant = 0; variant < 32; variant += step) {
    gl.EnableLighting((variant & 1) != 0);
    gl.EnableLight(0, (variant & 1) != 0);
    gl.EnableLight(3, (variant & 1) != 0);
    (variant & 2) != 0 ? gl.Enable(GL_TEXTURE_2D) : gl.Disable(GL_TEXTURE_2D);
    gl.EnableBlend((variant & 4) != 0);
    (variant & 8) != 0 ? gl.Enable(GL_STENCIL_TEST) : gl.Disable(GL_STENCIL_TEST);
    gl.EnableDepthTest((variant & 8) != 0);
    gl.TexFilter2D(variant & 16 ? GL_LINEAR : GL_NEAREST, variant & 16 ? GL_LINEAR : GL_NEAREST);
    for (unsigned int mode = 0; mode < 10; ++mode) {
      gl.DrawArrays(mode, 0, kVertices);
      gl.DrawElements(mode, kVertices, GL_UNSIGNED_SHORT, indices.data());
      gl.Begin(mode);
      for (std::size_t i = 0; i < 60; ++i) {
        gl.Color4dv(&colors[4 * i]);
        gl.Vertex3dv(&positions[3 * i]);
      }
      gl.End();
    }
  }
  std::vector<std::uint8_t> pixels(4 * kSize * kSize);
  gl.ReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  gl.DrawPixels(kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  gl.PushAttrib(~0u);
  gl.PopAttrib();
  gl.Rotated(30, 1, 2, 3);
  gl.DeleteTextures(1, &texture);
}

TEST(SmallStack, HoldsAllDrawingAtEveryLevel) {
  std::vector<std::uint8_t> usual;
  for (const char* const level : Zx3D::kSpanPaths) {
    if (!Zx3D::LimitSpanLevel(level)) {
      continue;
    }
    std::vector<std::uint8_t> small;
    zx_test::OnASmallStack([&small] {
      const TScene scene(kSize, kSize);
      DrawAll(*scene, 3);
      EXPECT_TRUE(scene->SetSize(kSize + 1, kSize));
      EXPECT_TRUE(scene->SetSize(kSize, kSize));
      DrawAll(*scene, 3);
      small = zx_test::AllBytes(*scene);
    });
    if (testing::Test::IsSkipped()) {
      break;
    }
    if (usual.empty()) {
      const TScene scene(kSize, kSize);
      DrawAll(*scene, 3);
      scene->SetSize(kSize, kSize);
      DrawAll(*scene, 3);
      usual = zx_test::AllBytes(*scene);
    }
    EXPECT_TRUE(usual == small) << level;
  }
  Zx3D::LimitSpanLevel(nullptr);
}

// Pixels may then be others. But the mode stays the host's, nothing outside the surfaces is
// written, and afterwards all is as before.
TEST(RoundingMode, IsTheHostsAndChangesNothingForLong) {
  for (const char* const level : Zx3D::kSpanPaths) {
    if (!Zx3D::LimitSpanLevel(level)) {
      continue;
    }
    SCOPED_TRACE(level);
    TScene scene(kSize, kSize);
    scene->Clear(true, true, true);
    DrawAll(*scene, 5);
    const std::vector<std::uint8_t> before = zx_test::AllBytes(*scene);
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
      // Rows of the caller's around the surface.
      std::vector<std::uint8_t> block(4 * kSize * (kSize + 2), 0xA5);
      TDataSurface guarded;
      ASSERT_TRUE(guarded.Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
                                 block.data() + 4 * kSize));
      {
        TScene other(kSize, kSize);
        other->BindColorSurface(&guarded);
        ASSERT_EQ(0, std::fesetround(mode));
        DrawAll(*other, 5);
        EXPECT_EQ(mode, std::fegetround());
        std::fesetround(FE_TONEAREST);
        other->BindColorSurface(nullptr);
      }
      for (std::size_t i = 0; i < 4 * kSize; ++i) {
        ASSERT_EQ(0xA5, block[i]);
        ASSERT_EQ(0xA5, block[block.size() - 1 - i]);
      }
    }
    TScene again(kSize, kSize);
    again->Clear(true, true, true);
    DrawAll(*again, 5);
    EXPECT_TRUE(before == zx_test::AllBytes(*again));
  }
  Zx3D::LimitSpanLevel(nullptr);
}

} // namespace
