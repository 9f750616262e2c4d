// Six small scenes by shader pairs; docs/shaders.md shows this code. Upper row: a coarse ball lit
// at its vertices by the standard stages, the same ball lit at each pixel, and with discarded
// pixels. Lower row: depths of one's own, two textures mixed by an attribute, fog.
//
//   shaders [PICTURE]
//   shaders --cost        what a pair costs, as ratios to the standard stages

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

constexpr double kPi = 3.141592653589793;

// --- names

using Zx3D::TRenderCPU;
using TVector = vec_t_<double, 4>;
using TPoint = vec_t_<double, 3>;
using VAR_DATA = TRenderCPU::VAR_DATA;
using FS_DATA = TRenderCPU::FS_DATA;

// --- helpers

/// m * v. A MAT4 is stored column by column.
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

/// The colour write takes the low byte of what it gets: a shader limits its colours by itself.
TVector Limited(const TPoint& color) {
  return {std::clamp(color.x, 0.0, 1.0), std::clamp(color.y, 0.0, 1.0),
          std::clamp(color.z, 0.0, 1.0), 1};
}

// --- vertex shader

/// What the vertex shader writes and the fragment shaders read.
enum TSlot { kPosition, kEye, kNormal, kPlace, kSlotCount };

/// A generic attribute, 1 to 7. Setting attribute 0 submits a vertex.
constexpr unsigned int kExtra = 1;

class TSceneVertex : public Zx3D::TVertexShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  unsigned int GetAttribLocation(const char* name) const override {
    return std::strcmp(name, "extra") == 0 ? kExtra : ~0u;
  }
  void Begin() override {
    m_Render->m_VarPosition = kPosition;
    m_Render->m_VarCount = kSlotCount;
  }
  void End() override {}
  void Execute(VAR_DATA* v) override {
    const TRenderCPU& gl = *m_Render;
    const TVector& n = gl.m_CurNormal;
    (*v)[kPosition] = Applied(gl.m_ModelViewProjection, gl.m_CurVertex);
    (*v)[kEye] = Applied(gl.m_ModelView, gl.m_CurVertex);
    (*v)[kNormal] = Applied(gl.m_ModelView, {n.x, n.y, n.z, 0});
    (*v)[kPlace] = gl.m_CurTexCoord;
    (*v)[kPlace].z = gl.m_CurAttrib[kExtra].x; // slots have four components: use them
  }
};

// --- uniforms

/// Cells of `m_Uniforms`. A matrix of sixteen would take four of them.
enum TUniform { kLight, kColor, kHoles, kFog };

class TSceneFragment : public Zx3D::TFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char* name) const override {
    const char* const names[] = {"light", "color", "holes", "fog"};
    for (unsigned int i = 0; i < 4; ++i) {
      if (std::strcmp(name, names[i]) == 0) {
        return i;
      }
    }
    return ~0u;
  }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }

protected:
  const TVector& Uniform(TUniform cell) const { return m_Render->m_Uniforms[cell]; }

  /// A surface of the uniform colour, lit from a place in eye space.
  TPoint Lit(const TPoint& eye, const TPoint& normal) const {
    const TVector& light = Uniform(kLight);
    const TVector& color = Uniform(kColor);
    const TPoint to = Unit(TPoint{light.x, light.y, light.z} - eye);
    const TPoint half = Unit(to - Unit(eye));
    const double diffuse = 0.15 + 0.85 * std::max(0.0, dot(normal, to));
    const double gloss = 0.7 * std::pow(std::max(0.0, dot(normal, half)), 50.0);
    return TPoint{color.x, color.y, color.z} * diffuse + TPoint{gloss, gloss, gloss};
  }
};

// --- fragment shader

class TPixelLight : public TSceneFragment {
public:
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const TVector& eye = (*v)[kEye];
    const TVector& normal = (*v)[kNormal]; // between two unit vectors lies a shorter one
    f->Color = Limited(Lit({eye.x, eye.y, eye.z}, Unit({normal.x, normal.y, normal.z})));
    return true;
  }
};

// --- discarding

class THoles : public TSceneFragment {
public:
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const TVector& place = (*v)[kPlace];
    const TVector& holes = Uniform(kHoles); // how many across, how many up, and how large
    const double x = place.x * holes.x - std::floor(place.x * holes.x) - 0.5;
    const double y = place.y * holes.y - std::floor(place.y * holes.y) - 0.5;
    if (x * x + y * y < holes.z) {
      return false; // neither colour nor depth nor stencil changes
    }
    const TVector& eye = (*v)[kEye];
    const TVector& n = (*v)[kNormal];
    TPoint normal = Unit({n.x, n.y, n.z});
    if (!f->FrontFacing) {
      normal = normal * -1.0; // the inside, seen through a hole
    }
    f->Color = Limited(Lit({eye.x, eye.y, eye.z}, normal));
    return true;
  }
};

// --- own depth

/// Draws a ball into a square that faces the camera: the texture coordinate runs from (-1, -1) to
/// (1, 1) over the square, and the attribute is the ball's radius.
class TBall : public TSceneFragment {
public:
  bool IsCalcDepth() const override { return true; }
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const TVector& place = (*v)[kPlace];
    const double rest = 1 - place.x * place.x - place.y * place.y;
    if (rest < 0) {
      return false;
    }
    const TPoint normal = {place.x, place.y, std::sqrt(rest)};
    const TVector& at = (*v)[kEye];
    const TPoint eye = {at.x, at.y, at.z + normal.z * place.z};
    // Window depth: 0 at the near plane, 1 at the far one.
    const TVector clip = Applied(m_Render->m_Projection, {eye.x, eye.y, eye.z, 1});
    f->Depth = static_cast<float>(0.5 * clip.z / clip.w + 0.5);
    f->Color = Limited(Lit(eye, normal));
    return true;
  }
};

// --- two textures

class TTwoTextures : public TSceneFragment {
public:
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const TVector& place = (*v)[kPlace];
    TVector a, b;
    m_Render->m_TexUnits[0].Sampler.GetValue(vec_t_<double, 2>{place.x, place.y}, &a);
    m_Render->m_TexUnits[1].Sampler.GetValue(vec_t_<double, 2>{place.x, place.y}, &b);
    f->Color = a + (b - a) * place.z; // place.z is the attribute
    return true;
  }
};

// --- fog

class TFogged : public TSceneFragment {
public:
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const TVector& fog = Uniform(kFog); // a colour, and where it is complete
    const TVector& eye = (*v)[kEye];
    const TVector& n = (*v)[kNormal];
    const TPoint lit = Lit({eye.x, eye.y, eye.z}, Unit({n.x, n.y, n.z}));
    const double share = std::clamp(-eye.z / fog.w, 0.0, 1.0);
    f->Color = Limited(lit + (TPoint{fog.x, fog.y, fog.z} - lit) * share);
    return true;
  }
};

// --- row at once

/// Stripes of one slot; the loops have no branches and run along arrays.
class TStripes : public Zx3D::TRowFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    const double level = Level((*v)[kPlace].x);
    f->Color = {level, 0.5, 1 - level, 1};
    return true;
  }
  void ExecuteRow(const Zx3D::FS_ROW& row) override {
    for (int i = 0; i < row.Count; ++i) {
      const double level = Level(row.Slots[kPlace][0][i]);
      row.Color[0][i] = level;
      row.Color[1][i] = 0.5;
      row.Color[2][i] = 1 - level;
      row.Color[3][i] = 1;
    }
  }

private:
  static double Level(double s) {
    const double at = s < 0.5 ? s : 1 - s;
    return 4 * at * (1 - at);
  }
};

// --- installing

/// A program that holds the only references to its two shaders.
template <class TFragment> class TPair : public Zx3D::TProgramCPU {
public:
  TPair() {
    TSceneVertex* const vertex = new TSceneVertex; // a count of 1, which is ours
    TFragment* const fragment = new TFragment;
    SetShaderV(vertex); // the program takes one of its own
    SetShaderF(fragment);
    vertex->Release();
    fragment->Release();
  }
};

/// The programs. They outlive the context, or are taken out of it before.
struct TPrograms {
  TPair<TPixelLight> PixelLight;
  TPair<THoles> Holes;
  TPair<TBall> Ball;
  TPair<TTwoTextures> TwoTextures;
  TPair<TFogged> Fogged;
};

/// Installs a program and sets a uniform of it by name.
void Use(TRenderCPU& gl, Zx3D::TProgramCPU* program, const char* name, const TVector& value) {
  gl.SetProgram(program);
  const unsigned int location = program->GetUniformLocation(name);
  if (location != ~0u) {
    gl.Uniform(static_cast<int>(location), value);
  }
}

// --- the scenes

/// A ball of `around` by `around / 2` quads, too few for a light at its vertices.
void Ball(TZxGL& gl, int around) {
  for (int j = 0; j < around / 2; ++j) {
    gl.Begin(GL_TRIANGLE_STRIP);
    for (int i = 0; i <= around; ++i) {
      for (int k = 1; k >= 0; --k) {
        const double a = 2 * kPi * i / around, b = kPi * (2.0 * (j + k) / around - 0.5);
        const TPoint at = {std::cos(b) * std::sin(a), std::sin(b), std::cos(b) * std::cos(a)};
        gl.TexCoord2d(1.0 * i / around, 2.0 * (j + k) / around);
        gl.Normal3dv(&at.x);
        gl.Vertex3dv(&at.x);
      }
    }
    gl.End();
  }
}

/// A sixth of the picture: column 0 to 2, row 0 to 1 from the bottom.
void SetTile(TZxGL& gl, int column, int row) {
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Translated((2 * column - 2) / 3.0, row - 0.5, 0);
  gl.Scaled(1 / 3.0, 0.5, 1);
  gl.Frustum(-0.25, 0.25, -0.25, 0.25, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  gl.LoadIdentity();
  gl.Translated(0, 0, -5);
}

void DrawStandard(TRenderCPU& gl) {
  const float at[4] = {-4, 5, 4, 1}, color[4] = {0.25f, 0.5f, 0.85f, 1};
  const float gloss[4] = {0.7f, 0.7f, 0.7f, 1};
  gl.SetProgram(nullptr);
  gl.PushMatrix();
  gl.LoadIdentity();
  gl.Lightfv(GL_LIGHT0, GL_POSITION, at);
  gl.PopMatrix();
  gl.Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, color);
  gl.Materialfv(GL_FRONT, GL_SPECULAR, gloss);
  gl.Materialf(GL_FRONT, GL_SHININESS, 50);
  gl.Enable(GL_LIGHTING);
  gl.Enable(GL_LIGHT0);
  Ball(gl, 16);
  gl.Disable(GL_LIGHTING);
}

void DrawBalls(TRenderCPU& gl, TPrograms* programs) {
  const TVector balls[3] = {{-0.3, 0.25, 0, 0.6}, {0.35, 0.1, -0.1, 0.65}, {0, -0.4, 0.2, 0.5}};
  const TVector colors[3] = {{0.9, 0.3, 0.2, 1}, {0.3, 0.75, 0.3, 1}, {0.95, 0.8, 0.2, 1}};
  for (int i = 0; i < 3; ++i) {
    const TVector& ball = balls[i];
    Use(gl, &programs->Ball, "color", colors[i]);
    gl.Begin(GL_QUADS);
    gl.VertexAttrib(kExtra, ball.w);
    for (int corner = 0; corner < 4; ++corner) {
      const double s = corner == 1 || corner == 2 ? 1 : -1, t = corner >= 2 ? 1 : -1;
      gl.TexCoord2d(s, t);
      gl.Vertex3d(ball.x + s * ball.w, ball.y + t * ball.w, ball.z);
    }
    gl.End();
  }
}

void BindPattern(TZxGL& gl, int unit, bool stripes) {
  std::vector<unsigned char> texels;
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) {
      const bool mark = stripes ? (x + y) % 8 < 4 : (x / 8 + y / 8) % 2 == 0;
      const unsigned char pair[2][3] = {{40, 40, 70}, {250, 190, 60}};
      const unsigned char other[2][3] = {{30, 90, 60}, {210, 240, 220}};
      const unsigned char* color = stripes ? pair[mark] : other[mark];
      texels.insert(texels.end(), color, color + 3);
    }
  }
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.ActiveTexture(static_cast<unsigned int>(GL_TEXTURE0 + unit));
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 32, 32, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
  gl.ActiveTexture(GL_TEXTURE0);
}

void DrawMixed(TRenderCPU& gl, TPrograms* programs) {
  BindPattern(gl, 0, true);
  BindPattern(gl, 1, false);
  gl.SetProgram(&programs->TwoTextures);
  const int extra = static_cast<int>(programs->TwoTextures.GetAttribLocation("extra"));
  gl.Rotated(-25, 0, 1, 0);
  gl.Begin(GL_QUADS);
  gl.VertexAttrib(extra, 0.0); // the texture of unit 0 on the left
  gl.TexCoord2d(0, 1), gl.Vertex2d(-1, 1);
  gl.TexCoord2d(0, 0), gl.Vertex2d(-1, -1);
  gl.VertexAttrib(extra, 1.0); // that of unit 1 on the right
  gl.TexCoord2d(1, 0), gl.Vertex2d(1, -1);
  gl.TexCoord2d(1, 1), gl.Vertex2d(1, 1);
  gl.End();
}

void DrawFog(TRenderCPU& gl, TPrograms* programs) {
  Use(gl, &programs->Fogged, "fog", {0.55, 0.6, 0.7, 16});
  gl.Uniform(kColor, TVector{0.8, 0.4, 0.2, 1});
  for (int i = 5; i >= 0; --i) {
    gl.PushMatrix();
    gl.Translated(i % 2 ? 0.7 : -0.7, 0.35 * i - 0.7, -2.0 * i);
    gl.Scaled(0.6, 0.6, 0.6);
    Ball(gl, 32);
    gl.PopMatrix();
  }
}

bool Draw(TRenderCPU& gl, TPrograms* programs) {
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.Enable(GL_DEPTH_TEST);
  SetTile(gl, 0, 1);
  DrawStandard(gl);
  // Uniforms belong to the context: the light stays for all programs that read its cell.
  Use(gl, &programs->PixelLight, "light", {-4, 5, 4, 1});
  Use(gl, &programs->PixelLight, "color", {0.25, 0.5, 0.85, 1});
  SetTile(gl, 1, 1);
  Ball(gl, 16);
  Use(gl, &programs->Holes, "holes", {12, 6, 0.1, 0});
  SetTile(gl, 2, 1);
  Ball(gl, 16);
  SetTile(gl, 0, 0);
  DrawBalls(gl, programs);
  SetTile(gl, 1, 0);
  DrawMixed(gl, programs);
  SetTile(gl, 2, 0);
  DrawFog(gl, programs);
  gl.SetProgram(nullptr);
  return gl.GetError() == GL_NO_ERROR;
}

// --- the cost

/// Writes one colour, with a chosen number of live slots.
class TFlat : public TSceneFragment {
public:
  bool Execute(VAR_DATA*, FS_DATA* f) override {
    f->Color = {0.2, 0.4, 0.6, 1};
    return true;
  }
};

/// The same stripes without saying that it computes rows.
class TStripesSingly : public TStripes {
public:
  bool QueryInterface(const boost::uuids::uuid& id, void** out) override {
    return TFragmentShaderCPU::QueryInterface(id, out);
  }
};

class TSlots : public TSceneVertex {
public:
  int Count = 1;
  void Begin() override { m_Render->m_VarCount = Count; }
  void Execute(VAR_DATA* v) override {
    *v = {};
    (*v)[0] = Applied(m_Render->m_ModelViewProjection, m_Render->m_CurVertex);
  }
};

/// Nanoseconds for each of `count` things that `work` does, the best of many short turns: other
/// programs disturb most of the long ones.
template <class TWork> double Time(double count, TWork work) {
  double best = 1e18;
  const TPerformCounter all;
  while (all.Elapsed() < 500000000) {
    const TPerformCounter start;
    work();
    best = std::min(best, static_cast<double>(start.Elapsed()) / count);
  }
  return best;
}

void PrintCost(TRenderCPU& gl, TPrograms* programs) {
  const auto fill = [&gl] {
    gl.Begin(GL_QUADS);
    gl.Color3d(0.9, 0.2, 0.1), gl.Vertex2d(-1, -1), gl.Vertex2d(1, -1);
    gl.Color3d(0.1, 0.3, 0.8), gl.Vertex2d(1, 1), gl.Vertex2d(-1, 1);
    gl.End();
  };
  const double pixels = static_cast<double>(gl.m_Width) * gl.m_Height;
  const double standard = Time(pixels, fill);
  std::printf("a pixel, standard stages              %6.2f ns\n", standard);
  TSlots* const slots = new TSlots;
  TFlat* const flat = new TFlat;
  Zx3D::TProgramCPU least;
  least.SetShaderV(slots), least.SetShaderF(flat);
  slots->Release(), flat->Release();
  gl.SetProgram(&least);
  for (int count : {1, 2, 4, 8}) {
    slots->Count = count;
    const double time = Time(pixels, fill);
    std::printf("a pixel, flat colour, %d slots         %6.2f ns  %5.1f\n", count, time,
                time / standard);
  }
  TPair<TStripesSingly> singly;
  TPair<TStripes> rows;
  gl.SetProgram(&singly);
  const double one = Time(pixels, fill);
  gl.SetProgram(&rows);
  const double all = Time(pixels, fill);
  std::printf("a pixel, stripes, one by one          %6.2f ns  %5.1f\n", one, one / standard);
  std::printf("a pixel, stripes, a row at once       %6.2f ns  %5.1f\n", all, all / standard);
  gl.SetProgram(&programs->PixelLight);
  const double lit = Time(pixels, fill);
  std::printf("a pixel, light at each pixel          %6.2f ns  %5.1f\n", lit, lit / standard);

  // Triangles that lie outside the picture, so that only their vertices cost.
  const std::vector<float> outside(30000, 2.0f);
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.VertexPointer(3, GL_FLOAT, 0, outside.data());
  const auto draw = [&gl] { gl.DrawArrays(GL_TRIANGLES, 0, 9999); };
  gl.SetProgram(nullptr);
  const double vertex = Time(9999, draw);
  gl.SetProgram(&programs->PixelLight);
  const double own = Time(9999, draw);
  gl.SetProgram(nullptr);
  std::printf("a vertex, standard stages             %6.2f ns\n", vertex);
  std::printf("a vertex, position and three slots    %6.2f ns  %5.1f\n", own, own / vertex);
}

} // namespace

int main(int argc, char** argv) {
  const char* name = argc > 1 ? argv[1] : "shaders.png";
  const bool cost = std::strcmp(name, "--cost") == 0;
  Init_ZxCore3D();
  bool ok = false;
  {
    TPrograms programs;
    TRenderCPU gl; // goes first, and lets go of the programs
    ok = gl.Create(cost ? 128 : 480, cost ? 128 : 320, nullptr);
    if (ok && cost) {
      PrintCost(gl, &programs);
    } else if (ok) {
      ok = Draw(gl, &programs) && SaveImage(name, nullptr, *gl.GetColorSurface());
    }
  }
  Deinit_ZxCore3D();
  if (!ok) {
    std::fprintf(stderr, "shaders: drawing failed, or can't write %s\n", name);
  }
  return ok ? 0 : 1;
}
