// SPDX-License-Identifier: MIT
// Pictures to measure with, drawn from seeds: the same on every run and machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/random.h"

namespace bench {

constexpr size_t kPhotoWidth = 4000;  // 12 megapixels in all
constexpr size_t kPhotoHeight = 3000;

// Photo-like pixels: broad gradients with some noise, `channels` bytes a pixel, rows without padding.
inline std::vector<uint8_t> photo(size_t width, size_t height, size_t channels) {
  support::Random random(2024);
  std::vector<uint8_t> out(width * height * channels);
  size_t at = 0;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const uint64_t noise = random.next();
      for (size_t c = 0; c < channels; ++c) {
        const size_t slope = (c + 1) * 150 * x / width + (3 - c) * 80 * y / height;
        out[at++] = static_cast<uint8_t>(slope + ((noise >> (8 * c)) & 15));
      }
    }
  }
  return out;
}

// A page of text at one bit a pixel, most significant bit first, 1 for ink: words of short strokes in
// lines, rows padded to 4 bytes.
inline std::vector<uint8_t> textPage(size_t width, size_t height) {
  support::Random random(7);
  const size_t stride = (width + 31) / 32 * 4;
  std::vector<uint8_t> out(stride * height);
  const auto ink = [&](size_t x, size_t y) {
    if (x < width && y < height) out[y * stride + x / 8] |= static_cast<uint8_t>(0x80 >> (x % 8));
  };
  for (size_t line = 100; line + 140 < height; line += 60) {
    for (size_t x = 150; x + 180 < width; x += 24) {
      if (random.chance(18)) continue;  // between words
      for (int stroke = 0; stroke < 3; ++stroke) {
        const size_t x0 = x + static_cast<size_t>(random.between(0, 16));
        const size_t y0 = line + static_cast<size_t>(random.between(0, 20));
        const bool upright = random.chance(60);
        for (size_t i = 0; i < 14; ++i) {
          for (size_t w = 0; w < 4; ++w) upright ? ink(x0 + w, y0 + i) : ink(x0 + i, y0 + w);
        }
      }
    }
  }
  return out;
}

}  // namespace bench
