// SPDX-License-Identifier: MIT
// The remembered search answers as the plain one does, for every kind of table.
#include "color/nearest/nearest_search.h"

#include <gtest/gtest.h>

#include "color/pictures.h"
#include "support/cases.h"

namespace {

using plain::Bytes;

constexpr uint64_t kMany = 1 << 20;

Bytes found(color::NearestSearch &search, const Bytes &pixels, int pixelBytes) {
  Bytes out(pixels.size() / static_cast<size_t>(pixelBytes));
  color::findNearest(search, pixels.data(), pixelBytes, out.data(), static_cast<uint32_t>(out.size()));
  return out;
}

// `pixels` searches with room for the answers of `room` pixels.
void compare(const Bytes &table, uint16_t count, const Bytes &pixels, uint64_t room) {
  color::NearestSearch search;
  color::startSearch(search, table, count, room);
  const Bytes answers = found(search, pixels, 3);
  for (size_t i = 0; i < answers.size(); ++i) {
    const uint8_t *p = pixels.data() + 3 * i;
    ASSERT_EQ(answers[i], static_cast<uint8_t>(
                              plain::nearestIndex(p[0], p[1], p[2], table, static_cast<int16_t>(count))))
        << int{p[0]} << " " << int{p[1]} << " " << int{p[2]};
  }
  // What is remembered is the same as what was worked out.
  ASSERT_EQ(found(search, pixels, 3), answers);
}

TEST(NearestSearch, AgreesForAnyTable) {
  support::Random random(31);
  for (size_t i = 0; i < support::cases(200); ++i) {
    const auto entries = static_cast<uint32_t>(random.between(0, random.chance(50) ? 256 : 20));
    const plain::Table table = pictures::table(random, entries);
    Bytes pixels(3 * 600);
    for (size_t k = 0; k < pixels.size(); k += 3) {
      pictures::putColor(random, static_cast<int>(random.between(0, 3)), pixels.data() + k);
    }
    compare(table.entries, static_cast<uint16_t>(entries), pixels, kMany);
  }
}

TEST(NearestSearch, AgreesForEveryColorOfSomeCells) {
  support::Random random(32);
  for (size_t i = 0; i < support::cases(12); ++i) {
    const plain::Table table = pictures::table(random, static_cast<uint32_t>(random.between(2, 40)));
    // A cube of 20 on each side, next to the diagonal in every other case.
    const int64_t red = random.between(0, 236);
    const int64_t green = i % 2 == 0 ? red : random.between(0, 236);
    const int64_t blue = i % 2 == 0 ? red : random.between(0, 236);
    Bytes pixels;
    for (int64_t r = 0; r < 20; ++r) {
      for (int64_t g = 0; g < 20; ++g) {
        for (int64_t b = 0; b < 20; ++b) {
          pixels.push_back(static_cast<uint8_t>(red + r));
          pixels.push_back(static_cast<uint8_t>(green + g));
          pixels.push_back(static_cast<uint8_t>(blue + b));
        }
      }
    }
    compare(table.entries, static_cast<uint16_t>(table.count), pixels, kMany);
  }
}

// The border of red and blue runs through these cells. The first one's answers are kept, and the second
// one, whose answers are the same, shares them.
TEST(NearestSearch, CellsWithTheSameAnswersShareThem) {
  color::NearestSearch search;
  const Bytes table{200, 0, 0, 0, 0, 200};
  color::startSearch(search, table, 2, kMany);
  const auto unitAt = [&](uint32_t v) {
    found(search, {static_cast<uint8_t>(v), 0, static_cast<uint8_t>(v)}, 3);
    return search.cells[color::addressOf(v, 0, v) / color::kUnitBytes];
  };
  const uint16_t unit = unitAt(100);
  ASSERT_NE(unit, 0);
  for (uint32_t red = 100; red < 104; ++red) {
    for (uint32_t blue = 100; blue < 104; ++blue) {
      const uint32_t place = color::addressOf(red, 2, blue) % color::kUnitBytes;
      EXPECT_EQ(search.units[unit * color::kUnitBytes + place], red < blue ? 1 : 0) << red << " " << blue;
    }
  }
  EXPECT_EQ(unitAt(104), unit);
}

TEST(NearestSearch, EveryGreyFindsTheNearestGreyOrTheLowerOfTwo) {
  Bytes pixels;
  for (int v = 0; v < 256; ++v) pixels.insert(pixels.end(), 3, static_cast<uint8_t>(v));
  // 64 lies between 0 and 128, 192 between 128 and 256; the duplicate of 128 is never found.
  compare({0, 0, 0, 128, 128, 128, 255, 255, 255, 128, 128, 128, 9, 200, 9}, 5, pixels, kMany);
  color::NearestSearch search;
  const Bytes table{255, 255, 255, 1, 1, 1};
  color::startSearch(search, table, 2, kMany);
  // 128 is equally far from both.
  EXPECT_EQ(found(search, {128, 128, 128, 127, 127, 127, 129, 129, 129}, 3), (Bytes{0, 1, 0}));
}

TEST(NearestSearch, TiesFallToTheLowerIndex) {
  color::NearestSearch search;
  const Bytes table{0, 0, 20, 0, 20, 0, 0, 0, 20, 0, 20, 0};
  color::startSearch(search, table, 4, kMany);
  // The plane green = blue is equally far from both, away from the greys.
  Bytes pixels;
  for (int v = 5; v < 256; ++v) {
    pixels.insert(pixels.end(), {0, static_cast<uint8_t>(v), static_cast<uint8_t>(v)});
  }
  EXPECT_EQ(found(search, pixels, 3), Bytes(251, 0));
  EXPECT_EQ(found(search, {0, 31, 30, 0, 30, 31}, 3), (Bytes{1, 0}));
}

TEST(NearestSearch, AnswersWhenItCanRememberNoMore) {
  // There is room for about as many cells as pixels are announced: 300 here, of thousands met.
  support::Random random(33);
  for (size_t i = 0; i < support::cases(6); ++i) {
    const plain::Table table = pictures::table(random, 256);
    compare(table.entries, 256, random.bytes(3 * 3000), 300);
  }
}

TEST(NearestSearch, AnswersForFewPixelsAndForManyEntries) {
  support::Random random(34);
  const plain::Table table = pictures::table(random, 700);
  compare(table.entries, 700, random.bytes(3 * 200), kMany);
  compare(table.entries, 200, random.bytes(3 * 200), 10);
}

TEST(NearestSearch, CountsAreSigned16BitNumbersCutAtTheTable) {
  const Bytes table{250, 0, 0, 0, 250, 0};
  const Bytes green{0, 255, 0};
  for (uint64_t room : {uint64_t{1}, kMany}) {
    for (uint16_t count : {uint16_t{2}, uint16_t{3}, uint16_t{32767}}) {
      color::NearestSearch search;
      color::startSearch(search, table, count, room);
      EXPECT_EQ(found(search, green, 3), Bytes{1}) << count;
    }
    for (uint16_t count : {uint16_t{0}, uint16_t{1}, uint16_t{32768}, uint16_t{65535}}) {
      color::NearestSearch search;
      color::startSearch(search, table, count, room);
      EXPECT_EQ(found(search, green, 3), Bytes{0}) << count;
    }
  }
}

TEST(NearestSearch, PixelsOfFourBytesAreReadByTheirFirstThree) {
  color::NearestSearch search;
  const Bytes table{250, 0, 0, 0, 250, 0};
  color::startSearch(search, table, 2, kMany);
  EXPECT_EQ(found(search, {0, 255, 0, 77, 255, 0, 0, 78}, 4), (Bytes{1, 0}));
}

}  // namespace
