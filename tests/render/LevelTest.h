#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Scene.h"
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace zx_test {

/// A test that draws through the reference path and at every instruction set of this processor, and
/// compares everything left.
class TLevelTest : public testing::Test {
protected:
  using TDraw = std::function<void(Zx3D::TRenderCPU&)>;

  TLevelTest(int width, int height) : m_Width(width), m_Height(height) {}
  ~TLevelTest() override { Zx3D::LimitSpanLevel(nullptr); }

  void Expect(const std::string& what, const TDraw& draw) {
    const std::vector<std::uint8_t> reference = RunAt("reference", draw);
    for (const char* const level : Zx3D::kSpanLevels) {
      if (Zx3D::LimitSpanLevel(level)) {
        EXPECT_TRUE(reference == RunAt(level, draw)) << level << ", " << what;
      }
    }
  }

private:
  std::vector<std::uint8_t> RunAt(const char* level, const TDraw& draw) {
    EXPECT_TRUE(Zx3D::LimitSpanLevel(level));
    const TScene scene(m_Width, m_Height);
    scene->Clear(true, true, true);
    draw(*scene);
    return EverythingLeft(*scene);
  }

  int m_Width;
  int m_Height;
};

} // namespace zx_test
