#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/TRenderCPU.h>

// What the renderer's tests share: a context of a size, reading pixels back, and a small shader
// pair that hands its slots through.

namespace zx_test {

/// One pixel of the colour surface.
struct TPixel {
  int r, g, b, a;

  bool operator==(const TPixel& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
  bool operator!=(const TPixel& o) const { return !(*this == o); }
};

inline std::ostream& operator<<(std::ostream& out, const TPixel& p) {
  return out << '(' << p.r << ", " << p.g << ", " << p.b << ", " << p.a << ')';
}

inline constexpr TPixel kClear{0, 0, 0, 0};

/// A created context; `.` and `->` reach the renderer.
class TScene {
public:
  explicit TScene(int width = 8, int height = 8, Zx3D::TRenderCPU* share = nullptr)
      : m_Render(new Zx3D::TRenderCPU) {
    EXPECT_TRUE(m_Render->Create(width, height, share));
  }

  Zx3D::TRenderCPU* operator->() const { return m_Render.get(); }
  Zx3D::TRenderCPU& operator*() const { return *m_Render; }
  Zx3D::TRenderCPU* Get() const { return m_Render.get(); }

  TPixel Color(int x, int y) const {
    const std::uint8_t* p = At(*m_Render->m_ColorSurface, x, y);
    return {p[0], p[1], p[2], p[3]};
  }
  float Depth(int x, int y) const {
    float depth;
    std::memcpy(&depth, At(*m_Render->m_DepthSurface, x, y), sizeof(depth));
    return depth;
  }
  int Stencil(int x, int y) const { return *At(*m_Render->m_StencilSurface, x, y); }

  void SetColor(int x, int y, const TPixel& c) {
    std::uint8_t* p = At(*m_Render->m_ColorSurface, x, y);
    p[0] = static_cast<std::uint8_t>(c.r);
    p[1] = static_cast<std::uint8_t>(c.g);
    p[2] = static_cast<std::uint8_t>(c.b);
    p[3] = static_cast<std::uint8_t>(c.a);
  }
  void SetDepth(int x, int y, float depth) {
    std::memcpy(At(*m_Render->m_DepthSurface, x, y), &depth, sizeof(depth));
  }
  void SetStencil(int x, int y, int value) {
    *At(*m_Render->m_StencilSurface, x, y) = static_cast<std::uint8_t>(value);
  }

  /// Colour and stencil to 0, depth to `depth`.
  void Reset(float depth = 1.0f) {
    for (int y = 0; y < m_Render->m_Height; ++y) {
      for (int x = 0; x < m_Render->m_Width; ++x) {
        SetColor(x, y, kClear);
        SetDepth(x, y, depth);
        SetStencil(x, y, 0);
      }
    }
  }

  /// How many pixels are not all zero.
  int Painted() const {
    int count = 0;
    for (int y = 0; y < m_Render->m_Height; ++y) {
      for (int x = 0; x < m_Render->m_Width; ++x) {
        count += Color(x, y) != kClear;
      }
    }
    return count;
  }

  static std::uint8_t* At(const DATASURFACE& s, int x, int y) {
    return s.Data + static_cast<std::ptrdiff_t>(x) * s.PixelStride +
           static_cast<std::ptrdiff_t>(y) * s.RowStride;
  }

private:
  struct TReleaser {
    void operator()(Zx3D::TRenderCPU* r) const { r->Release(); }
  };
  std::unique_ptr<Zx3D::TRenderCPU, TReleaser> m_Render;
};

/// The bytes of a surface's pixels.
inline std::vector<std::uint8_t> BytesOf(const DATASURFACE* s) {
  return std::vector<std::uint8_t>(s->Data, s->Data + s->DataSize);
}

/// All three surfaces behind one another.
inline std::vector<std::uint8_t> AllBytes(const Zx3D::TRenderCPU& r) {
  std::vector<std::uint8_t> all;
  for (const TDataSurface* s : {r.m_ColorSurface, r.m_DepthSurface, r.m_StencilSurface}) {
    all.insert(all.end(), s->Data, s->Data + s->DataSize);
  }
  return all;
}

/// All that a later call, or a caller who looks, can find: the surfaces, the records of drawing,
/// the current values, a pending error. NaNs are made equal: their sign and payload are open.
inline std::vector<std::uint8_t> EverythingLeft(const Zx3D::TRenderCPU& r) {
  std::vector<std::uint8_t> all = AllBytes(r);
  const auto append = [&all](const auto& value) {
    const auto* const from = reinterpret_cast<const std::uint8_t*>(&value);
    all.insert(all.end(), from, from + sizeof value);
  };
  const auto appendDoubles = [&append](const auto& value) {
    constexpr std::size_t kBytes = sizeof value;
    double numbers[kBytes / sizeof(double)];
    std::memcpy(numbers, &value, sizeof numbers);
    for (double& number : numbers) {
      number = std::isnan(number) ? std::numeric_limits<double>::quiet_NaN() : number;
    }
    append(numbers);
  };
  appendDoubles(r.m_Fragment.Color);
  append(r.m_Fragment.X);
  append(r.m_Fragment.Y);
  append(r.m_Fragment.Depth);
  append(r.m_Fragment.FrontFacing);
  if (!r.m_InBeginEnd) { // within, it is worked out when something reads it
    appendDoubles(r.m_VarFragment);
  }
  appendDoubles(r.m_VarCur);
  appendDoubles(r.m_VarSaved);
  append(r.m_VertexIndex);
  append(r.m_StripIndex);
  append(r.m_Pending);
  appendDoubles(r.m_CurVertex);
  appendDoubles(r.m_CurNormal);
  appendDoubles(r.m_CurColor);
  appendDoubles(r.m_CurTexCoord);
  appendDoubles(r.m_CurAttrib);
  append(r.m_Error);
  return all;
}

/// Two triangles over the whole clip square at depth `z`, counter-clockwise, in the current colour.
inline void DrawFullQuad(Zx3D::TRenderCPU& r, double z = 0.0) {
  r.Begin(GL_QUADS);
  r.Vertex3d(-1, -1, z);
  r.Vertex3d(1, -1, z);
  r.Vertex3d(1, 1, z);
  r.Vertex3d(-1, 1, z);
  r.End();
}

/// Clip coordinate of window column (or row) `i` of `size`, pixel centres at whole numbers.
inline double Clip(double i, int size) { return (i + 0.5) / size * 2.0 - 1.0; }

inline std::uint64_t Bits(double v) {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof(bits));
  return bits;
}
inline std::uint32_t Bits(float v) {
  std::uint32_t bits;
  std::memcpy(&bits, &v, sizeof(bits));
  return bits;
}

/// Equal to the last bit, the sign of a zero included.
#define EXPECT_SAME_BITS(expected, actual)                                                         \
  EXPECT_EQ(::zx_test::Bits(expected), ::zx_test::Bits(actual))                                    \
      << #actual << " is " << (actual) << ", not " << (expected)

/// Passes the current vertex on as the clip position, the current colour in slot 1, the texture
/// coordinate in slot 2, and further slots filled from the generic attributes. Counts its calls.
class TPassVertexShader : public Zx3D::TVertexShaderCPU {
public:
  explicit TPassVertexShader(int slots = 2) : Slots(slots) {}

  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  unsigned int GetAttribLocation(const char*) const override { return ~0u; }
  void Begin() override {
    ++Begins;
    m_Render->m_VarPosition = 0;
    m_Render->m_VarColor = 1;
    m_Render->m_VarSecondary = -1;
    m_Render->m_VarBackColor = -1;
    m_Render->m_VarBackSecondary = -1;
    m_Render->m_VarTexCoord = 2;
    m_Render->m_VarCount = Slots;
  }
  void End() override { ++Ends; }
  void Execute(Zx3D::TRenderCPU::VAR_DATA* v) override {
    ++Executes;
    (*v)[0] = m_Render->m_CurVertex;
    if (Slots > 1) {
      (*v)[1] = m_Render->m_CurColor;
    }
    if (Slots > 2) {
      (*v)[2] = m_Render->m_CurTexCoord;
    }
    for (int i = 3; i < Slots && i < 8; ++i) {
      (*v)[static_cast<std::size_t>(i)] = m_Render->m_CurAttrib[i];
    }
  }

  int Slots;
  int Begins = 0;
  int Ends = 0;
  int Executes = 0;
};

/// A fragment as the shader saw it.
struct TSeenFragment {
  int X;
  int Y;
  bool FrontFacing;
  float Depth;
  Zx3D::TRenderCPU::VAR_DATA Slots;
};

/// Colours by slot 1 and keeps every fragment it was called for.
class TSeeingFragmentShader : public Zx3D::TFragmentShaderCPU {
public:
  explicit TSeeingFragmentShader(bool calcDepth = false) : CalcDepth(calcDepth) {}

  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override { ++Begins; }
  void End() override { ++Ends; }
  bool Execute(Zx3D::TRenderCPU::VAR_DATA* v, Zx3D::TRenderCPU::FS_DATA* f) override {
    if (CalcDepth) {
      f->Depth = OwnDepth;
    }
    Seen.push_back({f->X, f->Y, f->FrontFacing, f->Depth, *v});
    f->Color = UseOwnColor ? OwnColor : (*v)[1];
    return !Discard;
  }
  bool IsCalcDepth() const override { return CalcDepth; }

  bool CalcDepth;
  bool Discard = false;
  float OwnDepth = 0.0f;
  bool UseOwnColor = false;
  vec_t_<double, 4> OwnColor = {1, 1, 1, 1};
  int Begins = 0;
  int Ends = 0;
  std::vector<TSeenFragment> Seen;
};

/// Holds one counted object for a scope.
template <class T> class THeld {
public:
  template <class... TArgs> explicit THeld(TArgs&&... args) : m_Object(new T(args...)) {}
  ~THeld() { m_Object->Release(); }
  THeld(const THeld&) = delete;
  THeld& operator=(const THeld&) = delete;

  T* operator->() const { return m_Object; }
  T& operator*() const { return *m_Object; }
  T* Get() const { return m_Object; }

private:
  T* m_Object;
};

} // namespace zx_test
