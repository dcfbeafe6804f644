// SPDX-License-Identifier: MIT
// The filter's own reduction: a median cut over 15-bit colours, and error diffusion.
#include <algorithm>

#include "prepare/quantize.h"
#include "prepare/services.h"

namespace prepare {
namespace {

// A picture of 24 bits in handle memory, as the filter's functions take it: rows from the top.
uint64_t strideOf(uint64_t width, uint64_t bits) {
  return (width * bits + 31) / 32 * 4;
}

void readPicture(const Source &source, uint32_t width, uint8_t *bytes) {
  const uint64_t stride = strideOf(width, 24);
  for (uint32_t y = 0; y < source.height(); ++y) {
    uint8_t *row = bytes + stride * y;
    source.readColors(y, row);
    // A further column repeats the last.
    if (width > source.width())
      std::copy_n(row + 3 * size_t{source.width()} - 3, 3, row + 3 * size_t{source.width()});
  }
}

void unpackRow(const uint8_t *in, uint32_t width, uint32_t bits, uint8_t *out) {
  for (uint32_t x = 0; x < width; ++x) {
    out[x] = bits == 8 ? in[x] : static_cast<uint8_t>(x % 2 == 0 ? in[x / 2] >> 4 : in[x / 2] & 15);
  }
}

}  // namespace

int quantizeFilter(const Source &source, uint32_t colors, bool dither, const RaxelServices *services,
                   Reduced &out) {
  if (!complete(services)) return RAXEL_HOST_NO_SERVICE;
  if (source.height() > INT16_MAX) return RAXEL_HOST_NO_QUANTIZER;  // the reduction counts rows in 16 bits
  const uint32_t height = source.height(), bits = colors == 256 ? 8 : 4;
  // The ditherer never looks at the last pixel of a row, so it gets one more.
  const uint32_t width = source.width() + (dither ? 1 : 0);
  const HandleMemory pixels(*services, strideOf(width, 24) * height);
  if (!pixels.bytes() || !fits(strideOf(width, bits) * height + kFilterTables)) return RAXEL_HOST_NO_MEMORY;
  readPicture(source, width, pixels.bytes());

  Handle chosen = 0;
  uint16_t count = static_cast<uint16_t>(colors);
  if (colors == 256) {
    chosen = services->rlReduceColorTable(pixels.handle(), width, static_cast<int16_t>(height), &count);
  } else {
    services->rlDitherGetCT(pixels.handle(), width, height, 24, 4, 0, &chosen, &count);
  }
  const HandleMemory table(*services, HandleMemory::Taken{chosen});
  if (!table.bytes()) return RAXEL_HOST_NO_MEMORY;
  const int16_t depth = static_cast<int16_t>(bits);
  const HandleMemory result(
      *services,
      HandleMemory::Taken{dither ? services->rlDitherGivenCT(pixels.handle(), width, height, 24, depth, 0,
                                                             table.handle(), count)
                                 : services->rlConvertBitmapDepth(pixels.handle(), width, height, 24, depth,
                                                                  0, table.handle(), count)});
  if (!result.bytes()) return RAXEL_HOST_NO_MEMORY;
  for (size_t i = 0; i < std::min<size_t>(count, colors); ++i) {
    std::copy_n(table.bytes() + 3 * i, 3, out.table[i].begin());
  }
  out.indices.resize(size_t{source.width()} * height);
  for (uint32_t y = 0; y < height; ++y) {
    unpackRow(result.bytes() + strideOf(width, bits) * y, source.width(), bits,
              out.indices.data() + size_t{source.width()} * y);
  }
  return RAXEL_HOST_OK;
}

}  // namespace prepare
