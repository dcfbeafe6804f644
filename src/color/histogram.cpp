#include "color/histogram.h"

#include <algorithm>

#include "color/bitmap.h"

namespace color {

namespace {

// Adds n pixels to one counter; tells whether it was 0 before.
bool add(uint16_t &counter, uint64_t n) {
  const bool first = counter == 0 && n != 0;
  counter = static_cast<uint16_t>(std::min<uint64_t>(counter + n, kFullCounter));
  return first;
}

uint32_t countRow(std::span<uint16_t, kCells> counters, const uint8_t *row, uint64_t pixels) {
  uint32_t fresh = 0;
  for (uint64_t x = 0; x < pixels; ++x, row += 3) fresh += add(counters[cellOf(row[0], row[1], row[2])], 1);
  return fresh;
}

}  // namespace

uint32_t countColors(std::span<uint16_t, kCells> counters, std::span<const uint8_t> rows, uint32_t width,
                     uint32_t height) {
  const uint64_t line = bytesPerLine(width, 24);
  uint32_t fresh = 0;
  uint64_t seen = 0;
  for (uint32_t y = 0; y < height && width != 0; ++y) {
    const std::span<const uint8_t> row = rowAt(rows, line, y);
    if (row.empty()) break;
    const uint64_t whole = std::min<uint64_t>(width, row.size() / 3);
    fresh += countRow(counters, row.data(), whole);
    seen += whole;
    if (whole == width) continue;
    // The block ends inside a pixel: its missing bytes are 0.
    const auto channel = [row, whole](uint64_t i) {
      return whole * 3 + i < row.size() ? row.data()[whole * 3 + i] : uint8_t{0};
    };
    fresh += add(counters[cellOf(channel(0), channel(1), channel(2))], 1);
    ++seen;
  }
  return fresh + add(counters[0], uint64_t{width} * height - seen);
}

}  // namespace color
