// Random scenes through the renderer and through the plain formulation of ReferencePipeline.h.
// Every byte of colour, depth and stencil must agree.

#include <ZxCore3D/render/TRenderCPU.h>

#include <vector>

#include <gtest/gtest.h>

#include "ReferenceScene.h"

namespace {

using namespace zx_test;

constexpr const char* kModeNames[] = {"points",    "lines", "line loop", "line strip",
                                      "triangles", "strip", "fan",       "quads"};

/// Draws `count` random primitives of a mode in random states; returns the fragments written.
long RunScene(unsigned int seed, unsigned int mode) {
  TDice dice(seed);
  const int sizes[] = {1, 2, 3, 5, 8, 16, 17, 33};
  TPair pair(dice.Of(sizes), dice.Of(sizes));
  pair.Litter(dice);
  const int slots = 1 + dice.Below(8);
  for (int i = 0; i < 6; ++i) {
    TRefState state = RandomState(dice);
    state.CalcDepth = dice.Chance(15);
    state.Shader = MixingShader(dice.Chance(20), state.CalcDepth);
    const auto list =
        RandomVertices(dice, 1 + dice.Below(14), slots, pair.Reference.W, pair.Reference.H);
    pair.Draw(state, mode, list);
    const std::string difference = pair.Difference();
    if (!difference.empty()) {
      ADD_FAILURE() << kModeNames[mode] << ", seed " << seed << ", list " << i << ": "
                    << difference;
      break;
    }
  }
  return pair.Reference.Fragments;
}

class RandomScenes : public testing::TestWithParam<unsigned int> {};

TEST_P(RandomScenes, AgreeWithTheReference) {
  long fragments = 0;
  for (unsigned int seed = 0; seed < 250 && !HasFailure(); ++seed) {
    fragments += RunScene(seed * 8 + GetParam(), GetParam());
  }
  EXPECT_GT(fragments, 250) << "the scenes show too little";
}

INSTANTIATE_TEST_SUITE_P(Modes, RandomScenes, testing::Range(0u, 8u),
                         [](const testing::TestParamInfo<unsigned int>& info) {
                           std::string name = kModeNames[info.param];
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

TEST(Scenes, OfAllModesInOnePicture) {
  for (unsigned int seed = 0; seed < 60 && !HasFailure(); ++seed) {
    TDice dice(9000 + seed);
    TPair pair(24, 19);
    pair.Litter(dice);
    for (int i = 0; i < 12; ++i) {
      TRefState state = RandomState(dice);
      state.Shader = MixingShader(false, false);
      // Points and lines see the facing that the last triangle left.
      pair.Draw(state, static_cast<unsigned int>(dice.Below(8)),
                RandomVertices(dice, 12, 3, 24, 19));
      ASSERT_EQ("", pair.Difference()) << "seed " << seed << ", list " << i;
    }
  }
}

TEST(Scenes, OfSliversAndTinyTriangles) {
  TDice dice(4711);
  TPair pair(16, 16);
  TRefState state;
  state.Shader = MixingShader(false, false);
  for (int i = 0; i < 3000; ++i) {
    std::vector<TRefVertex> list = RandomVertices(dice, 3, 2, 16, 16);
    const double spread = dice.Chance(50) ? 0.05 : 1e-9;
    const double w = list[0][0][3];
    for (std::size_t k = 1; k < 3; ++k) {
      for (std::size_t c = 0; c < 2; ++c) {
        if (dice.Chance(80)) {
          list[k][0][c] = list[0][0][c] + dice.Between(-spread, spread);
        }
      }
      list[k][0][3] = w;
    }
    pair.Draw(state, GL_TRIANGLES, list);
    ASSERT_EQ("", pair.Difference()) << "triangle " << i;
  }
  EXPECT_GT(pair.Reference.Fragments, 100);
}

} // namespace
