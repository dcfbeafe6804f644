#include "tiff/fax_1d.h"

#include "tiff/fax_runs.h"

namespace tiff {

uint32_t encodeFaxRow(std::span<const uint8_t> row, uint32_t width, uint32_t compression, FaxBuffer &out) {
  if (width == 0 || row.size() < (uint64_t{width} + 7) / 8) return 0;
  FaxWriter writer(out);
  Colour colour = kWhite;
  for (uint32_t at = 0; at < width;) {
    const uint32_t end = findOther(row, at, width, colour);
    if (!writer.putRun(colour, end - at)) return 0;
    at = end;
    colour = opposite(colour);
  }
  if (compression != 3) return writer.byteCount();
  if (!writer.reserve()) return 0;
  writer.fillByte();
  writer.put(1, 16);
  return writer.byteCount();
}

}  // namespace tiff
