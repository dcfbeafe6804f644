// SPDX-License-Identifier: MIT
// A chunk coded by itself, away from the stream, so that several can be at the same time.
#pragma once

#include "tiff/cell_band.h"
#include "tiff/coders.h"

namespace tiff {

// What all chunks of a band have in common.
struct ChunkPlan {
  const CellBand &band;
  const Coder &coder;
  uint32_t tilesAcross;  // 0: a chunk is a strip
};

// The codes of a chunk: those of its strip, or of its tiles from left to right.
struct CodedChunk {
  FaxBuffer codes = FaxBuffer::untold();
  runtime::Block lengths;  // a uint32_t for each piece
  uint32_t pieces = 0;
  int32_t result = RAXEL_OK;  // or why there are none
  bool lost = false;          // because a buffer could not grow

  uint32_t length(uint32_t piece) const;
};

// What a thread works with, kept from chunk to chunk.
struct Workbench {
  CoderMemory memory{FaxBuffer::untold(), {}};
  runtime::Block packed;
  runtime::Block tile;
};

// Codes a chunk of a band that canRecolorApart(). Looks at nothing but the plan, and changes nothing but
// the bench and the result.
//   behind  byteBehind() of the chunk
void codeChunkApart(const ChunkPlan &plan, const Chunk &chunk, uint8_t behind, Workbench &bench,
                    CodedChunk &out);

}  // namespace tiff
