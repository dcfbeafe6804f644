// SPDX-License-Identifier: MIT
// Pictures of four bytes a pixel, changed in place. The pixels follow one another without padding:
// rows of 4 bytes a pixel need none.
#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/ssse3.h"

namespace color {

// Red, green, blue become their complements cyan, magenta, yellow, and the fourth byte 0: no black is
// taken out.
void rgbToCmyk(uint8_t *pixels, size_t count);

// Cyan, magenta, yellow, black become red, green, blue at the start of the same bytes, 3 for every 4:
// the complement of the larger of the ink and black. Example: 10 200 30 100 -> 155 55 155
void cmykToRgbPlain(uint8_t *pixels, size_t count);

// Drops the fourth byte of every pixel, packing the other three at the start of the same bytes.
void dropAlphaPlain(uint8_t *pixels, size_t count);

// The same from one place to another, which lies before it or is the same.
void cmykToRgbFrom(const uint8_t *in, uint8_t *out, size_t count);
void dropAlphaFrom(const uint8_t *in, uint8_t *out, size_t count);

#if defined(RAXEL_HAS_SSSE3)
// Four pixels at a time.
void cmykToRgbSsse3(uint8_t *pixels, size_t count);
void dropAlphaSsse3(uint8_t *pixels, size_t count);
#endif

}  // namespace color
