#include <ZxCore3D/math/TMatrixStr.h>

#include <algorithm>

#include <ZxCore3D/math/private/DenseStorage.h>

namespace {

void AppendTerm(std::string& text, bool first, const std::string& l, const std::string& r) {
  if (!first) {
    text += " + ";
  }
  text += l;
  text += " * ";
  text += r;
}

bool Holds(const TMatrixStr& m, unsigned long sizeX, unsigned long sizeY) {
  return m.SizeX >= sizeX && m.SizeY >= sizeY;
}

} // namespace

TVectorStr::TVectorStr() : Size(0) {}

TVectorStr::TVectorStr(unsigned long n) : Data(n), Size(n) {}

TMatrixStr::TMatrixStr() : SizeX(0), SizeY(0) {}

TMatrixStr::TMatrixStr(unsigned long sizeX, unsigned long sizeY)
    : Data(zx_math::ElementCount(sizeX, sizeY)), SizeX(sizeX), SizeY(sizeY) {}

void fill(TVectorStr& v, const std::string& s) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): `s` may be an element.
  const std::string text = s;
  std::fill(v.Data.begin(), v.Data.end(), text);
}

void fill(TMatrixStr& m, const std::string& s) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): `s` may be an element.
  const std::string text = s;
  std::fill(m.Data.begin(), m.Data.end(), text);
}

void mul(const TVectorStr& v, const std::string& s, TVectorStr* res) {
  if (res->Size < v.Size) {
    return;
  }
  // A copy, since `s` may be an element of `res`.
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const std::string factor = s;
  for (unsigned long i = 0; i < v.Size; ++i) {
    (*res)(i) = v(i) + " * " + factor;
  }
}

void col(const TMatrixStr& m, unsigned long x, TVectorStr* res) {
  if (x >= m.SizeX || res->Size < m.SizeY) {
    return;
  }
  for (unsigned long y = 0; y < m.SizeY; ++y) {
    (*res)(y) = m(y, x);
  }
}

void row(const TMatrixStr& m, unsigned long y, TVectorStr* res) {
  if (y >= m.SizeY || res->Size < m.SizeX) {
    return;
  }
  for (unsigned long x = 0; x < m.SizeX; ++x) {
    (*res)(x) = m(y, x);
  }
}

void mul(const TMatrixStr& m, const TVectorStr& v, TVectorStr* res) {
  if (v.Size < m.SizeX || res->Size < m.SizeY) {
    return;
  }
  for (unsigned long y = 0; y < m.SizeY; ++y) {
    std::string text;
    for (unsigned long k = 0; k < m.SizeX; ++k) {
      AppendTerm(text, k == 0, m(y, k), v(k));
    }
    (*res)(y) = std::move(text);
  }
}

void mul(const TMatrixStr& l, const TMatrixStr& r, TMatrixStr* res) {
  if (!Holds(r, l.SizeX, l.SizeX) || !Holds(*res, l.SizeX, l.SizeY)) {
    return;
  }
  for (unsigned long y = 0; y < l.SizeY; ++y) {
    for (unsigned long x = 0; x < l.SizeX; ++x) {
      std::string text;
      for (unsigned long k = 0; k < l.SizeX; ++k) {
        AppendTerm(text, k == 0, l(y, k), r(k, x));
      }
      (*res)(y, x) = std::move(text);
    }
  }
}

std::string dot(const TVectorStr& a, const TVectorStr& b) {
  std::string text;
  if (b.Size < a.Size) {
    return text;
  }
  for (unsigned long i = 0; i < a.Size; ++i) {
    AppendTerm(text, i == 0, a(i), b(i));
  }
  return text;
}

void outer_dot(const TVectorStr& a, const TVectorStr& b, TMatrixStr* res) {
  if (!Holds(*res, b.Size, a.Size)) {
    return;
  }
  for (unsigned long i = 0; i < a.Size; ++i) {
    for (unsigned long j = 0; j < b.Size; ++j) {
      (*res)(i, j) = a(i) + " * " + b(j);
    }
  }
}
