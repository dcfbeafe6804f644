// SPDX-License-Identifier: MIT
// Pixels, searches, maps, tables, scaling, flipping and four-byte pictures beside the plain forms, on
// seeded random pictures of every kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "color/pictures.h"
#include "color/reference/pixels.h"
#include "color/reference/reduce.h"
#include "color/reference/scale.h"
#include "raxel/color.h"
#include "support/cases.h"

namespace {

using pictures::kDepths;
using reference::Bytes;

int16_t anyDepth(support::Random &random) {
  return kDepths[random.between(0, 4)];
}

uint32_t tableSize(support::Random &random) {
  return static_cast<uint32_t>(random.between(1, random.chance(50) ? 8 : 256));
}

TEST(Reference, SinglePixelsAgree) {
  support::Random random(101);
  for (size_t n = 0; n < support::cases(4000); ++n) {
    SCOPED_TRACE(n);
    const int16_t depth = anyDepth(random);
    const plain::Picture picture =
        pictures::picture(random, pictures::side(random), pictures::side(random), depth);
    const uint32_t line = reference::lineBytes(picture.width, depth);
    ASSERT_EQ(rlBytesPerLine(picture.width, depth), static_cast<int32_t>(line));
    const plain::Table table = pictures::table(random, tableSize(random));
    const auto count = static_cast<uint16_t>(table.count);
    reference::Words map(256);
    for (uint32_t &word : map) word = static_cast<uint32_t>(random.between(0, count + 2));
    const uint32_t *maps[] = {nullptr, map.data()};
    const uint8_t *tables[] = {nullptr, table.entries.data()};
    Bytes ours = picture.bits;
    Bytes theirs = picture.bits;
    for (int i = 0; i < 10; ++i) {
      const auto x = static_cast<uint32_t>(random.between(0, picture.width - 1));
      const auto y = static_cast<uint32_t>(random.between(0, picture.height - 1));
      ASSERT_EQ(rlGetPixel(ours.data(), static_cast<int32_t>(line), x, y, depth),
                reference::getPixel(theirs.data(), line, x, y, depth));
      const uint32_t *withMap = maps[random.between(0, 1)];
      const uint8_t *withTable = tables[random.between(0, 1)];
      const uint32_t value = withMap != nullptr ? random.byte() : static_cast<uint32_t>(random.next());
      rlSetPixel(ours.data(), static_cast<int32_t>(line), x, y, depth, value, withMap, withTable, count);
      reference::setPixel(theirs.data(), line, x, y, depth, value, withMap, withTable, count);
      ASSERT_EQ(ours, theirs);
    }
  }
}

TEST(Reference, SearchesAndMapsAgree) {
  support::Random random(102);
  for (size_t n = 0; n < support::cases(4000); ++n) {
    SCOPED_TRACE(n);
    const plain::Table table = pictures::table(random, tableSize(random));
    const auto count = static_cast<int16_t>(table.count);
    for (int i = 0; i < 8; ++i) {
      uint8_t rgb[3];
      pictures::putColor(random, static_cast<int>(random.between(0, 3)), rgb);
      ASSERT_EQ(rlNearestRGBIndex(rgb[0], rgb[1], rgb[2], table.entries.data(), count),
                reference::nearest(rgb[0], rgb[1], rgb[2], table.entries.data(), count));
    }
    const auto sourceDepth = static_cast<int16_t>(random.between(0, 9));
    const plain::Table source = pictures::table(random, 256);
    const uint8_t *sources[] = {nullptr, source.entries.data(), source.entries.data()};
    const uint8_t *tables[] = {nullptr, table.entries.data()};
    const uint8_t *from = sources[random.between(0, 2)];
    const uint8_t *to = tables[random.between(0, 1)];
    const int16_t depth = anyDepth(random);
    const runtime::Block map(rlBuildColormap(from, sourceDepth, to, depth, static_cast<uint16_t>(count)));
    const reference::Words expected = reference::colormap(from, sourceDepth, to, depth, count);
    ASSERT_EQ(map.bytes().size(), expected.size() * 4);
    if (expected.empty()) continue;
    ASSERT_EQ(std::memcmp(map.data(), expected.data(), expected.size() * 4), 0);
  }
}

TEST(Reference, HeapSortsAgree) {
  support::Random random(103);
  for (size_t n = 0; n < support::cases(2000); ++n) {
    SCOPED_TRACE(n);
    const auto length = static_cast<uint16_t>(random.between(1, random.chance(20) ? 300 : 12));
    const auto axis = static_cast<int16_t>(random.between(0, 2));
    const int64_t cells = random.chance(50) ? 32767 : 40;
    std::vector<ColorFreq> ours;
    std::vector<reference::Color> theirs;
    for (int i = 0; i <= length; ++i) {
      const auto cell = static_cast<uint16_t>(random.between(0, cells));
      ours.push_back({cell, static_cast<uint16_t>(i)});
      theirs.push_back({cell, i});
    }
    HeapSort(ours.data(), axis, length);
    reference::sortColors(theirs.data(), axis, length);
    for (size_t i = 0; i < ours.size(); ++i) {
      ASSERT_EQ((reference::Color{ours[i].color15, ours[i].count}), theirs[i]) << i;
    }
  }
}

TEST(Reference, ReducedTablesAgree) {
  support::Random random(104);
  for (size_t n = 0; n < support::cases(4000); ++n) {
    SCOPED_TRACE(n);
    const plain::Picture picture =
        pictures::picture(random, pictures::side(random), pictures::side(random), 24);
    const auto wanted = static_cast<uint16_t>(random.between(0, random.chance(50) ? 20 : 256));
    const runtime::Block bits = pictures::block(picture.bits);
    uint16_t count = wanted;
    const runtime::Block table(
        rlReduceColorTable(bits.handle(), picture.width, static_cast<int16_t>(picture.height), &count));
    const reference::Reduced expected =
        reference::reduce(picture.bits, picture.width, picture.height, wanted);
    ASSERT_EQ(count, expected.count);
    ASSERT_EQ(pictures::bytesOf(table.handle()), expected.table);
  }
}

TEST(Reference, ReducedTablesOfLargePicturesAgree) {
  // Large enough to be counted in tables of their own, and for counters to fill up.
  support::Random random(110);
  for (const uint32_t width : {401u, 402u, 403u, 404u}) {
    plain::Picture picture = pictures::picture(random, width, 380, 24);
    if (width == 404) std::fill(picture.bits.begin(), picture.bits.begin() + 300 * 1212, uint8_t{0x77});
    const runtime::Block bits = pictures::block(picture.bits);
    for (const int wanted : {5, 256, 32768, 65535}) {
      auto count = static_cast<uint16_t>(wanted);
      const runtime::Block table(rlReduceColorTable(bits.handle(), width, 380, &count));
      const reference::Reduced expected = reference::reduce(picture.bits, width, 380, wanted);
      ASSERT_EQ(count, expected.count) << width;
      ASSERT_EQ(pictures::bytesOf(table.handle()), expected.table) << width << " to " << wanted;
    }
  }
}

TEST(Reference, ScaledPicturesAgree) {
  support::Random random(105);
  for (size_t n = 0; n < support::cases(6000); ++n) {
    SCOPED_TRACE(n);
    const int16_t depth = anyDepth(random);
    const plain::Picture picture =
        pictures::picture(random, pictures::side(random), pictures::side(random), depth);
    const uint32_t width = random.chance(20) ? picture.width : static_cast<uint32_t>(random.between(1, 70));
    const uint32_t height =
        random.chance(20) ? picture.height : static_cast<uint32_t>(random.between(1, 70));
    const runtime::Block bits = pictures::block(picture.bits);
    const Bytes expected =
        reference::scale(picture.bits, depth, picture.width, picture.height, width, height);
    const runtime::Block scaled(
        rlStretchBitmap(bits.handle(), depth, picture.width, picture.height, width, height));
    ASSERT_EQ(pictures::bytesOf(scaled.handle()), expected)
        << depth << " bits, " << picture.width << "x" << picture.height << " to " << width << "x" << height;
  }
}

TEST(Reference, ScaledWidePicturesAgree) {
  // Wider than the runs in which columns are planned, by factors near 1, near 2 and far from both.
  support::Random random(111);
  for (size_t n = 0; n < support::cases(300); ++n) {
    const int16_t depth = anyDepth(random);
    const auto from = static_cast<uint32_t>(random.between(1, 7000));
    const uint32_t percent[] = {95, 105, 48, 52, static_cast<uint32_t>(random.between(1, 400))};
    const uint32_t to = std::min(from * percent[random.between(0, 4)] / 100 + 1, 7000u);
    const Bytes bits = random.bytes(size_t{reference::lineBytes(from, depth)} * 2);
    const runtime::Block block = pictures::block(bits);
    const runtime::Block scaled(rlShrinkBitmap(block.handle(), depth, from, 2, to, 3));
    ASSERT_TRUE(pictures::bytesOf(scaled.handle()) == reference::scale(bits, depth, from, 2, to, 3))
        << depth << " bits, " << from << " to " << to;
  }
}

TEST(Reference, ScaledRowsAgreeInEitherDirection) {
  support::Random random(106);
  for (size_t n = 0; n < support::cases(3000); ++n) {
    SCOPED_TRACE(n);
    const int16_t depth = anyDepth(random);
    // Each row worker also takes sizes that the other is meant for.
    const plain::Picture picture = pictures::picture(random, pictures::side(random), 1, depth);
    const auto width = static_cast<uint32_t>(random.between(1, 70));
    const Bytes before = random.bytes(reference::lineBytes(width, depth));
    Bytes ours = before;
    Bytes theirs = before;
    ShrinkX(picture.bits.data(), ours.data(), depth, picture.width, 1, width);
    reference::shrinkRow(picture.bits.data(), theirs.data(), depth, picture.width, width);
    ASSERT_EQ(ours, theirs) << depth << " bits, " << picture.width << " to " << width;
    ours = before;
    theirs = before;
    StretchX(picture.bits.data(), ours.data(), depth, picture.width, 1, width);
    reference::stretchRow(picture.bits.data(), theirs.data(), depth, picture.width, width);
    ASSERT_EQ(ours, theirs) << depth << " bits, " << picture.width << " to " << width;
  }
}

TEST(Reference, ScaledPicturesAgreeWhilePlacesArePrinted) {
  support::Random random(107);
  _debug_color_res = 4;
  testing::internal::CaptureStderr();
  for (size_t n = 0; n < support::cases(400); ++n) {
    const int16_t depth = anyDepth(random);
    const auto side = [&random] { return static_cast<uint32_t>(random.between(1, 12)); };
    const plain::Picture picture = pictures::picture(random, side(), side(), depth);
    const uint32_t width = side();
    const uint32_t height = side();
    const runtime::Block bits = pictures::block(picture.bits);
    const runtime::Block scaled(
        rlShrinkBitmap(bits.handle(), depth, picture.width, picture.height, width, height));
    EXPECT_EQ(pictures::bytesOf(scaled.handle()),
              reference::scale(picture.bits, depth, picture.width, picture.height, width, height));
  }
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
  _debug_color_res = 0;
}

TEST(Reference, FlippedPicturesAgree) {
  support::Random random(108);
  for (size_t n = 0; n < support::cases(3000); ++n) {
    SCOPED_TRACE(n);
    const int16_t depth = anyDepth(random);
    const plain::Picture picture =
        pictures::picture(random, pictures::side(random), pictures::side(random), depth);
    const runtime::Block bits = pictures::block(picture.bits);
    const bool leftRight = random.chance(70);
    const bool topBottom = random.chance(50);
    rlFlipBitmap(bits.handle(), depth, picture.width, picture.height, leftRight ? 1 : 0, topBottom ? 2 : 0);
    // Past its size a block holds 3 to 10 zero bytes; sizes are multiples of 4, so 4 or 8.
    Bytes expected = picture.bits;
    expected.resize(expected.size() + 4);
    reference::flip(expected, depth, picture.width, picture.height, leftRight, topBottom);
    expected.resize(picture.bits.size());
    ASSERT_EQ(pictures::bytesOf(bits.handle()), expected)
        << depth << " bits, " << picture.width << "x" << picture.height;
  }
}

TEST(Reference, FourBytePicturesAgree) {
  support::Random random(109);
  for (size_t n = 0; n < support::cases(2000); ++n) {
    SCOPED_TRACE(n);
    const plain::Picture picture =
        pictures::picture(random, pictures::side(random), pictures::side(random), 32);
    const auto check = [&](auto ours, auto theirs) {
      const runtime::Block bits = pictures::block(picture.bits);
      ours(bits.handle(), picture.width, picture.height);
      Bytes expected = picture.bits;
      theirs(expected);
      ASSERT_EQ(pictures::bytesOf(bits.handle()), expected);
    };
    check(rlRGB4toCMYK, reference::rgbToCmyk);
    check(rlCMYKtoRGB, reference::cmykToRgb);
    check(rlALPHAtoRGB, reference::dropAlpha);
  }
}

}  // namespace
