#include <algorithm>

#include <gtest/gtest.h>

#include <ZxPixelKit/Surface.h>

#include "Files.h"
#include "Samples.h"
#include "Scene.h"

namespace {

using namespace zx_scene;

class SampledScenes : public testing::Test {
protected:
  SampledScenes() {
    std::vector<std::string> warnings;
    std::string error;
    EXPECT_TRUE(
        LoadModel(m_Directory.Write("square.obj", SquareObj()), &m_Model, &error, &warnings))
        << error;
  }

  // A picture of the square of `width` by 3/4 of it.
  std::vector<std::uint8_t> Picture(int width, const TStyle& style,
                                    std::size_t* covered = nullptr) {
    TView view;
    view.Width = width;
    view.Height = width * 3 / 4;
    std::string error;
    TScene scene;
    EXPECT_TRUE(scene.Create(m_Model, view.Width, view.Height, style, &error)) << error;
    EXPECT_TRUE(scene.Draw(FrameModel(m_Model, view, 1)[0], &error)) << error;
    if (covered != nullptr) {
      *covered = scene.CountCovered();
    }
    return scene.ReadPicture();
  }

  TDirectory m_Directory;
  TModel m_Model;
};

TEST_F(SampledScenes, AreTheLargePictureAveraged) {
  for (const TColor background : {TColor{1, 0.5f, 0, 1}, TColor{0, 0, 0, 0}}) {
    for (const int side : {2, 4}) {
      TStyle style;
      style.Background = background;
      const std::vector<std::uint8_t> large = Picture(80 * side, style);
      DATASURFACE surface = {};
      ASSERT_TRUE(ds::Set(&surface, 80 * side, 60 * side, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
                          large.data()));
      std::vector<std::uint8_t> expected(80 * 60 * 4);
      AverageSamples(surface, side, expected.data());
      style.Samples = side * side;
      EXPECT_EQ(Picture(80, style), expected);
    }
  }
}

TEST_F(SampledScenes, CountPixelsAndNotSamples) {
  std::size_t one = 0;
  std::size_t many = 0;
  TStyle style;
  Picture(80, style, &one);
  style.Samples = 16;
  Picture(80, style, &many);
  // Pixels that are touched at all are a few more than those whose middle is covered: less than the
  // outline, which is below twice the width and height.
  EXPECT_GE(many, one);
  EXPECT_LE(many, one + 2 * (80 + 60));
}

TEST_F(SampledScenes, EdgesHaveShadesBetween) {
  TStyle style;
  style.Light = TLight::None;
  style.Background = {0, 0, 0, 1};
  const auto shades = [&] {
    std::vector<std::uint8_t> reds;
    const std::vector<std::uint8_t> picture = Picture(80, style);
    for (std::size_t i = 0; i < picture.size(); i += 4) {
      reds.push_back(picture[i]);
    }
    std::sort(reds.begin(), reds.end());
    return std::unique(reds.begin(), reds.end()) - reds.begin();
  };
  EXPECT_EQ(shades(), 2);
  style.Samples = 4;
  EXPECT_EQ(shades(), 5); // none to four samples of the square
  style.Samples = 16;
  EXPECT_GT(shades(), 10);
}

// A line of one pixel is as dark with many samples as with one.
TEST_F(SampledScenes, LinesKeepTheirWidth) {
  TStyle style;
  style.Wire = true;
  style.Background = {1, 1, 1, 1};
  const auto darkness = [&](const std::vector<std::uint8_t>& picture) {
    double sum = 0;
    for (std::size_t i = 0; i < picture.size(); i += 4) {
      // Of light, roughly: what is missing to white.
      const double c = picture[i] / 255.0;
      sum += 1 - c * c;
    }
    return sum;
  };
  const double one = darkness(Picture(200, style));
  style.Samples = 4;
  EXPECT_NEAR(darkness(Picture(200, style)), one, 0.35 * one);
  style.Samples = 16;
  const std::vector<std::uint8_t> many = Picture(200, style);
  EXPECT_NEAR(darkness(many), one, 0.35 * one);
  std::uint8_t darkest = 255;
  for (std::size_t i = 0; i < many.size(); i += 4) {
    darkest = std::min(darkest, many[i]);
  }
  EXPECT_LT(darkest, 60);
}

} // namespace
