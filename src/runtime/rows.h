// The length of a picture's rows.
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

}  // namespace runtime
