#include <ZxPixelKit/ZxPixelKit.h>
#include <ZxRunKit/ZxRunKit.h>

int main() {
  TDataSurface surface;
  return surface.Create(3, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4) &&
                 Zentrix::ssprintf("%d by %d", surface.Width, surface.Height) == "3 by 2"
             ? 0
             : 1;
}
