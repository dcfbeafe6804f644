// The one entry for bringing a picture to another depth: it decides whether a table must be chosen
// and whether the result is dithered or converted pixel by pixel.
#include "color/bitmap.h"
#include "raxel/color.h"

Handle rlChangeColorResolution(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                               int16_t depth, Handle *table) {
  if (bits == 0 || table == nullptr) return 0;
  Handle newTable = 0;
  Handle result = 0;
  uint16_t count = 0;
  if (depth < sourceDepth) {
    // Four channels have to be brought to three first (rlCMYKtoRGB, rlALPHAtoRGB).
    if (sourceDepth > 24) return 0;
    if (depth < 8) {
      // The dither chooses the table, and refuses depths other than 1 and 4.
      result = rlDitherBitmap(bits, width, height, sourceDepth, depth, *table, &newTable);
      if (result == 0) return 0;
      *table = newTable;
      return result;
    }
    count = static_cast<uint16_t>(1u << depth);
    newTable = sourceDepth == 24 ? rlReduceColorTable(bits, width, static_cast<int16_t>(height), &count)
                                 : rlReduceColorTable(*table, 1u << sourceDepth, 1, &count);
  }
  result = rlConvertBitmapDepth(bits, width, height, sourceDepth, depth, *table, newTable, count);
  if (result == 0) {
    rlFreeNewData(newTable);
    return 0;
  }
  *table = newTable;
  return result;
}
