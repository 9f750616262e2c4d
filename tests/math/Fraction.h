#pragma once

#include <cstdlib>
#include <numeric>

namespace exact {

/// A fraction in lowest terms with a positive denominator; for small numbers, no overflow is looked
/// for.
class TNumber {
public:
  TNumber(long long value = 0) : m_Up(value), m_Down(1) {}
  TNumber(long long up, long long down) : m_Up(up), m_Down(down) {
    const long long divisor = std::gcd(up, down) * (down < 0 ? -1 : 1);
    m_Up /= divisor;
    m_Down /= divisor;
  }

  double ToDouble() const { return static_cast<double>(m_Up) / static_cast<double>(m_Down); }
  /// -1, 0 or 1.
  int Sign() const { return m_Up < 0 ? -1 : m_Up > 0 ? 1 : 0; }

  friend TNumber operator+(const TNumber& a, const TNumber& b) {
    return {a.m_Up * b.m_Down + b.m_Up * a.m_Down, a.m_Down * b.m_Down};
  }
  friend TNumber operator-(const TNumber& a, const TNumber& b) {
    return {a.m_Up * b.m_Down - b.m_Up * a.m_Down, a.m_Down * b.m_Down};
  }
  friend TNumber operator*(const TNumber& a, const TNumber& b) {
    return {a.m_Up * b.m_Up, a.m_Down * b.m_Down};
  }
  friend TNumber operator/(const TNumber& a, const TNumber& b) {
    return {a.m_Up * b.m_Down, a.m_Down * b.m_Up};
  }
  friend bool operator==(const TNumber& a, const TNumber& b) {
    return a.m_Up == b.m_Up && a.m_Down == b.m_Down;
  }
  friend bool operator<(const TNumber& a, const TNumber& b) { return (a - b).Sign() < 0; }
  friend bool operator>(const TNumber& a, const TNumber& b) { return b < a; }
  friend bool operator<=(const TNumber& a, const TNumber& b) { return !(b < a); }
  friend bool operator>=(const TNumber& a, const TNumber& b) { return !(a < b); }

private:
  long long m_Up;
  long long m_Down;
};

} // namespace exact
