#include <functional>
#include <string>
#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

std::string Refused(unsigned int cap) {
  return "ERROR: TRenderCPU::Enable dont support mode " + std::to_string(cap);
}

struct TSwitch {
  unsigned int Cap;
  std::function<bool(const TRenderCPU&)> Read;
};

/// Every capability that can be switched.
const std::vector<TSwitch>& Switches() {
  static const std::vector<TSwitch> s_Switches = [] {
    std::vector<TSwitch> all = {
        {2884, [](const TRenderCPU& r) { return r.m_CullFaceEnabled; }},
        {2896, [](const TRenderCPU& r) { return r.m_Lighting; }},
        {2903, [](const TRenderCPU& r) { return r.m_ColorMaterial; }},
        {2912, [](const TRenderCPU& r) { return r.m_FogEnabled; }},
        {2929, [](const TRenderCPU& r) { return r.m_DepthTest; }},
        {2960, [](const TRenderCPU& r) { return r.m_StencilTest; }},
        {2977, [](const TRenderCPU& r) { return r.m_Normalize; }},
        {3042, [](const TRenderCPU& r) { return r.m_BlendEnabled; }},
        {3553, [](const TRenderCPU& r) { return r.m_TexUnits[r.m_ActiveTexture].TexEnabled; }},
        {32823, [](const TRenderCPU& r) { return r.m_PolygonOffsetFill; }},
        {37600, [](const TRenderCPU& r) { return r.m_DebugOutput; }}};
    for (unsigned int i = 0; i < 8; ++i) {
      all.push_back({16384 + i, [i](const TRenderCPU& r) { return r.m_Lights[i].Enabled; }});
    }
    return all;
  }();
  return s_Switches;
}

bool IsSwitch(unsigned int cap) {
  for (const TSwitch& s : Switches()) {
    if (s.Cap == cap) {
      return true;
    }
  }
  return false;
}

bool IsClientArray(unsigned int cap) {
  return cap == 32884 || cap == 32885 || cap == 32886 || cap == 32888;
}

/// Sees the virtual operations that a switch or an outline goes through.
class TSwitchSpy : public TRenderCPU {
public:
  void EnableLight(unsigned long index, bool on) override {
    Note("light", static_cast<int>(index), on);
    TRenderCPU::EnableLight(index, on);
  }
  void EnableCullFace(bool on) override { Note("cull", 0, on); }
  void EnableLighting(bool on) override { Note("lighting", 0, on); }
  void EnableDepthTest(bool on) override { Note("depth", 0, on); }
  void EnableBlend(bool on) override { Note("blend", 0, on); }
  void SetPerspectiveCorrectionHint(unsigned int mode) override {
    Note("hint", static_cast<int>(mode), true);
  }
  void _Color3dv(const double* v) override {
    Note("color", static_cast<int>(v[0] * 100 + v[1] * 10 + v[2]), true);
  }
  void VertexPointer(int size, unsigned int type, int stride, const void* pointer) override {
    Note("pointer", size * 100000 + static_cast<int>(type) * 10 + stride, pointer == Expected);
    TRenderCPU::VertexPointer(size, type, stride, pointer);
  }
  void DrawArrays(unsigned int mode, int first, int count) override {
    Note("draw", static_cast<int>(mode) * 1000 + first * 100 + count, true);
    TRenderCPU::DrawArrays(mode, first, count);
  }

  void Note(const char* what, int value, bool on) {
    Log.append(what).append(" ").append(std::to_string(value)).append(on ? "+ " : "- ");
  }
  std::string Log;
  const void* Expected = nullptr;
};

} // namespace

TEST(Capabilities, EverySwitchGoesOnAndOff) {
  for (const TSwitch& s : Switches()) {
    THeld<TRenderCPU> r;
    EXPECT_FALSE(r->IsEnabled(s.Cap)) << s.Cap;
    r->Enable(s.Cap);
    EXPECT_TRUE(s.Read(*r)) << s.Cap;
    EXPECT_TRUE(r->IsEnabled(s.Cap));
    EXPECT_TRUE(r->_IsEnabled(s.Cap));
    for (const TSwitch& other : Switches()) {
      EXPECT_EQ(other.Cap == s.Cap, other.Read(*r)) << s.Cap << " and " << other.Cap;
    }
    r->Disable(s.Cap);
    EXPECT_FALSE(s.Read(*r)) << s.Cap;
    EXPECT_FALSE(r->IsEnabled(s.Cap));
    r->_Enable(s.Cap, true);
    EXPECT_TRUE(r->IsEnabled(s.Cap));
    r->_Enable(s.Cap, false);
    EXPECT_FALSE(r->IsEnabled(s.Cap));
    EXPECT_EQ(0u, r->GetError());
  }
}

TEST(Capabilities, EverythingElseIsRefusedByAThrow) {
  THeld<TRenderCPU> r;
  const auto check = [&](unsigned int cap) {
    if (IsSwitch(cap)) {
      return;
    }
    EXPECT_EQ(Refused(cap), Thrown([&] { r->Enable(cap); })) << cap;
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << "reported as well as thrown";
    EXPECT_EQ(Refused(cap), Thrown([&] { r->Disable(cap); })) << cap;
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError());
    EXPECT_EQ(Refused(cap), Thrown([&] { r->_Enable(cap, true); })) << cap;
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError());
    if (!IsClientArray(cap)) {
      EXPECT_EQ(Refused(cap), Thrown([&] { r->IsEnabled(cap); })) << cap;
      EXPECT_EQ(Refused(cap), Thrown([&] { r->_IsEnabled(cap); })) << cap;
      EXPECT_EQ(0u, r->GetError()) << "thrown alone";
    }
  };
  for (unsigned int cap = 2780; cap < 3700; ++cap) { // GL_ALPHA_TEST, GL_SCISSOR_TEST, ...
    check(cap);
  }
  for (unsigned int cap = 32800; cap < 32900; ++cap) {
    check(cap);
  }
  for (const unsigned int cap :
       {0u, 1u, 12288u, 16383u, 16392u, 37599u, 37601u, 33346u, 0xFFFFFFFFu}) {
    check(cap);
  }
  for (const TSwitch& s : Switches()) {
    EXPECT_FALSE(s.Read(*r)) << s.Cap;
  }
}

TEST(Capabilities, ClientArraysCanBeAskedForAndNotSwitched) {
  THeld<TRenderCPU> r;
  for (const unsigned int array : {32884u, 32885u, 32886u, 32888u}) {
    EXPECT_FALSE(r->IsEnabled(array));
    r->EnableClientState(array);
    EXPECT_TRUE(r->IsEnabled(array));
    EXPECT_EQ(Refused(array), Thrown([&] { r->Disable(array); }));
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError());
    EXPECT_TRUE(r->IsEnabled(array));
  }
}

TEST(Capabilities, SwitchesGoThroughTheVirtualOperations) {
  THeld<TSwitchSpy> r;
  for (const unsigned int cap : {2884u, 2896u, 2929u, 3042u, 16384u, 16391u}) {
    r->Enable(cap);
    r->Disable(cap);
  }
  EXPECT_EQ("cull 0+ cull 0- lighting 0+ lighting 0- depth 0+ depth 0- blend 0+ blend 0- "
            "light 0+ light 0- light 7+ light 7- ",
            r->Log);
}

TEST(Capabilities, LightsAreCounted) {
  THeld<TRenderCPU> r;
  r->Enable(GL_LIGHT0);
  r->Enable(GL_LIGHT0 + 3);
  r->Enable(GL_LIGHT0 + 3);
  EXPECT_EQ(2, r->m_EnabledLightCount);
  r->Disable(GL_LIGHT0 + 5);
  EXPECT_EQ(2, r->m_EnabledLightCount);
  r->Disable(GL_LIGHT0 + 3);
  EXPECT_EQ(1, r->m_EnabledLightCount);
}

TEST(Capabilities, TexturesAreSwitchedOnTheActiveUnit) {
  THeld<TRenderCPU> r;
  r->ActiveTexture(GL_TEXTURE0 + 2);
  r->Enable(GL_TEXTURE_2D);
  EXPECT_TRUE(r->m_TexUnits[2].TexEnabled);
  EXPECT_FALSE(r->m_TexUnits[0].TexEnabled);
  r->ActiveTexture(GL_TEXTURE0);
  EXPECT_FALSE(r->IsEnabled(GL_TEXTURE_2D));
}

TEST(Capabilities, BlendingChoosesItsRoutines) {
  THeld<TRenderCPU> r;
  r->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  EXPECT_EQ(nullptr, r->m_BlendFunc);
  r->Enable(GL_BLEND);
  EXPECT_EQ(&TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub, r->m_BlendFunc);
  EXPECT_EQ(&TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub, r->m_BlendFuncM);
  r->Disable(GL_BLEND);
  EXPECT_EQ(nullptr, r->m_BlendFunc);
  EXPECT_EQ(nullptr, r->m_BlendFuncM);
}

TEST(Capabilities, HintHasOneTarget) {
  THeld<TSwitchSpy> spy;
  spy->Hint(3152, 12345);
  EXPECT_EQ("hint 12345+ ", spy->Log) << "the mode is unchecked";
  THeld<TRenderCPU> r;
  r->Hint(3152, 4353);
  EXPECT_EQ(4353u, r->GetPerspectiveCorrectionHint());
  EXPECT_EQ(0u, r->GetError());
  for (const unsigned int target : {0u, 3151u, 3153u, 3154u, 3155u, 3156u, 33170u}) {
    r->Hint(target, 4354);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << target;
  }
  EXPECT_EQ(4353u, r->GetPerspectiveCorrectionHint());
}

namespace {

int s_Errors;
const void* s_User;

void CountErrors(unsigned int source, unsigned int type, unsigned int id, unsigned int severity,
                 int length, const char* text, const void* user) {
  ++s_Errors;
  s_User = user;
  EXPECT_EQ(0u, source + type + id + severity);
  EXPECT_EQ(1, length);
  EXPECT_STREQ("", text);
}

} // namespace

TEST(Capabilities, TheDebugCallbackHearsWhileItsSwitchIsOn) {
  THeld<TRenderCPU> r;
  int user = 0;
  s_Errors = 0;
  EXPECT_TRUE(r->DebugMessageCallback(CountErrors, &user));
  r->AlphaFunc(0, 0);
  EXPECT_EQ(0, s_Errors) << "off at first";
  r->Enable(GL_DEBUG_OUTPUT);
  EXPECT_NE("", Thrown([&] { r->Enable(1); }));
  EXPECT_EQ(1, s_Errors) << "also for an error that is not stored";
  EXPECT_EQ(&user, s_User);
  r->Disable(GL_DEBUG_OUTPUT);
  r->AlphaFunc(0, 0);
  EXPECT_EQ(1, s_Errors);
  EXPECT_TRUE(r->DebugMessageCallback(nullptr, nullptr));
}

TEST(Capabilities, APolygonIsALineLoopOfItsPoints) {
  THeld<TSwitchSpy> r;
  ASSERT_TRUE(r->Create(8, 8, nullptr));
  const std::vector<V2> points = {{-0.5, -0.5}, {0.5, -0.5}, {0, 0.5}};
  r->Expected = points.data();
  r->Polygon(points, V3{1, 2, 3}, 77, V3{4, 5, 6}, 88);
  // size 2, GL_DOUBLE, 16 bytes; GL_LINE_LOOP from 0, three points
  EXPECT_EQ("color 123+ pointer 251316+ draw 2003+ ", r->Log);
  EXPECT_EQ(0u, r->GetError());
  EXPECT_EQ(0, static_cast<int>(r->m_ColorSurface->Data[3])) << "GL_VERTEX_ARRAY is off";
}

TEST(Capabilities, APolygonDrawsWithTheVertexArrayOn) {
  TScene polygon(9, 9), calls(9, 9);
  const std::vector<V2> points = {{-0.5, -0.5}, {0.5, -0.5}, {0, 0.5}};
  polygon->EnableClientState(GL_VERTEX_ARRAY);
  polygon->Polygon(points, V3{1, 0.5, 0.25}, 0, V3{0, 0, 0}, 0);
  calls->Color3d(1, 0.5, 0.25);
  calls->Begin(GL_LINE_LOOP);
  for (const V2& p : points) {
    calls->Vertex2d(p.x, p.y);
  }
  calls->End();
  EXPECT_EQ(AllBytes(*calls), AllBytes(*polygon));
  EXPECT_GT(polygon.Painted(), 5);
  polygon->Polygon({}, V3{1, 1, 1}, 0, V3{0, 0, 0}, 0); // no points at all
}

namespace {

class TPolygonSpy : public TRenderCPU {
public:
  void Polygon(const std::vector<V2>& points, const V3& color, double width, const V3& fill,
               double fillWidth) override {
    Sizes.push_back(points.size());
    EXPECT_EQ(V3(color), (V3{1, 2, 3}));
    EXPECT_EQ(V3(fill), (V3{4, 5, 6}));
    EXPECT_EQ(7, width);
    EXPECT_EQ(8, fillWidth);
  }
  std::vector<std::size_t> Sizes;
};

} // namespace

TEST(Capabilities, ADomainIsAPolygonForEachContour) {
  THeld<TPolygonSpy> r;
  r->Domain({std::vector<V2>(3), {}, std::vector<V2>(5)}, V3{1, 2, 3}, 7, V3{4, 5, 6}, 8);
  EXPECT_EQ((std::vector<std::size_t>{3, 0, 5}), r->Sizes);
  r->Domain({}, V3{1, 2, 3}, 7, V3{4, 5, 6}, 8);
  EXPECT_EQ(3u, r->Sizes.size());
}

TEST(Capabilities, MipmapsAreNotGenerated) {
  EXPECT_FALSE(THeld<TRenderCPU>()->IsSupport_SGIS_generate_mipmap());
}
