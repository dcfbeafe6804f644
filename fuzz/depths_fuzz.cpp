// SPDX-License-Identifier: MIT
// Pictures brought to another depth, with tables of any kind: what the plain form gives.
#include "color/reference/plain_resolution.h"
#include "color_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

void convert(fuzz::Input &input, const plain::Picture &picture, int depth, const plain::Table &source) {
  plain::Table table;
  if (depth < 24 || input.once(8)) table = fuzz::table(input, depth < 8 ? 20 : 256);
  if (input.once(16)) table.count += input.word();
  const fuzz::ExactBlock bits(picture.bits), sourceTable(source), newTable(table);
  const runtime::Block result(rlConvertBitmapDepth(bits.handle(), picture.width, picture.height,
                                                   static_cast<int16_t>(picture.depth),
                                                   static_cast<int16_t>(depth), sourceTable.handle(),
                                                   newTable.handle(), static_cast<uint16_t>(table.count)));
  table.count = static_cast<uint16_t>(table.count);
  fuzz::require(pictures::bytesOf(result.handle()) == plain::convert(picture, depth, source, table),
                "the picture of the plain form");
  fuzz::require(bits.bytes() == picture.bits, "the source is never changed");
}

void change(const plain::Picture &picture, int depth, const plain::Table &source) {
  const plain::Changed expected = plain::changeResolution(picture, depth, source);
  const fuzz::ExactBlock bits(picture.bits), old(source);
  Handle table = old.handle();
  const runtime::Block out(rlChangeColorResolution(bits.handle(), picture.width, picture.height,
                                                   static_cast<int16_t>(picture.depth),
                                                   static_cast<int16_t>(depth), &table));
  const runtime::Block owned(table != old.handle() ? table : 0);
  fuzz::require(static_cast<bool>(out) == expected.done, "done where the plain form does it");
  fuzz::require(pictures::bytesOf(out.handle()) == expected.bits, "the picture of the plain form");
  fuzz::require(pictures::bytesOf(owned.handle()) == expected.table.entries, "the table of the plain form");
  fuzz::require(bits.bytes() == picture.bits, "the source is never changed");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const bool converts = input.byte() % 2 == 0 || !input.rarely(2);
  const int sourceDepth = fuzz::depth(input), depth = fuzz::depth(input);
  const plain::Table source = fuzz::tableFor(input, sourceDepth);
  const plain::Picture picture = fuzz::picture(input, sourceDepth);
  if (converts) {
    convert(input, picture, depth, source);
  } else {
    change(picture, depth, source);
  }
  return 0;
}
