// SPDX-License-Identifier: MIT
// T.6 strips of any picture: both forms of the coder equal the plain one, and decode to the picture.
#include "fax_input.h"
#include "tiff/fax_2d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const fuzz::FaxPicture picture = fuzz::faxPicture(data, size);
  const auto rows = static_cast<uint32_t>(picture.rows.size());
  tiff::FaxBuffer buffer(runtime::allocate(picture.firstRoom));
  const std::vector<uint8_t> codes =
      fuzz::taken(buffer, tiff::encodeFax2D(picture.packed, picture.width, rows, buffer));
  fuzz::require(codes == reference::packBits01(reference::fax2D(picture.rows)),
                "the codes of the plain form");
  fuzz::require(
      codes == fuzz::taken(buffer, tiff::encodeFax2DPlain(picture.packed, picture.width, rows, buffer)),
      "the codes of the form for every machine");
  fuzz::require(reference::unfaxT6(codes, picture.width, rows) == picture.rows, "the picture comes back");
  return 0;
}
