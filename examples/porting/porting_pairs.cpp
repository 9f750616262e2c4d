// porting_pairs FOLDER: has both sides draw all scenes, each in a process of its own, since both
// define what OpenGL's names mean. Holds the pictures against each other, prints how they relate,
// and puts them side by side into FOLDER, the library's on the left. Ends with 1 if a scene relates
// otherwise than Scenes.h says.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

#include "Scenes.h"

namespace {

using porting::kPicture;
using porting::TScene;

bool Load(const std::string& name, TDataSurface* out) {
  DATASURFACE record = {};
  if (!LoadImage(name, nullptr, &record)) {
    return false;
  }
  out->Adopt(record);
  return out->Channels == 3 && out->Type == DATA_TYPE_UINT8;
}

const unsigned char* PixelAt(const TDataSurface& s, int x, int y) {
  return s.Data + y * s.RowStride + x * s.PixelStride;
}

int Distance(const unsigned char* a, const unsigned char* b) {
  return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

bool IsDrawn(const unsigned char* pixel) {
  static constexpr unsigned char kGround[3] = {26, 26, 38};
  return Distance(pixel, kGround) > 2;
}

struct TComparison {
  int Drawn = 0;   ///< pixels of the first that are not background
  int Outline = 0; ///< pixels that one side has drawn and the other has not
  int Unlike = 0;  ///< pixels with a channel that differs by more than 3
  int Far = 0;     ///< pixels drawn in one that have none beside them in the other
  double Mean = 0; ///< difference of the means of all channels, of 255
};

TComparison Compare(const TDataSurface& a, const TDataSurface& b) {
  TComparison c;
  double sums[2] = {};
  for (int y = 0; y < a.Height; ++y) {
    for (int x = 0; x < a.Width; ++x) {
      const unsigned char* p = PixelAt(a, x, y);
      const unsigned char* q = PixelAt(b, x, y);
      bool near[2] = {};
      for (int v = std::max(y - 1, 0); v <= std::min(y + 1, a.Height - 1); ++v) {
        for (int u = std::max(x - 1, 0); u <= std::min(x + 1, a.Width - 1); ++u) {
          near[0] = near[0] || IsDrawn(PixelAt(a, u, v));
          near[1] = near[1] || IsDrawn(PixelAt(b, u, v));
        }
      }
      c.Drawn += IsDrawn(p);
      c.Outline += IsDrawn(p) != IsDrawn(q);
      c.Unlike += Distance(p, q) > 3;
      c.Far += (IsDrawn(p) && !near[1]) || (IsDrawn(q) && !near[0]);
      sums[0] += p[0] + p[1] + p[2];
      sums[1] += q[0] + q[1] + q[2];
    }
  }
  c.Mean = (sums[0] - sums[1]) / (3.0 * a.Width * a.Height);
  return c;
}

bool IsAsTold(const TScene& scene, const TComparison& c, int pixels) {
  const bool drawn = c.Drawn > pixels / 500;
  switch (scene.Relation) {
  case porting::kSame:
    return drawn && c.Unlike <= pixels / 200 && c.Outline <= pixels / 500 &&
           std::abs(c.Mean) <= 0.2;
  case porting::kNear:
    return drawn && c.Far == 0;
  default:
    return c.Unlike > pixels / 50;
  }
}

/// Both pictures on a white ground, enlarged.
bool SavePair(const std::string& name, const TDataSurface* sides, int zoom) {
  TDataSurface pair;
  const int gap = 8;
  if (!pair.Create(2 * kPicture + gap, kPicture, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3)) {
    return false;
  }
  std::fill_n(pair.Data, pair.DataSize, static_cast<unsigned char>(255));
  for (int side = 0; side < 2; ++side) {
    for (int y = 0; y < kPicture; ++y) {
      for (int x = 0; x < kPicture; ++x) {
        std::copy_n(PixelAt(sides[side], x / zoom, y / zoom), 3,
                    pair.Data + y * pair.RowStride + (side * (kPicture + gap) + x) * 3);
      }
    }
  }
  return SaveImage(name, nullptr, pair);
}

bool ShowPair(const TScene& scene, const std::string& folder) {
  TDataSurface sides[2];
  std::string file = "/";
  file.append(scene.Name).append(".ppm");
  const int size = kPicture / scene.Zoom;
  if (!Load(folder + "/zxcore3d" + file, &sides[0]) ||
      !Load(folder + "/osmesa" + file, &sides[1]) || sides[0].Width != size ||
      sides[1].Width != size || !SavePair(folder + "/" + scene.Name + ".png", sides, scene.Zoom)) {
    std::fprintf(stderr, "porting_pairs: no pair of %s\n", scene.Name);
    return false;
  }
  static constexpr const char* kWords[] = {"same", "differs", "near"};
  const TComparison c = Compare(sides[0], sides[1]);
  const bool right = IsAsTold(scene, c, size * size);
  std::printf("%-24s %-8s %8d %8d %8d %8.2f%s\n", scene.Name, kWords[scene.Relation], c.Drawn,
              c.Outline, c.Unlike, c.Mean, right ? "" : "  NOT AS TOLD");
  return right;
}

bool RunSide(const std::string& program, const std::string& folder) {
  std::filesystem::create_directories(folder);
  const std::string command = "\"" + program + "\" \"" + folder + "\"";
  return std::system(command.c_str()) == 0;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: porting_pairs FOLDER\n");
    return 2;
  }
  const std::string folder = argv[1];
  const std::string own = std::filesystem::path(argv[0]).parent_path().string();
  const std::string place = own.empty() ? "./" : own + "/";
  if (!RunSide(place + "porting_zxcore3d", folder + "/zxcore3d") ||
      !RunSide(place + "porting_osmesa", folder + "/osmesa")) {
    return 1;
  }
  Init_ZxCore3D();
  bool ok = true;
  std::printf("%-24s %-8s %8s %8s %8s %8s\n", "scene", "", "drawn", "outline", "unlike", "mean");
  for (const TScene& scene : porting::kScenes) {
    ok = ShowPair(scene, folder) && ok;
  }
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
