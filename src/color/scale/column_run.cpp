// SPDX-License-Identifier: MIT
#include "color/scale/column_run.h"

#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "color/kernels.h"
#include "color/packed_pixels.h"
#include "color/scale/move_singly.h"

namespace color {

namespace {

// Pixels of less than a byte are moved as bytes when the run's source columns fit in this many: up to
// about every second column left out.
constexpr uint32_t kUnpacked = 2 * ColumnRun::kLongest + 64;

// How many rows of the source lie between what is read and what is asked for ahead: a few, since not all
// are used.
constexpr uint64_t kRowsAhead = 4;

// With fewer rows a plan costs more than it saves.
constexpr uint64_t kRowsWorthPlanning = 3;

uint32_t pixelsPerByte(int16_t depth) {
  return depth < 8 ? 8u / static_cast<uint32_t>(depth) : 1u;
}

// Pixels of whole bytes: by the plan, and one by one what it leaves over.
void copyWhole(const ColumnRun &run, std::span<const uint8_t> source, uint8_t *out) {
  const size_t done = run.move.columns != 0 ? run.move.move(run.move, source, out) : 0;
  const int16_t depth = run.unpacked ? int16_t{8} : run.depth;
  const std::span<const uint32_t> columns(run.columns + run.whole, run.end - run.whole);
  moveSingly(depth, columns.subspan(done), source, out + done * static_cast<size_t>(depth) / 8);
}

// Pixels of less than a byte, each in a byte of its own on the way.
void copyUnpacked(const ColumnRun &run, std::span<const uint8_t> source, uint8_t *out) {
  uint8_t values[kUnpacked + 64];
  uint8_t moved[ColumnRun::kLongest];
  const uint32_t perByte = pixelsPerByte(run.depth);
  const uint32_t used = (run.columns[run.end - 1] + perByte) / perByte * perByte;
  const uint8_t *bytes = source.data() + run.origin / perByte;
  run.depth == 1 ? unpackBits(bytes, used, values) : unpackNibbles(bytes, used, values);
  std::memset(values + used, 0, 64);  // a plan may read this far
  copyWhole(run, values, moved);
  const uint32_t n = run.end - run.whole;
  run.depth == 1 ? packBits(moved, n, out) : packNibbles(moved, n, out);
}

// Pixels of less than a byte as they are packed: by the plan, which takes all of them, or one by one.
void copyPacked(const ColumnRun &run, std::span<const uint8_t> source, uint8_t *out) {
  if (run.move.columns != 0) {
    run.move.move(run.move, source, out);
  } else {
    moveSingly(run.depth, {run.columns + run.whole, run.end - run.whole}, source, out);
  }
}

// Pixel by pixel: for columns that share a byte with others, and rows that their block cuts short.
void copyPixels(const ColumnRun &run, uint32_t begin, uint32_t end, std::span<const uint8_t> source,
                std::span<uint8_t> destination) {
  for (uint32_t i = begin; i < end; ++i) {
    const uint32_t value = getPixel(source, run.origin + run.columns[i], run.depth);
    setPixel(destination, run.first + i, run.depth, value, {});
  }
}

// Pixels of less than a byte count from the byte that holds the first of them, when they are near
// enough to one another to be unpacked together.
void planUnpacked(ColumnRun &run) {
  const uint32_t perByte = pixelsPerByte(run.depth);
  const uint32_t origin = run.columns[run.begin] / perByte * perByte;
  run.unpacked = run.columns[run.end - 1] - origin < kUnpacked - 8;
  if (!run.unpacked) return;
  run.origin = origin;
  for (uint32_t i = run.begin; i < run.end; ++i) run.columns[i] -= origin;
}

void planMoves(ColumnRun &run, const RowScaling &rows) {
  const std::span<const uint32_t> columns(run.columns + run.whole, run.end - run.whole);
  const bool worthPlanning = rows.rows >= kRowsWorthPlanning;
  if (worthPlanning) kernels().planMove(run.move, columns, run.depth);
  if (run.depth < 8 && run.move.columns == 0) {
    planUnpacked(run);
    if (worthPlanning && run.unpacked) kernels().planMove(run.move, columns, 8);
  }
  run.move.ahead = static_cast<size_t>(kRowsAhead * bytesPerLine(rows.sourceWidth, run.depth));
  // Where a plan had no more room the run ends, at a whole byte, with one pixel that is moved by itself:
  // some plans need one behind them.
  if (!run.move.full || run.unpacked) return;
  const auto planned = static_cast<uint32_t>(run.move.columns);
  run.end = std::min(run.end, run.whole + planned + (run.depth < 8 ? 0 : 1));
}

}  // namespace

void planRun(ColumnRun &run, const RowScaling &rows, uint32_t first) {
  run.depth = rows.depth;
  run.first = first;
  run.end = std::min(ColumnRun::kLongest, rows.width - first);
  run.begin = static_cast<uint32_t>(
      mapColumns(rows.how, rows.sourceWidth, rows.width, first, {run.columns, run.end}));
  run.whole = run.end;
  run.bytes = 0;
  run.reads = 0;
  run.origin = 0;
  run.unpacked = false;
  run.move.columns = 0;
  run.move.full = false;
  if (!isPixelDepth(run.depth)) run.begin = run.end;
  if (run.begin == run.end) return;
  // Widening counts wide sources differently, so that there equal widths say nothing.
  run.straight = rows.how == Columns::kNarrow && rows.sourceWidth == rows.width;
  const uint32_t perByte = pixelsPerByte(run.depth);
  run.whole = std::min((run.begin + perByte - 1) / perByte * perByte, run.end);
  if (!run.straight && run.whole < run.end) planMoves(run, rows);
  // Columns rise from left to right: when the last one lies in a row, all do.
  const auto depth = static_cast<uint64_t>(run.depth);
  run.reads = ((uint64_t{run.origin} + run.columns[run.end - 1] + 1) * depth + 7) / 8;
  const uint64_t bits = (run.end - run.whole) * depth;
  run.at = static_cast<size_t>((uint64_t{first} + run.whole) * depth / 8);
  run.bytes = static_cast<size_t>((bits + 7) / 8);
  run.beside = static_cast<uint8_t>(bits % 8 != 0 ? 0xFFu >> (bits % 8) : 0);
}

void copyRun(const ColumnRun &run, std::span<const uint8_t> source, std::span<uint8_t> destination) {
  if (run.reads > source.size()) return copyPixels(run, run.begin, run.end, source, destination);
  if (run.begin != run.whole) copyPixels(run, run.begin, run.whole, source, destination);
  if (run.bytes == 0) return;
  uint8_t *out = destination.data() + run.at;
  uint8_t *last = out + run.bytes - 1;
  const uint8_t kept = run.beside != 0 ? *last & run.beside : uint8_t{0};
  if (run.straight) {
    std::memcpy(out, source.data() + run.at, run.bytes);
  } else if (run.depth >= 8) {
    copyWhole(run, source, out);
  } else if (run.unpacked) {
    copyUnpacked(run, source, out);
  } else {
    copyPacked(run, source, out);
  }
  if (run.beside != 0) *last = static_cast<uint8_t>((*last & ~run.beside) | kept);
}

}  // namespace color
