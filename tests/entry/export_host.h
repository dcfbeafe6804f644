// SPDX-License-Identifier: MIT
// A host for tests: a setup, a picture, the export's records, and one call to export.
#pragma once

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "entry/host_calls.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "support/blocks.h"
#include "support/globals.h"

namespace entry_test {

using Bytes = std::vector<uint8_t>;

using support::blockOf;
using support::bytesOf;

// The picture that a test hands over. Rows come bottom row first and are padded to 4 bytes here.
class Picture {
 public:
  Picture(uint16_t bits, uint16_t width, const std::vector<Bytes> &rows, const Bytes &palette = {}) {
    const size_t stride = (size_t{width} * bits + 31) / 32 * 4;
    Bytes pixels;
    for (Bytes row : rows) {
      row.resize(stride);
      pixels.insert(pixels.end(), row.begin(), row.end());
    }
    record_.nBits = bits;
    record_.nWidth = width;
    record_.nHeight = static_cast<uint16_t>(rows.size());
    record_.hBits = blockOf(pixels);
    if (!palette.empty()) record_.hPalette = blockOf(palette);
  }
  ~Picture() {
    GlobalFree(record_.hBits);
    GlobalFree(record_.hPalette);
  }
  Picture(const Picture &) = delete;
  Picture &operator=(const Picture &) = delete;

  PictureRecord &record() { return record_; }
  Bytes pixels() const { return bytesOf(record_.hBits); }

 private:
  PictureRecord record_ = {};
};

// The 28 bytes beside a picture. The extents are the size in pixels at 96 dots per inch, at which no
// size is lost to rounding.
struct CellInfo {
  uint16_t displayResolution = 96;
  uint16_t pictureResolution = 96;
  int32_t extentX = 0;
  int32_t extentY = 0;
  int32_t displayWidth = 1280;
  int32_t displayHeight = 1078;

  std::array<uint8_t, EXPORT_CELL_INFO_BYTES> bytes() const {
    std::array<uint8_t, EXPORT_CELL_INFO_BYTES> out;
    out.fill(0xEE);
    std::memcpy(out.data() + 2, &displayResolution, 2);
    std::memcpy(out.data() + 10, &pictureResolution, 2);
    std::memcpy(out.data() + 12, &extentX, 4);
    std::memcpy(out.data() + 16, &extentY, 4);
    std::memcpy(out.data() + 20, &displayWidth, 4);
    std::memcpy(out.data() + 24, &displayHeight, 4);
    return out;
  }
};

// A host with a setup of the built-in defaults: RGB, none, the picture's own size and resolution.
class ExportHost {
 public:
  ExportHost() : setup_(CreateSetup(0, "no such profile", nullptr, nullptr)), settings_(lpRaster) {
    settings_->nBitmapMode = RAXEL_STORED_MODE_RGB;
    words_[RAXEL_RECORD_SETUP] = setup_;
    words_[RAXEL_RECORD_STATUS] = reinterpret_cast<HostWord>(status.record());
  }
  ~ExportHost() {
    if (setup_ != 0) DestroySetup(setup_);
  }
  ExportHost(const ExportHost &) = delete;
  ExportHost &operator=(const ExportHost &) = delete;

  RasterSetup &settings() { return *settings_; }
  Handle setup() const { return setup_; }
  HostWord *exportRecord() { return words_.data(); }
  // For a test whose callback has destroyed the setup.
  void forgetSetup() { setup_ = 0; }

  // Exports at the picture's own size, unless `width` and `height` ask for another.
  uint32_t run(const char *name, Picture &picture, int32_t width = -1, int32_t height = -1) {
    info.extentX = width < 0 ? picture.record().nWidth : width;
    info.extentY = height < 0 ? picture.record().nHeight : height;
    const auto bytes = info.bytes();
    return ExportCellData(name, &picture.record(), bytes.data(), exportRecord());
  }

  // The same into memory: the file's bytes.
  Bytes runInMemory(Picture &picture, int32_t width = -1, int32_t height = -1) {
    run(nullptr, picture, width, height);
    const Handle block = status.word(RAXEL_STATUS_OUTPUT);
    status.word(RAXEL_STATUS_OUTPUT) = 0;
    const Bytes bytes = support::fileIn(block);
    GlobalFree(block);
    return bytes;
  }

  CellInfo info;  // but for the extents
  HostStatus status;

 private:
  support::Globals globals_;
  Handle setup_;
  RasterSetup *settings_;
  std::array<HostWord, RAXEL_RECORD_WORDS> words_ = {};
};

}  // namespace entry_test
