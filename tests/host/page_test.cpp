// SPDX-License-Identifier: MIT
#include "prepare/page.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "host/pictures.h"
#include "prepare/taps.h"
#include "support/random.h"

using host_test::prepared;
using host_test::Prepared;
using host_test::request;
using host_test::TestPicture;
using prepare::Page;

namespace {

void draw(Page &page, uint32_t x0, uint32_t y0, uint32_t x1, uint32_t y1) {
  for (uint32_t y = y0; y < y1; ++y) {
    for (uint32_t x = x0; x < x1; ++x) page.row(y)[x / 64] |= uint64_t{1} << (63 - x % 64);
  }
}

// The row in which all of these columns are ink; -1 when there is none.
int wholeRow(const Page &page, uint32_t from, uint32_t to) {
  for (uint32_t y = 0; y < page.height; ++y) {
    bool whole = true;
    for (uint32_t x = from; x < to && whole; ++x) whole = page.ink(x, y);
    if (whole) return static_cast<int>(y);
  }
  return -1;
}

// Its letters are rows of the picture: # is ink.
Page pageOf(const std::vector<std::string> &rows) {
  Page page(static_cast<uint32_t>(rows[0].size()), static_cast<uint32_t>(rows.size()));
  for (uint32_t y = 0; y < page.height; ++y) {
    for (uint32_t x = 0; x < page.width; ++x) {
      if (rows[y][x] == '#') draw(page, x, y, x + 1, y + 1);
    }
  }
  return page;
}

std::vector<std::string> textOf(const Page &page) {
  std::vector<std::string> rows(page.height);
  for (uint32_t y = 0; y < page.height; ++y) {
    for (uint32_t x = 0; x < page.width; ++x) rows[y] += page.ink(x, y) ? '#' : '.';
  }
  return rows;
}

}  // namespace

// At a half the pixels -1.5, -0.5, 0.5 and 1.5 of the result away from the centre by half a pixel each: the
// cubic at 0.25, 0.75, 1.25 and 1.75 is 0.8671875, 0.2265625, -0.0703125, -0.0234375, and twice these add
// up to 2.
TEST(HostTaps, TheCubicAtAHalf) {
  const std::vector<prepare::Taps> taps = prepare::cubicTaps(16, 8);
  ASSERT_EQ(taps.size(), 8u);
  EXPECT_EQ(taps[3].first, 3u);
  EXPECT_EQ(taps[3].weights, (std::vector<int>{-192, -576, 1856, 7104, 7104, 1856, -576, -192}));
}

TEST(HostTaps, AddUpToOneAndStayInside) {
  for (uint32_t from : {1u, 2u, 3u, 7u, 50u, 333u}) {
    for (uint32_t to : {1u, 2u, 5u, 49u, 200u}) {
      for (const auto &all : {prepare::cubicTaps(from, to), prepare::areaTaps(from, to)}) {
        ASSERT_EQ(all.size(), to);
        for (const prepare::Taps &taps : all) {
          int sum = 0;
          for (int w : taps.weights) sum += w;
          ASSERT_EQ(sum, prepare::kOne);
          ASSERT_LE(taps.first + taps.weights.size(), from);
        }
      }
    }
  }
}

TEST(HostPage, TurnsOverPixelByPixel) {
  support::Random random(4);
  for (const auto &[width, height] : {std::pair{1u, 1u}, {64u, 64u}, {65u, 3u}, {7u, 200u}, {130u, 129u}}) {
    Page page(width, height);
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) {
        if (random.chance(40)) draw(page, x, y, x + 1, y + 1);
      }
    }
    const Page turned = prepare::transposed(page);
    ASSERT_EQ(turned.width, height);
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) ASSERT_EQ(turned.ink(y, x), page.ink(x, y));
    }
    EXPECT_EQ(prepare::transposed(turned).bits, page.bits);
  }
}

TEST(HostPage, BlocksKeepTheirPlace) {
  const Page page = pageOf(
      {"####....", "####....", "####....", "####....", "......##", "......##", "........", "........"});
  EXPECT_EQ(textOf(prepare::shrink(page, 4, 4)),
            (std::vector<std::string>{"##..", "##..", "...#", "...."}));
  EXPECT_EQ(textOf(prepare::shrink(page, 8, 4)),
            (std::vector<std::string>{"####....", "####....", "......##", "........"}));
}

// Rules of one and two pixels, at every place and many sizes, whole and alone.
TEST(HostPage, ThinRulesStayWholeLines) {
  constexpr uint32_t kSide = 120;
  for (uint32_t thick : {1u, 2u}) {
    for (uint32_t size : {110u, 90u, 77u, 60u, 50u, 40u, 33u, 20u}) {
      for (uint32_t at = 0; at + thick <= kSide; ++at) {
        Page across(kSide, kSide);
        draw(across, 10, at, kSide - 10, at + thick);
        const double ratio = double{kSide} / size;
        const auto from = static_cast<uint32_t>(std::lround(10 / ratio));
        const auto to = static_cast<uint32_t>(std::lround((kSide - 10) / ratio));
        const Page shrunk = prepare::shrink(across, size, size);
        const int y = wholeRow(shrunk, from + 1, to - 1);  // the ends may lie on an edge
        ASSERT_GE(y, 0) << thick << " at " << at << " to " << size;
        ASSERT_NEAR(y + 0.5, (at + thick / 2.0) / ratio, 1.0) << thick << " at " << at << " to " << size;
        uint32_t rows = 0;
        for (uint32_t line = 0; line < size; ++line) rows += shrunk.ink(size / 2, line) ? 1u : 0u;
        ASSERT_LE(rows, 2u);
        // And the same down the page.
        ASSERT_EQ(prepare::transposed(prepare::shrink(prepare::transposed(across), size, size)).bits,
                  shrunk.bits);
      }
    }
  }
}

// A rule of a scan climbs a pixel now and then: its steps stay connected.
TEST(HostPage, ARuleThatClimbsHasNoGaps) {
  for (uint32_t step : {24u, 40u, 100u}) {
    Page page(960, 60);
    for (uint32_t x = 0; x < 960; ++x) draw(page, x, 5 + x / step, x + 1, 6 + x / step);
    for (uint32_t divisor : {2u, 3u, 4u}) {
      const Page shrunk = prepare::shrink(page, 960 / divisor, 60 / divisor);
      int before = -1;
      for (uint32_t x = 0; x < shrunk.width; ++x) {
        int y = 0;
        while (y < static_cast<int>(shrunk.height) && !shrunk.ink(x, static_cast<uint32_t>(y))) ++y;
        ASSERT_LT(y, static_cast<int>(shrunk.height))
            << "a gap at " << x << ", " << step << ", " << divisor;
        ASSERT_TRUE(before < 0 || std::abs(y - before) <= 1);
        before = y;
      }
    }
  }
}

// Lines closer than the result can show do not become a black area.
TEST(HostPage, AHatchedAreaStaysOne) {
  Page page(200, 200);
  for (uint32_t y = 0; y < 200; y += 5) draw(page, 0, y, 200, y + 1);
  const Page shrunk = prepare::shrink(page, 40, 40);
  uint32_t ink = 0;
  for (uint32_t y = 0; y < 40; ++y) ink += shrunk.ink(20, y) ? 1u : 0u;
  EXPECT_GE(ink, 10u);
  EXPECT_LE(ink, 20u);
}

// A quarter of a fifth of the page is white: that is the ink of a black page.
TEST(HostPage, WhiteOnBlackIsTreatedAsBlackOnWhite) {
  TestPicture page(96, 64, 1), negative(96, 64, 1);
  support::Random random(7);
  for (uint32_t y = 0; y < 64; ++y) {
    for (uint32_t x = 0; x < 96; ++x) {
      const bool ink = y == 20 || x == 31 || random.chance(9);
      page.setIndex(x, y, ink ? 0 : 1);
      negative.setIndex(x, y, ink ? 1 : 0);
    }
  }
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
  wanted.inchesX = 48 / 96.0;
  wanted.inchesY = 32 / 96.0;
  const Prepared first = prepared(page, wanted), other = prepared(negative, wanted);
  ASSERT_EQ(first.plan.width, 48u);
  ASSERT_EQ(first.plan.height, 32u);
  uint32_t ink = 0;
  for (uint32_t y = 0; y < 32; ++y) {
    for (uint32_t x = 0; x < 48; ++x) {
      ASSERT_NE(first.index(x, y), other.index(x, y));
      ink += first.index(x, y) == 0;
    }
  }
  EXPECT_GT(ink, 48u + 32u - 2);
  EXPECT_LT(ink, 48u * 32 / 2);
}

// The same page as bits, as greys and as colours, with rows beyond the last added.
TEST(HostPage, APageIsKnownByItsPixels) {
  TestPicture bits(65, 63, 1), greys(65, 63, 8), colors(65, 63, 24);
  support::Random random(8);
  for (uint32_t y = 0; y < 63; ++y) {
    for (uint32_t x = 0; x < 65; ++x) {
      const unsigned bit = random.chance(80) ? 1 : 0;
      const auto level = static_cast<uint8_t>(255 * bit);
      bits.setIndex(x, y, bit);
      greys.setIndex(x, y, level);
      colors.setColor(x, y, {level, level, level});
    }
  }
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_LZW);
  wanted.inchesX = 33 / 96.0;
  wanted.inchesY = 31 / 96.0;
  const Prepared first = prepared(bits, wanted);
  ASSERT_EQ(first.plan.height, 32u);
  EXPECT_EQ(prepared(greys, wanted).pixels, first.pixels);
  EXPECT_EQ(prepared(colors, wanted).pixels, first.pixels);
  EXPECT_FALSE(first.plan.notes & RAXEL_NOTE_DITHERED);
  // A single grey makes it a picture, whose levels are scaled before they are cut.
  greys.setIndex(64, 62, 128);
  EXPECT_TRUE(prepared(greys, wanted).plan.notes & RAXEL_NOTE_DOCUMENT);
  EXPECT_NE(prepared(greys, wanted).pixels, first.pixels);
  // And so does the wish for dots.
  wanted.dither = RAXEL_DITHER_ON;
  EXPECT_TRUE(prepared(bits, wanted).plan.notes & RAXEL_NOTE_DITHERED);
}
