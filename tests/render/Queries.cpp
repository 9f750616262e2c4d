#include <algorithm>
#include <functional>
#include <map>
#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using TInts = std::vector<int>;

/// A context whose every value that can be asked for differs from its default.
void Change(TRenderCPU& r) {
  r.PolygonMode(GL_FRONT, 0x1B00);
  r.PolygonMode(GL_BACK, 0x1B01);
  r.Enable(GL_CULL_FACE);
  r.CullFace(GL_FRONT);
  r.FrontFace(GL_CW);
  r.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  r.ColorMaterial(1029, 4609);
  r.Enable(GL_COLOR_MATERIAL);
  r.Fog(2917u, 9729);
  r.Enable(GL_DEPTH_TEST);
  r.DepthMask(0);
  r.Enable(GL_STENCIL_TEST);
  r.ClearStencil(0x1AB);
  r.StencilOp(0x1E01, 0x1E02, 0x1E03);
  r.ColorMask(0, 1, 0, 1);
  r.EnableClientState(GL_NORMAL_ARRAY);
  r.EnableClientState(GL_TEXTURE_COORD_ARRAY);
  r.BindVertexArray(21);
  r.BindBuffer(34962, 22);
  r.BindBuffer(34963, 23);
  r.BindBuffer(35051, 24);
  r.BindBuffer(35052, 25);
  r.BindBufferBase(37568, 0, 26);
  r.BindBufferBase(37074, 0, 27);
}

/// Every name, with its value at first and after `Change`, for a context of 6 by 5.
const std::map<unsigned int, std::pair<TInts, TInts>>& Integers() {
  static const std::map<unsigned int, std::pair<TInts, TInts>> s_Rows = {
      {2880, {{0x1B02, 0x1B02}, {0x1B00, 0x1B01}}},
      {2884, {{0}, {1}}},
      {2885, {{1029}, {1028}}},
      {2886, {{2305}, {2304}}},
      {2898, {{0}, {1}}},
      {2900, {{7425}, {7425}}},
      {2901, {{1032}, {1029}}},
      {2902, {{5634}, {4609}}},
      {2903, {{0}, {1}}},
      {2917, {{2048}, {9729}}},
      {2929, {{0}, {1}}},
      {2930, {{1}, {0}}},
      {2960, {{0}, {1}}},
      {2961, {{0}, {0xAB}}},
      {2964, {{0x1E00}, {0x1E01}}},
      {2965, {{0x1E00}, {0x1E02}}},
      {2966, {{0x1E00}, {0x1E03}}},
      {2978, {{0, 0, 6, 5}, {0, 0, 6, 5}}},
      {3107, {{1, 1, 1, 1}, {0, 1, 0, 1}}},
      {3122, {{0}, {0}}},
      {3123, {{0}, {0}}},
      {3136, {{7168}, {7168}}},
      {3377, {{8}, {8}}},
      {3379, {{16384}, {16384}}},
      {3415, {{8}, {8}}},
      {32884, {{0}, {0}}},
      {32885, {{0}, {1}}},
      {32886, {{0}, {0}}},
      {32888, {{0}, {1}}},
      {34229, {{0}, {21}}},
      {34921, {{8}, {8}}},
      {34964, {{0}, {22}}},
      {34965, {{0}, {23}}},
      {35053, {{0}, {24}}},
      {35055, {{0}, {25}}},
      {36006, {{0}, {0}}},
      {36010, {{0}, {0}}},
      {37075, {{0}, {27}}},
      {37568, {{0}, {26}}}};
  return s_Rows;
}

void CheckIntegers(TRenderCPU& r, bool changed) {
  for (const auto& [name, values] : Integers()) {
    TInts out(6, -77);
    r.GetIntegerv(name, out.data());
    TInts expected = changed ? values.second : values.first;
    expected.resize(6, -77); // what is not given is not written
    EXPECT_EQ(expected, out) << name;
    EXPECT_EQ(0u, r.GetError()) << name;
  }
}

/// Every name of floating-point values, and what the context holds.
std::map<unsigned int, std::vector<double>> Doubles(const TRenderCPU& r) {
  const auto matrix = [](const M4& m) { return std::vector<double>(m.m, m.m + 16); };
  const auto vec = [](const V4& v) { return std::vector<double>{v.x, v.y, v.z, v.w}; };
  std::vector<double> clear;
  for (const unsigned char byte : r.m_ClearColor) {
    clear.push_back(byte / 255.0);
  }
  return {{2816, vec(r.m_CurColor)},
          {2914, {r.m_Fog.Density}},
          {2915, {r.m_Fog.Start}},
          {2916, {r.m_Fog.End}},
          {2917, {static_cast<double>(r.m_Fog.Mode)}},
          {2918, vec(r.m_Fog.Color)},
          {2931, {static_cast<double>(r.m_ClearDepth)}},
          {2982, matrix(r.m_ModelView)},
          {2983, matrix(r.m_Projection)},
          {2984, matrix(r.m_TexUnits[r.m_ActiveTexture].TexMatrix)},
          {3106, clear}};
}

void CheckDoubles(TRenderCPU& r) {
  for (const auto& [name, values] : Doubles(r)) {
    double d[18];
    float f[18];
    std::fill_n(d, 18, -77.0);
    std::fill_n(f, 18, -77.0f);
    r.GetDoublev(name, d);
    r.GetFloatv(name, f);
    EXPECT_EQ(0u, r.GetError()) << name;
    for (std::size_t i = 0; i < 18; ++i) {
      const double expected = i < values.size() ? values[i] : -77;
      EXPECT_SAME_BITS(expected, d[i]) << name << " " << i;
      EXPECT_SAME_BITS(static_cast<float>(expected), f[i]) << name << " " << i;
    }
  }
}

} // namespace

TEST(Queries, IntegersByName) {
  TScene s(6, 5);
  CheckIntegers(*s, false);
  Change(*s);
  ASSERT_EQ(0u, s->GetError());
  CheckIntegers(*s, true);
}

TEST(Queries, IntegersOfEachOtherName) {
  TScene s(6, 5);
  std::vector<unsigned int> names = {0, 1, 0xFFFFFFFF, 37569, 36007, 36009, 36011};
  for (unsigned int name = 2800; name < 3500; ++name) {
    names.push_back(name); // GL_RGBA_MODE and the like
  }
  for (unsigned int base : {32880u, 34220u, 34915u, 34960u, 35050u, 37070u, 37565u, 37600u}) {
    for (unsigned int name = base; name < base + 12; ++name) {
      names.push_back(name);
    }
  }
  for (const unsigned int name : names) {
    if (Integers().count(name) == 0) {
      TInts out(6, -77);
      s->GetIntegerv(name, out.data());
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError()) << name;
      EXPECT_EQ(TInts(6, -77), out);
    }
  }
}

TEST(Queries, ANullResultOfIntegersIsAnInvalidValue) {
  TScene s(6, 5);
  s->GetIntegerv(GL_VIEWPORT, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  s->GetIntegerv(1, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError()) << "before the name is looked at";
}

TEST(Queries, TheViewportIsTheSurface) {
  TScene s(6, 5);
  ASSERT_TRUE(s->SetSize(9, 11));
  int out[4] = {};
  s->GetIntegerv(GL_VIEWPORT, out);
  EXPECT_EQ((TInts{0, 0, 9, 11}), TInts(out, out + 4));
}

TEST(Queries, FloatsAndDoublesByName) {
  TScene s(6, 5);
  CheckDoubles(*s);
  TRandom random(81);
  s->_Color4d(0.1, 1.2, -0.3, 1e300);
  s->Fog(2914u, 0.1f);
  s->Fog(2915u, 0.2f);
  s->Fog(2916u, 0.3f);
  s->Fog(2917u, -123456789);
  const float color[4] = {0.1f, 0.2f, 0.3f, 0.4f};
  s->Fog(2918u, color);
  s->ClearDepth(0.1);
  s->ClearColor(0.1f, 0.5f, 0.9f, 1.5f);
  s->LoadMatrix(random.Matrix(-2, 2));
  s->MatrixMode(GL_PROJECTION);
  s->LoadMatrix(random.Matrix(-2, 2));
  s->ActiveTexture(GL_TEXTURE0 + 5);
  s->MatrixMode(GL_TEXTURE);
  s->LoadMatrix(random.Matrix(-2, 2));
  CheckDoubles(*s);
}

TEST(Queries, TheClearColourIsTheBytesOver255) {
  THeld<TRenderCPU> r;
  r->ClearColor(0.5f, 0.0f, 1.0f, 0.25f);
  double d[4];
  float f[4];
  r->GetDoublev(GL_COLOR_CLEAR_VALUE, d);
  r->GetFloatv(GL_COLOR_CLEAR_VALUE, f);
  EXPECT_SAME_BITS(128 / 255.0, d[0]);
  EXPECT_SAME_BITS(0.0, d[1]);
  EXPECT_SAME_BITS(1.0, d[2]);
  EXPECT_SAME_BITS(64 / 255.0, d[3]); // 0.25 * 255 + 0.5 = 64.25
  EXPECT_SAME_BITS(static_cast<float>(128 / 255.0), f[0]);
}

TEST(Queries, TheClearDepthIsAFloat) {
  THeld<TRenderCPU> r;
  r->ClearDepth(0.1);
  double d = 0;
  r->GetDoublev(GL_DEPTH_CLEAR_VALUE, &d);
  EXPECT_SAME_BITS(static_cast<double>(0.1f), d);
}

TEST(Queries, FloatsAndDoublesOfEachOtherName) {
  TScene s(6, 5);
  const auto known = Doubles(*s);
  for (unsigned int name = 2800; name < 3500; ++name) {
    if (known.count(name) == 0) {
      double d = -77;
      float f = -77;
      s->GetDoublev(name, &d);
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError()) << name;
      s->GetFloatv(name, &f);
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError()) << name;
      EXPECT_EQ(-77, d);
      EXPECT_EQ(-77, f);
    }
  }
  for (const unsigned int name : {0u, 33901u, 0xFFFFFFFFu}) {
    double d = -77;
    s->GetDoublev(name, &d);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError()) << name;
  }
}

TEST(Queries, BooleansAreNotBuilt) {
  TScene s(6, 5);
  unsigned char out = 77;
  for (const unsigned int name : {0u, 2884u, 2929u, 2930u, 3107u}) {
    s->GetBooleanv(name, &out);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError()) << name;
  }
  EXPECT_EQ(77, out);
}

TEST(Queries, AnswerWithoutSurfaces) {
  THeld<TRenderCPU> r;
  int out[4] = {9, 9, 9, 9};
  r->GetIntegerv(GL_VIEWPORT, out);
  EXPECT_EQ((TInts{0, 0, 0, 0}), TInts(out, out + 4));
  r->MatrixMode(GL_TEXTURE);
  r->ActiveTexture(GL_TEXTURE0 + 8);
  double d[16];
  r->GetDoublev(GL_TEXTURE_MATRIX, d); // of a unit that does not exist: the sanitizers look on
}
