#include <array>

#include <gtest/gtest.h>

#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

#include "Files.h"
#include "Gltf.h"
#include "Scene.h"

namespace {

using namespace zx_scene;

// A texture of two columns: white and opaque on the left, white with `alpha` on the right.
void WriteTexture(const TDirectory& directory, std::uint8_t alpha) {
  const std::uint8_t pixels[] = {255, 255, 255, 255, 255, 255, 255, alpha};
  DATASURFACE surface = {};
  ASSERT_TRUE(ds::Set(&surface, 2, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, pixels));
  ASSERT_TRUE(SaveImage(directory / "t.png", nullptr, surface));
}

std::string Material(const std::string& mode, const std::string& more = "") {
  return R"({"alphaMode":")" + mode + "\"" + more +
         R"(,"pbrMetallicRoughness":{"baseColorTexture":{"index":0},"metallicFactor":0}})";
}

constexpr char kTexture[] = R"(,"textures":[{"source":0}],"images":[{"uri":"t.png"}])";

// The picture of a file from the front, 100 by 100 pixels, on a transparent ground.
struct TPicture {
  explicit TPicture(const std::string& name) {
    TModel model;
    std::vector<std::string> warnings;
    std::string error;
    EXPECT_TRUE(LoadModel(name, &model, &error, &warnings)) << error;
    EXPECT_TRUE(warnings.empty());
    TView view;
    view.Width = view.Height = 100;
    view.Azimuth = view.Elevation = 0;
    TStyle style;
    style.Linear = false;
    style.Light = TLight::None;
    style.Background = {0, 0, 0, 0};
    const TCamera camera = FrameModel(model, view, 1)[0];
    TScene scene;
    EXPECT_TRUE(scene.Create(model, 100, 100, style, &error)) << error;
    EXPECT_TRUE(scene.Draw(camera, &error)) << error;
    Bytes = scene.ReadPicture();
    EXPECT_TRUE(scene.DrawLayers(camera, &Layers, &error)) << error;
  }

  std::array<int, 4> At(int x, int y) const {
    const std::uint8_t* pixel = Bytes.data() + 4 * (y * 100 + x);
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
  }
  std::uint32_t IdAt(int x, int y) const {
    return Layers.Ids[static_cast<std::size_t>(y * 100 + x)];
  }

  std::vector<std::uint8_t> Bytes;
  TLayers Layers;
};

const std::array<int, 4> kWhite = {255, 255, 255, 255};
const std::array<int, 4> kNothing = {0, 0, 0, 0};

TEST(Cutout, WhatIsBelowTheCutoffIsNotThere) {
  const TDirectory directory;
  WriteTexture(directory, 100);
  const TPicture picture(
      directory.Write("m.gltf", GltfOf({{1, 0, 0, 0, Material("MASK")}}, kTexture)));
  EXPECT_EQ(picture.At(30, 50), kWhite);
  EXPECT_EQ(picture.At(70, 50), kNothing);
  EXPECT_EQ(picture.IdAt(30, 50), 1u);
  EXPECT_EQ(picture.IdAt(70, 50), 0u);
}

// 100 of 255 is 0.392: opaque from a cutoff of 0.39 on.
TEST(Cutout, TheFileSaysWhereItLies) {
  const TDirectory directory;
  WriteTexture(directory, 100);
  const TPicture low(directory.Write(
      "l.gltf", GltfOf({{1, 0, 0, 0, Material("MASK", R"(,"alphaCutoff":0.39)")}}, kTexture)));
  EXPECT_EQ(low.At(30, 50), kWhite);
  EXPECT_EQ(low.At(70, 50), kWhite);
  const TPicture high(directory.Write(
      "h.gltf", GltfOf({{1, 0, 0, 0, Material("MASK", R"(,"alphaCutoff":0.4)")}}, kTexture)));
  EXPECT_EQ(high.At(70, 50), kNothing);
}

TEST(Cutout, AlphaAtTheCutoffStays) {
  const TDirectory directory;
  WriteTexture(directory, 255);
  const TPicture picture(directory.Write(
      "m.gltf", GltfOf({{1, 0, 0, 0, Material("MASK", R"(,"alphaCutoff":1.0)")}}, kTexture)));
  EXPECT_EQ(picture.At(70, 50), kWhite);
}

TEST(Cutout, AHoleHidesNothing) {
  const TDirectory directory;
  WriteTexture(directory, 0);
  // The farther square is drawn after the one with the hole, and is green.
  const std::string green = R"({"pbrMetallicRoughness":{"baseColorFactor":[0,1,0,1]}})";
  const TPicture picture(directory.Write(
      "m.gltf", GltfOf({{1, 0, 0, 1, Material("MASK")}, {1, 0, 0, 0, green}}, kTexture)));
  EXPECT_EQ(picture.At(30, 50), kWhite);
  EXPECT_EQ(picture.At(70, 50), (std::array<int, 4>{0, 255, 0, 255}));
  EXPECT_EQ(picture.IdAt(70, 50), 2u);
}

TEST(Cutout, OpaqueIgnoresAlphaAndBlendMixesIt) {
  const TDirectory directory;
  WriteTexture(directory, 51);
  const TPicture opaque(
      directory.Write("o.gltf", GltfOf({{1, 0, 0, 0, Material("OPAQUE")}}, kTexture)));
  EXPECT_EQ(opaque.At(70, 50), kWhite);
  const TPicture blend(
      directory.Write("b.gltf", GltfOf({{1, 0, 0, 0, Material("BLEND")}}, kTexture)));
  // A fifth of white over black, and 51 of alpha times itself over 255 over nothing.
  EXPECT_EQ(blend.At(70, 50), (std::array<int, 4>{51, 51, 51, 10}));
}

} // namespace
