// SPDX-License-Identifier: MIT
// PackBits of any row: equal to the plain form, and decodes to the row.
#include "input.h"
#include "tiff/packbits.h"
#include "tiff/reference_packbits.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::span<const uint8_t> row(data, size);
  std::vector<uint8_t> codes(2 * size + 2);
  codes.resize(tiff::encodePackBits(row, codes.data()));
  fuzz::require(codes == reference::packBits(row), "the codes of the plain form");
  const std::vector<uint8_t> decoded = reference::unpackBits(codes);
  fuzz::require(std::equal(row.begin(), row.end(), decoded.begin(), decoded.end()), "the row comes back");

  std::vector<uint8_t> pieces;
  for (size_t at = 0; at < size; at += tiff::kPackBitsPiece) {
    const fuzz::Exact piece({data + at, data + std::min(size, at + tiff::kPackBitsPiece)});
    const size_t n = std::min(size - at, tiff::kPackBitsPiece);
    const fuzz::Exact out(2 * n + 2);
    pieces.insert(pieces.end(), out.data(),
                  out.data() + tiff::encodePackBits({piece.data(), n}, out.data()));
  }
  fuzz::require(pieces == codes, "pieces give the codes of the row");
  return 0;
}
