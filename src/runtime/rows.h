// SPDX-License-Identifier: MIT
// The sizes of a picture's rows, and of all of them.
#pragma once

#include <cstdint>

namespace runtime {

// Bytes of a row as it stands in a file, without padding.
constexpr uint64_t packedRowBytes(uint32_t width, uint32_t bitsPerPixel) {
  return (uint64_t{width} * bitsPerPixel + 7) / 8;
}

// Bytes from one row of a bitmap to the next: rows are padded to a multiple of 4 there.
constexpr uint64_t rowStride(uint32_t width, uint32_t bitsPerPixel) {
  return (packedRowBytes(width, bitsPerPixel) + 3) & ~uint64_t{3};
}

// Bytes of a whole bitmap; the largest number when a row alone fits in no block. 64 bits hold the product.
constexpr uint64_t bitmapBytes(uint32_t width, uint32_t height, uint32_t bitsPerPixel) {
  const uint64_t stride = rowStride(width, bitsPerPixel);
  return height != 0 && stride > 0xFFFFFFFFu ? UINT64_MAX : stride * height;
}

}  // namespace runtime
