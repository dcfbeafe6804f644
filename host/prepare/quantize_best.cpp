// libimagequant: median cut by variance, then k-means, in a perceptual space.
//
// It is licensed under the GPL, version 3 or later, and so is a binary built with it. A build without
// it (RAXEL_IMAGEQUANT=OFF, or the library not installed) leaves this quantizer to Leptonica.
#include "prepare/quantize.h"

#ifdef RAXEL_HAS_IMAGEQUANT

#include <libimagequant.h>

#include <memory>

namespace prepare {
namespace {

// Called from several threads at a time. The colours are read to the end of the row's room and moved
// to their places from the left, where they overtake only what has been read.
void readRow(liq_color *out, int y, int width, void *user) {
  const Source &source = *static_cast<const Source *>(user);
  const size_t pixels = static_cast<size_t>(width);
  const uint8_t *in = reinterpret_cast<uint8_t *>(out) + pixels;
  source.readColors(static_cast<uint32_t>(y), reinterpret_cast<uint8_t *>(out) + pixels);
  for (size_t x = 0; x < pixels; ++x, in += 3) {
    const liq_color color{in[0], in[1], in[2], 255};
    out[x] = color;
  }
}

template <class T, void (*release)(T *)>
struct Release {
  void operator()(T *p) const { release(p); }
};
template <class T, void (*release)(T *)>
using Owned = std::unique_ptr<T, Release<T, release>>;

}  // namespace

int quantizeBest(const Source &source, uint32_t colors, bool dither, Reduced &out) {
  const Owned<liq_attr, liq_attr_destroy> attributes(liq_attr_create());
  if (!attributes) return RAXEL_HOST_NO_MEMORY;
  if (liq_set_max_colors(attributes.get(), static_cast<int>(colors)) != LIQ_OK) return RAXEL_HOST_NO_MEMORY;
  const Owned<liq_image, liq_image_destroy> image(
      liq_image_create_custom(attributes.get(), readRow, const_cast<Source *>(&source),
                              static_cast<int>(source.width()), static_cast<int>(source.height()), 0));
  if (!image) return RAXEL_HOST_NO_MEMORY;
  liq_result *made = nullptr;
  if (liq_image_quantize(image.get(), attributes.get(), &made) != LIQ_OK) return RAXEL_HOST_NO_MEMORY;
  const Owned<liq_result, liq_result_destroy> result(made);
  if (liq_set_dithering_level(made, dither ? 1.0f : 0.0f) != LIQ_OK) return RAXEL_HOST_NO_MEMORY;
  out.indices.resize(size_t{source.width()} * source.height());
  if (liq_write_remapped_image(made, image.get(), out.indices.data(), out.indices.size()) != LIQ_OK) {
    return RAXEL_HOST_NO_MEMORY;
  }
  const liq_palette *palette = liq_get_palette(made);
  for (unsigned i = 0; i < palette->count && i < colors; ++i) {
    const liq_color &c = palette->entries[i];
    out.table[i] = {c.r, c.g, c.b};
  }
  return RAXEL_HOST_OK;
}

}  // namespace prepare

#else

namespace prepare {

int quantizeBest(const Source &source, uint32_t colors, bool dither, Reduced &out) {
  return quantizeFast(source, colors, dither, out);
}

}  // namespace prepare

#endif
