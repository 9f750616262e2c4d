// One scene that shows what the renderer does: the same small picture on two boxes, sampled nearest
// and bilinear; a floor lit by two spot lights, which mirrors what stands on it through the stencil
// buffer; blended glass; a cloud of points in a cage of lines; and a ring drawn by a shader pair of
// the program's own, which lights every pixel and cuts holes.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

using TPoint = vec_t_<double, 3>;
using TVector = vec_t_<double, 4>;
using VAR_DATA = Zx3D::TRenderCPU::VAR_DATA;
using FS_DATA = Zx3D::TRenderCPU::FS_DATA;

constexpr double kPi = 3.141592653589793;
constexpr int kWidth = 1024;
constexpr int kHeight = 640;

// --- The shader pair: what the fixed stages compute for a vertex, it computes for every pixel

enum TUniform { s_lightA, s_lightB, s_holes };

unsigned int LocationOf(const char* name) {
  const char* names[] = {"lightA", "lightB", "holes"};
  for (unsigned int i = 0; i < 3; ++i) {
    if (std::strcmp(name, names[i]) == 0) {
      return i;
    }
  }
  return 0xFFFFFFFF;
}

TVector Applied(const MAT4<double>& m, const TVector& v) {
  TVector out;
  for (int i = 0; i < 4; ++i) {
    out[i] = m[i] * v.x + m[4 + i] * v.y + m[8 + i] * v.z + m[12 + i] * v.w;
  }
  return out;
}

TPoint Unit(const TPoint& v) {
  const double size = length(v);
  return size > 0 ? v * (1 / size) : v;
}

/// Slots: clip position, eye position, eye normal, texture coordinate.
class TRingVertexShader : public Zx3D::TVertexShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return 0xFFFFFFFF; }
  unsigned int GetAttribLocation(const char*) const override { return 0xFFFFFFFF; }
  void Begin() override {
    m_Render->m_VarPosition = 0;
    m_Render->m_VarCount = 4;
  }
  void End() override {}
  void Execute(VAR_DATA* v) override {
    const Zx3D::TRenderCPU& gl = *m_Render;
    const TVector& normal = gl.m_CurNormal;
    (*v)[0] = Applied(gl.m_ModelViewProjection, gl.m_CurVertex);
    (*v)[1] = Applied(gl.m_ModelView, gl.m_CurVertex);
    (*v)[2] = Applied(gl.m_ModelView, {normal.x, normal.y, normal.z, 0});
    (*v)[3] = gl.m_CurTexCoord;
  }
};

/// Two lights, a colour that runs around the ring, holes where a pattern says so. Computes the
/// fragments of a row at once where the context can give them: the lights are then read once a row,
/// and there is one call for up to 64 pixels.
class TRingFragmentShader : public Zx3D::TRowFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char* name) const override { return LocationOf(name); }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const TPoint eye = {(*v)[1].x, (*v)[1].y, (*v)[1].z};
    const TPoint normal = {(*v)[2].x, (*v)[2].y, (*v)[2].z};
    return Shade(Uniforms(), eye, normal, (*v)[3].x, (*v)[3].y, &f->Color);
  }
  void ExecuteRow(const Zx3D::FS_ROW& row) override {
    const TUniforms uniforms = Uniforms();
    const auto point = [&row](int slot, int i) {
      return TPoint{row.Slots[slot][0][i], row.Slots[slot][1][i], row.Slots[slot][2][i]};
    };
    for (int i = 0; i < row.Count; ++i) {
      TVector color = {0, 0, 0, 0};
      row.Keep[i] =
          Shade(uniforms, point(1, i), point(2, i), row.Slots[3][0][i], row.Slots[3][1][i], &color);
      for (int c = 0; c < 4; ++c) {
        row.Color[c][i] = color[c];
      }
    }
  }

private:
  struct TUniforms {
    TPoint Lights[2]; ///< in eye space
    TVector Holes;
  };

  TUniforms Uniforms() const {
    const TVector& a = m_Render->m_Uniforms[s_lightA];
    const TVector& b = m_Render->m_Uniforms[s_lightB];
    return {{{a.x, a.y, a.z}, {b.x, b.y, b.z}}, m_Render->m_Uniforms[s_holes]};
  }

  /// One fragment of the surface around (s, t); false in a hole.
  static bool Shade(const TUniforms& uniforms, const TPoint& eye, const TPoint& slope, double s,
                    double t, TVector* out) {
    const TVector& holes = uniforms.Holes;
    const double cellX = s * holes.x - std::floor(s * holes.x) - 0.5;
    const double cellY = t * holes.y - std::floor(t * holes.y) - 0.5;
    if (cellX * cellX + cellY * cellY < holes.z) {
      return false;
    }
    TPoint normal = Unit(slope);
    if (dot(normal, eye) > 0) {
      normal = normal * -1.0; // the inside of the ring, seen through a hole
    }
    TPoint color = {0, 0, 0};
    for (const TPoint& light : uniforms.Lights) {
      const TPoint to = Unit(light - eye);
      const double diffuse = std::max(0.0, dot(normal, to));
      const double gloss = std::pow(std::max(0.0, dot(normal, Unit(to - Unit(eye)))), 60.0);
      for (int i = 0; i < 3; ++i) {
        const double own = 0.5 + 0.45 * std::cos(2 * kPi * (s * 2 + i / 3.0));
        color[i] += own * (0.10 + 0.62 * diffuse) + 0.55 * gloss;
      }
    }
    *out = {std::min(color.x, 1.0), std::min(color.y, 1.0), std::min(color.z, 1.0), 1.0};
    return true;
  }
};

// --- Textures

/// 16 by 16 texels with hard edges, so that the filters can be told apart.
unsigned int MakePicture(TZxGL& gl) {
  const char* rows[16] = {
      "................", ".....oooooo.....", "...oooooooooo...", "..oooooooooooo..",
      "..oooooooooooo..", ".oooxxooooxxooo.", ".oooxxooooxxooo.", ".oooooooooooooo.",
      ".oooooooooooooo.", ".oooooooooooooo.", ".ooxooooooooxoo.", "..ooxooooooxoo..",
      "..oooxxxxxxooo..", "...oooooooooo...", ".....oooooo.....", "................"};
  std::vector<unsigned char> texels;
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) {
      const char mark = rows[15 - y][x]; // the first row of a texture is the lowest
      const unsigned char even = (x + y) % 2 ? 30 : 0;
      const unsigned char ground[3] = {static_cast<unsigned char>(60 + even),
                                       static_cast<unsigned char>(95 + even), 165};
      const unsigned char face[3] = {250, 205, 70};
      const unsigned char line[3] = {60, 35, 20};
      const unsigned char* color = mark == 'o' ? face : mark == 'x' ? line : ground;
      texels.insert(texels.end(), color, color + 3);
    }
  }
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 16, 16, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
  return id;
}

unsigned int MakeTiles(TZxGL& gl) {
  std::vector<unsigned char> texels;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      const bool joint = x % 32 == 0 || y % 32 == 0;
      const bool dark = (x / 32 + y / 32) % 2 != 0;
      texels.push_back(joint ? 60 : dark ? 150 : 225);
    }
  }
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 64, 64, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE,
                texels.data());
  return id;
}

// --- Things

/// A box whose sides are grids, since lighting is computed at the vertices.
void Box(TZxGL& gl, double half) {
  const int n = 12;
  for (int side = 0; side < 6; ++side) {
    const int axis = side / 2;
    const double sign = side % 2 ? 1 : -1;
    // The two axes of the side, so that the picture stands upright on the four walls.
    TPoint out = {0, 0, 0}, right = {0, 0, 0}, up = {0, 0, 0};
    out[axis] = sign;
    if (axis == 1) {
      right.x = 1;
      up.z = -sign;
    } else {
      right = cross({0, 1, 0}, out);
      up.y = 1;
    }
    gl.Normal3dv(&out.x);
    gl.Begin(GL_QUADS);
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < n; ++i) {
        for (int corner = 0; corner < 4; ++corner) {
          const double s = static_cast<double>(i + (corner == 1 || corner == 2)) / n;
          const double t = static_cast<double>(j + (corner >= 2)) / n;
          const TPoint at = (out + right * (2 * s - 1) + up * (2 * t - 1)) * half;
          gl.TexCoord2d(s, t);
          gl.Vertex3dv(&at.x);
        }
      }
    }
    gl.End();
  }
}

void Ring(TZxGL& gl, double radius, double thickness) {
  const int around = 96, across = 32;
  for (int i = 0; i < around; ++i) {
    gl.Begin(GL_TRIANGLE_STRIP);
    for (int j = 0; j <= across; ++j) {
      for (int k = 1; k >= 0; --k) {
        const double u = static_cast<double>(i + k) / around;
        const double v = static_cast<double>(j) / across;
        const double a = 2 * kPi * u, b = 2 * kPi * v;
        const TPoint out = {std::cos(a), std::sin(a), 0};
        const TPoint normal = out * std::cos(b) + TPoint{0, 0, std::sin(b)};
        const TPoint at = out * radius + normal * thickness;
        gl.Normal3dv(&normal.x);
        gl.TexCoord2d(u, v);
        gl.Vertex3dv(&at.x);
      }
    }
    gl.End();
  }
}

/// Points on a sphere by the golden angle, in a cage of circles.
void PointsAndLines(TZxGL& gl, double radius) {
  const int count = 2600;
  gl.Begin(GL_POINTS);
  for (int i = 0; i < count; ++i) {
    const double z = 1 - 2 * (i + 0.5) / count;
    const double r = std::sqrt(1 - z * z) * radius;
    const double angle = 2.399963229728653 * i;
    gl.Color3d(0.5 + 0.5 * z, 0.75, 1.0 - 0.3 * z);
    gl.Vertex3d(r * std::cos(angle), z * radius, r * std::sin(angle));
  }
  gl.End();
  for (int circle = 0; circle < 9; ++circle) {
    const double turn = kPi * circle / 9;
    gl.Color3d(1.0, 0.55 + 0.04 * circle, 0.25);
    gl.Begin(GL_LINE_LOOP);
    for (int i = 0; i < 72; ++i) {
      const double a = 2 * kPi * i / 72, r = radius * 1.25;
      gl.Vertex3d(r * std::cos(a) * std::cos(turn), r * std::sin(a),
                  r * std::cos(a) * std::sin(turn));
    }
    gl.End();
  }
}

void Pane(TZxGL& gl, double x, double z, const TVector& color) {
  gl.Color4dv(&color.x);
  gl.Begin(GL_QUADS);
  gl.Vertex3d(x - 0.75, 0.02, z), gl.Vertex3d(x + 0.75, 0.02, z);
  gl.Vertex3d(x + 0.75, 2.3, z), gl.Vertex3d(x - 0.75, 2.3, z);
  gl.End();
  gl.Color4d(1, 1, 1, 0.8);
  gl.Begin(GL_LINE_LOOP);
  gl.Vertex3d(x - 0.75, 0.02, z), gl.Vertex3d(x + 0.75, 0.02, z);
  gl.Vertex3d(x + 0.75, 2.3, z), gl.Vertex3d(x - 0.75, 2.3, z);
  gl.End();
}

void Floor(TZxGL& gl, double alpha) {
  const int nx = 120, nz = 80;
  const double halfX = 6, nearZ = 3.5, farZ = -4.5;
  const float material[4] = {0.8f, 0.8f, 0.85f, static_cast<float>(alpha)};
  gl.Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, material);
  gl.Normal3d(0, 1, 0);
  for (int j = 0; j < nz; ++j) {
    gl.Begin(GL_TRIANGLE_STRIP);
    for (int i = 0; i <= nx; ++i) {
      for (int k = 0; k < 2; ++k) {
        const double x = -halfX + 2 * halfX * i / nx;
        const double z = farZ + (nearZ - farZ) * (j + k) / nz;
        gl.TexCoord2d(x / 2, z / 2);
        gl.Vertex3d(x, 0, z);
      }
    }
    gl.End();
  }
}

// --- The scene

struct TScene {
  unsigned int Picture = 0;
  unsigned int Tiles = 0;
  Zx3D::TProgramCPU Ring;
};

void SetSpot(TZxGL& gl, int index, const TPoint& at, const TPoint& to, const TPoint& color) {
  const unsigned int light = GL_LIGHT0 + static_cast<unsigned int>(index);
  const TPoint along = Unit(to - at);
  const float position[4] = {static_cast<float>(at.x), static_cast<float>(at.y),
                             static_cast<float>(at.z), 1};
  const float direction[3] = {static_cast<float>(along.x), static_cast<float>(along.y),
                              static_cast<float>(along.z)};
  const float diffuse[4] = {static_cast<float>(color.x), static_cast<float>(color.y),
                            static_cast<float>(color.z), 1};
  const float none[4] = {0, 0, 0, 1};
  gl.Lightfv(light, GL_POSITION, position);
  gl.Lightfv(light, GL_SPOT_DIRECTION, direction);
  gl.Lightf(light, GL_SPOT_CUTOFF, 24);
  gl.Lightf(light, GL_SPOT_EXPONENT, 12);
  gl.Lightfv(light, GL_DIFFUSE, diffuse);
  gl.Lightfv(light, GL_SPECULAR, none);
  gl.EnableLight(static_cast<unsigned long>(index), true);
}

/// Positions are frozen in eye space when they are set: mirrored things want mirrored lights.
void SetLights(TZxGL& gl) {
  const float sky[4] = {0.35f, 0.5f, 0.7f, 0};
  const float faint[4] = {0.34f, 0.34f, 0.40f, 1};
  const float none[4] = {0, 0, 0, 1};
  gl.Lightfv(GL_LIGHT0, GL_POSITION, sky);
  gl.Lightfv(GL_LIGHT0, GL_DIFFUSE, faint);
  gl.Lightfv(GL_LIGHT0, GL_SPECULAR, none);
  gl.EnableLight(0, true);
  SetSpot(gl, 1, {-3.2, 6.0, 4.0}, {-1.6, 0, 0.6}, {1.5, 1.25, 0.85});
  SetSpot(gl, 2, {2.4, 5.0, 6.0}, {1.9, 0, 0.6}, {1.15, 1.35, 1.75});
}

TVector EyePosition(Zx3D::TRenderCPU& gl, const TPoint& at) {
  return Applied(gl.m_ModelView, {at.x, at.y, at.z, 1});
}

/// What stands on the floor and is not of glass.
void Solid(Zx3D::TRenderCPU& gl, TScene& scene) {
  const float white[4] = {1, 1, 1, 1};
  SetLights(gl);
  gl.Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, white);
  gl.EnableLighting(true);
  gl.Enable(GL_TEXTURE_2D);
  gl.BindTexture(GL_TEXTURE_2D, scene.Picture);
  gl.TexWrap2D(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
  for (int k = 0; k < 2; ++k) {
    const unsigned int filter = k == 0 ? GL_NEAREST : GL_LINEAR;
    gl.TexFilter2D(filter, filter);
    gl.PushMatrix();
    gl.Translated(k == 0 ? -2.55 : 2.55, 0.801, 0.4);
    gl.Rotated(k == 0 ? 28 : -28, 0, 1, 0);
    Box(gl, 0.8);
    gl.PopMatrix();
  }
  gl.Disable(GL_TEXTURE_2D);
  gl.EnableLighting(false);

  gl.SetProgram(&scene.Ring);
  gl.Uniform(static_cast<int>(scene.Ring.GetUniformLocation("lightA")),
             EyePosition(gl, {-3.2, 6.0, 4.0}));
  gl.Uniform(static_cast<int>(scene.Ring.GetUniformLocation("lightB")),
             EyePosition(gl, {2.4, 5.0, 6.0}));
  gl.Uniform(static_cast<int>(scene.Ring.GetUniformLocation("holes")), TVector{24, 8, 0.075, 0});
  gl.PushMatrix();
  gl.Translated(0, 1.72, 0.2);
  gl.Rotated(-22, 0, 1, 0);
  Ring(gl, 1.2, 0.42);
  gl.PopMatrix();
  gl.SetProgram(nullptr);

  gl.PushMatrix();
  gl.Translated(0, 1.72, 0.2);
  gl.Rotated(20, 1, 0, 1);
  PointsAndLines(gl, 0.5);
  gl.PopMatrix();
}

/// Blended, hence from back to front, and without writing depth.
void Glass(TZxGL& gl) {
  gl.Enable(GL_BLEND);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  gl.DepthMask(0);
  Pane(gl, -3.1, -2.6, {0.95, 0.25, 0.25, 0.45});
  Pane(gl, -2.2, -2.2, {0.95, 0.85, 0.20, 0.45});
  Pane(gl, 2.1, -2.2, {0.25, 0.85, 0.45, 0.45});
  Pane(gl, 2.8, -1.8, {0.25, 0.45, 0.95, 0.45});
  gl.DepthMask(1);
  gl.Disable(GL_BLEND);
}

void Mirrored(Zx3D::TRenderCPU& gl, TScene& scene) {
  // 1. Mark where the floor is.
  gl.Enable(GL_STENCIL_TEST);
  gl.StencilFunc(GL_ALWAYS, 1, 0xFF);
  gl.StencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
  gl.ColorMask(0, 0, 0, 0);
  gl.DepthMask(0);
  gl.EnableLighting(false);
  gl.Disable(GL_TEXTURE_2D);
  Floor(gl, 1);
  gl.ColorMask(1, 1, 1, 0);
  gl.DepthMask(1);

  // 2. The world upside down, there only. A mirror turns the winding over.
  gl.StencilFunc(GL_EQUAL, 1, 0xFF);
  gl.StencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
  gl.PushMatrix();
  gl.Scaled(1, -1, 1);
  gl.FrontFace(GL_CW);
  Solid(gl, scene);
  Glass(gl);
  gl.FrontFace(GL_CCW);
  gl.PopMatrix();
  gl.Disable(GL_STENCIL_TEST);

  // 3. The floor over it, letting a part of it through, at its own depth.
  gl.Clear(GL_DEPTH_BUFFER_BIT);
  SetLights(gl);
  gl.EnableLighting(true);
  gl.Enable(GL_TEXTURE_2D);
  gl.BindTexture(GL_TEXTURE_2D, scene.Tiles);
  gl.TexWrap2D(GL_REPEAT, GL_REPEAT);
  gl.TexFilter2D(GL_LINEAR, GL_LINEAR);
  gl.Enable(GL_BLEND);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  Floor(gl, 0.72);
  gl.Disable(GL_BLEND);
  gl.Disable(GL_TEXTURE_2D);
  gl.EnableLighting(false);
}

void Backdrop(TZxGL& gl) {
  gl.Disable(GL_DEPTH_TEST);
  gl.DepthMask(0);
  gl.PushMatrix();
  gl.LoadIdentity();
  gl.Begin(GL_QUADS);
  gl.Color3d(0.16, 0.17, 0.24), gl.Vertex3d(-20, -12, -19.9), gl.Vertex3d(20, -12, -19.9);
  gl.Color3d(0.02, 0.02, 0.05), gl.Vertex3d(20, 9, -19.9), gl.Vertex3d(-20, 9, -19.9);
  gl.End();
  gl.PopMatrix();
  gl.DepthMask(1);
  gl.Enable(GL_DEPTH_TEST);
}

bool Draw(Zx3D::TRenderCPU& gl) {
  TScene scene;
  TRingVertexShader* vertex = new TRingVertexShader;
  TRingFragmentShader* fragment = new TRingFragmentShader;
  scene.Ring.SetShaderV(vertex);
  scene.Ring.SetShaderF(fragment);
  vertex->Release();
  fragment->Release();
  scene.Picture = MakePicture(gl);
  scene.Tiles = MakeTiles(gl);

  gl.ClearColor(0, 0, 0, 1);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  gl.ColorMask(1, 1, 1, 0); // blending leaves the picture itself opaque
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Frustum(-0.8 * kWidth / kHeight * 0.5, 0.8 * kWidth / kHeight * 0.5, -0.4, 0.4, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  gl.LoadIdentity();
  gl.Rotated(18, 1, 0, 0);
  gl.Translated(0, -3.45, -7.1);
  gl.Enable(GL_NORMALIZE);
  gl.DepthFunc(GL_LEQUAL);

  Backdrop(gl);
  Mirrored(gl, scene);
  Solid(gl, scene);
  Glass(gl);
  return gl.GetError() == GL_NO_ERROR;
}

} // namespace

int main(int argc, char** argv) {
  const char* name = argc > 1 ? argv[1] : "showcase.png";
  Init_ZxCore3D();
  bool ok = false;
  {
    Zx3D::TRenderCPU gl;
    ok = gl.Create(kWidth, kHeight, nullptr) && Draw(gl) &&
         SaveImage(name, nullptr, *gl.GetColorSurface());
  }
  Deinit_ZxCore3D();
  if (!ok) {
    std::fprintf(stderr, "showcase: drawing failed, or can't write %s\n", name);
  }
  return ok ? 0 : 1;
}
