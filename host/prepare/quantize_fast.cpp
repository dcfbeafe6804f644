// SPDX-License-Identifier: MIT
// Leptonica's median cut: boxes weighed first by pixels and then by pixels times volume.
#include <algorithm>

#include "prepare/leptonica.h"
#include "prepare/quantize.h"
#include "prepare/services.h"

namespace prepare {
namespace {

// One of Leptonica's pictures; null is none.
struct Pix {
  const Leptonica *lept;
  PIX *pix;

  ~Pix() { free(); }
  void free() { lept->pixDestroy(&pix); }
};

}  // namespace

int quantizeFast(const Source &source, uint32_t colors, bool dither, Reduced &out) {
  const Leptonica *lept = leptonica();
  if (!lept) return RAXEL_HOST_NO_QUANTIZER;
  const uint32_t width = source.width(), height = source.height();
  // 32 bits a pixel go in and 8 come out; Leptonica does not look whether it got the memory for its tables.
  if (!fits(uint64_t{width} * height * 5 + kFilterTables)) return RAXEL_HOST_NO_MEMORY;
  Pix picture{lept, lept->pixCreate(static_cast<l_int32>(width), static_cast<l_int32>(height), 32)};
  if (!picture.pix) return RAXEL_HOST_NO_MEMORY;
  std::vector<uint8_t> row(size_t{width} * 3);
  l_uint32 *words = lept->pixGetData(picture.pix);
  for (uint32_t y = 0; y < height; ++y, words += width) {
    source.readColors(y, row.data());
    const uint8_t *in = row.data();
    for (uint32_t x = 0; x < width; ++x, in += 3) {
      words[x] = static_cast<l_uint32>(in[0]) << 24 | static_cast<l_uint32>(in[1]) << 16 |
                 static_cast<l_uint32>(in[2]) << 8;
    }
  }
  // Depth 8 for the result; significant bits and subsampling as the library finds best.
  const Pix reduced{
      lept, lept->pixMedianCutQuantGeneral(picture.pix, dither ? 1 : 0, 8, static_cast<l_int32>(colors),
                                           colors == 256 ? 6 : 5, 0, 0)};
  picture.free();
  PIXCMAP *map = reduced.pix ? lept->pixGetColormap(reduced.pix) : nullptr;
  if (!map || lept->pixGetDepth(reduced.pix) != 8) return RAXEL_HOST_NO_MEMORY;
  const l_int32 count = std::min(lept->pixcmapGetCount(map), static_cast<l_int32>(colors));
  for (l_int32 i = 0; i < count; ++i) {
    l_int32 red = 0, green = 0, blue = 0, alpha = 0;
    lept->pixcmapGetRGBA(map, i, &red, &green, &blue, &alpha);
    out.table[static_cast<size_t>(i)] = {static_cast<uint8_t>(red), static_cast<uint8_t>(green),
                                         static_cast<uint8_t>(blue)};
  }
  out.indices.resize(size_t{width} * height);
  const l_uint32 *line = lept->pixGetData(reduced.pix);
  uint8_t *index = out.indices.data();
  for (uint32_t y = 0; y < height; ++y, line += lept->pixGetWpl(reduced.pix)) {
    for (uint32_t x = 0; x < width; ++x) *index++ = static_cast<uint8_t>(line[x / 4] >> (24 - 8 * (x % 4)));
  }
  return RAXEL_HOST_OK;
}

}  // namespace prepare
