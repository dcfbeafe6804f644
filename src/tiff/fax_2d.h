// SPDX-License-Identifier: MIT
// Two-dimensional fax codes: T.6 (TIFF compression 4).
#pragma once

#include <cstdint>
#include <span>

#include "tiff/fax_buffer.h"

namespace tiff {

// Codes a whole strip or tile from the start of `out`: every row against the row above it, the first
// against an all-white row. The rows follow each other without fill, and no end mark is written.
//   rows      packed pixels, 1 white, borrowed; each row (width + 7) / 8 bytes
//   width     pixels; 0 gives no codes
//   rowCount  rows; more of them than `rows` holds give no codes
// Returns the bytes produced; 0 when the buffer was lost.
uint32_t encodeFax2D(std::span<const uint8_t> rows, uint32_t width, uint32_t rowCount, FaxBuffer &out);

// The same with instructions that every machine has; encodeFax2D() chooses at run time.
uint32_t encodeFax2DPlain(std::span<const uint8_t> rows, uint32_t width, uint32_t rowCount, FaxBuffer &out);

}  // namespace tiff
