// SPDX-License-Identifier: MIT
#include "color/depth/resolution.h"

#include "color/dither/dither.h"
#include "color/median_cut/reduce.h"
#include "raxel/color.h"

namespace color {

namespace {

runtime::Block ditherToChosenTable(const DepthChange &change, runtime::Block &table) {
  Dithering dithering{change};
  if (!beginDithering(dithering)) return {};
  chooseTable(dithering);
  runtime::Block out = dither(dithering);
  table = std::move(dithering.made);
  return out;
}

}  // namespace

runtime::Block changeResolution(DepthChange change, runtime::Block &table) {
  if (change.depth >= change.sourceDepth) return convertPicture(change);
  // Four channels have to be brought to three first (rlCMYKtoRGB, rlALPHAtoRGB).
  if (change.sourceDepth > 24) return {};
  if (change.depth < 8) return ditherToChosenTable(change, table);
  change.count = static_cast<uint16_t>(1u << change.depth);
  // Between 24 and 8 bits there are indexes too, in name: their table is one row of colours.
  table = change.sourceDepth == 24
              ? reducePicture(change.bits, change.width, static_cast<int16_t>(change.height), change.count)
              : reducePicture(change.sourceTable, 1u << change.sourceDepth, 1, change.count);
  change.table = table.bytes();
  return convertPicture(change);
}

}  // namespace color

Handle rlChangeColorResolution(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                               int16_t depth, Handle *table) {
  if (bits == 0 || table == nullptr) return 0;
  runtime::Block chosen;
  runtime::Block out =
      color::changeResolution(color::lockPicture(bits, width, height, sourceDepth, depth, *table), chosen);
  if (out) *table = chosen.release();
  return out.release();
}
