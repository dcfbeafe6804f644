// Moves the pixels of a row 16 bytes at a time, with the byte shuffle that most x86 processors have.
//
// Every 16 bytes of the destination are a group of whole pixels (16 of one byte, 5 of three, 4 of
// four), and come from 16 or 32 neighbouring bytes of the source: as long as no more than about every
// second pixel is left out, one or two shuffles make a group. Which, and from where, is planned once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace color {

struct ShufflePlan {
  static constexpr size_t kMostColumns = 2048;
  static constexpr size_t kMostGroups = kMostColumns / 4;

  size_t groups = 0;   // from the left; 0 where rows are better moved pixel by pixel
  size_t columns = 0;  // in all groups
  size_t step = 0;     // bytes from one group to the next
  size_t reach = 0;    // bytes of the source that the groups read
  bool two = false;    // some group needs two shuffles
  uint32_t from[kMostGroups];
  uint8_t low[kMostGroups][16];   // for each byte of a group: which of the first 16, or 128
  uint8_t high[kMostGroups][16];  // the same of the second 16
};

// Plans the leading groups of a run: columns[i] is the source column of column i; they never fall.
void planShuffle(ShufflePlan &plan, std::span<const uint32_t> columns, uint32_t bytesPerPixel);

// Moves the planned columns of a row. The source holds at least plan.reach bytes.
void shuffleRow(const ShufflePlan &plan, const uint8_t *source, uint8_t *out);

}  // namespace color
