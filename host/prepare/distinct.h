// SPDX-License-Identifier: MIT
// The colours of a picture, each once, in the order in which they appear.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "prepare/source.h"

namespace prepare {

// Up to 256 of them; open addressing.
class DistinctColors {
 public:
  // The colour's index, or none when it is one more than `most`.
  std::optional<uint8_t> add(const uint8_t *color, uint32_t most) {
    const uint32_t key =
        1u << 24 | static_cast<uint32_t>(color[0]) << 16 | static_cast<uint32_t>(color[1]) << 8 | color[2];
    for (uint32_t slot = key * 2654435761u >> 22;; slot = (slot + 1) % kSlots) {
      if (keys_[slot] == key) return indices_[slot];
      if (keys_[slot] != 0) continue;
      if (count_ == most) return std::nullopt;
      keys_[slot] = key;
      indices_[slot] = static_cast<uint8_t>(count_);
      std::copy_n(color, 3, colors_[count_].begin());
      ++count_;
      return indices_[slot];
    }
  }
  std::span<const Color> colors() const { return std::span(colors_).first(count_); }

 private:
  static constexpr uint32_t kSlots = 1024;  // four times the most, so that searches are short
  std::array<uint32_t, kSlots> keys_{};
  std::array<uint8_t, kSlots> indices_{};
  std::array<Color, 256> colors_{};
  uint32_t count_ = 0;
};

}  // namespace prepare
