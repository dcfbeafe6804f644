// SPDX-License-Identifier: MIT
// One of the filter's coders on its own, with the stream that it writes to. Both are exported for hosts.
#pragma once

#include "filter/filter_stream.h"

namespace host {

class Coder {
 public:
  // `compression` is a RaxelCompression other than none. Writes go to the stream; all are borrowed.
  Coder(const Library &library, int32_t compression, OutputStream &stream);

  bool isOpen() const { return stream_.handle() != 0; }
  // Writes bytes as they are.
  bool write(std::span<const uint8_t> bytes) const { return stream_.write(bytes); }
  // Codes `rows` packed rows of `width` pixels: one for PackBits, Huffman and T.4, a whole strip for LZW
  // and T.6. The result is a code of the library.
  uint32_t code(std::span<const uint8_t> bytes, uint32_t width, uint32_t rows);
  // What all that was coded has become.
  uint32_t codedBytes() const { return state_.nStripBytes; }

 private:
  const Library &library_;
  FilterStream stream_;
  TiffWriterState state_{};
};

}  // namespace host
