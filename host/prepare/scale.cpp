// SPDX-License-Identifier: MIT
#include "prepare/scale.h"

#include <algorithm>

#include "prepare/taps.h"

namespace prepare {
namespace {

void scaleRow(const uint8_t *in, uint32_t channels, const std::vector<Taps> &taps, int *out) {
  for (const Taps &t : taps) {
    for (uint32_t c = 0; c < channels; ++c) {
      int sum = 0;
      const uint8_t *p = in + size_t{t.first} * channels + c;
      for (int w : t.weights) {
        sum += w * *p;
        p += channels;
      }
      *out++ = sum;  // up to 255 * kOne, so that the second pass starts from full precision
    }
  }
}

}  // namespace

Raster scale(const Source &source, uint32_t width, uint32_t height) {
  const uint32_t channels = source.grey() ? 1 : 3;
  Raster result{width, height, channels, std::vector<uint8_t>(size_t{width} * height * channels)};
  const std::vector<Taps> across = areaTaps(source.width(), width),
                          down = areaTaps(source.height(), height);
  const size_t wide = size_t{width} * channels;
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  // Two rows are enough when growing; when shrinking each source row is used by at most two results.
  std::vector<int> rows[2] = {std::vector<int>(wide), std::vector<int>(wide)};
  uint32_t held[2] = {UINT32_MAX, UINT32_MAX};
  const auto scaledRow = [&](uint32_t y) -> const std::vector<int> & {
    const uint32_t slot = y & 1;
    if (held[slot] != y) {
      channels == 1 ? source.readGrey(y, row.data()) : source.readColors(y, row.data());
      scaleRow(row.data(), channels, across, rows[slot].data());
      held[slot] = y;
    }
    return rows[slot];
  };
  std::vector<int64_t> sums(wide);
  for (uint32_t y = 0; y < height; ++y) {
    std::fill(sums.begin(), sums.end(), int64_t{kOne} * kOne / 2);
    for (size_t k = 0; k < down[y].weights.size(); ++k) {
      const int weight = down[y].weights[k];
      const std::vector<int> &scaled = scaledRow(down[y].first + static_cast<uint32_t>(k));
      for (size_t i = 0; i < wide; ++i) sums[i] += int64_t{weight} * scaled[i];
    }
    uint8_t *out = result.bytes.data() + wide * y;
    for (size_t i = 0; i < wide; ++i) out[i] = static_cast<uint8_t>(sums[i] / (int64_t{kOne} * kOne));
  }
  return result;
}

}  // namespace prepare
