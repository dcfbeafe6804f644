#include "color/columns.h"

#include <algorithm>

namespace color {

namespace {

size_t narrowColumns(uint32_t sourceWidth, uint32_t width, uint32_t first, std::span<uint32_t> columns) {
  if (sourceWidth == 0 || width == 0) return columns.size();
  const double ratio = static_cast<double>(sourceWidth) / width;
  for (size_t i = 0; i < columns.size(); ++i) {
    const uint64_t k = first + uint64_t{i};
    columns[i] = k + 1 >= width ? sourceWidth - 1 : static_cast<uint32_t>(static_cast<double>(k) * ratio);
  }
  return 0;
}

size_t widenColumns(uint32_t sourceWidth, uint32_t width, uint32_t first, std::span<uint32_t> columns) {
  const uint32_t sources = widenedColumns(sourceWidth);
  if (sources == 0 || width == 0 || columns.empty()) return columns.size();
  const double ratio = static_cast<double>(width) / sources;
  const auto filledBy = [ratio](uint64_t t) {
    return static_cast<uint64_t>(static_cast<double>(t) * ratio);
  };
  // How many source columns it takes to reach the rightmost column of the stretch: an estimate from
  // below, then the exact number.
  const uint64_t distance = width - (first + (columns.size() - 1));
  uint64_t t = static_cast<uint64_t>(static_cast<double>(distance) / ratio);
  t = t > 1 ? t - 1 : 1;
  size_t left = columns.size();
  for (uint64_t fromRight = distance; left > 0; ++fromRight) {
    while (t <= sources && filledBy(t) < fromRight) ++t;
    if (t > sources) break;
    columns[--left] = static_cast<uint32_t>(sources - t);
  }
  return left;
}

}  // namespace

size_t mapColumns(Columns how, uint32_t sourceWidth, uint32_t width, uint32_t first,
                  std::span<uint32_t> columns) {
  return how == Columns::kWiden ? widenColumns(sourceWidth, width, first, columns)
                                : narrowColumns(sourceWidth, width, first, columns);
}

}  // namespace color
