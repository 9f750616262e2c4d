#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>

#include <algorithm>

#include <ZxBaseKit/TZxMessage.h>

void mul(const TMatrixD& l, const TMatrixD& r, TMatrixD& res) {
  if (l.SizeX != r.SizeY) {
    throw TZxMessage("l.SizeX != r.SizeY");
  }
  if (res.SizeX != r.SizeX) {
    throw TZxMessage("res.SizeX != r.SizeX");
  }
  if (res.SizeY != l.SizeY) {
    throw TZxMessage("res.SizeY != l.SizeY");
  }
  for (unsigned long y = 0; y < l.SizeY; ++y) {
    for (unsigned long x = 0; x < r.SizeX; ++x) {
      double sum = 0.0;
      for (unsigned long k = 0; k < l.SizeX; ++k) {
        sum += l.Data[y * l.SizeX + k] * r.Data[k * r.SizeX + x];
      }
      res.Data[y * res.SizeX + x] = sum;
    }
  }
}

void mul(const TMatrixD& m, const TVectorD& v, TVectorD* res) {
  if (v.Size < m.SizeX || res->Size < m.SizeY) {
    return;
  }
  for (unsigned long y = 0; y < m.SizeY; ++y) {
    double sum = 0.0;
    for (unsigned long x = 0; x < m.SizeX; ++x) {
      sum += m.Data[y * m.SizeX + x] * v.Data[x];
    }
    res->Data[y] = sum;
  }
}

void transpose(const TMatrixD& m, TMatrixD& res) {
  if (m.SizeX == 0 || m.SizeY == 0 || (m.SizeX - 1) * res.SizeX + m.SizeY > res.SizeX * res.SizeY) {
    return;
  }
  for (unsigned long y = 0; y < m.SizeY; ++y) {
    for (unsigned long x = 0; x < m.SizeX; ++x) {
      res.Data[x * res.SizeX + y] = m.Data[y * m.SizeX + x];
    }
  }
}

void mul_mtm(const TMatrixD& a, TMatrixD* res) {
  const unsigned long n = a.SizeX;
  if (res->SizeX * res->SizeY < n * n) {
    return;
  }
  std::fill_n(res->Data, res->SizeX * res->SizeY, 0.0);
  for (unsigned long r = 0; r < a.SizeY; ++r) {
    for (unsigned long i = 0; i < n; ++i) {
      for (unsigned long j = 0; j < n; ++j) {
        res->Data[i * n + j] += a.Data[r * n + i] * a.Data[r * n + j];
      }
    }
  }
}

void mul_mtv(const TMatrixD& a, const TVectorD& v, TVectorD* res) {
  if (v.Size < a.SizeY || res->Size < a.SizeX) {
    return;
  }
  std::fill_n(res->Data, res->Size, 0.0);
  for (unsigned long r = 0; r < a.SizeY; ++r) {
    for (unsigned long x = 0; x < a.SizeX; ++x) {
      res->Data[x] += a.Data[r * a.SizeX + x] * v.Data[r];
    }
  }
}
