// SPDX-License-Identifier: MIT
// A draw procedure for tests: a picture of any size, in bands of any height, that notes what it is
// asked for.
#pragma once

#include <algorithm>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "raxel/filter.h"
#include "raxel/memory.h"
#include "support/blocks.h"

namespace entry_test {

// Row r (counted from the bottom) of an 8-bit picture is filled with the byte r; a 24-bit one too. `fill`
// makes other rows.
class DrawnPicture {
 public:
  DrawnPicture() { current = this; }
  ~DrawnPicture() {
    GlobalFree(band_);
    current = nullptr;
  }
  DrawnPicture(const DrawnPicture &) = delete;
  DrawnPicture &operator=(const DrawnPicture &) = delete;

  double width = 0, height = 0;  // inches
  uint32_t resolution = 96;
  uint32_t bandRows = 0;  // the answer to opening; 0: all rows offered
  bool refusesRows = false;
  bool noPixels = false;
  std::function<void(HostWord op)> action;  // what the host does while it is called
  std::function<void(uint32_t row, std::span<uint8_t> bytes)> fill;
  std::vector<uint8_t> palette;  // for the record's, as far as it goes

  std::vector<HostWord> ops;
  std::vector<std::pair<uint32_t, uint32_t>> ranges;  // of the bands, first and last row
  std::vector<HostWord> request;                      // the words that came with opening
  OffscreenRecord opened = {};                        // the record as it was at opening

  static HostWord draw(HostWord op, HostWord a, HostWord b, HostWord c) {
    return current->perform(op, a, b, c);
  }

 private:
  HostWord perform(HostWord op, HostWord a, HostWord b, HostWord c) {
    ops.push_back(op);
    if (action) action(op);
    switch (op) {
      case RAXEL_DRAW_QUERY: {
        auto &format = *reinterpret_cast<PictureFormat *>(b);
        format.dWidth = width;
        format.dHeight = height;
        format.nResolution = resolution;
        format.nKind = RAXEL_KIND_METAFILE;
        return 0;
      }
      case RAXEL_DRAW_OPEN: {
        const auto *words = reinterpret_cast<const HostWord *>(b);
        request.assign(words, words + OFFSCREEN_WORDS);
        opened = *reinterpret_cast<const OffscreenRecord *>(a);
        if (opened.lpPalette != nullptr)
          std::copy_n(palette.begin(), std::min(palette.size(), size_t{3} * opened.nColors),
                      opened.lpPalette);
        if (refusesRows) return 0;
        return bandRows != 0 ? bandRows : request[OFFSCREEN_ROWS];
      }
      case RAXEL_DRAW_BAND: {
        ranges.emplace_back(b, c);
        if (noPixels) return 0;
        return render(static_cast<uint32_t>(b), static_cast<uint32_t>(c));
      }
      default:
        return 0;
    }
  }

  Handle render(uint32_t first, uint32_t last) {
    const uint32_t stride = (opened.nWidth * opened.nBits + 31) / 32 * 4;
    GlobalFree(band_);
    band_ = support::newBlock(stride * (last - first));
    auto *row = static_cast<uint8_t *>(GlobalLock(band_));
    for (uint32_t r = first; r < last; ++r, row += stride) {
      std::fill_n(row, stride, static_cast<uint8_t>(r));
      if (fill) fill(r, {row, stride});
    }
    return band_;
  }

  static inline DrawnPicture *current = nullptr;
  Handle band_ = 0;
};

}  // namespace entry_test
