// Fragments of a caller's shader: one by one they are those of the reference walker at every
// instruction set, and a row at once leaves what one by one leaves.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <boost/uuid/uuid.hpp>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/RowShaderCPU.h>
#include <ZxPixelKit/Surface.h>

#include "LevelTest.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using VAR_DATA = TRenderCPU::VAR_DATA;
using FS_DATA = TRenderCPU::FS_DATA;
using TVector = vec_t_<double, 4>;

// --- A shader that can do both

/// What a fragment's result follows from.
struct TInput {
  double Slots[8][4];
  int X;
  int Y;
  bool FrontFacing;
  float Depth;
};

/// Its result depends on every live slot, the place, the facing and the depth; it may discard, wrap
/// around the bytes, and read a texture.
class TBothWays : public TRowFragmentShaderCPU {
public:
  bool Rows = true; ///< whether it says that it computes rows
  bool CalcDepth = false;
  bool Samples = false;
  int DiscardEvery = 0; ///< 0: never
  double Scale = 1;     ///< of the colours
  int Fragments = 0;    ///< by Execute
  int RowCalls = 0;
  int RowFragments = 0;
  bool Faults = false; ///< a row that was not as promised

  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return CalcDepth; }
  bool QueryInterface(const boost::uuids::uuid& id, void** out) override {
    return Rows ? TRowFragmentShaderCPU::QueryInterface(id, out)
                : TFragmentShaderCPU::QueryInterface(id, out);
  }

  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    ++Fragments;
    TInput in = {};
    for (int s = 0; s < m_Render->m_VarCount; ++s) {
      for (int c = 0; c < 4; ++c) {
        in.Slots[s][c] = (*v)[static_cast<std::size_t>(s)][static_cast<std::size_t>(c)];
      }
    }
    in.X = f->X;
    in.Y = f->Y;
    in.FrontFacing = f->FrontFacing;
    in.Depth = CalcDepth ? 0.0f : f->Depth;
    if (Discards(in)) {
      return false;
    }
    f->Color = ColorOf(in);
    if (CalcDepth) {
      f->Depth = DepthOf(in);
    }
    return true;
  }

  void ExecuteRow(const FS_ROW& row) override {
    ++RowCalls;
    RowFragments += row.Count;
    Faults = Faults || !IsAsPromised(row);
    for (int i = 0; i < row.Count; ++i) {
      TInput in = {};
      for (int s = 0; s < m_Render->m_VarCount; ++s) {
        for (int c = 0; c < 4; ++c) {
          in.Slots[s][c] = row.Slots[s][c][i];
        }
      }
      in.X = row.X[i];
      in.Y = row.Y;
      in.FrontFacing = row.FrontFacing;
      in.Depth = CalcDepth ? 0.0f : row.Depth[i];
      row.Keep[i] = !Discards(in);
      if (!row.Keep[i]) {
        continue;
      }
      const TVector color = ColorOf(in);
      for (std::size_t c = 0; c < 4; ++c) {
        row.Color[c][i] = color[c];
      }
      if (CalcDepth) {
        row.Depth[i] = DepthOf(in);
      }
    }
  }

private:
  bool IsAsPromised(const FS_ROW& row) const {
    const auto isAligned = [](const void* p) {
      return reinterpret_cast<std::uintptr_t>(p) % 64 == 0;
    };
    bool good = row.Count >= 1 && row.Count <= FS_ROW::kMost && isAligned(row.X) &&
                isAligned(row.Depth) && isAligned(row.Keep);
    for (int s = 0; s < 8; ++s) {
      for (int c = 0; c < 4; ++c) {
        good = good && (row.Slots[s][c] != nullptr) == (s < m_Render->m_VarCount) &&
               isAligned(row.Slots[s][c]);
      }
    }
    for (int i = 0; i < row.Count; ++i) {
      good = good && row.Keep[i] && (i == 0 || row.X[i] > row.X[i - 1]) && row.X[i] >= 0 &&
             row.X[i] < m_Render->m_Width;
    }
    return good && row.Y == m_Render->m_Fragment.Y;
  }

  bool Discards(const TInput& in) const {
    return DiscardEvery > 0 && (3 * in.X + 5 * in.Y) % DiscardEvery == 0;
  }
  float DepthOf(const TInput& in) const {
    return static_cast<float>(0.5 + 0.4 * std::sin(in.Slots[0][0] + 0.3 * in.Y));
  }
  TVector ColorOf(const TInput& in) const {
    TVector color = {in.X * 0.01, in.Y * 0.02, in.FrontFacing ? 0.25 : 0.75, in.Depth * 0.5};
    for (int s = 0; s < m_Render->m_VarCount; ++s) {
      for (std::size_t c = 0; c < 4; ++c) {
        color[c] += in.Slots[s][c] * 0.125;
      }
    }
    if (Samples) {
      TVector texel = {0, 0, 0, 0};
      m_Render->m_TexUnits[2].Sampler.GetValue(vec_t_<double, 2>{color.x, color.y}, &texel);
      color.z += texel.x;
    }
    for (std::size_t c = 0; c < 4; ++c) {
      color[c] *= Scale;
    }
    return color;
  }
};

// --- Random scenes

class TScenes {
public:
  TScenes(std::uint32_t seed, bool rows) : m_Random(seed), m_Rows(rows) {}

  /// Draws, and returns everything left.
  std::vector<std::uint8_t> Run() {
    const TScene scene(1 + Pick(Pick(3) == 0 ? 200 : 70), 1 + Pick(40));
    TRenderCPU& gl = *scene;
    m_Width = gl.m_Width;
    gl.ClearColor(0.2f, 0.3f, 0.4f, 0.5f);
    gl.ClearDepth(Real(0.3, 1.0));
    gl.ClearStencil(Pick(256));
    gl.Clear(true, true, true);
    TDataSurface buffer;
    Texture(gl);
    for (int i = 0; i < 6; ++i) {
      const THeld<TPassVertexShader> vertex(1 + Pick(8));
      const THeld<TBothWays> fragment;
      SetUpShader(fragment.Get());
      gl._SetVertexShader(vertex.Get());
      gl._SetFragmentShader(fragment.Get());
      State(gl);
      Target(gl, &buffer);
      Primitives(gl);
      RowFragments += fragment->RowFragments;
      Faults = Faults || fragment->Faults;
      gl._SetFragmentShader(nullptr);
      gl._SetVertexShader(nullptr);
    }
    std::vector<std::uint8_t> left = EverythingLeft(gl);
    if (buffer.Data != nullptr) {
      left.insert(left.end(), buffer.Data, buffer.Data + buffer.DataSize);
    }
    gl.SetDrawBuffer(nullptr);
    return left;
  }

  int RowFragments = 0;
  bool Faults = false;

private:
  int Pick(int n) { return static_cast<int>(m_Random() % static_cast<unsigned>(n)); }
  bool Coin() { return Pick(2) != 0; }
  double Real(double low, double high) { return low + (high - low) * (m_Random() / 4294967295.0); }

  void SetUpShader(TBothWays* shader) {
    shader->Rows = m_Rows;
    shader->CalcDepth = Pick(4) == 0;
    shader->Samples = Pick(4) == 0;
    shader->DiscardEvery = Pick(3) == 0 ? 1 + Pick(5) : 0;
    const double scales[] = {1, 1, 1, -3, 1e9, 1e300, std::numeric_limits<double>::infinity(), NAN};
    shader->Scale = scales[Pick(8)];
  }

  void Texture(TRenderCPU& gl) {
    unsigned int id = 0;
    std::vector<unsigned char> texels(5 * 4 * 4);
    for (std::size_t i = 0; i < texels.size(); ++i) {
      texels[i] = static_cast<unsigned char>(37 * i);
    }
    gl.ActiveTexture(GL_TEXTURE0 + 2);
    gl.GenTextures(1, &id);
    gl.BindTexture(GL_TEXTURE_2D, id);
    gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    gl.ActiveTexture(GL_TEXTURE0);
  }

  void State(TRenderCPU& gl) {
    const unsigned int ops[] = {GL_KEEP, GL_ZERO,      GL_REPLACE, GL_INCR,
                                GL_DECR, GL_INCR_WRAP, GL_INVERT,  GL_DECR_WRAP};
    gl.EnableDepthTest(Coin());
    gl.DepthFunc(static_cast<unsigned int>(GL_NEVER + Pick(8)));
    gl.DepthMask(Pick(4) != 0 ? 1 : 0);
    gl.m_StencilTest = Pick(3) == 0;
    const int reference = Pick(256);
    gl.StencilFunc(static_cast<unsigned int>(GL_NEVER + Pick(8)), reference, 0x7F);
    const unsigned int fail = ops[Pick(8)], zfail = ops[Pick(8)];
    gl.StencilOp(fail, zfail, ops[Pick(8)]);
    gl.StencilMask(Coin() ? 0xFF : 0x3C);
    gl.EnableBlend(Coin());
    gl.BlendFunc(Pick(4) != 0 ? GL_SRC_ALPHA : GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    const int mask = Coin() ? 15 : Pick(16);
    gl.ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    gl.SetPerspectiveCorrectionHint(Coin() ? GL_NICEST : GL_FASTEST);
    gl.EnablePolygonOffsetFill(Pick(4) == 0);
    gl.PolygonOffset(0.125f, 1);
    gl.FrontFace(Coin() ? GL_CCW : GL_CW);
  }

  void Target(TRenderCPU& gl, TDataSurface* buffer) {
    if (Pick(4) != 0) {
      gl.SetDrawBuffer(nullptr);
      return;
    }
    gl.SetDrawBuffer(nullptr);
    const bool four = Coin();
    ASSERT_TRUE(buffer->Create(gl.m_Width, gl.m_Height, four ? DATA_FORMAT_RGBA : DATA_FORMAT_DEPTH,
                               Coin() ? DATA_TYPE_FLOAT : DATA_TYPE_DOUBLE, four ? 4 : 1));
    gl.SetDrawBuffer(buffer);
    ASSERT_NE(nullptr, gl.m_DrawBuffer);
  }

  void Primitives(TRenderCPU& gl) {
    const unsigned int modes[] = {GL_TRIANGLES,      GL_TRIANGLES, GL_QUADS,
                                  GL_TRIANGLE_STRIP, GL_LINES,     GL_POINTS};
    gl.Begin(modes[Pick(6)]);
    for (int i = 0; i < 12; ++i) {
      gl.Color4d(Real(-0.5, 1.5), Real(0, 1), Real(0, 1), Real(0, 1));
      gl.TexCoord2d(Real(-2, 2), Real(-2, 2));
      for (int k = 3; k < 8; ++k) {
        gl.VertexAttrib(k, Real(-1, 1));
      }
      const double w = Coin() ? 1 : Real(0.2, 5);
      const double x = Real(-1.5, 1.5), y = Real(-1.5, 1.5);
      gl.Vertex4d(x * w, y * w, Real(-1, 1) * w, w);
    }
    gl.End();
  }

  std::mt19937 m_Random;
  bool m_Rows;
  int m_Width = 0;
};

class ShadedRows : public testing::Test {
protected:
  ~ShadedRows() override { LimitSpanLevel(nullptr); }
};

} // namespace

TEST_F(ShadedRows, LeaveWhatFragmentByFragmentLeaves) {
  int fragments = 0;
  for (std::uint32_t seed = 0; seed < 400; ++seed) {
    ASSERT_TRUE(LimitSpanLevel("reference"));
    TScenes one(seed, false);
    const std::vector<std::uint8_t> expected = one.Run();
    EXPECT_EQ(0, one.RowFragments);
    for (const char* const level : kSpanPaths) {
      if (!LimitSpanLevel(level)) {
        continue;
      }
      for (const bool rows : {false, true}) {
        TScenes scenes(seed, rows);
        const std::vector<std::uint8_t> got = scenes.Run();
        const auto at = std::mismatch(expected.begin(), expected.end(), got.begin(), got.end());
        ASSERT_TRUE(expected == got) << level << ", seed " << seed << ", rows " << rows << ": byte "
                                     << at.first - expected.begin() << " of " << expected.size();
        EXPECT_FALSE(scenes.Faults) << level << ", seed " << seed;
        fragments += scenes.RowFragments;
      }
    }
  }
  EXPECT_TRUE(fragments > 100000 || !LimitSpanLevel("SSSE3")) << fragments;
}

// --- When a row is given at once

namespace {

struct TCounted {
  int Fragments;
  int RowFragments;
};

/// Draws a quad over 100 by 10 pixels, the shader having been changed by `change`.
template <class TChange> TCounted CountQuad(const TChange& change, unsigned int mode = GL_QUADS) {
  const TScene scene(100, 10);
  const THeld<TPassVertexShader> vertex(3);
  const THeld<TBothWays> fragment;
  scene->_SetVertexShader(vertex.Get());
  scene->_SetFragmentShader(fragment.Get());
  change(*scene, *fragment);
  scene->Begin(mode);
  scene->Vertex2d(-1, -1);
  scene->Vertex2d(1, -1);
  scene->Vertex2d(1, 1);
  scene->Vertex2d(-1, 1);
  scene->End();
  scene->SetDrawBuffer(nullptr);
  scene->m_TexUnits[7].Sampler.SetSurface(nullptr);
  return {fragment->Fragments, fragment->RowFragments};
}

void Same(TRenderCPU&, TBothWays&) {}

} // namespace

class WhichRows : public ShadedRows {
protected:
  void SetUp() override {
    if (GetSpanKernels() == nullptr) {
      GTEST_SKIP() << "the reference walker gives fragments one by one";
    }
  }
};

TEST_F(WhichRows, OfTrianglesAreGivenAtOnce) {
  const TCounted counted = CountQuad(Same);
  EXPECT_EQ(0, counted.Fragments);
  EXPECT_EQ(1000, counted.RowFragments);
}

TEST_F(WhichRows, PointsAndLinesAreNot) {
  EXPECT_EQ(0, CountQuad(Same, GL_POINTS).RowFragments);
  EXPECT_EQ(1, CountQuad(Same, GL_POINTS).Fragments) << "three corners are off the surface";
  EXPECT_EQ(0, CountQuad(Same, GL_LINES).RowFragments);
  EXPECT_LT(0, CountQuad(Same, GL_LINES).Fragments);
}

TEST_F(WhichRows, HoldNoFragmentThatATestRejected) {
  const TCounted counted = CountQuad([](TRenderCPU& gl, TBothWays&) {
    gl.Clear(true, true, true);
    gl.EnableDepthTest(true);
    for (int x = 0; x < 100; x += 3) {
      for (int y = 0; y < 10; ++y) {
        const float near = 0;
        std::memcpy(TScene::At(*gl.m_DepthSurface, x, y), &near, sizeof near);
      }
    }
  });
  EXPECT_EQ(0, counted.Fragments);
  EXPECT_EQ(1000 - 34 * 10, counted.RowFragments);
}

// A pixel's texel could be what the pixel before it wrote.
TEST_F(WhichRows, AreNotThoseOfTargetsThatAnyUnitSamples) {
  const TCounted counted = CountQuad([](TRenderCPU& gl, TBothWays&) {
    gl.m_TexUnits[7].Sampler.SetSurface(gl.GetColorSurface());
  });
  EXPECT_EQ(1000, counted.Fragments);
  EXPECT_EQ(0, counted.RowFragments);
}

TEST_F(WhichRows, AreNotThoseOfTargetsInOneMemory) {
  TDataSurface depth;
  const TCounted counted = CountQuad([&depth](TRenderCPU& gl, TBothWays&) {
    static_cast<DATASURFACE&>(depth) = *gl.m_ColorSurface; // floats over the bytes of colours
    gl.SetDrawBuffer(nullptr);
    gl.m_DepthSurface->Swap(depth);
  });
  EXPECT_EQ(0, counted.RowFragments);
  EXPECT_EQ(1000, counted.Fragments);
}

// --- The interface

TEST_F(ShadedRows, AreAskedForByTheInterfaceOfTheShader) {
  const THeld<TBothWays> shader;
  void* found = nullptr;
  ASSERT_TRUE(shader->QueryInterface(TRowFragmentShaderCPU::s_Interface, &found));
  EXPECT_EQ(static_cast<TRowFragmentShaderCPU*>(shader.Get()), found);
  EXPECT_EQ(2u, shader->GetRefCount()) << "with one reference added";
  shader->Release();
  EXPECT_FALSE(shader->QueryInterface(TRowFragmentShaderCPU::s_Interface, nullptr));
  boost::uuids::uuid other = TRowFragmentShaderCPU::s_Interface;
  other.data[15] ^= 1;
  EXPECT_FALSE(shader->QueryInterface(other, &found));
  EXPECT_EQ(nullptr, found);
  EXPECT_EQ(1u, shader->GetRefCount());
  {
    const TScene scene;
    scene->_SetFragmentShader(shader.Get());
    EXPECT_EQ(2u, shader->GetRefCount()) << "installing leaves the context's one";
    scene->_SetFragmentShader(nullptr);
  }
  EXPECT_EQ(1u, shader->GetRefCount());
}

// --- Fragment by fragment

namespace {

/// Keeps all that it sees, and changes state and targets in the middle of rows.
class TMeddling : public TFragmentShaderCPU {
public:
  std::vector<TSeenFragment> Seen;
  int Kind = 0;

  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    TRenderCPU& gl = *m_Render;
    Seen.push_back({f->X, f->Y, f->FrontFacing, f->Depth, *v});
    (*v)[7].x += 1; // not live: stays for the next
    f->Color = {f->Color.x * 0.5 + (*v)[1].x, (*v)[1].y, 0.5, 0.75};
    if (f->X % 7 == 3) {
      Meddle(gl, f->X / 7 % 2 != 0);
    }
    return f->X % 11 != 5;
  }

private:
  void Meddle(TRenderCPU& gl, bool on) const {
    switch (Kind) {
    case 0:
      gl.SetPerspectiveCorrectionHint(on ? GL_FASTEST : GL_NICEST);
      break;
    case 1:
      gl.DepthMask(on ? 1 : 0);
      break;
    case 2:
      gl.EnableDepthTest(on);
      gl.DepthFunc(GL_GREATER);
      break;
    case 3:
      gl.m_StencilTest = on;
      gl.StencilFunc(GL_EQUAL, 1, 255);
      break;
    case 4:
      gl.ColorMask(on, 1, 0, 1);
      break;
    case 5:
      gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      gl.EnableBlend(on);
      break;
    case 6:
      gl.EnablePolygonOffsetFill(on);
      break;
    case 7:
      gl.m_VarCount = on ? 2 : 4;
      break;
    case 8:
      gl.m_CalcDepth = on;
      break;
    default:
      break;
    }
  }
};

} // namespace

TEST_F(ShadedRows, FragmentsSeeAndChangeWhatTheReferenceWalkerLetsThem) {
  for (int kind = 0; kind < 10; ++kind) {
    std::vector<TSeenFragment> expected;
    std::vector<std::uint8_t> left;
    for (const char* const level : kSpanPaths) {
      if (!LimitSpanLevel(level)) {
        continue;
      }
      SCOPED_TRACE(std::string(level) + ", kind " + std::to_string(kind));
      TScene scene(150, 9);
      const THeld<TPassVertexShader> vertex(4);
      const THeld<TMeddling> fragment;
      fragment->Kind = kind;
      scene->_SetVertexShader(vertex.Get());
      scene->_SetFragmentShader(fragment.Get());
      scene->Clear(true, true, true);
      scene->PolygonOffset(0.25f, 0);
      for (int x = 0; x < scene->m_Width; ++x) { // tests that fail here and there
        for (int y = 0; y < scene->m_Height; ++y) {
          scene.SetDepth(x, y, x % 2 == 0 ? 0.0f : 1.0f);
          scene.SetStencil(x, y, x % 3 == 0 ? 0 : 1);
        }
      }
      if (kind == 3) {
        scene->m_StencilTest = true;
        scene->StencilOp(GL_INCR, GL_KEEP, GL_INVERT);
      }
      scene->Begin(GL_TRIANGLES);
      scene->Color4d(0.1, 0.9, 0.3, 0.5), scene->Vertex4d(-1, -1, -0.5, 1);
      scene->Color4d(0.8, 0.2, 0.4, 0.7), scene->Vertex4d(3, -3, 0.5, 3);
      scene->Color4d(0.4, 0.3, 0.9, 0.2), scene->Vertex4d(-0.4, 1.9, 0.2, 2);
      scene->End();
      const auto& seen = fragment->Seen;
      if (expected.empty()) {
        expected = seen;
        left = EverythingLeft(*scene);
        EXPECT_LT(300u, seen.size());
        continue;
      }
      EXPECT_TRUE(left == EverythingLeft(*scene));
      ASSERT_EQ(expected.size(), seen.size());
      for (std::size_t i = 0; i < seen.size(); ++i) {
        ASSERT_EQ(expected[i].X, seen[i].X) << i;
        ASSERT_EQ(expected[i].Y, seen[i].Y) << i;
        ASSERT_EQ(Bits(expected[i].Depth), Bits(seen[i].Depth)) << i;
        ASSERT_EQ(0, std::memcmp(&expected[i].Slots, &seen[i].Slots, sizeof seen[i].Slots)) << i;
      }
    }
  }
}

// Within a row, pixels of the colour surface are four bytes apart whatever its stride is; only
// where the row begins goes by the stride.
TEST_F(ShadedRows, StepByFourBytesInASurfaceOfAnotherStride) {
  std::vector<std::uint8_t> expected;
  for (const char* const level : kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    for (const bool rows : {false, true}) {
      SCOPED_TRACE(std::string(level) + (rows ? ", rows" : ""));
      TScene scene(20, 6);
      TDataSurface wide;
      ASSERT_TRUE(wide.Create(40, 6, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
      std::fill_n(wide.Data, wide.DataSize, std::uint8_t{9});
      wide.Width = 20;
      wide.PixelStride = 8;
      scene->BindColorSurface(&wide);
      const THeld<TPassVertexShader> vertex(3);
      const THeld<TBothWays> fragment;
      fragment->Rows = rows;
      scene->_SetVertexShader(vertex.Get());
      scene->_SetFragmentShader(fragment.Get());
      scene->Begin(GL_TRIANGLES);
      scene->Vertex2d(Clip(3.5, 20), Clip(0.5, 6)); // rows 1 to 4, each from another column on
      scene->Vertex2d(Clip(15.5, 20), Clip(0.5, 6));
      scene->Vertex2d(Clip(8.5, 20), Clip(4.5, 6));
      scene->End();
      const std::vector<std::uint8_t> left(wide.Data, wide.Data + wide.DataSize);
      if (expected.empty()) {
        expected = left;
      }
      EXPECT_TRUE(expected == left);
      // Row 1 is covered from column 5 to 14: from byte 8 * 4 on, four bytes each, the first of
      // which lies before what is covered.
      const std::uint8_t* const row = wide.Data + wide.RowStride;
      EXPECT_EQ(9, row[8 * 4 + 3]);
      EXPECT_NE(9, row[8 * 4 + 4]);
      scene->BindColorSurface(nullptr);
    }
  }
}

// --- Which pixels of a row are covered

namespace {

/// Colours that tell how often each pixel of a row was shaded.
class TTally : public TFragmentShaderCPU {
public:
  std::vector<int> Columns;

  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(VAR_DATA*, FS_DATA* f) override {
    Columns.push_back(f->X);
    return false;
  }
};

} // namespace

// A span may come from anywhere: with ends that only quotients tell apart, and with a difference
// that is not that of its ends.
TEST_F(ShadedRows, AreCoveredWhereTheParameterIsFromZeroToBelowOne) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kDenormal = std::numeric_limits<double>::denorm_min();
  const double begins[] = {0.0,
                           -0.0,
                           kDenormal,
                           -kDenormal,
                           1e-300,
                           -1e-300,
                           1e-101,
                           1e-99,
                           0.25,
                           0.5,
                           0.75,
                           1.0,
                           1.5,
                           3.0,
                           -0.25,
                           -0.5,
                           -1.0,
                           -7.5,
                           -1e9,
                           -1e17,
                           -1e300,
                           -kInfinity,
                           61.5,
                           std::nextafter(2.0, 0.0),
                           std::nextafter(2.0, 3.0),
                           std::nextafter(0.5, 0.0)};
  const double lengths[] = {kDenormal, 1e-310, 1e-30, 0.5,  1.0,   1.5,   2.0,      7.25,
                            40.0,      63.0,   1e6,   1e12, 1e200, 1e308, kInfinity};
  int rows = 0;
  for (const double begin : begins) {
    for (const double length : lengths) {
      for (const double factor : {1.0, 0.125, 3.0}) { // of the difference that the span says
        std::vector<int> expected;
        VAR_DATA ends[2] = {};
        ends[0][0] = {begin, 0, 0.5, 1};
        ends[1][0] = {begin + length, 0, 0.5, 1};
        TRenderCPU::EDGE span = {};
        span.Begin = &ends[0];
        span.End = &ends[1];
        span.Delta[0] = {(ends[1][0].x - begin) * factor, 0, 0, 0};
        for (int x = 0; x < 64; ++x) { // from the truncations of begin + 0.5 and of the end
          const double t = (x - begin) / span.Delta[0].x;
          if (x >= std::trunc(begin + 0.5) && x <= std::trunc(ends[1][0].x) && t >= 0.0 &&
              t < 1.0) {
            expected.push_back(x);
          }
        }
        rows += expected.empty() ? 0 : 1;
        for (const char* const level : kSpanPaths) {
          if (!LimitSpanLevel(level)) {
            continue;
          }
          TScene scene(64, 2);
          const THeld<TTally> fragment;
          scene->_SetFragmentShader(fragment.Get());
          scene->Begin(GL_TRIANGLES);
          FS_DATA record = {};
          scene->DrawSpan(&span, 1, &record);
          EXPECT_EQ(expected, fragment->Columns)
              << level << ", from " << begin << " to " << ends[1][0].x << ", factor " << factor;
          scene->End();
        }
      }
    }
  }
  EXPECT_LT(400, rows);
}
