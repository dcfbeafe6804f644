// SPDX-License-Identifier: MIT
// Files in colours that are given.
#include <gtest/gtest.h>

#include <array>

#include "host/pictures.h"

using host_test::Color;
using host_test::prepared;
using host_test::Prepared;
using host_test::TestPicture;

namespace {

const std::vector<Color> kBlackWhiteRed{{0, 0, 0}, {255, 255, 255}, {255, 0, 0}};

// Borrows the colours.
RaxelRequest request(int mode, const std::vector<Color> &colors, int dither = RAXEL_DITHER_OFF) {
  RaxelRequest wanted = host_test::request(mode);
  wanted.dither = dither;
  wanted.palette = colors.front().data();
  wanted.paletteColors = static_cast<uint32_t>(colors.size());
  return wanted;
}

std::vector<unsigned> indicesOf(const Prepared &made) {
  std::vector<unsigned> indices;
  for (uint32_t y = 0; y < made.plan.rows; ++y) {
    for (uint32_t x = 0; x < made.plan.width; ++x) indices.push_back(made.index(x, y));
  }
  return indices;
}

void setAll(TestPicture &picture, const std::vector<Color> &colors) {
  for (uint32_t i = 0; i < colors.size(); ++i)
    picture.setColor(i % picture.view.width, i / picture.view.width, colors[i]);
}

}  // namespace

// Squares of the distances: (128, 0, 0) is 128 * 128 from black and 127 * 127 from red; (255, 128, 128) is
// 2 * 127 * 127 from white and 2 * 128 * 128 from red.
TEST(HostPalette, EveryPixelTakesTheNearestEntry) {
  TestPicture picture(4, 2, 24);
  setAll(picture, {{200, 40, 40},
                   {10, 10, 10},
                   {200, 200, 200},
                   {128, 0, 0},
                   {127, 0, 0},
                   {255, 128, 128},
                   {255, 127, 127},
                   {255, 255, 255}});
  for (int mode : {RAXEL_MODE_COLOR16, RAXEL_MODE_COLOR256}) {
    const Prepared made = prepared(picture, request(mode, kBlackWhiteRed));
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    EXPECT_EQ(made.plan.notes, unsigned{RAXEL_NOTE_REDUCED});
    EXPECT_EQ(indicesOf(made), (std::vector<unsigned>{2, 0, 1, 2, 0, 1, 2, 1}));
    std::array<uint8_t, 768> table{0, 0, 0, 255, 255, 255, 255, 0, 0};
    EXPECT_EQ(made.table, table);
  }
}

// The picture's colours appear in another order than they have in the table, which stays as it is. One that
// is there twice is taken from its first place.
TEST(HostPalette, ExactColorsTakeTheirPlacesInTheTable) {
  const std::vector<Color> colors{{9, 9, 9}, {1, 2, 3}, {4, 5, 6}, {1, 2, 3}};
  TestPicture indexed(2, 2, 8), full(2, 2, 24);
  indexed.useTable({{4, 5, 6}, {1, 2, 3}});
  indexed.setIndex(1, 0, 1);
  indexed.setIndex(1, 1, 1);
  setAll(full, {{4, 5, 6}, {1, 2, 3}, {4, 5, 6}, {1, 2, 3}});
  for (const TestPicture *picture : {&indexed, &full}) {
    for (int dither : {RAXEL_DITHER_AUTO, RAXEL_DITHER_ON, RAXEL_DITHER_OFF}) {
      for (int mode : {RAXEL_MODE_COLOR16, RAXEL_MODE_COLOR256}) {
        const Prepared made = prepared(*picture, request(mode, colors, dither));
        ASSERT_EQ(made.code, RAXEL_HOST_OK);
        EXPECT_EQ(made.plan.notes, 0u);
        EXPECT_EQ(indicesOf(made), (std::vector<unsigned>{2, 1, 2, 1}));
        EXPECT_EQ((Color{made.table[9], made.table[10], made.table[11]}), (Color{1, 2, 3}));
      }
    }
  }
}

// Grey 100 in black and white. Of what a pixel loses, all of it goes on: 56, 40, 24 and 8 of 128 ahead,
// below, behind and beyond:
//   100 is black and loses 100; 100 + 44 is white and loses -111; 100 - 49 is black and loses 51;
//   below come 1336, -2416 and 1152: 100 + 10 is black and loses 110; 100 + (-2416 + 110 * 56 + 64) / 128 =
//   129 is white and loses -126; 100 + (1152 - 126 * 56 + 64) / 128 = 54 is black.
TEST(HostPalette, DiffusesToTheTable) {
  TestPicture picture(3, 2, 24);
  setAll(picture, std::vector<Color>(6, Color{100, 100, 100}));
  for (int mode : {RAXEL_MODE_COLOR16, RAXEL_MODE_COLOR256}) {
    const Prepared made = prepared(picture, request(mode, {{0, 0, 0}, {255, 255, 255}}, RAXEL_DITHER_ON));
    ASSERT_EQ(made.code, RAXEL_HOST_OK);
    EXPECT_EQ(made.plan.notes, unsigned{RAXEL_NOTE_REDUCED | RAXEL_NOTE_DITHERED});
    EXPECT_EQ(indicesOf(made), (std::vector<unsigned>{0, 1, 0, 0, 1, 0}));
  }
  // As with colours of the picture's own, 16 are dithered unless told otherwise and 256 are not.
  EXPECT_NE(prepared(picture, request(RAXEL_MODE_COLOR16, kBlackWhiteRed, RAXEL_DITHER_AUTO)).plan.notes &
                RAXEL_NOTE_DITHERED,
            0u);
  EXPECT_EQ(prepared(picture, request(RAXEL_MODE_COLOR256, kBlackWhiteRed, RAXEL_DITHER_AUTO)).plan.notes,
            unsigned{RAXEL_NOTE_REDUCED});
}

// Seen from afar the picture keeps its colour, whatever there is to make it of: one of a panel's seven.
TEST(HostPalette, KeepsTheMeanOfAColor) {
  const std::vector<Color> panel{{0, 0, 0},   {255, 255, 255}, {0, 128, 0},  {0, 0, 255},
                                 {255, 0, 0}, {255, 255, 0},   {255, 128, 0}};
  TestPicture picture(200, 200, 24);
  setAll(picture, std::vector<Color>(40000, Color{150, 120, 90}));
  const Prepared made = prepared(picture, request(RAXEL_MODE_COLOR16, panel, RAXEL_DITHER_ON));
  ASSERT_EQ(made.code, RAXEL_HOST_OK);
  std::array<double, 3> mean{};
  for (const unsigned index : indicesOf(made)) {
    for (size_t c = 0; c < 3; ++c) mean[c] += panel[index][c] / 40000.0;
  }
  EXPECT_NEAR(mean[0], 150, 2);
  EXPECT_NEAR(mean[1], 120, 2);
  EXPECT_NEAR(mean[2], 90, 2);
}

// White paper is the entry nearest to white, and the black that fills the table up is never taken for it.
TEST(HostPalette, APageHasTheTablesWhite) {
  TestPicture picture(2, 2, 24);
  setAll(picture, std::vector<Color>(4, Color{255, 0, 0}));
  const std::vector<Color> colors{{255, 0, 0}, {250, 250, 240}};
  RaxelRequest wanted = request(RAXEL_MODE_COLOR16, colors);
  wanted.pageWidth = 6;
  wanted.pageHeight = 2;
  EXPECT_EQ(indicesOf(prepared(picture, wanted)),
            (std::vector<unsigned>{1, 1, 0, 0, 1, 1, 1, 1, 0, 0, 1, 1}));
}

TEST(HostPalette, IsForModesOfFreeColorsThatHoldIt) {
  TestPicture picture(2, 2, 24);
  const auto codeOf = [&](int mode, size_t count) {
    return prepared(picture, request(mode, std::vector<Color>(count))).code;
  };
  EXPECT_EQ(codeOf(RAXEL_MODE_COLOR16, 16), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(RAXEL_MODE_COLOR16, 17), RAXEL_HOST_BAD_PALETTE);
  EXPECT_EQ(codeOf(RAXEL_MODE_COLOR256, 256), RAXEL_HOST_OK);
  EXPECT_EQ(codeOf(RAXEL_MODE_COLOR256, 257), RAXEL_HOST_BAD_PALETTE);
  for (int mode :
       {RAXEL_MODE_BILEVEL, RAXEL_MODE_GREY16, RAXEL_MODE_GREY256, RAXEL_MODE_COLOR8, RAXEL_MODE_RGB})
    EXPECT_EQ(codeOf(mode, 2), RAXEL_HOST_BAD_PALETTE) << mode;
  RaxelRequest wanted = request(RAXEL_MODE_COLOR16, kBlackWhiteRed);
  wanted.paletteColors = 0;
  EXPECT_EQ(prepared(picture, wanted).code, RAXEL_HOST_BAD_ARGUMENT);
  wanted.paletteColors = 3;
  wanted.palette = nullptr;
  EXPECT_EQ(prepared(picture, wanted).code, RAXEL_HOST_BAD_ARGUMENT);
}
