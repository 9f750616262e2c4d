#include <cmath>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "Files.h"
#include "Gltf.h"
#include "Scene.h"

namespace {

using namespace zx_scene;

// With half the picture's height this far out at distance 5, the square's edges lie 20.25 pixels
// from the middle of 100: between the middles of pixels.
constexpr double kTangent = 50 / 20.25 / 5;

std::string Perspective(double yfov) {
  return R"({"type":"perspective","name":"c","perspective":{"yfov":)" + std::to_string(yfov) +
         R"(,"znear":0.01,"zfar":100}})";
}

const char kSided[] = R"({"doubleSided":true})";

// The square of GltfOf, seen by the first camera of its file; its columns and rows.
struct TSeen {
  TSeen(const std::string& name, int width, const std::string& camera = "") {
    TModel model;
    std::vector<std::string> warnings;
    std::string error;
    EXPECT_TRUE(LoadModel(name, &model, &error, &warnings)) << error;
    TView view;
    view.Width = width;
    view.Height = 100;
    TCamera eye;
    Found = TakeFileCamera(model, view, camera, &eye, &Error);
    if (!Found) {
      return;
    }
    TScene scene;
    TLayers layers;
    EXPECT_TRUE(scene.Create(model, width, 100, TStyle(), &error)) << error;
    EXPECT_TRUE(scene.DrawLayers(eye, &layers, &error)) << error;
    for (int i = 0; i < width * 100; ++i) {
      if (layers.Ids[static_cast<std::size_t>(i)] != 0) {
        Left = std::min(Left, i % width);
        Right = std::max(Right, i % width);
        Bottom = std::min(Bottom, i / width);
        Top = std::max(Top, i / width);
        Depth = layers.Depth[static_cast<std::size_t>(i)];
      }
    }
  }

  bool Found = false;
  std::string Error;
  int Left = 1000;
  int Right = -1;
  int Bottom = 1000;
  int Top = -1;
  double Depth = 0;
};

TEST(FileCamera, StandsWhereItsNodeIs) {
  const TDirectory directory;
  // Half a unit to the right: the square goes from 1.5 to the left to 0.5 to the right.
  const TSeen seen(
      directory.Write("c.gltf",
                      GltfOf({{1, 0, 0, 0, kSided}},
                             ",\"cameras\":[" + Perspective(2 * std::atan(kTangent)) + "]",
                             R"(,{"camera":0,"translation":[0.5,0,5]})", ",1")),
      100);
  ASSERT_TRUE(seen.Found) << seen.Error;
  // 50 - 1.5 * 20.25 = 19.625 and 50 + 0.5 * 20.25 = 60.125.
  EXPECT_EQ(seen.Left, 20);
  EXPECT_EQ(seen.Right, 59);
  EXPECT_EQ(seen.Bottom, 30);
  EXPECT_EQ(seen.Top, 69);
  EXPECT_NEAR(seen.Depth, 5, 1e-5);
}

TEST(FileCamera, TurnsWithTheNodesAboveIt) {
  const TDirectory directory;
  // A half turn about y brings (0.5, 0, 5) to (-0.5, 0, -5), from where +x lies on the left.
  const TSeen seen(
      directory.Write(
          "c.gltf",
          GltfOf({{1, 0, 0, 0, kSided}},
                 ",\"cameras\":[" + Perspective(2 * std::atan(kTangent)) + "]",
                 R"(,{"rotation":[0,1,0,0],"children":[2]},{"camera":0,"translation":[0.5,0,5]})",
                 ",1")),
      100);
  ASSERT_TRUE(seen.Found) << seen.Error;
  EXPECT_EQ(seen.Left, 20);
  EXPECT_EQ(seen.Right, 59);
  EXPECT_NEAR(seen.Depth, 5, 1e-5);
}

TEST(FileCamera, KeepsItsHeightInAWidePicture) {
  const TDirectory directory;
  const TSeen seen(
      directory.Write("c.gltf",
                      GltfOf({{1, 0, 0, 0, kSided}},
                             ",\"cameras\":[" + Perspective(2 * std::atan(kTangent)) + "]",
                             R"(,{"camera":0,"translation":[0,0,5]})", ",1")),
      200);
  EXPECT_EQ(seen.Left, 80);
  EXPECT_EQ(seen.Right, 119);
  EXPECT_EQ(seen.Bottom, 30);
  EXPECT_EQ(seen.Top, 69);
}

TEST(FileCamera, OrthographicHasNoPerspective) {
  const TDirectory directory;
  // Half the height is 50 / 20.25 wherever the square lies.
  const std::string half = std::to_string(50 / 20.25);
  for (const char* z : {"2", "50"}) {
    const TSeen seen(
        directory.Write(
            "c.gltf", GltfOf({{1, 0, 0, 0, kSided}},
                             R"(,"cameras":[{"type":"orthographic","orthographic":{"xmag":)" +
                                 half + R"(,"ymag":)" + half + R"(,"znear":0.01,"zfar":100}}])",
                             std::string(R"(,{"camera":0,"translation":[0,0,)") + z + "]}", ",1")),
        100);
    ASSERT_TRUE(seen.Found) << seen.Error;
    EXPECT_EQ(seen.Left, 30);
    EXPECT_EQ(seen.Right, 69);
    EXPECT_NEAR(seen.Depth, std::stod(z), 1e-4);
  }
}

TEST(FileCamera, IsFoundByItsNodesName) {
  const TDirectory directory;
  const std::string file =
      directory.Write("c.gltf", GltfOf({{1, 0, 0, 0, kSided}},
                                       ",\"cameras\":[" + Perspective(2 * std::atan(kTangent)) +
                                           "," + Perspective(2 * std::atan(kTangent)) + "]",
                                       R"(,{"name":"near","camera":0,"translation":[0,0,5]})"
                                       R"(,{"name":"far","camera":1,"translation":[0,0,20]})",
                                       ",1,2"));
  EXPECT_NEAR(TSeen(file, 100).Depth, 5, 1e-5);
  EXPECT_NEAR(TSeen(file, 100, "near").Depth, 5, 1e-5);
  EXPECT_NEAR(TSeen(file, 100, "far").Depth, 20, 1e-4);
  const TSeen none(file, 100, "other");
  EXPECT_FALSE(none.Found);
  EXPECT_EQ(none.Error, "the file holds no camera 'other', but 'near' 'far'");
  const TSeen empty(directory.Write("n.gltf", GltfOf({{}})), 100);
  EXPECT_FALSE(empty.Found);
  EXPECT_EQ(empty.Error, "the file holds no camera");
}

TEST(FileCamera, ThatSeesNothingMakesAnEmptyPicture) {
  const TDirectory directory;
  const TSeen behind(
      directory.Write("c.gltf",
                      GltfOf({{1, 0, 0, 0, kSided}}, ",\"cameras\":[" + Perspective(1) + "]",
                             R"(,{"camera":0,"translation":[0,0,-5]})", ",1")),
      100);
  EXPECT_TRUE(behind.Found);
  EXPECT_EQ(behind.Right, -1);
}

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// How far a model reaches along its vertical axis, up and down, and along the two others.
std::array<float, 6> Extent(const TModel& model) {
  std::array<float, 6> extent = {};
  for (const TMesh& mesh : model.Meshes) {
    for (const TVertex& vertex : mesh.Vertices) {
      const float* p = vertex.Position;
      const float turned[3] = {p[0], model.ZUp ? p[2] : p[1], model.ZUp ? -p[1] : p[2]};
      for (std::size_t c = 0; c < 3; ++c) {
        extent[2 * c] = std::max(extent[2 * c], turned[c]);
        extent[2 * c + 1] = std::min(extent[2 * c + 1], turned[c]);
      }
    }
  }
  return extent;
}

// The same file with its vertical axis said to be y, and z. Whether the importer turns the model or
// leaves that to us, what was z stands upright.
TEST(UpAxis, IsThatOfTheMetadata) {
  const TDirectory directory;
  std::string text = ReadFile("/usr/share/assimp/models/FBX/cubes_with_names.fbx");
  const std::string line = R"(P: "UpAxis", "int", "Integer", "",)";
  const std::size_t at = text.find(line + "1");
  ASSERT_NE(at, std::string::npos);
  TModel y;
  TModel z;
  std::string error;
  std::vector<std::string> warnings;
  ASSERT_TRUE(LoadModel(directory.Write("y.fbx", text), &y, &error, &warnings)) << error;
  text[at + line.size()] = '2';
  const std::string front = R"(P: "FrontAxis", "int", "Integer", "",2)";
  ASSERT_NE(text.find(front), std::string::npos);
  text[text.find(front) + front.size() - 1] = '1';
  const std::string sign = R"(P: "FrontAxisSign", "int", "Integer", "",1)";
  ASSERT_NE(text.find(sign), std::string::npos);
  text.replace(text.find(sign) + sign.size() - 1, 1, "-1");
  ASSERT_TRUE(LoadModel(directory.Write("z.fbx", text), &z, &error, &warnings)) << error;
  EXPECT_FALSE(y.ZUp);
  const std::array<float, 6> before = Extent(y);
  const std::array<float, 6> after = Extent(z);
  // Up was z, and -y came to the front.
  EXPECT_NEAR(after[2], before[4], 1e-3 * std::abs(before[4]));
  EXPECT_NEAR(after[3], before[5], 1e-3 * std::abs(before[5]));
  EXPECT_NE(before[2], before[4]);
}

} // namespace
