// SPDX-License-Identifier: MIT
// Small pictures for the preparation's tests, and their way through it.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "raxel/color.h"
#include "raxel/host.h"
#include "raxel/memory.h"

namespace host_test {

using Color = std::array<uint8_t, 3>;

// A picture with its own rows. Indices or grey levels of up to 8 bits, or colours.
struct TestPicture {
  std::vector<uint8_t> rows;
  std::vector<uint8_t> table;
  RaxelPicture view{};

  TestPicture(uint32_t width, uint32_t height, uint32_t bits) : rows((width * bits + 7) / 8 * height) {
    view = RaxelPicture{width, height, bits, rows.data(), (size_t{width} * bits + 7) / 8, nullptr, 0};
  }
  TestPicture(const TestPicture &) = delete;

  uint8_t *row(uint32_t y) { return rows.data() + view.stride * y; }
  void setIndex(uint32_t x, uint32_t y, unsigned index) {
    const uint32_t bit = x * view.bits, shift = 8 - view.bits - bit % 8;
    uint8_t &byte = row(y)[bit / 8];
    byte = static_cast<uint8_t>((byte & ~(((1u << view.bits) - 1) << shift)) | index << shift);
  }
  void setColor(uint32_t x, uint32_t y, const Color &c) {
    for (size_t i = 0; i < 3; ++i) row(y)[3 * x + i] = c[i];
  }
  void useTable(const std::vector<Color> &colors) {
    for (const Color &c : colors) table.insert(table.end(), c.begin(), c.end());
    view.table = table.data();
    view.colors = static_cast<uint32_t>(colors.size());
  }
};

// The filter's functions, linked into the tests.
inline RaxelServices services() {
  return {GlobalAlloc,          GlobalLock,    GlobalUnlock,    GlobalFree, rlReduceColorTable,
          rlConvertBitmapDepth, rlDitherGetCT, rlDitherGivenCT, rev_rgb};
}

inline RaxelRequest request(int mode, int compression = RAXEL_COMPRESS_NONE) {
  RaxelRequest made;
  raxelHostDefaults(&made);
  made.mode = mode;
  made.compression = compression;
  return made;
}

// A prepared block, looked at from the top.
struct Prepared {
  int code = RAXEL_HOST_BAD_ARGUMENT;
  RaxelPlan plan{};
  std::vector<uint8_t> pixels;
  std::array<uint8_t, 768> table{};

  const uint8_t *row(uint32_t y) const {
    return pixels.data() + size_t{plan.stride} * (plan.height - 1 - y);
  }
  unsigned index(uint32_t x, uint32_t y) const {
    const uint32_t bit = x * plan.bits;
    return uint32_t{row(y)[bit / 8]} >> (8 - plan.bits - bit % 8) & ((1u << plan.bits) - 1);
  }
  // What a reader sees: through the table, or blue, green, red.
  Color color(uint32_t x, uint32_t y) const {
    const uint8_t *c = plan.bits == 24 ? row(y) + 3 * x : table.data() + 3 * index(x, y);
    return plan.bits == 24 ? Color{c[2], c[1], c[0]} : Color{c[0], c[1], c[2]};
  }
};

inline Prepared prepared(const TestPicture &picture, const RaxelRequest &wanted) {
  Prepared out;
  out.code = raxelHostPlan(&picture.view, &wanted, &out.plan);
  if (out.code != RAXEL_HOST_OK) return out;
  out.pixels.resize(static_cast<size_t>(out.plan.bytes));
  const RaxelServices filter = services();
  out.code =
      raxelHostPrepare(&picture.view, &wanted, &filter, &out.plan, out.pixels.data(), out.table.data());
  return out;
}

}  // namespace host_test
