#include <ZxCore3D/module/Module.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include <ZxCore3D/util/TPerformCounter.h>

// The life cycle through the library's exported interface.

namespace {

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

TEST(Module, DeinitWithoutInitDoesNothing) {
  const std::int64_t frequency = Zx3D::TPerformCounter::s_tFreq;
  const std::int64_t start = Zx3D::TPerformCounter::s_tStart;
  Deinit_ZxCore3D();
  Deinit_ZxCore3D();
  EXPECT_EQ(frequency, Zx3D::TPerformCounter::s_tFreq);
  EXPECT_EQ(start, Zx3D::TPerformCounter::s_tStart);
  const std::int64_t before = Now();
  Init_ZxCore3D(); // the count stayed 0: this one does the work
  EXPECT_LE(before, Zx3D::TPerformCounter::s_tStart);
  Deinit_ZxCore3D();
}

TEST(Module, StartsTheTimeBaseOnTheFirstInitOnly) {
  const std::int64_t before = Now();
  Init_ZxCore3D();
  const std::int64_t after = Now();
  EXPECT_EQ(1000000000, Zx3D::TPerformCounter::s_tFreq);
  const std::int64_t start = Zx3D::TPerformCounter::s_tStart;
  EXPECT_LE(before, start);
  EXPECT_GE(after, start);

  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  Init_ZxCore3D();
  Init_ZxCore3D();
  EXPECT_EQ(start, Zx3D::TPerformCounter::s_tStart);

  Deinit_ZxCore3D();
  Deinit_ZxCore3D();
  Init_ZxCore3D(); // still one outstanding
  EXPECT_EQ(start, Zx3D::TPerformCounter::s_tStart);
  Deinit_ZxCore3D();
  Deinit_ZxCore3D();
  EXPECT_EQ(start, Zx3D::TPerformCounter::s_tStart); // the end leaves it
  Deinit_ZxCore3D();                                 // one too many

  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  Init_ZxCore3D(); // a start anew repeats all steps
  EXPECT_LT(start, Zx3D::TPerformCounter::s_tStart);
  Deinit_ZxCore3D();
}

TEST(Module, ExportsFourIdentifiers) {
  const unsigned char bytes[16] = {0xf4, 0xb1, 0x28, 0xd5, 0x96, 0x41, 0x89, 0x41,
                                   0x94, 0x5c, 0x88, 0x4a, 0x67, 0xba, 0xdd, 0x00};
  const struct {
    const boost::uuids::uuid* Id;
    unsigned char Last;
  } rows[] = {{&IID_IProperties, 0x21},
              {&IID_ICommands, 0x22},
              {&IID_IGeometries, 0x23},
              {&IID_IObjectHandlers, 0x24}};
  for (const auto& row : rows) {
    EXPECT_EQ(16u, sizeof(*row.Id));
    EXPECT_EQ(0, std::memcmp(bytes, row.Id, 15));
    EXPECT_EQ(row.Last, reinterpret_cast<const unsigned char*>(row.Id)[15]);
  }
}

} // namespace
