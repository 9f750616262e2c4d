#include <ZxPixelKit/Module.h>

#include <gtest/gtest.h>

#include <ZxPixelKit/TDataSurface.h>

TEST(PixelKitModule, OpenAndCloseInAnyNumber) {
  Deinit_ZxPixelKit();
  Init_ZxPixelKit();
  Init_ZxPixelKit();
  Deinit_ZxPixelKit();
  TDataSurface surface;
  EXPECT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  Deinit_ZxPixelKit();
  Deinit_ZxPixelKit();
  EXPECT_EQ(surface.Data[0], 0);
}
