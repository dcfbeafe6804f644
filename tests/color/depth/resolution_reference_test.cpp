// SPDX-License-Identifier: MIT
// Changes of resolution between all depths against the plain form.
#include <gtest/gtest.h>

#include "color/pictures.h"
#include "color/reference/plain_resolution.h"
#include "support/cases.h"

namespace {

using pictures::kDepths;

void compare(const plain::Picture &picture, int depth, const plain::Table &source) {
  const plain::Changed expected = plain::changeResolution(picture, depth, source);

  const runtime::Block bits = pictures::block(picture.bits);
  const runtime::Block old = pictures::block(source);
  Handle table = old.handle();
  const runtime::Block out(rlChangeColorResolution(bits.handle(), picture.width, picture.height,
                                                   static_cast<int16_t>(picture.depth),
                                                   static_cast<int16_t>(depth), &table));
  const runtime::Block owned(table != old.handle() ? table : 0);
  ASSERT_EQ(static_cast<bool>(out), expected.done);
  ASSERT_EQ(pictures::bytesOf(out.handle()), expected.bits);
  ASSERT_EQ(static_cast<bool>(owned), expected.table.given);
  ASSERT_EQ(pictures::bytesOf(owned.handle()), expected.table.entries);
  ASSERT_EQ(pictures::bytesOf(bits.handle()), picture.bits) << "the source is never changed";
  ASSERT_EQ(pictures::bytesOf(old.handle()), source.entries) << "nor its table";
  // Where nothing was done the caller's handle is still there; else it has become the new one, or 0.
  ASSERT_EQ(table, expected.done ? owned.handle() : old.handle());
}

void comparePairs(int sourceDepth, size_t n) {
  for (const int depth : kDepths) {
    support::Random random(static_cast<uint64_t>(11000 + 100 * sourceDepth + depth));
    for (size_t i = 0; i < n; ++i) {
      plain::Picture picture =
          pictures::picture(random, pictures::side(random), pictures::side(random), sourceDepth);
      if (random.chance(5)) picture.bits.resize(picture.bits.size() / 2);
      plain::Table source;
      if (random.chance(sourceDepth <= 8 ? 90 : 20)) {
        const auto entries = static_cast<uint32_t>(1) << std::min(sourceDepth, 8);
        source = pictures::table(random, random.chance(80) ? entries : entries / 2);
      }
      compare(picture, depth, source);
      ASSERT_FALSE(testing::Test::HasFatalFailure())
          << "case " << i << ", " << sourceDepth << " to " << depth << " bits, " << picture.width << " x "
          << picture.height;
    }
  }
}

TEST(ResolutionReference, AgreesFrom1Bit) {
  comparePairs(1, support::cases(150));
}

TEST(ResolutionReference, AgreesFrom4Bits) {
  comparePairs(4, support::cases(150));
}

TEST(ResolutionReference, AgreesFrom8Bits) {
  comparePairs(8, support::cases(150));
}

TEST(ResolutionReference, AgreesFrom24Bits) {
  comparePairs(24, support::cases(150));
}

TEST(ResolutionReference, AgreesFrom32Bits) {
  comparePairs(32, support::cases(150));
}

TEST(ResolutionReference, AgreesWhereDepthsCannotBeReadOrWritten) {
  // Between 8 and 24 bits the source's table is what the new one is chosen from; below 8 bits only 1 and
  // 4 can be reached.
  support::Random random(12001);
  for (size_t i = 0; i < support::cases(4); ++i) {
    for (const int sourceDepth : {2, 7, 9, 12, 16, 31, 33}) {
      for (const int depth : {1, 2, 3, 4, 7, 8, 9, 15, 16, 23, 24, 32}) {
        const plain::Picture picture = pictures::picture(random, 9, 5, sourceDepth);
        const plain::Table source =
            random.chance(80) ? pictures::table(random, static_cast<uint32_t>(random.between(0, 600)))
                              : plain::Table{};
        compare(picture, depth, source);
        ASSERT_FALSE(testing::Test::HasFatalFailure()) << sourceDepth << " to " << depth;
      }
    }
    for (const int depth : {2, 7, 9, 15, 16, 23}) {
      compare(pictures::picture(random, 9, 5, 24), depth, {});
      ASSERT_FALSE(testing::Test::HasFatalFailure()) << "24 to " << depth;
    }
  }
}

TEST(ResolutionReference, AgreesFrom32768RowsOn) {
  // Such a picture has no colours for the table, and 65,536 rows and more have those of the rows past them.
  support::Random random(12002);
  for (const uint32_t height : {32767u, 32768u, 65535u, 65537u}) {
    for (const int depth : {4, 8}) {
      compare(pictures::picture(random, 1, height, 24), depth, {});
      ASSERT_FALSE(testing::Test::HasFatalFailure()) << height << " rows to " << depth << " bits";
    }
  }
}

}  // namespace
