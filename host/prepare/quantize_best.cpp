// SPDX-License-Identifier: MIT
// The table with the smallest error (clusters.h), and each pixel's nearest entry of it, or diffused to it.
#include <algorithm>

#include "prepare/clusters.h"
#include "prepare/diffuse.h"
#include "prepare/nearest.h"
#include "prepare/quantize.h"

namespace prepare {

int quantizeBest(const Source &source, uint32_t colors, bool dither, Reduced &out) {
  const std::vector<Color> table = chooseColors(histogramOf(source), colors);
  std::copy(table.begin(), table.end(), out.table.begin());
  out.indices.resize(size_t{source.width()} * source.height());
  if (dither) {
    diffuse(source, table, out.indices.data());
    return RAXEL_HOST_OK;
  }
  NearestColor nearest(table, uint64_t{source.width()} * source.height());
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  for (uint32_t y = 0; y < source.height(); ++y) {
    const uint8_t *pixels = source.colorsOf(y, row.data());
    nearest.findRow({pixels, row.size()}, out.indices.data() + size_t{y} * source.width());
  }
  return RAXEL_HOST_OK;
}

}  // namespace prepare
