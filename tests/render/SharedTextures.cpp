#include <malloc.h>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <ZxPixelKit/Surface.h>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

unsigned int MakeTexture(TRenderCPU& r, unsigned char red) {
  unsigned int id = 0;
  r.GenTextures(1, &id);
  r.BindTexture(GL_TEXTURE_2D, id);
  const unsigned char pixel[4] = {red, 20, 30, 255};
  r.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  return id;
}

/// Two contexts that share a table, and a texture that both have bound.
struct TSharers {
  TScene A{4, 4};
  TScene B{4, 4, A.Get()};
  unsigned int Id = MakeTexture(*A, 200);

  TSharers() { B->BindTexture(GL_TEXTURE_2D, Id); }
};

/// Draws a quad with what is bound and returns its first pixel.
TPixel Drawn(TScene& s) {
  s.Reset();
  s->Enable(GL_TEXTURE_2D);
  s->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  DrawFullQuad(*s);
  return s.Color(1, 1);
}

} // namespace

TEST(SharedTextures, AreSeenByEveryContextOfTheTable) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  ASSERT_NE(nullptr, a->m_Textures) << "made for the giver";
  EXPECT_EQ(a->m_Textures, b->m_Textures);
  EXPECT_EQ(2u, a->m_Textures->RefCount);
  const unsigned int id = MakeTexture(*a, 200);
  EXPECT_TRUE(b->IsTexture(id));
  EXPECT_EQ(nullptr, b->m_TexUnits[0].Sampler.m_Surface) << "bindings are a context's own";
  b->BindTexture(GL_TEXTURE_2D, id);
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  EXPECT_EQ(id + 1, MakeTexture(*b, 100));
  EXPECT_TRUE(a->IsTexture(id + 1));
}

TEST(SharedTextures, ASceneDrawsAsWithAnOwnTable) {
  TScene own(8, 8), giver(8, 8);
  TScene taker(8, 8, giver.Get());
  const unsigned int id = MakeTexture(*giver, 123);
  taker->BindTexture(GL_TEXTURE_2D, id);
  own->BindTexture(GL_TEXTURE_2D, MakeTexture(*own, 123));
  Drawn(own);
  Drawn(taker);
  EXPECT_EQ(AllBytes(*own), AllBytes(*taker));
  EXPECT_EQ(64, own.Painted());
}

TEST(SharedTextures, TheTableLivesAsLongAsItsLastContext) {
  auto a = std::make_unique<TScene>(4, 4);
  TScene b(4, 4, a->Get());
  const unsigned int id = MakeTexture(**a, 77);
  b->BindTexture(GL_TEXTURE_2D, id);
  a.reset();
  EXPECT_EQ(1u, b->m_Textures->RefCount);
  EXPECT_EQ((TPixel{77, 20, 30, 255}), Drawn(b));
}

TEST(SharedTextures, ClearingLetsGoOfTheTable) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  const unsigned int id = MakeTexture(*a, 77);
  a->_ClearTextures();
  EXPECT_EQ(nullptr, a->m_Textures);
  EXPECT_FALSE(a->IsTexture(id));
  EXPECT_TRUE(b->IsTexture(id));
  EXPECT_EQ(1u, b->m_Textures->RefCount);
  a->_ClearTextures(); // nothing more to let go of
  EXPECT_EQ(1u, b->m_Textures->RefCount);
  b->_ClearTextures();
  EXPECT_EQ(nullptr, b->m_Textures);
}

TEST(SharedTextures, ATextureThatAnotherContextDeletesIsGoneHereToo) {
  for (const int unit : {0, 5}) {
    TScene a(4, 4);
    TScene b(4, 4, a.Get());
    const unsigned int id = MakeTexture(*a, 200);
    b->BindTexture(GL_TEXTURE_2D, id);
    b->ActiveTexture(GL_TEXTURE0 + static_cast<unsigned int>(unit));
    b->BindTexture(GL_TEXTURE_2D, id);
    b->m_TexUnits[0].Sampler.SetBorderColor(V4{1, 0, 1, 1});
    a->DeleteTextures(1, &id);
    b->ActiveTexture(GL_TEXTURE0);
    EXPECT_EQ((TPixel{255, 0, 255, 255}), Drawn(b)) << "the border colour";
    V4 texel;
    b->m_TexUnits[unit].Sampler.GetValue(V4{0.5, 0.5, 0, 1}, &texel); // the sanitizers look on
    EXPECT_FALSE(b->IsTexture(id));
  }
}

TEST(SharedTextures, ADeletedTextureWithAFilterSetAfterwards) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  const unsigned int id = MakeTexture(*a, 200);
  b->BindTexture(GL_TEXTURE_2D, id);
  a->DeleteTextures(1, &id);
  b->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  b->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  const unsigned char pixel[4] = {1, 2, 3, 4};
  b->TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, b->GetError()) << "nothing is bound any more";
  EXPECT_EQ(kClear, Drawn(b));
}

TEST(SharedTextures, AnImageMadeIntoADeletedTextureIsNotSeenUnderANewName) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  const unsigned int id = MakeTexture(*a, 200);
  b->BindTexture(GL_TEXTURE_2D, id);
  a->DeleteTextures(1, &id);
  EXPECT_EQ(id, MakeTexture(*a, 50)) << "the name is given out again";
  EXPECT_EQ(kClear, Drawn(b)) << "the old binding is not the new texture";
  b->BindTexture(GL_TEXTURE_2D, id);
  EXPECT_EQ((TPixel{50, 20, 30, 255}), Drawn(b));
}

TEST(SharedTextures, AnImageThatAnotherContextRemakesDrawsAsItIsNow) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  const unsigned int id = MakeTexture(*a, 200);
  b->BindTexture(GL_TEXTURE_2D, id);
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  const float grey = 0.2f;
  a->TexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 1, 1, 0, GL_LUMINANCE, GL_FLOAT, &grey);
  EXPECT_EQ((TPixel{51, 51, 51, 255}), Drawn(b)) << "by its new type and size";
}

TEST(SharedTextures, AFilterOrWrapThatIsSetBetweenTwoImagesOfAnotherContext) {
  // What follows from an image that comes and goes again before anything is drawn.
  const std::function<void(TRenderCPU & r)> setters[] = {
      [](TRenderCPU& r) { r.TexFilter2D(GL_LINEAR, GL_LINEAR); },
      [](TRenderCPU& r) { r.TexWrap2D(GL_CLAMP_TO_EDGE, GL_REPEAT); },
      [](TRenderCPU& r) { r.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR); },
      [](TRenderCPU& r) { r.TexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE); },
  };
  const float grey[4] = {0.2f, 0.2f, 0.2f, 1.0f};
  for (const auto& set : setters) {
    TSharers sharers;
    auto& [a, b, id] = sharers;
    b->TexCoord2d(0.5, 0.5); // the middle of a texel, whatever the filter
    EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
    a->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_FLOAT, grey);
    set(*b);
    const unsigned char pixel[4] = {90, 20, 30, 255};
    a->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ((TPixel{90, 20, 30, 255}), Drawn(b)) << "bytes again";

    unsigned int empty = 0;
    a->GenTextures(1, &empty);
    a->BindTexture(GL_TEXTURE_2D, empty);
    b->TexFilter2D(GL_NEAREST, GL_NEAREST);
    b->TexWrap2D(GL_REPEAT, GL_REPEAT);
    b->BindTexture(GL_TEXTURE_2D, empty);
    a->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    set(*b);
    a->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_RGBA, pixel); // no such type
    EXPECT_EQ((TPixel{0, 0, 0, 0}), Drawn(b)) << "the border's colour";
  }
}

TEST(SharedTextures, DeletingWhatBothHaveBoundManyTimes) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  TScene c(4, 4, b.Get());
  EXPECT_EQ(3u, c->m_Textures->RefCount);
  for (int round = 0; round < 50; ++round) {
    TScene& maker = round % 2 == 0 ? a : b;
    const unsigned int id = MakeTexture(*maker, 90);
    EXPECT_EQ(1u, id);
    b->BindTexture(GL_TEXTURE_2D, id);
    c->BindTexture(GL_TEXTURE_2D, id);
    a->DeleteTextures(1, &id);
    if (round % 3 == 0) {
      EXPECT_EQ(kClear, Drawn(b));
      EXPECT_EQ(kClear, Drawn(c));
    }
  }
}

TEST(SharedTextures, ContextsOnDifferentThreadsLetGoIndependently) {
  for (int round = 0; round < 20; ++round) {
    std::vector<std::unique_ptr<TScene>> scenes;
    scenes.push_back(std::make_unique<TScene>(2, 2));
    MakeTexture(**scenes[0], 1);
    for (int i = 0; i < 15; ++i) {
      scenes.push_back(std::make_unique<TScene>(2, 2, scenes[0]->Get()));
    }
    EXPECT_EQ(16u, (*scenes[0])->m_Textures->RefCount);
    const auto release = [&scenes](std::size_t from) {
      for (std::size_t i = from; i < from + 8; ++i) {
        scenes[i].reset();
      }
    };
    std::thread other(release, 8);
    release(0);
    other.join();
  }
}

// --- What one context does to what another one has bound

TEST(SharedTextures, ATextureThatWasDeletedByAContextThatIsGone) {
  auto a = std::make_unique<TScene>(4, 4);
  TScene b(4, 4, a->Get());
  const unsigned int id = MakeTexture(**a, 200);
  b->BindTexture(GL_TEXTURE_2D, id);
  (*a)->DeleteTextures(1, &id);
  a.reset();
  EXPECT_EQ(kClear, Drawn(b));
  EXPECT_EQ(nullptr, b->m_TexUnits[0].Sampler.GetSurface());
}

TEST(SharedTextures, ALoaderThatRemakesATextureAndGoes) {
  TScene b(8, 8);
  const unsigned int id = MakeTexture(*b, 200);
  std::vector<unsigned char> large(4 * 64 * 64, 90);
  b->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 64, 0, GL_RGBA, GL_UNSIGNED_BYTE, large.data());
  EXPECT_EQ((TPixel{90, 90, 90, 90}), Drawn(b));
  {
    TScene loader(1, 1, b.Get());
    loader->BindTexture(GL_TEXTURE_2D, id);
    const unsigned char texels[2][4] = {{10, 20, 30, 255}, {40, 50, 60, 255}};
    loader->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
  }
  b.Reset();
  b->Begin(GL_QUADS);
  for (const auto& corner : {V4{0, 0, 0, 1}, V4{1, 0, 0, 1}, V4{1, 1, 0, 1}, V4{0, 1, 0, 1}}) {
    b->TexCoord2d(corner.x, corner.y);
    b->Vertex2d(2 * corner.x - 1, 2 * corner.y - 1);
  }
  b->End();
  for (int x = 0; x < 8; ++x) {
    EXPECT_EQ(x < 4 ? (TPixel{10, 20, 30, 255}) : (TPixel{40, 50, 60, 255}), b.Color(x, 3)) << x;
  }
}

TEST(SharedTextures, AMoveIsSeenByTheOthers) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  TDataSurface image;
  ASSERT_TRUE(image.Create(2, 2, DATA_FORMAT_RED, DATA_TYPE_FLOAT, 1));
  ASSERT_TRUE(a->MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
  image.Destroy();
  EXPECT_EQ((TPixel{0, 0, 0, 255}), Drawn(b)) << "by its new type";
}

// Who has a detached texture bound goes on reading it, and may remake it.
TEST(SharedTextures, ADetachedTextureThatIsRemade) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  const std::unique_ptr<TDataSurface> detached(a->DetachTexture(id));
  ASSERT_NE(nullptr, detached);
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  const std::vector<unsigned char> large(4 * 64 * 64, 90);
  a->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 64, 0, GL_RGBA, GL_UNSIGNED_BYTE, large.data());
  EXPECT_EQ((TPixel{90, 90, 90, 90}), Drawn(b));
  // A format that nothing maps to leaves it without pixels.
  a->TexImage2D(GL_TEXTURE_2D, 0, GL_ALWAYS, 1, 1, 0, GL_ALWAYS, GL_UNSIGNED_BYTE, large.data());
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, a->GetError());
  EXPECT_EQ(nullptr, detached->Data);
  EXPECT_EQ(kClear, Drawn(b));
  b->BindTexture(GL_TEXTURE_2D, 0);
  a->BindTexture(GL_TEXTURE_2D, 0);
}

// What is not counted in any table of the context that reads it.
TEST(SharedTextures, ADetachedTextureThatIsRemadeFromOutsideTheTable) {
  const std::vector<unsigned char> large(4 * 64 * 64, 90);
  const auto remake = [&large](TRenderCPU& r, unsigned int type) {
    r.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 64, 0, GL_RGBA, type, large.data());
  };
  for (const bool remakerLeaves : {true, false}) {
    TSharers sharers;
    auto& [a, b, id] = sharers;
    const std::unique_ptr<TDataSurface> detached(a->DetachTexture(id));
    TScene& leaver = remakerLeaves ? a : b;
    TScene& stayer = remakerLeaves ? b : a;
    leaver->_ClearTextures();
    EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(a)) << "stays bound";
    EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
    remake(*a, GL_UNSIGNED_BYTE);
    EXPECT_EQ((TPixel{90, 90, 90, 90}), Drawn(b)) << remakerLeaves;
    remake(*a, GL_RGBA); // no such type: it is without pixels
    EXPECT_EQ(kClear, Drawn(b)) << remakerLeaves;
    stayer->BindTexture(GL_TEXTURE_2D, 0);
  }
}

TEST(SharedTextures, ADetachedTextureThatItsOwnerRemakes) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  const std::unique_ptr<TDataSurface> detached(a->DetachTexture(id));
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  ASSERT_TRUE(detached->Create(2, 2, DATA_FORMAT_RED, DATA_TYPE_FLOAT, 1));
  std::fill_n(reinterpret_cast<float*>(detached->Data), 4, 1.0f);
  EXPECT_EQ((TPixel{255, 255, 255, 255}), Drawn(b)) << "by its new type";
  detached->Destroy();
  EXPECT_EQ(kClear, Drawn(a));
}

TEST(SharedTextures, ADetachedTextureThatAnotherTableTakes) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  TScene apart(4, 4);
  const unsigned int name = apart->AttachTexture(a->DetachTexture(id));
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  apart->BindTexture(GL_TEXTURE_2D, name);
  const float grey = 0.2f;
  apart->TexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 1, 1, 0, GL_LUMINANCE, GL_FLOAT, &grey);
  EXPECT_EQ((TPixel{51, 51, 51, 255}), Drawn(b));
  for (TScene* const s : {&a, &b}) {
    (*s)->BindTexture(GL_TEXTURE_2D, 0);
  }
}

// Its owner may delete it while it is bound, as long as nothing reads it.
TEST(SharedTextures, ADetachedTextureThatIsDeletedWithTexturingOff) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  Drawn(b);
  b->Disable(GL_TEXTURE_2D);
  delete a->DetachTexture(id);
  b.Reset();
  b->Color3d(1, 0, 0);
  DrawFullQuad(*b);
  EXPECT_EQ((TPixel{255, 0, 0, 255}), b.Color(1, 1));
}

// The same by whoever has it bound, whether drawn with before or not, and under a new name.
TEST(SharedTextures, ADetachedTextureThatIsMovedAndAttachedAgain) {
  for (const bool drawn : {true, false}) {
    TSharers sharers;
    auto& [a, b, id] = sharers;
    TScene c(4, 4, a.Get());
    c->BindTexture(GL_TEXTURE_2D, id);
    TDataSurface* const detached = b->DetachTexture(id);
    ASSERT_NE(nullptr, detached);
    if (drawn) {
      EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(a));
      EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(c));
    }
    TDataSurface image;
    ASSERT_TRUE(image.Create(2, 2, DATA_FORMAT_RED, DATA_TYPE_FLOAT, 1));
    ASSERT_TRUE(c->MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
    image.Destroy();
    EXPECT_EQ((TPixel{0, 0, 0, 255}), Drawn(a));
    EXPECT_EQ((TPixel{0, 0, 0, 255}), Drawn(b));
    const unsigned int again = a->AttachTexture(detached);
    b->BindTexture(GL_TEXTURE_2D, again);
    const std::vector<unsigned char> large(4 * 64 * 64, 90);
    b->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 64, 0, GL_RGBA, GL_UNSIGNED_BYTE, large.data());
    EXPECT_EQ((TPixel{90, 90, 90, 90}), Drawn(a));
    EXPECT_EQ((TPixel{90, 90, 90, 90}), Drawn(c));
  }
}

TEST(SharedTextures, ADeletionBetweenBeginAndEnd) {
  for (const unsigned int mode : {GL_TRIANGLES, GL_LINES, GL_POINTS}) {
    TScene a(8, 8);
    TScene b(8, 8, a.Get());
    const unsigned int id = MakeTexture(*a, 200);
    b->BindTexture(GL_TEXTURE_2D, id);
    b->Enable(GL_TEXTURE_2D);
    b->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    const auto shape = [&b, mode](double y) {
      b->Vertex2d(Clip(0, 8), y);
      if (mode != GL_POINTS) {
        b->Vertex2d(1, y - 0.001);
      }
      if (mode == GL_TRIANGLES) {
        b->Vertex2d(-1, y + 0.2);
        b->Vertex2d(-1, y - 0.2);
        b->Vertex2d(1, y - 0.2);
        b->Vertex2d(-1, y + 0.2);
      }
    };
    b->Begin(mode);
    shape(Clip(2, 8));
    a->DeleteTextures(1, &id);
    shape(Clip(5, 8));
    b->End();
    EXPECT_EQ((TPixel{200, 20, 30, 255}), b.Color(0, 2)) << mode;
    EXPECT_EQ(kClear, b.Color(0, 5)) << mode;
  }
}

TEST(SharedTextures, AnImageForATextureThatIsGone) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  a->DeleteTextures(1, &id);
  const unsigned char pixel[4] = {1, 2, 3, 4};
  b->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, b->GetError());
  TDataSurface image;
  EXPECT_FALSE(b->MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, b->GetError());
}

TEST(SharedTextures, DeletedOnesTakeNoMemory) {
  TScene a(2, 2);
  TScene b(2, 2, a.Get());
  const auto makeAndDelete = [&](int times) {
    for (int i = 0; i < times; ++i) {
      unsigned int id = 0;
      a->GenTextures(1, &id);
      if (i % 3 == 0) { // bound by the other one, or by both
        b->BindTexture(GL_TEXTURE_2D, id);
      }
      a->BindTexture(GL_TEXTURE_2D, id);
      a->DeleteTextures(1, &id);
    }
  };
  makeAndDelete(1000);
  const std::size_t before = mallinfo2().uordblks;
  makeAndDelete(500000);
  EXPECT_LT(mallinfo2().uordblks, before + 4096);
}

TEST(SharedTextures, ADetachedOneStaysBoundEverywhere) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  const std::unique_ptr<TDataSurface> taken(a->DetachTexture(id));
  EXPECT_EQ(id, MakeTexture(*a, 50)) << "the name is free";
  a->DeleteTextures(1, &id);
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  EXPECT_EQ(taken.get(), b->m_TexUnits[0].Sampler.GetSurface());
}

TEST(SharedTextures, AnEntryThatWasEmptiedByHandIsAFreeName) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  const std::unique_ptr<TDataSurface> taken(a->m_Textures->Surfaces[id]);
  a->m_Textures->Surfaces[id] = nullptr;
  EXPECT_EQ(id, MakeTexture(*a, 50));
  EXPECT_NE(taken.get(), a->m_Textures->Surfaces[id]);
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b)) << "bound before, and still the caller's";
  EXPECT_EQ((TPixel{50, 20, 30, 255}), Drawn(a));
  b->BindTexture(GL_TEXTURE_2D, id);
  EXPECT_EQ((TPixel{50, 20, 30, 255}), Drawn(b));
}

// --- What a caller put into a sampler

namespace {

/// A sampling function of a caller's own: such a function is a member of the sampler.
void PutFunction(TRenderCPU::TTexSampler& sampler) {
  sampler.m_GetValue = &TRenderCPU::TTexSampler::GetValueClampToEdgeNearest4ub2D;
}

bool HasFunction(const TRenderCPU::TTexSampler& sampler) {
  return sampler.m_GetValue == &TRenderCPU::TTexSampler::GetValueClampToEdgeNearest4ub2D;
}

} // namespace

TEST(SharedTextures, AFunctionOfTheCallersStays) {
  TSharers sharers;
  auto& [a, b, id] = sharers;
  PutFunction(b->m_TexUnits[0].Sampler);
  EXPECT_EQ((TPixel{200, 20, 30, 255}), Drawn(b));
  EXPECT_TRUE(HasFunction(b->m_TexUnits[0].Sampler));
  unsigned int other = MakeTexture(*a, 10); // what happens to another texture is no matter
  a->DeleteTextures(1, &other);
  Drawn(b);
  EXPECT_TRUE(HasFunction(b->m_TexUnits[0].Sampler));
}

TEST(SharedTextures, ASurfaceOfTheCallersStays) {
  TScene a(4, 4);
  std::vector<std::uint8_t> block(64, 70);
  DATASURFACE own = {};
  ASSERT_TRUE(ds::Set(&own, 1, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, block.data()));
  TScene b(4, 4, a.Get());
  const unsigned int id = MakeTexture(*a, 200);
  b->ActiveTexture(GL_TEXTURE0 + 3);
  b->BindTexture(GL_TEXTURE_2D, id);
  b->m_TexUnits[3].Sampler.SetSurface(&own);
  b->m_TexUnits[5].Sampler.SetSurface(&own);
  a->DeleteTextures(1, &id);
  Drawn(b);
  EXPECT_EQ(&own, b->m_TexUnits[3].Sampler.GetSurface());
  b->Destroy();
  EXPECT_EQ(&own, b->m_TexUnits[3].Sampler.GetSurface());
  EXPECT_EQ(&own, b->m_TexUnits[5].Sampler.GetSurface());
}
