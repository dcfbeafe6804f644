// SPDX-License-Identifier: MIT
// Conversions between all depths against the plain form.
#include <gtest/gtest.h>

#include "color/pictures.h"
#include "support/cases.h"

namespace {

using pictures::kDepths;

// A table for a picture of some depth; now and then none, or one shorter than the depth says.
plain::Table tableFor(support::Random &random, int depth) {
  if (depth > 8 || random.chance(10)) return {};
  const uint32_t full = 1u << depth;
  return pictures::table(random, random.chance(80) ? full : static_cast<uint32_t>(random.between(0, full)));
}

void compare(int sourceDepth, int depth, size_t n) {
  support::Random random(static_cast<uint64_t>(1000 * sourceDepth + depth));
  for (size_t i = 0; i < n; ++i) {
    plain::Picture picture =
        pictures::picture(random, pictures::side(random), pictures::side(random), sourceDepth);
    if (random.chance(5)) picture.bits.resize(picture.bits.size() / 2);
    const plain::Table source = tableFor(random, sourceDepth);
    plain::Table table;
    if (random.chance(depth < 24 ? 80 : 15)) {
      table = pictures::table(random, static_cast<uint32_t>(random.between(0, depth < 8 ? 20 : 256)));
      if (random.chance(10)) table.count += static_cast<uint32_t>(random.between(1, 40000));
    }
    const plain::Bytes expected = plain::convert(picture, depth, source, table);

    const runtime::Block bits = pictures::block(picture.bits);
    const runtime::Block sourceTable = pictures::block(source);
    const runtime::Block newTable = pictures::block(table);
    const runtime::Block result(
        rlConvertBitmapDepth(bits.handle(), picture.width, picture.height,
                             static_cast<int16_t>(sourceDepth), static_cast<int16_t>(depth),
                             sourceTable.handle(), newTable.handle(), static_cast<uint16_t>(table.count)));
    ASSERT_EQ(pictures::bytesOf(result.handle()), expected)
        << "case " << i << ", " << sourceDepth << " to " << depth << " bits, " << picture.width << " x "
        << picture.height;
    ASSERT_EQ(pictures::bytesOf(bits.handle()), picture.bits) << "the source is never changed";
  }
}

TEST(DepthReference, AgreesFrom1Bit) {
  for (int depth : kDepths) compare(1, depth, support::cases(500));
}

TEST(DepthReference, AgreesFrom4Bits) {
  for (int depth : kDepths) compare(4, depth, support::cases(500));
}

TEST(DepthReference, AgreesFrom8Bits) {
  for (int depth : kDepths) compare(8, depth, support::cases(500));
}

TEST(DepthReference, AgreesFrom24Bits) {
  for (int depth : kDepths) compare(24, depth, support::cases(500));
}

TEST(DepthReference, AgreesFrom32Bits) {
  for (int depth : kDepths) compare(32, depth, support::cases(500));
}

TEST(DepthReference, AgreesWhereDepthsCannotBeReadOrWritten) {
  for (int odd : {2, 3, 5, 6, 7, 9, 16, 31}) {
    compare(odd, 8, support::cases(40));
    compare(odd, 24, support::cases(40));
    compare(odd, 32, support::cases(40));
    compare(8, odd, support::cases(40));
    compare(24, odd, support::cases(40));
  }
}

}  // namespace
