// The size of a picture's rows.
#pragma once

#include <cstdint>

#include "runtime/rows.h"

namespace entry {

// Bytes of a picture whose rows are padded to a multiple of 4; the largest number when 64 bits do
// not hold them.
inline uint64_t pictureBytes(uint32_t width, uint32_t height, uint32_t bits) {
  const uint64_t stride = runtime::rowStride(width, bits);
  return stride > 0xFFFFFFFFu ? UINT64_MAX : stride * height;
}

}  // namespace entry
