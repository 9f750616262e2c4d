// Lines that are set up together and drawn later: what they leave behind for callers who look, at
// every instruction set as by the reference path.

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/stages/LineWalk.h>

#include "LevelTest.h"

namespace {

using Zx3D::TLineWalk;
using Zx3D::TRenderCPU;

constexpr int kWidth = 83;
constexpr int kHeight = 71;

class LineBatches : public zx_test::TLevelTest {
protected:
  LineBatches() : TLevelTest(kWidth, kHeight) {}

  float Real(double low, double high) {
    return static_cast<float>(low + (high - low) * (m_Random() / 4294967295.0));
  }

  // Ends of lines anywhere within -spread to spread, of any depth.
  std::vector<float> Ends(int vertices, double spread) {
    std::vector<float> ends;
    for (int i = 0; i < vertices; ++i) {
      ends.insert(ends.end(), {Real(-spread, spread), Real(-spread, spread), Real(-0.9, 0.9)});
    }
    return ends;
  }

  std::mt19937 m_Random{23};
};

TEST(LineWalks, EndsAreFoundWithoutADivision) {
  for (long long length = 1; length <= 60; ++length) {
    for (long long aside = 0; aside <= length; ++aside) {
      for (const int axis : {0, 1}) {
        const TLineWalk walk = {axis, {3, 5}, {-1, 1}, length, aside, 0, 0};
        for (int i = 0; i < length; ++i) {
          // floor(1/2 + aside i / length), by integers
          const auto steps = static_cast<int>((2 * aside * i + length) / (2 * length));
          int x = 0;
          int y = 0;
          walk.At(i, &x, &y);
          ASSERT_EQ(3 - (axis == 0 ? i : steps), x) << length << ", " << aside << ", " << i;
          ASSERT_EQ(5 + (axis == 0 ? steps : i), y) << length << ", " << aside << ", " << i;
        }
      }
    }
  }
}

TEST(LineWalks, BetweenPixels) {
  const vec_t_<double, 4> begin = {10.25, 20.5, 0, 1};
  const vec_t_<double, 4> end = {7.75, 31.0, 0, 1};
  const TLineWalk steep = TLineWalk::Between({10, 21}, {8, 31}, begin, end);
  EXPECT_EQ(1, steep.Axis);
  EXPECT_EQ(10, steep.Major);
  EXPECT_EQ(2, steep.Minor);
  EXPECT_EQ(-1, steep.Step[0]);
  EXPECT_EQ(1, steep.Step[1]);
  EXPECT_EQ(20.5, steep.Begin);
  EXPECT_EQ(10.5, steep.Delta);
  // Within one pixel: that one, at t = 0.
  const TLineWalk dot = TLineWalk::Between({10, 21}, {10, 21}, begin, end);
  EXPECT_EQ(1, dot.Major);
  EXPECT_EQ(0, dot.Minor);
  EXPECT_EQ(0.0, (dot.From[dot.Axis] - dot.Begin) / dot.Delta);
}

// Lines in the window, cut, outside and of one pixel, by turns, so that those that are set up are
// drawn in between. The last ones of each draw leave no fragment.
TEST_F(LineBatches, LeaveTheLastPixelAndTheLastFragment) {
  std::vector<float> ends = Ends(220, 1.3);
  for (std::size_t i = 0; i < 220; i += 7) {
    std::copy_n(&ends[3 * i], 3, &ends[3 * (i + 1)]);
  }
  for (std::size_t i = 200; i < 220; ++i) {
    ends[3 * i] = ends[3 * i] < 0 ? -2.0f : 2.0f;
    ends[3 * i + 1] = 2.5f;
  }
  std::vector<float> colors;
  for (int i = 0; i < 4 * 220; ++i) {
    colors.push_back(Real(-0.2, 1.2));
  }
  for (int state = 0; state < 64; ++state) {
    for (const unsigned int mode : {GL_LINES, GL_LINE_STRIP, GL_LINE_LOOP}) {
      std::vector<std::pair<int, int>> last;
      Expect("state " + std::to_string(state), [&](TRenderCPU& gl) {
        if ((state & 1) != 0) {
          gl.MatrixMode(GL_PROJECTION);
          gl.Frustum(-1, 1, -1, 1, 1, 100);
          gl.MatrixMode(GL_MODELVIEW);
          gl.Translated(0, 0, -2);
        }
        gl.EnableDepthTest((state & 2) != 0);
        gl.DepthMask((state & 4) != 0);
        gl.EnableLighting((state & 8) != 0);
        gl.EnableLight(0, true);
        gl.ColorMask(1, (state & 16) == 0, 1, 1);
        gl.VertexPointer(3, GL_FLOAT, 0, ends.data());
        gl.ColorPointer(4, GL_FLOAT, 0, colors.data());
        gl._EnableClientState(GL_VERTEX_ARRAY, true);
        gl._EnableClientState(GL_COLOR_ARRAY, (state & 32) != 0);
        gl.DrawArrays(mode, 0, 220);
        last.emplace_back(gl.m_LastPixelX, gl.m_LastPixelY);
      });
      for (const std::pair<int, int>& pixel : last) {
        EXPECT_EQ(last.front(), pixel) << state << ", " << mode;
      }
    }
  }
}

// A caller's vertex shader finds the fragment of the line before, as do those after `End`.
TEST_F(LineBatches, AVertexShaderSeesTheFragmentBefore) {
  struct TLookingShader : zx_test::TPassVertexShader {
    TLookingShader() : TPassVertexShader(3) {}
    void Execute(TRenderCPU::VAR_DATA* v) override {
      for (std::size_t i = 0; i < 3; ++i) {
        Seen.push_back(m_Render->m_VarFragment[i]);
      }
      Seen.push_back(m_Render->m_Fragment.Color);
      TPassVertexShader::Execute(v);
    }
    std::vector<vec_t_<double, 4>> Seen;
  };
  const std::vector<float> ends = Ends(60, 1.1);
  for (const unsigned int mode : {GL_LINES, GL_LINE_STRIP, GL_LINE_LOOP}) {
    std::vector<std::vector<vec_t_<double, 4>>> seen;
    Expect("mode " + std::to_string(mode), [&](TRenderCPU& gl) {
      zx_test::THeld<TLookingShader> shader;
      gl._SetVertexShader(shader.Get());
      gl.Begin(mode);
      for (std::size_t i = 0; i < 60; ++i) {
        gl.Color4d(0.01 * static_cast<double>(i), 0.5, 0.9, 1.0);
        gl.Vertex4d(ends[3 * i], ends[3 * i + 1], ends[3 * i + 2], 1.0 + 0.01 * (i % 9));
      }
      gl.End();
      gl._SetVertexShader(nullptr);
      seen.push_back(shader->Seen);
    });
    for (const auto& level : seen) {
      ASSERT_EQ(seen.front().size(), level.size());
      EXPECT_EQ(0, std::memcmp(seen.front().data(), level.data(),
                               level.size() * sizeof(vec_t_<double, 4>)));
    }
  }
}

} // namespace
