// SPDX-License-Identifier: MIT
#include "tiff/cell_band.h"

#include "tiff/colors.h"
#include "tiff/swap.h"

namespace tiff {
namespace {

void remapChunk(const CellBand &band, const Chunk &chunk) {
  const uint64_t at = chunk.first * band.cells.stride;
  const uint64_t length = chunk.rows * band.cells.stride;
  const std::span<uint8_t> after = band.cells.held(at + length, 1);
  remapRows(band.cells.held(at, length), after.empty() ? uint8_t{0} : after[0], *band.map, band.nibbles);
}

}  // namespace

// Bytes of a pixel that the block holds only in part count as 0.
void swapRow(const CellBand &band, uint32_t row) {
  const std::span<uint8_t> pixels = band.cells.held(row * band.cells.stride, uint64_t{band.width} * 3);
  swapRedBlue(pixels);
  if (const size_t rest = pixels.size() % 3; rest != 0) pixels[pixels.size() - rest] = 0;
}

void swapChunk(const CellBand &band, const Chunk &chunk) {
  for (uint32_t row = 0; row < chunk.rows; ++row) swapRow(band, chunk.first + row);
}

void recolorChunk(const CellBand &band, const Chunk &chunk) {
  if (band.swaps) {
    swapChunk(band, chunk);
  } else if (band.map != nullptr) {
    remapChunk(band, chunk);
  }
}

runtime::Block packRows(const CellBand &band, const Chunk &chunk) {
  runtime::Block packed = runtime::Block::ofSize(chunk.rows * band.cells.rowBytes);
  uint8_t *to = packed.data();
  for (uint32_t left = chunk.rows; left > 0; --left, to += band.cells.rowBytes) {
    if (band.swapsByRow) swapRow(band, chunk.first + left - 1);
    band.cells.copyRow(chunk.first + left - 1, to);
  }
  return packed;
}

bool canRecolorApart(const CellBand &band) {
  const bool whole = band.cells.block.size() >= band.rows * band.cells.stride;
  return whole && (!band.swaps || band.cells.rowBytes >= uint64_t{band.width} * 3);
}

uint8_t byteBehind(const CellBand &band, uint64_t k) {
  const Chunk chunk = band.chunk(k);
  const uint64_t end = (uint64_t{chunk.first} + chunk.rows) * band.cells.stride;
  // Behind the top chunk is what the block holds behind the picture, as it is. Behind every other one is
  // a byte that has been mapped from the one after it.
  const std::span<const uint8_t> bytes = band.cells.held(k == 0 ? end : end + 1, 1);
  if (bytes.empty()) return 0;
  if (k == 0 || band.map == nullptr) return bytes[0];
  uint8_t mapped[1] = {};
  remapRows(mapped, bytes[0], *band.map, band.nibbles);
  return mapped[0];
}

void packRecolored(const CellBand &band, const Chunk &chunk, uint8_t behind, uint8_t *to) {
  const CellRows &cells = band.cells;
  const auto length = static_cast<size_t>(cells.rowBytes);
  const uint64_t end = (uint64_t{chunk.first} + chunk.rows) * cells.stride;
  for (uint32_t left = chunk.rows; left > 0; --left, to += length) {
    const uint32_t row = chunk.first + left - 1;
    cells.copyRow(row, to);
    if (band.swaps) {
      swapRedBlue({to, size_t{band.width} * 3});
    } else if (band.map != nullptr) {
      const uint64_t next = row * cells.stride + length;
      remapRows({to, length}, next < end ? cells.block[static_cast<size_t>(next)] : behind, *band.map,
                band.nibbles);
    }
  }
}

}  // namespace tiff
