// SPDX-License-Identifier: MIT
#include "prepare/taps.h"

#include <algorithm>
#include <cmath>

namespace prepare {
namespace {

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

// The pixel covers the source from i * ratio to (i + 1) * ratio.
Taps areaTap(uint32_t i, double ratio, uint32_t from) {
  const double start = i * ratio, end = std::min((i + 1) * ratio, static_cast<double>(from));
  const uint32_t first = std::min(static_cast<uint32_t>(start), from - 1);
  std::vector<double> weights;
  for (uint32_t s = first; s < from && s < end; ++s) {
    weights.push_back(std::min(end, s + 1.0) - std::max(start, static_cast<double>(s)));
  }
  return toFixed(first, weights);
}

// The pixel's centre lies between the centres of two source pixels.
Taps linearTap(uint32_t i, double ratio, uint32_t from) {
  const double centre = std::clamp((i + 0.5) * ratio - 0.5, 0.0, from - 1.0);
  const auto first = static_cast<uint32_t>(centre);
  const double part = centre - first;
  return toFixed(first, part > 0 ? std::vector{1 - part, part} : std::vector{1.0});
}

double cubic(double t) {
  t = std::fabs(t);
  if (t < 1) return (1.5 * t - 2.5) * t * t + 1;
  return t < 2 ? ((-0.5 * t + 2.5) * t - 4) * t + 2 : 0;
}

Taps cubicTap(uint32_t i, double ratio, uint32_t from) {
  const double centre = (i + 0.5) * ratio - 0.5, reach = 2 * ratio;
  const auto first = static_cast<uint32_t>(std::max(0.0, std::ceil(centre - reach)));
  const auto last = static_cast<uint32_t>(std::min(from - 1.0, std::floor(centre + reach)));
  std::vector<double> weights;
  for (uint32_t s = first; s <= last; ++s) weights.push_back(cubic((s - centre) / ratio));
  return toFixed(first, weights);
}

template <class Make>
std::vector<Taps> all(uint32_t from, uint32_t to, Make shrinking) {
  std::vector<Taps> taps;
  taps.reserve(to);
  const double ratio = static_cast<double>(from) / to;
  for (uint32_t i = 0; i < to; ++i) {
    taps.push_back(ratio >= 1 ? shrinking(i, ratio, from) : linearTap(i, ratio, from));
  }
  return taps;
}

}  // namespace

std::vector<Taps> areaTaps(uint32_t from, uint32_t to) {
  return all(from, to, areaTap);
}

std::vector<Taps> cubicTaps(uint32_t from, uint32_t to) {
  return all(from, to, cubicTap);
}

}  // namespace prepare
