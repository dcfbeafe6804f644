// SPDX-License-Identifier: MIT
// Pages of two colours at a smaller size: text stays legible, and rules stay whole.
#pragma once

#include <cstdint>
#include <vector>

#include "prepare/block.h"
#include "prepare/source.h"

namespace prepare {

// One bit a pixel, set where there is ink. The leftmost pixel is the highest bit of a row's first word, and
// bits beyond the width are clear.
struct Page {
  uint32_t width = 0, height = 0, words = 0;  // words of 64 bits a row
  std::vector<uint64_t> bits;

  Page(uint32_t columns, uint32_t rows);
  uint64_t *row(uint32_t y) { return bits.data() + size_t{words} * y; }
  const uint64_t *row(uint32_t y) const { return bits.data() + size_t{words} * y; }
  bool ink(uint32_t x, uint32_t y) const { return (row(y)[x / 64] >> (63 - x % 64) & 1) != 0; }
};

// The page at another size, at least one side of which is smaller. It is smoothed and cut below the middle:
// strokes thinner than a pixel of the result leave grey, which the middle would lose. Horizontal and
// vertical rules that are too thin for any cut are drawn where they lie.
Page shrink(const Page &page, uint32_t width, uint32_t height);

// Rows and columns exchanged.
Page transposed(const Page &page);

// True when all of the picture is black or white, or when it is of one bit and so has two colours.
bool isPage(const Source &source);

// The picture at the block's size. What there is less of counts as ink: black, mostly, and white on a page
// that is black. The table must be that of the bilevel mode.
void shrinkPage(const Source &source, const Block &block);

}  // namespace prepare
