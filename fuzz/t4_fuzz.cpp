// SPDX-License-Identifier: MIT
// T.4 strips of any picture decode to the picture, with an EOL before each row and six at the end.
#include "fax_input.h"
#include "raxel/tiff_codes.h"
#include "tiff/fax_1d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::FaxPicture picture(data, size);
  std::vector<uint8_t> strip;
  strip.reserve(300);
  strip.insert(strip.end(), {0x00, 0x01});
  fuzz::codeRows(picture, strip, [&](std::span<const uint8_t> row, tiff::FaxBuffer &buffer) {
    return tiff::encodeFaxRow(row, picture.width, RAXEL_TIFF_T4, buffer);
  });
  for (int i = 0; i < 5; ++i) strip.insert(strip.end(), {0x00, 0x01});
  fuzz::require(reference::readT4(strip, picture.width) == picture.rows, "the picture comes back");
  return 0;
}
