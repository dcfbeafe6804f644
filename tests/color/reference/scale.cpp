// SPDX-License-Identifier: MIT
#include "color/reference/scale.h"

#include <algorithm>

namespace reference {

namespace {

void copy(const uint8_t *source, uint32_t from, uint8_t *destination, uint32_t to, int depth) {
  setPixel(destination, 0, to, 0, depth, getPixel(source, 0, from, 0, depth), nullptr, nullptr, 0);
}

void scaleRow(const uint8_t *source, uint8_t *destination, int depth, uint32_t sourceWidth,
              uint32_t width) {
  if (width > sourceWidth) {
    stretchRow(source, destination, depth, sourceWidth, width);
  } else {
    shrinkRow(source, destination, depth, sourceWidth, width);
  }
}

}  // namespace

void shrinkRow(const uint8_t *source, uint8_t *destination, int depth, uint32_t sourceWidth,
               uint32_t width) {
  const double ratio = static_cast<double>(sourceWidth) / width;
  uint32_t prev = 0;
  uint32_t s = 0;
  for (uint32_t d = 1; d <= width; ++d) {
    const auto pos = static_cast<uint32_t>(d * ratio);
    const uint32_t step = pos - prev;
    prev = pos;
    if (d < width) {
      copy(source, s, destination, d - 1, depth);
      s += step;
    } else {
      copy(source, sourceWidth - 1, destination, d - 1, depth);
    }
  }
}

void stretchRow(const uint8_t *source, uint8_t *destination, int depth, uint32_t sourceWidth,
                uint32_t width) {
  const double ratio = static_cast<double>(width) / sourceWidth;
  int64_t cursor = int64_t{width} - 1;
  uint16_t prev = 0;
  for (int s = static_cast<int16_t>(sourceWidth) - 1; s >= 0; --s) {
    const auto n = static_cast<uint16_t>((static_cast<int>(sourceWidth) - s) * ratio);
    for (int copies = n - prev; copies > 0; --copies) {
      copy(source, static_cast<uint32_t>(s), destination, static_cast<uint32_t>(cursor), depth);
      cursor--;
    }
    prev = n;
  }
}

Bytes scale(const Bytes &bits, int depth, uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width,
            uint32_t height) {
  const uint32_t sourceLine = lineBytes(sourceWidth, depth);
  const uint32_t line = lineBytes(width, depth);
  Bytes out(size_t{line} * height, 0);
  if (height <= sourceHeight) {
    const double ratio = static_cast<double>(sourceHeight) / height;
    int16_t prev = 0;
    const uint8_t *source = bits.data();
    uint8_t *destination = out.data();
    for (uint32_t d = 1; d <= height; ++d) {
      const auto pos = static_cast<int16_t>(d * ratio);
      const int step = pos - prev;
      prev = pos;
      if (d == height) {
        scaleRow(bits.data() + size_t{sourceLine} * (sourceHeight - 1), destination, depth, sourceWidth,
                 width);
      }
      scaleRow(source, destination, depth, sourceWidth, width);
      destination += line;
      if (d < height) source += static_cast<size_t>(step) * sourceLine;
    }
    return out;
  }
  const double ratio = static_cast<double>(height) / sourceHeight;
  uint32_t prev = 0;
  auto row = static_cast<int64_t>(height) - 1;
  for (int64_t s = int64_t{sourceHeight} - 1; s >= 0; --s) {
    const auto n = static_cast<uint32_t>(static_cast<double>(sourceHeight - s) * ratio);
    uint32_t copies = n - prev;
    prev = n;
    if (copies == 0) continue;
    uint8_t *finished = out.data() + row * line;
    scaleRow(bits.data() + s * sourceLine, finished, depth, sourceWidth, width);
    for (row--; copies > 1; copies--, row--) std::copy_n(finished, line, out.data() + row * line);
  }
  return out;
}

void flip(Bytes &block, int depth, uint32_t width, uint32_t height, bool leftRight, bool topBottom) {
  const uint32_t line = lineBytes(width, depth);
  uint8_t *top = block.data();
  uint8_t *bottom = block.data() + size_t{line} * (height - 1);
  for (uint32_t step = 0; step < (height + 1) / 2; ++step, top += line, bottom -= line) {
    if (topBottom) {
      const Bytes scratch(top, top + line);
      std::copy_n(bottom, line, top);
      std::copy(scratch.begin(), scratch.end(), bottom);
    }
    for (uint32_t x = 0; leftRight && x < width / 2; ++x) {
      const uint32_t a = getPixel(top, 0, x, 0, depth);
      const uint32_t b = getPixel(top, 0, width - x, 0, depth);
      const uint32_t c = getPixel(bottom, 0, x, 0, depth);
      const uint32_t d = getPixel(bottom, 0, width - x, 0, depth);
      setPixel(top, 0, x, 0, depth, b, nullptr, nullptr, 0);
      setPixel(top, 0, width - x, 0, depth, a, nullptr, nullptr, 0);
      setPixel(bottom, 0, x, 0, depth, d, nullptr, nullptr, 0);
      setPixel(bottom, 0, width - x, 0, depth, c, nullptr, nullptr, 0);
    }
  }
}

void rgbToCmyk(Bytes &pixels) {
  for (size_t i = 0; i < pixels.size(); ++i)
    pixels[i] = i % 4 == 3 ? uint8_t{0} : static_cast<uint8_t>(255 - pixels[i]);
}

void cmykToRgb(Bytes &pixels) {
  size_t to = 0;
  for (size_t from = 0; from < pixels.size(); ++from) {
    if (from % 4 == 3) continue;
    const int black = pixels[from / 4 * 4 + 3];
    pixels[to++] = static_cast<uint8_t>(255 - (pixels[from] > black ? pixels[from] : black));
  }
}

void dropAlpha(Bytes &pixels) {
  size_t to = 0;
  for (size_t from = 0; from < pixels.size(); ++from) {
    if (from % 4 != 3) pixels[to++] = pixels[from];
  }
}

}  // namespace reference
