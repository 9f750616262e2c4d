// Drawing allocates nothing: not per primitive, not per pixel, not per call.

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdint>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "object/FailingMalloc.h"

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

/// One frame of all modes, clipped and unclipped.
void DrawFrame(TRenderCPU& r) {
  r.Clear(true, true, true);
  for (unsigned int mode = 0; mode < 10; ++mode) {
    r.Begin(mode);
    for (int i = 0; i < 60; ++i) {
      const double reach = i % 7 == 0 ? 2.5 : 0.9;
      r.Color4d(0.1 * (i % 10), 0.5, 0.25, 0.75);
      r.Normal3d(0, 0, 1);
      r.TexCoord2d(i * 0.3, i * 0.1);
      r.Vertex3d(reach * ((i * 37 % 21) - 10) / 10.0, reach * ((i * 53 % 19) - 9) / 9.0,
                 reach * ((i * 29 % 11) - 5) / 5.0);
    }
    r.End();
  }
  r.GetError();
}

void Prepare(TRenderCPU& r) {
  static const std::uint8_t texels[16] = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255};
  unsigned int id = 0;
  r.GenTextures(1, &id);
  r.BindTexture(GL_TEXTURE_2D, id);
  r.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
  r.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  r.StencilOp(GL_INCR, GL_DECR, GL_INVERT);
}

TEST(Allocations, ADrawnFrameMakesNone) {
  if (!kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc for itself";
  }
  TScene s(64, 48);
  Prepare(*s);
  for (int variant = 0; variant < 32; ++variant) {
    s->EnableLighting((variant & 1) != 0);
    s->EnableLight(0, (variant & 1) != 0);
    (variant & 2) != 0 ? s->Enable(GL_TEXTURE_2D) : s->Disable(GL_TEXTURE_2D);
    s->EnableBlend((variant & 4) != 0);
    (variant & 8) != 0 ? s->Enable(GL_STENCIL_TEST) : s->Disable(GL_STENCIL_TEST);
    s->EnableDepthTest((variant & 8) != 0);
    s->TexFilter2D(variant & 16 ? GL_LINEAR : GL_NEAREST, variant & 16 ? GL_LINEAR : GL_NEAREST);
    // From the first frame on.
    const TMallocWatch watch;
    DrawFrame(*s);
    EXPECT_EQ(0u, watch.Allocations()) << variant;
  }
  EXPECT_GT(s.Painted(), 1000);
}

TEST(Allocations, NorDoesOneIntoADrawBuffer) {
  if (!kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc for itself";
  }
  TScene s(64, 48);
  TDataSurface buffer;
  ASSERT_TRUE(buffer.Create(64, 48, DATA_FORMAT(6), DATA_TYPE(10), 4));
  s->SetDrawBuffer(&buffer);
  const TMallocWatch watch;
  DrawFrame(*s);
  EXPECT_EQ(0u, watch.Allocations());
}

TEST(Allocations, NorDoArrays) {
  if (!kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc for itself";
  }
  TScene s(64, 48);
  const double positions[] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
  const unsigned short indices[] = {0, 1, 2, 0, 2, 3};
  s->EnableClientState(GL_VERTEX_ARRAY);
  s->VertexPointer(3, GL_DOUBLE, 0, positions);
  const TMallocWatch watch;
  s->DrawArrays(GL_QUADS, 0, 4);
  s->DrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, indices);
  EXPECT_EQ(0u, watch.Allocations());
  EXPECT_EQ(64 * 48, s.Painted());
}

// A context that can't be made throws, and nothing of it is kept.
TEST(Allocations, ConstructionFailsAtEachOfItsOwn) {
  if (!kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc for itself";
  }
  std::vector<std::uint64_t> memory(sizeof(TRenderCPU) / 8);
  unsigned long failAt = 1;
  for (bool failed = true; failed; ++failAt) {
    TRenderCPU* made = nullptr;
    bool thrown = false;
    const TMallocWatch watch(failAt);
    try {
      made = new (memory.data()) TRenderCPU;
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
    failed = watch.Failed();
    const long kept = watch.LiveBlocks();
    EXPECT_EQ(failed, thrown) << failAt;
    if (made != nullptr) {
      made->~TRenderCPU();
    } else {
      EXPECT_EQ(0, kept) << failAt;
    }
  }
  EXPECT_GE(failAt, 4u); // the engine, the default vertex array and the context's surface
}

// Whichever allocation fails, nothing is thrown, nothing is kept, and the next try succeeds.
TEST(Allocations, CreateFailsAtEachOfItsOwn) {
  if (!kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc for itself";
  }
  unsigned long failAt = 1;
  for (bool failed = true; failed; ++failAt) {
    const TScene giver(4, 4); // without a table of textures, so that one is made
    auto* const taker = new TRenderCPU;
    bool created = false;
    long kept = 0;
    {
      const TMallocWatch watch(failAt);
      created = taker->Create(16, 12, giver.Get());
      failed = watch.Failed();
      kept = watch.LiveBlocks();
    }
    EXPECT_EQ(!failed, created) << failAt;
    EXPECT_EQ(created, taker->m_Created) << failAt;
    if (failed) {
      EXPECT_LE(kept, giver->m_Textures != nullptr ? 1 : 0) << failAt;
      EXPECT_EQ(nullptr, taker->m_FrameBuffer) << failAt;
      EXPECT_EQ(nullptr, taker->m_VertexShader) << failAt;
      EXPECT_TRUE(taker->Create(16, 12, giver.Get())) << failAt;
    }
    EXPECT_EQ(giver->m_Textures, taker->m_Textures) << failAt;
    taker->Color4d(1, 1, 1, 1);
    DrawFullQuad(*taker);
    EXPECT_EQ(255, *TScene::At(*taker->m_ColorSurface, 8, 6)) << failAt;
    taker->Release();
  }
  EXPECT_GT(failAt, 10u);
}

TEST(Allocations, TheWatchSeesAnAllocation) {
  if (!kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc for itself";
  }
  const TMallocWatch watch;
  TRenderCPU::TFrameBuffer fb;
  ASSERT_TRUE(fb.Create(2, 2));
  EXPECT_GT(watch.Allocations(), 0u);
}

} // namespace
