#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ReferencePipeline.h"
#include "Scene.h"

// The same drawing sent through the renderer and through the reference, and both held against each
// other byte by byte.

namespace zx_test {

/// Hands out the vertices of a list, one a call.
class TListVertexShader : public Zx3D::TVertexShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  unsigned int GetAttribLocation(const char*) const override { return ~0u; }
  void Begin() override {
    m_Render->m_VarCount = Slots;
    Next = 0;
  }
  void End() override {}
  void Execute(Zx3D::TRenderCPU::VAR_DATA* v) override {
    const TRefVertex& from = (*List)[Next++];
    std::memcpy(v, from.Slots.data(), from.Slots.size() * sizeof(TRefSlot));
  }

  int Slots = 2;
  std::size_t Next = 0;
  const std::vector<TRefVertex>* List = nullptr;
};

/// Runs the reference's fragment shader inside the renderer.
class TStateFragmentShader : public Zx3D::TFragmentShaderCPU {
public:
  TStateFragmentShader(const TRefState* state, const TListVertexShader* vertices)
      : m_State(state), m_Vertices(vertices) {}

  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool Execute(Zx3D::TRenderCPU::VAR_DATA* v, Zx3D::TRenderCPU::FS_DATA* f) override {
    TRefVertex in;
    in.Slots.resize(static_cast<std::size_t>(m_Vertices->Slots));
    std::memcpy(in.Slots.data(), v, in.Slots.size() * sizeof(TRefSlot));
    TRefFragment out;
    out.X = f->X;
    out.Y = f->Y;
    out.FrontFacing = f->FrontFacing;
    out.Depth = f->Depth;
    const bool kept = m_State->Shader(in, out);
    f->Color = {out.Color[0], out.Color[1], out.Color[2], out.Color[3]};
    if (m_State->CalcDepth) {
      f->Depth = out.Depth;
    }
    return kept;
  }
  bool IsCalcDepth() const override { return m_State->CalcDepth; }

private:
  const TRefState* m_State;
  const TListVertexShader* m_Vertices;
};

/// Brings a context into the state of the reference, but for the shaders.
inline void Apply(const TRefState& s, Zx3D::TRenderCPU& r) {
  r.EnableCullFace(s.CullEnabled);
  r.CullFace(s.CullMode);
  r.FrontFace(s.FrontCCW ? GL_CCW : GL_CW);
  r.SetPerspectiveCorrectionHint(s.Fastest ? GL_FASTEST : GL_NICEST);
  r.EnableDepthTest(s.DepthTest);
  r.DepthMask(s.DepthMask);
  r.DepthFunc(s.DepthFunc);
  if (s.StencilTest) {
    r.Enable(GL_STENCIL_TEST);
  } else {
    r.Disable(GL_STENCIL_TEST);
  }
  r.StencilFunc(s.StencilFunc, s.StencilRef, s.StencilValueMask);
  r.StencilOp(s.StencilFail, s.StencilZFail, s.StencilZPass);
  r.StencilMask(s.StencilWriteMask);
  r.ColorMask(s.ColorMask & 1, s.ColorMask & 2, s.ColorMask & 4, s.ColorMask & 8);
  r.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  r.EnableBlend(s.Blend);
  r.EnablePolygonOffsetFill(s.OffsetFill);
  r.PolygonOffset(s.OffsetFactor, 3.0f);
  EXPECT_EQ(0u, r.GetError());
}

/// Random numbers that don't depend on the library's distributions.
class TDice {
public:
  explicit TDice(unsigned int seed) : m_Engine(seed) {}

  /// 0 to n - 1.
  int Below(int n) { return static_cast<int>(m_Engine() % static_cast<unsigned int>(n)); }
  bool Chance(int percent) { return Below(100) < percent; }
  double Between(double from, double to) {
    return from + (to - from) * (static_cast<double>(m_Engine()) / 4294967296.0);
  }
  template <class T, std::size_t N> const T& Of(const T (&values)[N]) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(N)))];
  }

private:
  std::mt19937 m_Engine;
};

inline TRefState RandomState(TDice& dice) {
  static constexpr unsigned int ops[] = {0x1E00, 0, 0x1E01, 0x1E02, 0x8507, 0x1E03, 0x8508, 0x150A};
  static constexpr unsigned int faces[] = {0x404, 0x405, 0x405, 0x404, 0x408, 7};
  static constexpr unsigned int masks[] = {~0u, 0xFF, 0x0F, 0x1FE, 0};
  TRefState s;
  s.CullEnabled = dice.Chance(30);
  s.CullMode = dice.Of(faces);
  s.FrontCCW = dice.Chance(70);
  s.Fastest = dice.Chance(25);
  s.DepthTest = dice.Chance(60);
  s.DepthMask = dice.Chance(80);
  s.DepthFunc = dice.Chance(60) ? 513u : 512u + static_cast<unsigned int>(dice.Below(8));
  s.StencilTest = dice.Chance(40);
  s.StencilFunc = dice.Chance(40) ? 519u : 512u + static_cast<unsigned int>(dice.Below(8));
  s.StencilRef = dice.Below(600) - 44;
  s.StencilValueMask = dice.Of(masks);
  s.StencilFail = dice.Of(ops);
  s.StencilZFail = dice.Of(ops);
  s.StencilZPass = dice.Of(ops);
  s.StencilWriteMask = dice.Of(masks);
  s.ColorMask = dice.Chance(70) ? 15 : dice.Below(16);
  s.Blend = dice.Chance(40);
  s.OffsetFill = dice.Chance(20);
  s.OffsetFactor = static_cast<float>(dice.Between(-0.3, 0.3));
  return s;
}

/// A vertex somewhere around the view volume: free, on the grid of pixel centres of a frame of
/// `width` by `height`, or exactly on a plane.
inline TRefVertex RandomVertex(TDice& dice, int slots, int width, int height) {
  TRefVertex v;
  v.Slots.resize(static_cast<std::size_t>(slots));
  const double w = dice.Chance(40)  ? 1.0
                   : dice.Chance(5) ? dice.Between(-1, 0)
                                    : dice.Between(0.1, 4);
  const double reach = dice.Chance(60) ? 1.0 : 2.5;
  TRefSlot& p = v[0];
  p = {dice.Between(-reach, reach) * w, dice.Between(-reach, reach) * w,
       dice.Between(-reach, reach) * w, w};
  if (dice.Chance(35)) {
    p[0] = Clip(dice.Below(width + 4) - 2, width) * w;
    p[1] = Clip(dice.Below(height + 4) - 2, height) * w;
  }
  if (dice.Chance(10)) {
    p[static_cast<std::size_t>(dice.Below(3))] = dice.Chance(50) ? w : -w;
  }
  for (std::size_t i = 1; i < v.Slots.size(); ++i) {
    for (double& c : v[i]) {
      c = dice.Between(0, 1);
    }
  }
  return v;
}

inline std::vector<TRefVertex> RandomVertices(TDice& dice, int count, int slots, int width,
                                              int height) {
  std::vector<TRefVertex> list;
  for (int i = 0; i < count; ++i) {
    list.push_back(dice.Chance(4) && i > 0 ? list.back()
                                           : RandomVertex(dice, slots, width, height));
  }
  return list;
}

/// A renderer and a reference of the same size, drawn into side by side.
class TPair {
public:
  TPair(int width, int height) : Scene(width, height), Reference(width, height) {}

  /// Fills the targets of both with the same random bytes.
  void Litter(TDice& dice) {
    for (int y = 0; y < Reference.H; ++y) {
      for (int x = 0; x < Reference.W; ++x) {
        const std::size_t at = static_cast<std::size_t>(y * Reference.W + x);
        const TPixel c{dice.Below(256), dice.Below(256), dice.Below(256), dice.Below(256)};
        Scene.SetColor(x, y, c);
        Reference.Color[4 * at] = static_cast<std::uint8_t>(c.r);
        Reference.Color[4 * at + 1] = static_cast<std::uint8_t>(c.g);
        Reference.Color[4 * at + 2] = static_cast<std::uint8_t>(c.b);
        Reference.Color[4 * at + 3] = static_cast<std::uint8_t>(c.a);
        const float z = dice.Chance(5)    ? std::numeric_limits<float>::quiet_NaN()
                        : dice.Chance(50) ? 1.0f
                                          : static_cast<float>(dice.Between(0, 1));
        Scene.SetDepth(x, y, z);
        Reference.Depth[at] = z;
        const int s = dice.Below(256);
        Scene.SetStencil(x, y, s);
        Reference.Stencil[at] = static_cast<std::uint8_t>(s);
      }
    }
  }

  /// Draws one list through both, by a custom pair of shaders.
  void Draw(const TRefState& state, unsigned int mode, const std::vector<TRefVertex>& list) {
    THeld<TListVertexShader> vertices;
    vertices->Slots = list.empty() ? 1 : static_cast<int>(list[0].Slots.size());
    vertices->List = &list;
    THeld<TStateFragmentShader> fragments(&state, vertices.Get());
    Apply(state, *Scene);
    Scene->_SetVertexShader(vertices.Get());
    Scene->_SetFragmentShader(fragments.Get());
    Scene->Begin(mode);
    for (std::size_t i = 0; i < list.size(); ++i) {
      Scene->Vertex2d(0, 0);
    }
    Scene->End();
    Scene->_SetVertexShader(nullptr);
    Scene->_SetFragmentShader(nullptr);

    Reference.State = state;
    Reference.Draw(mode, list);
  }

  /// Empty when all three targets have the same bytes; otherwise tells the first difference.
  std::string Difference() const {
    std::ostringstream out;
    for (int y = 0; y < Reference.H; ++y) {
      for (int x = 0; x < Reference.W; ++x) {
        const std::size_t at = static_cast<std::size_t>(y * Reference.W + x);
        const std::uint8_t* c = &Reference.Color[4 * at];
        const TPixel expected{c[0], c[1], c[2], c[3]};
        if (Scene.Color(x, y) != expected) {
          out << "colour at " << x << ", " << y << " is " << Scene.Color(x, y) << ", not "
              << expected;
          return out.str();
        }
        if (Bits(Scene.Depth(x, y)) != Bits(Reference.Depth[at])) {
          out << "depth at " << x << ", " << y << " is " << Scene.Depth(x, y) << ", not "
              << Reference.Depth[at];
          return out.str();
        }
        if (Scene.Stencil(x, y) != Reference.Stencil[at]) {
          out << "stencil at " << x << ", " << y << " is " << Scene.Stencil(x, y) << ", not "
              << int{Reference.Stencil[at]};
          return out.str();
        }
      }
    }
    if (Scene->m_Fragment.FrontFacing != Reference.FrontFacing) {
      return "the facing that is left differs";
    }
    return {};
  }

  TScene Scene;
  TReference Reference;
};

/// A shader that lets every slot, the pixel and the facing show in the colour. With `discards` it
/// drops some fragments; if the state computes depth it gives one of its own.
inline std::function<bool(const TRefVertex&, TRefFragment&)> MixingShader(bool discards,
                                                                          bool calcDepth) {
  return [discards, calcDepth](const TRefVertex& v, TRefFragment& f) {
    double sum[4] = {0, 0, 0, 0};
    for (std::size_t i = 1; i < v.Slots.size(); ++i) {
      for (std::size_t k = 0; k < 4; ++k) {
        sum[k] += v[i][k] / static_cast<double>(v.Slots.size() - 1);
      }
    }
    if (!f.FrontFacing) {
      std::swap(sum[0], sum[1]);
    }
    f.Color = {sum[0], sum[1], 0.5 * sum[2] + 0.01 * ((f.X + f.Y) % 50), sum[3]};
    if (calcDepth) {
      f.Depth = static_cast<float>(0.25 + 0.5 * sum[0]);
    }
    return !(discards && (f.X * 7 + f.Y * 3) % 5 == 0);
  };
}

} // namespace zx_test
