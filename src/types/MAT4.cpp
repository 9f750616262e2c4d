#include <ZxCore3D/types/MAT4.h>

const MAT4<double> g_M4Ed = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
const MAT4<float> g_M4Ef = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

template <class T> static void MultiplyMatrices(const T* a, const T* b, T* out) {
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      out[4 * i + j] = a[4 * i] * b[j] + a[4 * i + 1] * b[4 + j] + a[4 * i + 2] * b[8 + j] +
                       a[4 * i + 3] * b[12 + j];
    }
  }
}

template <> void Mat4_Mul_Mat4<double>(const double* a, const double* b, double* out) {
  MultiplyMatrices(a, b, out);
}

template <> void Mat4_Mul_Mat4<float>(const float* a, const float* b, float* out) {
  MultiplyMatrices(a, b, out);
}
