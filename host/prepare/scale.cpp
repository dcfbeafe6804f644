#include "prepare/scale.h"

#include <algorithm>
#include <cmath>

namespace prepare {
namespace {

constexpr int kOne = 1 << 14;  // weights are fractions of this and add up to it exactly

// How one pixel of the result is made: weights of the source pixels from `first` on.
struct Taps {
  uint32_t first = 0;
  std::vector<int> weights;
};

// Rounds the weights so that they add up to kOne: a flat area then keeps its exact value.
Taps toFixed(uint32_t first, const std::vector<double> &weights) {
  Taps taps{first, {}};
  double sum = 0, done = 0;
  for (double w : weights) sum += w;
  int given = 0;
  for (double w : weights) {
    done += w;
    const int upTo = static_cast<int>(std::lround(done / sum * kOne));
    taps.weights.push_back(upTo - given);
    given = upTo;
  }
  return taps;
}

std::vector<Taps> tapsOf(uint32_t from, uint32_t to) {
  std::vector<Taps> all;
  all.reserve(to);
  const double ratio = static_cast<double>(from) / to;
  for (uint32_t i = 0; i < to; ++i) {
    std::vector<double> weights;
    uint32_t first = 0;
    if (ratio >= 1) {
      // The pixel covers the source from i * ratio to (i + 1) * ratio.
      const double start = i * ratio, end = std::min((i + 1) * ratio, static_cast<double>(from));
      first = std::min(static_cast<uint32_t>(start), from - 1);
      for (uint32_t s = first; s < from && s < end; ++s) {
        weights.push_back(std::min(end, s + 1.0) - std::max(start, static_cast<double>(s)));
      }
    } else {
      // The pixel's centre lies between the centres of two source pixels.
      const double centre = std::clamp((i + 0.5) * ratio - 0.5, 0.0, from - 1.0);
      first = static_cast<uint32_t>(centre);
      const double part = centre - first;
      weights = part > 0 ? std::vector{1 - part, part} : std::vector{1.0};
    }
    all.push_back(toFixed(first, weights));
  }
  return all;
}

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
  const std::vector<Taps> across = tapsOf(source.width(), width), down = tapsOf(source.height(), height);
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
