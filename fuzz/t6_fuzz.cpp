// SPDX-License-Identifier: MIT
// T.6 strips of any picture: both forms of the coder equal the plain one, and decode to the picture.
#include "fax_input.h"
#include "tiff/fax_2d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::FaxPicture picture(data, size);
  const auto rows = static_cast<uint32_t>(picture.count);
  const std::vector<uint8_t> expected = reference::t6(picture.rows, picture.width);
  tiff::FaxBuffer buffer(runtime::allocate(picture.firstRoom));
  const auto coded = [&](auto encode) {
    return fuzz::taken(buffer, encode(picture.bytes(), picture.width, rows, buffer));
  };
  fuzz::require(fuzz::same(coded(tiff::encodeFax2D), expected), "the codes of the plain form");
  fuzz::require(fuzz::same(coded(tiff::encodeFax2DPlain), expected), "and of the form for every machine");
  fuzz::require(reference::readT6(expected, picture.width, rows) == picture.rows, "the picture comes back");
  return 0;
}
