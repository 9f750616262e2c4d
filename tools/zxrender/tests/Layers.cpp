#include "Layers.h"

#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "Files.h"
#include "Gltf.h"
#include "Scene.h"

namespace {

using namespace zx_scene;

struct TDrawn {
  // The layers of a model from a side, 120 by 90 pixels.
  TDrawn(const std::string& name, double azimuth, double elevation, TStyle style = TStyle()) {
    std::vector<std::string> warnings;
    std::string error;
    EXPECT_TRUE(LoadModel(name, &Model, &error, &warnings)) << error;
    TView view;
    view.Width = 120;
    view.Height = 90;
    view.Azimuth = azimuth;
    view.Elevation = elevation;
    Camera = FrameModel(Model, view, 1)[0];
    TScene scene;
    EXPECT_TRUE(scene.Create(Model, 120, 90, style, &error)) << error;
    EXPECT_TRUE(scene.DrawLayers(Camera, &Layers, &error)) << error;
    Covered = scene.CountCovered();
  }

  std::size_t CountSeen() const {
    std::size_t count = 0;
    for (const float depth : Layers.Depth) {
      count += std::isfinite(depth) ? 1 : 0;
    }
    return count;
  }

  TModel Model;
  TCamera Camera;
  TLayers Layers;
  std::size_t Covered;
};

// What `camera` makes of a vector; of a point if w is 1.
std::array<double, 3> ToEye(const TCamera& camera, const std::array<double, 3>& v, double w) {
  std::array<double, 3> eye;
  for (std::size_t r = 0; r < 3; ++r) {
    eye[r] = camera.View[r] * v[0] + camera.View[4 + r] * v[1] + camera.View[8 + r] * v[2] +
             camera.View[12 + r] * w;
  }
  return eye;
}

// The square lies in the plane z = 0: where a ray through the middle of a pixel meets it, and the
// normal there, follow from the camera alone.
void CheckSquare(const TDrawn& drawn, double side) {
  const std::array<double, 3> point = ToEye(drawn.Camera, {0, 0, 0}, 1);
  const std::array<double, 3> normal = ToEye(drawn.Camera, {0, 0, side}, 0);
  ASSERT_GT(drawn.CountSeen(), 1000u);
  for (std::size_t i = 0; i < drawn.Layers.Depth.size(); ++i) {
    if (!std::isfinite(drawn.Layers.Depth[i])) {
      EXPECT_EQ(drawn.Layers.Ids[i], 0u);
      EXPECT_EQ(drawn.Layers.Normals[3 * i + 2], 0.0f);
      continue;
    }
    const double x = ((i % 120) + 0.5) / 60 - 1;
    const double y = (static_cast<double>(i / 120) + 0.5) / 45 - 1;
    const double ray[3] = {x * drawn.Camera.HalfWidth, y * drawn.Camera.HalfHeight, -1};
    double along = 0;
    double across = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      along += normal[c] * point[c];
      across += normal[c] * ray[c];
      EXPECT_NEAR(drawn.Layers.Normals[3 * i + c], normal[c], 1e-6);
    }
    EXPECT_NEAR(drawn.Layers.Depth[i], along / across, 1e-6 * along / across);
    EXPECT_EQ(drawn.Layers.Ids[i], 1u);
  }
}

TEST(Layers, DepthAndNormalOfASquareFromTheFront) {
  const TDirectory directory;
  const TDrawn drawn(directory.Write("square.obj", SquareObj()), 30, 20);
  CheckSquare(drawn, 1);
  EXPECT_EQ(drawn.CountSeen(), drawn.Covered);
}

TEST(Layers, TheBackHasTheNormalThatIsSeen) {
  const TDirectory directory;
  const TDrawn drawn(directory.Write("square.obj", SquareObj()), 170, -35);
  CheckSquare(drawn, -1);
}

TEST(Layers, PixelsAreThoseOfThePicture) {
  const TDirectory directory;
  const TDrawn one(directory.Write("square.obj", SquareObj()), 30, 20);
  TStyle style;
  style.Samples = 16;
  const TDrawn many(directory / "square.obj", 30, 20, style);
  EXPECT_EQ(one.Layers.Depth, many.Layers.Depth);
  EXPECT_EQ(one.Layers.Normals, many.Layers.Normals);
  EXPECT_EQ(one.Layers.Ids, many.Layers.Ids);
}

TEST(Layers, NearerMeshHidesTheOther) {
  const TDirectory directory;
  const TDrawn drawn(directory.Write("two.gltf", GltfOf({{1, 0, 0, 0}, {0.5, 0, 0, 1}})), 0, 0);
  const std::size_t middle = 45 * 120 + 60;
  EXPECT_EQ(drawn.Layers.Ids[middle], 2u);
  std::size_t seen[3] = {};
  for (const std::uint32_t id : drawn.Layers.Ids) {
    ASSERT_LE(id, 2u);
    ++seen[id];
  }
  EXPECT_GT(seen[1], 1000u);
  EXPECT_GT(seen[2], 500u);
  // They lie one unit apart, and the first stands as far away as the camera looks.
  const double behind = -ToEye(drawn.Camera, {0, 0, 0}, 1)[2];
  EXPECT_NEAR(drawn.Layers.Depth[middle], behind - 1, 1e-5);
}

TEST(Layers, WhatLetsThroughByMoreThanAHalfIsLeftOut) {
  const TDirectory directory;
  const auto glass = [](const std::string& alpha) {
    return R"({"alphaMode":"BLEND","pbrMetallicRoughness":{"baseColorFactor":[1,1,1,)" + alpha +
           "]}}";
  };
  const std::size_t middle = 45 * 120 + 60;
  const TDrawn thin(
      directory.Write("thin.gltf", GltfOf({{1, 0, 0, 0}, {0.5, 0, 0, 1, glass("0.4")}})), 0, 0);
  EXPECT_EQ(thin.Layers.Ids[middle], 1u);
  const TDrawn thick(
      directory.Write("thick.gltf", GltfOf({{1, 0, 0, 0}, {0.5, 0, 0, 1, glass("0.6")}})), 0, 0);
  EXPECT_EQ(thick.Layers.Ids[middle], 2u);
}

TEST(Layers, PointsAndLinesHaveDepthAndId) {
  const TDirectory directory;
  const TDrawn drawn(directory.Write("cloud.ply",
                                     "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\n"
                                     "property float y\nproperty float z\nend_header\n"
                                     "0 0 0\n1 1 0\n"),
                     0, 0);
  EXPECT_EQ(drawn.CountSeen(), 2u);
  for (std::size_t i = 0; i < drawn.Layers.Ids.size(); ++i) {
    EXPECT_EQ(drawn.Layers.Ids[i], std::isfinite(drawn.Layers.Depth[i]) ? 1u : 0u);
  }
}

TLayers Made() {
  TLayers layers;
  layers.Width = 5;
  layers.Height = 1;
  layers.Depth = {0.0149f, 0.004f, 700, std::numeric_limits<float>::infinity(), 1};
  layers.Normals = {0, 0, 1, 1, 0, -1, 0.6f, -0.8f, 0, 0, 0, 0, 0, 0, 0};
  layers.Ids = {1, 2, 8, 0, 0x1FF};
  return layers;
}

template <class T> std::vector<T> ValuesOf(const TLayerImage& image) {
  std::vector<T> values(image.Pixels.size() / sizeof(T));
  std::memcpy(values.data(), image.Pixels.data(), image.Pixels.size());
  return values;
}

TEST(LayerImages, DepthCountsStepsFromOne) {
  const TLayerImage image = DepthAsSteps(Made(), 0.01);
  // Rounded; never 0, which is nothing; 70000 is too many.
  EXPECT_EQ(ValuesOf<std::uint16_t>(image), (std::vector<std::uint16_t>{1, 1, 65535, 0, 100}));
  EXPECT_EQ(image.Surface.Channels, 1);
  EXPECT_EQ(ValuesOf<float>(DepthAsFloats(Made())), Made().Depth);
}

TEST(LayerImages, NormalsSpreadOverSixteenBits) {
  const TLayerImage image = NormalsAsColors(Made());
  // 0 is 32767.5, which rounds up; 0.6 is 52428; -0.8 is 6553.5 less what float lacks of 0.8.
  EXPECT_EQ(ValuesOf<std::uint16_t>(image),
            (std::vector<std::uint16_t>{32768, 32768, 65535, 65535, 32768, 0, 52428, 6553, 32768, 0,
                                        0, 0, 32768, 32768, 32768}));
  EXPECT_EQ(ValuesOf<float>(NormalsAsFloats(Made())), Made().Normals);
  TLayers odd = Made();
  odd.Normals[0] = std::numeric_limits<float>::quiet_NaN();
  odd.Normals[1] = 1.0000001f;
  const std::vector<std::uint16_t> values = ValuesOf<std::uint16_t>(NormalsAsColors(odd));
  EXPECT_EQ(values[0], 0);
  EXPECT_EQ(values[1], 65535);
}

TEST(LayerImages, IdsHaveThePaletteOfSegmentationMaps) {
  EXPECT_EQ(ValuesOf<std::uint8_t>(IdsAsColors(Made())),
            (std::vector<std::uint8_t>{128, 0, 0, 0, 128, 0, 64, 0, 0, 0, 0, 0, 224, 224, 224}));
  EXPECT_EQ(IdColorText(0), "#000000");
  EXPECT_EQ(IdColorText(7), "#808080");
  EXPECT_EQ(IdColorText(20), "#004080"); // 010100: green of the second, blue of the first
  EXPECT_EQ(IdColorText(0xFFFFFF), "#ffffff");
}

TEST(LayerImages, TheStepIsAPowerOfTenThatFits) {
  const auto stepFor = [](double far) {
    TCamera camera = {};
    camera.Far = far;
    return DepthStepFor({camera});
  };
  EXPECT_EQ(stepFor(65535), 1.0);
  EXPECT_EQ(stepFor(65536), 10.0);
  EXPECT_EQ(stepFor(6553.6), 1.0);
  EXPECT_EQ(stepFor(6553.4), 0.1);
  EXPECT_EQ(stepFor(8), 0.001);
  EXPECT_EQ(stepFor(3e38), 1e34);
  TCamera nearer = {};
  nearer.Far = 1;
  TCamera farther = {};
  farther.Far = 1000;
  EXPECT_EQ(DepthStepFor({nearer, farther, nearer}), 0.1);
}

} // namespace
