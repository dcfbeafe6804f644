#include "prepare/nearest.h"

#include <algorithm>
#include <climits>

namespace prepare {

void NearestColor::fill(Cell &cell, const std::array<int, 3> &at) {
  std::array<int, 256> nearest{};
  int bound = INT_MAX;  // how far the nearest entry can be at most, for any colour of the cell
  for (size_t i = 0; i < table_.size(); ++i) {
    int near = 0, far = 0;
    for (size_t c = 0; c < 3; ++c) {
      const int low = at[c] * 8, high = low + 7, v = table_[i][c];
      const int outside = std::max({low - v, v - high, 0}),
                across = std::max(std::abs(v - low), std::abs(v - high));
      near += outside * outside;
      far += across * across;
    }
    nearest[i] = near;
    bound = std::min(bound, far);
  }
  cell.first = static_cast<uint32_t>(candidates_.size());
  for (size_t i = 0; i < table_.size(); ++i) {
    if (nearest[i] <= bound) candidates_.push_back(static_cast<uint8_t>(i));
  }
  cell.count = static_cast<uint32_t>(candidates_.size()) - cell.first;
}

}  // namespace prepare
