#include <memory>
#include <thread>
#include <vector>

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
  EXPECT_EQ(1281u, b->GetError()) << "nothing is bound any more";
  EXPECT_EQ(s_Clear, Drawn(b));
}

TEST(SharedTextures, AnImageMadeIntoADeletedTextureIsNotSeenUnderANewName) {
  TScene a(4, 4);
  TScene b(4, 4, a.Get());
  const unsigned int id = MakeTexture(*a, 200);
  b->BindTexture(GL_TEXTURE_2D, id);
  a->DeleteTextures(1, &id);
  EXPECT_EQ(id, MakeTexture(*a, 50)) << "the name is given out again";
  EXPECT_EQ(s_Clear, Drawn(b)) << "the old binding is not the new texture";
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
      EXPECT_EQ(s_Clear, Drawn(b));
      EXPECT_EQ(s_Clear, Drawn(c));
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
