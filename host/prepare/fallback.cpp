// SPDX-License-Identifier: MIT
#include "prepare/fallback.h"

#include <algorithm>
#include <array>

namespace prepare {
namespace {

// Bits of the codes for runs of 0 to 63 pixels, from the tables of ITU-T T.4.
constexpr std::array<uint8_t, 64> kWhiteBits{
    8, 6, 4, 4, 4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 6, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 8, 8, 8,
    8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8};
constexpr std::array<uint8_t, 64> kBlackBits{
    10, 3,  2,  2,  3,  4,  4,  5,  6,  6,  7,  7,  7,  8,  8,  9,  10, 10, 10, 11, 11, 11,
    11, 11, 11, 11, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12,
    12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12, 12};

// Bits that modified Huffman needs for a row of fewer than 64 pixels, prepared but not yet exchanged for
// the fax coders. White runs hold the bits that are set, or those that are clear; one comes first, if only
// as a run of 0.
uint32_t huffmanBits(const uint8_t *row, uint32_t width, bool whiteIsSet) {
  uint32_t bits = 0, x = 0;
  for (bool white = true; x < width; white = !white) {
    const uint32_t start = x;
    while (x < width && ((row[x / 8] >> (7 - x % 8) & 1) != 0) == (white == whiteIsSet)) ++x;
    bits += (white ? kWhiteBits : kBlackBits)[x - start];
  }
  return bits;
}

// Compressions that code every row by itself, as runs that begin with white.
bool codesRuns(int32_t compression) {
  return compression == RAXEL_COMPRESS_HUFFMAN || compression == RAXEL_COMPRESS_T4;
}

// True when a row as above, of a multiple of 32 pixels, changes its colour at every pixel and begins with
// what is coded as black runs. With the empty white run in front these are width + 1 runs, one more than
// libtiff has room for in rows of such widths ("Buffer overflow").
bool alternates(const uint8_t *row, uint64_t bytes, bool whiteIsSet) {
  const uint8_t blackFirst = whiteIsSet ? 0x55 : 0xAA;
  return std::all_of(row, row + bytes, [=](uint8_t byte) { return byte == blackFirst; });
}

bool anyRowAlternates(const Block &block) {
  for (uint32_t y = 0; y < block.plan.height; ++y) {
    if (alternates(block.row(y), rowBytes(block.plan), !codesComplement(block.plan))) return true;
  }
  return false;
}

// Strips hold a quarter of the rows, and the last what is left.
uint32_t stripRows(const RaxelPlan &plan) {
  return plan.strips == RAXEL_STRIPS_ONE ? plan.height : std::max(plan.height / 4, 1u);
}

uint32_t shortestStrip(const RaxelPlan &plan) {
  const uint32_t rows = stripRows(plan);
  const uint32_t last = plan.height % rows;
  return last == 0 ? rows : last;
}

// True when the last row of the picture, or of a strip of several rows, takes a byte: libtiff may lose it.
bool anyStripEndsInAByte(const Block &block) {
  const RaxelPlan &plan = block.plan;
  const auto takesAByte = [&](uint32_t y) {
    return huffmanBits(block.row(y), plan.width, !codesComplement(plan)) <= 8;
  };
  const uint32_t rows = stripRows(plan);
  for (uint32_t end = rows; rows > 1 && end < plan.height; end += rows) {
    if (takesAByte(end - 1)) return true;
  }
  return takesAByte(plan.height - 1);
}

}  // namespace

Fallback fallbackOf(const Block &block) {
  const RaxelPlan &plan = block.plan;
  if (plan.compression == RAXEL_COMPRESS_LZW && rowBytes(plan) * shortestStrip(plan) == 1) {
    return {RAXEL_COMPRESS_PACKBITS, RAXEL_NOTE_LZW_AS_PACKBITS};
  }
  if (plan.compression == RAXEL_COMPRESS_HUFFMAN && plan.width < 64 && anyStripEndsInAByte(block)) {
    return {RAXEL_COMPRESS_PACKBITS, RAXEL_NOTE_HUFFMAN_AS_PACKBITS};
  }
  if (codesRuns(plan.compression) && plan.width % 32 == 0 && anyRowAlternates(block)) {
    return {RAXEL_COMPRESS_T6, RAXEL_NOTE_RUNS_AS_T6};
  }
  return {plan.compression, 0};
}

bool mayFallBack(const RaxelPlan &plan) {
  if (plan.compression == RAXEL_COMPRESS_LZW) return rowBytes(plan) == 1;
  if (codesRuns(plan.compression) && plan.width % 32 == 0) return true;
  return plan.compression == RAXEL_COMPRESS_HUFFMAN && plan.width < 64;
}

}  // namespace prepare
