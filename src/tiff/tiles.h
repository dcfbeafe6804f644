// SPDX-License-Identifier: MIT
// Cutting a chunk of packed rows into tiles.
#pragma once

#include <cstdint>
#include <span>

namespace tiff {

// Rows packed without padding, top row first.
struct PackedRows {
  const uint8_t *data;
  uint32_t rowBytes;
  uint32_t rows;
};

// Cuts tile `column` out of the chunk. What lies past the chunk's right and lower edge repeats the
// last byte of each row and the last row; a tile wholly outside is zeros.
//   tile  tileRows rows of tileRowBytes bytes
void cutTile(std::span<uint8_t> tile, uint32_t tileRowBytes, uint32_t tileRows, const PackedRows &chunk,
             uint32_t column);

}  // namespace tiff
