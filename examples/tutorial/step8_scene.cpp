// Step 8: a scene saved as a file, read back, and drawn from what was read.

#include <string>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

using namespace Zx3D;

static bool Save(const TAttributes& scene, const std::string& name) {
  TFileStream file;
  TObjectWriter writer(&file, false); // false: the stream stays ours
  bool ok = file.Create(name);
  for (const auto& [key, value] : scene.GetValues()) {
    ok = ok && SaveAttribute(&writer, key, value);
  }
  return file.Close() && ok;
}

static bool Load(const std::string& name, TAttributes* scene) {
  TFileStream file;
  TObjectReader reader(&file, false);
  bool ok = file.Open(name);
  while (ok && !file.IsEOS()) {
    std::string key;
    TVariant value;
    ok = LoadAttribute(&reader, key, value) && scene->SetValue(key, value);
  }
  return ok;
}

static bool Draw(const std::string& picture) {
  const double quads[][11] = {{0.6, 0.8, 1.0, -1, -0.4, 1, -0.2, 1, 1, -1, 1},   // a colour and
                              {0.3, 0.6, 0.2, -1, -1, 1, -1, 1, -0.2, -1, -0.4}, // four corners
                              {0.9, 0.8, 0.6, -0.5, -0.6, 0.4, -0.6, 0.4, 0.1, -0.5, 0.1},
                              {0.7, 0.2, 0.1, -0.6, 0.1, 0.5, 0.1, 0.2, 0.6, -0.3, 0.6}};
  TAttributes scene, loaded; // values by name, in the order of the names
  TVariant value;
  for (const char* name : {"1 sky", "2 meadow", "3 house", "4 roof"}) {
    value.SetArray(quads[name[0] - '1'], 11), scene.SetValue(name, value);
  }
  TRenderCPU gl;
  bool ok = gl.Create(320, 240, nullptr) && Save(scene, picture + ".scene") &&
            Load(picture + ".scene", &loaded);
  for (auto item = loaded.GetValues().begin(); ok && item != loaded.GetValues().end(); ++item) {
    double quad[11] = {};
    ok = item->second.GetArray(quad, 11); // false for fewer numbers, or for something else
    gl.Color3dv(quad), gl.Begin(GL_QUADS);
    gl.Vertex2dv(quad + 3), gl.Vertex2dv(quad + 5), gl.Vertex2dv(quad + 7), gl.Vertex2dv(quad + 9);
    gl.End();
  }
  return ok && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step8_scene.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
