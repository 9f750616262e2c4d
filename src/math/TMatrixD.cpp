#include <ZxCore3D/math/TMatrixD.h>

#include <algorithm>
#include <cmath>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/math/private/DenseStorage.h>
#include <ZxRunKit/Format.h>

namespace {

unsigned long Count(const TMatrixD& m) { return m.SizeX * m.SizeY; }

bool SameShape(const TMatrixD& a, const TMatrixD& b) {
  return a.SizeX == b.SizeX && a.SizeY == b.SizeY;
}

} // namespace

TMatrixD::TMatrixD(unsigned long sizeX, unsigned long sizeY) { Create(sizeX, sizeY); }

TMatrixD::TMatrixD(unsigned long sizeX, unsigned long sizeY, double* p) { Create(sizeX, sizeY, p); }

TMatrixD::TMatrixD(const TMatrixD& other) {
  Create(other.SizeX, other.SizeY);
  std::copy_n(other.Data, Count(other), Data);
}

TMatrixD::TMatrixD(TMatrixD&& other) noexcept { Swap(other); }

TMatrixD& TMatrixD::operator=(const TMatrixD& other) {
  if (this != &other) {
    Create(other.SizeX, other.SizeY);
    std::copy_n(other.Data, Count(other), Data);
  }
  return *this;
}

TMatrixD& TMatrixD::operator=(TMatrixD&& other) noexcept {
  Destroy();
  Swap(other);
  return *this;
}

void TMatrixD::Destroy() noexcept {
  if (Owned) {
    zx_math::FreeDoubles(Data);
  }
  SizeX = 0;
  SizeY = 0;
  Data = nullptr;
  Owned = false;
}

void TMatrixD::Create(unsigned long sizeX, unsigned long sizeY) { Create(sizeX, sizeY, nullptr); }

void TMatrixD::Create(unsigned long sizeX, unsigned long sizeY, double* p) {
  if (!p && sizeX == SizeX && sizeY == SizeY) {
    return;
  }
  Destroy();
  const unsigned long count = zx_math::ElementCount(sizeX, sizeY);
  if (count != 0) {
    Data = p ? p : zx_math::AllocateDoubles(count);
    Owned = !p;
  }
  SizeX = sizeX;
  SizeY = sizeY;
}

void TMatrixD::Swap(TMatrixD& other) noexcept {
  std::swap(SizeX, other.SizeX);
  std::swap(SizeY, other.SizeY);
  std::swap(Data, other.Data);
  std::swap(Owned, other.Owned);
}

void TMatrixD::SetIdentity() {
  if (SizeX != SizeY) {
    throw TZxMessage("SizeX != SizeY");
  }
  std::fill_n(Data, Count(*this), 0.0);
  for (unsigned long i = 0; i < SizeX; ++i) {
    Data[i * SizeX + i] = 1.0;
  }
}

void fill(TMatrixD& m, double value) { std::fill_n(m.Data, Count(m), value); }

bool abs(const TMatrixD& m, TMatrixD& res) {
  if (!SameShape(m, res)) {
    return false;
  }
  for (unsigned long i = 0; i < Count(m); ++i) {
    res.Data[i] = std::fabs(m.Data[i]);
  }
  return true;
}

void add(TMatrixD& l, const TMatrixD& r) {
  if (Count(r) < Count(l)) {
    return;
  }
  for (unsigned long i = 0; i < Count(l); ++i) {
    l.Data[i] += r.Data[i];
  }
}

bool diff(const TMatrixD& l, const TMatrixD& r, TMatrixD& res) {
  if (!SameShape(l, r) || !SameShape(l, res)) {
    return false;
  }
  for (unsigned long i = 0; i < Count(l); ++i) {
    res.Data[i] = l.Data[i] - r.Data[i];
  }
  return true;
}

void mul(const TMatrixD& m, double s) {
  for (unsigned long i = 0; i < Count(m); ++i) {
    m.Data[i] *= s;
  }
}

double min(const TMatrixD& m) {
  if (Count(m) == 0) {
    throw TZxMessage("m is empty");
  }
  double least = m.Data[0];
  for (unsigned long i = 1; i < Count(m); ++i) {
    if (m.Data[i] < least) {
      least = m.Data[i];
    }
  }
  return least;
}

double max(const TMatrixD& m) {
  if (Count(m) == 0) {
    throw TZxMessage("m is empty");
  }
  double greatest = m.Data[0];
  for (unsigned long i = 1; i < Count(m); ++i) {
    if (m.Data[i] > greatest) {
      greatest = m.Data[i];
    }
  }
  return greatest;
}

double summ(const TMatrixD& m) {
  double sum = 0.0;
  for (unsigned long i = 0; i < Count(m); ++i) {
    sum += m.Data[i];
  }
  return sum;
}

bool equal(const TMatrixD& a, TMatrixD& b, double tol) {
  if (!SameShape(a, b)) {
    return false;
  }
  for (unsigned long i = 0; i < Count(a); ++i) {
    if (std::fabs(a.Data[i] - b.Data[i]) > tol) {
      return false;
    }
  }
  return true;
}

void outer_dot(const TVectorD& a, const TVectorD& b, TMatrixD* res) {
  res->Create(b.Size, a.Size);
  for (unsigned long y = 0; y < a.Size; ++y) {
    for (unsigned long x = 0; x < b.Size; ++x) {
      res->Data[y * b.Size + x] = a.Data[y] * b.Data[x];
    }
  }
}

TVectorD operator*(const TMatrixD& m, const TVectorD& v) {
  TVectorD product(m.SizeY);
  if (v.Size < m.SizeX) {
    product.Fill(0.0);
    return product;
  }
  mul(m, v, &product);
  return product;
}

std::string ToString(const TMatrixD& m) {
  std::string text = "{";
  for (unsigned long i = 0; i < Count(m); ++i) {
    if (i != 0) {
      text += i % m.SizeX == 0 ? ",\n" : ", ";
    }
    text += Zentrix::ssprintf("%0.16f", m.Data[i]);
  }
  return Count(m) == 0 ? text : text + "}";
}
