// SPDX-License-Identifier: MIT
// How the pixels of a run of columns move from any row of a picture to its row in another: worked out
// once, used for every row.
//
// A group of destination bytes takes its bytes, nibbles or bits from one short stretch of the source,
// as the indexes of the group say. What an index means is a matter between the function that plans
// and the one that moves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace color {

struct MovePlan {
  static constexpr size_t kMostGroups = 512;

  struct Group {
    uint32_t from;   // where its stretch begins, in bytes from the start of the source
    uint32_t to;     // where its bytes begin in the destination
    uint32_t reads;  // bytes of the stretch, up to the last one that it needs
  };

  // Moves one row: as many of the first `columns` columns as the source's length allows, and says how
  // many. Where the last pixels fill a byte in part, the rest of that byte is left with any value.
  size_t (*move)(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) = nullptr;
  size_t columns = 0;  // 0 where rows are better moved pixel by pixel; then there is no function
  size_t groups = 0;
  size_t bytes = 0;   // in all groups
  size_t whole = 0;   // leading groups that are read and stored in full width, beyond their own bytes too
  size_t reach = 0;   // bytes of the source that those read
  size_t ahead = 0;   // how far from a stretch the memory lies that will be read soon
  bool full = false;  // there was no more room for groups
  Group group[kMostGroups];
  alignas(64) uint8_t index[kMostGroups][64];
};

// Plans no groups.
inline void planNoMove(MovePlan &plan, std::span<const uint32_t> /*columns*/, int16_t /*depth*/) {
  plan.columns = 0;
}

}  // namespace color
