// Dithering from all depths to all depths against the plain form.
#include <gtest/gtest.h>

#include "color/pictures.h"
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
      if (random.chance(5)) table.count += static_cast<uint32_t>(random.between(1, 40000));
      // A count is cut at what the table holds before it is taken as a signed number.
      table.count = std::min(table.count, static_cast<uint32_t>(table.entries.size() / 3));
      const plain::Bytes expected = plain::dither(c.picture, depth, c.source, table);

      const runtime::Block bits = pictures::block(c.picture.bits);
      const runtime::Block sourceTable = pictures::block(c.source);
      const runtime::Block given = pictures::block(table);
      const runtime::Block result(rlDitherGivenCT(bits.handle(), c.picture.width, c.picture.height,
                                                  static_cast<int16_t>(sourceDepth),
                                                  static_cast<int16_t>(depth), sourceTable.handle(),
                                                  given.handle(), static_cast<uint16_t>(table.count)));
      ASSERT_EQ(pictures::bytesOf(result.handle()), expected) << nameOf(i, c, depth);
      ASSERT_EQ(pictures::bytesOf(bits.handle()), c.picture.bits) << "the source is never changed";
    }
  }
}

// To tables that the library chooses; the expected table is put together from the median cut of the
// widened picture.
plain::Table chosenTable(const Case &c, int depth) {
  if (depth == 1) {
    return pictures::table({0,   0,   0,   255, 255, 255, 64,  64,  64,  128, 128, 128,
                            160, 160, 160, 192, 192, 192, 208, 208, 208, 224, 224, 224});
  }
  const runtime::Block wide = pictures::block(plain::convert(c.picture, 24, c.source, {}));
  const uint32_t entries = 1u << depth;
  auto count = static_cast<uint16_t>(entries - 8);
  const runtime::Block reduced(
      rlReduceColorTable(wide.handle(), c.picture.width, static_cast<int16_t>(c.picture.height), &count));
  plain::Bytes out = pictures::bytesOf(reduced.handle());
  out.resize(size_t{3} * count);
  const plain::Bytes fixed{255, 255, 255, 255, 255, 0, 255, 0, 255, 0, 255, 255,
                           255, 0,   0,   0,   255, 0, 0,   0, 255, 0, 0,   0};
  out.insert(out.end(), fixed.begin(), fixed.end());
  out.resize(size_t{3} * entries, 0);
  return pictures::table(out);
}

void compareChosen(int depth, size_t n) {
  for (int sourceDepth : kSourceDepths) {
    support::Random random(static_cast<uint64_t>(9000 + 100 * sourceDepth + depth));
    for (size_t i = 0; i < n; ++i) {
      const Case c = randomCase(random, sourceDepth);
      const plain::Table table = chosenTable(c, depth);
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
