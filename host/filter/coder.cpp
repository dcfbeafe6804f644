// SPDX-License-Identifier: MIT
#include "filter/coder.h"

#include "finish/planned.h"

namespace host {

Coder::Coder(const Library &library, int32_t compression, OutputStream &stream)
    : library_(library), stream_(library, stream) {
  state_.hTiffFile = stream_.handle();
  state_.nCompression = finish::compressionTag(compression);
}

uint32_t Coder::code(std::span<const uint8_t> bytes, uint32_t width, uint32_t rows) {
  return static_cast<uint32_t>(
      library_.compressAndWrite(&state_, bytes.data(), static_cast<uint32_t>(bytes.size()), width, rows));
}

}  // namespace host
