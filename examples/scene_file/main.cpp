// A scene as a file of the persistent format: objects made by class name, arrays as attributes, ids
// that the reader resolves.
//
//   scene_file save MODEL FILE      a model file of any kind as a scene file
//   scene_file show FILE PNG        draws a scene file
//   scene_file draw MODEL PNG       draws a model file directly: the same picture, byte for byte

#include <cstdio>
#include <string>
#include <vector>

#include "Model.h"
#include "Scene.h"
#include "SceneFile.h"
#include "SceneItems.h"

namespace {

bool Import(const std::string& name, zx_scene::TModel* model, std::string* error) {
  std::vector<std::string> warnings;
  const bool loaded = zx_scene::LoadModel(name, model, error, &warnings);
  for (const std::string& warning : warnings) {
    std::fprintf(stderr, "scene_file: %s: warning: %s\n", name.c_str(), warning.c_str());
  }
  return loaded;
}

bool Draw(const zx_scene::TModel& model, const std::string& picture, std::string* error) {
  const zx_scene::TView view;
  const std::vector<zx_scene::TCamera> cameras = zx_scene::FrameModel(model, view, 1);
  if (cameras.empty()) {
    *error = "holds nothing that can be drawn";
    return false;
  }
  zx_scene::TScene scene;
  if (!scene.Create(model, view.Width, view.Height, zx_scene::TStyle(), error) ||
      !scene.Draw(cameras[0], error)) {
    return false;
  }
  scene.ReadPicture();
  if (!scene.Save(picture)) {
    *error = "no picture can be written to " + picture;
    return false;
  }
  return true;
}

bool Run(const std::string& what, const std::string& from, const std::string& to,
         std::string* error) {
  zx_scene::TModel model;
  if (what == "save") {
    return Import(from, &model, error) && scene_file::SaveScene(to, model, error);
  }
  const bool loaded =
      what == "show" ? scene_file::LoadScene(from, &model, error) : Import(from, &model, error);
  return loaded && Draw(model, to, error);
}

} // namespace

int main(int argc, char** argv) {
  const std::string what = argc == 4 ? argv[1] : "";
  if (what != "save" && what != "show" && what != "draw") {
    std::fprintf(stderr, "usage: scene_file save MODEL FILE\n"
                         "       scene_file show FILE PNG\n"
                         "       scene_file draw MODEL PNG\n");
    return 2;
  }
  Init_ZxCore3D();
  scene_file::RegisterItems();
  std::string error;
  bool ok = false;
  try {
    ok = Run(what, argv[2], argv[3], &error);
  } catch (const std::exception& message) {
    error = message.what();
  }
  scene_file::UnregisterItems();
  Deinit_ZxCore3D();
  if (!ok) {
    std::fprintf(stderr, "scene_file: %s: %s\n", argv[2], error.c_str());
  }
  return ok ? 0 : 1;
}
