// A host that is compiled with flags under which the compiler makes one rounding of a product and a
// sum (-march=native -ffp-contract=fast): what the headers' templates give is still, bit by bit,
// what the library gives. Ends with 1 if one result differs.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>

#include <ZxCore3D/ZxCore3D.h>

namespace {

constexpr int kRounds = 20000;
int s_Differences = 0;

template <class T> bool SameBits(const T* a, const T* b, int count) {
  return std::memcmp(a, b, sizeof(T) * static_cast<std::size_t>(count)) == 0;
}

template <class T> void Expect(const T* a, const T* b, int count, const char* what) {
  if (!SameBits(a, b, count) && ++s_Differences <= 10) {
    std::fprintf(stderr, "%s differs: %.17g and %.17g\n", what, double(a[0]), double(b[0]));
  }
}

/// Two roundings whatever the flags are: what is stored to a volatile is rounded.
template <class T> T Rounded(T value) {
  volatile T stored = value;
  return stored;
}

template <class T> T Product(T a, T b) { return Rounded<T>(a * b); }

template <class T> T DotOf(const T* a, const T* b, int count) {
  T sum = Product(a[0], b[0]);
  for (int i = 1; i < count; ++i) {
    sum = Rounded<T>(sum + Product(a[i], b[i]));
  }
  return sum;
}

std::mt19937_64 s_Random(12345);

template <class T> void Fill(T* values, int count) {
  std::uniform_real_distribution<double> value(-10.0, 10.0);
  for (int i = 0; i < count; ++i) {
    values[i] = static_cast<T>(value(s_Random));
  }
}

template <class T, std::size_t N> void Vectors() {
  for (int round = 0; round < kRounds; ++round) {
    vec_t_<T, N> a, b;
    Fill(&a[0], N), Fill(&b[0], N);
    const T sum = DotOf(&a[0], &b[0], N);
    const T got = dot(a, b);
    Expect(&got, &sum, 1, "dot");
    const T root = std::sqrt(DotOf(&a[0], &a[0], N));
    const T size = length(a);
    Expect(&size, &root, 1, "length");
  }
}

template <class T> vec_t_<T, 3> CrossOf(const vec_t_<T, 3>& a, const vec_t_<T, 3>& b) {
  return {Rounded<T>(Product(a.y, b.z) - Product(a.z, b.y)),
          Rounded<T>(Product(a.z, b.x) - Product(a.x, b.z)),
          Rounded<T>(Product(a.x, b.y) - Product(a.y, b.x))};
}

template <class T> void CrossAndPlane() {
  for (int round = 0; round < kRounds; ++round) {
    vec_t_<T, 3> p, q, r;
    Fill(&p.x, 3), Fill(&q.x, 3), Fill(&r.x, 3);
    const vec_t_<T, 3> product = cross(p, q);
    const vec_t_<T, 3> expected = CrossOf(p, q);
    Expect(&product.x, &expected.x, 3, "cross");
    const vec_t_<T, 3> n = CrossOf(q - p, r - p);
    const T scale = T(1) / std::sqrt(DotOf(&n.x, &n.x, 3));
    const UPLAIN<T> own = {n.x * scale, n.y * scale, n.z * scale, -DotOf(&p.x, &n.x, 3) * scale};
    const UPLAIN<T> plane = PlainThrough(p, q, r);
    Expect(&plane.a, &own.a, 4, "PlainThrough");
  }
}

/// The planes that the library itself makes from corners.
void Frusta() {
  constexpr int triples[6][3] = {{0, 4, 5}, {1, 2, 5}, {0, 1, 4}, {2, 3, 6}, {0, 3, 1}, {4, 5, 7}};
  for (int round = 0; round < kRounds / 10; ++round) {
    vec_t_<double, 3> corners[8];
    for (vec_t_<double, 3>& corner : corners) {
      Fill(&corner.x, 3);
    }
    TFrustum_T<double> frustum;
    SetCone(frustum, corners);
    for (int i = 0; i < 6; ++i) {
      const int* t = triples[i];
      const UPLAIN<double> plane = PlainThrough(corners[t[0]], corners[t[1]], corners[t[2]]);
      Expect(&plane.a, &frustum.Plains[i].a, 4, "PlainThrough and SetCone");
    }
  }
}

/// The products that the library itself makes on a matrix stack, and those of floats.
void Matrices() {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(4, 4, nullptr)) {
    ++s_Differences;
    return;
  }
  gl.MatrixMode(GL_MODELVIEW);
  for (int round = 0; round < kRounds; ++round) {
    MAT4<double> before, factor, product;
    Fill(before.m, 16), Fill(factor.m, 16);
    gl.LoadMatrixd(before.m);
    gl.MultMatrixd(factor.m);
    double own[16];
    gl.GetDoublev(GL_MODELVIEW_MATRIX, own);
    Mat4_Mul_Mat4(factor.m, before.m, product.m);
    Expect(product.m, own, 16, "Mat4_Mul_Mat4 and MultMatrix");

    MAT4<float> a, b, c, expected;
    Fill(a.m, 16), Fill(b.m, 16);
    Mat4_Mul_Mat4(a.m, b.m, c.m);
    for (std::size_t i = 0; i < 16; ++i) {
      const float column[4] = {b[i % 4], b[4 + i % 4], b[8 + i % 4], b[12 + i % 4]};
      expected[i] = DotOf(a.m + i / 4 * 4, column, 4);
    }
    Expect(c.m, expected.m, 16, "Mat4_Mul_Mat4 of floats");
  }
}

[[gnu::noinline]] double OwnSum(const double* v) { return v[0] * v[1] + v[2] * v[3]; }

/// Whether these flags do make one rounding of two: without it nothing above could fail.
bool FlagsContract() {
  for (int round = 0; round < kRounds; ++round) {
    double v[4];
    Fill(v, 4);
    const double own = OwnSum(v);
    const double twice = Rounded(Product(v[0], v[1]) + Product(v[2], v[3]));
    if (!SameBits(&own, &twice, 1)) {
      return true;
    }
  }
  return false;
}

} // namespace

int main() {
  Init_ZxCore3D();
  Vectors<double, 2>(), Vectors<double, 3>(), Vectors<double, 4>(), Vectors<double, 7>();
  Vectors<float, 2>(), Vectors<float, 3>(), Vectors<float, 4>(), Vectors<float, 7>();
  CrossAndPlane<double>(), CrossAndPlane<float>();
  Frusta();
  Matrices();
  Deinit_ZxCore3D();
  const bool contract = FlagsContract();
  std::printf("%d results differ; the host's own arithmetic is %s\n", s_Differences,
              contract ? "contracted" : "not contracted");
#ifdef __FMA__
  if (!contract) {
    std::fprintf(stderr, "the host was to be compiled with contraction\n");
    return 1;
  }
#endif
  return s_Differences == 0 ? 0 : 1;
}
