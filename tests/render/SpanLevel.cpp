// Lets the whole suite run with one instruction set: ZX_SPAN_LEVEL=reference, or a name of
// kSpanLevels.

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include <ZxCore3D/render/kernels/SpanJob.h>

namespace {

constexpr int kSkipped = 77;

class TLevelListener : public testing::EmptyTestEventListener {
public:
  explicit TLevelListener(const char* level) : m_Level(level) {}

  // Each test starts at the level asked for, whatever the one before has set.
  void OnTestStart(const testing::TestInfo&) override { Zx3D::LimitSpanLevel(m_Level); }

private:
  const char* m_Level;
};

} // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const char* const level = std::getenv("ZX_SPAN_LEVEL");
  if (level != nullptr) {
    if (!Zx3D::LimitSpanLevel(level)) {
      std::printf("this processor has no %s\n", level);
      return kSkipped;
    }
    testing::UnitTest::GetInstance()->listeners().Append(new TLevelListener(level));
  }
  return RUN_ALL_TESTS();
}
