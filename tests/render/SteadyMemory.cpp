// Rounds of what a host does again and again take no memory that they don't give back. ZX_ROUNDS
// says how many; by default few enough for every day.

#include <cstdint>
#include <cstdlib>
#include <functional>

#include <gtest/gtest.h>

#include "object/FailingMalloc.h"

#include "Scene.h"

namespace {

using Zx3D::TRenderCPU;
using zx_test::TMallocWatch;
using zx_test::TScene;

class SteadyMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the sanitizer has malloc for itself, and looks for leaks by itself";
    }
  }

  /// Runs `round` a few times, as tables grow to their size, then many times under watch: at the
  /// end there is not one block more, and at no time more than one round's.
  static void Repeat(const std::function<void(int)>& round) {
    const char* const asked = std::getenv("ZX_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 2000;
    ASSERT_GT(rounds, 100);
    for (int i = 0; i < 100; ++i) {
      round(i);
    }
    long peak = 0;
    {
      const TMallocWatch watch;
      for (int i = 0; i < 100; ++i) {
        round(i);
      }
      peak = watch.PeakBytes();
    }
    const TMallocWatch watch;
    for (int i = 0; i < rounds; ++i) {
      round(i % 100);
    }
    EXPECT_EQ(0, watch.LiveBlocks()) << "after " << rounds << " rounds";
    // The allocator may round one and the same size to another block from time to time.
    EXPECT_LT(watch.LiveBytes(), 1024);
    EXPECT_LT(watch.PeakBytes(), peak + peak / 8 + 1024);
  }
};

TEST_F(SteadyMemory, BeginAndEnd) {
  const TScene s(32, 24);
  Repeat([&](int i) {
    s->Begin(static_cast<unsigned int>(i % 10));
    for (int k = 0; k < 7; ++k) {
      s->Color4d(0.1 * k, 0.5, 0.25, 1);
      s->Vertex3d((k * 37 % 21 - 10) / 8.0, (k * 53 % 19 - 9) / 8.0, (i % 20 - 10) / 9.0);
    }
    s->End();
    s->GetError();
  });
}

TEST_F(SteadyMemory, PushesAndPops) {
  const TScene s(8, 8);
  Repeat([&](int i) {
    for (int k = 0; k < i % 5; ++k) {
      s->PushMatrix();
      s->PushAttrib(~0u);
      s->PushClientAttrib(~0u);
    }
    for (int k = 0; k < i % 5; ++k) {
      s->PopClientAttrib();
      s->PopAttrib();
      s->PopMatrix();
    }
    EXPECT_EQ(0u, s->GetError());
  });
}

TEST_F(SteadyMemory, Resizing) {
  const TScene s(8, 8);
  s->SetSize(9, 9);
  Repeat([&](int i) {
    EXPECT_TRUE(s->SetSize(1 + i, 100 - i));
    s->Clear(true, true, true);
    zx_test::DrawFullQuad(*s);
    EXPECT_TRUE(s->SetSize(9, 9));
  });
}

TEST_F(SteadyMemory, TextureChurn) {
  const TScene a(8, 8);
  const TScene b(8, 8, a.Get());
  const std::uint8_t texels[4 * 64] = {};
  unsigned int kept[8] = {};
  a->GenTextures(8, kept);
  Repeat([&](int i) {
    const TScene& maker = i % 2 == 0 ? a : b;
    const TScene& other = i % 2 == 0 ? b : a;
    unsigned int ids[3] = {};
    maker->GenTextures(3, ids);
    for (const unsigned int id : ids) {
      maker->BindTexture(GL_TEXTURE_2D, id);
      maker->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1 + i % 8, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                        texels);
      other->BindTexture(GL_TEXTURE_2D, id);
    }
    TDataSurface image;
    image.Create(3, 3, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
    maker->MoveTexImage2D(GL_TEXTURE_2D, 0, &image);
    delete other->DetachTexture(maker->AttachTexture(new TDataSurface));
    other->DeleteTextures(3, ids);
    for (const TScene* const s : {&a, &b}) {
      (*s)->BindTexture(GL_TEXTURE_2D, kept[i % 8]);
      (*s)->GetError();
    }
  });
}

TEST_F(SteadyMemory, BuffersAndArrays) {
  const TScene s(8, 8);
  Repeat([&](int i) {
    unsigned int buffers[4] = {};
    unsigned int arrays[4] = {};
    s->GenBuffers(4, buffers);
    s->GenVertexArrays(4, arrays);
    for (const unsigned int id : buffers) {
      s->BindBuffer(GL_ARRAY_BUFFER, id);
      s->BufferData(GL_ARRAY_BUFFER, 16 * (1 + i), nullptr, GL_STATIC_DRAW);
      s->BufferData(GL_ARRAY_BUFFER, 8, nullptr, GL_STATIC_DRAW);
    }
    s->BindVertexArray(arrays[i % 4]);
    s->DeleteVertexArrays(4, arrays);
    s->DeleteBuffers(4, buffers);
  });
}

TEST_F(SteadyMemory, WholeContexts) {
  const TScene giver(8, 8);
  giver->GetError();
  Repeat([&](int i) {
    const TScene s(1 + i, 8, i % 3 == 0 ? giver.Get() : nullptr);
    unsigned int id = 0;
    s->GenTextures(1, &id);
    s->BindTexture(GL_TEXTURE_2D, id);
    s->GenBuffers(1, &id);
    s->PushMatrix();
    if (i % 3 == 0) {
      s->BindTexture(GL_TEXTURE_2D, 0);
      const unsigned int shared = 1;
      s->DeleteTextures(1, &shared);
    }
  });
}

} // namespace
