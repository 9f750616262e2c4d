#include <functional>
#include <vector>

#include "TexturedScene.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr char kWrongTarget[] = "ERROR: TRenderCPU::BindTexture dont support type 3552";

std::vector<unsigned int> Gen(TRenderCPU& r, int n) {
  std::vector<unsigned int> ids(static_cast<std::size_t>(n), 0xABCD);
  r.GenTextures(n, ids.data());
  return ids;
}

} // namespace

TEST(Textures, GivesOutTheLowestFreeNames) {
  THeld<TRenderCPU> r;
  EXPECT_EQ(nullptr, r->m_Textures);
  EXPECT_EQ((std::vector<unsigned int>{1}), Gen(*r, 1));
  const unsigned int one = 1;
  r->DeleteTextures(1, &one);
  EXPECT_EQ((std::vector<unsigned int>{1, 2, 3}), Gen(*r, 3));
  const unsigned int gone[2] = {1, 3};
  r->DeleteTextures(2, gone);
  EXPECT_EQ((std::vector<unsigned int>{1, 3, 4}), Gen(*r, 3));
  EXPECT_EQ(1u, r->m_Textures->RefCount);
  EXPECT_EQ(nullptr, r->m_Textures->Surfaces[0]) << "0 is never given out";
  for (unsigned int id = 1; id <= 4; ++id) {
    EXPECT_EQ(nullptr, r->m_Textures->Surfaces[id]->Data) << "an empty surface";
  }
}

TEST(Textures, NoNamesAskedForMakesNothing) {
  THeld<TRenderCPU> r;
  unsigned int id = 77;
  r->GenTextures(0, &id);
  EXPECT_EQ(nullptr, r->m_Textures);
  r->GenTextures(-3, &id);
  EXPECT_EQ(77u, id);
}

TEST(Textures, NamesWithoutASurfaceWaitForTheCaller) {
  THeld<TRenderCPU> r;
  Gen(*r, 1);
  unsigned int id = 0;
  r->_GenTextures(1, false, &id);
  EXPECT_EQ(2u, id);
  EXPECT_FALSE(r->IsTexture(2));
  unsigned int again = 0;
  r->_GenTextures(1, false, &again);
  EXPECT_EQ(2u, again);
}

TEST(Textures, IsTextureLooksForASurface) {
  THeld<TRenderCPU> r;
  EXPECT_FALSE(r->IsTexture(1)) << "without a table";
  Gen(*r, 2);
  EXPECT_FALSE(r->IsTexture(0));
  EXPECT_TRUE(r->IsTexture(1));
  EXPECT_TRUE(r->IsTexture(2));
  EXPECT_FALSE(r->IsTexture(3));
  EXPECT_FALSE(r->IsTexture(0xFFFFFFFF));
  const unsigned int two = 2;
  r->DeleteTextures(1, &two);
  EXPECT_FALSE(r->IsTexture(2));
  EXPECT_EQ(0u, r->GetError());
}

TEST(Textures, WithoutATableNoNameIsRead) {
  THeld<TRenderCPU> r;
  r->DeleteTextures(1000000, nullptr);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Textures, MovingNothingIsRefused) {
  THeld<TRenderCPU> r;
  r->BindTexture(GL_TEXTURE_2D, Gen(*r, 1)[0]);
  EXPECT_EQ(nullptr, r->m_TexUnits[0].Sampler.GetSurface()->Data);
  EXPECT_FALSE(r->MoveTexImage2D(GL_TEXTURE_2D, 0, nullptr));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError());
}

TEST(Textures, DeletingIgnoresWhatIsNotThere) {
  THeld<TRenderCPU> r;
  const unsigned int ids[5] = {0, 1, 1, 99, 0xFFFFFFFF};
  r->DeleteTextures(5, ids); // without a table
  Gen(*r, 2);
  r->DeleteTextures(0, ids + 1);
  r->DeleteTextures(-1, ids + 1);
  EXPECT_TRUE(r->IsTexture(1));
  r->DeleteTextures(5, ids);
  EXPECT_FALSE(r->IsTexture(1));
  EXPECT_TRUE(r->IsTexture(2));
  EXPECT_EQ(0u, r->GetError());
}

TEST(Textures, DeletingABoundTextureLeavesItsUnitsWithTheBorder) {
  TTextured t;
  t->ActiveTexture(GL_TEXTURE0 + 3);
  t->BindTexture(GL_TEXTURE_2D, 1);
  t->ActiveTexture(GL_TEXTURE0 + 5);
  Gen(*t, 1);
  t->BindTexture(GL_TEXTURE_2D, 2);
  const unsigned int id = 1;
  t->DeleteTextures(1, &id);
  for (const int unit : {0, 3}) {
    EXPECT_EQ(nullptr, t.Sampler(unit).m_Surface);
    EXPECT_EQ(0, t.Sampler(unit).m_SurfaceWidth);
    EXPECT_EQ(0, t.Sampler(unit).m_SurfaceHeight);
    EXPECT_TRUE(t.Sampler(unit).m_GetValue == &TTexSampler::GetValueBorder);
  }
  EXPECT_EQ(t->m_Textures->Surfaces[2], t.Sampler(5).m_Surface);
}

TEST(Textures, AttachingHandsASurfaceToTheTable) {
  THeld<TRenderCPU> r;
  TDataSurface* surface = new TDataSurface;
  surface->Create(3, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  const unsigned int id = r->AttachTexture(surface);
  EXPECT_EQ(1u, id);
  EXPECT_TRUE(r->IsTexture(id));
  r->BindTexture(GL_TEXTURE_2D, id);
  EXPECT_EQ(surface, r->m_TexUnits[0].Sampler.GetSurface());
  EXPECT_EQ(3, r->m_TexUnits[0].Sampler.m_SurfaceWidth);
  EXPECT_EQ((std::vector<unsigned int>{2}), Gen(*r, 1));
}

TEST(Textures, DetachingTakesASurfaceOut) {
  TTextured t;
  EXPECT_EQ(nullptr, t->DetachTexture(0)) << "whose entry is null";
  EXPECT_EQ(nullptr, t->DetachTexture(2));
  EXPECT_EQ(nullptr, t->DetachTexture(0xFFFFFFFF));
  EXPECT_EQ(nullptr, THeld<TRenderCPU>()->DetachTexture(1)) << "without a table";
  TDataSurface* surface = t->DetachTexture(1);
  ASSERT_NE(nullptr, surface);
  EXPECT_EQ(10, surface->Data[0]);
  EXPECT_FALSE(t->IsTexture(1));
  EXPECT_EQ(surface, t.Sampler().GetSurface()) << "samplers are not told";
  V4 texel;
  t.Sampler().GetValue(V4{0, 0, 0, 1}, &texel);
  EXPECT_SAME_BITS(10 * 0.00392156862745098, texel.x);
  EXPECT_EQ(nullptr, t->DetachTexture(1));
  EXPECT_EQ((std::vector<unsigned int>{1}), Gen(*t, 1)) << "the name is free";
  t->BindTexture(GL_TEXTURE_2D, 1);
  delete surface;
}

TEST(Textures, BindingTakesTheSurfaceAndItsSize) {
  TTextured t;
  Gen(*t, 1);
  t->TexFilter2D(GL_LINEAR, GL_LINEAR);
  t->TexWrap2D(GL_CLAMP, GL_CLAMP_TO_EDGE);
  const auto chosen = t.Sampler().m_GetValue;
  t->BindTexture(GL_TEXTURE_2D, 2);
  EXPECT_EQ(&t.Texture(2), t.Sampler().m_Surface);
  EXPECT_EQ(0, t.Sampler().m_SurfaceWidth);
  EXPECT_TRUE(t.Sampler().m_GetValue == &TTexSampler::GetValueBorder) << "an empty surface";
  t->BindTexture(GL_TEXTURE_2D, 1);
  EXPECT_EQ(2, t.Sampler().m_SurfaceWidth);
  EXPECT_EQ(2, t.Sampler().m_SurfaceHeight);
  EXPECT_TRUE(t.Sampler().m_GetValue == chosen) << "filter and wrap are the unit's";
  t->BindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(nullptr, t.Sampler().m_Surface);
  EXPECT_EQ(0, t.Sampler().m_SurfaceHeight);
  EXPECT_EQ(0u, t->GetError());
}

TEST(Textures, BindingANullEntryIsABindOfNothing) {
  TTextured t;
  Gen(*t, 1);
  const unsigned int two = 2;
  t->DeleteTextures(1, &two);
  t->BindTexture(GL_TEXTURE_2D, 2);
  EXPECT_EQ(nullptr, t.Sampler().m_Surface);
  EXPECT_FALSE(t->IsTexture(2)) << "names are not made by binding";
}

TEST(Textures, BindingPastTheTableChangesNothing) {
  TTextured t;
  for (const unsigned int id : {2u, 999u, 0xFFFFFFFFu}) {
    t->BindTexture(GL_TEXTURE_2D, id);
    EXPECT_EQ(&t.Texture(), t.Sampler().m_Surface);
  }
  THeld<TRenderCPU> r;
  r->BindTexture(GL_TEXTURE_2D, 1);
  r->BindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(nullptr, r->m_Textures);
  EXPECT_EQ(0u, r->GetError());
  EXPECT_EQ(0u, t->GetError());
}

TEST(Textures, AnotherTargetThrowsBeforeAnythingElse) {
  TTextured t;
  float four[4] = {1, 1, 1, 1};
  unsigned char pixel[4] = {};
  const std::vector<std::function<void(unsigned int)>> calls = {
      [&](unsigned int target) { t->BindTexture(target, 0); },
      [&](unsigned int target) {
        t->TexImage2D(target, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
      },
      [&](unsigned int target) {
        t->TexSubImage2D(target, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
      },
      [&](unsigned int target) { t->TexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR); },
      [&](unsigned int target) { t->TexParameterf(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR); },
      [&](unsigned int target) { t->TexParameterfv(target, GL_TEXTURE_BORDER_COLOR, four); }};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(kWrongTarget, Thrown([&] { calls[i](3552); })) << i; // GL_TEXTURE_1D
    EXPECT_EQ("ERROR: TRenderCPU::BindTexture dont support type 3554",
              Thrown([&] { calls[i](3554); }));
    EXPECT_EQ("ERROR: TRenderCPU::BindTexture dont support type 4294967295",
              Thrown([&] { calls[i](0xFFFFFFFF); }));
    t->Begin(GL_POINTS);
    EXPECT_EQ(kWrongTarget, Thrown([&] { calls[i](3552); })) << i;
    t->End();
    EXPECT_EQ(0u, t->GetError()) << i;
  }
  EXPECT_TRUE(t.IsUntouched());
  EXPECT_EQ(9728u, t.Sampler().m_FilterMin);
}

TEST(Textures, ImagesAreRefusedBetweenBeginAndEnd) {
  TTextured t;
  unsigned char pixel[4] = {};
  const float four[4] = {1, 1, 1, 1};
  t->Begin(GL_POINTS);
  t->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->TexImage2D(GL_TEXTURE_2D, 9, GL_RGBA, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError()) << "before the values are looked at";
  t->TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->TexSubImage2D(GL_TEXTURE_2D, 5, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->TexParameterf(GL_TEXTURE_2D, 1, 2);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, four);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->End();
  EXPECT_TRUE(t.IsUntouched());
  EXPECT_EQ(10497u, t.Sampler().m_WrapS);
  EXPECT_EQ(0, t.Sampler().m_BorderColor.x);
}

TEST(Textures, TexImageNeedsABoundSurfaceAndPlainValues) {
  THeld<TRenderCPU> r;
  r->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());

  const struct {
    int Level, Internal, Width, Height, Border;
    unsigned int Format;
  } refused[] = {{1, 6408, 2, 2, 0, 6408},  {-1, 6408, 2, 2, 0, 6408}, {0, 6408, 0, 2, 0, 6408},
                 {0, 6408, -1, 2, 0, 6408}, {0, 6408, 2, 0, 0, 6408},  {0, 6408, 2, -5, 0, 6408},
                 {0, 6408, 2, 2, 1, 6408},  {0, 6408, 2, 2, -1, 6408}, {0, 0x8058, 2, 2, 0, 6408},
                 {0, 6407, 2, 2, 0, 6408}, // GL_RGBA8, GL_RGB
                 {0, 4, 2, 2, 0, 6408},     {0, 6408, 2, 2, 0, 6407}};
  for (const auto& row : refused) {
    TTextured t;
    const unsigned char pixels[64] = {};
    t->TexImage2D(GL_TEXTURE_2D, row.Level, row.Internal, row.Width, row.Height, row.Border,
                  row.Format, GL_UNSIGNED_BYTE, pixels);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError())
        << row.Level << " " << row.Internal << " " << row.Width;
    EXPECT_TRUE(t.IsUntouched());
  }
}

TEST(Textures, TexImageStoresWhatItIsGiven) {
  const struct {
    unsigned int Format;
    int Channels;
  } formats[] = {{0x1903, 1}, {0x1909, 1}, {0x8227, 2}, {0x190A, 2}, {0x1907, 3}, {0x1908, 4}};
  const struct {
    unsigned int GL, Data, Size;
  } types[] = {{0x1401, 3, 1}, {0x1406, 10, 4}, {0x140A, 11, 8}};
  for (const auto& format : formats) {
    for (const auto& type : types) {
      TTextured t;
      t->PixelStorei(GL_UNPACK_ROW_LENGTH, 50); // plays no part
      t->PixelStorei(GL_UNPACK_SKIP_ROWS, 3);
      t->PixelStorei(GL_UNPACK_ALIGNMENT, 8);
      const std::size_t size = 3 * 2 * static_cast<std::size_t>(format.Channels) * type.Size;
      std::vector<unsigned char> pixels(size);
      for (std::size_t i = 0; i < size; ++i) {
        pixels[i] = static_cast<unsigned char>(i * 7);
      }
      t->TexImage2D(GL_TEXTURE_2D, 0, static_cast<int>(format.Format), 3, 2, 0, format.Format,
                    type.GL, pixels.data());
      EXPECT_EQ(0u, t->GetError());
      const TDataSurface& s = t.Texture();
      EXPECT_EQ(3, s.Width);
      EXPECT_EQ(2, s.Height);
      EXPECT_EQ(format.Channels, s.Channels);
      EXPECT_EQ(type.Data, static_cast<unsigned int>(s.Type));
      EXPECT_EQ(s.PixelStride * 3, s.RowStride);
      ASSERT_EQ(size, s.DataSize);
      EXPECT_EQ(pixels, BytesOf(&s));
      EXPECT_EQ(&s, t.Sampler().m_Surface);
      EXPECT_EQ(3, t.Sampler().m_SurfaceWidth);
      EXPECT_EQ(2, t.Sampler().m_SurfaceHeight);
      EXPECT_FALSE(t.Sampler().m_GetValue == &TTexSampler::GetValueBorder);
      if (format.Channels == 4) {
        EXPECT_EQ(6u, static_cast<unsigned int>(s.Format));
      }
    }
  }
}

TEST(Textures, TexImageWithoutPixelsIsZero) {
  TTextured t;
  t->TexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 3, 3, 0, GL_RGB, GL_FLOAT, nullptr);
  EXPECT_EQ(0u, t->GetError());
  EXPECT_EQ(std::vector<std::uint8_t>(108, 0), BytesOf(&t.Texture()));
}

TEST(Textures, AFormatOrTypeWithoutAMappingIsAnInvalidOperation) {
  TTextured t;
  const unsigned char pixels[256] = {};
  t->TexImage2D(GL_TEXTURE_2D, 0, 0x1902, 2, 2, 0, 0x1902, GL_UNSIGNED_BYTE, pixels);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError()); // GL_DEPTH_COMPONENT
  t->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, 0x8033, pixels);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError()); // GL_UNSIGNED_SHORT_4_4_4_4
  DrawFullQuad(*t);
}

TEST(Textures, AnAbsurdSizeIsAnInvalidOperation) {
  TTextured t;
  t->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0x7FFFFFFF, 0x7FFFFFFF, 0, GL_RGBA, GL_DOUBLE, nullptr);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
  t->Enable(GL_TEXTURE_2D);
  DrawFullQuad(*t); // with whatever is left of the texture
}

TEST(Textures, SixteenBitTexturesAreStoredAndSampleAsTheBorder) {
  TTextured t;
  t->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, 0x1403, nullptr);
  EXPECT_EQ(0u, t->GetError());
  EXPECT_EQ(5u, static_cast<unsigned int>(t.Texture().Type));
  EXPECT_TRUE(t.Sampler().m_GetValue == &TTexSampler::GetValueBorder);
}

TEST(Textures, ARemadeTextureIsSafeOnEveryUnitThatHasIt) {
  TTextured t;
  t->ActiveTexture(GL_TEXTURE0 + 1);
  t->BindTexture(GL_TEXTURE_2D, 1);
  t->ActiveTexture(GL_TEXTURE0 + 2);
  t->BindTexture(GL_TEXTURE_2D, 1);
  t->TexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 1, 1, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, nullptr);
  for (int unit = 0; unit < 3; ++unit) {
    V4 texel;
    t.Sampler(unit).GetValue(V4{0.99, 0.99, 0, 1}, &texel); // the sanitizers look on
    EXPECT_EQ(0, texel.x);
  }
}

TEST(Textures, TexSubImageReplacesARectangle) {
  TTextured t;
  const unsigned char pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  t->TexSubImage2D(GL_TEXTURE_2D, 0, 1, 0, 1, 2, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  EXPECT_EQ(0u, t->GetError());
  EXPECT_EQ((std::vector<std::uint8_t>{10, 11, 12, 13, 1, 2, 3, 4, 18, 19, 20, 21, 5, 6, 7, 8}),
            BytesOf(&t.Texture()));
}

TEST(Textures, TexSubImageIsCutAtTheFarEdges) {
  TTextured t;
  unsigned char pixels[36];
  for (std::size_t i = 0; i < 36; ++i) {
    pixels[i] = static_cast<unsigned char>(100 + i);
  }
  t->TexSubImage2D(GL_TEXTURE_2D, 0, 1, 1, 3, 3, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  EXPECT_EQ(0u, t->GetError()) << "the far edge is not checked";
  EXPECT_EQ((std::vector<std::uint8_t>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 100, 101,
                                       102, 103}),
            BytesOf(&t.Texture()));
}

TEST(Textures, TexSubImageRefusesWhatDoesNotFit) {
  const struct {
    int Level, X, Y, Width, Height;
    unsigned int Format, Type;
  } refused[] = {
      {1, 0, 0, 1, 1, 6408, 5121},  {-1, 0, 0, 1, 1, 6408, 5121},  {0, -1, 0, 1, 1, 6408, 5121},
      {0, 2, 0, 1, 1, 6408, 5121},  {0, 0, -1, 1, 1, 6408, 5121},  {0, 0, 2, 1, 1, 6408, 5121},
      {0, 0, 0, 0, 1, 6408, 5121},  {0, 0, 0, -1, 1, 6408, 5121},  {0, 0, 0, 1, 0, 6408, 5121},
      {0, 0, 0, 1, -1, 6408, 5121}, {0, 0, 0, 1, 1, 6407, 5121},   {0, 0, 0, 1, 1, 6408, 5120},
      {0, 0, 0, 1, 1, 6408, 5126},  {0, 0, 0, 1, 1, 0x1909, 5121}, {0, 0, 0, 1, 1, 0, 5121},
      {0, 0, 0, 1, 1, 6408, 0}};
  const unsigned char pixels[64] = {};
  for (const auto& row : refused) {
    TTextured t;
    t->TexSubImage2D(GL_TEXTURE_2D, row.Level, row.X, row.Y, row.Width, row.Height, row.Format,
                     row.Type, pixels);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError())
        << row.X << " " << row.Y << " " << row.Width << " " << row.Format;
    EXPECT_TRUE(t.IsUntouched());
  }
  THeld<TRenderCPU> r;
  r->TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << "nothing bound";
}

TEST(Textures, MovingExchangesSurfaces) {
  TTextured t;
  TDataSurface image;
  image.Create(3, 1, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3);
  image.Data[0] = 200;
  const std::uint8_t *before = t.Texture().Data, *given = image.Data;
  EXPECT_TRUE(t->MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
  EXPECT_EQ(given, t.Texture().Data) << "no pixels are copied";
  EXPECT_EQ(before, image.Data);
  EXPECT_EQ(2, image.Width);
  EXPECT_EQ(10, image.Data[0]);
  EXPECT_EQ(3, t.Sampler().m_SurfaceWidth);
  EXPECT_EQ(1, t.Sampler().m_SurfaceHeight);
  // nearest; repeat, repeat; float 1; three components 2
  EXPECT_TRUE(t.Sampler().m_GetValue == TTexSampler::s_GetValueFuncs[6]);
  EXPECT_EQ(0u, t->GetError());
}

// The surface that is given may be a texture itself, and both may be bound to further units: each
// sampler then reads its surface by the size and the type that it has now.
TEST(Textures, MovingBetweenTexturesThatOtherUnitsHold) {
  TTextured t; // texture 1 on unit 0: two columns
  auto* const other = new TDataSurface;
  ASSERT_TRUE(other->Create(3, 5, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3));
  const unsigned int id = t->AttachTexture(other);
  const int width = t.Texture().Width;
  const int height = t.Texture().Height;
  ASSERT_NE(3, width);
  for (const unsigned int unit : {1u, 7u}) {
    t->ActiveTexture(GL_TEXTURE0 + unit);
    t->BindTexture(GL_TEXTURE_2D, id);
  }
  t->ActiveTexture(GL_TEXTURE0 + 4);
  t->BindTexture(GL_TEXTURE_2D, 1);
  const auto taken = t.Sampler(0).m_GetValue;
  const auto given = t.Sampler(1).m_GetValue;
  ASSERT_FALSE(taken == given);
  t->ActiveTexture(GL_TEXTURE0);
  EXPECT_TRUE(t->MoveTexImage2D(GL_TEXTURE_2D, 0, other));
  for (const int unit : {0, 4}) {
    EXPECT_EQ(3, t.Sampler(unit).m_SurfaceWidth) << unit;
    EXPECT_EQ(5, t.Sampler(unit).m_SurfaceHeight) << unit;
    EXPECT_TRUE(t.Sampler(unit).m_GetValue == given) << unit;
  }
  for (const int unit : {1, 7}) {
    EXPECT_EQ(other, t.Sampler(unit).m_Surface) << unit;
    EXPECT_EQ(width, t.Sampler(unit).m_SurfaceWidth) << unit;
    EXPECT_EQ(height, t.Sampler(unit).m_SurfaceHeight) << unit;
    EXPECT_TRUE(t.Sampler(unit).m_GetValue == taken) << unit;
  }
  EXPECT_EQ(width, other->Width);
  EXPECT_EQ(0u, t->GetError());
}

TEST(Textures, MovingRefusals) {
  TTextured t;
  TDataSurface image;
  const std::string at =
      "@virtual bool Zx3D::TRenderCPU::MoveTexImage2D(GLenum, int, TDataSurface *): ";
  EXPECT_EQ(at + "Unexpected Type 3552", Thrown([&] { t->MoveTexImage2D(3552, 0, &image); }));
  EXPECT_EQ(at + "Unexpected Type 3552", Thrown([&] { t->MoveTexImage2D(3552, 1, &image); }));
  EXPECT_EQ(at + "Unexpected Level 1",
            Thrown([&] { t->MoveTexImage2D(GL_TEXTURE_2D, 1, &image); }));
  EXPECT_EQ(0u, t->GetError());
  EXPECT_TRUE(t.IsUntouched());
  t->BindTexture(GL_TEXTURE_2D, 0);
  EXPECT_FALSE(t->MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, t->GetError());
}

TEST(Textures, DestroyLeavesTheSamplersWithNone) {
  TTextured t;
  t->ActiveTexture(GL_TEXTURE0 + 2);
  t->BindTexture(GL_TEXTURE_2D, 1);
  t->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  t->Destroy();
  EXPECT_EQ(nullptr, t->m_Textures);
  for (const int unit : {0, 2}) {
    EXPECT_EQ(nullptr, t.Sampler(unit).m_Surface);
    EXPECT_TRUE(t.Sampler(unit).m_GetValue == &TTexSampler::GetValueBorder);
  }
  EXPECT_EQ(9729u, t.Sampler(2).m_FilterMin) << "other state survives";
}
