// SPDX-License-Identifier: MIT
// Pictures of every depth converted and dithered to every other: the same bytes on every machine,
// release after release. What the bytes mean is tested elsewhere.
#include <gtest/gtest.h>

#include <string>

#include "color/pictures.h"
#include "support/golden.h"

namespace {

constexpr uint32_t kWidth = 61;
constexpr uint32_t kHeight = 47;

struct Sample {
  runtime::Block bits;
  runtime::Block table;
};

// Broad slopes with noise, and a table of colours and greys.
Sample sample(int depth) {
  support::Random random(500 + static_cast<uint64_t>(depth));
  const uint32_t line = plain::lineBytes(kWidth, depth);
  plain::Bytes bits(size_t{line} * kHeight);
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t i = 0; i < line; ++i) {
      bits[size_t{y} * line + i] =
          static_cast<uint8_t>(3 * i * (1 + i % 3) / 4 + 2 * y + random.byte() % 16);
    }
  }
  plain::Bytes entries = random.bytes(768);
  for (size_t i = 0; i < 768; i += 15) entries[i + 1] = entries[i + 2] = entries[i];
  Sample out{pictures::block(bits), {}};
  if (depth <= 8) out.table = pictures::block(entries);
  return out;
}

std::string nameOf(const char *what, int from, int to) {
  return std::string("color/") + what + "-" + std::to_string(from) + "-to-" + std::to_string(to);
}

TEST(GoldenDepth, EveryPairOfDepthsIsConverted) {
  for (int from : {1, 4, 8, 24, 32}) {
    for (int to : {1, 4, 8, 24, 32}) {
      const Sample in = sample(from);
      const runtime::Block table = pictures::block(support::Random(9).bytes(768));
      const bool searches = to <= 8 && to < from;
      const auto count = static_cast<uint16_t>(searches ? 1u << static_cast<unsigned>(to) : 0u);
      const runtime::Block out(rlConvertBitmapDepth(
          in.bits.handle(), kWidth, kHeight, static_cast<int16_t>(from), static_cast<int16_t>(to),
          in.table.handle(), searches ? table.handle() : 0, count));
      support::golden(nameOf("convert", from, to), out.bytes());
    }
  }
}

TEST(GoldenDepth, EveryDepthIsDithered) {
  for (int from : {1, 4, 8, 24, 32}) {
    for (int to : {1, 4, 8}) {
      const Sample in = sample(from);
      Handle table = 0;
      const runtime::Block out(rlDitherBitmap(in.bits.handle(), kWidth, kHeight, static_cast<int16_t>(from),
                                              static_cast<int16_t>(to), in.table.handle(), &table));
      const runtime::Block owned(table);
      support::golden(nameOf("dither", from, to), out.bytes());
      support::golden(nameOf("dither-table", from, to), owned.bytes());
    }
  }
}

TEST(GoldenDepth, APhotoGetsATableOf256Colors) {
  const Sample in = sample(24);
  Handle table = 0;
  const runtime::Block out(rlChangeColorResolution(in.bits.handle(), kWidth, kHeight, 24, 8, &table));
  const runtime::Block owned(table);
  support::golden("color/change-24-to-8", out.bytes());
  support::golden("color/change-table-24-to-8", owned.bytes());
}

}  // namespace
