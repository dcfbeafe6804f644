// SPDX-License-Identifier: MIT
#include "pictures/png_filters.h"

#include <cstring>
#include <vector>

namespace host {
namespace {

// The samples of a pixel side by side, at most eight bytes of them, with room for sums and differences.
using Pixel = int16_t __attribute__((vector_size(16)));
using EightBytes = uint8_t __attribute__((vector_size(8)));

// Reads a byte more where that is faster; it counts for nothing.
template <size_t kStep>
Pixel load(const uint8_t *from) {
  EightBytes bytes{};
  std::memcpy(&bytes, from, kStep == 3 ? 4 : kStep);
  return __builtin_convertvector(bytes, Pixel);
}

template <size_t kStep>
void store(Pixel pixel, uint8_t *to) {
  const EightBytes bytes = __builtin_convertvector(pixel, EightBytes);
  std::memcpy(to, &bytes, kStep);
}

Pixel magnitude(Pixel of) {
  return of < 0 ? -of : of;
}

// Whichever of left, above and the one above left lies nearest to left + above - that one.
Pixel paeth(Pixel left, Pixel above, Pixel corner) {
  const Pixel toLeft = above - corner, toAbove = left - corner;
  const Pixel a = magnitude(toLeft), b = magnitude(toAbove), c = magnitude(toLeft + toAbove);
  const Pixel aboveOrCorner = b <= c ? above : corner;
  const Pixel smaller = b <= c ? b : c;
  return a <= smaller ? left : aboveOrCorner;
}

// `above` is the row above as it was before it was filtered; zeros over the first one.
template <size_t kStep>
bool unfilterRow(unsigned type, uint8_t *row, const uint8_t *above, size_t bytes) {
  Pixel left{}, corner{};
  switch (type) {
    case 0:
      return true;
    case 1:
      for (size_t i = 0; i < bytes; i += kStep) {
        left = (left + load<kStep>(row + i)) & 255;
        store<kStep>(left, row + i);
      }
      return true;
    case 2:
      for (size_t i = 0; i < bytes; ++i) row[i] = static_cast<uint8_t>(row[i] + above[i]);
      return true;
    case 3:
      for (size_t i = 0; i < bytes; i += kStep) {
        left = (((left + load<kStep>(above + i)) >> 1) + load<kStep>(row + i)) & 255;
        store<kStep>(left, row + i);
      }
      return true;
    case 4:
      for (size_t i = 0; i < bytes; i += kStep) {
        const Pixel up = load<kStep>(above + i);
        left = (paeth(left, up, corner) + load<kStep>(row + i)) & 255;
        corner = up;
        store<kStep>(left, row + i);
      }
      return true;
    default:
      return false;
  }
}

template <size_t kStep>
bool unfilter(uint8_t *rows, size_t rowBytes, uint32_t height) {
  const std::vector<uint8_t> zeros(rowBytes + kPngSpare);
  const uint8_t *above = zeros.data();
  for (uint32_t y = 0; y < height; ++y, rows += rowBytes + 1) {
    if (!unfilterRow<kStep>(rows[0], rows + 1, above, rowBytes)) return false;
    above = rows + 1;
  }
  return true;
}

}  // namespace

bool unfilterPng(uint8_t *rows, size_t rowBytes, uint32_t height, size_t step) {
  switch (step) {
    case 1:
      return unfilter<1>(rows, rowBytes, height);
    case 2:
      return unfilter<2>(rows, rowBytes, height);
    case 3:
      return unfilter<3>(rows, rowBytes, height);
    case 4:
      return unfilter<4>(rows, rowBytes, height);
    case 6:
      return unfilter<6>(rows, rowBytes, height);
    case 8:
      return unfilter<8>(rows, rowBytes, height);
    default:
      return false;
  }
}

}  // namespace host
