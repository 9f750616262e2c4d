#pragma once

#include <map>
#include <string>

#include <assimp/types.h>

namespace zx_scene {

/// The local matrices of the nodes of a glTF 1 file by their ids, as far as they are given by
/// translation, rotation and scale: Assimp 5.2 multiplies those in the reverse order. Empty for
/// any other file.
std::map<std::string, aiMatrix4x4> ReadGltf1Nodes(const std::string& name);

} // namespace zx_scene
