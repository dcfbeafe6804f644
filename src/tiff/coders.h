// SPDX-License-Identifier: MIT
// The coders, a row each: what the writer needs to know to hand one its pixels and to write its codes.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/tiff.h"
#include "tiff/fax_buffer.h"
#include "tiff/lzw.h"

namespace tiff {

// Packed rows on their way to a coder, borrowed.
struct Piece {
  std::span<const uint8_t> bytes;
  uint32_t width;     // pixels of a row
  uint32_t rows;      // fax codes go by it; otherwise the bytes alone count
  size_t behind = 0;  // bytes that lie behind these in the same row, and for which there is room as well
};

// What codes are made in: kept from piece to piece, so that it is made only once.
struct CoderMemory {
  FaxBuffer out{0};
  LzwMemory lzw;
};

// How much of a picture makes one piece.
enum class Takes : uint8_t {
  kRow,    // one row; on disk the codes of many are gathered
  kChunk,  // a whole strip or tile: independent of all others
};

// A mark that stands once before a strip, or not, and so many times behind it; each is a write.
struct Framing {
  std::span<const uint8_t> mark = {};
  bool before = false;
  uint32_t behind = 0;
};

struct Coder {
  int32_t stored = 0;        // nCompressionMode
  uint32_t compression = 0;  // tag 259
  Takes takes = Takes::kRow;
  bool bilevel = false;      // goes by the width: a piece must hold all pixels of its rows, one bit each
  bool tiles = false;        // is cut into tiles where the layout is tiled
  bool wholeWrites = false;  // a write has failed unless it took everything; otherwise when it took nothing
  uint32_t partBytes = 0;    // codes so many bytes by themselves, and a host sees a write for each; 0: all
  Framing framing = {};
  uint32_t threadsFrom = 0;  // bytes of a band from which its chunks are coded side by side; 0: never
  // Codes a piece from the start of memory.out, in which there is room (makeRoom). Returns the bytes
  // produced; when the buffer was lost, its handle is 0. Null: nothing is coded.
  uint32_t (*encode)(const Piece &piece, CoderMemory &memory) = nullptr;
};

// The row of a stored compression mode, and that of a compression in the file. Numbers that mean nothing
// have the row of uncompressed pictures.
const Coder &coderOfMode(int32_t stored);
const Coder &coderOf(uint32_t compression);

// Whether a piece holds the pixels that the coder will look at.
bool holdsPixels(const Coder &coder, const Piece &piece);

// Makes room for the codes of a piece of this many bytes; kept when there is enough. False when no block
// holds so much. Fax codes may take more, and grow.
bool makeRoom(FaxBuffer &out, uint64_t pieceBytes);
inline bool makeRoom(CoderMemory &memory, uint64_t pieceBytes) {
  return makeRoom(memory.out, pieceBytes);
}

}  // namespace tiff
