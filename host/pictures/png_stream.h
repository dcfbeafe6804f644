// SPDX-License-Identifier: MIT
// The chunks of a PNG file that decide its picture. Texts, which take any size once they are inflated, are
// left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "buffer.h"

namespace host {

class PngStream {
 public:
  explicit PngStream(std::span<const uint8_t> file);

  // The content of the Exif chunk; empty when there is none that is whole.
  std::span<const uint8_t> exif() const { return exif_; }

  // The ICC profile; empty when there is none that is whole and of no more than 16 MiB.
  std::vector<uint8_t> profile() const;
  // True when there is one, be it of any size and in any state.
  bool hasProfile() const { return hasProfile_; }

  // Inflates all pixels at once, which is several times faster than row by row, and checks their
  // checksums. The block has `spare` bytes more. Empty when `size` bytes is not what comes out or anything
  // is wrong: whoever reads the stream then learns what it is.
  Buffer inflate(uint64_t size, size_t spare) const;

  // Copies the next bytes; false at the end.
  bool read(void *to, size_t length);
  void rewind();

 private:
  using Bytes = std::span<const uint8_t>;
  // The content of all chunks of pixels, or nothing where a single one has it. False when a checksum is
  // wrong.
  bool joinPixels(Buffer &joined) const;

  std::vector<Bytes> parts_;  // the signature, chunks, and what is left of one that is cut short
  size_t part_ = 0, at_ = 0;
  size_t firstPixels_ = 0, endOfPixels_ = 0;
  bool whole_ = false;  // the chunks of pixels are there, and stand in a row
  Bytes exif_, profile_;
  bool hasProfile_ = false;
};

}  // namespace host
