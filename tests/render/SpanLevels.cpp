// Every instruction set must leave what the plain walker leaves, to the last bit.

#include <cstdlib>

#include <gtest/gtest.h>

#include "../../src/render/SpanJob.h"
#include "RandomScene.h"

namespace {

using zxtest::TRandomScene;

constexpr const char* kLevels[] = {"SSSE3", "AVX2", "AVX3"};

std::vector<unsigned char> RunAt(const char* level, const TRandomScene& scene, int calls) {
  EXPECT_TRUE(Zx3D::LimitSpanLevel(level));
  return scene.Run(calls);
}

// The first call after which two levels differ.
int FirstDifference(const char* level, const TRandomScene& scene) {
  int same = 0;
  int different = TRandomScene::kCalls;
  while (different - same > 1) {
    const int middle = (same + different) / 2;
    (RunAt("plain", scene, middle) == RunAt(level, scene, middle) ? same : different) = middle;
  }
  return different - 1;
}

class SpanLevels : public testing::Test {
protected:
  ~SpanLevels() override { Zx3D::LimitSpanLevel(nullptr); }
};

// More scenes can be asked for: ZX_SCENES=20000.
int SceneCount() {
  const char* const asked = std::getenv("ZX_SCENES");
  return asked != nullptr ? std::atoi(asked) : 300;
}

TEST_F(SpanLevels, RandomScenesAreTheSameAtEveryLevel) {
  int compared = 0;
  for (int seed = 1; seed <= SceneCount(); ++seed) {
    const TRandomScene scene(static_cast<std::uint32_t>(seed));
    const std::vector<unsigned char> plain = RunAt("plain", scene, TRandomScene::kCalls);
    for (const char* level : kLevels) {
      if (!Zx3D::LimitSpanLevel(level)) {
        continue; // not on this processor
      }
      ++compared;
      if (scene.Run(TRandomScene::kCalls) != plain) {
        const int call = FirstDifference(level, scene);
        FAIL() << "seed " << seed << ", level " << level << ", call " << call << ": "
               << scene.Describe(call);
      }
    }
  }
  EXPECT_GT(compared, 0) << "no level to compare";
}

TEST_F(SpanLevels, TheHookNamesAndRefuses) {
  EXPECT_TRUE(Zx3D::LimitSpanLevel("plain"));
  EXPECT_STREQ(Zx3D::GetSpanLevel(), "plain");
  EXPECT_EQ(Zx3D::GetSpanKernels(), nullptr);
  EXPECT_FALSE(Zx3D::LimitSpanLevel("8086"));
  EXPECT_TRUE(Zx3D::LimitSpanLevel(nullptr));
  EXPECT_STRNE(Zx3D::GetSpanLevel(), "8086");
}

} // namespace
