#pragma once

/// The cubic `a + b x + c x^2 + d x^3`.
struct POLYNOM3 {
  /// The coefficients, the constant first.
  double a, b, c, d;
};
