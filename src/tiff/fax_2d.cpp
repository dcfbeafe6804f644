// SPDX-License-Identifier: MIT
// The idea: both rows are read through windows of some 60 pixels in a register (fax_window.h), in which
// a1, b1 and b2 are the lowest bits of a few sums and masks. Only runs longer than a window are searched
// for their ends. Rows of short runs take as many steps as they can from one window; other rows take a
// new window at every step, since guessing when the old one is used up costs more.
#include "tiff/fax_2d.h"

#include <algorithm>
#include <utility>

#include "tiff/fax_window.h"

namespace tiff {
namespace {

constexpr uint64_t kAllWhite = ~uint64_t{0};  // set bits are white

// How far a row is coded.
struct Place {
  uint32_t a0;
  uint64_t same;   // a word of a0's colour
  uint64_t begun;  // 0 at the start of the row, where a0 stands before pixel 0; then 1
};

// Windows below are given as bits that differ (1) or not (0) from a0's colour, a0 lowest. Distances are
// from a0; 64 means that a window shows none.

[[gnu::always_inline]] inline uint32_t distance(uint64_t bits) {
  return static_cast<uint32_t>(std::countr_zero(bits));
}

// The pixels above that b1 may be: those that differ and follow one that does not. Once a row has begun,
// the one put in makes a change at a0 itself no change, since b1 lies strictly to the right of a0.
[[gnu::always_inline]] inline uint64_t changesAbove(uint64_t above, uint64_t begun) {
  return above & ~(above << 1 | begun);
}

// The bit behind the run of ones that begins with the lowest bit of `begins`: adding that bit carries
// through the run. 0 when there is none.
[[gnu::always_inline]] inline uint64_t endOfRun(uint64_t bits, uint64_t begins) {
  return (bits + (begins & (0 - begins))) & ~bits;
}

// Whether b2, a single bit or none, lies before the lowest bit of the row.
[[gnu::always_inline]] inline bool isPass(uint64_t row, uint64_t b2) {
  return (row & (b2 ^ (b2 - 1))) == 0;
}

// -3 to 3, as numbers modulo 2^32.
[[gnu::always_inline]] inline bool isVertical(uint32_t a1, uint32_t b1) {
  return a1 - b1 + 3 <= 6;
}

uint32_t colorOf(uint64_t same) {
  return static_cast<uint32_t>(~same & 1);
}

// Where findOther() ends, as a distance that does not pass the row's end.
[[gnu::always_inline]] inline uint32_t distanceTo(uint64_t found, uint32_t a0, uint32_t left) {
  return static_cast<uint32_t>(std::min<uint64_t>(found - a0, left));
}

// Any step. False when the buffer is lost.
[[gnu::always_inline]] inline bool step(FaxWriter &writer, const uint8_t *row, const uint8_t *above,
                                        uint32_t width, Place &place) {
  // With a1 among the nearest 54 of the 57 pixels that a window shows at least, b1 is seen too if it is
  // no more than three to the right.
  constexpr uint32_t kNear = 54;
  if (!writer.reserve()) return false;
  const auto [a0, same, begun] = place;
  const uint32_t left = width - a0;
  const uint64_t rowBits = window(row, a0, same);
  const uint64_t aboveBits = window(above, a0, same);
  const uint64_t changes = changesAbove(aboveBits, begun);
  const uint64_t b2Bit = endOfRun(aboveBits, changes);
  uint32_t a1 = distance(rowBits);
  uint32_t b1 = distance(changes);
  uint32_t b2 = distance(b2Bit);
  bool pass = isPass(rowBits, b2Bit);
  if ((rowBits & ((uint64_t{1} << kNear) - 1)) == 0 && !(pass && b2 < kNear)) {
    a1 = distanceTo(findOther(row, uint64_t{a0} + kNear, same), a0, left);
    if (changes == 0) {
      const bool differs = (aboveBits & 1) != 0;  // then its run must end before b1 can begin
      b1 = distanceTo(findOther(above, differs ? findOther(above, a0, ~same) : a0, same), a0, left);
    }
    pass = false;
    if (b1 < a1) {
      b2 = distanceTo(findOther(above, uint64_t{a0} + b1, ~same), a0, left);
      pass = b2 < a1;
    }
  }
  place.begun = 1;
  if (pass) {
    writer.put(kModeCodes[kPass]);
    place.a0 += b2;
    return true;
  }
  b1 = std::min(b1, left);
  if (isVertical(a1, b1)) {
    writer.put(kModeCodes[kV0 + (a1 - b1)]);
    place.a0 += a1;
    place.same = ~same;
    return true;
  }
  const uint32_t a2 = distanceTo(findOther(row, uint64_t{a0} + a1, ~same), a0, left);
  writer.put(kModeCodes[kHorizontal]);
  place.a0 += a2;
  return writer.putRun(colorOf(same), a1) && writer.putRun(1 - colorOf(same), a2 - a1);
}

[[gnu::always_inline]] inline void put(BitWriter &bits, BitCode code) {
  bits.put(code.bits, code.length);
}

// Takes as many steps as one window shows, which is of advantage where steps are short. Room for 64
// pixels of at most 14 bits each must be there. The row must have begun.
[[gnu::always_inline]] inline void stepsOfOneWindow(BitWriter &bits, const uint8_t *row,
                                                    const uint8_t *above, uint32_t width, Place &place) {
  uint64_t rowWord = window(row, place.a0, 0);
  uint64_t aboveWord = window(above, place.a0, 0);
  uint64_t same = place.same;
  uint32_t shown = std::min(64 - place.a0 % 8, width - place.a0);
  const uint32_t end = place.a0 + shown;
  for (;;) {
    const uint64_t rowBits = rowWord ^ same;
    const uint64_t aboveBits = aboveWord ^ same;
    const uint32_t a1 = distance(rowBits);
    if (a1 + 4 > shown) break;  // b1 matters as far as a1 + 3
    const uint64_t changes = changesAbove(aboveBits, 1);
    const uint64_t b2 = endOfRun(aboveBits, changes);
    uint32_t length;
    if (isPass(rowBits, b2)) {
      put(bits, kModeCodes[kPass]);
      length = distance(b2);
    } else if (const uint32_t b1 = distance(changes); isVertical(a1, b1)) {
      put(bits, kModeCodes[kV0 + (a1 - b1)]);
      length = a1;
      same = ~same;
    } else {
      const uint32_t a2 = distance(endOfRun(rowBits, rowBits));
      if (a2 >= shown) break;
      const BitCode mode = kModeCodes[kHorizontal];
      const BitCode first = kRunCodes[colorOf(same)][a1];
      const BitCode second = kRunCodes[1 - colorOf(same)][a2 - a1];
      const uint64_t runs =
          (uint64_t{mode.bits} << first.length | first.bits) << second.length | second.bits;
      bits.put(runs, uint32_t{mode.length} + first.length + second.length);
      length = a2;
    }
    rowWord >>= length;
    aboveWord >>= length;
    shown -= length;
  }
  place = {end - shown, same, 1};
}

[[gnu::always_inline]] inline bool encodeRow(FaxWriter &writer, const uint8_t *row, const uint8_t *above,
                                             uint32_t width) {
  Place place{0, kAllWhite, 0};
  while (place.a0 < width) {
    if (!step(writer, row, above, width, place)) return false;
  }
  return true;
}

[[gnu::always_inline]] inline bool encodeShortRuns(FaxWriter &writer, const uint8_t *row,
                                                   const uint8_t *above, uint32_t width) {
  Place place{0, kAllWhite, 0};
  for (;;) {
    if (!step(writer, row, above, width, place) || !writer.reserve(256)) return false;
    if (place.a0 == width) return true;
    BitWriter bits = writer.bits();
    stepsOfOneWindow(bits, row, above, width, place);  // ends before the row does
    writer.setBits(bits);
  }
}

// The changing elements of a row, with the one that a black first pixel is.
uint32_t countChanges(const uint8_t *row, uint32_t width) {
  uint32_t changes = 0;
  uint64_t before = 1;  // the white pixel before the row
  for (uint32_t at = 0;; at += 64) {
    const uint64_t word = loadLittle(row + at / 8);
    const uint64_t pixels = width - at < 64 ? (uint64_t{1} << (width - at)) - 1 : ~uint64_t{0};
    changes += static_cast<uint32_t>(std::popcount((word ^ (word << 1 | before)) & pixels));
    if (width - at <= 64) return changes;
    before = word >> 63;
  }
}

// A row like the one above it: every change lies directly below one of that row, and
// the row's end below its end.
bool putSameRow(FaxWriter &writer, uint32_t changes) {
  uint32_t left = changes + 1;
  for (; left > 32; left -= 32) {
    if (!writer.reserve()) return false;
    writer.put(0xFFFFFFFF, 32);
  }
  if (!writer.reserve()) return false;
  writer.put((uint64_t{1} << left) - 1, left);
  return true;
}

[[gnu::always_inline]] inline uint32_t encodeStrip(std::span<const uint8_t> rows, uint32_t width,
                                                   uint32_t rowCount, FaxBuffer &out) {
  const uint64_t rowBytes64 = (uint64_t{width} + 7) / 8;
  if (width == 0 || rowCount == 0 || rowBytes64 * rowCount > rows.size()) return 0;
  const auto rowBytes = static_cast<size_t>(rowBytes64);
  const runtime::Block memory = runtime::Block::ofSize(2 * (rowBytes64 + kWindowSlack));  // below 2^31
  uint8_t *above = memory.data();
  uint8_t *row = above + rowBytes + kWindowSlack;
  std::memset(row, 0xFF, rowBytes);
  copyForWindows(row, width, above);
  FaxWriter writer(out);
  bool shortRuns = false;
  bool counted = false;
  uint32_t changes = 0;
  for (uint32_t i = 0; i < rowCount; ++i) {
    const uint8_t *from = rows.data() + rowBytes * i;
    if (i > 0 && std::memcmp(from, from - rowBytes, rowBytes) == 0) {
      if (!counted) changes = countChanges(above, width);
      counted = true;
      if (!putSameRow(writer, changes)) return 0;
      continue;
    }
    counted = false;
    copyForWindows(from, width, row);
    const uint32_t before = writer.byteCount();
    if (!(shortRuns ? encodeShortRuns(writer, row, above, width) : encodeRow(writer, row, above, width))) {
      return 0;
    }
    // More than a bit for two pixels: then steps are short, and will be so in the next row.
    shortRuns = writer.byteCount() - before > width / 16;
    std::swap(row, above);
  }
  return writer.byteCount();
}

#if defined(__x86_64__)

// The same, with the bit counts and shifts that most machines have.
[[gnu::target("bmi,bmi2")]] uint32_t encodeStripBmi(std::span<const uint8_t> rows, uint32_t width,
                                                    uint32_t rowCount, FaxBuffer &out) {
  return encodeStrip(rows, width, rowCount, out);
}

#endif

}  // namespace

uint32_t encodeFax2DPlain(std::span<const uint8_t> rows, uint32_t width, uint32_t rowCount,
                          FaxBuffer &out) {
  return encodeStrip(rows, width, rowCount, out);
}

uint32_t encodeFax2D(std::span<const uint8_t> rows, uint32_t width, uint32_t rowCount, FaxBuffer &out) {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2")) {
    return encodeStripBmi(rows, width, rowCount, out);
  }
#endif
  return encodeFax2DPlain(rows, width, rowCount, out);
}

}  // namespace tiff
