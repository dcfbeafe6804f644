// libimagequant chooses the colours: median cut by variance, then k-means, in a perceptual space. It is
// given the picture's colours as a coarse histogram, which is a thousand times smaller than a photo.
// Without dithering the choice is then refined for the plain error with a finer one, and each pixel goes to
// its nearest colour. That makes up for what the library's higher speed loses.
//
// It is licensed under the GPL, version 3 or later, and so is a binary built with it. A build without
// it (RAXEL_IMAGEQUANT=OFF, or the library not installed) leaves this quantizer to Leptonica.
#include "prepare/quantize.h"

#ifdef RAXEL_HAS_IMAGEQUANT

#include <dlfcn.h>
#include <libimagequant.h>

#include <algorithm>
#include <memory>

#include "prepare/histogram.h"
#include "prepare/nearest.h"

namespace prepare {
namespace {

constexpr int kSpeed = 6;  // 1 to 10; 4 by default, which takes twice the time for a hundredth of the error

template <class T, void (*release)(T *)>
struct Release {
  void operator()(T *p) const { release(p); }
};
template <class T, void (*release)(T *)>
using Owned = std::unique_ptr<T, Release<T, release>>;
using Attributes = Owned<liq_attr, liq_attr_destroy>;
using Result = Owned<liq_result, liq_result_destroy>;

// While it lives, the library works in the calling thread. Its own threads wait for one another by running
// in circles, which takes longer than the work, and all the more where pictures are exported side by side.
class OneThread {
 public:
  OneThread() {
    const auto most = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "omp_get_max_threads"));
    set_ = reinterpret_cast<void (*)(int)>(dlsym(RTLD_DEFAULT, "omp_set_num_threads"));
    if (!most || !set_) return;
    before_ = most();
    set_(1);
  }
  ~OneThread() {
    if (before_ != 0) set_(before_);
  }
  OneThread(const OneThread &) = delete;
  OneThread &operator=(const OneThread &) = delete;

 private:
  void (*set_)(int) = nullptr;
  int before_ = 0;  // 0: the library was built without threads
};

// The colours are read to the end of the row's room and moved to their places from the left, where they
// overtake only what has been read.
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

Result choose(liq_attr *attributes, const std::vector<ColorCount> &colors) {
  const Owned<liq_histogram, liq_histogram_destroy> histogram(liq_histogram_create(attributes));
  if (!histogram) return nullptr;
  std::vector<liq_histogram_entry> entries;
  entries.reserve(colors.size());
  for (const ColorCount &c : colors) entries.push_back({{c.mean[0], c.mean[1], c.mean[2], 255}, c.count});
  liq_result *made = nullptr;
  const bool done = liq_histogram_add_colors(histogram.get(), attributes, entries.data(),
                                             static_cast<int>(entries.size()), 0) == LIQ_OK &&
                    liq_histogram_quantize(histogram.get(), attributes, &made) == LIQ_OK;
  return Result(done ? made : nullptr);
}

uint32_t copyTable(liq_result *result, uint32_t colors, Reduced &out) {
  const liq_palette *palette = liq_get_palette(result);
  const uint32_t count = std::min<uint32_t>(palette->count, colors);
  for (uint32_t i = 0; i < count; ++i) {
    const liq_color &c = palette->entries[i];
    out.table[i] = {c.r, c.g, c.b};
  }
  return count;
}

bool dither(const Source &source, liq_attr *attributes, liq_result *result, Reduced &out) {
  const Owned<liq_image, liq_image_destroy> image(
      liq_image_create_custom(attributes, readRow, const_cast<Source *>(&source),
                              static_cast<int>(source.width()), static_cast<int>(source.height()), 0));
  return image && liq_set_dithering_level(result, 1.0f) == LIQ_OK &&
         liq_write_remapped_image(result, image.get(), out.indices.data(), out.indices.size()) == LIQ_OK;
}

void toNearest(const Source &source, std::span<const Color> table, Reduced &out) {
  NearestColor nearest(table);
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  uint8_t *index = out.indices.data();
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readColors(y, row.data());
    for (size_t i = 0; i < row.size(); i += 3) *index++ = nearest.find(row[i], row[i + 1], row[i + 2]);
  }
}

}  // namespace

int quantizeBest(const Source &source, uint32_t colors, bool dithered, Reduced &out) {
  const OneThread alone;
  const Attributes attributes(liq_attr_create());
  if (!attributes || liq_set_max_colors(attributes.get(), static_cast<int>(colors)) != LIQ_OK ||
      liq_set_speed(attributes.get(), kSpeed) != LIQ_OK) {
    return RAXEL_HOST_NO_MEMORY;
  }
  const std::vector<ColorCount> histogram = histogramOf(source);
  const Result result = choose(attributes.get(), inLargerCubes(histogram));
  if (!result) return RAXEL_HOST_NO_MEMORY;
  out.indices.resize(size_t{source.width()} * source.height());
  if (dithered) {
    if (!dither(source, attributes.get(), result.get(), out)) return RAXEL_HOST_NO_MEMORY;
    copyTable(result.get(), colors, out);
    return RAXEL_HOST_OK;
  }
  const std::span<Color> table(out.table.data(), copyTable(result.get(), colors, out));
  refine(histogram, table);
  toNearest(source, table, out);
  return RAXEL_HOST_OK;
}

}  // namespace prepare

#else

namespace prepare {

int quantizeBest(const Source &source, uint32_t colors, bool dithered, Reduced &out) {
  return quantizeFast(source, colors, dithered, out);
}

}  // namespace prepare

#endif
