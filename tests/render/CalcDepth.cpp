// A fragment shader's IsCalcDepth is asked once, when the shader is installed: it must be constant
// by then, and whatever it would answer later doesn't matter.

#include <gtest/gtest.h>

#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include "render/Scene.h"

using Zx3D::TRenderCPU;

namespace {

class TAsked : public Zx3D::TFragmentShaderCPU {
public:
  explicit TAsked(bool answer) : Answer(answer) {}
  unsigned int GetUniformLocation(const char*) const override { return 0xFFFFFFFF; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override {
    ++Questions;
    return Answer;
  }
  bool Execute(TRenderCPU::VAR_DATA*, TRenderCPU::FS_DATA* f) override {
    f->Color = {1.0, 1.0, 1.0, 1.0};
    f->Depth = 0.25f;
    return true;
  }
  bool Answer;
  mutable int Questions = 0;
};

/// Triangles, lines, points and pixels, immediate and by arrays, each of which shades fragments.
void DrawAll(TRenderCPU& gl) {
  static const double corners[] = {-1, -1, 1, -1, 0, 1};
  for (const unsigned int mode : {GL_TRIANGLES, GL_LINES, GL_POINTS, GL_LINE_LOOP}) {
    gl.Begin(mode);
    gl.Vertex2d(-1, -1), gl.Vertex2d(1, -1), gl.Vertex2d(0, 1);
    gl.End();
  }
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.VertexPointer(2, GL_DOUBLE, 0, corners);
  gl.DrawArrays(GL_TRIANGLES, 0, 3);
  const unsigned char indices[] = {0, 1, 2};
  gl.DrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_BYTE, indices);
  gl.DisableClientState(GL_VERTEX_ARRAY);
}

class CalcDepth : public testing::TestWithParam<bool> {};

TEST_P(CalcDepth, IsAskedOnceAtInstallation) {
  zx_test::TScene scene(16, 16);
  TAsked* const shader = new TAsked(GetParam());
  Zx3D::TProgramCPU program;
  program.SetShaderF(shader);
  EXPECT_EQ(shader->Questions, 0) << "a program alone asks nothing";
  scene->SetProgram(&program);
  EXPECT_EQ(shader->Questions, 1);
  EXPECT_EQ(scene->m_CalcDepth, GetParam());
  scene->Enable(GL_DEPTH_TEST);
  scene->DepthFunc(GL_ALWAYS);
  DrawAll(*scene);
  scene->SetProgram(&program);
  DrawAll(*scene);
  EXPECT_EQ(shader->Questions, 1) << "drawing and installing it again ask nothing";
  scene->SetProgram(nullptr);
  EXPECT_FALSE(scene->m_CalcDepth) << "the standard shader computes no depth";
  EXPECT_EQ(shader->Questions, 1);
  scene->SetProgram(&program);
  EXPECT_EQ(shader->Questions, 2) << "a new installation asks anew";
  scene->SetProgram(nullptr);
  shader->Release();
}

// The answer of the installation holds, even where the shader has changed its mind: it decides
// whether the plane's depth of 0.5 is compared, before the shader, or the shader's own 0.25 after
// it.
TEST_P(CalcDepth, TheFirstAnswerHolds) {
  zx_test::TScene scene(16, 16);
  TAsked* const shader = new TAsked(GetParam());
  Zx3D::TProgramCPU program;
  program.SetShaderF(shader);
  scene->SetProgram(&program);
  scene.Reset(0.375f);
  scene->Enable(GL_DEPTH_TEST);
  scene->DepthFunc(GL_LESS);
  shader->Answer = !GetParam();
  DrawAll(*scene);
  EXPECT_EQ(scene.Depth(8, 6), GetParam() ? 0.25f : 0.375f);
  EXPECT_EQ(scene.Color(8, 6).r, GetParam() ? 255 : 0);
  EXPECT_EQ(shader->Questions, 1);
  scene->SetProgram(nullptr);
  shader->Release();
}

INSTANTIATE_TEST_SUITE_P(Answers, CalcDepth, testing::Bool());

} // namespace
