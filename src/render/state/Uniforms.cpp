#include <ZxCore3D/render/TRenderCPU.h>

#include <cstring>

#include <ZxCore3D/render/common/Limits.h>

namespace Zx3D {

static constexpr int kCells = kUniformCells;
static constexpr int kDoubles = 4 * kCells;

// What would run past the last cell stores nothing at all.
static void SetUniform(TRenderCPU& gl, int location, const double* values, int count) {
  if (location < 0 || location >= kCells || 4 * location + count > kDoubles) {
    return;
  }
  std::memcpy(&gl.m_Uniforms[location], values, static_cast<std::size_t>(count) * sizeof(double));
}

static void SetUniform(TRenderCPU& gl, int location, const float* values, int count) {
  double wide[16];
  for (int i = 0; i < count; ++i) {
    wide[i] = values[i];
  }
  SetUniform(gl, location, wide, count);
}

static void SetUniform(TRenderCPU& gl, int location, const std::int32_t* values, int count) {
  if (location < 0 || location >= kCells) {
    return;
  }
  std::memcpy(&gl.m_Uniforms[location], values, static_cast<std::size_t>(count) * sizeof *values);
}

template <class T, class... TMore>
static void SetValues(TRenderCPU& gl, int location, T first, TMore... more) {
  const T values[] = {first, more...};
  SetUniform(gl, location, values, 1 + static_cast<int>(sizeof...(more)));
}

void TRenderCPU::Uniform(int location, bool v) {
  if (location >= 0 && location < kCells) {
    const unsigned char byte = v ? 1 : 0;
    std::memcpy(&m_Uniforms[location], &byte, 1);
  }
}

void TRenderCPU::Uniform(int location, unsigned int v) {
  SetValues(*this, location, static_cast<std::int32_t>(v));
}

void TRenderCPU::Uniform(int location, int v) { SetValues(*this, location, v); }

void TRenderCPU::Uniform(int location, int x, int y) { SetValues(*this, location, x, y); }

void TRenderCPU::Uniform(int location, int x, int y, int z) { SetValues(*this, location, x, y, z); }

void TRenderCPU::Uniform(int location, int x, int y, int z, int w) {
  SetValues(*this, location, x, y, z, w);
}

void TRenderCPU::Uniform(int location, float v) { SetValues(*this, location, v); }

void TRenderCPU::Uniform(int location, float x, float y) { SetValues(*this, location, x, y); }

void TRenderCPU::Uniform(int location, float x, float y, float z) {
  SetValues(*this, location, x, y, z);
}

void TRenderCPU::Uniform(int location, float x, float y, float z, float w) {
  SetValues(*this, location, x, y, z, w);
}

void TRenderCPU::Uniform(int location, double v) { SetValues(*this, location, v); }

void TRenderCPU::Uniform(int location, double x, double y) { SetValues(*this, location, x, y); }

void TRenderCPU::Uniform(int location, double x, double y, double z) {
  SetValues(*this, location, x, y, z);
}

void TRenderCPU::Uniform(int location, double x, double y, double z, double w) {
  SetValues(*this, location, x, y, z, w);
}

// --- Vectors and arrays

void TRenderCPU::Uniform2(int location, const float* v) { SetUniform(*this, location, v, 2); }

void TRenderCPU::Uniform3(int location, const float* v) { SetUniform(*this, location, v, 3); }

void TRenderCPU::Uniform4(int location, const float* v) { SetUniform(*this, location, v, 4); }

void TRenderCPU::Uniform(int location, const vec_t_<float, 2>& v) {
  SetUniform(*this, location, &v.x, 2);
}

void TRenderCPU::Uniform(int location, const vec_t_<double, 2>& v) {
  SetUniform(*this, location, &v.x, 2);
}

void TRenderCPU::Uniform(int location, const vec_t_<float, 3>& v) {
  SetUniform(*this, location, &v.x, 3);
}

void TRenderCPU::Uniform(int location, const vec_t_<double, 3>& v) {
  SetUniform(*this, location, &v.x, 3);
}

void TRenderCPU::Uniform(int location, const vec_t_<float, 4>& v) {
  SetUniform(*this, location, &v.x, 4);
}

void TRenderCPU::Uniform(int location, const vec_t_<double, 4>& v) {
  SetUniform(*this, location, &v.x, 4);
}

// --- Matrices, running on over the cells

void TRenderCPU::Uniform(int location, const MAT3<float>& m) {
  SetUniform(*this, location, m.m, 9);
}

void TRenderCPU::Uniform(int location, const MAT3<double>& m) {
  SetUniform(*this, location, m.m, 9);
}

void TRenderCPU::Uniform(int location, const MAT4<float>& m) {
  SetUniform(*this, location, m.m, 16);
}

void TRenderCPU::Uniform(int location, const MAT4<double>& m) {
  SetUniform(*this, location, m.m, 16);
}

} // namespace Zx3D
