// What `draw_vertices.py` is held against: the same draws from C++. Prints the seconds of processor
// time of the shortest draw, and a sum over the pixels.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>

static double Now() {
  timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class T> static std::vector<T> Read(const char* name) {
  std::ifstream file(name, std::ios::binary | std::ios::ate);
  std::vector<T> values(static_cast<std::size_t>(file.tellg()) / sizeof(T));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(T)));
  return values;
}

// VERTICES COLORS INDICES SIZE DRAWS: one round.
int main(int argc, char** argv) {
  if (argc != 6) {
    return 2;
  }
  const auto vertices = Read<float>(argv[1]);
  const auto colors = Read<float>(argv[2]);
  const auto indices = Read<unsigned int>(argv[3]);
  const int size = std::atoi(argv[4]);
  const int draws = std::atoi(argv[5]);
  Init_ZxCore3D();
  Zx3D::TRenderCPU gl;
  if (!gl.Create(size, size, nullptr)) {
    return 1;
  }
  gl.Enable(GL_DEPTH_TEST);
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.EnableClientState(GL_COLOR_ARRAY);
  double best = 1e9;
  for (int i = 0; i < draws; ++i) {
    const double begin = Now();
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl.VertexPointer(3, GL_FLOAT, 0, vertices.data());
    gl.ColorPointer(3, GL_FLOAT, 0, colors.data());
    if (indices.empty()) {
      gl.DrawArrays(GL_TRIANGLES, 0, static_cast<int>(vertices.size() / 3));
    } else {
      gl.DrawElements(GL_TRIANGLES, static_cast<int>(indices.size()), GL_UNSIGNED_INT,
                      indices.data());
    }
    best = std::min(best, Now() - begin);
  }
  unsigned int sum = 0;
  const TDataSurface* const surface = gl.GetColorSurface();
  for (std::uint64_t i = 0; i < surface->DataSize; ++i) {
    sum = sum * 31 + surface->Data[i];
  }
  std::printf("%.9f %u\n", best, sum);
  return 0;
}
