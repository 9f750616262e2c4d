#pragma once

#include <string>

#include "Model.h"

namespace scene_file {

/// Saves a model as a scene file (docs/scene-file.md). False with `*error` as the reason if the
/// file can't be written or the model has an empty mesh.
bool SaveScene(const std::string& name, const zx_scene::TModel& model, std::string* error);

/// Loads a scene file. False with `*error` as the reason when it can't be read or is damaged; what
/// `*model` holds then is of no use.
bool LoadScene(const std::string& name, zx_scene::TModel* model, std::string* error);

} // namespace scene_file
