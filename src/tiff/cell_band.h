// SPDX-License-Identifier: MIT
// A band of the host's bitmap on its way into the file: the chunks that it is cut into, and its colours
// turned into those of the file.
//
// A chunk is a strip, or a row of tiles. The bitmap's rows run from the bottom up, so the first chunk
// is the last rows of the block, and inside a chunk the last row goes first.
#pragma once

#include "runtime/blocks.h"
#include "tiff/cell_descriptor.h"
#include "tiff/cell_rows.h"

namespace tiff {

// Rows of a chunk, in the bitmap's order: `first` is the lowest.
struct Chunk {
  uint32_t first;
  uint32_t rows;
};

struct CellBand {
  CellRows cells;
  uint32_t width;             // pixels
  uint32_t rows;              // at least one
  uint32_t chunkRows;         // the last chunk may have fewer
  bool swaps;                 // 24-bit pixels change from blue, green, red to red, green, blue
  bool swapsByRow;            // each row just before it is taken, while it is still near the processor
  bool nibbles;               // two indices a byte
  const uint8_t (*map)[256];  // output index of each input index; null when they stay as they are

  uint64_t chunks() const { return (uint64_t{rows} + chunkRows - 1) / chunkRows; }
  // Chunk k from the top of the image, from 0.
  Chunk chunk(uint64_t k) const {
    const auto below = static_cast<uint32_t>(rows - k * chunkRows);
    const uint32_t taken = below < chunkRows ? below : chunkRows;
    return {below - taken, taken};
  }
};

// --- In the host's own block

void swapRow(const CellBand &band, uint32_t row);
void swapChunk(const CellBand &band, const Chunk &chunk);
// Everything, also where swapsByRow says that there is a better time for it.
void recolorChunk(const CellBand &band, const Chunk &chunk);

// The chunk's rows from the top one down, one after the other.
runtime::Block packRows(const CellBand &band, const Chunk &chunk);

// --- Beside it

// Whether packRecolored() can do with the block as it is: all of it is there, and no two rows share bytes.
bool canRecolorApart(const CellBand &band);

// The byte that the last index of chunk k is mapped from: that behind the chunk, as it will be when the
// chunks above have been recoloured. None of them may have been yet.
uint8_t byteBehind(const CellBand &band, uint64_t k);

// What recolorChunk() and packRows() give, without a change to the block.
//   behind  byteBehind() of the chunk      to  room for all its rows
void packRecolored(const CellBand &band, const Chunk &chunk, uint8_t behind, uint8_t *to);

}  // namespace tiff
