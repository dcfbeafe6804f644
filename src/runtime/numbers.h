// SPDX-License-Identifier: MIT
// Conversions of doubles to integers, defined for every double: truncate toward zero, NaN becomes
// 0, and what lies outside the range becomes the nearest end of it.
#pragma once

#include <cstdint>
#include <limits>

namespace runtime {

template <class Integer>
Integer truncateTo(double x) {
  // Both bounds are exact doubles: the lowest value, and one past the highest.
  constexpr double kLow = static_cast<double>(std::numeric_limits<Integer>::min());
  constexpr double kPastHigh = 2.0 * (static_cast<double>(std::numeric_limits<Integer>::max() / 2) + 1.0);
  if (x != x) return 0;
  if (x <= kLow) return std::numeric_limits<Integer>::min();
  if (x >= kPastHigh) return std::numeric_limits<Integer>::max();
  return static_cast<Integer>(x);
}

inline uint32_t toU32(double x) {
  return truncateTo<uint32_t>(x);
}
inline int32_t toI32(double x) {
  return truncateTo<int32_t>(x);
}
inline int16_t toI16(double x) {
  return truncateTo<int16_t>(x);
}

}  // namespace runtime
