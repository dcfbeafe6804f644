// SPDX-License-Identifier: MIT
#include "color/scale/scale.h"

#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/scale/column_run.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

namespace {

// Depths below 1 are no reason: their pixels have places to print.
bool nothingToScale(std::span<uint8_t> destination, int16_t depth, Size from, Size to) {
  return from.width == 0 || from.height == 0 || to.width == 0 || to.height == 0 ||
         destination.size() < bitmapSize(to.width, to.height, depth);
}

// Whether a picture of these sizes is its own copy, with no bits between rows that must stay.
bool isPlainCopy(std::span<const uint8_t> source, int16_t depth, Size from, Size to) {
  const uint64_t bits = uint64_t{to.width} * static_cast<uint64_t>(depth);
  return from.width == to.width && from.height == to.height && bits % 32 == 0 &&
         source.size() >= bitmapSize(to.width, to.height, depth);
}

// Runs a step for each run of columns of a row.
template <class Step>
void forEachRun(const RowScaling &rows, Step step) {
  ColumnRun run;
  for (uint64_t first = 0; first < rows.width; first += run.end) {
    planRun(run, rows, static_cast<uint32_t>(first));
    step(run);
  }
}

}  // namespace

void shrink(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth, Size from,
            Size to) {
  if (nothingToScale(destination, depth, from, to)) return;
  const Columns how = columnsFor(from.width, to.width);
  // The last row is set twice, first from the last source row, which does not last.
  if (printsPixels()) printPlaces(how, from.width, to.width, uint64_t{to.height} + 1);
  if (!isPixelDepth(depth)) return;
  const uint64_t sourceLine = bytesPerLine(from.width, depth);
  const uint64_t line = bytesPerLine(to.width, depth);
  if (isPlainCopy(source, depth, from, to)) {
    std::memcpy(destination.data(), source.data(), static_cast<size_t>(line * to.height));
    return;
  }
  const double ratio = static_cast<double>(from.height) / to.height;
  forEachRun({how, depth, from.width, to.width, to.height}, [&](const ColumnRun &run) {
    for (uint32_t k = 0; k < to.height; ++k) {
      const auto y = static_cast<uint64_t>(static_cast<int64_t>(k * ratio));
      copyRun(run, rowAt(source, sourceLine, y), rowAt(destination, line, k));
    }
  });
}

namespace {

// Calls step(y, below, filled) for each source row that fills rows: those from `below` up to `filled`,
// counted from the bottom. From the top down, as memory is read ahead.
template <class Step>
void forEachSourceRow(uint32_t sourceHeight, uint32_t height, Step step) {
  const double ratio = static_cast<double>(height) / sourceHeight;
  const auto filledBy = [&](int64_t t) {
    const auto rows = static_cast<int64_t>(static_cast<double>(t) * ratio);
    return static_cast<uint64_t>(std::min<int64_t>(rows, height));
  };
  uint64_t filled = filledBy(sourceHeight);
  for (uint32_t y = 0; y < sourceHeight; ++y) {
    const uint64_t below = filledBy(int64_t{sourceHeight} - 1 - y);
    if (below != filled) step(y, below, filled);
    filled = below;
  }
}

}  // namespace

void stretch(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth, Size from,
             Size to) {
  if (nothingToScale(destination, depth, from, to)) return;
  const Columns how = columnsFor(from.width, to.width);
  if (printsPixels()) {
    forEachSourceRow(from.height, to.height, [&](uint32_t /*y*/, uint64_t /*below*/, uint64_t /*filled*/) {
      printPlaces(how, from.width, to.width, 1);
    });
  }
  if (depth < 1) return;
  const uint64_t sourceLine = bytesPerLine(from.width, depth);
  const uint64_t line = bytesPerLine(to.width, depth);
  forEachRun({how, depth, from.width, to.width, to.height}, [&](const ColumnRun &run) {
    // The bytes of the run in every row; the last one takes the padding along.
    const uint64_t at = uint64_t{run.first} * static_cast<uint64_t>(depth) / 8;
    const bool last = run.first + run.end == to.width;
    const uint64_t bytes = last ? line - at : uint64_t{run.end} * static_cast<uint64_t>(depth) / 8;
    forEachSourceRow(from.height, to.height, [&](uint32_t y, uint64_t below, uint64_t filled) {
      // Of equal rows the lowest is made first. The others are its copies at every depth, also where no
      // pixel can be set.
      const std::span<uint8_t> bottom = rowAt(destination, line, to.height - below - 1);
      copyRun(run, rowAt(source, sourceLine, y), bottom);
      for (--filled; filled > below; --filled) {
        uint8_t *above = rowAt(destination, line, to.height - filled - 1).data();
        std::memcpy(above + at, bottom.data() + at, static_cast<size_t>(bytes));
      }
    });
  });
}

void scaleRow(Columns how, std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth,
              uint32_t sourceWidth, uint32_t width) {
  if (nothingToScale(destination, depth, {sourceWidth, 1}, {width, 1})) return;
  if (printsPixels()) printPlaces(how, sourceWidth, width, 1);
  if (!isPixelDepth(depth)) return;
  forEachRun({how, depth, sourceWidth, width, 1},
             [&](const ColumnRun &run) { copyRun(run, source, destination); });
}

namespace {

Handle scaledCopy(Handle bits, int16_t depth, Size from, Size to) {
  if (bits == 0) return 0;
  const Handle scaled = runtime::allocate(bitmapSize(to.width, to.height, depth));
  if (scaled == 0) return 0;
  const auto scale = to.height > from.height ? stretch : shrink;
  scale(runtime::lockBytes(bits), runtime::lockBytes(scaled), depth, from, to);
  return scaled;
}

// The exported workers know no block sizes: the host answers for what its geometry names.
template <class Byte>
std::span<Byte> picture(Byte *data, int16_t depth, Size size) {
  const uint64_t bytes = std::min<uint64_t>(bitmapSize(size.width, size.height, depth), SIZE_MAX / 2);
  return {data, static_cast<size_t>(bytes)};
}

}  // namespace

}  // namespace color

Handle rlShrinkBitmap(Handle bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight,
                      uint32_t width, uint32_t height) {
  return color::scaledCopy(bits, depth, {sourceWidth, sourceHeight}, {width, height});
}

Handle rlStretchBitmap(Handle bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight,
                       uint32_t width, uint32_t height) {
  return color::scaledCopy(bits, depth, {sourceWidth, sourceHeight}, {width, height});
}

int32_t Shrink(const uint8_t *source, uint8_t *destination, int16_t depth, uint32_t sourceWidth,
               uint32_t sourceHeight, uint32_t width, uint32_t height) {
  if (source == nullptr || destination == nullptr) return 0;
  const color::Size from{sourceWidth, sourceHeight};
  const color::Size to{width, height};
  color::shrink(color::picture(source, depth, from), color::picture(destination, depth, to), depth, from,
                to);
  return 0;
}

int32_t Stretch(const uint8_t *source, uint8_t *destination, int16_t depth, uint32_t sourceWidth,
                uint32_t sourceHeight, uint32_t width, uint32_t height) {
  if (source == nullptr || destination == nullptr) return 0;
  const color::Size from{sourceWidth, sourceHeight};
  const color::Size to{width, height};
  color::stretch(color::picture(source, depth, from), color::picture(destination, depth, to), depth, from,
                 to);
  return 0;
}

// One row, whatever the number of rows says: it is 1 wherever rows are scaled.
int32_t ShrinkX(const uint8_t *source, uint8_t *destination, int16_t depth, uint32_t sourceWidth,
                uint32_t /*rows*/, uint32_t width) {
  if (source == nullptr || destination == nullptr) return 0;
  color::scaleRow(color::Columns::kNarrow, color::picture(source, depth, {sourceWidth, 1}),
                  color::picture(destination, depth, {width, 1}), depth, sourceWidth, width);
  return 0;
}

int32_t StretchX(const uint8_t *source, uint8_t *destination, int16_t depth, uint32_t sourceWidth,
                 uint32_t /*rows*/, uint32_t width) {
  if (source == nullptr || destination == nullptr) return 0;
  color::scaleRow(color::Columns::kWiden, color::picture(source, depth, {sourceWidth, 1}),
                  color::picture(destination, depth, {width, 1}), depth, sourceWidth, width);
  return 0;
}
