// Scaling pixel by pixel, in the order in which the places of pixels are printed.
#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "color/scale.h"

namespace color {

namespace {

void copyPixel(std::span<const uint8_t> source, uint32_t from, std::span<uint8_t> destination, uint32_t to,
               int16_t depth) {
  setPixel(destination, to, 0, depth, getPixel(source, from, depth), {});
}

void narrowRow(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth,
               uint32_t sourceWidth, uint32_t width) {
  const double ratio = static_cast<double>(sourceWidth) / width;
  for (uint32_t k = 0; k < width; ++k) {
    copyPixel(source, k + 1 == width ? sourceWidth - 1 : static_cast<uint32_t>(k * ratio), destination, k,
              depth);
  }
}

void widenRow(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth,
              uint32_t sourceWidth, uint32_t width) {
  const uint32_t sources = widenedColumns(sourceWidth);
  const double ratio = static_cast<double>(width) / sources;
  uint32_t filled = 0;
  for (uint32_t t = 1; t <= sources; ++t) {
    const auto fills = std::min(static_cast<uint64_t>(t * ratio), uint64_t{width});
    for (; filled < fills; ++filled) copyPixel(source, sources - t, destination, width - filled - 1, depth);
  }
}

}  // namespace

void scaleRowPlainly(Columns how, std::span<const uint8_t> source, std::span<uint8_t> destination,
                     int16_t depth, uint32_t sourceWidth, uint32_t width) {
  if (sourceWidth == 0 || width == 0) return;
  if (how == Columns::kWiden) {
    widenRow(source, destination, depth, sourceWidth, width);
  } else {
    narrowRow(source, destination, depth, sourceWidth, width);
  }
}

void shrinkPlainly(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth,
                   Size from, Size to) {
  const uint64_t sourceLine = bytesPerLine(from.width, depth);
  const uint64_t line = bytesPerLine(to.width, depth);
  const Columns how = columnsFor(from.width, to.width);
  const double ratio = static_cast<double>(from.height) / to.height;
  const auto scale = [&](uint64_t y, uint32_t k) {
    scaleRowPlainly(how, rowAt(source, sourceLine, y), rowAt(destination, line, k), depth, from.width,
                    to.width);
  };
  for (uint32_t k = 0; k < to.height; ++k) {
    // The last row is written twice: first from the last source row, then as every row is.
    if (k + 1 == to.height) scale(from.height - 1, k);
    scale(static_cast<uint64_t>(k * ratio), k);
  }
}

void stretchPlainly(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth,
                    Size from, Size to) {
  const uint64_t sourceLine = bytesPerLine(from.width, depth);
  const uint64_t line = bytesPerLine(to.width, depth);
  const Columns how = columnsFor(from.width, to.width);
  const double ratio = static_cast<double>(to.height) / from.height;
  uint64_t filled = 0;
  for (uint64_t t = 1; t <= from.height; ++t) {
    const uint64_t fills =
        std::min<uint64_t>(static_cast<uint64_t>(static_cast<double>(t) * ratio), to.height);
    if (fills == filled) continue;
    const std::span<uint8_t> bottom = rowAt(destination, line, to.height - filled - 1);
    scaleRowPlainly(how, rowAt(source, sourceLine, from.height - t), bottom, depth, from.width, to.width);
    for (++filled; filled < fills; ++filled) {
      std::memcpy(rowAt(destination, line, to.height - filled - 1).data(), bottom.data(),
                  static_cast<size_t>(line));
    }
  }
}

}  // namespace color
