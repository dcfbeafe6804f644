// SPDX-License-Identifier: MIT
#include "color/median_cut/histogram.h"

#include <algorithm>
#include <bit>

#include "color/bitmap.h"
#include "runtime/blocks.h"
#include "runtime/unaligned.h"

namespace color {

namespace {

// Pictures below this many pixels are counted where they are; larger ones are worth two tables of
// their own, 128 KB each.
constexpr uint64_t kManyPixels = 1 << 17;

// Adds n pixels to one counter; tells whether it was 0 before.
bool add(uint16_t &counter, uint64_t n) {
  const bool first = counter == 0 && n != 0;
  counter = static_cast<uint16_t>(std::min<uint64_t>(counter + n, kFullCounter));
  return first;
}

// The cell of the pixel at the start of four bytes.
uint32_t cellOfWord(const uint8_t *pixel) {
  const auto word = runtime::load<uint32_t>(pixel);
  if constexpr (std::endian::native == std::endian::little) {
    return (word & 0xF8) << 7 | (word >> 6 & 0x3E0) | (word >> 19 & 0x1F);
  } else {
    return (word >> 17 & 0x7C00) | (word >> 14 & 0x3E0) | (word >> 11 & 0x1F);
  }
}

// Where the pixels of a call are counted: straight in the counters, or first in two wide tables that
// take turns, since neighbours often share a cell and would wait for one another.
class Tally {
 public:
  Tally(std::span<uint16_t, kCells> counters, uint64_t pixels) : counters_(counters) {
    if (pixels < kManyPixels) return;
    wide_ = runtime::Block::ofSize(2 * kCells * sizeof(uint32_t));
    // Blocks are 8-aligned, so their bytes can be used as words.
    even_ = static_cast<uint32_t *>(GlobalLock(wide_.handle()));
    odd_ = even_ + kCells;
  }

  void addPixel(uint8_t red, uint8_t green, uint8_t blue) {
    fresh_ += add(counters_[cellOf(red, green, blue)], 1);
  }

  // Counts the pixels at the start of a row, all of them inside it.
  void addRow(std::span<const uint8_t> row, uint64_t pixels) {
    const uint8_t *pixel = row.data();
    // A pixel is read with the byte after it, which the last one may not have.
    for (; even_ != nullptr && pixels > 2; pixels -= 2, pixel += 6) {
      ++even_[cellOfWord(pixel)];
      ++odd_[cellOfWord(pixel + 3)];
    }
    for (; pixels != 0; --pixels, pixel += 3) addPixel(pixel[0], pixel[1], pixel[2]);
  }

  void addBlack(uint64_t pixels) { fresh_ += add(counters_[0], pixels); }

  // Brings the wide tables home. Returns how many counters left 0.
  uint32_t finish() {
    for (uint32_t cell = 0; even_ != nullptr && cell < kCells; ++cell) {
      fresh_ += add(counters_[cell], uint64_t{even_[cell]} + odd_[cell]);
    }
    return fresh_;
  }

 private:
  std::span<uint16_t, kCells> counters_;
  runtime::Block wide_;
  uint32_t *even_ = nullptr;
  uint32_t *odd_ = nullptr;
  uint32_t fresh_ = 0;
};

}  // namespace

uint32_t countColors(std::span<uint16_t, kCells> counters, std::span<const uint8_t> rows, uint32_t width,
                     uint32_t height) {
  const uint64_t line = bytesPerLine(width, 24);
  const uint64_t pixels = uint64_t{width} * height;
  Tally tally(counters, std::min<uint64_t>(pixels, rows.size() / 3));
  uint64_t seen = 0;
  for (uint32_t y = 0; y < height && width != 0; ++y) {
    const std::span<const uint8_t> row = rowAt(rows, line, y);
    if (row.empty()) break;
    const uint64_t whole = std::min<uint64_t>(width, row.size() / 3);
    tally.addRow(row, whole);
    seen += whole;
    if (whole == width) continue;
    // The block ends inside a pixel: its missing bytes are 0.
    const auto channel = [row, whole](uint64_t i) {
      return whole * 3 + i < row.size() ? row.data()[whole * 3 + i] : uint8_t{0};
    };
    tally.addPixel(channel(0), channel(1), channel(2));
    ++seen;
  }
  tally.addBlack(pixels - seen);
  return tally.finish();
}

}  // namespace color
