// SPDX-License-Identifier: MIT
// The arithmetic that framed and unframed cell arrays share.
#pragma once

#include <cstdint>

#include "raxel/driver_codes.h"
#include "runtime/numbers.h"

namespace raster {

// |integer part of a - integer part of b|, without overflow for any two doubles.
inline uint64_t distanceOf(double a, double b) {
  const auto x = runtime::truncateTo<int64_t>(a);
  const auto y = runtime::truncateTo<int64_t>(b);
  return x > y ? static_cast<uint64_t>(x) - static_cast<uint64_t>(y)
               : static_cast<uint64_t>(y) - static_cast<uint64_t>(x);
}

// Pixels from one corner to the other, both included, at most `cap`.
inline uint32_t spanOf(double a, double b, uint32_t cap) {
  const uint64_t apart = distanceOf(a, b);
  return apart >= cap ? cap : static_cast<uint32_t>(apart + 1);
}

// The same as a floating-point extent, without a cap.
inline double extentOf(double a, double b) {
  return static_cast<double>(distanceOf(a, b)) + 1.0;
}

// Colour precision to bits per pixel: any negative value but one means its absolute value.
inline uint32_t bitsOf(int32_t precision) {
  if (precision == RAXEL_PRECISION_BILEVEL) return 1;
  return precision < 0 ? uint32_t{0} - static_cast<uint32_t>(precision) : static_cast<uint32_t>(precision);
}

}  // namespace raster
