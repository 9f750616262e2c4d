#include "FileViews.h"

#include <cmath>
#include <cstring>

#include <assimp/Importer.hpp>
#include <assimp/camera.h>
#include <assimp/importerdesc.h>
#include <assimp/scene.h>

#include "Angles.h"

namespace zx_scene {

namespace {

aiMatrix4x4 _ToWorld(const aiNode* node, const std::map<std::string, aiMatrix4x4>& matrices) {
  aiMatrix4x4 toWorld;
  for (; node != nullptr; node = node->mParent) {
    const auto given = matrices.find(node->mName.C_Str());
    toWorld = (given != matrices.end() ? given->second : node->mTransformation) * toWorld;
  }
  return toWorld;
}

TPoint _Normalized(const aiVector3D& v) {
  const double x = v.x;
  const double y = v.y;
  const double z = v.z;
  const double length = std::sqrt(x * x + y * y + z * z);
  return length > 0 ? TPoint{x / length, y / length, z / length} : TPoint{0, 0, 0};
}

TPoint _Cross(const TPoint& a, const TPoint& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

bool _IsGltf(const Assimp::Importer& importer) {
  const int index = importer.GetPropertyInteger("importerIndex", -1);
  const aiImporterDesc* about =
      index >= 0 ? importer.GetImporterInfo(static_cast<std::size_t>(index)) : nullptr;
  return about != nullptr && std::strstr(about->mFileExtensions, "gltf") != nullptr;
}

// False for a camera that looks nowhere.
bool _TakeCamera(const aiCamera& from, const aiMatrix4x4& toWorld, bool isGltf, TFileCamera* to) {
  // In glTF a camera stands at its node; Assimp 5.2 gives the node's translation a second time.
  const aiVector3D position = toWorld * (isGltf ? aiVector3D(0, 0, 0) : from.mPosition);
  const aiMatrix3x3 turn(toWorld);
  const TPoint forward = _Normalized(turn * from.mLookAt);
  const TPoint up = _Normalized(turn * from.mUp);
  const TPoint side = _Cross(forward, up);
  to->Name = from.mName.C_Str();
  to->Position = {position.x, position.y, position.z};
  to->Right = _Normalized(aiVector3D(static_cast<float>(side[0]), static_cast<float>(side[1]),
                                     static_cast<float>(side[2])));
  to->Back = {-forward[0], -forward[1], -forward[2]};
  to->Up = _Cross(to->Back, to->Right);
  const double aspect = from.mAspect > 0 ? double{from.mAspect} : 1.0;
  to->Orthographic = from.mOrthographicWidth > 0;
  to->HalfHeight = (to->Orthographic ? double{from.mOrthographicWidth}
                                     : TanOfRadians(double{from.mHorizontalFOV} / 2)) /
                   aspect;
  to->Near = from.mClipPlaneNear > 0 ? double{from.mClipPlaneNear} : 0.0;
  to->Far = from.mClipPlaneFar > from.mClipPlaneNear ? double{from.mClipPlaneFar} : 0.0;
  double sum = to->HalfHeight;
  for (std::size_t i = 0; i < 3; ++i) {
    sum += to->Position[i] + to->Right[i] + to->Up[i];
  }
  return std::isfinite(sum) && to->HalfHeight > 0 && to->Right != TPoint{0, 0, 0};
}

// Formats that say which axis is the vertical one say so by a number, 0 to 2; some versions of the
// importer turn the root accordingly.
bool _IsZUp(const aiScene& scene) {
  int axis = 1;
  if (scene.mMetaData == nullptr || !scene.mMetaData->Get("UpAxis", axis) || axis < 0 || axis > 2) {
    return false;
  }
  aiVector3D up(0, 0, 0);
  up[static_cast<unsigned int>(axis)] = 1;
  up = aiMatrix3x3(scene.mRootNode->mTransformation) * up;
  return std::abs(up.z) > std::abs(up.x) && std::abs(up.z) > std::abs(up.y);
}

} // namespace

void TakeFileViews(const Assimp::Importer& importer, const aiScene& scene,
                   const std::map<std::string, aiMatrix4x4>& matrices, TModel* out) {
  const bool isGltf = _IsGltf(importer);
  for (unsigned int i = 0; i < scene.mNumCameras; ++i) {
    const aiCamera& from = *scene.mCameras[i];
    TFileCamera camera;
    if (_TakeCamera(from, _ToWorld(scene.mRootNode->FindNode(from.mName), matrices), isGltf,
                    &camera)) {
      out->Cameras.push_back(camera);
    }
  }
  out->ZUp = _IsZUp(scene);
}

} // namespace zx_scene
