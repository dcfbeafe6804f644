// SPDX-License-Identifier: MIT
// A bilevel picture out of a fuzzer's bytes.
#pragma once

#include "input.h"
#include "tiff/fax_buffer.h"
#include "tiff/reference_fax.h"

namespace fuzz {

struct FaxPicture {
  uint32_t width;
  std::vector<uint8_t> packed;  // a set bit is white
  reference::Picture rows;      // the same as letters
  uint32_t firstRoom;           // bytes that the output buffer starts with
};

inline FaxPicture faxPicture(const uint8_t *data, size_t size) {
  Input input(data, size);
  FaxPicture picture;
  picture.width = input.between(1, 3000);
  picture.firstRoom = input.byte();
  const size_t rowBytes = (picture.width + 7) / 8;
  picture.packed = input.rest();
  picture.packed.resize(std::max<size_t>(1, picture.packed.size() / rowBytes) * rowBytes);
  for (size_t at = 0; at < picture.packed.size(); at += rowBytes) {
    std::string row;
    for (size_t x = 0; x < picture.width; ++x) {
      row += (picture.packed[at + x / 8] >> (7 - x % 8) & 1) != 0 ? 'w' : 'b';
    }
    picture.rows.push_back(row);
  }
  return picture;
}

inline std::vector<uint8_t> taken(const tiff::FaxBuffer &buffer, uint32_t n) {
  require(buffer.handle() != 0 && n <= buffer.size(), "the buffer holds the codes");
  return {buffer.data(), buffer.data() + n};
}

// The codes of all rows, one after the other in the same buffer.
template <class EncodeRow>
std::vector<uint8_t> codeRows(const FaxPicture &picture, EncodeRow encodeRow) {
  tiff::FaxBuffer buffer(runtime::allocate(picture.firstRoom));
  const size_t rowBytes = (picture.width + 7) / 8;
  std::vector<uint8_t> codes;
  for (size_t at = 0; at < picture.packed.size(); at += rowBytes) {
    const std::vector<uint8_t> row(picture.packed.begin() + static_cast<ptrdiff_t>(at),
                                   picture.packed.begin() + static_cast<ptrdiff_t>(at + rowBytes));
    const std::vector<uint8_t> more = taken(buffer, encodeRow(row, buffer));
    codes.insert(codes.end(), more.begin(), more.end());
  }
  return codes;
}

}  // namespace fuzz
