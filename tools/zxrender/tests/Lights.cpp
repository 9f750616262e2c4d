#include <gtest/gtest.h>

#include "Files.h"
#include "Scene.h"

namespace {

using namespace zx_scene;

// The red byte in the middle of a picture of the square, whose material is grey of 0.6.
int Middle(const TModel& model, double azimuth, const TStyle& style, bool zUp = false) {
  TView view;
  view.Width = view.Height = 20;
  view.Azimuth = azimuth;
  view.Elevation = 0;
  view.ZUp = zUp;
  std::string error;
  TScene scene;
  EXPECT_TRUE(scene.Create(model, 20, 20, style, &error, zUp)) << error;
  EXPECT_TRUE(scene.Draw(FrameModel(model, view, 1)[0], &error)) << error;
  return scene.ReadPicture()[4 * (10 * 20 + 10)];
}

TStyle FixedLight(double azimuth, double elevation) {
  TStyle style;
  style.Light = TLight::Fixed;
  style.LightAzimuth = azimuth;
  style.LightElevation = elevation;
  return style;
}

class Lights : public testing::Test {
protected:
  Lights() {
    m_Directory.Write("m.mtl", "newmtl m\nKd 0.6 0.6 0.6\n");
    std::vector<std::string> warnings;
    std::string error;
    EXPECT_TRUE(LoadModel(m_Directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n")),
                          &m_Model, &error, &warnings))
        << error;
  }

  TDirectory m_Directory;
  TModel m_Model;
};

TEST_F(Lights, NoneShowsTheColourItself) {
  TStyle style;
  style.Light = TLight::None;
  EXPECT_EQ(Middle(m_Model, 0, style), 153); // 0.6 * 255
  EXPECT_EQ(Middle(m_Model, 50, style), 153);
}

TEST_F(Lights, FixedOneFallsByItsAngleToTheFace) {
  // The square faces +z, the direction of the angles 0, 0. Key and fill light, seen from there:
  // 0.6 * (0.22 + 0.78 * cosine + 0.22 * the fill's cosine), 0.5 / |(0.8, 0.05, 0.5)| = 0.5293.
  const auto expected = [](double cosine) {
    return 0.6 * (0.22 + 0.78 * cosine + 0.22 * 0.5293) * 255;
  };
  EXPECT_NEAR(Middle(m_Model, 0, FixedLight(0, 0)), expected(1), 1);
  EXPECT_NEAR(Middle(m_Model, 0, FixedLight(60, 0)), expected(0.5), 1);
  EXPECT_NEAR(Middle(m_Model, 0, FixedLight(-60, 0)), expected(0.5), 1);
  EXPECT_NEAR(Middle(m_Model, 0, FixedLight(0, 60)), expected(0.5), 1);
  EXPECT_NEAR(Middle(m_Model, 0, FixedLight(180, 0)), expected(0), 1);
}

TEST_F(Lights, FixedOneStaysWhenTheCameraMoves) {
  const TStyle left = FixedLight(-80, 0);
  const TStyle right = FixedLight(80, 0);
  TStyle with;
  // What the fill light adds from a side is the same for both.
  EXPECT_EQ(Middle(m_Model, 40, left), Middle(m_Model, 40, right));
  EXPECT_NE(Middle(m_Model, 0, with), Middle(m_Model, 60, with));
}

TEST_F(Lights, FixedOneStandsByTheVerticalAxis) {
  // With z upward, a light at 90 degrees of elevation shines along -z, straight onto the square.
  EXPECT_EQ(Middle(m_Model, 30, FixedLight(0, 90), true),
            Middle(m_Model, 30, FixedLight(123, 90), true));
  EXPECT_EQ(DirectionOf(0, 90, true), (TPoint{0, 0, 1}));
  EXPECT_EQ(DirectionOf(0, 90, false), (TPoint{0, 1, 0}));
  EXPECT_EQ(DirectionOf(0, 0, false), (TPoint{0, 0, 1}));
  EXPECT_EQ(DirectionOf(90, 0, false), (TPoint{1, 0, 0}));
  EXPECT_EQ(DirectionOf(0, 0, true), (TPoint{0, -1, 0}));
}

} // namespace
