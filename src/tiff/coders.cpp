// SPDX-License-Identifier: MIT
#include "tiff/coders.h"

#include "raxel/setting_codes.h"
#include "tiff/fax_1d.h"
#include "tiff/fax_2d.h"
#include "tiff/packbits.h"

namespace tiff {
namespace {

uint32_t packBits(const Piece &piece, CoderMemory &memory) {
  return static_cast<uint32_t>(encodePackBits(piece.bytes, piece.behind, memory.out.data()));
}

uint32_t huffman(const Piece &piece, CoderMemory &memory) {
  return encodeFaxRow(piece.bytes, piece.width, RAXEL_TIFF_HUFFMAN, memory.out);
}

uint32_t t4(const Piece &piece, CoderMemory &memory) {
  return encodeFaxRow(piece.bytes, piece.width, RAXEL_TIFF_T4, memory.out);
}

uint32_t t6(const Piece &piece, CoderMemory &memory) {
  return encodeFax2D(piece.bytes, piece.width, piece.rows, memory.out);
}

uint32_t lzw(const Piece &piece, CoderMemory &memory) {
  return encodeLzw(piece.bytes, {memory.out.data(), memory.out.size()}, memory.lzw);
}

// An end of line on a byte boundary. With that of the last row, five behind a strip make the six of a
// return to control.
constexpr uint8_t kEol[] = {0x00, 0x01};

// A thread is worth making when there is work for it of a few milliseconds.
constexpr uint32_t kMegabyte = 1 << 20;

constexpr Coder kCoders[] = {
    {.stored = RAXEL_STORED_COMPRESS_NONE, .compression = RAXEL_TIFF_UNCOMPRESSED},
    {.stored = RAXEL_STORED_COMPRESS_PACKBITS,
     .compression = RAXEL_TIFF_PACKBITS,
     .takes = Takes::kRow,
     .wholeWrites = true,
     .partBytes = kPackBitsPiece,
     .encode = packBits},
    {.stored = RAXEL_STORED_COMPRESS_HUFFMAN,
     .compression = RAXEL_TIFF_HUFFMAN,
     .takes = Takes::kRow,
     .bilevel = true,
     .encode = huffman},
    {.stored = RAXEL_STORED_COMPRESS_LZW,
     .compression = RAXEL_TIFF_LZW,
     .takes = Takes::kChunk,
     .threadsFrom = kMegabyte,
     .encode = lzw},
    {.stored = RAXEL_STORED_COMPRESS_T4,
     .compression = RAXEL_TIFF_T4,
     .takes = Takes::kRow,
     .bilevel = true,
     .framing = {.mark = kEol, .before = true, .behind = 5},
     .encode = t4},
    {.stored = RAXEL_STORED_COMPRESS_T6,
     .compression = RAXEL_TIFF_T6,
     .takes = Takes::kChunk,
     .bilevel = true,
     .tiles = true,
     .wholeWrites = true,
     .threadsFrom = kMegabyte,
     .encode = t6},
};

}  // namespace

const Coder &coderOfMode(int32_t stored) {
  for (const Coder &row : kCoders) {
    if (row.stored == stored) return row;
  }
  return kCoders[0];
}

const Coder &coderOf(uint32_t compression) {
  for (const Coder &row : kCoders) {
    if (row.compression == compression) return row;
  }
  return kCoders[0];
}

bool holdsPixels(const Coder &coder, const Piece &piece) {
  return !coder.bilevel || (uint64_t{piece.width} + 7) / 8 * piece.rows <= piece.bytes.size();
}

bool makeRoom(FaxBuffer &out, uint64_t pieceBytes) {
  constexpr uint64_t kSlack = 16;  // very short pieces code to more than twice their length
  const uint64_t size = 2 * pieceBytes + kSlack;
  if (out.handle() == 0 || out.size() < size) out.renew(runtime::allocate(size));
  return out.handle() != 0;
}

}  // namespace tiff
