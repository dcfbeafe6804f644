#include "color/gather.h"

#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "color/packed_pixels.h"
#include "runtime/unaligned.h"

namespace color {

namespace {

// Pixels of less than a byte are gathered as bytes when the run's source columns fit in this many: up
// to about every second column left out.
constexpr uint32_t kUnpacked = 2 * ColumnRun::kLongest + 64;

uint32_t pixelsPerByte(int16_t depth) {
  return depth < 8 ? 8u / static_cast<uint32_t>(depth) : 1u;
}

// The columns that fill whole bytes by themselves, counted from the run's first.
struct WholeBytes {
  uint32_t begin;
  uint32_t end;
};

WholeBytes wholeBytes(const ColumnRun &run) {
  const uint32_t perByte = pixelsPerByte(run.depth);
  const uint32_t begin = std::min((run.begin + perByte - 1) / perByte * perByte, run.end);
  return {begin, std::max(run.end / perByte * perByte, begin)};
}

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

// Pixels of whole bytes: what the shuffle leaves over, one by one.
void gatherWhole(const ColumnRun &run, WholeBytes whole, std::span<const uint8_t> source, uint8_t *out) {
  const bool shuffled = run.shuffle.reach <= source.size();
  const auto done = static_cast<uint32_t>(shuffled ? run.shuffle.columns : 0);
  if (done != 0) shuffleRow(run.shuffle, source.data(), out);
  const uint32_t *columns = run.columns + whole.begin + done;
  const uint32_t n = whole.end - whole.begin - done;
  if (run.depth <= 8) {
    gatherBytes(columns, n, source.data(), out + done);
  } else if (run.depth == 24) {
    gatherTriples(columns, n, source, out + size_t{done} * 3);
  } else {
    gatherWords(columns, n, source.data(), out + size_t{done} * 4);
  }
}

// Puts back what a byte held past the first n pixels of a row, of which it now holds the last few.
void restorePast(uint8_t &last, uint8_t kept, uint64_t n, int16_t depth) {
  last |= static_cast<uint8_t>(kept & (0xFFu >> (n * static_cast<uint64_t>(depth) % 8)));
}

// Pixels of less than a byte, each in a byte of its own on the way, up to the run's last column.
void gatherUnpacked(const ColumnRun &run, WholeBytes whole, std::span<const uint8_t> source, uint8_t *out) {
  uint8_t values[kUnpacked + 32];
  uint8_t gathered[ColumnRun::kLongest];
  const uint32_t perByte = pixelsPerByte(run.depth);
  const uint32_t used = (run.columns[run.end - 1] + perByte) / perByte * perByte;
  const uint8_t *bytes = source.data() + run.origin / perByte;
  run.depth == 1 ? unpackBits(bytes, used, values) : unpackNibbles(bytes, used, values);
  std::memset(values + used, 0, 32);  // a shuffle may read this far
  gatherWhole(run, {whole.begin, run.end}, values, gathered);
  const uint32_t n = run.end - whole.begin;
  uint8_t *last = out + n / perByte;
  const uint8_t kept = n % perByte != 0 ? *last : uint8_t{0};
  run.depth == 1 ? packBits(gathered, n, out) : packNibbles(gathered, n, out);
  if (n % perByte != 0) restorePast(*last, kept, n, run.depth);
}

// Pixel by pixel: for columns that share a byte with others, and rows that their block cuts short.
void copyPixels(const ColumnRun &run, uint32_t begin, uint32_t end, std::span<const uint8_t> source,
                std::span<uint8_t> destination) {
  for (uint32_t i = begin; i < end; ++i) {
    const uint32_t value = getPixel(source, run.origin + run.columns[i], run.depth);
    setPixel(destination, run.first + i, 0, run.depth, value, {});
  }
}

}  // namespace

void planRun(ColumnRun &run, Columns how, int16_t depth, uint32_t sourceWidth, uint32_t width,
             uint32_t first) {
  run.depth = depth;
  run.first = first;
  run.end = std::min(ColumnRun::kLongest, width - first);
  run.begin = static_cast<uint32_t>(mapColumns(how, sourceWidth, width, first, {run.columns, run.end}));
  run.origin = 0;
  // Widening counts wide sources differently, so that there equal widths say nothing.
  run.straight = how == Columns::kNarrow && sourceWidth == width;
  if (run.begin >= run.end || run.straight || !isPixelDepth(depth)) return;
  // Pixels of less than a byte count from the byte that holds the first of them, when they are near
  // enough to one another to be unpacked together.
  const uint32_t perByte = pixelsPerByte(depth);
  const uint32_t origin = run.columns[run.begin] / perByte * perByte;
  if (run.columns[run.end - 1] - origin < kUnpacked - 8) {
    run.origin = origin;
    for (uint32_t i = run.begin; i < run.end; ++i) run.columns[i] -= origin;
  }
  const WholeBytes whole = wholeBytes(run);
  planShuffle(run.shuffle, {run.columns + whole.begin, run.end - whole.begin},
              depth < 8 ? 1 : static_cast<uint32_t>(depth) / 8);
}

void gather(const ColumnRun &run, std::span<const uint8_t> source, std::span<uint8_t> destination) {
  if (run.begin >= run.end || !isPixelDepth(run.depth)) return;
  const auto depth = static_cast<uint64_t>(run.depth);
  // Columns rise from left to right: when the last one lies in the row, all do.
  const uint64_t lastBit = (uint64_t{run.origin} + run.columns[run.end - 1] + 1) * depth;
  if ((lastBit + 7) / 8 > source.size()) {
    return copyPixels(run, run.begin, run.end, source, destination);
  }
  const WholeBytes whole = wholeBytes(run);
  copyPixels(run, run.begin, whole.begin, source, destination);
  uint8_t *out = destination.data() + (uint64_t{run.first} + whole.begin) * depth / 8;
  if (run.straight) {
    const uint64_t from = uint64_t{run.columns[whole.begin]} * depth / 8;
    std::memcpy(out, source.data() + from, static_cast<size_t>((whole.end - whole.begin) * depth / 8));
  } else if (run.depth >= 8) {
    gatherWhole(run, whole, source.subspan(size_t{run.origin} * static_cast<size_t>(run.depth) / 8), out);
  } else if (run.columns[run.end - 1] < kUnpacked - 8) {
    return gatherUnpacked(run, whole, source, out);
  } else if (run.depth == 1) {
    gatherBits(run.columns + whole.begin, whole.end - whole.begin, source.data(), out);
  } else {
    gatherNibbles(run.columns + whole.begin, whole.end - whole.begin, source.data(), out);
  }
  copyPixels(run, whole.end, run.end, source, destination);
}

}  // namespace color
