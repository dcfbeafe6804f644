// SPDX-License-Identifier: MIT
// Dithering from all depths to all depths against the plain form.
#include <gtest/gtest.h>

#include "color/pictures.h"
#include "color/reference/plain_resolution.h"
#include "support/cases.h"

namespace {

constexpr int kSourceDepths[] = {1, 4, 8, 24, 32};

struct Case {
  plain::Picture picture;
  plain::Table source;
};

Case randomCase(support::Random &random, int sourceDepth) {
  Case out{pictures::picture(random, pictures::side(random), pictures::side(random), sourceDepth), {}};
  if (random.chance(5)) out.picture.bits.resize(out.picture.bits.size() / 2);
  if (sourceDepth <= 8 && random.chance(95)) out.source = pictures::table(random, 1u << sourceDepth);
  return out;
}

std::string nameOf(size_t i, const Case &c, int depth) {
  return "case " + std::to_string(i) + ", " + std::to_string(c.picture.depth) + " to " +
         std::to_string(depth) + " bits, " + std::to_string(c.picture.width) + " x " +
         std::to_string(c.picture.height);
}

// To tables that the caller gives.
void compareGiven(int depth, size_t n) {
  for (int sourceDepth : kSourceDepths) {
    support::Random random(static_cast<uint64_t>(7000 + 100 * sourceDepth + depth));
    for (size_t i = 0; i < n; ++i) {
      const Case c = randomCase(random, sourceDepth);
      plain::Table table;
      if (random.chance(95)) {
        table = pictures::table(random, static_cast<uint32_t>(random.between(0, depth == 8 ? 256 : 16)));
      }
      // A count is cut at what the table holds before it is taken as a signed number.
      uint32_t count = table.count;
      if (random.chance(5)) count += static_cast<uint32_t>(random.between(1, 40000));
      const plain::Bytes expected = plain::dither(c.picture, depth, c.source, table);

      const runtime::Block bits = pictures::block(c.picture.bits);
      const runtime::Block sourceTable = pictures::block(c.source);
      const runtime::Block given = pictures::block(table);
      const runtime::Block result(rlDitherGivenCT(
          bits.handle(), c.picture.width, c.picture.height, static_cast<int16_t>(sourceDepth),
          static_cast<int16_t>(depth), sourceTable.handle(), given.handle(), static_cast<uint16_t>(count)));
      ASSERT_EQ(pictures::bytesOf(result.handle()), expected) << nameOf(i, c, depth);
      ASSERT_EQ(pictures::bytesOf(bits.handle()), c.picture.bits) << "the source is never changed";
    }
  }
}

// To tables that the library chooses.
void compareChosen(int depth, size_t n) {
  for (int sourceDepth : kSourceDepths) {
    support::Random random(static_cast<uint64_t>(9000 + 100 * sourceDepth + depth));
    for (size_t i = 0; i < n; ++i) {
      const Case c = randomCase(random, sourceDepth);
      const plain::Table table = plain::chosenTable(c.picture, depth, c.source);
      const plain::Bytes expected = plain::dither(c.picture, depth, c.source, table);

      const runtime::Block bits = pictures::block(c.picture.bits);
      const runtime::Block sourceTable = pictures::block(c.source);
      Handle chosen = 0;
      const runtime::Block result(rlDitherBitmap(
          bits.handle(), c.picture.width, c.picture.height, static_cast<int16_t>(sourceDepth),
          static_cast<int16_t>(depth), sourceTable.handle(), &chosen));
      const runtime::Block owned(chosen);
      ASSERT_EQ(pictures::bytesOf(chosen), table.entries) << nameOf(i, c, depth);
      ASSERT_EQ(pictures::bytesOf(result.handle()), expected) << nameOf(i, c, depth);

      Handle again = 0;
      uint16_t count = 0;
      rlDitherGetCT(bits.handle(), c.picture.width, c.picture.height, static_cast<int16_t>(sourceDepth),
                    static_cast<int16_t>(depth), sourceTable.handle(), &again, &count);
      const runtime::Block ownedAgain(again);
      ASSERT_EQ(pictures::bytesOf(again), table.entries) << nameOf(i, c, depth);
      ASSERT_EQ(count, table.count);
    }
  }
}

TEST(DitherReference, AgreesAt1BitWithGivenTables) {
  compareGiven(1, support::cases(700));
}

TEST(DitherReference, AgreesAt4BitsWithGivenTables) {
  compareGiven(4, support::cases(700));
}

TEST(DitherReference, AgreesAt8BitsWithGivenTables) {
  compareGiven(8, support::cases(300));
}

TEST(DitherReference, AgreesAt1BitWithItsOwnTable) {
  compareChosen(1, support::cases(300));
}

TEST(DitherReference, AgreesAt4BitsWithItsOwnTable) {
  compareChosen(4, support::cases(200));
}

TEST(DitherReference, AgreesAt8BitsWithItsOwnTable) {
  compareChosen(8, support::cases(60));
}

}  // namespace
