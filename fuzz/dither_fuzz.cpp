// SPDX-License-Identifier: MIT
// Error diffusion to tables that are given and tables that are chosen: what the plain form gives.
#include "color/reference/plain_resolution.h"
#include "color_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

void toGiven(fuzz::Input &input, const plain::Picture &picture, int depth, const plain::Table &source) {
  const plain::Table table = fuzz::table(input, depth == 8 ? 256 : 16);
  // A count is cut at what the table holds before it is taken as a signed number.
  const uint32_t count = table.count + (input.once(16) ? input.byte() * 150u : 0);
  const fuzz::ExactBlock bits(picture.bits), sourceTable(source), given(table);
  const runtime::Block result(rlDitherGivenCT(
      bits.handle(), picture.width, picture.height, static_cast<int16_t>(picture.depth),
      static_cast<int16_t>(depth), sourceTable.handle(), given.handle(), static_cast<uint16_t>(count)));
  fuzz::require(pictures::bytesOf(result.handle()) == plain::dither(picture, depth, source, table),
                "the picture of the plain form");
  fuzz::require(bits.bytes() == picture.bits, "the source is never changed");
}

void toChosen(const plain::Picture &picture, int depth, const plain::Table &source) {
  const plain::Table table = plain::chosenTable(picture, depth, source);
  const fuzz::ExactBlock bits(picture.bits), sourceTable(source);
  Handle chosen = 0;
  const runtime::Block result(rlDitherBitmap(bits.handle(), picture.width, picture.height,
                                             static_cast<int16_t>(picture.depth),
                                             static_cast<int16_t>(depth), sourceTable.handle(), &chosen));
  const runtime::Block owned(chosen);
  fuzz::require(pictures::bytesOf(chosen) == table.entries, "the table of the plain form");
  fuzz::require(pictures::bytesOf(result.handle()) == plain::dither(picture, depth, source, table),
                "the picture of the plain form");
  Handle again = 0;
  uint16_t count = 0;
  rlDitherGetCT(bits.handle(), picture.width, picture.height, static_cast<int16_t>(picture.depth),
                static_cast<int16_t>(depth), sourceTable.handle(), &again, &count);
  const runtime::Block ownedAgain(again);
  fuzz::require(pictures::bytesOf(again) == table.entries && count == table.count, "the same table alone");
}

// A row by itself, and the row below it.
void oneLine(fuzz::Input &input) {
  const plain::Table table = fuzz::table(input, 40);
  const uint32_t width = fuzz::width(input);
  fuzz::Bytes current = fuzz::filled(input, size_t{3} * width),
              next = fuzz::filled(input, size_t{3} * width);
  const bool isLast = input.once(4);
  const fuzz::Exact row(current), below(next), entries(table.entries);
  _rlDitherOneLine(row.data(), isLast ? nullptr : below.data(), entries.data(), width,
                   static_cast<int16_t>(table.count));
  plain::ditherLine(current.data(), isLast ? nullptr : next.data(), table.entries, width,
                    static_cast<int>(table.count));
  fuzz::require(std::equal(current.begin(), current.end(), row.data()), "the row of the plain form");
  fuzz::require(std::equal(next.begin(), next.end(), below.data()), "and the row below it");
  const int32_t mode = static_cast<int32_t>(input.byte() % 8) - 1;
  rev_rgb(width, row.data(), mode);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const unsigned what = input.byte() % 4;
  if (what == 3) {
    oneLine(input);
    return 0;
  }
  const int sourceDepth = fuzz::oneOf<int>(input, {1, 4, 8, 24, 32});
  const int depth = fuzz::oneOf<int>(input, {1, 4, 8});
  plain::Table source;
  if (sourceDepth <= 8 && !input.once(16)) {
    source = {true, fuzz::filled(input, size_t{3} << sourceDepth), 1u << sourceDepth};
  }
  const plain::Picture picture = fuzz::picture(input, sourceDepth);
  if (what < 2 || !input.rarely(4)) {  // choosing takes longer than all the rest
    toGiven(input, picture, depth, source);
  } else {
    toChosen(picture, depth, source);
  }
  return 0;
}
