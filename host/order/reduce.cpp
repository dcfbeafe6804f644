// SPDX-License-Identifier: MIT
// Colours chosen for a picture in memory, and error diffusion to given ones.
#include <algorithm>
#include <exception>
#include <optional>

#include "failure.h"
#include "filter/open.h"
#include "pictures/memory.h"
#include "prepare/colors.h"
#include "prepare/diffuse.h"
#include "raxel/host.h"

namespace host {
namespace {

constexpr Background kWhite{255, 255, 255};

// Rows of red, green, blue, whatever there was.
std::unique_ptr<Picture> inColors(const RaxelHostPixels &pixels) {
  auto read = readMemory(pixels, "picture", kWhite, nullptr);
  if (read->view.bits == 24) return read;
  const prepare::Source source(read->view, RAXEL_TREAT_NONE, nullptr);
  auto colors = std::make_unique<Picture>();
  colors->allocate(pixels.width, pixels.height, 24);
  for (uint32_t y = 0; y < pixels.height; ++y)
    source.readColors(y, colors->pixels.data() + colors->view.stride * y);
  return colors;
}

// Rows are made from the bottom up.
void turnOver(uint8_t *rows, uint32_t width, uint32_t height) {
  for (uint32_t top = 0, bottom = height - 1; top < bottom; ++top, --bottom) {
    std::swap_ranges(rows + size_t{width} * top, rows + size_t{width} * (top + 1),
                     rows + size_t{width} * bottom);
  }
}

int quantize(const RaxelHostPixels &pixels, uint32_t colors, int quantizer, int dither, uint8_t *indices,
             uint8_t *table, uint32_t *count) {
  const std::unique_ptr<Picture> picture = inColors(pixels);
  const prepare::Source source(picture->view, RAXEL_TREAT_NONE, nullptr);
  RaxelRequest request;
  raxelHostDefaults(&request);
  request.quantizer = quantizer;
  request.dither = dither != 0 ? RAXEL_DITHER_ON : RAXEL_DITHER_OFF;
  // A block of bytes without gaps.
  RaxelPlan plan{};
  plan.mode = RAXEL_MODE_COLOR256;
  plan.width = plan.stride = pixels.width;
  plan.rows = plan.height = pixels.height;
  plan.bits = 8;
  plan.colors = colors;
  const prepare::Block block{plan, indices};
  std::optional<FilterLock> lock;
  const RaxelServices *services = nullptr;
  if (quantizer == RAXEL_QUANTIZE_FILTER) {
    services = &openFilter("").services;
    lock.emplace();
  }
  if (const int code = prepare::toOwnColors(source, request, services, block, plan, table)) return code;
  turnOver(indices, pixels.width, pixels.height);
  if (count) *count = *std::max_element(indices, indices + size_t{pixels.width} * pixels.height) + 1u;
  return RAXEL_HOST_OK;
}

template <class Action>
int guard(Action action) {
  try {
    return action();
  } catch (const Failure &failure) {
    return failure.reason();
  } catch (const std::exception &) {  // of memory, or of a length that no memory holds
    return RAXEL_HOST_NO_MEMORY;
  }
}

bool isRecord(const RaxelHostPixels *pixels) {
  return pixels && pixels->size >= sizeof(RaxelHostPixels);
}

}  // namespace
}  // namespace host

extern "C" {

int raxelHostQuantize(const RaxelHostPixels *pixels, uint32_t colors, int quantizer, int dither,
                      uint8_t *indices, uint8_t *table, uint32_t *count) {
  const bool known = quantizer >= 0 && quantizer < RAXEL_QUANTIZERS &&
                     (quantizer != RAXEL_QUANTIZE_FILTER || colors == 16 || colors == 256);
  if (!host::isRecord(pixels) || colors < 2 || colors > 256 || !known || !indices || !table)
    return RAXEL_HOST_BAD_ARGUMENT;
  return host::guard(
      [&] { return host::quantize(*pixels, colors, quantizer, dither, indices, table, count); });
}

int raxelHostDither(const RaxelHostPixels *pixels, const uint8_t *table, uint32_t colors,
                    uint8_t *indices) {
  if (!host::isRecord(pixels) || !table || colors < 1 || colors > 256 || !indices)
    return RAXEL_HOST_BAD_ARGUMENT;
  return host::guard([&]() -> int {
    const std::unique_ptr<host::Picture> picture = host::inColors(*pixels);
    const prepare::Source source(picture->view, RAXEL_TREAT_NONE, nullptr);
    std::vector<prepare::Color> entries(colors);
    for (uint32_t i = 0; i < colors; ++i) std::copy_n(table + 3 * i, 3, entries[i].begin());
    prepare::diffuse(source, entries, indices);
    return RAXEL_HOST_OK;
  });
}

}  // extern "C"
