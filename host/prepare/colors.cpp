// SPDX-License-Identifier: MIT
#include "prepare/colors.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <optional>
#include <vector>

#include "prepare/diffuse.h"
#include "prepare/distinct.h"
#include "prepare/nearest.h"
#include "prepare/quantize.h"
#include "prepare/swap.h"

namespace prepare {
namespace {

// The fixed colours of the 8-colour mode, in the writer's order.
constexpr std::array<Color, 8> kCorners{{{255, 255, 255},
                                         {0, 0, 0},
                                         {0, 0, 255},
                                         {0, 255, 0},
                                         {255, 0, 0},
                                         {0, 255, 255},
                                         {255, 0, 255},
                                         {255, 255, 0}}};

// The index of a corner by its bits: red 4, green 2, blue 1.
constexpr std::array<uint8_t, 8> kCornerOf{1, 2, 3, 5, 4, 6, 7, 0};

// The first of the colours, and black for what is left of the table.
void writeTable(std::span<const Color> colors, uint32_t entries, uint8_t *table) {
  std::fill_n(table, size_t{3} * entries, uint8_t{0});
  for (size_t i = 0; i < std::min<size_t>(colors.size(), entries); ++i) {
    std::copy(colors[i].begin(), colors[i].end(), table + 3 * i);
  }
}

// All pixels by index when the picture's colours fit the mode; false when they do not.
bool keepColors(const Source &source, const Block &block, uint8_t *table) {
  DistinctColors distinct;
  std::vector<uint8_t> colors(size_t{source.width()} * 3), indices(source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readColors(y, colors.data());
    const uint8_t *color = colors.data();
    for (uint32_t x = 0; x < source.width(); ++x, color += 3) {
      if (x != 0 && std::equal(color, color + 3, color - 3)) {
        indices[x] = indices[x - 1];
        continue;
      }
      const std::optional<uint8_t> index = distinct.add(color, block.plan.colors);
      if (!index) return false;
      indices[x] = *index;
    }
    packRow(indices, block.plan.bits, block.row(y));
  }
  writeTable(distinct.colors(), block.plan.colors, table);
  return true;
}

// Error diffusion to the corners of the colour cube: each channel is a bilevel picture of its own, so
// the nearest corner is found channel by channel. Floyd and Steinberg's weights, left to right.
class CornerDither {
 public:
  explicit CornerDither(uint32_t width) : errors_(3 * (size_t{width} + 2)), next_(errors_.size()) {}

  void row(std::span<const uint8_t> colors, uint8_t *indices) {
    const size_t pixels = colors.size() / 3;
    std::fill(next_.begin(), next_.end(), 0);
    for (size_t x = 0; x < pixels; ++x) {
      unsigned corner = 0;
      for (size_t c = 0; c < 3; ++c) {
        const size_t at = 3 * (x + 1) + c;  // one pixel of room on the left
        const int wanted = colors[3 * x + c] + errors_[at] / 16;
        const bool on = wanted >= 128;
        const int error = wanted - (on ? 255 : 0);
        corner = corner << 1 | (on ? 1u : 0u);
        errors_[at + 3] += error * 7;
        next_[at - 3] += error * 3;
        next_[at] += error * 5;
        next_[at + 3] += error;
      }
      indices[x] = kCornerOf[corner];
    }
    errors_.swap(next_);
  }

 private:
  std::vector<int> errors_, next_;  // in sixteenths
};

void nearestCorners(std::span<const uint8_t> colors, uint8_t *indices) {
  for (size_t x = 0; x < colors.size() / 3; ++x) {
    const uint8_t *c = colors.data() + 3 * x;
    indices[x] = kCornerOf[static_cast<size_t>((c[0] >> 7) << 2 | (c[1] >> 7) << 1 | (c[2] >> 7))];
  }
}

// With 256 colours the steps are too fine for the eye, and dithering would only add noise.
bool dithers(const RaxelRequest &request, const RaxelPlan &plan) {
  return request.dither == RAXEL_DITHER_ON ||
         (request.dither == RAXEL_DITHER_AUTO && plan.mode == RAXEL_MODE_COLOR16);
}

void packIndices(const Source &source, const std::vector<uint8_t> &indices, const Block &block) {
  for (uint32_t y = 0; y < source.height(); ++y) {
    packRow({indices.data() + size_t{source.width()} * y, source.width()}, block.plan.bits, block.row(y));
  }
}

// The nearest entry for each pixel; true when all pixels have the very colours. If `allOrNone`, the first
// row with a pixel that has not is the last.
bool takeNearest(const Source &source, std::span<const Color> colors, bool allOrNone, const Block &block) {
  NearestColor nearest(colors, uint64_t{source.width()} * source.height());
  std::vector<uint8_t> room(size_t{source.width()} * 3), indices(source.width());
  bool exact = true;
  for (uint32_t y = 0; y < source.height(); ++y) {
    const uint8_t *row = source.colorsOf(y, room.data());
    nearest.findRow({row, room.size()}, indices.data());
    for (size_t x = 0; exact && x < indices.size(); ++x)
      exact = std::equal(row + 3 * x, row + 3 * x + 3, colors[indices[x]].begin());
    if (!exact && allOrNone) return false;
    packRow(indices, block.plan.bits, block.row(y));
  }
  return exact;
}

int quantize(const Source &source, const RaxelRequest &request, const RaxelServices *services,
             uint32_t colors, bool dither, Reduced &out) {
  switch (request.quantizer) {
    case RAXEL_QUANTIZE_FAST:
      return quantizeFast(source, colors, dither, out);
    case RAXEL_QUANTIZE_FILTER:
      return quantizeFilter(source, colors, dither, services, out);
    default:
      return quantizeBest(source, colors, dither, out);
  }
}

}  // namespace

MakeRow rgbRows(const Source &source) {
  return
      [&source, room = std::vector<uint8_t>(size_t{source.width()} * 3)](uint32_t y, uint8_t *out) mutable {
        swapRedBlue(source.colorsOf(y, room.data()), out, source.width());
      };
}

MakeRow indexRows(const Source &source, const RaxelPlan &plan, uint8_t *table) {
  writeTable(source.table(), plan.colors, table);
  return [&source, bits = plan.bits, row = std::vector<uint8_t>(source.width())](uint32_t y,
                                                                                 uint8_t *out) mutable {
    source.readIndices(y, row.data());
    packRow(row, bits, out);
  };
}

int toColor8(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan,
             uint8_t *table) {
  writeTable(kCorners, plan.colors, table);
  std::vector<uint8_t> colors(size_t{source.width()} * 3), indices(source.width());
  const bool dither = request.dither != RAXEL_DITHER_OFF;
  CornerDither ditherer(source.width());
  bool exact = true;
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readColors(y, colors.data());
    exact = exact && std::ranges::all_of(colors, [](uint8_t v) { return v == 0 || v == 255; });
    dither ? ditherer.row(colors, indices.data()) : nearestCorners(colors, indices.data());
    packRow(indices, 4, block.row(y));
  }
  if (!exact) plan.notes |= RAXEL_NOTE_REDUCED;
  if (!exact && dither) plan.notes |= RAXEL_NOTE_DITHERED;
  return RAXEL_HOST_OK;
}

int toOwnColors(const Source &source, const RaxelRequest &request, const RaxelServices *services,
                const Block &block, RaxelPlan &plan, uint8_t *table) {
  if (keepColors(source, block, table)) return RAXEL_HOST_OK;
  plan.notes |= RAXEL_NOTE_REDUCED;
  const bool dither = dithers(request, plan);
  if (dither) plan.notes |= RAXEL_NOTE_DITHERED;
  Reduced reduced;
  if (const int code = quantize(source, request, services, plan.colors, dither, reduced)) return code;
  writeTable(reduced.table, plan.colors, table);
  packIndices(source, reduced.indices, block);
  return RAXEL_HOST_OK;
}

int toPalette(const Source &source, const RaxelRequest &request, const Block &block, RaxelPlan &plan,
              uint8_t *table) {
  std::vector<Color> colors(request.paletteColors);
  for (size_t i = 0; i < colors.size(); ++i) std::copy_n(request.palette + 3 * i, 3, colors[i].begin());
  writeTable(colors, plan.colors, table);
  const bool dither = dithers(request, plan);
  if (takeNearest(source, colors, dither, block)) return RAXEL_HOST_OK;
  plan.notes |= RAXEL_NOTE_REDUCED;
  if (!dither) return RAXEL_HOST_OK;
  plan.notes |= RAXEL_NOTE_DITHERED;
  std::vector<uint8_t> indices(size_t{source.width()} * source.height());
  diffuse(source, colors, indices.data(), kSharesOfGivenColors);
  packIndices(source, indices, block);
  return RAXEL_HOST_OK;
}

}  // namespace prepare
