// compare_pictures A B: ends with 0 if two image files have the same size and channels, and no byte
// of one differs from that of the other by more than 1: the mathematics library of another system
// may round a cosine or a power differently in its last bit.

#include <cstdio>
#include <cstdlib>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

namespace {

bool Load(const char* name, TDataSurface* out) {
  DATASURFACE record = {};
  if (!LoadImage(name, nullptr, &record)) {
    std::fprintf(stderr, "%s can't be read\n", name);
    return false;
  }
  out->Adopt(record);
  return true;
}

bool Same(const TDataSurface& a, const TDataSurface& b) {
  if (a.Width != b.Width || a.Height != b.Height || a.Channels != b.Channels || a.Type != b.Type) {
    std::fprintf(stderr, "%d by %d with %d channels, and %d by %d with %d\n", a.Width, a.Height,
                 a.Channels, b.Width, b.Height, b.Channels);
    return false;
  }
  unsigned long different = 0;
  for (unsigned long i = 0; i < a.DataSize; ++i) {
    different += std::abs(a.Data[i] - b.Data[i]) > 1;
  }
  if (different != 0) {
    std::fprintf(stderr, "%lu of %lu bytes differ\n", different,
                 static_cast<unsigned long>(a.DataSize));
  }
  return different == 0;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: compare_pictures A B\n");
    return 2;
  }
  Init_ZxCore3D();
  bool same = false;
  {
    TDataSurface a, b;
    same = Load(argv[1], &a) && Load(argv[2], &b) && Same(a, b);
  }
  Deinit_ZxCore3D();
  return same ? 0 : 1;
}
