// A context that derives from `TRenderCPU` sees one call for one call: no operation is built upon
// another virtual one, but for the few that are described so.

#include <ZxCore3D/render/TRenderCPU.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/render/GLEnums.h>

#include "CountingRender.h"

namespace {

using zx_test::TCountingRender;
using TCalls = std::vector<std::string>;

// Arguments that calls read from or write to.
float s_Floats[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
double s_Doubles[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
int s_Ints[16] = {1, 2, 3, 4};
unsigned char s_Bytes[64] = {1, 2, 3, 4};
unsigned int s_Names[4] = {};
const std::vector<vec_t_<double, 2>> s_Outline = {{0, 0}, {1, 0}, {0, 1}};

struct TOperation {
  std::string Text;
  void (*Call)(TCountingRender& r);
};

#define ZX_TEST_ROW(result, name, parameters, names, arguments)                                    \
  {#name #parameters, [](TCountingRender& r) { r.name arguments; }},

const std::vector<TOperation>& AllOperations() {
  static const std::vector<TOperation> s_All = {ZX_TEST_OPERATIONS(ZX_TEST_ROW)};
  return s_All;
}

#undef ZX_TEST_ROW

const char* const s_Load = "LoadMatrix(const MAT4<double>& a)";
const char* const s_Mult = "MultMatrix(const MAT4<double>& a)";
const char* const s_Vertex = "Vertex4dv(const double* a)";
const char* const s_Outlined = "Polygon(const std::vector<vec_t_<double, 2>>& a, "
                               "const vec_t_<double, 3>& b, double c, "
                               "const vec_t_<double, 3>& d, double e)";
const char* const s_Pointer = "VertexPointer(int a, unsigned int b, int c, const void* d)";
const char* const s_Arrays = "DrawArrays(unsigned int a, int b, int c)";

// The virtual calls that an operation is described to make. No other makes any.
const std::map<std::string, TCalls> s_Described = {
    {"Clear(unsigned int a)", {"Clear(bool a, bool b, bool c)"}},
    {"Enable(unsigned int a)", {"EnableBlend(bool a)"}},
    {"Disable(unsigned int a)", {"EnableLighting(bool a)"}},
    {"Hint(unsigned int a, unsigned int b)", {"SetPerspectiveCorrectionHint(unsigned int a)"}},
    {"LoadIdentity()", {s_Load}},
    {"LoadMatrixf(const float* a)", {s_Load}},
    {"LoadMatrixd(const double* a)", {s_Load}},
    {"LoadMatrix(const MAT4<float>& a)", {s_Load}},
    {"MultMatrixf(const float* a)", {s_Mult}},
    {"MultMatrixd(const double* a)", {s_Mult}},
    {"MultMatrix(const MAT4<float>& a)", {s_Mult}},
    {"Ortho(double a, double b, double c, double d, double e, double f)", {s_Mult}},
    {"Frustum(double a, double b, double c, double d, double e, double f)", {s_Mult}},
    {"Translatef(float a, float b, float c)", {s_Mult}},
    {"Translated(double a, double b, double c)", {s_Mult}},
    {"Rotatef(float a, float b, float c, float d)", {s_Mult}},
    {"Rotated(double a, double b, double c, double d)", {s_Mult}},
    {"Scalef(float a, float b, float c)", {s_Mult}},
    {"Scaled(double a, double b, double c)", {s_Mult}},
    {s_Outlined, {"_Color3dv(const double* a)", s_Pointer, s_Arrays}},
    {"Domain(const std::vector<std::vector<vec_t_<double, 2>>>& a, const vec_t_<double, 3>& b, "
     "double c, const vec_t_<double, 3>& d, double e)",
     {s_Outlined, "_Color3dv(const double* a)", s_Pointer, s_Arrays, s_Outlined,
      "_Color3dv(const double* a)", s_Pointer, s_Arrays}},
};

class OneCall : public testing::Test {
protected:
  OneCall() {
    EXPECT_TRUE(m_Render.Create(8, 8, nullptr));
    m_Render.Seen.clear();
  }

  TCountingRender m_Render;
};

TEST(OneCallForm, EveryOperationMakesTheCallsThatItIsDescribedToMake) {
  for (const TOperation& operation : AllOperations()) {
    SCOPED_TRACE(operation.Text);
    TCountingRender r;
    ASSERT_TRUE(r.Create(8, 8, nullptr));
    r.Seen.clear();
    try {
      operation.Call(r);
    } catch (const TZxMessage&) {
      EXPECT_EQ(0u, operation.Text.find("CopyTexImage2D")); // there is none, and it says so
    }
    TCalls expected = {operation.Text};
    const auto described = s_Described.find(operation.Text);
    if (described != s_Described.end()) {
      expected.insert(expected.end(), described->second.begin(), described->second.end());
    }
    EXPECT_EQ(expected, r.Seen);
  }
}

// The table above is of the context's operations: none is missing, none stands twice, and what is
// described exists.
TEST(OneCallForm, TheTableIsWhole) {
  std::set<std::string> texts;
  for (const TOperation& operation : AllOperations()) {
    EXPECT_TRUE(texts.insert(operation.Text).second) << operation.Text;
  }
  // With the two that change nothing; the order of slots is tested beside.
  EXPECT_EQ(263u, texts.size() + 2);
  for (const auto& described : s_Described) {
    EXPECT_EQ(1u, texts.count(described.first)) << described.first;
  }
}

// --- What other arguments reach

TEST_F(OneCall, VectorFormsOfManyValues) {
  m_Render.LightModeliv(GL_LIGHT_MODEL_AMBIENT, s_Ints);
  m_Render.LightModelfv(GL_LIGHT_MODEL_AMBIENT, s_Floats);
  m_Render.LightModeliv(GL_LIGHT_MODEL_LOCAL_VIEWER, s_Ints);
  m_Render.LightModelfv(GL_LIGHT_MODEL_COLOR_CONTROL, s_Floats);
  m_Render.LightModelfv(GL_LIGHT0, s_Floats);
  m_Render.Fog(GL_FOG_COLOR, s_Floats);
  m_Render.Fog(GL_FOG_MODE, s_Floats);
  m_Render.Fog(GL_LIGHT0, s_Floats);
  m_Render.TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, s_Floats);
  m_Render.TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, s_Floats);
  m_Render.TexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, 9729.0f);
  m_Render.Lightfv(GL_LIGHT0, GL_SPOT_EXPONENT, s_Floats);
  m_Render.Lightfv(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, s_Floats);
  m_Render.Materialfv(GL_BACK, GL_SHININESS, s_Floats);
  EXPECT_EQ(14u, m_Render.Seen.size());
}

TEST_F(OneCall, SwitchesGoThroughTheOperationsOfTheirOwn) {
  const std::pair<unsigned int, const char*> switches[] = {
      {GL_LIGHT0, "EnableLight(unsigned long a, bool b)"},
      {GL_LIGHT7, "EnableLight(unsigned long a, bool b)"},
      {GL_CULL_FACE, "EnableCullFace(bool a)"},
      {GL_LIGHTING, "EnableLighting(bool a)"},
      {GL_DEPTH_TEST, "EnableDepthTest(bool a)"},
      {GL_BLEND, "EnableBlend(bool a)"},
      {GL_COLOR_MATERIAL, nullptr},
      {GL_FOG, nullptr},
      {GL_STENCIL_TEST, nullptr},
      {GL_NORMALIZE, nullptr},
      {GL_TEXTURE_2D, nullptr},
      {GL_POLYGON_OFFSET_FILL, nullptr},
      {GL_DEBUG_OUTPUT, nullptr},
  };
  for (const auto& [cap, through] : switches) {
    for (const bool on : {true, false}) {
      m_Render.Seen.clear();
      on ? m_Render.Enable(cap) : m_Render.Disable(cap);
      TCalls expected = {on ? "Enable(unsigned int a)" : "Disable(unsigned int a)"};
      if (through != nullptr) {
        expected.push_back(through);
      }
      EXPECT_EQ(expected, m_Render.Seen) << cap;
    }
  }
}

TEST_F(OneCall, GenericAttributeZeroSubmitsOneVertex) {
  m_Render.VertexAttrib(0, 1.0f);
  m_Render.VertexAttrib(0, 1.0);
  m_Render.VertexAttrib(0, vec_t_<float, 2>{1, 2});
  m_Render.VertexAttrib(0, vec_t_<double, 2>{1, 2});
  m_Render.VertexAttrib(0, vec_t_<float, 3>{1, 2, 3});
  m_Render.VertexAttrib(0, vec_t_<double, 3>{1, 2, 3});
  m_Render.VertexAttrib(0, vec_t_<float, 4>{1, 2, 3, 4});
  m_Render.VertexAttrib(0, vec_t_<double, 4>{1, 2, 3, 4});
  ASSERT_EQ(16u, m_Render.Seen.size());
  for (std::size_t i = 0; i < 16; i += 2) {
    EXPECT_EQ(0u, m_Render.Seen[i].find("VertexAttrib("));
    EXPECT_EQ(s_Vertex, m_Render.Seen[i + 1]);
  }
}

TEST_F(OneCall, ArraysAreReplayedThroughBeginVerticesAndEnd) {
  m_Render.VertexPointer(2, GL_FLOAT, 0, s_Floats);
  m_Render.EnableClientState(GL_VERTEX_ARRAY);
  m_Render.Seen.clear();
  m_Render.DrawArrays(GL_LINES, 0, 2);
  EXPECT_EQ((TCalls{s_Arrays, "Begin(unsigned int a)", s_Vertex, s_Vertex, "End()"}),
            m_Render.Seen);
  m_Render.Seen.clear();
  m_Render.DrawElements(GL_POINTS, 1, GL_UNSIGNED_BYTE, s_Bytes);
  EXPECT_EQ((TCalls{"DrawElements(unsigned int a, int b, unsigned int c, const void* d)",
                    "Begin(unsigned int a)", s_Vertex, "End()"}),
            m_Render.Seen);
}

TEST_F(OneCall, PopAttribGoesThroughThreeSetters) {
  m_Render.PushAttrib(0xFFFFFFFF);
  m_Render.Seen.clear();
  m_Render.PopAttrib();
  EXPECT_EQ((TCalls{"PopAttrib()", "DepthFunc(unsigned int a)",
                    "StencilFunc(unsigned int a, int b, unsigned int c)",
                    "StencilOp(unsigned int a, unsigned int b, unsigned int c)"}),
            m_Render.Seen);
}

// The colours of the interface without an underscore hand on to the one of the same form.
TEST_F(OneCall, ColoursHandOnToTheSameForm) {
  m_Render.Color3ub(1, 2, 3);
  m_Render.Color3ubv(s_Bytes);
  m_Render.Color3f(1, 2, 3);
  m_Render.Color3fv(s_Floats);
  m_Render.Color3d(1, 2, 3);
  m_Render.Color3dv(s_Doubles);
  m_Render.Color4ub(1, 2, 3, 4);
  m_Render.Color4ubv(s_Bytes);
  m_Render.Color4f(1, 2, 3, 4);
  m_Render.Color4fv(s_Floats);
  m_Render.Color4d(1, 2, 3, 4);
  m_Render.Color4dv(s_Doubles);
  m_Render.Color(vec_t_<double, 3>{1, 2, 3});
  m_Render.Color(COLORRGBA_F{1, 2, 3, 4});
  EXPECT_EQ(
      (TCalls{"_Color3ub(unsigned char a, unsigned char b, unsigned char c)",
              "_Color3ubv(const unsigned char* a)", "_Color3f(float a, float b, float c)",
              "_Color3fv(const float* a)", "_Color3d(double a, double b, double c)",
              "_Color3dv(const double* a)",
              "_Color4ub(unsigned char a, unsigned char b, unsigned char c, unsigned char d)",
              "_Color4ubv(const unsigned char* a)", "_Color4f(float a, float b, float c, float d)",
              "_Color4fv(const float* a)", "_Color4d(double a, double b, double c, double d)",
              "_Color4dv(const double* a)", "_Color3dv(const double* a)",
              "_Color4fv(const float* a)"}),
      m_Render.Seen);
}

// --- Destroy, which a failed Create and a failed SetSize call

TEST(FailedCreate, CallsTheVirtualDestroyOnce) {
  TCountingRender r;
  EXPECT_FALSE(r.Create(0x7FFFFFFF, 0x7FFFFFFF, nullptr));
  EXPECT_EQ(TCalls{"Destroy()"}, r.Seen);
  EXPECT_FALSE(r.m_Created);
  EXPECT_EQ(nullptr, r.m_FrameBuffer);
}

// Nothing was begun that would have to be taken down.
TEST(FailedCreate, RefusedAtOnceCallsNothing) {
  TCountingRender r;
  EXPECT_FALSE(r.Create(0, 10, nullptr));
  EXPECT_FALSE(r.Create(10, -1, nullptr));
  ASSERT_TRUE(r.Create(10, 10, nullptr));
  EXPECT_FALSE(r.Create(10, 10, nullptr));
  EXPECT_FALSE(r.SetSize(10, 0));
  EXPECT_EQ(TCalls{}, r.Seen);
}

TEST(FailedSetSize, CallsTheVirtualDestroyOnce) {
  TCountingRender r;
  ASSERT_TRUE(r.Create(4, 4, nullptr));
  EXPECT_FALSE(r.SetSize(0x7FFFFFFF, 0x7FFFFFFF));
  EXPECT_EQ(TCalls{"Destroy()"}, r.Seen);
  EXPECT_FALSE(r.m_Created);
}

} // namespace
