// SPDX-License-Identifier: MIT
#include "tiff/tiles.h"

#include <algorithm>
#include <cstring>

#include "raxel/tiff.h"

namespace tiff {

void cutTile(std::span<uint8_t> tile, uint32_t tileRowBytes, uint32_t tileRows, const PackedRows &chunk,
             uint32_t column) {
  const uint64_t left = uint64_t{column} * tileRowBytes;
  const uint32_t rows = std::min(chunk.rows, tileRows);
  if (rows == 0 || tileRowBytes == 0 || left >= chunk.rowBytes) {
    std::fill(tile.begin(), tile.end(), uint8_t{0});
    return;
  }
  const auto copied = static_cast<uint32_t>(std::min<uint64_t>(tileRowBytes, chunk.rowBytes - left));
  const uint8_t *from = chunk.data + left;
  uint8_t *to = tile.data();
  for (uint32_t row = 0; row < rows; ++row, to += tileRowBytes, from += chunk.rowBytes) {
    std::memcpy(to, from, copied);
    std::memset(to + copied, to[copied - 1], tileRowBytes - copied);
  }
  for (uint32_t row = rows; row < tileRows; ++row, to += tileRowBytes) {
    std::memcpy(to, to - tileRowBytes, tileRowBytes);
  }
}

}  // namespace tiff

void GetTileFromStrip(uint8_t *tile, const uint8_t *chunk, uint32_t tileRowBytes, uint32_t chunkRowBytes,
                      uint32_t tileRows, uint32_t chunkRows, uint32_t column) {
  if (tile == nullptr) return;
  const std::span<uint8_t> out(tile, size_t{tileRowBytes} * tileRows);
  tiff::cutTile(out, tileRowBytes, tileRows, {chunk, chunkRowBytes, chunk == nullptr ? 0 : chunkRows},
                column);
}
