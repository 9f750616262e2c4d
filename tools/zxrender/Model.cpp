#include "Model.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <utility>

#include <ZxCore3D/render/GLEnums.h>
#include <assimp/GltfMaterial.h>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "FileViews.h"
#include "GltfNodes.h"
#include "Textures.h"

namespace zx_scene {

std::size_t TModel::CountCorners(int corners) const {
  std::size_t count = 0;
  for (const TMesh& mesh : Meshes) {
    if (mesh.Corners == corners) {
      count += mesh.Indices.size() / static_cast<std::size_t>(corners);
    }
  }
  return count;
}

std::size_t TModel::CountVertices() const {
  std::size_t count = 0;
  for (const TMesh& mesh : Meshes) {
    count += mesh.Vertices.size();
  }
  return count;
}

namespace {

// Where a texture was found in a material, and how it is to be applied.
struct TTextureUse {
  std::string Name;
  unsigned int Channel = 0;
  bool Found = false;
};

TColor _ToColor(const aiColor4D& c) { return {c.r, c.g, c.b, c.a}; }

unsigned int _ToWrap(const aiTextureMapMode mode) {
  return mode == aiTextureMapMode_Clamp || mode == aiTextureMapMode_Decal ? GL_CLAMP_TO_EDGE
                                                                          : GL_REPEAT;
}

TTextureUse _FindTexture(const aiMaterial& from, TMaterial* to) {
  TTextureUse use;
  for (const aiTextureType type : {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}) {
    aiString path;
    aiTextureMapMode modes[3] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap,
                                 aiTextureMapMode_Wrap};
    unsigned int channel = 0;
    if (from.GetTexture(type, 0, &path, nullptr, &channel, nullptr, nullptr, modes) ==
            aiReturn_SUCCESS &&
        path.length > 0) {
      use.Name = path.C_Str();
      use.Channel = channel;
      use.Found = true;
      to->WrapS = _ToWrap(modes[0]);
      to->WrapT = _ToWrap(modes[1]);
      break;
    }
  }
  return use;
}

// Metal and roughness have no place in this lighting; a highlight that shrinks and brightens with
// smoothness, in the metal's own colour, comes near.
bool _TakeMetalAndRoughness(const aiMaterial& from, TMaterial* to) {
  float metal = 0;
  float rough = 1;
  if (from.Get(AI_MATKEY_METALLIC_FACTOR, metal) != aiReturn_SUCCESS &&
      from.Get(AI_MATKEY_ROUGHNESS_FACTOR, rough) != aiReturn_SUCCESS) {
    return false;
  }
  from.Get(AI_MATKEY_ROUGHNESS_FACTOR, rough);
  const float smooth = 1 - std::clamp(rough, 0.0f, 1.0f);
  metal = std::clamp(metal, 0.0f, 1.0f);
  for (std::size_t i = 0; i < 3; ++i) {
    to->Specular[i] = smooth * (0.25f * (1 - metal) + 0.7f * to->Diffuse[i] * metal);
  }
  to->Shininess = 4 + 96 * smooth * smooth;
  return true;
}

void _TakeHighlight(const aiMaterial& from, TMaterial* to) {
  aiColor4D color;
  float shininess = 0;
  float strength = 1;
  from.Get(AI_MATKEY_SHININESS, shininess);
  from.Get(AI_MATKEY_SHININESS_STRENGTH, strength);
  // Without an exponent the highlight would cover the whole model.
  if (from.Get(AI_MATKEY_COLOR_SPECULAR, color) == aiReturn_SUCCESS && shininess >= 1) {
    to->Specular = {color.r * strength, color.g * strength, color.b * strength, 1};
    to->Shininess = std::min(shininess, 128.0f);
  }
}

// Whether the alpha of textures and vertices has an effect.
bool _HasAlpha(const TMaterial& material) { return material.Blended || material.Cutoff > 0; }

void _TakeTransparency(const aiMaterial& from, TMaterial* to) {
  float opacity = 1;
  aiString mode;
  from.Get(AI_MATKEY_OPACITY, opacity);
  if (from.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS) {
    to->Blended = std::strcmp(mode.C_Str(), "BLEND") == 0;
    if (std::strcmp(mode.C_Str(), "MASK") == 0) {
      to->Cutoff = 0.5f;
      from.Get(AI_MATKEY_GLTF_ALPHACUTOFF, to->Cutoff);
    }
    to->Diffuse[3] = _HasAlpha(*to) ? to->Diffuse[3] : 1;
    return;
  }
  // Files that mean the opposite of opacity write 0 for what is to be seen.
  to->Diffuse[3] = opacity > 0 && opacity < 1 ? opacity : 1;
  to->Blended = to->Diffuse[3] < 1;
}

// Returns the channel of texture coordinates that the material uses.
unsigned int _TakeMaterial(const aiMaterial& from, TTextureLoader* textures, TMaterial* to) {
  aiString name;
  aiColor4D color;
  if (from.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS) {
    to->Name = name.C_Str();
  }
  const bool isBase = from.Get(AI_MATKEY_BASE_COLOR, color) == aiReturn_SUCCESS;
  if (isBase || from.Get(AI_MATKEY_COLOR_DIFFUSE, color) == aiReturn_SUCCESS) {
    to->Diffuse = _ToColor(color);
  }
  if (from.Get(AI_MATKEY_COLOR_EMISSIVE, color) == aiReturn_SUCCESS) {
    to->Emission = {color.r, color.g, color.b, 1};
  }
  _TakeTransparency(from, to);
  if (!_TakeMetalAndRoughness(from, to)) {
    _TakeHighlight(from, to);
  }
  bool twoSided = false;
  if (from.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS) {
    to->TwoSided = twoSided;
    to->CullBack = !twoSided && isBase; // only glTF means it that way
  }
  const TTextureUse use = _FindTexture(from, to);
  if (use.Found) {
    to->Texture = textures->Get(use.Name, !_HasAlpha(*to));
  }
  // A texture stands in the place of the colour, but for glTF, where it is a factor.
  if (to->Texture >= 0 && !isBase) {
    to->Diffuse = {1, 1, 1, to->Diffuse[3]};
  }
  return use.Channel;
}

std::uint8_t _ToByte(float value) {
  return value > 0 ? static_cast<std::uint8_t>(std::min(value, 1.0f) * 255 + 0.5f)
                   : std::uint8_t{0};
}

// Vertices brought to world coordinates; a normal goes by the inverse transpose.
void _TakeVertices(const aiMesh& from, const aiMatrix4x4& toWorld, unsigned int channel,
                   const TMaterial& material, TMesh* to) {
  aiMatrix3x3 toNormal(toWorld);
  toNormal.Inverse().Transpose();
  const aiVector3D* texCoords =
      channel < AI_MAX_NUMBER_OF_TEXTURECOORDS ? from.mTextureCoords[channel] : nullptr;
  to->HasColors = from.HasVertexColors(0);
  to->Vertices.resize(from.mNumVertices);
  for (unsigned int i = 0; i < from.mNumVertices; ++i) {
    TVertex& vertex = to->Vertices[i];
    const aiVector3D position = toWorld * from.mVertices[i];
    aiVector3D normal(0, 0, 0);
    if (from.mNormals != nullptr) {
      normal = (toNormal * from.mNormals[i]).NormalizeSafe();
    }
    const aiVector3D st = texCoords != nullptr ? texCoords[i] : aiVector3D(0, 0, 0);
    vertex = {{position.x, position.y, position.z},
              {normal.x, normal.y, normal.z},
              {st.x, st.y},
              {255, 255, 255, 255}};
    if (to->HasColors) {
      const aiColor4D& color = from.mColors[0][i];
      vertex.Color[0] = _ToByte(color.r * material.Diffuse[0]);
      vertex.Color[1] = _ToByte(color.g * material.Diffuse[1]);
      vertex.Color[2] = _ToByte(color.b * material.Diffuse[2]);
      vertex.Color[3] = _ToByte(_HasAlpha(material) ? color.a * material.Diffuse[3] : 1);
    }
  }
}

bool _IsFinite(const TVertex& vertex) {
  return std::all_of(std::begin(vertex.Position), std::end(vertex.Position),
                     [](float component) { return std::isfinite(component); });
}

// A piece with a corner that is nowhere is left out. A mirroring matrix turns the corners round,
// so they are taken the other way.
void _TakeIndices(const aiMesh& from, bool mirrored, TMesh* to) {
  const auto corners = static_cast<unsigned int>(to->Corners);
  // A cloud of points has no faces at all.
  for (unsigned int i = 0; from.mNumFaces == 0 && i < from.mNumVertices; ++i) {
    if (_IsFinite(to->Vertices[i])) {
      to->Indices.push_back(i);
    }
  }
  to->Indices.reserve(std::size_t{from.mNumFaces} * corners);
  for (unsigned int i = 0; i < from.mNumFaces; ++i) {
    const aiFace& face = from.mFaces[i];
    if (face.mNumIndices != corners) {
      continue;
    }
    const bool sound = std::all_of(face.mIndices, face.mIndices + corners, [&](unsigned int index) {
      return index < from.mNumVertices && _IsFinite(to->Vertices[index]);
    });
    if (!sound) {
      continue;
    }
    for (unsigned int c = 0; c < corners; ++c) {
      to->Indices.push_back(face.mIndices[mirrored ? corners - 1 - c : c]);
    }
  }
}

struct TSides {
  std::size_t Agree = 0;  ///< triangles whose normals point to the side of their winding
  std::size_t Differ = 0; ///< to the other side
  double Volume = 0;      ///< above 0 where the winding of a closed mesh shows outward
};

TSides _CompareSides(const TMesh& mesh) {
  TSides sides;
  const float* origin = mesh.Vertices[mesh.Indices[0]].Position;
  for (std::size_t i = 0; i + 2 < mesh.Indices.size(); i += 3) {
    double p[3][3];
    double normal[3] = {};
    for (std::size_t c = 0; c < 3; ++c) {
      const TVertex& vertex = mesh.Vertices[mesh.Indices[i + c]];
      for (std::size_t k = 0; k < 3; ++k) {
        p[c][k] = double{vertex.Position[k]} - origin[k];
        normal[k] += vertex.Normal[k];
      }
    }
    double side = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      const std::size_t l = (k + 1) % 3;
      const std::size_t m = (k + 2) % 3;
      const double cross =
          (p[1][l] - p[0][l]) * (p[2][m] - p[0][m]) - (p[1][m] - p[0][m]) * (p[2][l] - p[0][l]);
      side += cross * normal[k];
      sides.Volume += cross * p[0][k];
    }
    sides.Agree += side > 0 ? 1 : 0;
    sides.Differ += side < 0 ? 1 : 0;
  }
  return sides;
}

// Some files have their normals or their winding the wrong way round all over: where nearly all
// triangles say so, the one that points into the body is turned.
void _TurnOutward(TMesh* mesh) {
  if (mesh->Indices.empty()) {
    return;
  }
  const TSides sides = _CompareSides(*mesh);
  if (sides.Differ <= 9 * sides.Agree) {
    return;
  }
  if (sides.Volume < 0) {
    for (std::size_t i = 0; i + 2 < mesh->Indices.size(); i += 3) {
      std::swap(mesh->Indices[i], mesh->Indices[i + 2]);
    }
    return;
  }
  for (TVertex& vertex : mesh->Vertices) {
    for (float& component : vertex.Normal) {
      component = -component;
    }
  }
}

int _Corners(const aiMesh& mesh) {
  switch (mesh.mPrimitiveTypes & ~static_cast<unsigned int>(aiPrimitiveType_NGONEncodingFlag)) {
  case aiPrimitiveType_POINT:
    return 1;
  case aiPrimitiveType_LINE:
    return 2;
  case aiPrimitiveType_TRIANGLE:
    return 3;
  default:
    return 0;
  }
}

void _TakeMesh(const aiMesh& from, const aiNode& node, const aiMatrix4x4& toWorld,
               const std::vector<unsigned int>& channels, TModel* out) {
  TMesh mesh;
  mesh.Name = from.mName.length > 0 ? from.mName.C_Str() : node.mName.C_Str();
  mesh.Corners = from.mNumFaces == 0 ? 1 : _Corners(from);
  if (mesh.Corners == 0 || from.mMaterialIndex >= out->Materials.size()) {
    return;
  }
  mesh.Material = static_cast<int>(from.mMaterialIndex);
  _TakeVertices(from, toWorld, channels[from.mMaterialIndex], out->Materials[from.mMaterialIndex],
                &mesh);
  _TakeIndices(from, toWorld.Determinant() < 0, &mesh);
  if (mesh.Corners == 3) {
    _TurnOutward(&mesh);
  }
  if (!mesh.Indices.empty()) {
    out->Meshes.push_back(std::move(mesh));
  }
}

void _TakeNodes(const aiScene& scene, const std::map<std::string, aiMatrix4x4>& matrices,
                const std::vector<unsigned int>& channels, TModel* out) {
  std::vector<std::pair<const aiNode*, aiMatrix4x4>> open;
  open.emplace_back(scene.mRootNode, aiMatrix4x4());
  while (!open.empty()) {
    const aiNode* node = open.back().first;
    const auto given = matrices.find(node->mName.C_Str());
    const aiMatrix4x4 toWorld =
        open.back().second * (given != matrices.end() ? given->second : node->mTransformation);
    open.pop_back();
    for (unsigned int i = 0; i < node->mNumMeshes; ++i) {
      if (node->mMeshes[i] < scene.mNumMeshes) {
        _TakeMesh(*scene.mMeshes[node->mMeshes[i]], *node, toWorld, channels, out);
      }
    }
    for (unsigned int i = node->mNumChildren; i-- > 0;) {
      open.emplace_back(node->mChildren[i], toWorld);
    }
  }
}

bool _CanBeRead(const std::string& name, std::string* error) {
  std::error_code code;
  if (std::filesystem::is_directory(name, code)) {
    *error = "is a directory";
    return false;
  }
  std::FILE* file = std::fopen(name.c_str(), "rb");
  if (file == nullptr) {
    *error = std::strerror(errno);
    return false;
  }
  std::fclose(file);
  return true;
}

// Sharp edges stay sharp where the file has no normals.
constexpr float kSmoothBelow = 66;

// Clouds of points stay as they are, since the later steps refuse meshes without faces.
const aiScene* _Finish(Assimp::Importer* importer, const aiScene* scene) {
  if (scene == nullptr || (scene->mNumMeshes > 0 &&
                           std::all_of(scene->mMeshes, scene->mMeshes + scene->mNumMeshes,
                                       [](const aiMesh* mesh) { return mesh->mNumFaces == 0; }))) {
    return scene;
  }
  importer->SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, kSmoothBelow);
  return importer->ApplyPostProcessing(
      aiProcess_ValidateDataStructure | aiProcess_Triangulate | aiProcess_SortByPType |
      aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices | aiProcess_GenUVCoords |
      aiProcess_TransformUVCoords | aiProcess_ImproveCacheLocality);
}

// `name` is that of the file; empty if it came as bytes.
bool _TakeScene(const Assimp::Importer& importer, const aiScene* scene, const std::string& name,
                TModel* out, std::string* error, std::vector<std::string>* warnings) {
  if (scene == nullptr) {
    *error = importer.GetErrorString();
    if (error->empty()) {
      *error = "the importer gives no reason";
    }
    return false;
  }
  if (scene->mRootNode == nullptr || scene->mNumMeshes == 0) {
    *error = "the file holds no mesh";
    return false;
  }
  TTextureLoader textures(*scene, name, out, warnings);
  std::vector<unsigned int> channels;
  for (unsigned int i = 0; i < scene->mNumMaterials; ++i) {
    out->Materials.emplace_back();
    channels.push_back(_TakeMaterial(*scene->mMaterials[i], &textures, &out->Materials.back()));
  }
  if (out->Materials.empty()) {
    out->Materials.emplace_back();
    channels.push_back(0);
  }
  const std::map<std::string, aiMatrix4x4> matrices = ReadGltf1Nodes(name);
  _TakeNodes(*scene, matrices, channels, out);
  if (out->Meshes.empty()) {
    *error = "the file holds nothing that can be drawn";
    return false;
  }
  TakeFileViews(importer, *scene, matrices, out);
  return true;
}

} // namespace

bool LoadModel(const std::string& name, TModel* out, std::string* error,
               std::vector<std::string>* warnings) {
  if (!_CanBeRead(name, error)) {
    return false;
  }
  Assimp::Importer importer;
  const aiScene* scene = _Finish(&importer, importer.ReadFile(name, 0));
  return _TakeScene(importer, scene, name, out, error, warnings);
}

bool LoadModelBytes(const std::string& bytes, const std::string& format, TModel* out,
                    std::string* error, std::vector<std::string>* warnings) {
  if (bytes.empty()) {
    *error = "is empty";
    return false;
  }
  // Assimp knows most kinds by their first bytes, but not this one.
  const std::string hint = format.empty() && bytes.rfind("glTF", 0) == 0 ? "glb" : format;
  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFileFromMemory(bytes.data(), bytes.size(), 0, hint.c_str());
  return _TakeScene(importer, _Finish(&importer, scene), std::string(), out, error, warnings);
}

} // namespace zx_scene
