// A photographed plane set straight: from points whose places on the plane and in the photo are
// known the projective map between both is estimated, and the plane is drawn as seen from the
// front.
//
//   fit_homography OUT.png                                  takes a photo of its own first, and
//   shows
//                                                           photo and result side by side
//   fit_homography IN OUT.png X0 Y0 X1 Y1 X2 Y2 X3 Y3       the pixels of the plane's corners in
//   IN:
//                                                           lower left, lower right, upper right,
//                                                           upper left, counted from the lower left

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

using TPoint = vec_t_<double, 2>;

constexpr int kSize = 480;        ///< of the straight picture, and the height of the own photo
constexpr int kPhotoWidth = 640;  ///< of the own photo
constexpr double kPosterHalf = 1; ///< the own plane spans -1 to 1 both ways

// --- The photo

/// A poster: rings, a frame and letters' worth of bars, so that both lines and circles can be
/// judged.
void MakePoster(TDataSurface* poster) {
  const int size = 256;
  poster->Create(size, size, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      unsigned char* texel = poster->Data + y * poster->RowStride + x * poster->PixelStride;
      const double dx = x - 127.5, dy = y - 127.5, r = std::sqrt(dx * dx + dy * dy);
      const bool frame = x < 8 || y < 8 || x >= size - 8 || y >= size - 8;
      const bool ring = r < 92 && static_cast<int>(r / 13) % 2 == 0;
      const bool grid = r >= 92 && (x % 32 < 2 || y % 32 < 2);
      const bool mark = x < 56 && y > 200; // the upper left corner, to tell the sides apart
      const unsigned char paper[3] = {242, 236, 220}, ink[3] = {40, 60, 110},
                          red[3] = {200, 60, 50};
      const unsigned char* color = frame || grid ? ink : mark || ring ? red : paper;
      texel[0] = color[0], texel[1] = color[1], texel[2] = color[2];
    }
  }
}

/// The pixel that a place on the poster has in the photo.
TPoint Seen(const Zx3D::TRenderCPU& gl, const TPoint& place) {
  const MAT4<double>& m = gl.m_ModelViewProjection;
  const double w = m[3] * place.x + m[7] * place.y + m[15];
  const double x = (m[0] * place.x + m[4] * place.y + m[12]) / w;
  const double y = (m[1] * place.x + m[5] * place.y + m[13]) / w;
  return {(x + 1) * 0.5 * gl.m_Width, (y + 1) * 0.5 * gl.m_Height};
}

/// Draws the poster on a wall, seen from the side, and measures nine of its places in the photo as
/// a hand would: to whole pixels.
void TakePhoto(Zx3D::TRenderCPU& gl, std::vector<TPoint>* places, std::vector<TPoint>* pixels) {
  TDataSurface* poster = new TDataSurface;
  MakePoster(poster);
  const unsigned int id = gl.AttachTexture(poster);
  gl.ClearColor(0.55f, 0.57f, 0.55f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Frustum(-0.5333, 0.5333, -0.4, 0.4, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  gl.LoadIdentity();
  gl.Translated(-0.1, -0.1, -3.3);
  gl.Rotated(-14, 1, 0, 0);
  gl.Rotated(-42, 0, 1, 0);
  gl.Rotated(9, 0, 0, 1);

  gl.Color3f(0.42f, 0.44f, 0.43f); // the poster's shadow on the wall
  gl.Begin(GL_QUADS);
  gl.Vertex2d(-0.96, -1.06), gl.Vertex2d(1.05, -1.06), gl.Vertex2d(1.05, 0.96),
      gl.Vertex2d(-0.96, 0.96);
  gl.End();
  gl.Color3f(1, 1, 1);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexFilter2D(GL_LINEAR, GL_LINEAR);
  gl.TexWrap2D(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
  gl.Enable(GL_TEXTURE_2D);
  gl.Begin(GL_QUADS);
  gl.TexCoord2d(0, 0), gl.Vertex2d(-kPosterHalf, -kPosterHalf);
  gl.TexCoord2d(1, 0), gl.Vertex2d(kPosterHalf, -kPosterHalf);
  gl.TexCoord2d(1, 1), gl.Vertex2d(kPosterHalf, kPosterHalf);
  gl.TexCoord2d(0, 1), gl.Vertex2d(-kPosterHalf, kPosterHalf);
  gl.End();
  gl.Disable(GL_TEXTURE_2D);

  for (int i = 0; i < 9; ++i) {
    const TPoint place = {(i % 3 - 1) * kPosterHalf, (i / 3 - 1) * kPosterHalf};
    const TPoint pixel = Seen(gl, place);
    places->push_back(place);
    pixels->push_back({std::floor(pixel.x) + 0.5, std::floor(pixel.y) + 0.5});
  }
}

// --- The map

/// Pixels as numbers around 0 and of the size of 1: the fit is neither shift nor scale invariant,
/// and loses digits with the fourth power of the coordinates.
struct TUnits {
  double Half;
  TPoint Centre;

  explicit TUnits(const DATASURFACE& photo)
      : Half(0.5 * (photo.Width > photo.Height ? photo.Width : photo.Height)),
        Centre{0.5 * photo.Width, 0.5 * photo.Height} {}

  TPoint FromPixel(const TPoint& p) const { return (p - Centre) * (1 / Half); }
  TPoint ToPixel(const TPoint& p) const { return p * Half + Centre; }
};

TPoint Mapped(const MAT3<double>& m, const TPoint& p) {
  const double w = m[2] * p.x + m[5] * p.y + m[8];
  return {(m[0] * p.x + m[3] * p.y + m[6]) / w, (m[1] * p.x + m[4] * p.y + m[7]) / w};
}

bool Estimate(const TUnits& units, const std::vector<TPoint>& places,
              const std::vector<TPoint>& pixels, MAT3<double>* map) {
  std::vector<TPoint> targets;
  for (const TPoint& pixel : pixels) {
    targets.push_back(units.FromPixel(pixel));
  }
  if (!GetProjectiveTransform(&places[0], &targets[0], places.size(), map)) {
    std::fprintf(stderr, "fit_homography: these points have no projective map\n");
    return false;
  }
  double worst = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    worst = std::fmax(worst, length(units.ToPixel(Mapped(*map, places[i])) - pixels[i]));
  }
  std::printf("%zu points, farthest off by %.2f pixels\n", places.size(), worst);
  return true;
}

/// The plane as seen from the front: for each of its pixels, the photo's colour at the mapped
/// place.
bool Straighten(DATASURFACE* photo, const TUnits& units, const MAT3<double>& map,
                TDataSurface* out) {
  Zx3D::TRenderCPU::TTexSampler sampler;
  if (!sampler.SetSurface(photo) || !sampler.SetFilter(GL_LINEAR, GL_LINEAR) ||
      !sampler.SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE) ||
      !out->Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4)) {
    return false;
  }
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) {
      const TPoint place = {2 * (x + 0.5) / kSize - 1, 2 * (y + 0.5) / kSize - 1};
      const TPoint pixel = units.ToPixel(Mapped(map, place));
      vec_t_<double, 3> color = {0, 0, 0};
      sampler.GetValue(TPoint{pixel.x / photo->Width, pixel.y / photo->Height}, &color);
      unsigned char* to = out->Data + y * out->RowStride + x * out->PixelStride;
      for (int i = 0; i < 3; ++i) {
        to[i] = static_cast<unsigned char>(color[i] * 255 + 0.5);
      }
      to[3] = 255;
    }
  }
  return true;
}

// --- The two ways to call it

void Cross(TZxGL& gl, const TPoint& at) {
  gl.Begin(GL_QUADS);
  for (int k = 0; k < 2; ++k) {
    const double a = k == 0 ? 9 : 1.5, b = k == 0 ? 1.5 : 9;
    gl.Vertex2d(at.x - a, at.y - b), gl.Vertex2d(at.x + a, at.y - b);
    gl.Vertex2d(at.x + a, at.y + b), gl.Vertex2d(at.x - a, at.y + b);
  }
  gl.End();
}

bool Demonstrate(const char* name) {
  Zx3D::TRenderCPU camera;
  std::vector<TPoint> places, pixels;
  MAT3<double> map;
  TDataSurface straight;
  if (!camera.Create(kPhotoWidth, kSize, nullptr)) {
    return false;
  }
  TakePhoto(camera, &places, &pixels);
  DATASURFACE* photo = camera.GetColorSurface();
  const TUnits units(*photo);
  if (!Estimate(units, places, pixels, &map) || !Straighten(photo, units, map, &straight)) {
    return false;
  }
  // Both side by side, the measured points marked.
  Zx3D::TRenderCPU sheet;
  if (!sheet.Create(kPhotoWidth + 20 + kSize, kSize, nullptr)) {
    return false;
  }
  sheet.ClearColor(1.0f, 1.0f, 1.0f, 1.0f);
  sheet.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  sheet.WindowPos2i(0, 0);
  sheet.DrawPixels(kPhotoWidth, kSize, GL_RGBA, GL_UNSIGNED_BYTE, photo->Data);
  sheet.WindowPos2i(kPhotoWidth + 20, 0);
  sheet.DrawPixels(kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, straight.Data);
  sheet.MatrixMode(GL_PROJECTION);
  sheet.LoadIdentity();
  sheet.Ortho(0, sheet.m_Width, 0, sheet.m_Height, -1, 1);
  sheet.Color3f(0.1f, 0.75f, 0.35f);
  for (const TPoint& pixel : pixels) {
    Cross(sheet, pixel);
  }
  return SaveImage(name, nullptr, *sheet.GetColorSurface());
}

bool StraightenFile(char** argv) {
  DATASURFACE loaded = {};
  if (!LoadImage(argv[1], nullptr, &loaded)) {
    std::fprintf(stderr, "fit_homography: can't read %s\n", argv[1]);
    return false;
  }
  TDataSurface photo;
  photo.Adopt(loaded);
  std::vector<TPoint> pixels;
  for (int i = 0; i < 4; ++i) {
    pixels.push_back({std::atof(argv[3 + 2 * i]), std::atof(argv[4 + 2 * i])});
  }
  MAT3<double> map;
  TDataSurface straight;
  const TUnits units(photo);
  return Estimate(units, {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}, pixels, &map) &&
         Straighten(&photo, units, map, &straight) && SaveImage(argv[2], nullptr, straight);
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 11) {
    std::fprintf(stderr, "usage: fit_homography [IN] OUT.png [X0 Y0 X1 Y1 X2 Y2 X3 Y3]\n");
    return 2;
  }
  Init_ZxCore3D();
  const bool ok = argc == 2 ? Demonstrate(argv[1]) : StraightenFile(argv);
  Deinit_ZxCore3D();
  if (!ok) {
    std::fprintf(stderr, "fit_homography: failed\n");
  }
  return ok ? 0 : 1;
}
