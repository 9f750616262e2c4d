#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <vector>

// A second, plain formulation of the road from clip space to the pixel. It gathers whole vertex
// lists, makes new vertices where the renderer works in place, visits every row and column of its
// arrays, and keeps the order of every arithmetic operation. It shares no code with the renderer.

namespace zx_test {

using TRefSlot = std::array<double, 4>;

/// One vertex or fragment: as many slots as are live.
struct TRefVertex {
  std::vector<TRefSlot> Slots;

  TRefSlot& operator[](std::size_t i) { return Slots[i]; }
  const TRefSlot& operator[](std::size_t i) const { return Slots[i]; }
};

struct TRefFragment {
  TRefSlot Color{};
  int X = 0;
  int Y = 0;
  bool FrontFacing = true;
  float Depth = 0;
};

/// All state that the road depends on, enums by their numbers.
struct TRefState {
  bool CullEnabled = false;
  unsigned int CullMode = 0x405;
  bool FrontCCW = true;
  bool Fastest = false;
  bool DepthTest = false;
  bool DepthMask = true;
  unsigned int DepthFunc = 513;
  bool StencilTest = false;
  unsigned int StencilFunc = 519;
  int StencilRef = 0;
  unsigned int StencilValueMask = ~0u;
  unsigned int StencilFail = 0x1E00;
  unsigned int StencilZFail = 0x1E00;
  unsigned int StencilZPass = 0x1E00;
  unsigned int StencilWriteMask = ~0u;
  int ColorMask = 15;
  bool Blend = false;
  bool OffsetFill = false;
  float OffsetFactor = 0;
  bool CalcDepth = false;
  /// Fills the colour, and the depth if `CalcDepth`; false discards.
  std::function<bool(const TRefVertex&, TRefFragment&)> Shader;
};

class TReference {
public:
  TReference(int width, int height)
      : W(width), H(height), Color(Size() * 4, 0), Depth(Size(), 0.0f), Stencil(Size(), 0) {}

  /// One `Begin` to `End` with all its vertices, which are in clip space.
  void Draw(unsigned int mode, const std::vector<TRefVertex>& v) {
    m_Last.reset();
    const std::size_t n = v.size();
    switch (mode) {
    case 0:
      for (const TRefVertex& p : v) {
        Point(p);
      }
      break;
    case 1:
      for (std::size_t i = 0; i + 1 < n; i += 2) {
        Line(v[i], v[i + 1]);
      }
      break;
    case 2:
    case 3:
      for (std::size_t i = 0; i + 1 < n; ++i) {
        Line(v[i], v[i + 1]);
      }
      if (mode == 2 && n > 0) {
        Line(v[n - 1], v[0]);
      }
      break;
    case 4:
      for (std::size_t i = 0; i + 2 < n; i += 3) {
        Triangle(v[i], v[i + 1], v[i + 2]);
      }
      break;
    case 5:
      for (std::size_t i = 0; i + 2 < n; ++i) {
        if (i % 2 == 0) {
          Triangle(v[i], v[i + 1], v[i + 2]);
        } else {
          Triangle(v[i + 1], v[i], v[i + 2]);
        }
      }
      break;
    case 6:
      for (std::size_t i = 1; i + 1 < n; ++i) {
        Triangle(v[0], v[i], v[i + 1]);
      }
      break;
    case 7:
      for (std::size_t i = 0; i + 3 < n; i += 4) {
        Triangle(v[i], v[i + 1], v[i + 2]);
        Triangle(v[i], v[i + 2], v[i + 3]);
      }
      break;
    default:
      break;
    }
  }

  void Point(TRefVertex v) {
    TRefSlot& p = v[0];
    for (int axis = 0; axis < 3; ++axis) {
      const double u = p[static_cast<std::size_t>(axis)];
      if (-p[3] > u || u > p[3]) {
        return;
      }
    }
    const double r = 1.0 / p[3];
    const double h = r * 0.5;
    p = {W * (p[0] * h + 0.5), H * (p[1] * h + 0.5), h * p[2] + 0.5, r};
    const double px = std::trunc(p[0]);
    const double py = std::trunc(p[1]);
    if (!(px >= 0 && px < W && py >= 0 && py < H)) {
      return;
    }
    Fragment(static_cast<int>(px), static_cast<int>(py), static_cast<float>(p[2]), v);
  }

  void Line(TRefVertex a, TRefVertex b) {
    for (int plane = 0; plane < 6; ++plane) {
      const bool aIn = Inside(a, plane);
      const bool bIn = Inside(b, plane);
      if (!aIn && !bIn) {
        return;
      }
      if (!aIn) {
        a = Towards(a, b, Crossing(a, b, plane));
      } else if (!bIn) {
        b = Towards(b, a, Crossing(b, a, plane));
      }
    }
    WalkLine(a, b);
  }

  void Triangle(const TRefVertex& a, const TRefVertex& b, const TRefVertex& c) {
    std::vector<TTriangle> pieces = {{a, b, c}};
    for (int plane = 0; plane < 6; ++plane) {
      std::vector<TTriangle> next;
      for (const TTriangle& piece : pieces) {
        Cut(piece, plane, next);
      }
      pieces = next;
    }
    for (TTriangle& piece : pieces) {
      FillTriangle(piece);
    }
  }

  using TTriangle = std::array<TRefVertex, 3>;

  /// What is left of a triangle at one plane, appended to `out`.
  static void Cut(const TTriangle& t, int plane, std::vector<TTriangle>& out) {
    std::vector<std::size_t> outside;
    for (std::size_t i = 0; i < 3; ++i) {
      if (!Inside(t[i], plane)) {
        outside.push_back(i);
      }
    }
    if (outside.empty()) {
      out.push_back(t);
    } else if (outside.size() == 2) {
      TTriangle smaller = t;
      const std::size_t i = 3 - outside[0] - outside[1];
      for (const std::size_t o : outside) {
        smaller[o] = Towards(t[o], t[i], Crossing(t[o], t[i], plane));
      }
      out.push_back(smaller);
    } else if (outside.size() == 1) {
      const std::size_t o = outside[0];
      const std::size_t a = (o + 1) % 3;
      const std::size_t b = (o + 2) % 3;
      const TRefVertex onA = Towards(t[o], t[a], Crossing(t[o], t[a], plane));
      const TRefVertex onB = Towards(t[o], t[b], Crossing(t[o], t[b], plane));
      TTriangle first = t;
      first[o] = onA;
      out.push_back(first);
      TTriangle second = t;
      second[o] = onB;
      second[a] = onA;
      out.push_back(second);
    }
  }

  TRefState State;
  int W;
  int H;
  std::vector<std::uint8_t> Color;
  std::vector<float> Depth;
  std::vector<std::uint8_t> Stencil;
  bool FrontFacing = true;
  long Fragments = 0; ///< that reached the colour write

private:
  std::size_t Size() const { return static_cast<std::size_t>(W) * static_cast<std::size_t>(H); }

  static bool Inside(const TRefVertex& v, int plane) {
    const double u = v[0][static_cast<std::size_t>(plane / 2)];
    const double w = v[0][3];
    return plane % 2 == 0 ? u >= -w : u <= w;
  }

  static double Crossing(const TRefVertex& o, const TRefVertex& i, int plane) {
    const auto axis = static_cast<std::size_t>(plane / 2);
    const double uo = o[0][axis];
    const double ui = i[0][axis];
    const double wo = o[0][3];
    const double wi = i[0][3];
    return plane % 2 == 0 ? (uo + wo) / (((uo - ui) + wo) - wi)
                          : (uo - wo) / (((uo - ui) - wo) + wi);
  }

  static TRefVertex Towards(const TRefVertex& from, const TRefVertex& to, double t) {
    TRefVertex v = from;
    for (std::size_t i = 0; i < v.Slots.size(); ++i) {
      for (std::size_t k = 0; k < 4; ++k) {
        v[i][k] = (to[i][k] - from[i][k]) * t + from[i][k];
      }
    }
    return v;
  }

  static TRefVertex Minus(const TRefVertex& a, const TRefVertex& b) {
    TRefVertex d = a;
    for (std::size_t i = 0; i < d.Slots.size(); ++i) {
      for (std::size_t k = 0; k < 4; ++k) {
        d[i][k] = a[i][k] - b[i][k];
      }
    }
    return d;
  }

  static TRefVertex At(const TRefVertex& begin, const TRefVertex& delta, double t) {
    TRefVertex v = begin;
    for (std::size_t i = 0; i < v.Slots.size(); ++i) {
      for (std::size_t k = 0; k < 4; ++k) {
        v[i][k] = delta[i][k] * t + begin[i][k];
      }
    }
    return v;
  }

  void ScaleByReciprocalW(TRefVertex& v, double r) const {
    if (State.Fastest) {
      return;
    }
    for (std::size_t i = 1; i < v.Slots.size(); ++i) {
      for (double& c : v[i]) {
        c *= r;
      }
    }
  }

  TRefVertex Interpolated(const TRefVertex& begin, const TRefVertex& delta, double t) const {
    TRefVertex v = At(begin, delta, t);
    if (!State.Fastest) {
      const double q = 1.0 / (delta[0][3] * t + begin[0][3]);
      for (TRefSlot& slot : v.Slots) {
        for (double& c : slot) {
          c *= q;
        }
      }
    }
    return v;
  }

  struct TEdge {
    TRefVertex Begin;
    TRefVertex Delta;
    double EndY;
  };

  static TEdge EdgeOf(const TRefVertex& a, const TRefVertex& b) {
    const bool rising = b[0][1] >= a[0][1];
    const TRefVertex& begin = rising ? a : b;
    const TRefVertex& end = rising ? b : a;
    return {begin, Minus(end, begin), end[0][1]};
  }

  void FillTriangle(TTriangle& v) {
    std::array<double, 3> r;
    for (std::size_t i = 0; i < 3; ++i) {
      TRefSlot& p = v[i][0];
      r[i] = 1.0 / p[3];
      p[3] = r[i];
      p[0] *= r[i];
      p[1] *= r[i];
    }
    const double area = (v[0][0][0] * v[1][0][1] - v[1][0][0] * v[0][0][1]) +
                        (v[1][0][0] * v[2][0][1] - v[2][0][0] * v[1][0][1]) +
                        (v[2][0][0] * v[0][0][1] - v[0][0][0] * v[2][0][1]);
    FrontFacing = State.FrontCCW ? area >= 0 : area < 0;
    if (State.CullEnabled &&
        (State.CullMode == 0x408 || (State.CullMode == 0x405 && !FrontFacing) ||
         (State.CullMode == 0x404 && FrontFacing))) {
      return;
    }
    for (std::size_t i = 0; i < 3; ++i) {
      TRefSlot& p = v[i][0];
      p[0] = (p[0] * 0.5 + 0.5) * W - 0.5;
      p[1] = (p[1] * 0.5 + 0.5) * H - 0.5;
      p[2] = (p[2] * r[i]) * 0.5 + 0.5;
      ScaleByReciprocalW(v[i], r[i]);
    }
    const TEdge edges[3] = {EdgeOf(v[0], v[1]), EdgeOf(v[1], v[2]), EdgeOf(v[2], v[0])};
    int longest = 0;
    for (int i = 1; i < 3; ++i) {
      if (edges[i].Delta[0][1] > edges[longest].Delta[0][1]) {
        longest = i;
      }
    }
    FillRows(edges[longest], edges[(longest + 1) % 3]);
    FillRows(edges[longest], edges[(longest + 2) % 3]);
  }

  void FillRows(const TEdge& a, const TEdge& b) {
    if (a.Delta[0][1] == 0 || b.Delta[0][1] == 0) {
      return;
    }
    for (int y = 0; y < H; ++y) {
      if (y < std::trunc(b.Begin[0][1] + 0.5) || y > std::trunc(b.EndY)) {
        continue;
      }
      const double ta = (y - a.Begin[0][1]) / a.Delta[0][1];
      const double tb = (y - b.Begin[0][1]) / b.Delta[0][1];
      if (ta < 0 || ta >= 1 || tb < 0 || tb >= 1) {
        continue;
      }
      const TRefVertex onA = At(a.Begin, a.Delta, ta);
      const TRefVertex onB = At(b.Begin, b.Delta, tb);
      if (onB[0][0] >= onA[0][0]) {
        FillSpan(onA, onB, y);
      } else {
        FillSpan(onB, onA, y);
      }
    }
  }

  void FillSpan(const TRefVertex& begin, const TRefVertex& end, int y) {
    const TRefVertex delta = Minus(end, begin);
    if (delta[0][0] == 0) {
      return;
    }
    for (int x = 0; x < W; ++x) {
      if (x < std::trunc(begin[0][0] + 0.5) || x > std::trunc(end[0][0])) {
        continue;
      }
      const double t = (x - begin[0][0]) / delta[0][0];
      if (t < 0 || t >= 1) {
        continue;
      }
      float z = static_cast<float>(delta[0][2] * t + begin[0][2]);
      if (State.OffsetFill) {
        z += State.OffsetFactor;
      }
      Fragment(x, y, z, Interpolated(begin, delta, t));
    }
  }

  void WalkLine(TRefVertex a, TRefVertex b) {
    for (TRefVertex* v : {&a, &b}) {
      TRefSlot& p = (*v)[0];
      const double r = 1.0 / p[3];
      const double h = r * 0.5;
      p = {W * (p[0] * h + 0.5) - 0.5, H * (p[1] * h + 0.5) - 0.5, p[2] * h + 0.5, r};
      ScaleByReciprocalW(*v, r);
    }
    const TRefVertex delta = Minus(b, a);
    // The walk is written once, along axis `major`.
    const int from[2] = {static_cast<int>(a[0][0] + 0.5), static_cast<int>(a[0][1] + 0.5)};
    const int to[2] = {static_cast<int>(b[0][0] + 0.5), static_cast<int>(b[0][1] + 0.5)};
    const int d[2] = {to[0] - from[0], to[1] - from[1]};
    if (d[0] == 0 && d[1] == 0) {
      LinePixel(from[0], from[1], a, delta, 0.0);
      return;
    }
    const int major = std::abs(d[0]) >= std::abs(d[1]) ? 0 : 1;
    const int minor = 1 - major;
    const int length = std::abs(d[major]);
    const int sign[2] = {(d[0] > 0) - (d[0] < 0), (d[1] > 0) - (d[1] < 0)};
    for (int step = 0; step < length; ++step) {
      // The error starts at -length and has gained 2 |minor| a step; each time it reaches 0 a step
      // in the minor direction takes 2 length off.
      const int gained = 2 * std::abs(d[minor]) * step;
      const int minorSteps = (gained + length) / (2 * length);
      int p[2];
      p[major] = from[major] + sign[major] * step;
      p[minor] = from[minor] + sign[minor] * minorSteps;
      const auto axis = static_cast<std::size_t>(major);
      double t = (p[major] - a[0][axis]) / delta[0][axis];
      t = t < 0 ? 0 : t > 1 ? 1 : t;
      LinePixel(p[0], p[1], a, delta, t);
    }
  }

  void LinePixel(int x, int y, const TRefVertex& begin, const TRefVertex& delta, double t) {
    if (x < 0 || x >= W || y < 0 || y >= H) {
      return;
    }
    if (m_Last && (*m_Last)[0] == x && (*m_Last)[1] == y) {
      return;
    }
    m_Last = {x, y};
    Fragment(x, y, static_cast<float>(delta[0][2] * t + begin[0][2]),
             Interpolated(begin, delta, t));
  }

  static bool Compare(unsigned int func, double a, double b) {
    const bool results[8] = {false, a<b, a == b, a <= b, a> b, a != b, a >= b, true};
    return results[func - 512];
  }

  void RunStencil(unsigned int op, std::uint8_t& s) const {
    const int mask = static_cast<int>(State.StencilWriteMask & 0xFF);
    const int ref = State.StencilRef & 0xFF;
    const int kept = s & ~mask;
    const int live = s & mask;
    int value = s;
    switch (op) {
    case 0x1E00:
      break;
    case 0:
      value = kept;
      break;
    case 0x1E01:
      value = (ref & mask) | kept;
      break;
    case 0x1E02:
      value = ((live == 255 ? 255 : live + 1) & mask) | kept;
      break;
    case 0x8507:
      value = ((live + 1) & mask) | kept;
      break;
    case 0x1E03:
    case 0x8508:
      value = ((live == 0 ? 0 : live - 1) & mask) | kept;
      break;
    case 0x150A:
      value = s ^ mask;
      break;
    default:
      break;
    }
    s = static_cast<std::uint8_t>(value);
  }

  void Fragment(int x, int y, float z, const TRefVertex& v) {
    const std::size_t at =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(W) + static_cast<std::size_t>(x);
    if (State.StencilTest) {
      const unsigned int mask = State.StencilValueMask & 0xFF;
      const unsigned int ref = static_cast<unsigned int>(State.StencilRef) & mask;
      if (!Compare(State.StencilFunc, ref, Stencil[at] & mask)) {
        RunStencil(State.StencilFail, Stencil[at]);
        return;
      }
    }
    TRefFragment f;
    f.X = x;
    f.Y = y;
    f.FrontFacing = FrontFacing;
    f.Depth = z;
    if (!State.CalcDepth && !PassesDepth(f.Depth, at)) {
      return;
    }
    if (!State.Shader(v, f)) {
      return;
    }
    if (State.CalcDepth && !PassesDepth(f.Depth, at)) {
      return;
    }
    if (State.DepthMask) {
      Depth[at] = f.Depth;
    }
    if (State.StencilTest) {
      RunStencil(State.StencilZPass, Stencil[at]);
    }
    WriteColor(at, f.Color);
  }

  bool PassesDepth(float z, std::size_t at) {
    if (!State.DepthTest || Compare(State.DepthFunc, z, Depth[at])) {
      return true;
    }
    if (State.StencilTest) {
      RunStencil(State.StencilZFail, Stencil[at]);
    }
    return false;
  }

  void WriteColor(std::size_t at, const TRefSlot& color) {
    ++Fragments;
    unsigned int source[4];
    for (std::size_t k = 0; k < 4; ++k) {
      // The truncation of a NaN is the processor's least integer, whose low byte is 0.
      const double scaled = color[k] * 255.0 + 0.5;
      source[k] =
          std::isnan(scaled) ? 0 : static_cast<unsigned int>(static_cast<long long>(scaled)) & 0xFF;
    }
    for (std::size_t k = 0; k < 4; ++k) {
      if ((State.ColorMask >> k) & 1) {
        std::uint8_t& d = Color[4 * at + k];
        d = static_cast<std::uint8_t>(
            State.Blend ? (d * (255 - source[3]) + source[k] * source[3]) / 255 : source[k]);
      }
    }
  }

  std::optional<std::array<int, 2>> m_Last;
};

} // namespace zx_test
