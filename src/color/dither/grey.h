// SPDX-License-Identifier: MIT
// Rows of 24-bit pixels turned to grey or inverted, in place.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// What reviseRow does to each pixel; the numbers are those of rev_rgb.
enum class RowMode : int32_t {
  kInvert = 1,          // every channel becomes 255 - value
  kInvertNearGrey = 2,  // as kInvert, only for pixels whose channels are pairwise within 10
  kGrey = 3,            // every channel becomes greyOf(red, green, blue)
  kInvertedGrey = 4,    // every channel becomes 255 - greyOf(red, green, blue)
};

// The luminance of a pixel, rounded down. Integer weights keep it the same on every machine.
constexpr uint8_t greyOf(uint32_t red, uint32_t green, uint32_t blue) {
  return static_cast<uint8_t>((3 * red + 6 * green + blue) / 10);
}

// Changes whole pixels of 3 bytes; a piece of a pixel at the end stays. Other modes do nothing.
void reviseRow(std::span<uint8_t> row, RowMode mode);

}  // namespace color
