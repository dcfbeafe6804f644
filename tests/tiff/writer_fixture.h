// SPDX-License-Identifier: MIT
// A settings record in use, an output that the test can look into, and pictures for the writer.
#pragma once

#include <array>
#include <cstring>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "raxel/memory.h"
#include "raxel/settings.h"
#include "raxel/stream.h"
#include "support/blocks.h"
#include "support/stream_procedure.h"

namespace support {

using Bytes = std::vector<uint8_t>;

inline const Bytes kBlackWhite = {0, 0, 0, 255, 255, 255};  // a table

inline uint16_t depthOfMode(int32_t mode) {
  return mode == RAXEL_STORED_MODE_BILEVEL ? 1
         : mode == RAXEL_STORED_MODE_GREY16 || mode == RAXEL_STORED_MODE_COLOR8 ||
                 mode == RAXEL_STORED_MODE_COLOR16
             ? 4
         : mode == RAXEL_STORED_MODE_GREY256 || mode == RAXEL_STORED_MODE_COLOR256 ? 8
                                                                                   : 24;
}

// A block of handle memory with these bytes.
class Pixels {
 public:
  explicit Pixels(const Bytes &bytes) : handle_(blockOf(bytes)) {}
  ~Pixels() { GlobalFree(handle_); }
  Pixels(const Pixels &) = delete;
  Pixels &operator=(const Pixels &) = delete;

  Handle handle() const { return handle_; }
  Bytes bytes() const { return bytesOf(handle_); }

 private:
  Handle handle_;
};

// Puts a record of defaults in use for the length of a test.
class InUse {
 public:
  InUse(int32_t bitmapMode, int32_t compressionMode, uint16_t layout = RAXEL_STORED_LAYOUT_STRIPS) {
    setup.nBitmapMode = bitmapMode;
    setup.nCompressionMode = compressionMode;
    setup.tiff.wLayoutMode = layout;
    setup.tiff.nXResolution = setup.tiff.nYResolution = 96;
    lpRaster = &setup;
  }
  ~InUse() { lpRaster = nullptr; }
  InUse(const InUse &) = delete;
  InUse &operator=(const InUse &) = delete;

  RasterSetup setup{};
};

// A stream whose every operation goes to a HostStream.
class HostOutput {
 public:
  HostOutput() {
    KvlStreamDesc descriptor{};
    descriptor.lpMemVar = host.context();
    descriptor.lpfnProc = host.procedureWord();
    file = kvlOpen("out.tif", &descriptor, KVL_OUTPUT);
    host.clearLog();
  }
  ~HostOutput() { kvlClose(file); }
  HostOutput(const HostOutput &) = delete;
  HostOutput &operator=(const HostOutput &) = delete;

  const Bytes &bytes() const { return host.bytes(); }

  HostStream host;
  Handle file = 0;
};

// A stream into a block that does not grow.
class MemoryOutput {
 public:
  explicit MemoryOutput(size_t room) : data_(GlobalLock(newBlock(room))) {
    KvlStreamDesc descriptor{};
    descriptor.lpMemVar = reinterpret_cast<HostWord>(&data_);
    descriptor.dwLength = static_cast<uint32_t>(room);
    file = kvlOpen("", &descriptor, KVL_OUTPUT);
  }
  ~MemoryOutput() {
    kvlClose(file);
    GlobalFree(GlobalHandle(data_));
  }
  MemoryOutput(const MemoryOutput &) = delete;
  MemoryOutput &operator=(const MemoryOutput &) = delete;

  Handle file = 0;

 private:
  void *data_;  // closing may move the block
};

// What a parameterized test writes: the settings, and the picture's size.
struct WriterJob {
  std::string name;
  int32_t mode;
  int32_t compression;
  uint16_t layout;
  uint32_t width;
  uint32_t height;
};

inline void PrintTo(const WriterJob &job, std::ostream *out) {
  *out << job.name;
}

inline constexpr std::array<int32_t, 6> kEveryCompression = {
    RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_HUFFMAN,
    RAXEL_STORED_COMPRESS_LZW,  RAXEL_STORED_COMPRESS_T4,       RAXEL_STORED_COMPRESS_T6};

// A picture in the bitmap's own form: bottom row first, rows padded to 4 bytes.
struct Picture {
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t bits = 0;
  Bytes pixels;
  Bytes palette;

  uint32_t rowBytes() const { return (width * bits + 7) / 8; }
  uint32_t stride() const { return (rowBytes() + 3) / 4 * 4; }
};

// The whole road of a picture in one band, through the record in use. Answers WriteCellBits's code.
inline int32_t writePicture(Handle file, const Picture &picture, Handle pixels) {
  Handle descriptor = 0;
  const uint8_t *palette = picture.palette.empty() ? nullptr : picture.palette.data();
  if (BeginCellBitmap(file, picture.width, picture.height, picture.bits, palette, &descriptor) != -1)
    return -2;
  const int32_t code =
      WriteCellBits(file, pixels, picture.width, picture.height, picture.bits, 1, descriptor);
  EndCellBitmap(file, descriptor);
  return code;
}

inline Bytes slice(const Bytes &bytes, size_t at, size_t count) {
  const size_t from = at < bytes.size() ? at : bytes.size();
  const size_t to = count < bytes.size() - from ? from + count : bytes.size();
  return {bytes.begin() + static_cast<std::ptrdiff_t>(from),
          bytes.begin() + static_cast<std::ptrdiff_t>(to)};
}

}  // namespace support
