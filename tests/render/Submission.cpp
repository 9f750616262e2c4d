#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/ProgramCPU.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

template <class TVec> void ExpectVec(double x, double y, double z, double w, const TVec& v) {
  EXPECT_SAME_BITS(x, v.x);
  EXPECT_SAME_BITS(y, v.y);
  EXPECT_SAME_BITS(z, v.z);
  EXPECT_SAME_BITS(w, v.w);
}

/// A context under a custom pair that keeps what it is called for.
class CustomPair : public testing::Test {
protected:
  CustomPair() : m_Scene(16, 16) {
    m_Scene->_SetVertexShader(m_Vertex.Get());
    m_Scene->_SetFragmentShader(m_Fragment.Get());
  }

  /// Submits the centre of a pixel.
  void At(double x, double y) { m_Scene->Vertex2d(Clip(x, 16), Clip(y, 16)); }

  THeld<TPassVertexShader> m_Vertex;
  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

// --- Current values

const float s_F[4] = {0.1f, 0.2f, 0.3f, 0.4f};
const double s_D[4] = {0.1, 0.2, 0.3, 0.4};

TEST(CurrentColor, OfThreeHasAlphaOne) {
  TRenderCPU r;
  r._Color3f(s_F[0], s_F[1], s_F[2]);
  ExpectVec(0.1f, 0.2f, 0.3f, 1.0, r.m_CurColor);
  r._Color3d(s_D[0], s_D[1], s_D[2]);
  ExpectVec(0.1, 0.2, 0.3, 1.0, r.m_CurColor);
  r._Color4d(0, 0, 0, 0);
  r._Color3fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.3f, 1.0, r.m_CurColor);
  r._Color4d(0, 0, 0, 0);
  r._Color3dv(s_D);
  ExpectVec(0.1, 0.2, 0.3, 1.0, r.m_CurColor);
}

TEST(CurrentColor, OfFour) {
  TRenderCPU r;
  r._Color4f(s_F[0], s_F[1], s_F[2], s_F[3]);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurColor);
  r._Color4d(s_D[0], s_D[1], s_D[2], s_D[3]);
  ExpectVec(0.1, 0.2, 0.3, 0.4, r.m_CurColor);
  r._Color4fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurColor);
  r._Color4dv(s_D);
  ExpectVec(0.1, 0.2, 0.3, 0.4, r.m_CurColor);
}

TEST(CurrentColor, IsNotClamped) {
  TRenderCPU r;
  r._Color4d(-3.0, 7.5, 1e300, -0.0);
  ExpectVec(-3.0, 7.5, 1e300, -0.0, r.m_CurColor);
  r._Color3f(-3.0f, 7.5f, 2.0f);
  ExpectVec(-3.0, 7.5, 2.0, 1.0, r.m_CurColor);
}

TEST(CurrentColor, OfBytesIsMultipliedInSinglePrecision) {
  TRenderCPU r;
  const float nearest = 0.003921569f; // 1/255
  for (int i = 0; i < 256; ++i) {
    const auto b = static_cast<unsigned char>(i);
    const float expected = static_cast<float>(i) * nearest;
    const double value = expected;
    const double zero = 0.0f * nearest;
    const double one = 255.0f * nearest;
    ASSERT_EQ(1.0, one);

    r._Color3ub(b, 0, 255);
    ExpectVec(value, zero, 1.0, 1.0, r.m_CurColor);
    r._Color4ub(0, b, b, b);
    ExpectVec(zero, value, value, value, r.m_CurColor);
    const unsigned char bytes[4] = {255, b, 0, b};
    r._Color3ubv(bytes);
    ExpectVec(1.0, value, zero, 1.0, r.m_CurColor);
    r._Color4ubv(bytes);
    ExpectVec(1.0, value, zero, value, r.m_CurColor);
  }
}

TEST(CurrentColor, OfARecordOfFloats) {
  TRenderCPU r;
  r.Color(COLORRGBA_F{0.1f, 0.2f, 0.3f, 0.4f});
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurColor);
  r.Color(vec_t_<double, 3>{0.5, 0.6, 0.7});
  ExpectVec(0.5, 0.6, 0.7, 1.0, r.m_CurColor);
}

TEST(CurrentColor, IsForwardedFromTheShortNames) {
  TRenderCPU r;
  r.Color3ub(255, 0, 255);
  ExpectVec(1, 0, 1, 1, r.m_CurColor);
  r.Color4f(0.5f, 0.25f, 0.125f, 0.0f);
  ExpectVec(0.5, 0.25, 0.125, 0, r.m_CurColor);
  r.Color4dv(s_D);
  ExpectVec(0.1, 0.2, 0.3, 0.4, r.m_CurColor);
  r.Color4fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurColor);
}

TEST(CurrentNormal, KeepsItsFourthComponent) {
  TRenderCPU r;
  r.Normal3d(0.1, 0.2, 0.3);
  ExpectVec(0.1, 0.2, 0.3, 0.0, r.m_CurNormal);
  r.m_CurNormal.w = 9.0;
  r.Normal3f(s_F[0], s_F[1], s_F[2]);
  ExpectVec(0.1f, 0.2f, 0.3f, 9.0, r.m_CurNormal);
  r.Normal3dv(s_D);
  ExpectVec(0.1, 0.2, 0.3, 9.0, r.m_CurNormal);
  r.Normal3fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.3f, 9.0, r.m_CurNormal);
}

TEST(CurrentTexCoord, FillsUpWithZeroAndOne) {
  TRenderCPU r;
  const auto wipe = [&] { r.m_CurTexCoord = {9, 9, 9, 9}; };
  r.TexCoord2f(s_F[0], s_F[1]);
  ExpectVec(0.1f, 0.2f, 0.0, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord2fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.0, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord2d(s_D[0], s_D[1]);
  ExpectVec(0.1, 0.2, 0.0, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord2dv(s_D);
  ExpectVec(0.1, 0.2, 0.0, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord3f(s_F[0], s_F[1], s_F[2]);
  ExpectVec(0.1f, 0.2f, 0.3f, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord3fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.3f, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord3d(s_D[0], s_D[1], s_D[2]);
  ExpectVec(0.1, 0.2, 0.3, 1.0, r.m_CurTexCoord);
  wipe();
  r.TexCoord3dv(s_D);
  ExpectVec(0.1, 0.2, 0.3, 1.0, r.m_CurTexCoord);
  r.TexCoord4f(s_F[0], s_F[1], s_F[2], s_F[3]);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurTexCoord);
  r.TexCoord4d(s_D[0], s_D[1], s_D[2], s_D[3]);
  ExpectVec(0.1, 0.2, 0.3, 0.4, r.m_CurTexCoord);
  r.TexCoord4fv(s_F);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurTexCoord);
  r.TexCoord4dv(s_D);
  ExpectVec(0.1, 0.2, 0.3, 0.4, r.m_CurTexCoord);
}

TEST(CurrentTexCoord, IsOneWhateverTheUnit) {
  TRenderCPU r;
  for (const unsigned int unit : {0x84C0u, 0x84C1u, 0x84C7u, 0u, 0xFFFFFFFFu}) {
    r.m_CurTexCoord = {9, 9, 9, 9};
    r.MultiTexCoord2f(unit, s_F[0], s_F[1]);
    ExpectVec(0.1f, 0.2f, 0.0, 1.0, r.m_CurTexCoord);
    r.m_CurTexCoord = {9, 9, 9, 9};
    r.MultiTexCoord2fv(unit, s_F);
    ExpectVec(0.1f, 0.2f, 0.0, 1.0, r.m_CurTexCoord);
    r.MultiTexCoord2d(unit, s_D[0], s_D[1]);
    ExpectVec(0.1, 0.2, 0.0, 1.0, r.m_CurTexCoord);
    r.m_CurTexCoord = {9, 9, 9, 9};
    r.MultiTexCoord2dv(unit, s_D);
    ExpectVec(0.1, 0.2, 0.0, 1.0, r.m_CurTexCoord);
    r.MultiTexCoord3f(unit, s_F[0], s_F[1], s_F[2]);
    ExpectVec(0.1f, 0.2f, 0.3f, 1.0, r.m_CurTexCoord);
    r.MultiTexCoord3d(unit, s_D[0], s_D[1], s_D[2]);
    ExpectVec(0.1, 0.2, 0.3, 1.0, r.m_CurTexCoord);
    r.MultiTexCoord3fv(unit, s_F);
    ExpectVec(0.1f, 0.2f, 0.3f, 1.0, r.m_CurTexCoord);
    r.m_CurTexCoord = {9, 9, 9, 9};
    r.MultiTexCoord3dv(unit, s_D);
    ExpectVec(0.1, 0.2, 0.3, 1.0, r.m_CurTexCoord);
  }
  EXPECT_EQ(0u, r.GetError());
}

// --- Vertices

struct TVertexForm {
  std::function<void(TRenderCPU&)> Call;
  double x, y, z, w;
};

std::vector<TVertexForm> VertexForms() {
  static const int ints[3] = {1, -2, 3};
  const double xf = 0.1f;
  const double yf = 0.2f;
  const double zf = 0.3f;
  const double wf = 0.4f;
  return {
      {[](TRenderCPU& r) { r.Vertex2i(1, -2); }, 1, -2, 0, 1},
      {[](TRenderCPU& r) { r.Vertex2iv(ints); }, 1, -2, 0, 1},
      {[](TRenderCPU& r) { r.Vertex2f(s_F[0], s_F[1]); }, xf, yf, 0, 1},
      {[](TRenderCPU& r) { r.Vertex2fv(s_F); }, xf, yf, 0, 1},
      {[](TRenderCPU& r) { r.Vertex2d(0.1, 0.2); }, 0.1, 0.2, 0, 1},
      {[](TRenderCPU& r) { r.Vertex2dv(s_D); }, 0.1, 0.2, 0, 1},
      {[](TRenderCPU& r) { r.Vertex3i(1, -2, 3); }, 1, -2, 3, 1},
      {[](TRenderCPU& r) { r.Vertex3iv(ints); }, 1, -2, 3, 1},
      {[](TRenderCPU& r) { r.Vertex3f(s_F[0], s_F[1], s_F[2]); }, xf, yf, zf, 1},
      {[](TRenderCPU& r) { r.Vertex3fv(s_F); }, xf, yf, zf, 1},
      {[](TRenderCPU& r) { r.Vertex3d(0.1, 0.2, 0.3); }, 0.1, 0.2, 0.3, 1},
      {[](TRenderCPU& r) { r.Vertex3dv(s_D); }, 0.1, 0.2, 0.3, 1},
      {[](TRenderCPU& r) { r.Vertex4f(s_F[0], s_F[1], s_F[2], s_F[3]); }, xf, yf, zf, wf},
      {[](TRenderCPU& r) { r.Vertex4fv(s_F); }, xf, yf, zf, wf},
      {[](TRenderCPU& r) { r.Vertex4d(0.1, 0.2, 0.3, 0.4); }, 0.1, 0.2, 0.3, 0.4},
      {[](TRenderCPU& r) { r.Vertex4dv(s_D); }, 0.1, 0.2, 0.3, 0.4},
  };
}

TEST(Vertex, OutsideBeginAndEndOnlySetsTheCurrentOne) {
  TRenderCPU r; // not even created
  for (const TVertexForm& form : VertexForms()) {
    r.m_CurVertex = {9, 9, 9, 9};
    form.Call(r);
    ExpectVec(form.x, form.y, form.z, form.w, r.m_CurVertex);
    EXPECT_EQ(-1, r.m_VertexIndex);
  }
}

TEST_F(CustomPair, ShadesEachVertexAsItComes) {
  int count = 0;
  m_Scene->Begin(GL_TRIANGLES);
  for (const TVertexForm& form : VertexForms()) {
    form.Call(*m_Scene);
    ++count;
    EXPECT_EQ(count, m_Vertex->Executes);
    EXPECT_EQ(count - 1, m_Scene->m_VertexIndex);
    EXPECT_EQ(count % 3, m_Scene->m_Pending);
    ExpectVec(form.x, form.y, form.z, form.w, m_Scene->m_CurVertex);
  }
  m_Scene->End();
  m_Scene->Vertex2d(0, 0);
  EXPECT_EQ(count, m_Vertex->Executes);
}

TEST_F(CustomPair, GetsTheCurrentValuesOfItsVertex) {
  m_Scene->Begin(GL_LINES);
  m_Scene->Color4d(0.25, 0.5, 0.75, 1.0);
  At(3, 4);
  ExpectVec(Clip(3, 16), Clip(4, 16), 0, 1, m_Scene->m_VarCur[0][0]);
  ExpectVec(0.25, 0.5, 0.75, 1.0, m_Scene->m_VarCur[0][1]);
  m_Scene->End();
}

// --- Generic attributes

TEST(VertexAttrib, FillsUpWithZeroAndOne) {
  TRenderCPU r;
  for (int i = 1; i < 8; ++i) {
    const auto& a = r.m_CurAttrib[i];
    r.m_CurAttrib[i] = {9, 9, 9, 9};
    r.VertexAttrib(i, 0.1f);
    ExpectVec(0.1f, 0, 0, 1, a);
    r.m_CurAttrib[i] = {9, 9, 9, 9};
    r.VertexAttrib(i, 0.1);
    ExpectVec(0.1, 0, 0, 1, a);
    r.m_CurAttrib[i] = {9, 9, 9, 9};
    r.VertexAttrib(i, vec_t_<float, 2>{0.1f, 0.2f});
    ExpectVec(0.1f, 0.2f, 0, 1, a);
    r.m_CurAttrib[i] = {9, 9, 9, 9};
    r.VertexAttrib(i, vec_t_<double, 2>{0.1, 0.2});
    ExpectVec(0.1, 0.2, 0, 1, a);
    r.m_CurAttrib[i] = {9, 9, 9, 9};
    r.VertexAttrib(i, vec_t_<float, 3>{0.1f, 0.2f, 0.3f});
    ExpectVec(0.1f, 0.2f, 0.3f, 1, a);
    r.m_CurAttrib[i] = {9, 9, 9, 9};
    r.VertexAttrib(i, vec_t_<double, 3>{0.1, 0.2, 0.3});
    ExpectVec(0.1, 0.2, 0.3, 1, a);
    r.VertexAttrib(i, vec_t_<float, 4>{0.1f, 0.2f, 0.3f, 0.4f});
    ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, a);
    r.VertexAttrib(i, vec_t_<double, 4>{0.1, 0.2, 0.3, 0.4});
    ExpectVec(0.1, 0.2, 0.3, 0.4, a);
  }
  ExpectVec(0, 0, 0, 0, r.m_CurAttrib[0]);
  ExpectVec(0, 0, 0, 0, r.m_CurVertex);
}

TEST(VertexAttrib, OutsideTheArrayStoresNothing) {
  TScene s;
  for (const int index : {-1, 8, 9, 1 << 30, -2147483647 - 1}) {
    s->VertexAttrib(index, vec_t_<double, 4>{5, 5, 5, 5});
    s->VertexAttrib(index, 5.0f);
  }
  for (const auto& attrib : s->m_CurAttrib) {
    ExpectVec(0, 0, 0, 0, attrib);
  }
  ExpectVec(0, 0, 0, 0, s->m_CurVertex);
}

/// Notes the vertices that come through the virtual operation.
class TVertexSpy : public TRenderCPU {
public:
  void Vertex4dv(const double* v) override {
    Seen.push_back({v[0], v[1], v[2], v[3]});
    TRenderCPU::Vertex4dv(v);
  }
  std::vector<vec_t_<double, 4>> Seen;
};

TEST(VertexAttrib, ZeroSubmitsAVertexThroughTheVirtualOperation) {
  TVertexSpy r;
  r.VertexAttrib(0, 0.5f);
  r.VertexAttrib(0, vec_t_<double, 2>{0.1, 0.2});
  r.VertexAttrib(1, vec_t_<double, 4>{0.1, 0.2, 0.3, 0.4});
  r.VertexAttrib(0, vec_t_<float, 4>{0.1f, 0.2f, 0.3f, 0.4f});
  ASSERT_EQ(3u, r.Seen.size());
  ExpectVec(0.5, 0, 0, 1, r.Seen[0]);
  ExpectVec(0.1, 0.2, 0, 1, r.Seen[1]);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.Seen[2]);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurVertex);
  ExpectVec(0.1f, 0.2f, 0.3f, 0.4f, r.m_CurAttrib[0]);
}

TEST_F(CustomPair, VertexAttribZeroSubmitsAndOneDoesNot) {
  m_Scene->Begin(GL_POINTS);
  m_Scene->VertexAttrib(1, vec_t_<double, 2>{0, 0});
  EXPECT_EQ(0, m_Vertex->Executes);
  m_Scene->VertexAttrib(0, vec_t_<double, 2>{Clip(5, 16), Clip(6, 16)});
  EXPECT_EQ(1, m_Vertex->Executes);
  m_Scene->End();
  EXPECT_EQ((TPixel{255, 255, 255, 255}), m_Scene.Color(5, 6));
  EXPECT_EQ(1, m_Scene.Painted());
}

// --- Begin and End

TEST_F(CustomPair, BeginResetsTheAssembly) {
  m_Scene->m_StripIndex = 5;
  m_Scene->m_VertexIndex = 7;
  m_Scene->m_Pending = 2;
  m_Scene->m_LastPixelX = 3;
  m_Scene->m_LastPixelY = 4;
  m_Scene->Begin(GL_TRIANGLE_STRIP);
  EXPECT_EQ(5u, m_Scene->m_PrimitiveMode);
  EXPECT_EQ(-1, m_Scene->m_StripIndex);
  EXPECT_EQ(-1, m_Scene->m_VertexIndex);
  EXPECT_EQ(0, m_Scene->m_Pending);
  EXPECT_EQ(-1, m_Scene->m_LastPixelX);
  EXPECT_EQ(-1, m_Scene->m_LastPixelY);
  EXPECT_TRUE(m_Scene->m_InBeginEnd);
  m_Scene->End();
  EXPECT_EQ(0xFFFFFFFFu, m_Scene->m_PrimitiveMode);
  EXPECT_FALSE(m_Scene->m_InBeginEnd);
  EXPECT_EQ(0, m_Scene->m_Pending);
}

TEST_F(CustomPair, BeginChoosesTheRoutineOfTheMode) {
  const TRenderCPU::TVertexHandler routines[] = {
      &TRenderCPU::PointsVertex,      &TRenderCPU::LinesVertex,
      &TRenderCPU::LineLoopVertex,    &TRenderCPU::LineStripVertex,
      &TRenderCPU::TrianglesVertex,   &TRenderCPU::TriangleStripVertex,
      &TRenderCPU::TriangleFunVertex, &TRenderCPU::QuadsVertex,
  };
  for (unsigned int mode = 0; mode < 8; ++mode) {
    m_Scene->Begin(mode);
    EXPECT_TRUE(routines[mode] == m_Scene->m_VertexHandler) << mode;
    m_Scene->End();
    EXPECT_TRUE(&TRenderCPU::UnknownVertex == m_Scene->m_VertexHandler);
    EXPECT_EQ(0u, m_Scene->GetError());
  }
}

TEST_F(CustomPair, RejectedModesReportAndStayBalanced) {
  int pairs = 0;
  for (const unsigned int mode : {8u, 9u, 10u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    m_Scene->Begin(mode);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, m_Scene->GetError()) << mode;
    EXPECT_TRUE(m_Scene->m_InBeginEnd);
    EXPECT_EQ(mode, m_Scene->m_PrimitiveMode);
    EXPECT_TRUE(&TRenderCPU::UnknownVertex == m_Scene->m_VertexHandler);
    ++pairs;
    EXPECT_EQ(pairs, m_Vertex->Begins);
    EXPECT_EQ(pairs, m_Fragment->Begins);
    for (int i = 0; i < 5; ++i) {
      At(i * 3, i % 2 * 10);
    }
    ExpectVec(Clip(12, 16), Clip(0, 16), 0, 1, m_Scene->m_CurVertex);
    EXPECT_EQ(0, m_Vertex->Executes);
    m_Scene->End();
    EXPECT_EQ(0u, m_Scene->GetError());
    EXPECT_FALSE(m_Scene->m_InBeginEnd);
    EXPECT_EQ(pairs, m_Vertex->Ends);
    EXPECT_EQ(pairs, m_Fragment->Ends);
  }
  EXPECT_EQ(0, m_Scene.Painted());
}

/// Writes its calls into one list, so that their order shows.
struct TLogVertex : TPassVertexShader {
  explicit TLogVertex(std::vector<std::string>* log) : Log(log) {}
  void Begin() override {
    Log->push_back("vertex begin, last " + std::to_string(m_Render->m_LastPixelX) +
                   (m_Render->m_InBeginEnd ? ", in" : ", out"));
    TPassVertexShader::Begin();
  }
  void End() override {
    Log->push_back(std::string("vertex end") + (m_Render->m_InBeginEnd ? ", in" : ", out"));
  }
  std::vector<std::string>* Log;
};

struct TLogFragment : TSeeingFragmentShader {
  explicit TLogFragment(std::vector<std::string>* log) : Log(log) {}
  void Begin() override { Log->push_back("fragment begin"); }
  void End() override { Log->push_back("fragment end"); }
  std::vector<std::string>* Log;
};

TEST(BeginEnd, CallTheVertexShaderFirst) {
  std::vector<std::string> log;
  THeld<TLogVertex> vertex(&log);
  THeld<TLogFragment> fragment(&log);
  TScene s;
  s->_SetVertexShader(vertex.Get());
  s->_SetFragmentShader(fragment.Get());
  s->m_LastPixelX = 6;
  s->Begin(GL_POINTS);
  s->End();
  const std::vector<std::string> expected = {"vertex begin, last 6, out", "fragment begin",
                                             "vertex end, out", "fragment end"};
  EXPECT_EQ(expected, log);
}

TEST(BeginEnd, ListTheEnabledLightsAscending) {
  TScene s;
  for (const unsigned long light : {6ul, 1ul, 4ul}) {
    s->EnableLight(light, true);
  }
  s->Begin(GL_POINTS);
  s->End();
  EXPECT_EQ(3, s->m_EnabledLightCount);
  EXPECT_EQ(1, s->m_EnabledLights[0]);
  EXPECT_EQ(4, s->m_EnabledLights[1]);
  EXPECT_EQ(6, s->m_EnabledLights[2]);
}

TEST_F(CustomPair, EndWithoutBeginOnlyEndsTheShaders) {
  m_Scene->End();
  EXPECT_EQ(1, m_Vertex->Ends);
  EXPECT_EQ(1, m_Fragment->Ends);
  EXPECT_FALSE(m_Scene->m_InBeginEnd);
  EXPECT_EQ(0u, m_Scene->GetError());
  EXPECT_EQ(0, m_Scene.Painted());
}

TEST_F(CustomPair, BeginInsideBeginStartsAnew) {
  m_Scene->Begin(GL_TRIANGLES);
  At(0, 0);
  At(15, 0);
  m_Scene->Begin(GL_LINES);
  EXPECT_EQ(2, m_Vertex->Begins);
  EXPECT_EQ(0, m_Vertex->Ends);
  EXPECT_EQ(0, m_Scene->m_Pending);
  At(2, 5);
  EXPECT_EQ(0, m_Scene.Painted());
  At(4, 5);
  m_Scene->End();
  EXPECT_EQ(2, m_Scene.Painted());
  EXPECT_EQ(0u, m_Scene->GetError());
}

TEST_F(CustomPair, ASlotCountOutOfRangeDrawsNothing) {
  for (const int count : {0, 9, -1, 1000, -2147483647 - 1}) {
    m_Vertex->Slots = 2;
    m_Scene->_SetVertexShader(m_Vertex.Get());
    struct TBad : TPassVertexShader {
      explicit TBad(int count) : Count(count) {}
      void Begin() override { m_Render->m_VarCount = Count; }
      int Count;
    };
    THeld<TBad> bad(count);
    m_Scene->_SetVertexShader(bad.Get());
    for (unsigned int mode = 0; mode < 8; ++mode) {
      m_Scene->Begin(mode);
      for (int i = 0; i < 8; ++i) {
        At(i % 3 * 5, i % 2 * 9);
      }
      m_Scene->End();
    }
    EXPECT_EQ(0, bad->Executes);
    m_Scene->_SetVertexShader(m_Vertex.Get());
  }
  EXPECT_EQ(0, m_Scene.Painted());
  EXPECT_EQ(0u, m_Scene->GetError());
}

// --- Records

TEST(VarData, IsCopiedByItsLiveSlots) {
  TRenderCPU r;
  for (int live = 1; live <= 8; ++live) {
    r.m_VarCount = live;
    TRenderCPU::VAR_DATA from;
    TRenderCPU::VAR_DATA to;
    TRenderCPU::VAR_DATA set;
    for (std::size_t i = 0; i < 8; ++i) {
      const double v = static_cast<double>(i);
      from[i] = {v, v + 0.25, v + 0.5, v + 0.75};
      to[i] = {-1, -2, -3, -4};
      set[i] = {-1, -2, -3, -4};
    }
    r.CopyVar(to, from);
    r.Set(set, from);
    for (std::size_t i = 0; i < 8; ++i) {
      const double v = static_cast<double>(i);
      if (static_cast<int>(i) < live) {
        ExpectVec(v, v + 0.25, v + 0.5, v + 0.75, to[i]);
        ExpectVec(v, v + 0.25, v + 0.5, v + 0.75, set[i]);
      } else {
        ExpectVec(-1, -2, -3, -4, to[i]);
        ExpectVec(-1, -2, -3, -4, set[i]);
      }
    }
  }
}

// --- Shaders of another context

TEST(StandardShaders, ReadTheContextInWhichTheyWereInstalledLast) {
  TScene drawn(16, 16);
  TScene other(16, 16);
  drawn->m_StdVertexShader->m_Render = other.operator->();
  drawn->m_StdFragmentShader->m_Render = other.operator->();
  other->m_CurVertex = {Clip(5, 16), Clip(6, 16), 0, 1};
  other->m_CurColor = {1, 0.5, 0, 1};
  drawn->m_VarColor = 2;
  drawn->m_VarCount = 4; // no shader of this context fills its table
  drawn->Begin(GL_POINTS);
  drawn->_Color4d(0, 0, 1, 1);
  other->m_VarColor = 3; // in the table that the shaders read, which `Begin` has filled
  drawn->Vertex2d(Clip(1, 16), Clip(1, 16));
  EXPECT_EQ(1.0, drawn->m_VarCur[0][3].x);
  EXPECT_EQ(0.5, drawn->m_VarCur[0][3].y);
  EXPECT_EQ(5, drawn->m_Fragment.X);
  EXPECT_EQ(6, drawn->m_Fragment.Y);
  EXPECT_EQ(0.5, drawn->m_Fragment.Color.y);
  drawn->End();
  drawn->m_StdVertexShader->m_Render = drawn.operator->();
  drawn->m_StdFragmentShader->m_Render = drawn.operator->();
}

} // namespace
