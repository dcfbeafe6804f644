#include "color/nearest_search.h"

#include "color/nearest.h"

namespace color {

void startSearch(NearestSearch &search, std::span<const uint8_t> table, uint16_t count) {
  search.table = table;
  // A count is a signed 16-bit number to the search: from 32768 on there are no entries.
  search.count = static_cast<int16_t>(count);
}

void findNearest(NearestSearch &search, const uint8_t *pixels, int pixelBytes, uint8_t *indexes,
                 uint32_t n) {
  for (uint32_t x = 0; x < n; ++x, pixels += pixelBytes) {
    indexes[x] = static_cast<uint8_t>(nearest(pixels[0], pixels[1], pixels[2], search.table, search.count));
  }
}

}  // namespace color
