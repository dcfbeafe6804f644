// SPDX-License-Identifier: MIT
// Fax coding as T.4 and T.6 describe it, and decoders for it, as reference_fax.h has them, in a fraction of
// the time: rows are the places of their changing elements, not letters.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace reference {

using Bytes = std::vector<uint8_t>;

// Rows one after the other. A row is the ascending places below its width where a pixel differs from the
// one before it; before the first stands a white one. So every other place, from the first on, begins
// black.
class ChangingRows {
 public:
  // Most pictures of tests are small.
  ChangingRows() {
    places_.reserve(100);
    ends_.reserve(20);
  }
  size_t count() const { return ends_.size(); }
  std::span<const uint32_t> row(size_t index) const {
    const size_t begin = index == 0 ? 0 : ends_[index - 1];
    return {places_.data() + begin, ends_[index] - begin};
  }
  // Adds to the row that is not ended. A second change at the same place takes back the first.
  void change(uint32_t place) {
    const size_t begin = ends_.empty() ? 0 : ends_.back();
    if (places_.size() > begin && places_.back() == place) {
      places_.pop_back();
    } else {
      places_.push_back(place);
    }
  }
  void end() { ends_.push_back(places_.size()); }
  void dropUnended() { places_.resize(ends_.empty() ? 0 : ends_.back()); }
  bool operator==(const ChangingRows &) const = default;

 private:
  std::vector<uint32_t> places_;
  std::vector<size_t> ends_;
};

// Rows of whole bytes, a set bit for white.
ChangingRows changingRows(std::span<const uint8_t> packed, uint32_t width);

// All rows in one dimension, each from a whole byte on; or in two dimensions, without an end.
Bytes huffman(const ChangingRows &rows, uint32_t width);
Bytes t6(const ChangingRows &rows, uint32_t width);

// Decoders. Each gives the rows decoded before the data ended or made no sense.
ChangingRows readHuffman(std::span<const uint8_t> codes, uint32_t width, size_t rows);
ChangingRows readT4(std::span<const uint8_t> codes, uint32_t width);  // EOLs, six at the end
ChangingRows readT6(std::span<const uint8_t> codes, uint32_t width, size_t rows);

}  // namespace reference
