#include "SmallStack.h"

#include <filesystem>
#include <string>

#include <unistd.h>

#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

#include "ImageFiles.h"

TEST(SmallStack, HoldsLoadingAndSavingOfEveryKind) {
  zx_test::OnASmallStack([] {
    for (const TNamedFile& file : SmallFiles()) {
      const TLoaded loaded(file.Bytes);
      EXPECT_TRUE(loaded.Done) << file.Name;
    }
    for (const std::string ending : {".png", ".bmp", ".tga", ".jpg", ".hdr"}) {
      TDataSurface surface;
      EXPECT_TRUE(surface.Create(300, 200, DATA_FORMAT_RGB,
                                 ending == ".hdr" ? DATA_TYPE_FLOAT : DATA_TYPE_UINT8, 3));
      const std::string name =
          (std::filesystem::temp_directory_path() / ("zx_small_" + std::to_string(getpid())))
              .string() +
          ending;
      EXPECT_TRUE(SaveImage(name, nullptr, surface)) << ending;
      TDataSurface back;
      EXPECT_TRUE(LoadImage(name, nullptr, &back)) << ending;
      std::filesystem::remove(name);
    }
  });
}
