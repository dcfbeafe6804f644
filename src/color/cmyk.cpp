// SPDX-License-Identifier: MIT
#include "color/cmyk.h"

#include <algorithm>
#include <cstring>

#include "color/kernels.h"
#include "raxel/color.h"
#include "runtime/blocks.h"
#include "runtime/unaligned.h"

namespace color {

void rgbToCmyk(uint8_t *pixels, size_t count) {
  constexpr uint8_t kColors[4] = {255, 255, 255, 0};
  const auto mask = runtime::load<uint32_t>(kColors);
  for (size_t i = 0; i < count; ++i) {
    uint8_t *pixel = pixels + 4 * i;
    runtime::store(pixel, ~runtime::load<uint32_t>(pixel) & mask);
  }
}

void cmykToRgbPlain(uint8_t *pixels, size_t count) {
  cmykToRgbFrom(pixels, pixels, count);
}

void cmykToRgbFrom(const uint8_t *in, uint8_t *out, size_t count) {
  // What is written never reaches the next pixel to be read.
  for (; count != 0; --count, in += 4, out += 3) {
    const uint8_t black = in[3];
    const uint8_t cyan = std::max(in[0], black);
    const uint8_t magenta = std::max(in[1], black);
    const uint8_t yellow = std::max(in[2], black);
    out[0] = static_cast<uint8_t>(255 - cyan);
    out[1] = static_cast<uint8_t>(255 - magenta);
    out[2] = static_cast<uint8_t>(255 - yellow);
  }
}

void dropAlphaPlain(uint8_t *pixels, size_t count) {
  dropAlphaFrom(pixels, pixels, count);
}

void dropAlphaFrom(const uint8_t *in, uint8_t *out, size_t count) {
  if (count == 0) return;
  // All but the last pixel move with their fourth byte, which the next one overwrites.
  for (size_t i = 1; i < count; ++i, in += 4, out += 3) runtime::store(out, runtime::load<uint32_t>(in));
  std::memmove(out, in, 3);
}

namespace {

// The pixels that a block really holds.
template <class Convert>
void convertBlock(Handle bits, uint32_t width, uint32_t height, Convert convert) {
  const std::span<uint8_t> bytes = runtime::lockBytes(bits);
  const auto held = uint64_t{bytes.size() / 4};
  const uint64_t pixels = std::min(uint64_t{width} * height, held);
  if (pixels != 0) convert(bytes.data(), static_cast<size_t>(pixels));
}

}  // namespace

}  // namespace color

void rlRGB4toCMYK(Handle bits, uint32_t width, uint32_t height) {
  color::convertBlock(bits, width, height, color::rgbToCmyk);
}

void rlCMYKtoRGB(Handle bits, uint32_t width, uint32_t height) {
  color::convertBlock(bits, width, height, color::kernels().cmykToRgb);
}

void rlALPHAtoRGB(Handle bits, uint32_t width, uint32_t height) {
  color::convertBlock(bits, width, height, color::kernels().dropAlpha);
}
