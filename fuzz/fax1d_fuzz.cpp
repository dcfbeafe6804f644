// SPDX-License-Identifier: MIT
// Modified Huffman rows of any picture: equal to the plain form, and decode to the picture.
#include "fax_input.h"
#include "raxel/tiff_codes.h"
#include "tiff/fax_1d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::FaxPicture picture(data, size);
  std::vector<uint8_t> codes;
  codes.reserve(200);
  fuzz::codeRows(picture, codes, [&](std::span<const uint8_t> row, tiff::FaxBuffer &buffer) {
    return tiff::encodeFaxRow(row, picture.width, RAXEL_TIFF_HUFFMAN, buffer);
  });
  fuzz::require(codes == reference::huffman(picture.rows, picture.width), "the codes of the plain form");
  fuzz::require(reference::readHuffman(codes, picture.width, picture.count) == picture.rows,
                "the picture comes back");
  return 0;
}
