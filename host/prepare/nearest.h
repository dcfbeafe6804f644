// SPDX-License-Identifier: MIT
// The nearest of up to 256 colours: the entry with the smallest sum of squares, the first of equals.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "prepare/source.h"

namespace prepare {

// Compares with every entry. There is at least one.
uint8_t nearestEntry(std::span<const Color> table, const Color &color);

// Compares with few. The cube of colours is cut into cells of side 16 and of side 8. When a cell is asked
// about for the first time, the entries that can be nearest for some colour in it are noted, out of those
// of the larger cell around it: some twenty of 256 for a side of 16, five for 8.
class Candidates {
 public:
  // Up to 256 entries; borrowed.
  explicit Candidates(std::span<const Color> table);

  uint8_t find(const Color &color);

  // The entries that can be nearest in a cell, which begins at `low`: of a side of 4, out of those of the
  // side of 8 around it. In the order of the table; good until the next call.
  std::span<const uint8_t> inSmallCell(const Color &low);

 private:
  struct List {
    uint32_t first = 0;
    uint32_t count = 0;  // 0: nobody has asked yet
  };

  std::span<const uint8_t> listed(const List &list) const {
    return {lists_.data() + list.first, list.count};
  }
  std::span<const uint8_t> around(const Color &color);
  void note(List &list, std::span<const uint8_t> from, const Color &color, int side);
  void keepPossible(std::span<const uint8_t> from, const Color &low, int side);

  std::span<const Color> table_;
  std::vector<uint8_t> all_;                // every index
  std::vector<List> large_;                 // cells of side 16
  std::vector<uint16_t> numbers_;           // of them, among those that somebody has asked about
  std::vector<std::array<List, 8>> small_;  // of these, the cells of side 8
  std::vector<uint8_t> lists_;              // their candidates, each list in the table's order
  std::vector<uint8_t> possible_;           // what keepPossible has kept
};

// For millions of pixels: the answers for the 64 colours of a cell of side 4 are kept, so that a pixel
// costs two look-ups from the second time on. Few pixels are done before the room for all that is cleared,
// and compare with candidates each.
class NearestColor {
 public:
  static constexpr uint64_t kFewPixels = 1 << 13;

  // Up to 256 entries; borrowed.
  explicit NearestColor(std::span<const Color> table, uint64_t pixels = UINT64_MAX);

  uint8_t find(uint8_t red, uint8_t green, uint8_t blue) {
    if (answered_.empty()) return candidates_.find({red, green, blue});
    const size_t cell = cellOf(red, green, blue);
    if (answered_[cell] == 0) answer(cell);
    return answers_[answered_[cell] * kAnswers + placeOf(red, green, blue)];
  }

  // A row of three bytes a pixel; one index for each.
  void findRow(std::span<const uint8_t> colors, uint8_t *indices);

 private:
  static constexpr size_t kAnswers = 64;

  // The cell that holds a colour, and the colour's place in it.
  static size_t cellOf(uint8_t red, uint8_t green, uint8_t blue) {
    return static_cast<size_t>((red >> 2) << 12 | (green >> 2) << 6 | blue >> 2);
  }
  static size_t placeOf(uint8_t red, uint8_t green, uint8_t blue) {
    return static_cast<size_t>((red & 3) << 4 | (green & 3) << 2 | (blue & 3));
  }
  void answer(size_t cell);

  std::span<const Color> table_;
  Candidates candidates_;
  std::vector<uint32_t> answered_;  // of each cell: the number of its answers, 0 for none yet; or empty
  std::vector<uint8_t> answers_;    // 64 of each number; from 1 on those of one entry throughout
};

}  // namespace prepare
