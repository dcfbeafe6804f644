#include "color/gather.h"

#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "runtime/unaligned.h"

namespace color {

void planRun(ColumnRun &run, Columns how, uint32_t sourceWidth, uint32_t width, uint32_t first) {
  run.first = first;
  run.end = std::min(ColumnRun::kLongest, width - first);
  run.begin = static_cast<uint32_t>(mapColumns(how, sourceWidth, width, first, {run.columns, run.end}));
  // Widening counts wide sources differently, so that there equal widths say nothing.
  run.straight = how == Columns::kNarrow && sourceWidth == width;
}

namespace {

uint32_t bitAt(const uint8_t *row, uint32_t x) {
  return static_cast<uint32_t>(row[x >> 3] >> (~x & 7)) & 1u;
}

uint32_t nibbleAt(const uint8_t *row, uint32_t x) {
  return static_cast<uint32_t>(row[x >> 1] >> ((~x & 1) * 4)) & 15u;
}

void gatherBits(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (uint32_t i = 0; i < n; i += 8, columns += 8) {
    uint32_t byte = 0;
    for (int bit = 0; bit < 8; ++bit) byte = byte << 1 | bitAt(source, columns[bit]);
    *out++ = static_cast<uint8_t>(byte);
  }
}

void gatherNibbles(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (uint32_t i = 0; i < n; i += 2, columns += 2) {
    *out++ = static_cast<uint8_t>(nibbleAt(source, columns[0]) << 4 | nibbleAt(source, columns[1]));
  }
}

void gatherBytes(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (uint32_t i = 0; i < n; ++i) out[i] = source[columns[i]];
}

void gatherTriples(const uint32_t *columns, uint32_t n, std::span<const uint8_t> source, uint8_t *out) {
  // A pixel moves with the byte after it, which the next pixel then overwrites: one load and one
  // store. Near the end of the block, and for the last pixel, only its three bytes move.
  uint32_t i = 0;
  const uint64_t farthest = n != 0 ? uint64_t{columns[n - 1]} * 3 : 0;
  if (farthest + 4 <= source.size()) {
    for (; i + 1 < n; ++i, out += 3) {
      runtime::store(out, runtime::load<uint32_t>(source.data() + size_t{columns[i]} * 3));
    }
  }
  for (; i < n; ++i, out += 3) std::memcpy(out, source.data() + size_t{columns[i]} * 3, 3);
}

void gatherWords(const uint32_t *columns, uint32_t n, const uint8_t *source, uint8_t *out) {
  for (uint32_t i = 0; i < n; ++i) std::memcpy(out + size_t{i} * 4, source + size_t{columns[i]} * 4, 4);
}

// Pixel by pixel: for columns that share a byte with others, and rows that their block cuts short.
void copyPixels(const ColumnRun &run, uint32_t begin, uint32_t end, std::span<const uint8_t> source,
                std::span<uint8_t> destination, int16_t depth) {
  for (uint32_t i = begin; i < end; ++i) {
    const uint32_t x = run.first + i;
    setPixel(destination, x, 0, depth, getPixel(source, run.columns[i], depth), {});
  }
}

}  // namespace

void gather(const ColumnRun &run, std::span<const uint8_t> source, std::span<uint8_t> destination,
            int16_t depth) {
  if (run.begin >= run.end || !isPixelDepth(depth)) return;
  // Columns rise from left to right: when the last one lies in the row, all do.
  const uint64_t lastBit = (uint64_t{run.columns[run.end - 1]} + 1) * static_cast<uint64_t>(depth);
  if ((lastBit + 7) / 8 > source.size()) {
    return copyPixels(run, run.begin, run.end, source, destination, depth);
  }
  // Whole bytes in the middle; single pixels at either end where a byte is shared.
  const uint32_t perByte = depth < 8 ? 8u / static_cast<uint32_t>(depth) : 1u;
  const uint32_t begin = std::min((run.begin + perByte - 1) / perByte * perByte, run.end);
  const uint32_t end = std::max(run.end / perByte * perByte, begin);
  copyPixels(run, run.begin, begin, source, destination, depth);
  uint8_t *out = destination.data() + uint64_t{run.first + begin} * static_cast<uint64_t>(depth) / 8;
  const uint32_t *columns = run.columns + begin;
  const uint32_t n = end - begin;
  if (run.straight) {
    if (n != 0) {
      const uint64_t from = uint64_t{columns[0]} * static_cast<uint64_t>(depth) / 8;
      std::memcpy(out, source.data() + from, size_t{n} * static_cast<size_t>(depth) / 8);
    }
  } else if (depth == 1) {
    gatherBits(columns, n, source.data(), out);
  } else if (depth == 4) {
    gatherNibbles(columns, n, source.data(), out);
  } else if (depth == 8) {
    gatherBytes(columns, n, source.data(), out);
  } else if (depth == 24) {
    gatherTriples(columns, n, source, out);
  } else {
    gatherWords(columns, n, source.data(), out);
  }
  copyPixels(run, end, run.end, source, destination, depth);
}

}  // namespace color
