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

// Bits that modified Huffman needs for a row of fewer than 64 pixels, prepared but not yet exchanged
// for the fax coders: what is black in the picture (a clear bit) goes out as white runs. White comes
// first, if only as a run of 0.
uint32_t huffmanBits(const uint8_t *row, uint32_t width) {
  uint32_t bits = 0, x = 0;
  for (bool white = true; x < width; white = !white) {
    const uint32_t start = x;
    while (x < width && ((row[x / 8] >> (7 - x % 8) & 1) == 0) == white) ++x;
    bits += (white ? kWhiteBits : kBlackBits)[x - start];
  }
  return bits;
}

// Rows in the shortest strip: strips hold a quarter of the rows, and the last what is left.
uint32_t shortestStrip(uint32_t height) {
  const uint32_t rows = std::max(height / 4, 1u);
  const uint32_t last = height % rows;
  return last == 0 ? rows : last;
}

}  // namespace

Fallback fallbackOf(const Block &block) {
  const RaxelPlan &plan = block.plan;
  if (plan.compression == RAXEL_COMPRESS_LZW && rowBytes(plan) * shortestStrip(plan.height) == 1) {
    return {RAXEL_COMPRESS_PACKBITS, RAXEL_NOTE_LZW_AS_PACKBITS};
  }
  if (plan.compression == RAXEL_COMPRESS_HUFFMAN && plan.width < 64 &&
      huffmanBits(block.row(plan.height - 1), plan.width) <= 8) {
    return {RAXEL_COMPRESS_PACKBITS, RAXEL_NOTE_HUFFMAN_AS_PACKBITS};
  }
  return {plan.compression, 0};
}

bool mayFallBack(const RaxelPlan &plan) {
  return plan.compression == RAXEL_COMPRESS_LZW
             ? rowBytes(plan) == 1
             : plan.compression == RAXEL_COMPRESS_HUFFMAN && plan.width < 64;
}

}  // namespace prepare
