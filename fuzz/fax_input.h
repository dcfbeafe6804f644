// SPDX-License-Identifier: MIT
// A bilevel picture out of a fuzzer's bytes.
#pragma once

#include "input.h"
#include "tiff/fax_buffer.h"
#include "tiff/reference_changes.h"

namespace fuzz {

class FaxPicture {
 public:
  // The width, the bytes that the output buffer starts with, and the rows: at least one, a set bit for
  // white.
  FaxPicture(const uint8_t *data, size_t size) : FaxPicture(Input(data, size)) {}

  uint32_t width;
  uint32_t firstRoom;
  size_t rowBytes;
  size_t count;
  Exact packed;
  reference::ChangingRows rows;

  std::span<const uint8_t> bytes() const { return {packed.data(), rowBytes * count}; }

 private:
  explicit FaxPicture(Input input)
      : width(input.between(1, 3000)),
        firstRoom(input.byte()),
        rowBytes((width + 7) / 8),
        count(std::max<size_t>(1, input.left() / rowBytes)),
        packed(wholeRows(input.rest(), rowBytes * count)),
        rows(reference::changingRows(bytes(), width)) {}

  static std::vector<uint8_t> wholeRows(std::vector<uint8_t> bytes, size_t size) {
    bytes.resize(size);
    return bytes;
  }
};

inline std::span<const uint8_t> taken(const tiff::FaxBuffer &buffer, uint32_t n) {
  require(buffer.handle() != 0 && n <= buffer.size(), "the buffer holds the codes");
  return {buffer.data(), n};
}

inline bool same(std::span<const uint8_t> a, std::span<const uint8_t> b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

// The codes of all rows, one after the other in the same buffer, behind those that are there. Each row lies
// in a place of its own.
template <class EncodeRow>
void codeRows(const FaxPicture &picture, std::vector<uint8_t> &codes, EncodeRow encodeRow) {
  tiff::FaxBuffer buffer(runtime::allocate(picture.firstRoom));
  const Exact row(picture.rowBytes);
  const std::span<const uint8_t> bytes = picture.bytes();
  for (size_t at = 0; at < bytes.size(); at += picture.rowBytes) {
    std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(at), picture.rowBytes, row.data());
    const std::span<const uint8_t> more =
        taken(buffer, encodeRow(std::span<const uint8_t>(row.data(), picture.rowBytes), buffer));
    codes.insert(codes.end(), more.begin(), more.end());
  }
}

}  // namespace fuzz
