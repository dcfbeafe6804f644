// SPDX-License-Identifier: MIT
#include "color/scale/columns.h"

#include <algorithm>

#include "color/debug_level.h"

namespace color {

namespace {

// Numbers are signed, as the processor's own conversions to and from doubles are.
template <class Signed>
void fillNarrowColumns(double ratio, Signed first, std::span<uint32_t> columns) {
  const auto n = static_cast<Signed>(columns.size());
  for (Signed i = 0; i < n; ++i) {
    columns[static_cast<size_t>(i)] =
        static_cast<uint32_t>(static_cast<Signed>(static_cast<double>(first + i) * ratio));
  }
}

size_t narrowColumns(uint32_t sourceWidth, uint32_t width, uint32_t first, std::span<uint32_t> columns) {
  if (sourceWidth == 0 || width == 0) return columns.size();
  const double ratio = static_cast<double>(sourceWidth) / width;
  const uint32_t last = width - 1;
  const size_t counted = std::min<size_t>(columns.size(), last - std::min(first, last));
  // The shorter numbers are converted several at a time.
  if (std::max(sourceWidth, width) <= INT32_MAX) {
    fillNarrowColumns(ratio, static_cast<int32_t>(first), columns.first(counted));
  } else {
    fillNarrowColumns(ratio, int64_t{first}, columns.first(counted));
  }
  std::fill(columns.begin() + static_cast<ptrdiff_t>(counted), columns.end(), sourceWidth - 1);
  return 0;
}

size_t widenColumns(uint32_t sourceWidth, uint32_t width, uint32_t first, std::span<uint32_t> columns) {
  const uint32_t sources = widenedColumns(sourceWidth);
  if (sources == 0 || width == 0 || columns.empty()) return columns.size();
  const double ratio = static_cast<double>(width) / sources;
  const auto filledBy = [ratio](int64_t t) { return static_cast<int64_t>(static_cast<double>(t) * ratio); };
  // How many source columns it takes to reach the rightmost column of the stretch: an estimate from
  // below, then the exact number.
  const auto distance = static_cast<int64_t>(width - (first + (columns.size() - 1)));
  auto t = static_cast<int64_t>(static_cast<double>(distance) / ratio);
  t = t > 1 ? t - 1 : 1;
  while (t <= sources && filledBy(t) < distance) ++t;
  // From there on each source column fills as many as it reaches further than the one before.
  size_t left = columns.size();
  for (int64_t filled = distance - 1; left > 0 && t <= sources; ++t) {
    const auto column = static_cast<uint32_t>(sources - t);
    for (const int64_t reached = filledBy(t); filled < reached && left > 0; ++filled)
      columns[--left] = column;
  }
  return left;
}

// How many columns, from the right, widening fills in all.
uint32_t widenedFrom(uint32_t sourceWidth, uint32_t width) {
  const uint32_t sources = widenedColumns(sourceWidth);
  if (sources == 0) return 0;
  const double ratio = static_cast<double>(width) / sources;
  return static_cast<uint32_t>(std::min<uint64_t>(static_cast<uint64_t>(sources * ratio), width));
}

}  // namespace

void printPlaces(Columns how, uint32_t sourceWidth, uint32_t width, uint64_t rows) {
  const uint32_t left = how == Columns::kWiden ? width - widenedFrom(sourceWidth, width) : 0;
  for (; rows > 0; --rows) {
    for (uint32_t x = left; x < width; ++x) {
      printPlace(how == Columns::kWiden ? width - 1 - (x - left) : x, 0);
    }
  }
}

size_t mapColumns(Columns how, uint32_t sourceWidth, uint32_t width, uint32_t first,
                  std::span<uint32_t> columns) {
  return how == Columns::kWiden ? widenColumns(sourceWidth, width, first, columns)
                                : narrowColumns(sourceWidth, width, first, columns);
}

}  // namespace color
