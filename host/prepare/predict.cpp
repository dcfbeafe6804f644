// SPDX-License-Identifier: MIT
#include "prepare/predict.h"

#include <algorithm>
#include <vector>

#include "prepare/plan.h"

namespace prepare {
namespace {

// `left` holds the row's samples before the change.
void difference(std::span<uint8_t> row, size_t samples, std::vector<uint8_t> &left) {
  left.assign(row.begin(), row.end());
  // Sixteen at a time, since the compiler is told that they do not overlap.
  uint8_t *__restrict to = row.data();
  const uint8_t *__restrict from = left.data();
  const size_t size = row.size();
  for (size_t i = samples; i < size; ++i) to[i] = static_cast<uint8_t>(from[i] - from[i - samples]);
}

}  // namespace

bool mayPredict(const RaxelPlan &plan) {
  return plan.finish != 0 && plan.compression == RAXEL_COMPRESS_LZW &&
         (plan.mode == RAXEL_MODE_RGB || plan.mode == RAXEL_MODE_GREY256);
}

void differenceRow(std::span<uint8_t> row, size_t samples) {
  std::vector<uint8_t> left;
  difference(row, samples, left);
}

void differenceRows(const RaxelPlan &plan, uint8_t *block) {
  const auto bytes = static_cast<size_t>(rowBytes(plan));
  std::vector<uint8_t> left;
  for (uint32_t y = 0; y < plan.height; ++y)
    difference({block + size_t{plan.stride} * y, bytes}, plan.bits / 8, left);
}

}  // namespace prepare
