// SPDX-License-Identifier: MIT
#include "color/depth/lookup.h"

#include <cstring>

namespace color {

void bytesToNibblesPlain(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n) {
  for (; n >= 2; n -= 2, from += 2) *to++ = static_cast<uint8_t>(values[from[0]] << 4 | values[from[1]]);
  if (n != 0) *to = static_cast<uint8_t>(values[from[0]] << 4);
}

void bytesToBitsPlain(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n) {
  for (; n >= 8; n -= 8, from += 8) {
    *to++ = static_cast<uint8_t>(values[from[0]] << 7 | values[from[1]] << 6 | values[from[2]] << 5 |
                                 values[from[3]] << 4 | values[from[4]] << 3 | values[from[5]] << 2 |
                                 values[from[6]] << 1 | values[from[7]]);
  }
  uint32_t last = 0;
  for (uint32_t k = 0; k < n; ++k) last |= uint32_t{values[from[k]]} << (7 - k);
  if (n != 0) *to = static_cast<uint8_t>(last);
}

void nibblesToBitsPlain(const uint8_t *pairs, const uint8_t *from, uint8_t *to, size_t n) {
  for (; n >= 8; n -= 8, from += 4) {
    *to++ = static_cast<uint8_t>(pairs[from[0]] << 6 | pairs[from[1]] << 4 | pairs[from[2]] << 2 |
                                 pairs[from[3]]);
  }
  uint32_t last = 0;
  for (uint32_t k = 0; k < n; k += 2) last |= uint32_t{pairs[from[k / 2]]} << (6 - k);
  if (n != 0) *to = static_cast<uint8_t>(last & ~(0xFFu >> n));
}

void bitsToNibblesPlain(const uint8_t (*nibbles)[4], const uint8_t *from, uint8_t *to, size_t n) {
  for (; n >= 8; n -= 8, to += 4) std::memcpy(to, nibbles[*from++], 4);
  if (n == 0) return;
  std::memcpy(to, nibbles[*from], (n + 1) / 2);
  if (n % 2 != 0) to[n / 2] &= 0xF0;
}

}  // namespace color
