#include <ZxDrawKit/ZxDrawKit.h>

#include <type_traits>

#include <gtest/gtest.h>

TEST(Module, OpensAndClosesAnyNumberOfTimes) {
  Deinit_ZxDrawKit(); // without an open one it does nothing
  Init_ZxDrawKit();
  Init_ZxDrawKit();
  Deinit_ZxDrawKit();
  Deinit_ZxDrawKit();
  Deinit_ZxDrawKit();
}

TEST(TZxGLSurface, IsACountedObjectThatHostsDeriveFrom) {
  class TPlace : public TZxGLSurface {
  public:
    explicit TPlace(bool* deleted) : m_Deleted(deleted) {}
    ~TPlace() override { *m_Deleted = true; }

  private:
    bool* m_Deleted;
  };
  static_assert(std::is_base_of_v<zx::TRef, TZxGLSurface>);
  bool deleted = false;
  TZxGLSurface* surface = new TPlace(&deleted);
  EXPECT_EQ(surface->AddRef(), 2u);
  EXPECT_EQ(surface->Release(), 1u);
  EXPECT_FALSE(deleted);
  EXPECT_EQ(surface->Release(), 0u);
  EXPECT_TRUE(deleted);
}

TEST(TZxGLBitmap, StartsEmpty) {
  const TZxGLBitmap bitmap;
  EXPECT_EQ(bitmap.Width, 0);
  EXPECT_EQ(bitmap.Height, 0);
  EXPECT_EQ(bitmap.OriginX, 0.0f);
  EXPECT_EQ(bitmap.OriginY, 0.0f);
  EXPECT_EQ(bitmap.Data, nullptr);
}
