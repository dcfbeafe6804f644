// SPDX-License-Identifier: MIT
// The idea: bytes that only go on with the run before them are stepped over by the dozen (fax_changes.h),
// and for every other byte a table tells which runs end in it and what their codes are (kByteSteps).
#include "tiff/fax_1d.h"

#include <algorithm>
#include <bit>

#include "raxel/tiff_codes.h"
#include "tiff/fax_changes.h"

namespace tiff {
namespace {

uint32_t colorOfLastPixel(uint8_t byte) {
  return 1 - (byte & 1u);
}

// Takes the pixels of a chunk into the runs of the row: `run` is the length of the run at hand. What
// stands before the chunk, chunk[-1], tells its colour. False when the buffer is lost.
[[gnu::always_inline]] inline bool takeChunk(const uint8_t *chunk, uint32_t &run, FaxWriter &writer) {
  uint64_t changes = changeMask(chunk);
  uint32_t done = 0;  // bytes
  if (changes != 0) {
    // Every byte with changes gives up to 12 + 33 bits. A make-up code needs seven bytes without any
    // before it, so that there are at most nine of them.
    const ptrdiff_t room = 6 * std::popcount(changes) + 2 * 9 + 8;
    if (!writer.reserve(room)) return false;
    for (; changes != 0; changes &= changes - 1) {
      const auto at = static_cast<uint32_t>(std::countr_zero(changes));
      const uint32_t color = colorOfLastPixel((chunk + at)[-1]);
      const ByteStep &step = kByteSteps[color][chunk[at]];
      run += 8 * (at - done) + step.lead;
      const auto &codes = kRunCodes[color];
      if (run >= 64) {
        if (run <= kLongestMakeUp) {
          writer.put(codes[kMakeUpBase + run / 64]);
        } else if (!writer.putMakeUps(color, run, room)) {
          return false;
        }
        run %= 64;
      }
      const uint64_t bits = uint64_t{codes[run].bits} << step.length | step.bits;
      writer.put(bits, uint32_t{codes[run].length} + step.length);
      run = step.trail;
      done = at + 1;
    }
  }
  run += 8 * (kChangeChunk - done);
  return true;
}

// The last byte of a row with the bits past the width in the colour of its last pixel.
uint8_t withoutPadding(uint8_t byte, uint32_t width) {
  const auto past = static_cast<uint8_t>(0xFF >> 1 >> (width - 1) % 8);
  const bool lastIsWhite = (byte >> (7 - (width - 1) % 8) & 1) != 0;
  return static_cast<uint8_t>(lastIsWhite ? byte | past : byte & ~past);
}

}  // namespace

uint32_t encodeFaxRow(std::span<const uint8_t> row, uint32_t width, uint32_t compression, FaxBuffer &out) {
  const size_t rowBytes = width / 8 + (width % 8 != 0 ? 1 : 0);
  if (width == 0 || row.size() < rowBytes) return 0;
  FaxWriter writer(out);
  uint32_t run = 0;
  // The first chunk needs the white pixel that stands before every row, and the last is filled up with
  // the colour of the last pixel; these two are copies.
  uint8_t copy[1 + kChangeChunk] = {0xFF};
  const uint8_t lastByte = withoutPadding(row[rowBytes - 1], width);
  for (size_t at = 0; at < rowBytes; at += kChangeChunk) {
    const uint8_t *chunk = row.data() + at;
    const bool isLast = at + kChangeChunk >= rowBytes;
    if (at == 0 || isLast) {
      const size_t n = isLast ? rowBytes - at : kChangeChunk;
      if (at != 0) copy[0] = row[at - 1];
      std::copy_n(chunk, n, copy + 1);
      if (isLast) {
        copy[n] = lastByte;
        std::fill(copy + 1 + n, copy + sizeof copy, (lastByte & 1) != 0 ? 0xFF : 0);
      }
      chunk = copy + 1;
    }
    if (!takeChunk(chunk, run, writer)) return 0;
  }
  const auto filledUp =
      static_cast<uint32_t>((8 * kChangeChunk - width % (8 * kChangeChunk)) % (8 * kChangeChunk));
  if (!writer.putRun(colorOfLastPixel(lastByte), run - filledUp)) return 0;
  if (compression != RAXEL_TIFF_T4) return writer.byteCount();
  if (!writer.reserve()) return 0;
  writer.fillByte();
  writer.put(1, 16);
  return writer.byteCount();
}

}  // namespace tiff
