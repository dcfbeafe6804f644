// SPDX-License-Identifier: MIT
// The 15-bit histogram of a 24-bit picture: 5 bits a channel, 32768 saturating counters.
#pragma once

#include <cstdint>
#include <span>

namespace color {

constexpr uint32_t kCells = 32768;
constexpr uint16_t kFullCounter = 65535;

// The cell of a colour: the top five bits of each channel, red on top.
constexpr uint16_t cellOf(uint8_t red, uint8_t green, uint8_t blue) {
  return static_cast<uint16_t>((red >> 3) << 10 | (green >> 3) << 5 | blue >> 3);
}

// One 5-bit channel of a cell: axis 0 red, 1 green, anything else blue.
constexpr uint32_t channelOf(uint16_t cell, int32_t axis) {
  return uint32_t{cell} >> (axis == 0 ? 10 : axis == 1 ? 5 : 0) & 31u;
}

// Counts every pixel of a picture whose rows are bytesPerLine(width, 24) bytes apart; what lies past
// the end of rows counts as black. A counter stays at 65535 once it is there. Returns how many
// counters left 0.
uint32_t countColors(std::span<uint16_t, kCells> counters, std::span<const uint8_t> rows, uint32_t width,
                     uint32_t height);

}  // namespace color
