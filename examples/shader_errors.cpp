// The mistakes that everybody makes with a first shader pair, each on purpose, and what is seen of
// it; docs/shaders.md explains them. A table is printed: how often the vertex and the fragment
// shader ran, how many pixels changed, and how they look. The program ends with 1 if a mistake
// looks otherwise than the page says.
//
// The picture shows a checkered floor, from the upper left: right; black, by an integer uniform;
// wrapped colours; no perspective, by a division; a slot that isn't live; and a probe, which shows
// slot 1.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

using Zx3D::TRenderCPU;
using TVector = vec_t_<double, 4>;

constexpr int kSize = 160;

enum TMistake {
  kRight,
  kNoCount,      ///< `m_VarCount` is never set
  kOldCount,     ///< the same, after the standard stages have drawn
  kNoProjection, ///< the position is in eye space
  kNoW,          ///< only x, y and z of the position are written
  kCulled,       ///< the floor faces away
  kNoTrue,       ///< the fragment shader ends with false
  kNoAlpha,      ///< the colour's alpha is left at 0, and blending is on
  kLate,         ///< the shader is put into the program after `SetProgram`
  kIntUniform,   ///< `Uniform(cell, 1)` is read as a double
  kNoNormal,     ///< no normal is ever set
  kWrapped,      ///< a colour above 1
  kDeadSlot,     ///< slot 1 is read, and `m_VarCount` is 1
  kOneBranch,    ///< the colour is written for light squares only
  kDivided,      ///< the position is divided by w already
  kFastest,      ///< the perspective hint is `GL_FASTEST`
  kProbe,        ///< no mistake: the probe shader
  kMistakeCount
};

/// How often the shaders ran, and where the last vertex went.
struct TCounts {
  int Vertices = 0;
  int Fragments = 0;
  TVector Clip = {};
};

class TFloorVertex : public Zx3D::TVertexShaderCPU {
public:
  TFloorVertex(TMistake mistake, TCounts* counts) : m_Mistake(mistake), m_Counts(counts) {}
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  unsigned int GetAttribLocation(const char*) const override { return ~0u; }
  void Begin() override {
    if (m_Mistake != kNoCount && m_Mistake != kOldCount) {
      m_Render->m_VarCount = m_Mistake == kDeadSlot ? 1 : 3;
    }
  }
  void End() override {}
  void Execute(TRenderCPU::VAR_DATA* v) override {
    const MAT4<double>& m =
        m_Mistake == kNoProjection ? m_Render->m_ModelView : m_Render->m_ModelViewProjection;
    const TVector& at = m_Render->m_CurVertex;
    TVector& clip = (*v)[0];
    clip = {};
    for (int i = 0; i < (m_Mistake == kNoW ? 3 : 4); ++i) {
      clip[i] = m[i] * at.x + m[4 + i] * at.y + m[8 + i] * at.z + m[12 + i] * at.w;
    }
    if (m_Mistake == kDivided) {
      clip = {clip.x / clip.w, clip.y / clip.w, clip.z / clip.w, 1};
    }
    (*v)[1] = m_Render->m_CurTexCoord;
    (*v)[2] = m_Render->m_CurNormal;
    ++m_Counts->Vertices;
    m_Counts->Clip = clip;
  }

private:
  TMistake m_Mistake;
  TCounts* m_Counts;
};

/// Light and dark squares. Cell 0 of the uniforms is the brightness.
class TFloorFragment : public Zx3D::TFragmentShaderCPU {
public:
  TFloorFragment(TMistake mistake, TCounts* counts) : m_Mistake(mistake), m_Counts(counts) {}
  unsigned int GetUniformLocation(const char* name) const override {
    return std::strcmp(name, "brightness") == 0 ? 0 : ~0u;
  }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    ++m_Counts->Fragments;
    const TVector& place = (*v)[1];
    const bool light = std::fmod(std::floor(place.x) + std::floor(place.y), 2) == 0;
    const double toLight = m_Mistake == kDeadSlot ? 1 : std::max(0.0, (*v)[2].y);
    const double brightness = m_Render->m_Uniforms[0].x * toLight * (light ? 1 : 0.4);
    if (m_Mistake == kOneBranch && !light) {
      return true;
    }
    f->Color = {brightness, brightness * 0.8, brightness * 0.5, m_Mistake == kNoAlpha ? 0.0 : 1.0};
    return m_Mistake != kNoTrue;
  }

private:
  TMistake m_Mistake;
  TCounts* m_Counts;
};

} // namespace

// --- probe

/// Shows a slot as a colour: 0 is black, 1 is full, beyond it begins anew; what is negative is
/// blue.
class TProbe : public Zx3D::TFragmentShaderCPU {
public:
  explicit TProbe(int slot) : m_Slot(slot) {}
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    const vec_t_<double, 4>& value = (*v)[m_Slot];
    const bool negative = value.x < 0 || value.y < 0;
    f->Color = {value.x - std::floor(value.x), value.y - std::floor(value.y), negative ? 1.0 : 0.0,
                1};
    return true;
  }

private:
  int m_Slot;
};

// --- the floor

namespace {

void DrawFloor(TRenderCPU& gl, TMistake mistake, TCounts* counts) {
  TFloorVertex vertex(mistake, counts);
  TFloorFragment fragment(mistake, counts);
  TProbe probe(1);
  if (mistake == kOldCount) {
    gl.Begin(GL_TRIANGLES); // three slots, as the floor needs
    gl.End();
  }
  Zx3D::TProgramCPU program;
  program.SetShaderV(&vertex);
  program.SetShaderF(mistake == kProbe  ? static_cast<Zx3D::TFragmentShaderCPU*>(&probe)
                     : mistake == kLate ? nullptr
                                        : &fragment);
  gl.SetProgram(&program);
  if (mistake == kLate) {
    program.SetShaderF(&fragment); // the context has taken what the program held by then
  }
  if (mistake == kIntUniform) {
    gl.Uniform(0, 1);
  } else {
    gl.Uniform(0, mistake == kWrapped ? 1.2 : 1.0);
  }
  gl.MatrixMode(GL_PROJECTION);
  gl.Frustum(-0.5, 0.5, -0.5, 0.5, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  if (mistake == kNoAlpha) {
    gl.Enable(GL_BLEND);
    gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  }
  if (mistake == kCulled) {
    gl.Enable(GL_CULL_FACE);
    gl.FrontFace(GL_CW);
  }
  if (mistake == kFastest) {
    gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, GL_FASTEST);
  }
  if (mistake != kNoNormal) {
    gl.Normal3d(0, 1, 0);
  }
  gl.Begin(GL_QUADS);
  gl.TexCoord2d(0, 0), gl.Vertex3d(-1, -1, -2.5);
  gl.TexCoord2d(4, 0), gl.Vertex3d(1, -1, -2.5);
  gl.TexCoord2d(4, 8), gl.Vertex3d(1, 0.5, -8);
  gl.TexCoord2d(0, 8), gl.Vertex3d(-1, 0.5, -8);
  gl.End();
  gl.SetProgram(nullptr);
}

// --- What is seen

using TPixels = unsigned char[kSize * kSize][4];

struct TSeen {
  TCounts Counts;
  unsigned int Error = 0;
  int Pixels = 0;   ///< that differ from the background
  int Shades = 0;   ///< of red among them
  int Least = 255;  ///< red
  int Greatest = 0; ///< red
  TPixels Picture;
};

bool Look(TMistake mistake, TSeen* seen) {
  TRenderCPU gl;
  if (!gl.Create(kSize, kSize, nullptr)) {
    return false;
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  const unsigned char ground[4] = {26, 26, 38, 255};
  DrawFloor(gl, mistake, &seen->Counts);
  seen->Error = gl.GetError();
  std::memcpy(seen->Picture, gl.GetColorSurface()->Data, sizeof seen->Picture);
  bool shades[256] = {};
  for (const auto& pixel : seen->Picture) {
    if (std::memcmp(pixel, ground, 3) != 0) {
      ++seen->Pixels;
      shades[pixel[0]] = true;
      seen->Least = std::min<int>(seen->Least, pixel[0]);
      seen->Greatest = std::max<int>(seen->Greatest, pixel[0]);
    }
  }
  seen->Shades = static_cast<int>(std::count(shades, shades + 256, true));
  return true;
}

/// What the page says of each mistake.
bool LooksAsTold(TMistake mistake, const TSeen& seen, const TSeen& right) {
  const TCounts& counts = seen.Counts;
  const bool same = std::memcmp(seen.Picture, right.Picture, sizeof seen.Picture) == 0;
  switch (mistake) {
  case kNoCount:
    return counts.Vertices == 0 && seen.Pixels == 0;
  case kNoProjection:
    return counts.Vertices == 4 && counts.Fragments == 0 && counts.Clip.z < -counts.Clip.w;
  case kNoW:
    return counts.Vertices == 4 && counts.Fragments == 0 && counts.Clip.w == 0;
  case kOldCount: // works by accident
    return same;
  case kCulled:
    return counts.Vertices == 4 && counts.Fragments == 0 && seen.Pixels == 0;
  case kNoTrue:
  case kNoAlpha:
    return counts.Fragments == right.Counts.Fragments && seen.Pixels == 0;
  case kLate: // white, by the standard fragment shader
    return counts.Fragments == 0 && seen.Pixels == right.Pixels && seen.Least == 255;
  case kIntUniform:
  case kNoNormal:
    return seen.Pixels == right.Pixels && seen.Greatest == 0;
  case kWrapped: // 1.2 * 255 + 0.5 is 306.5, of which the low byte is 50
    return seen.Pixels == right.Pixels && seen.Least == 50 && seen.Greatest == 122;
  case kDeadSlot:
    return seen.Pixels == right.Pixels && seen.Shades == 1;
  case kOneBranch: // no dark square has its own shade
    return seen.Pixels == right.Pixels && seen.Greatest == 255 && seen.Least != right.Least;
  case kDivided:
  case kFastest:
    return seen.Pixels == right.Pixels && seen.Shades == 2 && !same;
  case kProbe:
    return seen.Pixels == right.Pixels && seen.Shades > 100;
  default:
    return counts.Vertices == 4 && seen.Pixels == counts.Fragments && seen.Pixels > 1000 &&
           seen.Shades == 2 && seen.Least == 102 && seen.Greatest == 255;
  }
}

bool Run(const char* name) {
  static const char* const names[kMistakeCount] = {
      "right",      "no m_VarCount",  "an old m_VarCount", "no projection", "no w",
      "culled",     "never true",     "alpha 0",           "set too late",  "integer uniform",
      "no normal",  "colour above 1", "dead slot",         "one branch",    "divided by w",
      "GL_FASTEST", "probe, slot 1"};
  static TSeen seen[kMistakeCount];
  bool ok = true;
  std::printf("%-18s %8s %9s %7s %6s  %s\n", "mistake", "vertices", "fragments", "pixels", "shades",
              "red");
  for (int i = 0; i < kMistakeCount; ++i) {
    const TMistake mistake = static_cast<TMistake>(i);
    ok = Look(mistake, &seen[i]) && ok;
    const TSeen& one = seen[i];
    std::printf("%-18s %8d %9d %7d %6d", names[i], one.Counts.Vertices, one.Counts.Fragments,
                one.Pixels, one.Shades);
    if (one.Pixels != 0) {
      std::printf("  %d to %d", one.Least, one.Greatest);
    }
    std::printf("\n");
    if (one.Error != GL_NO_ERROR || !LooksAsTold(mistake, one, seen[kRight])) {
      std::fprintf(stderr, "shader_errors: \"%s\" doesn't look as told\n", names[i]);
      ok = false;
    }
  }

  TDataSurface picture;
  const TMistake tiles[6] = {kDivided, kDeadSlot, kProbe, kRight, kIntUniform, kWrapped};
  ok = picture.Create(3 * kSize, 2 * kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4) && ok;
  for (int i = 0; ok && i < 6 * kSize; ++i) {
    const int tile = i / kSize, row = i % kSize;
    std::memcpy(picture.Data + (tile / 3 * kSize + row) * picture.RowStride + tile % 3 * kSize * 4,
                seen[tiles[tile]].Picture[row * kSize], kSize * 4);
  }
  return SaveImage(name, nullptr, picture) && ok;
}

} // namespace

// --- calls

struct TTracedVertex : Zx3D::TStdVertexShaderCPU {
  std::string* Trace = nullptr;
  void Begin() override { *Trace += "V(", TStdVertexShaderCPU::Begin(); }
  void End() override { *Trace += ")V "; }
  void Execute(TRenderCPU::VAR_DATA* v) override {
    *Trace += 'v';
    TStdVertexShaderCPU::Execute(v);
  }
};

struct TTracedFragment : Zx3D::TStdFragmentShaderCPU {
  std::string* Trace = nullptr;
  bool IsCalcDepth() const override {
    *Trace += "? ";
    return false;
  }
  void Begin() override { *Trace += "F("; }
  void End() override { *Trace += ")F"; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    if (Trace->back() != 'f') {
      *Trace += 'f'; // once for each run of fragments
    }
    return TStdFragmentShaderCPU::Execute(v, f);
  }
};

/// What is called while `draw` draws.
template <class TDraw> static std::string Calls(TDraw draw) {
  std::string trace;
  TTracedVertex vertex;
  TTracedFragment fragment;
  vertex.Trace = fragment.Trace = &trace;
  Zx3D::TProgramCPU program;
  program.SetShaderV(&vertex), program.SetShaderF(&fragment);
  TRenderCPU gl;
  gl.Create(8, 8, nullptr);
  gl.SetProgram(&program);
  draw(gl);
  gl.SetProgram(nullptr);
  return trace;
}

/// Six vertices: 0 and 1 below, 2 above, and so on to the right.
static std::string CallsOf(unsigned int mode) {
  return Calls([mode](TRenderCPU& gl) {
    gl.Begin(mode);
    for (int i = 0; i < 6; ++i) {
      gl.Vertex2d(-0.9 + 0.3 * i, i % 3 == 2 ? 0.9 : -0.9 + 0.2 * (i % 3));
    }
    gl.End();
  });
}

/// Two triangles that share two vertices.
static std::string CallsOfElements() {
  return Calls([](TRenderCPU& gl) {
    const double corners[] = {-0.9, -0.9, 0.9, -0.9, -0.9, 0.9, 0.9, 0.9};
    const unsigned char indices[] = {0, 1, 2, 2, 1, 3};
    gl.EnableClientState(GL_VERTEX_ARRAY);
    gl.VertexPointer(2, GL_DOUBLE, 0, corners);
    gl.DrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_BYTE, indices);
  });
}

static bool CallsComeInOrder() {
  const bool right = CallsOf(GL_TRIANGLES) == "? V(F(vvvfvvvf)V )F" &&
                     CallsOf(GL_TRIANGLE_STRIP) == "? V(F(vvvfvfvfvf)V )F" &&
                     CallsOf(GL_POINTS) == "? V(F(vfvfvfvfvfvf)V )F" &&
                     CallsOfElements() == "? V(F(vvvfvvvf)V )F";
  if (!right) {
    std::fprintf(stderr, "shader_errors: the shaders are called in another order\n");
  }
  return right;
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Run(argc > 1 ? argv[1] : "shader_errors.png") && CallsComeInOrder();
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
