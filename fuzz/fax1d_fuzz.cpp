// SPDX-License-Identifier: MIT
// Modified Huffman rows of any picture: equal to the plain form, and decode to the picture.
#include "fax_input.h"
#include "raxel/tiff_codes.h"
#include "tiff/fax_1d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::FaxPicture picture = fuzz::faxPicture(data, size);
  const std::vector<uint8_t> codes =
      fuzz::codeRows(picture, [&](const std::vector<uint8_t> &row, tiff::FaxBuffer &buffer) {
        return tiff::encodeFaxRow(row, picture.width, RAXEL_TIFF_HUFFMAN, buffer);
      });
  std::vector<uint8_t> expected;
  for (const std::string &row : picture.rows) {
    const std::vector<uint8_t> more = reference::packBits01(reference::fax1D(row));
    expected.insert(expected.end(), more.begin(), more.end());
  }
  fuzz::require(codes == expected, "the codes of the plain form");
  fuzz::require(reference::unfaxHuffman(codes, picture.width, picture.rows.size()) == picture.rows,
                "the picture comes back");
  return 0;
}
