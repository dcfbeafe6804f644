// SPDX-License-Identifier: MIT
// The rows of a picture that is only read, whole even where its block ends early.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

#include "color/bitmap.h"
#include "color/colormap.h"
#include "runtime/blocks.h"

namespace color {

// The depth at which rows are read. Pixels of depths that cannot be read are 0: such a picture reads
// as one of 1 bit where its indexes go through a colour map, else as one of 24 bits, all of it zeros.
inline int16_t readableDepth(int16_t depth) {
  return isPixelDepth(depth) ? depth : hasColormap(depth) ? int16_t{1} : int16_t{24};
}

class RowSource {
 public:
  // The row bytes must fit in a block.
  RowSource(std::span<const uint8_t> bits, uint32_t width, int16_t depth)
      : bits_(isPixelDepth(depth) ? bits : std::span<const uint8_t>{}),
        lineBytes_(static_cast<size_t>(bytesPerLine(width, readableDepth(depth)))) {}

  // All bytes of row y, zeros where the block has ended; good until the next call.
  const uint8_t *row(uint32_t y) {
    const std::span<const uint8_t> rest = rowAt(bits_, lineBytes_, y);
    if (rest.size() >= lineBytes_) return rest.data();
    if (!completed_) completed_ = runtime::Block::ofSize(lineBytes_);
    uint8_t *whole = completed_.data();
    if (!rest.empty()) std::memcpy(whole, rest.data(), rest.size());
    std::memset(whole + rest.size(), 0, lineBytes_ - rest.size());
    return whole;
  }

 private:
  std::span<const uint8_t> bits_;
  size_t lineBytes_;
  runtime::Block completed_;
};

}  // namespace color
