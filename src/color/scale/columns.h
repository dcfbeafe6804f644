// SPDX-License-Identifier: MIT
// Which source column each destination column takes when a row is made narrower or wider.
//
// Narrowing walks from the left: column k takes source column trunc(k * ratio), ratio being the
// source's width over the destination's, except that the last column always takes the last source
// column. Widening walks from the right, so that the right edges stay aligned: the last t source
// columns fill the last trunc(t * ratio) columns, ratio being the destination's width over the
// source's. Doubles are used as they round, so that at some widths the leftmost column is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace color {

enum class Columns { kNarrow, kWiden };

// How the vertical workers treat rows: they widen only what gets wider.
constexpr Columns columnsFor(uint32_t sourceWidth, uint32_t width) {
  return width > sourceWidth ? Columns::kWiden : Columns::kNarrow;
}

// The source's width as widening counts it: a signed 16-bit number, and no columns when it is negative.
constexpr uint32_t widenedColumns(uint32_t sourceWidth) {
  const auto counted = static_cast<int16_t>(sourceWidth);
  return counted > 0 ? static_cast<uint32_t>(counted) : 0;
}

// Fills columns[i] with the source column of destination column first + i. Returns how many of them,
// from the left, take no source column and are left out.
size_t mapColumns(Columns how, uint32_t sourceWidth, uint32_t width, uint32_t first,
                  std::span<uint32_t> columns);

// Prints the places of a row's pixels as often as a number of rows says, in the order in which the walk
// sets them.
void printPlaces(Columns how, uint32_t sourceWidth, uint32_t width, uint64_t rows);

}  // namespace color
