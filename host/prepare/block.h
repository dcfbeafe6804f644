// SPDX-License-Identifier: MIT
// The pixel block that the filter receives: rows from the bottom up.
#pragma once

#include <cstring>

#include "prepare/plan.h"

namespace prepare {

struct Block {
  const RaxelPlan &plan;
  uint8_t *pixels;

  // Where row y of the picture goes, counted from the top.
  uint8_t *row(uint32_t y) const { return pixels + size_t{plan.stride} * (plan.height - 1 - y); }

  // An odd height is made even by the last row once more.
  void repeatLastRow() const {
    if (plan.height != plan.rows) std::memcpy(row(plan.rows), row(plan.rows - 1), plan.stride);
  }
};

}  // namespace prepare
