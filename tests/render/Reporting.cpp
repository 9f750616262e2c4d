// What the context can't do it says: by a code that the first failure sets, or through the debug
// callback.

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

TEST(Errors, FirstOneWinsUntilItIsRead) {
  TScene s;
  s->_SetError(GL_INVALID_VALUE);
  s->_SetError(GL_INVALID_ENUM);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  EXPECT_EQ(0u, s->GetError());
  s->_SetError(GL_INVALID_ENUM);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError());
}

TEST(Errors, ListsCannotBeMade) {
  TScene s;
  EXPECT_EQ(0u, s->GenLists(5));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  EXPECT_EQ(0u, s->GetError());
}

struct TCallbackLog {
  int Calls = 0;
  bool Plain = true;
};

void LogCall(unsigned int source, unsigned int type, unsigned int id, unsigned int severity,
             int length, const char* text, const void* user) {
  auto* const log = static_cast<TCallbackLog*>(const_cast<void*>(user));
  ++log->Calls;
  log->Plain = log->Plain && source == 0 && type == 0 && id == 0 && severity == 0 && length == 1 &&
               text != nullptr && text[0] == '\0';
}

TEST(DebugCallback, RunsOnlyWhileDebugOutputIsOn) {
  TScene s;
  TCallbackLog log;
  EXPECT_TRUE(s->DebugMessageCallback(LogCall, &log));
  EXPECT_EQ(&LogCall, s->m_DebugCallback);
  EXPECT_EQ(&log, s->m_DebugUserParam);
  s->_SetError(GL_INVALID_ENUM);
  EXPECT_EQ(0, log.Calls);
  s->Enable(GL_DEBUG_OUTPUT);
  s->_SetError(GL_INVALID_VALUE);
  EXPECT_EQ(1, log.Calls);
  s->Disable(GL_DEBUG_OUTPUT);
  s->_SetError(GL_INVALID_VALUE);
  EXPECT_EQ(1, log.Calls);
  EXPECT_TRUE(log.Plain);
}

TEST(DebugCallback, TellsOfEveryErrorAlsoOfThoseNotStored) {
  TScene s;
  TCallbackLog log;
  s->DebugMessageCallback(LogCall, &log);
  s->Enable(GL_DEBUG_OUTPUT);
  s->AlphaFunc(GL_LESS, 0.5f);
  s->FrontFace(0);
  EXPECT_EQ(2, log.Calls);
  EXPECT_TRUE(log.Plain);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
}

TEST(DebugCallback, IsQuietForNoErrorUnlessOneIsPending) {
  TScene s;
  TCallbackLog log;
  s->DebugMessageCallback(LogCall, &log);
  s->Enable(GL_DEBUG_OUTPUT);
  s->_SetError(0);
  EXPECT_EQ(0, log.Calls);
  EXPECT_EQ(0u, s->m_Error);
  s->_SetError(GL_INVALID_ENUM);
  EXPECT_EQ(1, log.Calls);
  s->_SetError(0); // with one pending the code isn't looked at
  EXPECT_EQ(2, log.Calls);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError());
}

TEST(DebugCallback, CanBeTakenAway) {
  TScene s;
  TCallbackLog log;
  s->DebugMessageCallback(LogCall, &log);
  s->Enable(GL_DEBUG_OUTPUT);
  EXPECT_TRUE(s->DebugMessageCallback(nullptr, nullptr));
  s->_SetError(GL_INVALID_ENUM);
  EXPECT_EQ(0, log.Calls);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError());
}

struct TReport {
  const char* Name;
  unsigned int Code;
  std::function<void(TRenderCPU&)> Call;
};

std::vector<TReport> Reports() {
  static unsigned int words[4];
  static int ints[4];
  static float floats[4];
  static unsigned char flags[4];
  return {
      {"AlphaFunc", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.AlphaFunc(GL_ALWAYS, 0.0f); }},
      {"LineStipple", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.LineStipple(1, 0xFFFF); }},
      {"GenLists", GL_INVALID_OPERATION, [](TRenderCPU& r) { EXPECT_EQ(0u, r.GenLists(1)); }},
      {"DeleteLists", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.DeleteLists(1, 1); }},
      {"IsList", GL_INVALID_OPERATION, [](TRenderCPU& r) { EXPECT_FALSE(r.IsList(1)); }},
      {"NewList", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.NewList(1, 0x1300); }},
      {"EndList", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.EndList(); }},
      {"ListBase", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.ListBase(0); }},
      {"CallList", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.CallList(1); }},
      {"CallLists", GL_INVALID_OPERATION,
       [](TRenderCPU& r) { r.CallLists(1, GL_UNSIGNED_INT, words); }},
      {"SelectBuffer", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.SelectBuffer(4, words); }},
      {"InitNames", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.InitNames(); }},
      {"LoadName", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.LoadName(1); }},
      {"PushName", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.PushName(1); }},
      {"PopName", GL_INVALID_OPERATION, [](TRenderCPU& r) { r.PopName(); }},
      {"RenderMode", GL_INVALID_OPERATION,
       [](TRenderCPU& r) { EXPECT_EQ(0, r.RenderMode(0x1C00)); }},
      {"BindFramebuffer", GL_INVALID_OPERATION,
       [](TRenderCPU& r) { r.BindFramebuffer(0x8D40, 0); }},
      {"GetBooleanv", GL_INVALID_ENUM, [](TRenderCPU& r) { r.GetBooleanv(GL_DEPTH_TEST, flags); }},
      {"GetTexParameteriv", GL_INVALID_ENUM,
       [](TRenderCPU& r) { r.GetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, ints); }},
      {"GetTexParameterfv", GL_INVALID_ENUM,
       [](TRenderCPU& r) { r.GetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, floats); }},
      {"GetTexLevelParameteriv", GL_INVALID_ENUM,
       [](TRenderCPU& r) { r.GetTexLevelParameteriv(GL_TEXTURE_2D, 0, 0x1000, ints); }},
      {"GetTexLevelParameterfv", GL_INVALID_ENUM,
       [](TRenderCPU& r) { r.GetTexLevelParameterfv(GL_TEXTURE_2D, 0, 0x1000, floats); }},
      {"Bitmap", GL_INVALID_VALUE, [](TRenderCPU& r) { r.Bitmap(8, 1, 0, 0, 8, 0, flags); }},
      {"Bitmap of a record", GL_INVALID_VALUE,
       [](TRenderCPU& r) { r.Bitmap(Zx3D::TZxGLBitmap(), 8, 0); }},
      {"TexEnvf", GL_INVALID_VALUE, [](TRenderCPU& r) { r.TexEnvf(0x2300, 0x2200, 8448.0f); }},
      {"TexGeni", GL_INVALID_VALUE, [](TRenderCPU& r) { r.TexGeni(0x2000, 0x2500, 0x2400); }},
      {"TexGenf", GL_INVALID_VALUE, [](TRenderCPU& r) { r.TexGenf(0x2000, 0x2500, 0.0f); }},
      {"TexGend", GL_INVALID_VALUE, [](TRenderCPU& r) { r.TexGend(0x2000, 0x2500, 0.0); }},
  };
}

TEST(Reports, GiveTheirCodeAndChangeNoPixels) {
  TScene s;
  DrawFullQuad(*s);
  const auto before = AllBytes(*s);
  for (const TReport& report : Reports()) {
    report.Call(*s);
    EXPECT_EQ(report.Code, s->GetError()) << report.Name;
  }
  EXPECT_EQ(before, AllBytes(*s));
  EXPECT_EQ(28u, Reports().size());
}

TEST(Reports, DoNotNeedACreatedContext) {
  TRenderCPU r;
  for (const TReport& report : Reports()) {
    report.Call(r);
    EXPECT_EQ(report.Code, r.GetError()) << report.Name;
  }
}

TEST(Reports, OfTheQueriesLeaveTheirArguments) {
  TScene s;
  unsigned char flag = 77;
  int number = 77;
  float value = 77.0f;
  s->GetBooleanv(GL_DEPTH_TEST, &flag);
  s->GetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &number);
  s->GetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &value);
  s->GetTexLevelParameteriv(GL_TEXTURE_2D, 0, 0x1000, &number);
  s->GetTexLevelParameterfv(GL_TEXTURE_2D, 0, 0x1000, &value);
  EXPECT_EQ(77, flag);
  EXPECT_EQ(77, number);
  EXPECT_EQ(77.0f, value);
}

TEST(Setters, WorkBeforeCreate) {
  TRenderCPU r;
  r.EnableDepthTest(true);
  r.DepthFunc(GL_ALWAYS);
  r.StencilFunc(GL_EQUAL, 3, 0xF0);
  r.StencilOp(GL_ZERO, GL_REPLACE, GL_INVERT);
  r.ClearColor(1.0f, 0.0f, 0.0f, 1.0f);
  r.CullFace(GL_FRONT);
  r.EnableCullFace(true);
  r.Color3d(0.25, 0.5, 0.75);
  r.Translated(1, 2, 3);
  EXPECT_EQ(0u, r.GetError());
  EXPECT_TRUE(r.m_DepthTest);
  EXPECT_EQ(519u, r.m_DepthFunc);
  EXPECT_EQ(3, r.m_StencilRef);
  EXPECT_EQ(255, r.m_ClearColor[0]);
  EXPECT_EQ(0x404u, r.m_CullFaceMode);
  EXPECT_EQ(0.75, r.m_CurColor.z);
  EXPECT_EQ(3.0, r.m_ModelView[14]);
}

TEST(Drawing, OnAContextThatIsNotCreatedDoesNothing) {
  TRenderCPU r;
  for (unsigned int mode = 0; mode < 8; ++mode) {
    r.Begin(mode);
    EXPECT_TRUE(r.m_InBeginEnd);
    for (int i = 0; i < 6; ++i) {
      r.Vertex3d(i * 0.1, i % 2, 0);
    }
    r.End();
    EXPECT_FALSE(r.m_InBeginEnd);
  }
  EXPECT_EQ(0u, r.GetError());
  EXPECT_EQ(0.5, r.m_CurVertex.x);
}

TEST(Drawing, AfterDestroyBetweenBeginAndEndDoesNothing) {
  TScene s;
  s->Begin(GL_TRIANGLES);
  s->Vertex2d(-1, -1);
  s->Vertex2d(1, -1);
  s->Destroy();
  s->Vertex2d(1, 1);
  s->End();
  EXPECT_EQ(0u, s->GetError());
}

} // namespace
