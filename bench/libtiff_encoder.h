// SPDX-License-Identifier: MIT
// libtiff's encoders through its C API, writing to memory. Apart from the coders of this library, since
// libtiff's header gives the name `tiff` to a type of its own.
#pragma once

#include <algorithm>
#include <cstring>

#include "coder_pictures.h"

namespace bench {

// A file in memory. Whoever measures makes it large enough from the start.
struct Memory {
  std::vector<uint8_t> bytes;
  size_t at = 0;
  size_t end = 0;

  void write(const void *from, size_t n) {
    if (at + n > bytes.size()) bytes.resize((at + n) * 2);
    std::memcpy(bytes.data() + at, from, n);
    at += n;
    end = std::max(end, at);
  }
};

// The strips that this library cuts a picture into: four, and a fifth for what is left over.
inline size_t rowsPerStrip(const Picture &picture) {
  return picture.height / 4;
}

// Writes the whole picture as a TIFF file. `compression` is the value of the tag.
void encodeWithLibtiff(const Picture &picture, uint16_t compression, Memory &memory);

}  // namespace bench
