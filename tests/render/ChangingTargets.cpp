// Targets that change between Begin and End: each primitive goes to what they are by then.

#include <functional>
#include <vector>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxPixelKit/Surface.h>

#include "LevelTest.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr int kSize = 16;

enum TKind { kTriangle, kLine, kPoint, kKinds };

unsigned int ModeOf(int kind) {
  return kind == kTriangle ? GL_TRIANGLES : kind == kLine ? GL_LINES : GL_POINTS;
}

/// A shape of one pixel's height within row `y`; Begin has been called.
void Shape(TRenderCPU& gl, int kind, int y, int size = kSize) {
  const double at = Clip(y, size);
  if (kind == kTriangle) {
    gl.Vertex2d(-1, at - 0.9 / size);
    gl.Vertex2d(1, at);
    gl.Vertex2d(-1, at + 0.9 / size);
  } else if (kind == kLine) {
    gl.Vertex2d(-1, at);
    gl.Vertex2d(1, at);
  } else {
    gl.Vertex2d(Clip(0, size), at);
  }
}

constexpr TPixel kWhite = {255, 255, 255, 255};

TPixel PixelOf(const DATASURFACE& surface, int x, int y) {
  const std::uint8_t* const p = TScene::At(surface, x, y);
  return {p[0], p[1], p[2], p[3]};
}

unsigned int BindNewTexture(TRenderCPU& gl, int width, int height) {
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  return id;
}

class ChangingTargets : public testing::TestWithParam<int> {
protected:
  ~ChangingTargets() override { LimitSpanLevel(nullptr); }

  static void AtEveryLevel(const std::function<void()>& run) {
    for (const char* level : Zx3D::kSpanPaths) {
      if (LimitSpanLevel(level)) {
        SCOPED_TRACE(level);
        run();
      }
    }
  }
};

} // namespace

TEST_P(ChangingTargets, TheFrameBuffersColourMovesIntoATexture) {
  AtEveryLevel([] {
    TScene s(kSize, kSize);
    unsigned int id = BindNewTexture(*s, kSize, kSize);
    s->Begin(ModeOf(GetParam()));
    Shape(*s, GetParam(), 2);
    ASSERT_TRUE(s->MoveTexImage2D(GL_TEXTURE_2D, 0, s->GetColorSurface()));
    Shape(*s, GetParam(), 4);
    const DATASURFACE& moved = *s->m_TexUnits[0].Sampler.GetSurface();
    EXPECT_EQ(kWhite, PixelOf(moved, 0, 2)) << "what was drawn before went with it";
    EXPECT_EQ(kClear, PixelOf(moved, 0, 4));
    EXPECT_EQ(kClear, s.Color(0, 2));
    EXPECT_EQ(kWhite, s.Color(0, 4));
    s->DeleteTextures(1, &id); // and is freed: the sanitizers look on
    Shape(*s, GetParam(), 6);
    s->End();
    EXPECT_EQ(kWhite, s.Color(0, 6));
  });
}

TEST_P(ChangingTargets, AnOwnerExchangesTheBoundSurface) {
  AtEveryLevel([] {
    TScene s(kSize, kSize);
    TDataSurface bound;
    ASSERT_TRUE(bound.Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
    s->BindColorSurface(&bound);
    s->Begin(ModeOf(GetParam()));
    Shape(*s, GetParam(), 2);
    {
      TDataSurface other;
      ASSERT_TRUE(other.Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
      bound.Swap(other);
      Shape(*s, GetParam(), 4);
      EXPECT_EQ(kWhite, PixelOf(other, 0, 2));
      EXPECT_EQ(kClear, PixelOf(other, 0, 4));
    }
    Shape(*s, GetParam(), 6);
    s->End();
    EXPECT_EQ(kClear, PixelOf(bound, 0, 2));
    EXPECT_EQ(kWhite, PixelOf(bound, 0, 4));
    EXPECT_EQ(kWhite, PixelOf(bound, 0, 6));
    s->BindColorSurface(nullptr);
  });
}

TEST_P(ChangingTargets, DepthAndStencilMoveAsColourDoes) {
  AtEveryLevel([] {
    TScene s(kSize, kSize);
    s->Enable(GL_STENCIL_TEST);
    s->StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    TDataSurface depth;
    TDataSurface stencil;
    ASSERT_TRUE(depth.Create(kSize, kSize, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1));
    ASSERT_TRUE(stencil.Create(kSize, kSize, DATA_FORMAT_STENCIL, DATA_TYPE_UINT8, 1));
    s->Begin(ModeOf(GetParam()));
    Shape(*s, GetParam(), 2);
    s->GetDepthSurface()->Swap(depth);
    s->GetStencilSurface()->Swap(stencil);
    Shape(*s, GetParam(), 4);
    s->End();
    EXPECT_EQ(0.0f, s.Depth(0, 2));
    EXPECT_EQ(0.5f, s.Depth(0, 4));
    EXPECT_EQ(0, s.Stencil(0, 2));
    EXPECT_EQ(1, s.Stencil(0, 4));
    EXPECT_EQ(1, *TScene::At(stencil, 0, 2));
    EXPECT_EQ(0, *TScene::At(stencil, 0, 4));
  });
}

// A surface without pixels is a target that isn't there; the others are drawn into as ever.
TEST_P(ChangingTargets, DepthAndStencilWithoutPixels) {
  AtEveryLevel([] {
    TScene s(kSize, kSize);
    TDataSurface depth;
    TDataSurface stencil;
    s->GetDepthSurface()->Swap(depth);
    s->GetStencilSurface()->Swap(stencil);
    s->EnableDepthTest(true);
    s->Enable(GL_STENCIL_TEST);
    s->Begin(ModeOf(GetParam()));
    Shape(*s, GetParam(), 2);
    s->StencilFunc(GL_NOTEQUAL, 0, 255); // the value is 0 where there is none
    Shape(*s, GetParam(), 4);
    s->End();
    EXPECT_EQ(kWhite, s.Color(0, 2));
    EXPECT_EQ(kClear, s.Color(0, 4));
  });
}

// Whatever their sizes, only pixels that lie inside a surface's block are written.
TEST_P(ChangingTargets, SmallerSurfacesAreWrittenInsideTheirBlocksOnly) {
  AtEveryLevel([] {
    for (int height = 1; height <= 9; ++height) {
      for (int width = 1; width <= 9; ++width) {
        TScene s(8, 8);
        TDataSurface depth;
        TDataSurface stencil;
        ASSERT_TRUE(depth.Create(width, height, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1));
        ASSERT_TRUE(stencil.Create(width, height, DATA_FORMAT_STENCIL, DATA_TYPE_UINT8, 1));
        s->GetDepthSurface()->Swap(depth);
        s->GetStencilSurface()->Swap(stencil);
        s->Enable(GL_STENCIL_TEST);
        s->StencilOp(GL_INCR, GL_INCR, GL_INCR);
        s->Begin(ModeOf(GetParam()));
        for (int y = 0; y < 8; ++y) {
          Shape(*s, GetParam(), y, 8);
        }
        s->End();
        if (GetParam() == kTriangle) {
          DrawFullQuad(*s);
        }
        for (const TDataSurface* surface : {s->GetDepthSurface(), s->GetStencilSurface()}) {
          const std::uint8_t* const end = surface->Data + surface->DataSize;
          for (int i = 0; i < surface->RowStride + surface->PixelStride; ++i) {
            ASSERT_EQ(0, end[i]) << width << " by " << height;
          }
        }
        for (int y = 0; y < 8; ++y) {
          ASSERT_EQ(kWhite, s.Color(0, y)) << width << " by " << height << ": colour is whole";
          if (y < height) {
            ASSERT_EQ(0.5f, s.Depth(0, y)) << width << " by " << height;
          }
        }
      }
    }
  });
}

// Pixels of odd sizes and rows at odd addresses, as a texture that was moved there has them.
TEST_P(ChangingTargets, DepthOfAnotherFormat) {
  AtEveryLevel([] {
    TScene s(8, 8);
    TDataSurface depth;
    ASSERT_TRUE(depth.Create(9, 9, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
    s->GetDepthSurface()->Swap(depth);
    s->EnableDepthTest(true);
    s->DepthFunc(GL_ALWAYS);
    s->Begin(ModeOf(GetParam()));
    for (int y = 0; y < 8; ++y) {
      Shape(*s, GetParam(), y, 8);
    }
    s->End();
    for (int y = 0; y < 8; ++y) {
      EXPECT_EQ(kWhite, s.Color(0, y));
      EXPECT_EQ(0.5f, s.Depth(0, y)); // at the start of a row the steps are of no account
    }
  });
}

namespace {

/// Binds another colour surface while it runs.
class TBindingShader : public TFragmentShaderCPU {
public:
  explicit TBindingShader(TDataSurface* surface) : m_Other(surface) {}
  unsigned int GetUniformLocation(const char*) const override { return 0xFFFFFFFF; }
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(TRenderCPU::VAR_DATA*, TRenderCPU::FS_DATA* f) override {
    m_Render->BindColorSurface(m_Other);
    f->Color = {1, 1, 1, 1};
    return true;
  }

private:
  TDataSurface* m_Other;
};

/// Has the context's fragment shader bind `other`, which is as large as the picture.
void BindWhileShading(TRenderCPU* gl, TDataSurface* other) {
  ASSERT_TRUE(other->Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  auto* const shader = new TBindingShader(other);
  gl->_SetFragmentShader(shader);
  shader->Release();
}

} // namespace

// Points and the pixels of lines are written to the surface that is bound when their shader is
// done; triangles from the next row on.
TEST_P(ChangingTargets, AShaderBindsAnotherSurface) {
  TScene s(kSize, kSize);
  TDataSurface other;
  BindWhileShading(&*s, &other);
  s->Begin(ModeOf(GetParam()));
  Shape(*s, GetParam(), 2);
  Shape(*s, GetParam(), 4);
  s->End();
  const bool atOnce = GetParam() != kTriangle;
  EXPECT_EQ(atOnce ? kWhite : kClear, PixelOf(other, 0, 2));
  EXPECT_EQ(atOnce ? kClear : kWhite, PixelOf(*s->m_FrameBuffer->Color, 0, 2));
  EXPECT_EQ(kWhite, PixelOf(other, 0, 4));
  s->BindColorSurface(nullptr);
}

// The first row of a triangle goes to the surface that was bound before, all others to the new one.
TEST(WithinATriangle, RowsGoToTheSurfaceThatIsBoundByThen) {
  for (const char* level : Zx3D::kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    SCOPED_TRACE(level);
    TScene s(kSize, kSize);
    TDataSurface other;
    BindWhileShading(&*s, &other);
    s->Begin(GL_TRIANGLES);
    s->Vertex2d(-1, -1);
    s->Vertex2d(1, -1);
    s->Vertex2d(-1, 1);
    s->End();
    for (int y = 0; y < kSize - 1; ++y) {
      EXPECT_EQ(y == 0 ? kWhite : kClear, PixelOf(*s->m_FrameBuffer->Color, 0, y)) << y;
      EXPECT_EQ(y == 0 ? kClear : kWhite, PixelOf(other, 0, y)) << y;
    }
    s->BindColorSurface(nullptr);
  }
  LimitSpanLevel(nullptr);
}

// A writer that was installed by hand writes more than the one that the buffer was given.
TEST_P(ChangingTargets, AWiderWriterStaysInsideTheDrawBuffer) {
  TScene s(kSize, kSize);
  std::vector<float> pixels(kSize * kSize + 7, 0.5f); // the last ones lie after the block
  DATASURFACE buffer;
  ASSERT_TRUE(ds::Set(&buffer, kSize, kSize, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1, pixels.data()));
  s->SetDrawBuffer(&buffer);
  s->Begin(ModeOf(GetParam()));
  Shape(*s, GetParam(), 0);
  s->m_PixelWrite = &SetValue4d;
  for (int y = 0; y < kSize; ++y) {
    Shape(*s, GetParam(), y);
  }
  s->End();
  EXPECT_NE(0.5f, pixels[0]);
  for (int i = kSize * kSize; i < static_cast<int>(pixels.size()); ++i) {
    EXPECT_EQ(0.5f, pixels[static_cast<std::size_t>(i)]) << i;
  }
  s->SetDrawBuffer(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ChangingTargets, testing::Range(0, int{kKinds}));

// What goes with the context's own surfaces is not looked at when they are gone.
TEST(OwnSurfaces, AreForgottenEverywhereWhenTheyGo) {
  TScene s(8, 8);
  s->SetDrawBuffer(s->GetDepthSurface());
  EXPECT_EQ(s->GetDepthSurface(), s->m_DrawBuffer);
  s->m_TexUnits[0].Sampler.SetSurface(s->GetColorSurface());
  s->Enable(GL_TEXTURE_2D);
  ASSERT_TRUE(s->SetSize(5, 5));
  EXPECT_EQ(nullptr, s->m_DrawBuffer);
  EXPECT_EQ(nullptr, s->m_TexUnits[0].Sampler.GetSurface());
  DrawFullQuad(*s);
  s->m_TexUnits[3].Sampler.SetSurface(s->GetStencilSurface());
  s->Destroy();
  EXPECT_EQ(nullptr, s->m_TexUnits[3].Sampler.GetSurface());
}

TEST(OwnSurfaces, ADeletedTextureIsNoTargetAnyMore) {
  TScene s(8, 8);
  TDataSurface* const own = s->GetColorSurface();
  const unsigned int id = BindNewTexture(*s, 8, 8);
  s->BindColorSurface(s->m_Textures->Surfaces[id]);
  DrawFullQuad(*s);
  s->DeleteTextures(1, &id);
  EXPECT_EQ(own, s->GetColorSurface());
  DrawFullQuad(*s);
  EXPECT_EQ(64, s.Painted());
}
