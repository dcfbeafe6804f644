// SPDX-License-Identifier: MIT
// The check of a written file against the picture that was meant.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "prepare/row_by_row.h"
#include "raxel/host.h"

namespace host {

// A prepared picture as it is meant.
class Meant {
 public:
  // A copy, taken before the library works on the pixels in place.
  Meant(const RaxelPlan &plan, const uint8_t *pixels, const uint8_t *table);
  // What makes the rows, which are made once more. Borrowed.
  Meant(const RaxelPlan &plan, const prepare::RowByRow &rows, const uint8_t *table);

  // Decodes the page of that directory (0: the first) with libtiff and compares size, resolution, colours
  // and every pixel. Throws a Failure with kNoWrite that names the first difference.
  void compare(std::span<const uint8_t> file, const std::string &name, uint32_t directory = 0);

 private:
  // Row y from the top, as a reader sees it: packed indices, or red, green, blue.
  void rowOf(uint32_t y, std::vector<uint8_t> &out);

  RaxelPlan plan_;
  const prepare::RowByRow *rows_ = nullptr;
  std::vector<uint8_t> pixels_;  // all of them, or room for a row
  std::vector<uint8_t> table_;
};

}  // namespace host
