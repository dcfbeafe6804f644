// SPDX-License-Identifier: MIT
// Mirroring in place.
//
// Left-right, the partner of pixel x is width - x, not width - 1 - x: pixel 0 changes places with what
// lies just past its row (the padding, or the first pixel of the next row), and the last pixel with
// pixel 1. On the last row that may be past the picture, and past the size that was asked for its
// block; the bytes of the block itself go on a little further and take part.
#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/kernels.h"
#include "color/mirror/mirror.h"
#include "raxel/color.h"
#include "runtime/blocks.h"
#include "runtime/slack.h"

namespace color {

namespace {

// All bytes of a block, with its slack. Memory that is only described by a handle has none.
std::span<uint8_t> wholeBlock(Handle bits) {
  const std::span<uint8_t> bytes = runtime::lockBytes(bits);
  return {bytes.data(), bytes.size() + runtime::slackOf(bits).size()};
}

// Swaps the bytes of two rows that do not overlap, as far as both lie in the block: what lies past it
// reads as 0 and is not written.
void swapRows(std::span<uint8_t> top, std::span<uint8_t> bottom, uint64_t line) {
  const auto length = static_cast<size_t>(std::min<uint64_t>(line, top.size()));
  const size_t shared = std::min(length, bottom.size());
  std::swap_ranges(top.begin(), top.begin() + static_cast<ptrdiff_t>(shared), bottom.begin());
  std::memset(top.data() + shared, 0, length - shared);
}

// Exchanges pixel x of both rows with its partner.
void exchangePixels(std::span<uint8_t> top, std::span<uint8_t> bottom, uint32_t x, uint32_t width,
                    int16_t depth) {
  // All four are read before any is written: the two rows may be one, or share the pixel between.
  const uint32_t topLeft = getPixel(top, x, depth);
  const uint32_t topRight = getPixel(top, width - x, depth);
  const uint32_t bottomLeft = getPixel(bottom, x, depth);
  const uint32_t bottomRight = getPixel(bottom, width - x, depth);
  setPixel(top, x, depth, topRight, {});
  setPixel(top, width - x, depth, topLeft, {});
  setPixel(bottom, x, depth, bottomRight, {});
  setPixel(bottom, width - x, depth, bottomLeft, {});
}

// Mirrors the pixels 1 to width - 1 of a row, which change places among themselves.
void mirrorInside(uint8_t *row, uint32_t width, int16_t depth) {
  const size_t n = width / 2 - 1;
  const Kernels &use = kernels();
  if (depth == 8) {
    use.mirrorBytes(row + 1, row + width, n);
  } else if (depth == 24) {
    use.mirrorTriples(row + 3, row + size_t{width} * 3, n);
  } else if (depth == 32) {
    use.mirrorWords(row + 4, row + size_t{width} * 4, n);
  } else {
    mirrorPacked(row, depth, 1, width, n);
  }
}

// Whether mirrorInside can be left to do a row.
bool isWhole(std::span<const uint8_t> row, uint32_t width, int16_t depth) {
  const uint64_t bytes = (uint64_t{width} * static_cast<uint64_t>(depth) + 7) / 8;
  return row.size() >= bytes && (depth >= 8 || bytes >= kMirrorPackedBytes);
}

// How many pixels of a row are exchanged with their partners: all that begin within the block.
uint32_t exchanged(std::span<const uint8_t> row, uint32_t width, int16_t depth) {
  if (depth < 1) return width / 2;
  const auto bits = static_cast<uint64_t>(depth);
  return static_cast<uint32_t>(std::min<uint64_t>(width / 2, (uint64_t{row.size()} * 8 + bits - 1) / bits));
}

// Each pixel and its partner, in the top row and in the bottom row.
void printPlaces(uint32_t pixels, uint32_t width) {
  for (uint32_t x = 0; x < pixels; ++x) {
    for (int row = 0; row < 2; ++row) {
      printPlace(x, 0);
      printPlace(width - x, 0);
    }
  }
}

void mirrorRows(std::span<uint8_t> top, std::span<uint8_t> bottom, uint32_t width, int16_t depth) {
  const uint32_t pixels = exchanged(top, width, depth);
  if (printsPixels()) printPlaces(pixels, width);
  if (width < 2 || !isPixelDepth(depth)) return;
  if (isWhole(top, width, depth) && isWhole(bottom, width, depth)) {
    exchangePixels(top, bottom, 0, width, depth);
    mirrorInside(top.data(), width, depth);
    if (top.data() != bottom.data()) mirrorInside(bottom.data(), width, depth);
    return;
  }
  for (uint32_t x = 0; x < pixels; ++x) exchangePixels(top, bottom, x, width, depth);
}

void flip(std::span<uint8_t> block, int16_t depth, uint32_t width, uint32_t height, bool leftRight,
          bool topBottom) {
  const uint64_t line = bytesPerLine(width, depth);
  // Rows without bytes hold no pixels, but a depth below 1 has places to print.
  if (line == 0 && (width == 0 || !leftRight || !printsPixels())) return;
  for (uint64_t y = 0; y < (uint64_t{height} + 1) / 2; ++y) {
    const std::span<uint8_t> top = rowAt(block, line, y);
    const std::span<uint8_t> bottom = rowAt(block, line, height - 1 - y);
    if (top.empty() && line != 0) return;
    if (topBottom && y != height - 1 - y) swapRows(top, bottom, line);
    if (leftRight) mirrorRows(top, bottom, width, depth);
  }
}

}  // namespace

}  // namespace color

Handle rlFlipBitmap(Handle bits, int16_t depth, uint32_t width, uint32_t height, uint16_t leftRight,
                    uint16_t topBottom) {
  if (bits == 0) return bits;
  const runtime::OpenSlack slack(bits);
  color::flip(color::wholeBlock(bits), depth, width, height, leftRight != 0, topBottom != 0);
  return bits;
}
