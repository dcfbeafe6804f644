// SPDX-License-Identifier: MIT
#include "tiff/coded_chunk.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "runtime/unaligned.h"
#include "tiff/geometry.h"
#include "tiff/tiles.h"

namespace tiff {
namespace {

uint8_t *lengthAt(const CodedChunk &chunk, uint32_t piece) {
  return chunk.lengths.data() + sizeof(uint32_t) * piece;
}

runtime::Block &ofSize(runtime::Block &block, uint64_t size) {
  if (!block || block.bytes().size() < size) block = runtime::Block::ofSize(size);
  return block;
}

// The whole chunk, straight into the result.
int32_t codeStrip(const ChunkPlan &plan, const Piece &piece, Workbench &bench, CodedChunk &out) {
  std::swap(bench.memory.out, out.codes);
  int32_t result = RAXEL_NO_MEMORY;
  if (makeRoom(bench.memory, piece.bytes.size()) && holdsPixels(plan.coder, piece)) {
    const uint32_t produced = plan.coder.encode(piece, bench.memory);
    out.lost = bench.memory.out.handle() == 0;
    result = out.lost ? RAXEL_NO_MEMORY : RAXEL_OK;
    runtime::store(lengthAt(out, 0), produced);
    out.pieces = out.lost ? 0 : 1;
  }
  std::swap(bench.memory.out, out.codes);
  return result;
}

// Tile after tile, each behind the one before.
int32_t codeTiles(const ChunkPlan &plan, const PackedRows &rows, Workbench &bench, CodedChunk &out) {
  makeRoom(out.codes, kTileBytes);
  makeRoom(bench.memory, kTileBytes);
  ofSize(bench.tile, kTileBytes);
  uint32_t filled = 0;
  for (uint32_t column = 0; column < plan.tilesAcross; ++column) {
    cutTile(bench.tile.bytes(), kTileRowBytes, kTileRows, rows, column);
    const uint32_t produced =
        plan.coder.encode({bench.tile.bytes(), kTilePixelsAcross, kTileRows}, bench.memory);
    out.lost = bench.memory.out.handle() == 0;
    while (!out.lost && out.codes.size() - filled < produced) out.lost = !out.codes.grow();
    if (out.lost) return RAXEL_NO_MEMORY;
    std::memcpy(out.codes.data() + filled, bench.memory.out.data(), produced);
    filled += produced;
    runtime::store(lengthAt(out, column), produced);
    ++out.pieces;
  }
  return RAXEL_OK;
}

}  // namespace

uint32_t CodedChunk::length(uint32_t piece) const {
  return runtime::load<uint32_t>(lengthAt(*this, piece));
}

void codeChunkApart(const ChunkPlan &plan, const Chunk &chunk, uint8_t behind, Workbench &bench,
                    CodedChunk &out) {
  const uint64_t size = chunk.rows * plan.band.cells.rowBytes;
  out.pieces = 0;
  out.lost = false;
  out.result = RAXEL_NO_MEMORY;
  const uint64_t pieces = std::max(1u, plan.tilesAcross);
  if (!ofSize(bench.packed, size) || !ofSize(out.lengths, pieces * sizeof(uint32_t))) return;
  packRecolored(plan.band, chunk, behind, bench.packed.data());
  if (plan.tilesAcross == 0) {
    const std::span<const uint8_t> bytes = bench.packed.bytes().first(static_cast<size_t>(size));
    out.result = codeStrip(plan, {bytes, plan.band.width, chunk.rows}, bench, out);
  } else {
    const PackedRows rows{bench.packed.data(), static_cast<uint32_t>(plan.band.cells.rowBytes), chunk.rows};
    out.result = codeTiles(plan, rows, bench, out);
  }
}

}  // namespace tiff
