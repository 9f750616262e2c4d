#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>

#include "Model.h"

namespace zx_scene {

struct VIEW {
  int Width = 800;
  int Height = 600;
  double Azimuth = 30;     ///< degrees round the vertical axis; 0 looks along -z
  double Elevation = 20;   ///< degrees above the ground
  double FieldOfView = 35; ///< degrees, of the shorter side of the picture
  bool ZUp = false;        ///< the model's vertical axis is z
};

/// Where the eye stands: the matrix of the view as OpenGL has it, and the distances between which
/// the model lies.
struct CAMERA {
  double View[16];
  double Near;
  double Far;
  double HalfWidth;  ///< of the picture at distance 1
  double HalfHeight; ///< the same
};

/// The cameras that look from `frames` sides, evenly round the model and each as `view` says for
/// the first, at one distance: just far enough that all vertices of pieces lie in every picture.
/// Empty if there is no such vertex.
std::vector<CAMERA> FrameModel(const MODEL& model, const VIEW& view, int frames);

struct STYLE {
  TColor Background = {0.86f, 0.88f, 0.91f, 1};
  bool Wire = false;
  bool Linear = true; ///< filter of textures
};

/// A model in buffers and textures of a context of its own, lit by a key light and a fill light
/// that stand with the camera.
class TScene {
public:
  TScene() = default;
  TScene(const TScene&) = delete;
  TScene& operator=(const TScene&) = delete;

  /// False with `*error` as the reason when memory is exhausted. `model` must outlive the scene.
  bool Create(const MODEL& model, int width, int height, const STYLE& style, std::string* error);

  /// Clears and draws. False with `*error` as the reason when the context reports an error.
  bool Draw(const CAMERA& camera, std::string* error);

  /// The picture's bytes, RGBA, the bottom row first.
  const std::vector<std::uint8_t>& ReadPicture();

  /// Saves what `ReadPicture` gave as PNG, without alpha unless the background lets through.
  bool Save(const std::string& name) const;

  /// Pixels that the last drawing covered.
  std::size_t CountCovered();

private:
  struct PART {
    unsigned int Vertices = 0; ///< buffer names
    unsigned int Indices = 0;
    unsigned int Mode = 0;
    int Count = 0;
    const MESH* Mesh = nullptr;
    double Center[3] = {}; ///< by which blended parts are sorted
  };

  void _MakeTextures();
  void _MakePart(const MESH& mesh);
  void _SetLights();
  void _SetMaterial(const MATERIAL& material, bool hasColors);
  void _DrawPart(const PART& part);
  void _DrawParts(const CAMERA& camera);

  Zx3D::TRenderCPU m_GL;
  const MODEL* m_Model = nullptr;
  STYLE m_Style;
  int m_Width = 0;
  int m_Height = 0;
  std::vector<unsigned int> m_Textures;
  std::vector<PART> m_Parts;
  std::vector<std::uint8_t> m_Picture;
};

} // namespace zx_scene
