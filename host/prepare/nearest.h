// The nearest of up to 256 colours, found for millions of pixels.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "prepare/source.h"

namespace prepare {

// The cube of colours is cut into cells of 8 by 8 by 8. For each cell that is asked about, the entries
// that are nearest for some colour in it are noted once: those no farther at their nearest corner than
// some entry is at its farthest. A handful is left for a pixel to be compared with.
class NearestColor {
 public:
  // Up to 256 entries; borrowed.
  explicit NearestColor(std::span<const Color> table) : table_(table), cells_(32 * 32 * 32) {}

  // The entry with the smallest sum of squares; the first of equals.
  uint8_t find(uint8_t red, uint8_t green, uint8_t blue) {
    const Cell &cell = cellOf(red >> 3, green >> 3, blue >> 3);
    const uint8_t *candidate = candidates_.data() + cell.first;
    uint8_t best = candidate[0];
    int least = distance(best, red, green, blue);
    for (uint32_t i = 1; i < cell.count; ++i) {
      const int d = distance(candidate[i], red, green, blue);
      if (d < least) {
        least = d;
        best = candidate[i];
      }
    }
    return best;
  }

 private:
  struct Cell {
    uint32_t first = 0;
    uint32_t count = 0;  // 0: nobody has asked yet
  };

  int distance(uint8_t index, int red, int green, int blue) const {
    const Color &c = table_[index];
    return (c[0] - red) * (c[0] - red) + (c[1] - green) * (c[1] - green) + (c[2] - blue) * (c[2] - blue);
  }
  const Cell &cellOf(unsigned red, unsigned green, unsigned blue) {
    Cell &cell = cells_[red << 10 | green << 5 | blue];
    if (cell.count == 0)
      fill(cell, {static_cast<int>(red), static_cast<int>(green), static_cast<int>(blue)});
    return cell;
  }
  void fill(Cell &cell, const std::array<int, 3> &at);

  std::span<const Color> table_;
  std::vector<Cell> cells_;
  std::vector<uint8_t> candidates_;
};

}  // namespace prepare
