#include <ZxCore3D/render/kernels/SpanJob.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Zx3D::GetSpanLevel;
using Zx3D::LimitSpanLevel;

class LevelSwitching : public testing::Test {
protected:
  LevelSwitching() {
    for (const char* const level : Zx3D::kSpanPaths) {
      LimitSpanLevel(nullptr);
      if (LimitSpanLevel(level)) {
        m_Levels.push_back(level);
      }
    }
  }
  ~LevelSwitching() override { LimitSpanLevel(nullptr); }

  std::vector<const char*> m_Levels;
};

// Tests take what one refuses for what the processor lacks: a limit that narrowed the next one
// would leave levels out of them, and nobody would see it.
TEST_F(LevelSwitching, FromEachLevelToEachOther) {
  for (const char* const from : m_Levels) {
    for (const char* const to : m_Levels) {
      ASSERT_TRUE(LimitSpanLevel(from)) << from;
      ASSERT_STREQ(GetSpanLevel(), from);
      EXPECT_TRUE(LimitSpanLevel(to)) << from << " to " << to;
      EXPECT_STREQ(GetSpanLevel(), to) << "from " << from;
    }
  }
}

TEST_F(LevelSwitching, ARefusedLevelLeavesWhatRuns) {
  for (const char* const level : m_Levels) {
    ASSERT_TRUE(LimitSpanLevel(level));
    ASSERT_STREQ(GetSpanLevel(), level);
    EXPECT_FALSE(LimitSpanLevel("8086"));
    EXPECT_STREQ(GetSpanLevel(), level);
  }
}

} // namespace
