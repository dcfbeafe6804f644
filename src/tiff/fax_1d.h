// SPDX-License-Identifier: MIT
// One-dimensional fax codes: modified Huffman and T.4.
#pragma once

#include <cstdint>
#include <span>

#include "tiff/fax_buffer.h"

namespace tiff {

// Codes one row from the start of `out`: runs of alternating colour, white first, filled to a whole
// byte; for T.4 the bytes 00 01 follow, which are four bits of fill and an EOL.
//   row          packed pixels, 1 white, borrowed, at least (width + 7) / 8 bytes
//   width        pixels; 0 gives no bytes at all, also no EOL
//   compression  RAXEL_TIFF_HUFFMAN or RAXEL_TIFF_T4
// Returns the bytes produced; 0 when the row is too short, or when the buffer was lost.
uint32_t encodeFaxRow(std::span<const uint8_t> row, uint32_t width, uint32_t compression, FaxBuffer &out);

}  // namespace tiff
