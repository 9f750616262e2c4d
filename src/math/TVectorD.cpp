#include <ZxCore3D/math/TVectorD.h>

#include <algorithm>
#include <cmath>

#include <ZxCore3D/math/private/DenseStorage.h>
#include <ZxRunKit/Format.h>

TVectorD::TVectorD(unsigned long n) { Create(n); }

TVectorD::TVectorD(const TVectorD& other) {
  Create(other.Size);
  std::copy_n(other.Data, Size, Data);
}

TVectorD::TVectorD(TVectorD&& other) noexcept { Swap(other); }

TVectorD& TVectorD::operator=(const TVectorD& other) {
  if (this != &other) {
    Create(other.Size);
    std::copy_n(other.Data, Size, Data);
  }
  return *this;
}

TVectorD& TVectorD::operator=(TVectorD&& other) noexcept {
  Destroy();
  Swap(other);
  return *this;
}

void TVectorD::Destroy() noexcept {
  if (Owned) {
    zx_math::FreeDoubles(Data);
  }
  Size = 0;
  Data = nullptr;
  Owned = false;
}

void TVectorD::Create(unsigned long n) { Create(n, nullptr); }

void TVectorD::Create(unsigned long n, double* p) {
  if (!p && n == Size) {
    return;
  }
  Destroy();
  if (n != 0) {
    Data = p ? p : zx_math::AllocateDoubles(n);
    Owned = !p;
    Size = n;
  }
}

void TVectorD::Swap(TVectorD& other) noexcept {
  std::swap(Size, other.Size);
  std::swap(Data, other.Data);
  std::swap(Owned, other.Owned);
}

void TVectorD::Fill(double value) { std::fill_n(Data, Size, value); }

bool TVectorD::operator==(const TVectorD& other) const {
  return Size == other.Size && std::equal(Data, Data + Size, other.Data);
}

void fill(TVectorD& v, double value) { v.Fill(value); }

double NormSqr(const TVectorD& v) { return dot(v, v); }

double Norm(const TVectorD& v) { return std::sqrt(NormSqr(v)); }

void add(TVectorD& l, const TVectorD& r) {
  if (r.Size < l.Size) {
    return;
  }
  for (unsigned long i = 0; i < l.Size; ++i) {
    l.Data[i] += r.Data[i];
  }
}

void sub(const TVectorD& l, const TVectorD& r, TVectorD* res) {
  if (r.Size < l.Size || res->Size < l.Size) {
    return;
  }
  for (unsigned long i = 0; i < l.Size; ++i) {
    res->Data[i] = l.Data[i] - r.Data[i];
  }
}

double dot(const TVectorD& a, const TVectorD& b) {
  double sum = 0.0;
  if (b.Size < a.Size) {
    return sum;
  }
  for (unsigned long i = 0; i < a.Size; ++i) {
    sum += a.Data[i] * b.Data[i];
  }
  return sum;
}

TVectorD operator+(const TVectorD& l, const TVectorD& r) {
  TVectorD sum(l.Size);
  if (r.Size < l.Size) {
    sum.Fill(0.0);
    return sum;
  }
  for (unsigned long i = 0; i < l.Size; ++i) {
    sum.Data[i] = l.Data[i] + r.Data[i];
  }
  return sum;
}

TVectorD operator-(const TVectorD& l, const TVectorD& r) {
  TVectorD difference(l.Size);
  if (r.Size < l.Size) {
    difference.Fill(0.0);
    return difference;
  }
  sub(l, r, &difference);
  return difference;
}

std::string ToString(const TVectorD& v) {
  std::string text = "{";
  for (unsigned long i = 0; i < v.Size; ++i) {
    text += Zentrix::ssprintf(i + 1 < v.Size ? "%0.16f, " : "%0.16f", v.Data[i]);
  }
  return text + "}";
}
