// SPDX-License-Identifier: MIT
// The sizes that the writer computes with: rows, strips and tiles. All products are taken in 64 bits.
#pragma once

#include "raxel/setting_codes.h"
#include "raxel/tiff.h"

namespace tiff {

constexpr uint32_t kTilePixelsAcross = 512;
constexpr uint32_t kTileRows = 128;
constexpr uint32_t kTileRowBytes = kTilePixelsAcross / 8;  // tiles hold bilevel pixels
constexpr uint32_t kTileBytes = kTileRowBytes * kTileRows;
static_assert(kTileBytes == 8192);

// Every other layout means strips.
inline bool isTiled(const TiffWriterState &state) {
  return state.wLayoutMode == RAXEL_STORED_LAYOUT_TILES;
}

// Whether the rows go into the file as they are.
inline bool isPlain(const TiffWriterState &state) {
  return state.nCompression == RAXEL_TIFF_UNCOMPRESSED;
}

// Strips or tiles in all, modulo 2^32: the length of the directory's two arrays.
inline uint32_t pieceCount(const TiffWriterState &state) {
  return state.nTilesAcross * state.nStripsDown;
}

// Rows of a strip: a quarter of the rows, rounded down. Large pictures make four strips, or five with a
// short last one; 7 rows make seven. Fewer than 4 rows make strips of one row.
constexpr uint32_t stripRows(uint32_t rows) {
  return rows < 4 ? 1 : rows / 4;
}

}  // namespace tiff
