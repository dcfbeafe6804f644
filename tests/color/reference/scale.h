// SPDX-License-Identifier: MIT
// A plain form of scaling, flipping and the conversions of four-byte pixels: cursors that step pixel
// by pixel. It shares no line with the library and is what the library is compared with.
#pragma once

#include "color/reference/pixels.h"

namespace reference {

// The scaled picture, zero where nothing is written. Sizes up to 32767, none of them 0.
Bytes scale(const Bytes &bits, int depth, uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width,
            uint32_t height);

// One row, into bytes that keep what is not written.
void shrinkRow(const uint8_t *source, uint8_t *destination, int depth, uint32_t sourceWidth,
               uint32_t width);
void stretchRow(const uint8_t *source, uint8_t *destination, int depth, uint32_t sourceWidth,
                uint32_t width);

// Mirrors in place; the block holds the picture and at least four bytes more.
void flip(Bytes &block, int depth, uint32_t width, uint32_t height, bool leftRight, bool topBottom);

void rgbToCmyk(Bytes &pixels);
void cmykToRgb(Bytes &pixels);
void dropAlpha(Bytes &pixels);

}  // namespace reference
