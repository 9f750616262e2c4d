#include "Model.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "Files.h"
#include "Gltf.h"
#include "Scene.h"

namespace {

using namespace zx_scene;

struct TLoaded {
  explicit TLoaded(const std::string& name) { Done = LoadModel(name, &Model, &Error, &Warnings); }
  TModel Model;
  std::string Error;
  std::vector<std::string> Warnings;
  bool Done;
};

TEST(Model, SquareAsArrays) {
  const TDirectory directory;
  const TLoaded square(directory.Write("square.obj", SquareObj()));
  ASSERT_TRUE(square.Done) << square.Error;
  EXPECT_TRUE(square.Warnings.empty());
  EXPECT_EQ(square.Model.CountCorners(3), 2u);
  EXPECT_EQ(square.Model.CountVertices(), 4u);
  ASSERT_EQ(square.Model.Meshes.size(), 1u);
  for (const TVertex& vertex : square.Model.Meshes[0].Vertices) {
    EXPECT_EQ(vertex.Normal[2], 1.0f);
    // Texture coordinates go with the position, v upward.
    EXPECT_EQ(vertex.TexCoord[0], (vertex.Position[0] + 1) / 2);
    EXPECT_EQ(vertex.TexCoord[1], (vertex.Position[1] + 1) / 2);
  }
}

TEST(Model, CloudOfPoints) {
  const TDirectory directory;
  const TLoaded cloud(directory.Write(
      "cloud.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                   "property float y\nproperty float z\nend_header\n0 0 0\n1 0 0\n0 1 0\n"));
  ASSERT_TRUE(cloud.Done) << cloud.Error;
  EXPECT_EQ(cloud.Model.CountCorners(1), 3u);
  EXPECT_EQ(cloud.Model.CountCorners(3), 0u);
}

TEST(Model, MissingFileAndBrokenFileSayWhy) {
  const TDirectory directory;
  const TLoaded missing(directory / "missing.obj");
  EXPECT_FALSE(missing.Done);
  EXPECT_EQ(missing.Error, "No such file or directory");
  const TLoaded folder(directory / "");
  EXPECT_FALSE(folder.Done);
  EXPECT_EQ(folder.Error, "is a directory");
  const TLoaded broken(directory.Write("broken.dae", "<COLLADA"));
  EXPECT_FALSE(broken.Done);
  EXPECT_FALSE(broken.Error.empty());
}

TEST(Model, MissingTextureOnlyWarns) {
  const TDirectory directory;
  directory.Write("m.mtl", "newmtl m\nmap_Kd nowhere.png\n");
  const TLoaded model(directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n")));
  ASSERT_TRUE(model.Done) << model.Error;
  ASSERT_EQ(model.Warnings.size(), 1u);
  EXPECT_EQ(model.Warnings[0], "texture 'nowhere.png': not found; drawn without it");
  EXPECT_TRUE(model.Model.Textures.empty());
}

TEST(Model, DamagedTextureOnlyWarnsAndSaysWhy) {
  const TDirectory directory;
  const struct {
    const char* Name;
    const char* Bytes;
    const char* Reason;
  } kTextures[] = {{"cut.ppm", "P6 2 2 255\nabc", "ends inside its picture"},
                   {"text.png", "no picture at all", "of no known image kind"}};
  for (const auto& texture : kTextures) {
    directory.Write(texture.Name, texture.Bytes);
    directory.Write("m.mtl", std::string("newmtl m\nmap_Kd ") + texture.Name + "\n");
    const TLoaded model(directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n")));
    ASSERT_TRUE(model.Done) << model.Error;
    EXPECT_EQ(model.Warnings,
              std::vector<std::string>{std::string("texture '") + texture.Name +
                                       "': " + texture.Reason + "; drawn without it"});
    EXPECT_TRUE(model.Model.Textures.empty());
  }
}

TEST(Model, DamagedTextureInTheFileSaysWhyToo) {
  const TDirectory directory;
  // "no picture at all", in base 64, as an image of a glTF file.
  const std::string material = R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}})";
  const TLoaded model(directory.Write(
      "m.gltf", GltfOf({{1, 0, 0, 0, material}},
                       R"(,"textures":[{"source":0}],"images":[{"mimeType":"image/png","uri":)"
                       R"("data:image/png;base64,bm8gcGljdHVyZSBhdCBhbGw="}])")));
  ASSERT_TRUE(model.Done) << model.Error;
  ASSERT_EQ(model.Warnings.size(), 1u);
  EXPECT_NE(model.Warnings[0].find("the image in the model file: of no known image kind"),
            std::string::npos)
      << model.Warnings[0];
}

TEST(Model, TextureIsFoundBesideTheModelWhateverItsPath) {
  const TDirectory directory;
  directory.Write("Skin.PPM", "P6 1 2 255\nabcdef");
  directory.Write("m.mtl", "newmtl m\nmap_Kd C:\\work\\skin.ppm\n");
  const TLoaded model(directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n")));
  ASSERT_TRUE(model.Done) << model.Error;
  EXPECT_TRUE(model.Warnings.empty());
  ASSERT_EQ(model.Model.Textures.size(), 1u);
  const TDataSurface& image = model.Model.Textures[0].Image;
  EXPECT_EQ(image.Channels, 4);
  // Row 0 is the bottom row.
  EXPECT_EQ(std::string(image.Data, image.Data + 8), "def\xFF"
                                                     "abc\xFF");
}

// Old glTF: the node is turned by 90 degrees about z and then moved by (5, 0, 0).
TEST(Model, OldGltfNodesTurnBeforeTheyMove) {
  const TDirectory directory;
  // Positions (0,0,0), (1,0,0), (0,1,0) as floats.
  const std::string buffer = "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA";
  const TLoaded model(
      directory.Write("turned.gltf",
                      R"({"asset":{"version":"1.0"},"scene":"s","scenes":{"s":{"nodes":["n"]}},
          "nodes":{"n":{"meshes":["m"],"rotation":[0,0,0.70710678,0.70710678],
                        "translation":[5,0,0],"scale":[2,1,1]}},
          "meshes":{"m":{"primitives":[{"attributes":{"POSITION":"a"},"mode":4}]}},
          "accessors":{"a":{"bufferView":"v","byteOffset":0,"componentType":5126,"count":3,
                            "type":"VEC3"}},
          "bufferViews":{"v":{"buffer":"b","byteLength":36,"byteOffset":0}},
          "buffers":{"b":{"byteLength":36,"uri":"data:application/octet-stream;base64,)" +
                          buffer + R"("}}})"));
  ASSERT_TRUE(model.Done) << model.Error;
  ASSERT_EQ(model.Model.Meshes.size(), 1u);
  const TMesh& mesh = model.Model.Meshes[0];
  ASSERT_EQ(mesh.Indices.size(), 3u);
  const float expected[3][2] = {{5, 0}, {5, 2}, {4, 0}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(mesh.Vertices[mesh.Indices[i]].Position[0], expected[i][0], 1e-5);
    EXPECT_NEAR(mesh.Vertices[mesh.Indices[i]].Position[1], expected[i][1], 1e-5);
  }
}

TEST(Camera, WholeModelLiesInThePictureAndTouchesItsEdges) {
  const TDirectory directory;
  const TLoaded square(directory.Write("square.obj", SquareObj()));
  ASSERT_TRUE(square.Done);
  TView view;
  for (const double azimuth : {0.0, 40.0, 200.0}) {
    for (const int width : {200, 600, 1500}) {
      view.Azimuth = azimuth;
      view.Width = width;
      const std::vector<TCamera> cameras = FrameModel(square.Model, view, 1);
      ASSERT_EQ(cameras.size(), 1u);
      const TCamera& camera = cameras[0];
      double farthest = 0;
      for (const TVertex& vertex : square.Model.Meshes[0].Vertices) {
        double eye[3];
        for (int r = 0; r < 3; ++r) {
          eye[r] = camera.View[12 + r];
          for (int c = 0; c < 3; ++c) {
            eye[r] += camera.View[4 * c + r] * vertex.Position[c];
          }
        }
        EXPECT_LT(camera.Near, -eye[2]);
        EXPECT_GT(camera.Far, -eye[2]);
        farthest = std::max({farthest, std::abs(eye[0] / eye[2]) / camera.HalfWidth,
                             std::abs(eye[1] / eye[2]) / camera.HalfHeight});
      }
      EXPECT_LT(farthest, 1);
      EXPECT_GT(farthest, 0.9);
    }
  }
}

TEST(Camera, TurntableKeepsItsDistance) {
  const TDirectory directory;
  const TLoaded square(directory.Write("square.obj", SquareObj()));
  ASSERT_TRUE(square.Done);
  const std::vector<TCamera> cameras = FrameModel(square.Model, TView(), 4);
  ASSERT_EQ(cameras.size(), 4u);
  for (const TCamera& camera : cameras) {
    EXPECT_NEAR(camera.View[14], cameras[0].View[14], 1e-12);
  }
  // A quarter of a turn each: the first column of the third is the negative of the first's.
  EXPECT_NEAR(cameras[2].View[0], -cameras[0].View[0], 1e-12);
}

// The square fills the middle of the picture; returns the pixel in the middle of one of its
// quarters.
std::array<int, 4> Quarter(const std::vector<std::uint8_t>& picture, int size, int right, int up) {
  const int x = size / 2 + (right > 0 ? size / 5 : -size / 5);
  const int y = size / 2 + (up > 0 ? size / 5 : -size / 5);
  const std::uint8_t* pixel = picture.data() + 4 * (y * size + x);
  return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

TEST(Scene, TextureStandsUprightOnTheSquare) {
  const TDirectory directory;
  // The top row red and green, the bottom row blue and black.
  std::string image = "P6 2 2 255\n";
  image += std::string("\xFF\0\0\0\xFF\0", 6) + std::string("\0\0\xFF\0\0\0", 6);
  directory.Write("q.ppm", image);
  directory.Write("m.mtl", "newmtl m\nmap_Kd q.ppm\n");
  const TLoaded model(directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n")));
  ASSERT_TRUE(model.Done) << model.Error;
  TView view;
  view.Width = view.Height = 100;
  view.Azimuth = view.Elevation = 0;
  TStyle style;
  style.Linear = false;
  TScene scene;
  std::string error;
  ASSERT_TRUE(scene.Create(model.Model, 100, 100, style, &error)) << error;
  ASSERT_TRUE(scene.Draw(FrameModel(model.Model, view, 1)[0], &error)) << error;
  const std::vector<std::uint8_t>& picture = scene.ReadPicture();
  const std::array<int, 4> red = Quarter(picture, 100, -1, 1);
  const std::array<int, 4> green = Quarter(picture, 100, 1, 1);
  const std::array<int, 4> blue = Quarter(picture, 100, -1, -1);
  const std::array<int, 4> black = Quarter(picture, 100, 1, -1);
  EXPECT_GT(red[0], 150);
  EXPECT_EQ(red[1] + red[2], 0);
  EXPECT_GT(green[1], 150);
  EXPECT_EQ(green[0] + green[2], 0);
  EXPECT_GT(blue[2], 150);
  EXPECT_EQ(blue[0] + blue[1], 0);
  EXPECT_EQ(black[0] + black[1] + black[2], 0);
  EXPECT_EQ(black[3], 255);
  EXPECT_GT(scene.CountCovered(), 7000u);
  EXPECT_LT(scene.CountCovered(), 10000u);
}

TEST(Scene, WireLeavesTheInsideFree) {
  const TDirectory directory;
  const TLoaded model(directory.Write("square.obj", SquareObj()));
  ASSERT_TRUE(model.Done);
  TView view;
  view.Width = view.Height = 100;
  view.Azimuth = view.Elevation = 0;
  TStyle style;
  style.Wire = true;
  TScene scene;
  std::string error;
  ASSERT_TRUE(scene.Create(model.Model, 100, 100, style, &error)) << error;
  ASSERT_TRUE(scene.Draw(FrameModel(model.Model, view, 1)[0], &error)) << error;
  // Four sides and a diagonal of about 90 pixels each.
  EXPECT_GT(scene.CountCovered(), 400u);
  EXPECT_LT(scene.CountCovered(), 500u);
}

} // namespace
