#pragma once

#include <limits>

/// The greatest finite value of `T`.
template <class T> constexpr T zx_max_value() noexcept { return std::numeric_limits<T>::max(); }

/// The least finite value of `T`.
template <class T> constexpr T zx_min_value() noexcept { return std::numeric_limits<T>::lowest(); }
