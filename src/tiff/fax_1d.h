// One-dimensional fax codes: modified Huffman (TIFF compression 2) and T.4 (compression 3).
#pragma once

#include <cstdint>
#include <span>

#include "tiff/fax_buffer.h"

namespace tiff {

// Codes one row from the start of `out`: runs of alternating colour, white first, filled to a whole
// byte; for compression 3 the bytes 00 01 follow, which are four bits of fill and an EOL.
//   row          packed pixels, 1 white, borrowed, at least (width + 7) / 8 bytes
//   width        pixels; 0 gives no bytes at all, also no EOL
//   compression  2 or 3
// Returns the bytes produced; 0 when the row is too short, or when the buffer was lost.
uint32_t encodeFaxRow(std::span<const uint8_t> row, uint32_t width, uint32_t compression, FaxBuffer &out);

}  // namespace tiff
