#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>

#include "Model.h"

namespace zx_scene {

struct TView {
  int Width = 800;
  int Height = 600;
  double Azimuth = 30;     ///< degrees round the vertical axis; 0 looks along -z
  double Elevation = 20;   ///< degrees above the ground
  double FieldOfView = 35; ///< degrees, of the shorter side of the picture
  bool ZUp = false;        ///< the model's vertical axis is z
};

/// Where the eye stands: the matrix of the view as OpenGL has it, and the distances between which
/// the model lies.
struct TCamera {
  double View[16];
  double Near;
  double Far;
  double HalfWidth;  ///< of the picture at distance 1
  double HalfHeight; ///< the same
  bool Orthographic; ///< the halves are those of the picture itself
};

/// The cameras that look from `frames` sides, evenly round the model and each as `view` says for
/// the first, at one distance: just far enough that all vertices of pieces lie in every picture.
/// Empty if there is no such vertex.
std::vector<TCamera> FrameModel(const TModel& model, const TView& view, int frames);

/// A camera of the file, for a picture of `view`'s size: by its name, or the first if that is
/// empty. False with `*error` as the reason if there is none.
bool TakeFileCamera(const TModel& model, const TView& view, const std::string& name, TCamera* out,
                    std::string* error);

enum class TLight {
  WithCamera, ///< the key light stands at the camera's left
  Fixed,      ///< the key light stands still, wherever the camera is
  None        ///< colours as they are in the file
};

struct TStyle {
  TColor Background = {0.86f, 0.88f, 0.91f, 1};
  bool Wire = false;
  bool Linear = true; ///< filter of textures
  int Samples = 1;    ///< a pixel: 1, 4 or 16
  TLight Light = TLight::WithCamera;
  double LightAzimuth = 0; ///< from where a fixed light comes, in the angles of `TView`
  double LightElevation = 0;
};

/// The direction from the model to an eye or a light at these angles.
TPoint DirectionOf(double azimuth, double elevation, bool zUp);

/// What the first surface is that is seen in the middle of each pixel; the bottom row first.
struct TLayers {
  int Width = 0;
  int Height = 0;
  std::vector<float> Depth;       ///< before the eye along its direction; infinity for nothing
  std::vector<float> Normals;     ///< three a pixel in the axes of the eye; 0 for nothing
  std::vector<std::uint32_t> Ids; ///< index in `MODEL::Meshes` plus 1; 0 for nothing
};

/// Gives back the reference to a counted object.
struct TReleaser {
  void operator()(zx::TRef* object) const { object->Release(); }
};

/// A model in buffers and textures of a context of its own, lit by a key light and a fill light.
class TScene {
  template <class T> using TOwned = std::unique_ptr<T, TReleaser>;

public:
  TScene() = default;
  TScene(const TScene&) = delete;
  TScene& operator=(const TScene&) = delete;

  /// False with `*error` as the reason when memory is exhausted. `model` must outlive the scene.
  /// `zUp` is the vertical axis by which a fixed light stands.
  bool Create(const TModel& model, int width, int height, const TStyle& style, std::string* error,
              bool zUp = false);

  /// Clears and draws. False with `*error` as the reason when the context reports an error.
  bool Draw(const TCamera& camera, std::string* error);

  /// Draws the layers instead of the picture, which is lost. What a material lets through by more
  /// than a half is left out. False with `*error` as the reason.
  bool DrawLayers(const TCamera& camera, TLayers* out, std::string* error);

  /// The picture's bytes, RGBA, the bottom row first.
  const std::vector<std::uint8_t>& ReadPicture();

  /// What `ReadPicture` gave as a record: three channels unless the background lets through. Empty
  /// before.
  DATASURFACE Picture() const;

  /// Saves `Picture()` as PNG.
  bool Save(const std::string& name) const;

  /// Pixels of which the last drawing covered at least one sample.
  std::size_t CountCovered();

private:
  struct TPart {
    unsigned int Vertices = 0; ///< buffer names
    unsigned int Indices = 0;
    unsigned int Mode = 0;
    int Count = 0;
    const TMesh* Mesh = nullptr;
    double Center[3] = {}; ///< by which blended parts are sorted
  };

  void _MakeTextures();
  void _MakePart(const TMesh& mesh);
  void _SetLights();
  void _SetMaterial(const TMaterial& material, bool hasColors);
  bool _SetSize(int width, int height, std::string* error);
  void _SetCamera(const TCamera& camera, double shiftX, double shiftY);
  void _BindPart(const TPart& part);
  void _DrawPart(const TPart& part, const TCamera& camera);
  void _DrawParts(const TCamera& camera);
  void _DrawLayer(const TCamera& camera, bool ids);

  Zx3D::TRenderCPU m_GL;
  TOwned<Zx3D::TProgramCPU> m_Cutout;
  TOwned<Zx3D::TProgramCPU> m_Layers;
  const TModel* m_Model = nullptr;
  TStyle m_Style;
  bool m_ZUp = false;
  int m_Width = 0;
  int m_Height = 0;
  int m_Side = 1; ///< samples a pixel in a row
  std::vector<unsigned int> m_Textures;
  std::vector<TPart> m_Parts;
  std::vector<std::uint8_t> m_Picture;
};

} // namespace zx_scene
