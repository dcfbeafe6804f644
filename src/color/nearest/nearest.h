// SPDX-License-Identifier: MIT
// The nearest entry of a colour table, where greys match only greys.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// How far apart the channels of a request may lie for it still to count as grey. Entries of a table
// are grey only when their three bytes are equal.
constexpr int32_t kGreyTolerance = 4;

// Whether a request is grey: its channels are pairwise within the tolerance.
bool isGreyRequest(int32_t red, int32_t green, int32_t blue);

// The index of the first entry with the smallest squared distance dr*dr + dg*dg + db*db among the
// grey entries for a grey request, among the others for any other; 0 when there is no such entry.
//   table  3-byte entries red, green, blue      count  at most as many as the table holds are searched
int32_t nearest(int16_t red, int16_t green, int16_t blue, std::span<const uint8_t> table, int32_t count);

}  // namespace color
