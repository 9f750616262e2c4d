#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include <ZxPixelKit/TDataSurface.h>

/// A model file as plain arrays, and drawing it: what the program and the examples share.
namespace zx_scene {

using TPoint = std::array<double, 3>;
using TColor = std::array<float, 4>;

/// A vertex as it stands in a vertex buffer.
struct TVertex {
  float Position[3];
  float Normal[3];
  float TexCoord[2];
  std::uint8_t Color[4];
};

struct TMaterial {
  std::string Name;
  TColor Diffuse = {0.8f, 0.8f, 0.8f, 1};
  TColor Specular = {0, 0, 0, 1};
  TColor Emission = {0, 0, 0, 1};
  float Shininess = 0;
  int Texture = -1;            ///< index into `MODEL::Textures`, -1 for none
  unsigned int WrapS = 0x2901; ///< GL_REPEAT or GL_CLAMP_TO_EDGE
  unsigned int WrapT = 0x2901;
  bool TwoSided = false; ///< back faces are lit from their own side
  bool CullBack = false; ///< the file says that back faces are not to be seen
  bool Blended = false;  ///< drawn last, over what stands behind
  float Cutoff = 0;      ///< above 0: nothing is drawn where alpha is less, the rest is opaque
};

/// An image as the texture of a model: RGBA of 8 bits, its row 0 the bottom row.
struct TTexture {
  std::string Name;
  TDataSurface Image;
};

struct TMesh {
  std::string Name;
  int Corners = 3; ///< of a piece: 1 for points, 2 for lines, 3 for triangles
  int Material = 0;
  bool HasColors = false;
  std::vector<TVertex> Vertices;
  std::vector<std::uint32_t> Indices;
};

/// A camera of the file, in world coordinates; its axes have length 1.
struct TFileCamera {
  std::string Name;
  TPoint Position = {};
  TPoint Right = {};
  TPoint Up = {};
  TPoint Back = {};          ///< against the direction of view
  bool Orthographic = false; ///< else a perspective
  double HalfHeight = 0;     ///< of the picture: at distance 1 in a perspective
  double Near = 0;           ///< distances of the clipping planes; 0 if the file gives none
  double Far = 0;
};

/// Everything stands in world coordinates; the node tree of the file is gone.
struct TModel {
  std::vector<TMesh> Meshes;
  std::vector<TMaterial> Materials;
  std::deque<TTexture> Textures; // a surface stays where it was made
  std::vector<TFileCamera> Cameras;
  bool ZUp = false; ///< the file says that its vertical axis is z

  std::size_t CountCorners(int corners) const; ///< pieces with that many corners
  std::size_t CountVertices() const;
};

/// Loads a model file of any kind that Assimp reads, and its textures.
///
/// False with `*error` as the reason when the file can't be read or holds nothing that can be
/// drawn. What is missing beside that, a texture for instance, goes to `*warnings`, one line each,
/// and the model loads without.
bool LoadModel(const std::string& name, TModel* out, std::string* error,
               std::vector<std::string>* warnings);

/// The same from the bytes of a file. `format` is the ending that the file would have, "obj" for
/// instance; if it is empty, the kind is guessed. Files that the model refers to are looked for in
/// the working directory.
bool LoadModelBytes(const std::string& bytes, const std::string& format, TModel* out,
                    std::string* error, std::vector<std::string>* warnings);

} // namespace zx_scene
