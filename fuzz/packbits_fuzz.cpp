// SPDX-License-Identifier: MIT
// PackBits of any row: equal to the plain form, and decodes to the row.
#include "input.h"
#include "tiff/packbits.h"
#include "tiff/reference_packbits.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::vector<uint8_t> row(data, data + size);
  std::vector<uint8_t> codes(2 * row.size() + 2);
  codes.resize(tiff::encodePackBits(row, codes.data()));
  fuzz::require(codes == reference::packBits(row), "the codes of the plain form");
  fuzz::require(reference::unpackBits(codes) == row, "the row comes back");

  std::vector<uint8_t> pieces;
  for (size_t at = 0; at < size; at += tiff::kPackBitsPiece) {
    const size_t n = std::min(size - at, tiff::kPackBitsPiece);
    std::vector<uint8_t> out(2 * n + 2);
    out.resize(tiff::encodePackBits({row.data() + at, n}, out.data()));
    pieces.insert(pieces.end(), out.begin(), out.end());
  }
  fuzz::require(pieces == codes, "pieces give the codes of the row");
  return 0;
}
