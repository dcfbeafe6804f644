// SPDX-License-Identifier: MIT
// Pictures for the coders, drawn from seeds. Rows have no padding; in the bilevel ones a set bit is
// white, as the coders take it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>

#include "pictures.h"

namespace bench {

struct Picture {
  std::string name;
  size_t width = 0;
  size_t height = 0;
  size_t bitsPerPixel = 0;
  std::vector<uint8_t> pixels;

  size_t rowBytes() const { return (width * bitsPerPixel + 7) / 8; }
};

// A4 at 300 dots per inch.
constexpr size_t kPageWidth = 2480;
constexpr size_t kPageHeight = 3508;

inline Picture photoPicture() {
  return {"photo", 1600, 1200, 24, photo(1600, 1200, 3)};
}

inline Picture noisePicture() {
  support::Random random(3);
  return {"noise", 1600, 1200, 24, random.bytes(1600 * 1200 * 3)};
}

// Glyph-like shapes: uprights, bars, slants and bows, four pixels thick, in lines of words.
inline std::vector<bool> inkOfAPage(size_t width, size_t height) {
  support::Random random(11);
  std::vector<bool> ink(width * height);
  const auto dot = [&](int64_t x, int64_t y) {
    if (x < 0 || y < 0 || x >= static_cast<int64_t>(width) || y >= static_cast<int64_t>(height)) return;
    ink[static_cast<size_t>(y) * width + static_cast<size_t>(x)] = true;
  };
  const auto stroke = [&](int64_t x, int64_t y, int64_t kind) {
    for (int64_t i = 0; i < 32; ++i) {
      for (int64_t thick = 0; thick < 4; ++thick) {
        if (kind == 0) dot(x + thick, y + i);
        if (kind == 1 && i < 18) dot(x + i, y + thick);
        if (kind == 2) dot(x + i / 2 + thick, y + i);
        if (kind == 3) dot(x + 16 - i / 2 + thick, y + i);
        if (kind == 4) dot(x + (i - 16) * (i - 16) / 16 + thick, y + i);
        if (kind == 5) dot(x + 16 - (i - 16) * (i - 16) / 16 + thick, y + i);
      }
    }
  };
  int64_t lines = 0;
  for (int64_t y = 280; y + 300 < static_cast<int64_t>(height); y += 58) {
    if (++lines % 9 == 0) continue;  // between paragraphs
    const int64_t right = static_cast<int64_t>(width) - (lines % 9 == 8 ? 1100 : 260);
    for (int64_t x = 250; x < right; x += 26) {
      if (random.chance(16)) continue;  // between words
      for (int64_t n = random.between(1, 3); n > 0; --n) {
        stroke(x + random.between(-2, 2), y + random.between(-1, 1), random.between(0, 5));
      }
      if (random.chance(30)) stroke(x, y + random.between(0, 28), 1);
    }
  }
  return ink;
}

inline std::vector<uint8_t> packWhite(const std::vector<bool> &ink, size_t width, size_t height) {
  const size_t rowBytes = (width + 7) / 8;
  std::vector<uint8_t> rows(rowBytes * height);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      if (!ink[y * width + x]) rows[y * rowBytes + x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
    }
  }
  return rows;
}

inline Picture textPicture() {
  return {"text page", kPageWidth, kPageHeight, 1,
          packWhite(inkOfAPage(kPageWidth, kPageHeight), kPageWidth, kPageHeight)};
}

// The same page as a scanner sees it in grey: soft edges, and paper that is not quite even.
inline Picture greyScanPicture() {
  support::Random random(13);
  const size_t width = kPageWidth / 2;
  const size_t height = kPageHeight / 2;
  const std::vector<bool> ink = inkOfAPage(kPageWidth, kPageHeight);
  std::vector<uint8_t> pixels;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      int64_t dark = 0;
      for (size_t i = 0; i < 4; ++i) dark += ink[(2 * y + i / 2) * kPageWidth + 2 * x + i % 2] ? 1 : 0;
      const int64_t paper = 236 + static_cast<int64_t>(x * 8 / width);
      pixels.push_back(static_cast<uint8_t>(paper - 50 * dark + random.between(0, 2)));
    }
  }
  return {"grey scan", width, height, 8, pixels};
}

// Bars, a grid and labels in 16 of 256 colours.
inline Picture chartPicture() {
  support::Random random(17);
  const size_t width = 2000;
  const size_t height = 1500;
  std::vector<uint8_t> pixels(width * height, 0);
  const auto box = [&](size_t x0, size_t y0, size_t x1, size_t y1, uint8_t color) {
    for (size_t y = y0; y < std::min(y1, height); ++y) {
      for (size_t x = x0; x < std::min(x1, width); ++x) pixels[y * width + x] = color;
    }
  };
  for (size_t y = 100; y < height; y += 90) box(80, y, width - 60, y + 2, 7);
  for (size_t x = 110; x + 90 < width; x += 62) {
    const auto top = static_cast<size_t>(random.between(120, 1100));
    const auto color = static_cast<uint8_t>(random.between(1, 6));
    box(x, top, x + 44, height - 120, color);
    for (size_t y = top; y < height - 120; y += 6) box(x + 22, y, x + 44, y + 1, 8);
    for (size_t i = 0; i < 30; ++i) {
      const size_t at = x + static_cast<size_t>(random.between(0, 40));
      box(at, height - 100 + i, at + 3, height - 99 + i, 9);
    }
  }
  for (size_t x = 80; x + 60 < width; ++x) {
    const size_t y = 700 + static_cast<size_t>(std::abs(static_cast<int>(x % 640) - 320));
    box(x, y, x + 1, y + 4, 10);
  }
  return {"chart", width, height, 8, pixels};
}

// A soft picture in grey, error-diffused to black and white.
inline Picture ditheredPicture(size_t width = kPageWidth, size_t height = kPageHeight) {
  const std::vector<uint8_t> grey = photo(width, height, 1);
  std::vector<bool> ink(grey.size());
  std::vector<int> row(width + 2);
  std::vector<int> below(width + 2);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const int wanted = grey[y * width + x] + row[x + 1] / 16;
      const bool black = wanted < 128;
      const int error = wanted - (black ? 0 : 255);
      ink[y * width + x] = black;
      row[x + 2] += error * 7;
      below[x] += error * 3;
      below[x + 1] += error * 5;
      below[x + 2] += error;
    }
    row.swap(below);
    std::fill(below.begin(), below.end(), 0);
  }
  return {"dithered photo", width, height, 1, packWhite(ink, width, height)};
}

inline Picture bilevelNoisePicture() {
  support::Random random(19);
  return {"noise", kPageWidth, kPageHeight, 1, random.bytes(kPageWidth / 8 * kPageHeight)};
}

}  // namespace bench
