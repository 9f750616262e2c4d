#pragma once

#include <map>
#include <string>
#include <vector>

#include "Model.h"

struct aiScene;

namespace zx_scene {

/// Finds and loads the textures of one model, each once.
class TTextureLoader {
public:
  TTextureLoader(const aiScene& scene, std::string modelName, TModel* out,
                 std::vector<std::string>* warnings);

  /// The index of the texture that the file calls `name`, or -1 with a warning. `opaque` makes all
  /// its pixels opaque.
  int Get(const std::string& name, bool opaque);

private:
  bool _Load(const std::string& name, DATASURFACE* out, std::string* reason) const;

  const aiScene& m_Scene;
  std::string m_ModelName;
  TModel* m_Model;
  std::vector<std::string>* m_Warnings;
  std::map<std::pair<std::string, bool>, int> m_Known;
};

} // namespace zx_scene
