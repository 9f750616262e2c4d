#include <ZxCore3D/math/Solvers.h>

#include <ZxCore3D/math/private/InverseEx.h>

namespace {

constexpr double kTolerance = 1e-9;

} // namespace

bool inverse(const TMatrixD& m, TMatrixD& res) {
  const unsigned long n = m.SizeX;
  if (n == 0 || m.SizeY < n || res.SizeX * res.SizeY < n * n) {
    return false;
  }
  return InverseEx<double>(m.Data, n, res.Data, kTolerance, false, nullptr);
}

bool lsm(const TMatrixD& a, const TVectorD& b, TVectorD* x) {
  const unsigned long n = a.SizeX;
  if (n == 0 || b.Size < a.SizeY || x->Size < n) {
    return false;
  }
  TMatrixD normal(n, n);
  mul_mtm(a, &normal);
  TMatrixD inv(n, n);
  if (!inverse(normal, inv)) {
    return false;
  }
  TVectorD right(n);
  mul_mtv(a, b, &right);
  mul(inv, right, x);
  return true;
}
