// The chunks of a PNG file as libspng is to read them: those that decide the picture. Texts and profiles,
// which take any size once they are inflated, are left out, and the pixels may be inflated beforehand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "buffer.h"

namespace host {

struct PngLayout {
  uint32_t width, height, bitsPerPixel;
  bool interlaced;
};

// Bytes of the pixels once they are inflated: rows with a filter type in front, of the passes one by one.
uint64_t inflatedBytes(const PngLayout &layout);

class PngStream {
 public:
  explicit PngStream(std::span<const uint8_t> file);

  // The content of the Exif chunk; empty when there is none that is whole.
  std::span<const uint8_t> exif() const { return exif_; }

  // Inflates all pixels at once, which is several times faster than doing so row by row, and holds them as
  // the blocks that deflate stores. Checksums are looked at here and need not be again. False when `size`
  // bytes is not what comes out, or anything is wrong: the file is then read as it lies, which tells why.
  bool inflate(uint64_t size);

  void rewind();
  // Copies the next bytes; false at the end.
  bool read(void *to, size_t length);

 private:
  using Bytes = std::span<const uint8_t>;
  bool joinPixels();
  void showInflated();

  std::vector<Bytes> parts_;
  size_t part_ = 0, at_ = 0;
  Bytes exif_;

  size_t firstPixels_ = 0, endOfPixels_ = 0;  // in parts_; whole chunks with length and checksum
  bool whole_ = false;                        // no chunk is cut short, and those of pixels stand in a row
  Buffer joined_, inflated_;
  size_t joinedBytes_ = 0;
  std::vector<std::array<uint8_t, 15>> fronts_;
};

}  // namespace host
