#include "RandomScene.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include "Scene.h"

namespace zx_test {

namespace {

using Zx3D::TRenderCPU;

class TTintShader : public Zx3D::TFragmentShaderCPU {
public:
  explicit TTintShader(bool calcDepth) : m_CalcDepth(calcDepth) {}
  unsigned int GetUniformLocation(const char*) const override { return 0xFFFFFFFF; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return m_CalcDepth; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    // Whatever an earlier primitive left takes part, so that a record left differently shows.
    f->Color = {(*v)[1].x * 0.5 + f->Color.x * 0.25, (*v)[1].y, f->FrontFacing ? 0.25 : 0.75, 1.0};
    if (m_CalcDepth) {
      f->Depth = 0.5f * f->Depth + 0.125f;
    }
    return (f->X + f->Y) % 5 != 0;
  }

private:
  bool m_CalcDepth;
};

class TPlayer {
public:
  TPlayer(std::uint32_t seed, std::ostream* words)
      : m_Random(seed), m_Words(words), m_SharesMemory(seed % 4 == 0) {
    const int width = Pick(8) == 0 ? 1 + Pick(3) : 1 + Pick(70);
    const int height = Pick(8) == 0 ? 1 + Pick(3) : 1 + Pick(50);
    m_Gl.Create(width, height, nullptr);
    m_Gl.ClearColor(0.2f, 0.3f, 0.4f, 0.5f);
    m_Gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    for (TTintShader*& shader : m_Shaders) {
      shader = new TTintShader(&shader != m_Shaders);
      Zx3D::TProgramCPU* const program = new Zx3D::TProgramCPU;
      program->SetShaderF(shader);
      m_Programs.push_back(program);
    }
    MakeTextures();
  }

  ~TPlayer() {
    for (Zx3D::TProgramCPU* program : m_Programs) {
      program->Release();
    }
    for (TTintShader* shader : m_Shaders) {
      shader->Release();
    }
  }

  void Call();

  std::vector<unsigned char> Left() {
    std::vector<unsigned char> left = zx_test::EverythingLeft(m_Gl);
    for (const unsigned int id : m_Textures) {
      const TDataSurface* const texture = m_Gl.m_Textures->Surfaces[id];
      left.insert(left.end(), texture->Data, texture->Data + texture->DataSize);
    }
    return left;
  }

  // All that Left() gives is made of floating point values, bytes and integers.
  void UnifyNaNs() {
    TDataSurface& depth = *m_Gl.m_DepthSurface;
    Unify<float>(depth.Data, depth.DataSize);
    Unify<float>(&m_Gl.m_Fragment.Depth, sizeof m_Gl.m_Fragment.Depth);
    Unify<double>(&m_Gl.m_Fragment.Color, sizeof m_Gl.m_Fragment.Color);
    Unify<double>(&m_Gl.m_VarFragment, sizeof m_Gl.m_VarFragment);
    Unify<double>(&m_Gl.m_VarCur, sizeof m_Gl.m_VarCur);
    Unify<double>(&m_Gl.m_VarSaved, sizeof m_Gl.m_VarSaved);
    Unify<double>(&m_Gl.m_CurVertex, sizeof m_Gl.m_CurVertex);
  }

private:
  template <class T> static void Unify(void* values, std::uint64_t size) {
    auto* const bytes = static_cast<unsigned char*>(values);
    for (std::uint64_t i = 0; i + sizeof(T) <= size; i += sizeof(T)) {
      T value;
      std::memcpy(&value, bytes + i, sizeof value);
      if (std::isnan(value)) {
        value = std::numeric_limits<T>::quiet_NaN();
        std::memcpy(bytes + i, &value, sizeof value);
      }
    }
  }
  int Pick(int n) { return static_cast<int>(m_Random() % static_cast<unsigned>(n)); }
  bool Coin() { return Pick(2) != 0; }
  // Only one of a call's arguments is drawn: in which order arguments are evaluated differs by
  // architecture. What stands in braces takes its numbers in order.
  double Real(double low, double high) { return low + (high - low) * (m_Random() / 4294967295.0); }
  template <std::size_t N> unsigned int Of(const unsigned int (&list)[N]) {
    return list[Pick(static_cast<int>(N))];
  }
  void Say(const char* what) {
    if (m_Words != nullptr) {
      *m_Words << what;
    }
  }

  void MakeTextures();
  void Vertex();
  void Primitive();
  void Arrays();
  std::vector<unsigned char> Column(int components, unsigned int type, int stride, double low,
                                    double high);
  void Positions(int components, unsigned int type, int stride, std::vector<unsigned char>* out);
  void State();
  void TestState();
  void TextureState();
  void LightState();
  void MatrixState();
  void TargetState();

  std::mt19937 m_Random;
  std::ostream* m_Words;
  bool m_SharesMemory; ///< targets and textures may be the same, or overlap
  std::vector<std::unique_ptr<TDataSurface>> m_Shifted;
  TRenderCPU m_Gl;
  TTintShader* m_Shaders[2] = {};
  std::vector<Zx3D::TProgramCPU*> m_Programs;
  std::vector<unsigned int> m_Textures;
  int m_Vertices = 0; ///< in each of the long arrays
};

void TPlayer::MakeTextures() {
  static constexpr unsigned int kFormats[] = {
      GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA, GL_RGBA, GL_RGBA};
  static constexpr unsigned int kTypes[] = {GL_UNSIGNED_BYTE, GL_UNSIGNED_BYTE, GL_UNSIGNED_BYTE,
                                            GL_FLOAT,         GL_DOUBLE,        GL_UNSIGNED_SHORT};
  static constexpr unsigned int kSizes[] = {1, 2, 3, 4, 5, 7, 8, 16, 33};
  m_Textures.resize(4);
  m_Gl.GenTextures(4, m_Textures.data());
  for (const unsigned int id : m_Textures) {
    m_Gl.BindTexture(GL_TEXTURE_2D, id);
    const unsigned int format = Of(kFormats);
    const unsigned int type = Of(kTypes);
    const auto width = static_cast<int>(Of(kSizes));
    const auto height = static_cast<int>(Of(kSizes));
    m_Gl.TexImage2D(GL_TEXTURE_2D, 0, static_cast<int>(format), width, height, 0, format, type,
                    nullptr);
    TDataSurface* const surface =
        static_cast<TDataSurface*>(m_Gl.m_TexUnits[0].Sampler.GetSurface());
    const std::uint64_t values =
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * surface->Channels;
    for (std::uint64_t i = 0; i < values; ++i) {
      const double value = Real(-0.25, 1.5);
      const auto narrow = static_cast<float>(value);
      if (type == GL_FLOAT) {
        std::memcpy(surface->Data + 4 * i, &narrow, 4);
      } else if (type == GL_DOUBLE) {
        std::memcpy(surface->Data + 8 * i, &value, 8);
      } else {
        surface->Data[i] = static_cast<unsigned char>(m_Random());
      }
    }
  }
}

void TPlayer::MatrixState() {
  m_Gl.MatrixMode(Coin() ? GL_MODELVIEW : GL_PROJECTION);
  m_Gl.LoadIdentity();
  switch (Pick(5)) {
  case 0:
    Say("identity; ");
    break;
  case 1:
    Say("rotate; ");
    {
      const double v[4] = {Real(-180, 180), Real(-1, 1), Real(-1, 1), Real(-1, 1)};
      m_Gl.Rotated(v[0], v[1], v[2], v[3]);
    }
    break;
  case 2:
    Say("frustum; ");
    m_Gl.Frustum(-0.5, 0.5, -0.5, 0.5, 0.5, 20);
    m_Gl.Translated(0, 0, Real(-4, -1));
    break;
  case 3:
    Say("scale; ");
    {
      const double v[3] = {Real(0.2, 3), Real(0.2, 3), Real(0.2, 1)};
      m_Gl.Scaled(v[0], v[1], v[2]);
    }
    break;
  default:
    Say("translate; ");
    {
      const double v[3] = {Real(-1, 1), Real(-1, 1), Real(-0.5, 0.5)};
      m_Gl.Translated(v[0], v[1], v[2]);
    }
    break;
  }
}

void TPlayer::LightState() {
  const float values[4] = {static_cast<float>(Real(-1, 2)), static_cast<float>(Real(-1, 2)),
                           static_cast<float>(Real(-1, 2)), static_cast<float>(Pick(3)) * 0.5f};
  const unsigned int light = GL_LIGHT0 + static_cast<unsigned>(Pick(3));
  switch (Pick(8)) {
  case 0:
    Say("lighting; ");
    m_Gl.EnableLighting(Coin());
    break;
  case 1:
    Say("light; ");
    m_Gl.EnableLight(light - GL_LIGHT0, Coin());
    break;
  case 2:
    Say("position; ");
    m_Gl.Lightfv(light, GL_POSITION, values);
    break;
  case 3:
    Say("light colour; ");
    m_Gl.Lightfv(light, Coin() ? GL_DIFFUSE : GL_SPECULAR, values);
    break;
  case 4:
    Say("spot; ");
    m_Gl.Lightf(light, GL_SPOT_CUTOFF, Coin() ? 180.0f : static_cast<float>(Real(5, 90)));
    break;
  case 5:
    Say("two sides; ");
    {
      const bool sides = Coin();
      m_Gl.LightModeli(sides ? GL_LIGHT_MODEL_TWO_SIDE : GL_LIGHT_MODEL_LOCAL_VIEWER, Pick(2));
    }
    break;
  case 6:
    Say("material; ");
    {
      const bool front = Coin();
      m_Gl.Materialfv(front ? GL_FRONT : GL_BACK, Coin() ? GL_SPECULAR : GL_DIFFUSE, values);
    }
    m_Gl.Materialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<float>(Pick(40)));
    break;
  default:
    Say("colour material; ");
    m_Gl._Enable(GL_COLOR_MATERIAL, Coin());
    break;
  }
}

void TPlayer::TextureState() {
  static constexpr unsigned int kWraps[] = {GL_REPEAT, GL_CLAMP, GL_CLAMP_TO_BORDER,
                                            GL_CLAMP_TO_EDGE};
  switch (Pick(6)) {
  case 0:
  case 1:
    Say("texture; ");
    m_Gl._EnableTexture2D(0, Coin());
    break;
  case 2:
    Say("bind; ");
    m_Gl.BindTexture(GL_TEXTURE_2D,
                     Pick(8) == 0 ? 0 : m_Textures[static_cast<std::size_t>(Pick(4))]);
    break;
  case 3:
    Say("wrap; ");
    {
      const unsigned int wrap = Of(kWraps);
      m_Gl.TexWrap2D(wrap, Of(kWraps));
    }
    break;
  case 4: {
    Say("filter; ");
    const unsigned int filter = Coin() ? GL_NEAREST : GL_LINEAR;
    m_Gl.TexFilter2D(filter, filter);
    break;
  }
  default: {
    Say("environment; ");
    m_Gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, Coin() ? GL_MODULATE : GL_REPLACE);
    const float border[4] = {0.5f, static_cast<float>(Real(-1, 2)), 0.25f, 0.75f};
    m_Gl.m_TexUnits[0].Sampler.SetBorderColor(border);
    break;
  }
  }
}

void TPlayer::TestState() {
  static constexpr unsigned int kSteps[] = {GL_KEEP,      GL_ZERO, GL_REPLACE,   GL_INCR,
                                            GL_INCR_WRAP, GL_DECR, GL_DECR_WRAP, GL_INVERT};
  switch (Pick(12)) {
  case 0:
    Say("depth test; ");
    m_Gl.EnableDepthTest(Coin());
    break;
  case 1:
    Say("depth function; ");
    m_Gl.DepthFunc(GL_NEVER + static_cast<unsigned>(Pick(8)));
    break;
  case 2:
    Say("depth mask; ");
    m_Gl.DepthMask(Coin() ? 1 : 0);
    break;
  case 3:
    Say("stencil test; ");
    m_Gl._Enable(GL_STENCIL_TEST, Coin());
    break;
  case 4:
    Say("stencil function; ");
    {
      const int v[3] = {Pick(8), Pick(256), Coin() ? 0xFF : Pick(256)};
      m_Gl.StencilFunc(GL_NEVER + static_cast<unsigned>(v[0]), v[1], static_cast<unsigned>(v[2]));
    }
    break;
  case 5:
    Say("stencil operation; ");
    {
      const unsigned int steps[3] = {Of(kSteps), Of(kSteps), Of(kSteps)};
      m_Gl.StencilOp(steps[0], steps[1], steps[2]);
    }
    m_Gl.StencilMask(Coin() ? 0xFF : static_cast<unsigned>(Pick(256)));
    break;
  case 6:
    Say("blend; ");
    m_Gl.BlendFunc(GL_SRC_ALPHA, Pick(4) != 0 ? GL_ONE_MINUS_SRC_ALPHA : GL_ONE);
    m_Gl.EnableBlend(Coin());
    break;
  case 7:
    Say("colour mask; ");
    {
      const bool mask[4] = {Pick(4) != 0, Pick(4) != 0, Pick(4) != 0, Pick(4) != 0};
      m_Gl.ColorMask(mask[0], mask[1], mask[2], mask[3]);
    }
    break;
  case 8:
    Say("culling; ");
    m_Gl.EnableCullFace(Pick(3) == 0);
    m_Gl.CullFace(Pick(4) == 0 ? GL_FRONT_AND_BACK : Coin() ? GL_BACK : GL_FRONT);
    m_Gl.FrontFace(Coin() ? GL_CCW : GL_CW);
    break;
  case 9:
    Say("hint; ");
    m_Gl.SetPerspectiveCorrectionHint(Coin() ? GL_FASTEST : GL_NICEST);
    break;
  case 10:
    Say("offset; ");
    m_Gl.EnablePolygonOffsetFill(Coin());
    m_Gl.PolygonOffset(static_cast<float>(Real(-0.1, 0.1)), 1.0f);
    break;
  default:
    Say("program; ");
    m_Gl.SetProgram(Pick(3) != 0 ? nullptr : m_Programs[static_cast<std::size_t>(Pick(2))]);
    break;
  }
}

// Targets and textures that share memory, wholly or but for a few pixels, or change places.
void TPlayer::TargetState() {
  TDataSurface* const own[3] = {m_Gl.m_FrameBuffer->Color, m_Gl.m_FrameBuffer->Depth,
                                m_Gl.m_FrameBuffer->Stencil};
  TDataSurface* const texture = m_Gl.m_Textures->Surfaces[m_Textures[Pick(4)]];
  switch (Pick(8)) {
  case 0:
  case 1:
    Say("own colour; ");
    m_Gl.BindColorSurface(nullptr);
    break;
  case 2:
    Say("colour is depth or stencil; ");
    m_Gl.BindColorSurface(own[1 + Pick(2)]);
    break;
  case 3:
    Say("colour is a texture; ");
    m_Gl.BindColorSurface(texture);
    break;
  case 4:
  case 5:
    Say("texture is a target; ");
    m_Gl.m_TexUnits[0].Sampler.SetSurface(own[Pick(3)]);
    break;
  case 6:
    Say("target and texture change places; ");
    m_Gl.MoveTexImage2D(GL_TEXTURE_2D, 0, own[Pick(3)]);
    break;
  default: {
    Say("colour overlaps; ");
    const TDataSurface& under = *own[Pick(2)];
    const int shift = Pick(m_Gl.m_Width + 1); // the slack behind the pixels has room for as many
    if (under.IsOwner() && under.Width == m_Gl.m_Width && under.Height == m_Gl.m_Height &&
        under.PixelStride == 4) {
      m_Shifted.push_back(std::make_unique<TDataSurface>());
      m_Shifted.back()->Create(under.Width, under.Height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
                               under.Data + 4 * shift);
      m_Gl.BindColorSurface(m_Shifted.back().get());
    }
    break;
  }
  }
}

void TPlayer::State() {
  if (m_SharesMemory && Pick(4) == 0) {
    TargetState();
    return;
  }
  switch (Pick(8)) {
  case 0:
  case 1:
  case 2:
    TestState();
    break;
  case 3:
  case 4:
    TextureState();
    break;
  case 5:
  case 6:
    LightState();
    break;
  default:
    MatrixState();
    break;
  }
}

void TPlayer::Vertex() {
  switch (Pick(5)) {
  case 0: {
    const double c[4] = {Real(0, 1), Real(0, 1), Real(0, 1), Real(0, 1)};
    m_Gl.Color4d(c[0], c[1], c[2], c[3]);
  } break;
  case 1: {
    const double c[3] = {Real(-0.5, 1.5), Real(0, 1), Real(0, 1)};
    m_Gl.Color4d(c[0], c[1], c[2], 1);
  } break;
  case 2:
    m_Gl.Color4ub(static_cast<unsigned char>(Pick(256)), 128, 255, 255);
    break;
  default:
    break;
  }
  const double normal[3] = {Real(-1, 1), Real(-1, 1), Real(-1, 1)};
  m_Gl.Normal3d(normal[0], normal[1], normal[2]);
  if (Coin()) {
    const double s = Real(-3, 3);
    m_Gl.TexCoord2d(s, Real(-3, 3));
  } else {
    const double s = Pick(9) * 0.25 - 1.0;
    m_Gl.TexCoord2d(s, Pick(9) * 0.25 - 1.0);
  }
  const double reach = Pick(6) == 0 ? 3.0 : 1.0;
  if (Pick(4) == 0) {
    const int v[3] = {Pick(5), Pick(5), Pick(3)};
    m_Gl.Vertex3d(v[0] * 0.5 - 1.0, v[1] * 0.5 - 1.0, v[2] - 1);
  } else {
    const double v[3] = {Real(-reach, reach), Real(-reach, reach), Real(-reach, reach)};
    m_Gl.Vertex3d(v[0], v[1], v[2]);
  }
}

void TPlayer::Primitive() {
  static constexpr unsigned int kModes[] = {
      GL_POINTS,    GL_LINES,          GL_LINE_STRIP,   GL_LINE_LOOP, GL_TRIANGLES, GL_TRIANGLES,
      GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_QUADS,     GL_QUADS};
  const unsigned int mode = Of(kModes);
  if (m_Words != nullptr) {
    *m_Words << "mode " << mode << "; ";
  }
  m_Gl.Begin(mode);
  const int count = 3 + Pick(10);
  for (int i = 0; i < count; ++i) {
    if (Pick(12) == 0) {
      // What is not refused between Begin and End holds from the next vertex or piece on.
      Coin() ? TestState() : TextureState();
      if (m_SharesMemory && Pick(4) == 0) {
        TargetState();
      }
    }
    Vertex();
  }
  m_Gl.End();
}

// --- Arrays, some of them long enough to be drawn by batches

constexpr int kMostVertices = 420;
constexpr int kCached = 1024; // elements this far apart share a place in the cache

int ComponentSize(unsigned int type) { return type == GL_DOUBLE ? 8 : type == GL_FLOAT ? 4 : 1; }

void Put(unsigned char* to, unsigned int type, double value) {
  const auto narrow = static_cast<float>(value);
  if (type == GL_DOUBLE) {
    std::memcpy(to, &value, 8);
  } else if (type == GL_FLOAT) {
    std::memcpy(to, &narrow, 4);
  } else {
    *to = static_cast<unsigned char>(static_cast<long>(value * 255.0));
  }
}

// An array of random vectors with the stride given, 0 for packed ones.
std::vector<unsigned char> TPlayer::Column(int components, unsigned int type, int stride,
                                           double low, double high) {
  const int size = ComponentSize(type);
  const int step = stride != 0 ? stride : components * size;
  std::vector<unsigned char> bytes(static_cast<std::size_t>(step * m_Vertices + 32));
  for (int i = 0; i < m_Vertices; ++i) {
    for (int k = 0; k < components; ++k) {
      Put(bytes.data() + i * step + k * size, type, Real(low, high));
    }
  }
  return bytes;
}

// Positions of shapes that lie anywhere, near each other, outside or on the borders, now and then
// with values that are no numbers or far off.
void TPlayer::Positions(int components, unsigned int type, int stride,
                        std::vector<unsigned char>* out) {
  static constexpr double kOdd[] = {0.0,
                                    -0.0,
                                    1e300,
                                    -1e300,
                                    1e-310,
                                    1e30,
                                    -1e30,
                                    1.0,
                                    -1.0,
                                    HUGE_VAL,
                                    2.5e9,
                                    -HUGE_VAL,
                                    std::numeric_limits<double>::quiet_NaN()};
  *out = Column(components, type, stride, -1.2, 1.2);
  if (type == GL_UNSIGNED_BYTE) {
    return;
  }
  const int size = ComponentSize(type);
  const int step = stride != 0 ? stride : components * size;
  const int style = Pick(6);
  const int together = 1 + Pick(9);
  const double reach = Coin() ? 0.1 : 0.01;
  const double shift = Pick(3) == 0 ? Real(-2.5, 2.5) : 0.0;
  double center[4] = {};
  for (int i = 0; i < m_Vertices; ++i) {
    for (int k = 0; k < components; ++k) {
      if (i % together == 0) {
        center[k] = Real(-1.1, 1.1);
      }
      double value = center[k] + Real(-reach, reach) + (k == 0 ? shift : 0.0);
      if (style == 0) {
        value = Pick(9) * 0.25 - 1.0;
      } else if (style == 1) {
        value = Real(-1.5, 1.5);
      } else if (style == 2 && Pick(20) == 0) {
        value = kOdd[Pick(13)];
      } else if (style == 3 && k == 1) {
        value = center[k]; // level
      } else if (style == 4 && k == 0) {
        value = center[k]; // upright
      }
      Put(out->data() + i * step + k * size, type, value);
    }
  }
}

void TPlayer::Arrays() {
  static constexpr unsigned int kModes[] = {
      GL_POINTS,    GL_POINTS,    GL_LINES,          GL_LINES,        GL_LINE_STRIP, GL_LINE_LOOP,
      GL_TRIANGLES, GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_QUADS};
  static constexpr unsigned int kTypes[] = {GL_FLOAT, GL_FLOAT, GL_DOUBLE, GL_UNSIGNED_BYTE};
  struct TArray {
    int Size;
    unsigned int Type;
    int Stride;
    std::vector<unsigned char> Bytes;
  } arrays[4];
  for (TArray& array : arrays) {
    array.Size = 1 + Pick(4);
    array.Type = Of(kTypes);
    array.Stride = Coin() ? 0 : 32 + Pick(9);
  }
  const bool wide = Pick(6) == 0;
  m_Vertices = kMostVertices + (wide ? kCached : 0);
  arrays[0].Type = Pick(8) == 0 ? GL_UNSIGNED_BYTE : Coin() ? GL_FLOAT : GL_DOUBLE;
  arrays[0].Size = Pick(4) == 0 ? arrays[0].Size : 2 + Pick(3);
  arrays[1].Size = 3;
  Positions(arrays[0].Size, arrays[0].Type, arrays[0].Stride, &arrays[0].Bytes);
  for (int i = 1; i < 4; ++i) {
    const bool unit = Coin();
    const bool bytes = arrays[i].Type == GL_UNSIGNED_BYTE;
    arrays[i].Bytes = Column(arrays[i].Size, arrays[i].Type, arrays[i].Stride,
                             unit || bytes ? 0.0 : -1.5, unit || bytes ? 1.0 : 2.0);
  }
  m_Gl.VertexPointer(arrays[0].Size, arrays[0].Type, arrays[0].Stride, arrays[0].Bytes.data());
  m_Gl.NormalPointer(arrays[1].Type, arrays[1].Stride, arrays[1].Bytes.data());
  m_Gl.ColorPointer(arrays[2].Size, arrays[2].Type, arrays[2].Stride, arrays[2].Bytes.data());
  m_Gl.TexCoordPointer(arrays[3].Size, arrays[3].Type, arrays[3].Stride, arrays[3].Bytes.data());
  m_Gl._EnableClientState(GL_VERTEX_ARRAY, true);
  m_Gl._EnableClientState(GL_NORMAL_ARRAY, Coin());
  m_Gl._EnableClientState(GL_COLOR_ARRAY, Pick(4) != 0);
  m_Gl._EnableClientState(GL_TEXTURE_COORD_ARRAY, Coin());
  const unsigned int mode = Of(kModes);
  const int count = Coin() ? Pick(40) : Pick(kMostVertices + 1);
  if (m_Words != nullptr) {
    *m_Words << "mode " << mode << ", " << count << " vertices; ";
  }
  if (Coin()) {
    Say("arrays; ");
    m_Gl.DrawArrays(mode, Pick(kMostVertices + 1 - count), count);
  } else {
    Say("elements; ");
    static constexpr unsigned int kIndices[] = {GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT,
                                                GL_UNSIGNED_INT};
    const unsigned int type = Of(kIndices);
    const std::size_t size = type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : 4;
    std::vector<unsigned char> indices(size * kMostVertices);
    const bool near = Coin();
    for (int i = 0; i < kMostVertices; ++i) {
      const int place = near ? (i + Pick(6)) % kMostVertices : Pick(kMostVertices);
      const int index = place + (wide && Coin() ? kCached : 0);
      std::memcpy(indices.data() + static_cast<std::size_t>(i) * size, &index, size);
    }
    m_Gl.DrawElements(mode, count, type, indices.data());
  }
}

void TPlayer::Call() {
  switch (Pick(10)) {
  case 0:
    Say("clear; ");
    {
      const bool what[3] = {Coin(), Coin(), Coin()};
      m_Gl.Clear(what[0], what[1], what[2]);
    }
    break;
  case 1:
  case 2:
  case 3:
    Primitive();
    break;
  case 4:
    Arrays();
    break;
  default:
    State();
    break;
  }
}

} // namespace

std::vector<unsigned char> TRandomScene::Run(int calls) const {
  TPlayer player(m_Seed, nullptr);
  for (int i = 0; i < calls; ++i) {
    player.Call();
  }
  return player.Left();
}

std::vector<unsigned char> TRandomScene::RunForAnyProcessor(int calls) const {
  TPlayer player(m_Seed, nullptr);
  for (int i = 0; i < calls; ++i) {
    player.Call();
  }
  player.UnifyNaNs();
  return player.Left();
}

std::string TRandomScene::Describe(int index) const {
  std::ostringstream skipped;
  TPlayer player(m_Seed, &skipped);
  for (int i = 0; i < index; ++i) {
    player.Call();
  }
  skipped.str("");
  player.Call();
  return skipped.str();
}

} // namespace zx_test
