// Every instruction set must leave what the reference walker leaves, to the last bit.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>

#if defined(__aarch64__)
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

#include <gtest/gtest.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/types/private/InstructionSets.h>

#include "RandomScene.h"
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace {

using zx_test::TRandomScene;

using Zx3D::kSpanLevels;

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
    (RunAt("reference", scene, middle) == RunAt(level, scene, middle) ? same : different) = middle;
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

// What this processor has, asked of the compiler's own support and not of Highway.
bool ProcessorHas(const std::string& level) {
#if defined(__x86_64__)
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                    __builtin_cpu_supports("bmi2");
  return level == "SSE2"    ? HWY_SSE2 != 0
         : level == "SSSE3" ? __builtin_cpu_supports("ssse3") != 0
         : level == "AVX2"  ? avx2
         : level == "AVX3"
             ? avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                   __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                   __builtin_cpu_supports("avx512cd")
             : false;
#elif defined(__aarch64__)
  // Older versions of Highway ask for a processor with AES, which none of the kernels uses.
  return level == "NEON" && (HWY_NEON_WITHOUT_AES != 0 || (getauxval(AT_HWCAP) & HWCAP_AES) != 0);
#else
  return false;
#endif
}

std::string BestOfProcessor() {
  std::string best = "reference";
  for (const char* const level : kSpanLevels) { // the better ones stand behind
    if (ProcessorHas(level)) {
      best = level;
    }
  }
  return best;
}

TEST_F(SpanLevels, RandomScenesAreTheSameAtEveryLevel) {
  if (BestOfProcessor() == "reference") {
    GTEST_SKIP() << "no vector registers on this processor that this version of Highway uses";
  }
  int compared = 0;
  for (int seed = 1; seed <= SceneCount(); ++seed) {
    const TRandomScene scene(static_cast<std::uint32_t>(seed));
    const std::vector<unsigned char> reference = RunAt("reference", scene, TRandomScene::kCalls);
    for (const char* level : kSpanLevels) {
      if (!Zx3D::LimitSpanLevel(level)) {
        continue; // not on this processor
      }
      ++compared;
      if (scene.Run(TRandomScene::kCalls) != reference) {
        const int call = FirstDifference(level, scene);
        FAIL() << "seed " << seed << ", level " << level << ", call " << call << ": "
               << scene.Describe(call);
      }
    }
  }
  EXPECT_GT(compared, 0) << "no level to compare";
  std::printf("%d comparisons of whole scenes\n", compared);
}

// What is mixed between texels at such coordinates is no number, and its byte is 0.
TEST_F(SpanLevels, TextureCoordinatesThatAreNoNumbers) {
  const std::vector<unsigned char> texels(4 * 4 * 4, 200);
  const auto draw = [&texels](const char* level, double coordinate, unsigned int environment) {
    Zx3D::LimitSpanLevel(level);
    Zx3D::TRenderCPU gl;
    gl.Create(16, 16, nullptr);
    unsigned int id = 0;
    gl.GenTextures(1, &id);
    gl.BindTexture(GL_TEXTURE_2D, id);
    gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    gl.TexFilter2D(GL_LINEAR, GL_LINEAR);
    gl._EnableTexture2D(0, true);
    gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<int>(environment));
    gl.Begin(GL_TRIANGLES);
    for (const int i : {0, 1, 2}) {
      gl.TexCoord2d(i == 0 ? coordinate : 0.5, 0.5);
      gl.Vertex2d(i == 1 ? 2.0 : -0.5, i == 2 ? 2.0 : -0.5);
    }
    gl.End();
    const TDataSurface& color = *gl.GetColorSurface();
    return std::vector<unsigned char>(color.Data, color.Data + color.DataSize);
  };
  for (const double coordinate : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e308, -1e200, 1e16}) {
    for (const unsigned int environment : {GL_REPLACE, GL_MODULATE}) {
      const std::vector<unsigned char> reference = draw("reference", coordinate, environment);
      for (const char* level : kSpanLevels) {
        if (Zx3D::LimitSpanLevel(level)) {
          EXPECT_EQ(draw(level, coordinate, environment), reference) << coordinate << ", " << level;
        }
      }
    }
  }
}

TEST_F(SpanLevels, TheHookNamesAndRefuses) {
  EXPECT_TRUE(Zx3D::LimitSpanLevel("reference"));
  EXPECT_STREQ(Zx3D::GetSpanLevel(), "reference");
  EXPECT_EQ(Zx3D::GetSpanKernels(), nullptr);
  EXPECT_FALSE(Zx3D::LimitSpanLevel("8086"));
  EXPECT_TRUE(Zx3D::LimitSpanLevel(nullptr));
  EXPECT_STRNE(Zx3D::GetSpanLevel(), "8086");
}

TEST_F(SpanLevels, TheBestOfTheProcessorIsChosen) {
  ASSERT_TRUE(Zx3D::LimitSpanLevel(nullptr));
  EXPECT_EQ(Zx3D::GetSpanLevel(), BestOfProcessor());
}

// Each level once, so that one which the processor lacks is reported as skipped.
class EachSpanLevel : public SpanLevels, public testing::WithParamInterface<const char*> {};

TEST_P(EachSpanLevel, RunsUnderItsOwnName) {
  const std::string level = GetParam();
  if (!ProcessorHas(level)) {
    EXPECT_FALSE(Zx3D::LimitSpanLevel(GetParam()));
    GTEST_SKIP() << "not on this processor, or not in this version of Highway";
  }
  ASSERT_TRUE(Zx3D::LimitSpanLevel(GetParam()));
  EXPECT_EQ(Zx3D::GetSpanLevel(), level);
  const Zx3D::TSpanKernels* const kernels = Zx3D::GetSpanKernels();
  ASSERT_NE(kernels, nullptr);
  EXPECT_EQ(kernels->Level, level);
  EXPECT_EQ(kernels->Lanes, level == "AVX3" ? 8 : level == "AVX2" ? 4 : 2);
  for (const char* const other : kSpanLevels) {
    if (other != level && Zx3D::LimitSpanLevel(other)) {
      EXPECT_NE(Zx3D::GetSpanKernels()->DrawTriangle, kernels->DrawTriangle) << other;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, EachSpanLevel, testing::ValuesIn(kSpanLevels),
                         [](const auto& info) { return std::string(info.param); });

} // namespace
