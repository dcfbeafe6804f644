// SPDX-License-Identifier: MIT
// The diagnostics level, a plain number that a host writes.
#include "color/debug_level.h"

#include <cstdio>

uint16_t _debug_color_res = 0;

namespace color {

void printPlace(uint32_t x, uint32_t y) {
  std::fprintf(stderr, "(%d,%d): ", static_cast<int32_t>(x), static_cast<int32_t>(y));
}

}  // namespace color
