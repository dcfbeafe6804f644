// SPDX-License-Identifier: MIT
// Cell data as the pipeline has it open, for tests.
#pragma once

#include "entry/export_host.h"

namespace entry_test {

// The pipeline's side: an output of some depth and size, open for one picture.
class Cell {
 public:
  Cell(Picture &picture, uint16_t bits, uint32_t width, uint32_t rows) {
    record_.lpPicture = &picture.record();
    record_.nBits = bits;
    record_.nWidth = width;
    record_.nBandRows = rows;
    if (bits <= 8) {
      record_.nColors = static_cast<uint16_t>(1u << bits);
      record_.lpPalette = static_cast<uint8_t *>(kvlPtrGlobalAlloc(3u << bits));
    }
    const HostWord request[OFFSCREEN_WORDS] = {width, rows, bits, record_.nColors,
                                               reinterpret_cast<HostWord>(record_.lpPalette)};
    openAnswer = CellDataOpen(&record_, request);
  }
  ~Cell() {
    CellDataClose(&record_);
    kvlPtrGlobalFree(record_.lpPalette);
  }
  Cell(const Cell &) = delete;
  Cell &operator=(const Cell &) = delete;

  OffscreenRecord &record() { return record_; }
  Handle band() { return CellDataBand(&record_); }
  Handle cached(int word) const {
    return static_cast<const HostWord *>(GlobalLock(record_.hBandCache))[word];
  }
  Bytes palette() const { return bytesOf(kvlPtrGlobalHandle(record_.lpPalette)); }

  uint32_t openAnswer = 0;

 private:
  OffscreenRecord record_ = {};
};

}  // namespace entry_test
