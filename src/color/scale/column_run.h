// SPDX-License-Identifier: MIT
// A run of columns: planned once, then copied in every row, each pixel from a source column of its own.
#pragma once

#include <cstdint>
#include <span>

#include "color/scale/columns.h"
#include "color/scale/move_plan.h"

namespace color {

// A run of destination columns and the plan for the rows of one call. It starts with a byte. With its
// tables it takes 70 KB, on the stack of the function that scales.
struct ColumnRun {
  static constexpr uint32_t kLongest = 8192;

  int16_t depth = 0;
  uint32_t first = 0;          // its first column
  uint32_t begin = 0;          // the first one that is written, counted from there
  uint32_t whole = 0;          // the first one that starts a byte, begin or after it
  uint32_t end = 0;            // one past the last, counted from there
  size_t at = 0;               // where the byte of `whole` lies in a row of the destination
  size_t bytes = 0;            // from there to the end, the last one perhaps in part
  uint8_t beside = 0;          // the bits of the last one that are not the run's
  uint64_t reads = 0;          // bytes of a source row, up to the last pixel that is read
  bool straight = false;       // every column takes the source column of the same number
  bool unpacked = false;       // pixels of less than a byte move as bytes, by way of a copy
  uint32_t origin = 0;         // the source column that `columns` count from
  uint32_t columns[kLongest];  // source columns
  MovePlan move;               // for the columns from `whole` on
};

// What all runs of a call have in common.
struct RowScaling {
  Columns how;
  int16_t depth;
  uint32_t sourceWidth;
  uint32_t width;
  uint64_t rows;  // few are not worth much of a plan
};

// Plans the run that starts at column first; run.end tells how long it is.
void planRun(ColumnRun &run, const RowScaling &rows, uint32_t first);

// Copies one row's pixels. The rows must not overlap; source columns past the end of their row read
// as 0, and the destination must hold the whole run. Bits beside the run keep their values.
void copyRun(const ColumnRun &run, std::span<const uint8_t> source, std::span<uint8_t> destination);

}  // namespace color
