// SPDX-License-Identifier: MIT
// Pictures whose rows can be prepared one by one, without a look at the others.
#pragma once

#include <functional>

#include "prepare/source.h"

namespace prepare {

// Makes row y of the picture, counted from the top, as the filter takes it: the bytes of the row without
// padding.
using MakeRow = std::function<void(uint32_t y, uint8_t *out)>;

// True when all rows of a picture of this depth and of the plan's size are made so.
bool isRowByRow(uint32_t bits, const RaxelRequest &request, const RaxelPlan &plan);

// The maker for such a picture, which borrows the source. Fills the table, and may add notes.
MakeRow rowMaker(const Source &source, RaxelPlan &plan, uint8_t *table);

// A picture on its way by rows.
class RowByRow {
 public:
  // For a picture as above; services are complete. The picture's rows are borrowed.
  RowByRow(const RaxelPicture &picture, const RaxelRequest &request, const RaxelServices &services,
           RaxelPlan &plan, uint8_t *table);
  RowByRow(const RowByRow &) = delete;
  RowByRow &operator=(const RowByRow &) = delete;

  // Row y of the plan's: one more than the picture's is the last row again.
  void make(uint32_t y, uint8_t *out) const { make_(y < rows_ ? y : rows_ - 1, out); }

 private:
  Source source_;
  MakeRow make_;
  uint32_t rows_;
};

}  // namespace prepare
