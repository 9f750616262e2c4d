#pragma once

#include <map>
#include <string>

#include <assimp/types.h>

#include "Model.h"

struct aiScene;
namespace Assimp {
class Importer;
}

namespace zx_scene {

/// Takes the cameras of a file and its vertical axis, as far as it has any. `matrices` replace
/// those of nodes by their names.
void TakeFileViews(const Assimp::Importer& importer, const aiScene& scene,
                   const std::map<std::string, aiMatrix4x4>& matrices, TModel* out);

} // namespace zx_scene
