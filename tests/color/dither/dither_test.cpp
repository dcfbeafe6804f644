// SPDX-License-Identifier: MIT
// Dithering of whole pictures: the table that is chosen, and what becomes of the pixels.
#include <gtest/gtest.h>

#include "color/pictures.h"

namespace {

using plain::Bytes;

const Bytes kFixedColors{255, 255, 255, 255, 255, 0, 255, 0, 255, 0, 255, 255,
                         255, 0,   0,   0,   255, 0, 0,   0, 255, 0, 0,   0};
const Bytes kMono{0,   0,   0,   255, 255, 255, 64,  64,  64,  128, 128, 128,
                  160, 160, 160, 192, 192, 192, 208, 208, 208, 224, 224, 224};

// A picture of one colour, 24 bits.
Bytes flat(uint32_t width, uint32_t height, const Bytes &pixel) {
  Bytes out(size_t{plain::lineBytes(width, 24)} * height, 0);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      for (size_t c = 0; c < 3; ++c) out[size_t{y} * plain::lineBytes(width, 24) + 3 * x + c] = pixel[c];
    }
  }
  return out;
}

Bytes given(const Bytes &bits, uint32_t width, uint32_t height, int depth, const Bytes &entries) {
  const runtime::Block from = pictures::block(bits);
  const runtime::Block table = pictures::block(entries);
  const runtime::Block out(rlDitherGivenCT(from.handle(), width, height, 24, static_cast<int16_t>(depth), 0,
                                           table.handle(), static_cast<uint16_t>(entries.size() / 3)));
  EXPECT_EQ(pictures::bytesOf(from.handle()), bits);
  return pictures::bytesOf(out.handle());
}

TEST(Dither, A4BitTableIsThePicturesColorsTheFixedOnesAndBlack) {
  // Three 15-bit colours: 31 steps of each channel become 255, 1 becomes 15.
  const Bytes bits{255, 0, 0, 8, 8, 8, 0, 0, 8, 0, 0, 0};
  const runtime::Block from = pictures::block(bits);
  Handle table = 0;
  uint16_t count = 0;
  rlDitherGetCT(from.handle(), 3, 1, 24, 4, 0, &table, &count);
  const runtime::Block owned(table);
  Bytes expected{0, 0, 15, 15, 15, 15, 255, 0, 0};
  expected.insert(expected.end(), kFixedColors.begin(), kFixedColors.end());
  expected.resize(48, 0);
  EXPECT_EQ(pictures::bytesOf(table), expected);
  EXPECT_EQ(count, 16);
}

TEST(Dither, An8BitTableHas256Entries) {
  const runtime::Block from = pictures::block(Bytes{255, 0, 0, 0});
  Handle table = 0;
  uint16_t count = 0;
  rlDitherGetCT(from.handle(), 1, 1, 24, 8, 0, &table, &count);
  const runtime::Block owned(table);
  Bytes expected{255, 0, 0};
  expected.insert(expected.end(), kFixedColors.begin(), kFixedColors.end());
  expected.resize(768, 0);
  EXPECT_EQ(pictures::bytesOf(table), expected);
  EXPECT_EQ(count, 256);
}

TEST(Dither, PicturesOf32768RowsAndMoreGetTheFixedColorsOnly) {
  // The median cut takes heights as signed 16-bit numbers, and finds no colours.
  Bytes expected = kFixedColors;
  expected.resize(48, 0);
  const Bytes red{200, 0, 0};
  for (uint32_t height : {32767u, 32768u}) {
    const runtime::Block wide = pictures::block(flat(1, height, red));
    const runtime::Block indexed = pictures::block(Bytes(size_t{4} * height, 0));
    const runtime::Block source = pictures::block(red);
    Handle wideTable = 0;
    Handle indexedTable = 0;
    uint16_t count = 0;
    rlDitherGetCT(wide.handle(), 1, height, 24, 4, 0, &wideTable, &count);
    rlDitherGetCT(indexed.handle(), 1, height, 8, 4, source.handle(), &indexedTable, &count);
    const runtime::Block owned(wideTable);
    const runtime::Block ownedToo(indexedTable);
    EXPECT_EQ(pictures::bytesOf(wideTable) == expected, height == 32768) << height;
    EXPECT_EQ(pictures::bytesOf(indexedTable) == expected, height == 32768) << height;
  }
}

TEST(Dither, ABilevelTableIsACopyOfMonoTable) {
  const runtime::Block from = pictures::block(Bytes{1, 2, 3, 0});
  Handle table = 0;
  uint16_t count = 0;
  rlDitherGetCT(from.handle(), 1, 1, 24, 1, 0, &table, &count);
  const runtime::Block owned(table);
  EXPECT_EQ(pictures::bytesOf(table), kMono);
  EXPECT_EQ(count, 8);
}

TEST(Dither, ABilevelTableOfTheCallersIsUsedWith2Entries) {
  const runtime::Block from = pictures::block(Bytes{1, 2, 3, 0});
  const runtime::Block own = pictures::block(Bytes{9, 9, 9, 8, 8, 8, 7, 7, 7});
  Handle table = own.handle();
  uint16_t count = 0;
  rlDitherGetCT(from.handle(), 1, 1, 24, 1, 0, &table, &count);
  EXPECT_EQ(table, own.handle());
  EXPECT_EQ(count, 2);
  const runtime::Block out(rlDitherBitmap(from.handle(), 1, 1, 24, 1, 0, &table));
  EXPECT_EQ(table, own.handle());
}

TEST(Dither, GetCtChoosesAnewWhereRlDitherBitmapUsesTheCallersTable) {
  const runtime::Block from = pictures::block(Bytes{200, 0, 0, 0});
  const runtime::Block own = pictures::block(Bytes(48, 77));
  Handle table = own.handle();
  uint16_t count = 0;
  rlDitherGetCT(from.handle(), 1, 1, 24, 4, 0, &table, &count);
  EXPECT_NE(table, own.handle());
  const runtime::Block owned(table);
  EXPECT_EQ(count, 16);

  table = own.handle();
  const runtime::Block out(rlDitherBitmap(from.handle(), 1, 1, 24, 4, 0, &table));
  EXPECT_EQ(table, own.handle());
  EXPECT_EQ(pictures::bytesOf(own.handle()), Bytes(48, 77));
}

TEST(Dither, AColorOfTheTableStaysAsItIs) {
  const Bytes table{0, 0, 0, 255, 255, 255, 40, 80, 120, 255, 0, 0};
  const Bytes out = given(flat(5, 4, {40, 80, 120}), 5, 4, 4, table);
  const Bytes expected{0x22, 0x22, 0x20, 0, 0x22, 0x22, 0x20, 0, 0x22, 0x22, 0x20, 0, 0x22, 0x22, 0x20, 0};
  EXPECT_EQ(out, expected);
}

TEST(Dither, OddEntriesOfMonoTableSetABitAndEvenOnesClearIt) {
  for (size_t i = 0; i < 8; ++i) {
    const Bytes out = given(flat(8, 2, {kMono[3 * i], kMono[3 * i], kMono[3 * i]}), 8, 2, 1, kMono);
    const uint8_t row = i % 2 == 1 ? 0xFF : 0x00;
    EXPECT_EQ(out, (Bytes{row, 0, 0, 0, row, 0, 0, 0})) << i;
  }
}

TEST(Dither, ABilevelPictureIsDitheredByItsLuminance) {
  // (255, 0, 0) has luminance 76: 64, the nearest grey, leaves 12. It sends 5 right: 81 leaves 17,
  // which sends 7: 83, then 8: 84, and so on; all stay nearest to 64, entry 2: clear.
  EXPECT_EQ(given(flat(4, 1, {255, 0, 0}), 4, 1, 1, kMono), (Bytes{0, 0, 0, 0}));
  // (0, 255, 0) has luminance 153: 160, entry 4, at -7. It sends -3: 150, nearest to 160 again, and
  // so on: clear.
  EXPECT_EQ(given(flat(4, 1, {0, 255, 0}), 4, 1, 1, kMono), (Bytes{0, 0, 0, 0}));
  // (255, 153, 153) has luminance 183: 192, entry 5, at -9. It sends -3: 180, then -5: 178: set.
  EXPECT_EQ(given(flat(4, 1, {255, 153, 153}), 4, 1, 1, kMono), (Bytes{0xF0, 0, 0, 0}));
}

TEST(Dither, ALonePixelBecomesEntry0) {
  EXPECT_EQ(given({255, 255, 255, 0}, 1, 1, 4, kMono), (Bytes{0, 0, 0, 0}));
  // The entry's colour is looked for again, and the first grey is found.
  EXPECT_EQ(given({255, 255, 255, 0}, 1, 1, 4, {100, 102, 104, 90, 90, 90}), (Bytes{0x10, 0, 0, 0}));
}

TEST(Dither, AChosenColorIsLookedForAgainAndMayFindAnother) {
  // (90, 110, 100) is a colour and takes entry 1, the only one; that entry's own colour counts as
  // grey, and the only grey is entry 0.
  const Bytes table{30, 30, 30, 100, 102, 104};
  EXPECT_EQ(given(flat(2, 1, {90, 110, 100}), 2, 1, 4, table), (Bytes{0x00, 0, 0, 0}));
  const Bytes colors{30, 30, 30, 100, 102, 106};
  EXPECT_EQ(given(flat(2, 1, {90, 110, 100}), 2, 1, 4, colors), (Bytes{0x11, 0, 0, 0}));
}

TEST(Dither, AMissingOrEmptyTableGivesZeros) {
  const runtime::Block from = pictures::block(flat(3, 2, {200, 100, 50}));
  const runtime::Block table = pictures::block(kMono);
  const runtime::Block missing(rlDitherGivenCT(from.handle(), 3, 2, 24, 4, 0, 0, 16));
  EXPECT_EQ(pictures::bytesOf(missing.handle()), Bytes(8, 0));
  const runtime::Block empty(rlDitherGivenCT(from.handle(), 3, 2, 24, 4, 0, table.handle(), 0));
  EXPECT_EQ(pictures::bytesOf(empty.handle()), Bytes(8, 0));
}

TEST(Dither, IndexedPicturesAreDitheredByTheirColors) {
  const runtime::Block bits = pictures::block(Bytes{0, 1, 0, 1});
  const runtime::Block source = pictures::block(Bytes{0, 0, 0, 255, 255, 255});
  Handle table = 0;
  const runtime::Block out(rlDitherBitmap(bits.handle(), 4, 1, 8, 1, source.handle(), &table));
  const runtime::Block owned(table);
  // The last pixel repeats the one before it: black.
  EXPECT_EQ(pictures::bytesOf(out.handle()), (Bytes{0x40, 0, 0, 0}));
}

}  // namespace
