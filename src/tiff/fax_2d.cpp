#include "tiff/fax_2d.h"

#include "tiff/fax_runs.h"

namespace tiff {
namespace {

using Row = std::span<const uint8_t>;

// b1: the first changing element of the reference row to the right of a0 whose colour is opposite to
// a0's. At the start of a row a0 lies before pixel 0, so that a change at pixel 0 counts.
uint32_t findB1(Row reference, uint32_t a0, bool rowStart, uint32_t width, Colour colour) {
  const Colour other = opposite(colour);
  uint32_t from = a0;
  if (!rowStart && colourAt(reference, a0) == other) from = findOther(reference, a0, width, other);
  return findOther(reference, from, width, colour);
}

bool encodeRow(Row row, Row reference, uint32_t width, FaxWriter &writer) {
  Colour colour = kWhite;
  uint32_t a0 = 0;
  for (bool rowStart = true; a0 < width; rowStart = false) {
    const uint32_t a1 = findOther(row, a0, width, colour);
    const uint32_t b1 = reference.empty() ? width : findB1(reference, a0, rowStart, width, colour);
    const uint32_t b2 = reference.empty() ? width : findOther(reference, b1, width, opposite(colour));
    if (!writer.reserve()) return false;
    if (b2 < a1) {
      writer.put(kModeCodes[kPass]);
      a0 = b2;
    } else if (a1 - b1 + 3 <= 6) {  // -3 .. 3, modulo 2^32
      writer.put(kModeCodes[kV0 + (a1 - b1)]);
      a0 = a1;
      colour = opposite(colour);
    } else {
      const uint32_t a2 = findOther(row, a1, width, opposite(colour));
      writer.put(kModeCodes[kHorizontal]);
      if (!writer.putRun(colour, a1 - a0)) return false;
      if (!writer.putRun(opposite(colour), a2 - a1)) return false;
      a0 = a2;
    }
  }
  return true;
}

}  // namespace

uint32_t encodeFax2D(std::span<const uint8_t> rows, uint32_t width, uint32_t rowCount, FaxBuffer &out) {
  const uint64_t rowBytes = (uint64_t{width} + 7) / 8;
  if (width == 0 || rowBytes * rowCount > rows.size()) return 0;
  FaxWriter writer(out);
  Row reference;
  for (uint32_t i = 0; i < rowCount; ++i) {
    const Row row = rows.subspan(static_cast<size_t>(rowBytes) * i, static_cast<size_t>(rowBytes));
    if (!encodeRow(row, reference, width, writer)) return 0;
    reference = row;
  }
  return writer.byteCount();
}

}  // namespace tiff
