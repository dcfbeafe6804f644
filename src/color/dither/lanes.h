// SPDX-License-Identifier: MIT
// Two pixels side by side in one vector, four 16-bit lanes each: red, green, blue and 0.
//
// The compiler turns these operations into the machine's vector instructions where it has them.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace color {

using Lanes = int16_t __attribute__((vector_size(16)));

// One pixel of four lanes as a word, as it lies in memory.
using PixelWord = uint64_t;

constexpr PixelWord packPixel(uint32_t red, uint32_t green, uint32_t blue) {
  if constexpr (std::endian::native == std::endian::little) {
    return PixelWord{red} | PixelWord{green} << 16 | PixelWord{blue} << 32;
  } else {
    return PixelWord{red} << 48 | PixelWord{green} << 32 | PixelWord{blue} << 16;
  }
}

// One channel of a pixel whose lanes are all within 0..255.
constexpr uint32_t redOf(PixelWord pixel) {
  return static_cast<uint32_t>(std::endian::native == std::endian::little ? pixel : pixel >> 48) & 255;
}
constexpr uint32_t greenOf(PixelWord pixel) {
  return static_cast<uint32_t>(std::endian::native == std::endian::little ? pixel >> 16 : pixel >> 32) &
         255;
}
constexpr uint32_t blueOf(PixelWord pixel) {
  return static_cast<uint32_t>(std::endian::native == std::endian::little ? pixel >> 32 : pixel >> 16) &
         255;
}

// Vectors go in and out by reference: not every machine has one way to pass them by value.

inline void joinPixels(PixelWord first, PixelWord second, Lanes &lanes) {
  const PixelWord both[2] = {first, second};
  std::memcpy(&lanes, both, sizeof lanes);
}

// A pixel of the two, 0 or 1.
inline PixelWord pixelOf(const Lanes &lanes, int which) {
  PixelWord both[2];
  std::memcpy(both, &lanes, sizeof both);
  return both[which];
}

// Limits every lane to 0..255.
inline void clampLanes(Lanes &lanes) {
  const Lanes low = {};
  const Lanes high = low + 255;
  lanes = lanes < low ? low : lanes;
  lanes = lanes > high ? high : lanes;
}

// 7 sixteenths and one eighth of errors, both truncated toward zero: a negative number is raised by
// one less than the divisor before it is shifted.
inline void sevenSixteenths(const Lanes &error, Lanes &quotient) {
  const Lanes seven = error * 7;
  quotient = (seven + ((seven >> 15) & 15)) >> 4;
}
inline void oneEighth(const Lanes &error, Lanes &quotient) {
  quotient = (error + ((error >> 15) & 7)) >> 3;
}

}  // namespace color
