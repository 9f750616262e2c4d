// Ten scenes whose bytes must be the same with every compiler, build type and instruction set:
// nothing in them goes through the C library's mathematics. The hashes are pins, not truths: what
// each scene should look like is held by the other tests; these hold that nothing moves.

#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/kernels/SpanJob.h>

namespace {

using Zx3D::TRenderCPU;

class TNumbers {
public:
  // Numbers with few bits, so that no compiler's reading of a literal comes in.
  double Next(double low, double high) {
    m_State = m_State * 6364136223846793005ull + 1442695040888963407ull;
    return low + (high - low) * (static_cast<double>(m_State >> 44) / 1048576.0);
  }

private:
  std::uint64_t m_State = 12345;
};

class TChecker : public Zx3D::TFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return 0xFFFFFFFF; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return true; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    f->Color = {(*v)[1].x, (*v)[1].y * 0.5, 0.25, 1.0};
    f->Depth = static_cast<float>((*v)[1].z);
    return ((f->X ^ f->Y) & 4) != 0;
  }
};

class FixedScenes : public testing::Test {
protected:
  FixedScenes() {
    m_Gl.Create(129, 97, nullptr);
    m_Gl.ClearColor(0.125f, 0.25f, 0.5f, 1.0f);
    m_Gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  }
  ~FixedScenes() override { Zx3D::LimitSpanLevel(nullptr); }

  void Perspective() {
    m_Gl.MatrixMode(GL_PROJECTION);
    m_Gl.Frustum(-0.5, 0.5, -0.375, 0.375, 0.5, 16);
    m_Gl.MatrixMode(GL_MODELVIEW);
    m_Gl.Translated(0, 0, -2);
  }

  void Texture(unsigned int filter, unsigned int wrap) {
    std::vector<unsigned char> texels(13 * 8 * 4);
    for (std::size_t i = 0; i < texels.size(); ++i) {
      texels[i] = static_cast<unsigned char>(i * 37 + i / 7);
    }
    unsigned int id = 0;
    m_Gl.GenTextures(1, &id);
    m_Gl.BindTexture(GL_TEXTURE_2D, id);
    m_Gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 13, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    m_Gl.TexFilter2D(filter, filter);
    m_Gl.TexWrap2D(wrap, wrap);
    m_Gl.Enable(GL_TEXTURE_2D);
  }

  void Draw(unsigned int mode, int vertices, double reach) {
    m_Gl.Begin(mode);
    for (int i = 0; i < vertices; ++i) {
      // Braces take their numbers in order; arguments would not with every compiler.
      const double color[4] = {m_Numbers.Next(0, 1), m_Numbers.Next(0, 1), m_Numbers.Next(0, 1),
                               m_Numbers.Next(0, 1)};
      const double coordinate[2] = {m_Numbers.Next(-2, 2), m_Numbers.Next(-2, 2)};
      const double position[3] = {m_Numbers.Next(-reach, reach), m_Numbers.Next(-reach, reach),
                                  m_Numbers.Next(-1, 1)};
      m_Gl.Color4dv(color);
      m_Gl.TexCoord2dv(coordinate);
      m_Gl.Vertex3dv(position);
    }
    m_Gl.End();
  }

  std::uint64_t Hash() {
    std::uint64_t hash = 14695981039346656037ull; // FNV-1a
    for (const TDataSurface* surface :
         {m_Gl.GetColorSurface(), m_Gl.GetDepthSurface(), m_Gl.GetStencilSurface()}) {
      for (std::uint64_t i = 0; i < surface->DataSize; ++i) {
        hash = (hash ^ surface->Data[i]) * 1099511628211ull;
      }
    }
    return hash;
  }

  TRenderCPU m_Gl;
  TNumbers m_Numbers;
};

class FixedScene : public FixedScenes {
protected:
  void Scene(int number) {
    switch (number) {
    case 0: // perspective, depth
      Perspective();
      m_Gl.Enable(GL_DEPTH_TEST);
      Draw(GL_TRIANGLES, 60, 1.5);
      break;
    case 1: // a fan and a strip, back faces culled
      m_Gl.Enable(GL_CULL_FACE);
      Draw(GL_TRIANGLE_FAN, 12, 1);
      Draw(GL_TRIANGLE_STRIP, 12, 1);
      break;
    case 2:
      Perspective();
      Texture(GL_NEAREST, GL_REPEAT);
      Draw(GL_QUADS, 16, 1.25);
      break;
    case 3:
      Perspective();
      Texture(GL_LINEAR, GL_CLAMP_TO_EDGE);
      Draw(GL_TRIANGLES, 24, 1.25);
      break;
    case 4: {
      Texture(GL_LINEAR, GL_CLAMP_TO_BORDER);
      const float border[4] = {0.5f, 0.25f, 1.0f, 0.75f};
      m_Gl.TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, border);
      m_Gl.Enable(GL_BLEND);
      m_Gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      Draw(GL_TRIANGLES, 24, 1.25);
      break;
    }
    case 5:
      m_Gl.Enable(GL_STENCIL_TEST);
      m_Gl.Enable(GL_DEPTH_TEST);
      m_Gl.StencilOp(GL_KEEP, GL_DECR, GL_INCR);
      m_Gl.StencilFunc(GL_GEQUAL, 3, 0x0F);
      Draw(GL_TRIANGLES, 90, 1);
      break;
    case 6:
      Perspective();
      Draw(GL_LINE_LOOP, 20, 2);
      Draw(GL_LINE_STRIP, 20, 1);
      Draw(GL_LINES, 20, 1);
      break;
    case 7:
      m_Gl.Enable(GL_DEPTH_TEST);
      m_Gl.DepthFunc(GL_GREATER);
      m_Gl.ClearDepth(0);
      m_Gl.Clear(GL_DEPTH_BUFFER_BIT);
      Draw(GL_POINTS, 400, 1.1);
      break;
    case 8: // cut on all sides, linear in the window, offset
      Perspective();
      m_Gl.SetPerspectiveCorrectionHint(GL_FASTEST);
      m_Gl.EnablePolygonOffsetFill(true);
      m_Gl.PolygonOffset(0.125f, 0);
      m_Gl.ColorMask(1, 0, 1, 1);
      Draw(GL_TRIANGLES, 60, 6);
      break;
    default: { // a shader of one's own between two standard ones
      Draw(GL_QUADS, 8, 1);
      auto* const shader = new TChecker;
      auto* const program = new Zx3D::TProgramCPU;
      program->SetShaderF(shader);
      m_Gl.SetProgram(program);
      m_Gl.Enable(GL_DEPTH_TEST);
      Draw(GL_TRIANGLES, 30, 1);
      m_Gl.SetProgram(nullptr);
      Draw(GL_TRIANGLES, 6, 1);
      program->Release();
      shader->Release();
      break;
    }
    }
  }
};

class EachFixedScene : public FixedScene, public testing::WithParamInterface<int> {};

constexpr std::uint64_t kHashes[10] = {
    0xdf736e33fe2eff65ull, 0x5767a09c8d77444cull, 0x71e73462f936d676ull, 0xeb6ed65a8d5be10eull,
    0xb06cbddd51192436ull, 0x8b0ed83a059ff24aull, 0xe070217848df202dull, 0x2afbf66c1606380cull,
    0x47cfae40d065df07ull, 0x18e70fbe7d7f7da6ull,
};

TEST_P(EachFixedScene, KeepsItsBytes) {
  Scene(GetParam());
  const std::uint64_t hash = Hash();
  EXPECT_EQ(hash, kHashes[GetParam()]) << "0x" << std::hex << hash << "ull";
}

INSTANTIATE_TEST_SUITE_P(AllTen, EachFixedScene, testing::Range(0, 10));

} // namespace
