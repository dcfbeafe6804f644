// SPDX-License-Identifier: MIT
#include "prepare/sheet.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "prepare/nearest.h"

namespace prepare {
namespace {

// A byte full of white pixels.
uint8_t whiteByte(const RaxelPlan &plan, const uint8_t *table) {
  if (plan.bits == 24) return 0xFF;
  std::array<Color, 256> colors{};
  for (size_t i = 0; i < plan.colors; ++i) std::copy_n(table + 3 * i, 3, colors[i].begin());
  const unsigned white = nearestEntry(std::span(colors).first(plan.colors), {255, 255, 255});
  unsigned byte = 0;
  for (uint32_t bit = 0; bit < 8; bit += plan.bits) byte |= white << bit;
  return static_cast<uint8_t>(byte);
}

// Bits beyond the width are clear, as everywhere.
void clearBeyond(const RaxelPlan &plan, uint8_t *row) {
  const uint64_t used = uint64_t{plan.width} * plan.bits % 8;
  if (used == 0) return;
  uint8_t &last = row[rowBytes(plan) - 1];
  last = static_cast<uint8_t>(last & (0xFF00u >> used));
}

void copyRow(const RaxelPlan &plan, const uint8_t *in, uint8_t *out) {
  const uint64_t bits = uint64_t{plan.width} * plan.bits;
  const auto whole = static_cast<size_t>(bits / 8);
  std::memcpy(out, in, whole);
  const unsigned own = 0xFF00u >> bits % 8 & 0xFF;
  if (own != 0) out[whole] = static_cast<uint8_t>((in[whole] & own) | (out[whole] & ~own));
}

}  // namespace

bool hasMargins(const RaxelPlan &plan) {
  return plan.pictureWidth != plan.width || plan.pictureRows != plan.rows;
}

void layInMiddle(const Block &picture, const Block &page, const uint8_t *table) {
  const RaxelPlan &inner = picture.plan, &outer = page.plan;
  const uint8_t white = whiteByte(outer, table);
  for (uint32_t y = 0; y < outer.rows; ++y) {
    std::memset(page.row(y), white, static_cast<size_t>(rowBytes(outer)));
    clearBeyond(outer, page.row(y));
  }
  const uint32_t left = (outer.width - inner.width) / 2, top = (outer.rows - inner.rows) / 2;
  const auto offset = static_cast<size_t>(uint64_t{left} * outer.bits / 8);
  for (uint32_t y = 0; y < inner.rows; ++y) copyRow(inner, picture.row(y), page.row(top + y) + offset);
}

}  // namespace prepare
