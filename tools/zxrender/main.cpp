// zxrender: draws a model file into a PNG.

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "Model.h"
#include "Options.h"
#include "Progress.h"
#include "Scene.h"

namespace {

using TClock = std::chrono::steady_clock;

double _Since(TClock::time_point begin) {
  return std::chrono::duration<double>(TClock::now() - begin).count();
}

int _Fail(const std::string& file, const std::string& reason) {
  std::fprintf(stderr, "zxrender: %s: %s\n", file.c_str(), reason.c_str());
  return 1;
}

struct TIMES {
  double Load = 0;
  double Draw = 0;
  double Save = 0;
  std::size_t Covered = 0;
};

void _PrintStats(const zx_scene::MODEL& model, const OPTIONS& options, int pictures,
                 const TIMES& times) {
  const double pixels = static_cast<double>(options.View.Width) * options.View.Height * pictures;
  std::printf("triangles  %zu\n", model.CountCorners(3));
  if (const std::size_t lines = model.CountCorners(2); lines > 0) {
    std::printf("lines      %zu\n", lines);
  }
  if (const std::size_t points = model.CountCorners(1); points > 0) {
    std::printf("points     %zu\n", points);
  }
  std::printf("vertices   %zu\n", model.CountVertices());
  std::printf("textures   %zu\n", model.Textures.size());
  std::printf("pixels     %zu covered of %.0f\n", times.Covered, pixels);
  std::printf("load       %.3f s\n", times.Load);
  std::printf("draw       %.3f s in %d picture%s\n", times.Draw, pictures,
              pictures == 1 ? "" : "s");
  std::printf("save       %.3f s\n", times.Save);
}

int _Render(const OPTIONS& options) {
  TIMES times;
  TClock::time_point begin = TClock::now();
  zx_scene::MODEL model;
  std::string error;
  std::vector<std::string> warnings;
  const bool loaded = zx_scene::LoadModel(options.Model, &model, &error, &warnings);
  for (const std::string& warning : warnings) {
    std::fprintf(stderr, "zxrender: %s: warning: %s\n", options.Model.c_str(), warning.c_str());
  }
  if (!loaded) {
    return _Fail(options.Model, error);
  }
  const int pictures = options.Frames > 0 ? options.Frames : 1;
  const std::vector<zx_scene::CAMERA> cameras = zx_scene::FrameModel(model, options.View, pictures);
  zx_scene::TScene scene;
  if (!scene.Create(model, options.View.Width, options.View.Height, options.Style, &error)) {
    return _Fail(options.Model, error);
  }
  times.Load = _Since(begin);
  TProgress progress(pictures);
  for (int i = 0; i < pictures; ++i) {
    begin = TClock::now();
    if (!scene.Draw(cameras[static_cast<std::size_t>(i)], &error)) {
      progress.Clear();
      return _Fail(options.Model, error);
    }
    times.Draw += _Since(begin);
    begin = TClock::now();
    const std::string name =
        options.Frames > 0 ? FrameName(options.Output, i, pictures) : options.Output;
    scene.ReadPicture();
    if (!scene.Save(name)) {
      progress.Clear();
      return _Fail(name, "can't be written");
    }
    times.Save += _Since(begin);
    times.Covered += options.Stats ? scene.CountCovered() : 0;
    progress.Show(i + 1);
  }
  progress.Clear();
  if (options.Stats) {
    _PrintStats(model, options, pictures, times);
  }
  return 0;
}

} // namespace

int main(int argc, char** argv) {
  OPTIONS options;
  switch (ReadOptions(argc, argv, &options)) {
  case COMMAND::Done:
    return 0;
  case COMMAND::Wrong:
    return 2;
  case COMMAND::Render:
    break;
  }
  Init_ZxCore3D();
  int result = 1;
  try {
    result = _Render(options);
  } catch (const std::bad_alloc&) {
    result = _Fail(options.Model, "not enough memory");
  } catch (const std::exception& error) {
    result = _Fail(options.Model, error.what());
  }
  Deinit_ZxCore3D();
  return result;
}
