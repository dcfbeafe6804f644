// SPDX-License-Identifier: MIT
#include "color/dither/grey.h"

#include <cstdlib>

#include "raxel/color.h"

namespace color {

namespace {

constexpr int kNearGrey = 10;  // how far apart the channels of a pixel may lie that is still inverted

bool within(int a, int b) {
  return std::abs(a - b) <= kNearGrey;
}

void invert(uint8_t *pixel) {
  for (int c = 0; c < 3; ++c) pixel[c] = static_cast<uint8_t>(255 - pixel[c]);
}

void fill(uint8_t *pixel, uint8_t grey) {
  pixel[0] = pixel[1] = pixel[2] = grey;
}

}  // namespace

void reviseRow(std::span<uint8_t> row, RowMode mode) {
  for (size_t x = 0; x < row.size() / 3; ++x) {
    uint8_t *p = row.data() + 3 * x;
    switch (mode) {
      case RowMode::kInvert:
        invert(p);
        break;
      case RowMode::kInvertNearGrey:
        if (within(p[0], p[1]) && within(p[1], p[2]) && within(p[0], p[2])) invert(p);
        break;
      case RowMode::kGrey:
        fill(p, greyOf(p[0], p[1], p[2]));
        break;
      case RowMode::kInvertedGrey:
        fill(p, static_cast<uint8_t>(255 - greyOf(p[0], p[1], p[2])));
        break;
    }
  }
}

}  // namespace color

void rev_rgb(uint32_t width, uint8_t *row, int32_t mode) {
  if (row == nullptr) return;
  color::reviseRow({row, size_t{width} * 3}, static_cast<color::RowMode>(mode));
}
