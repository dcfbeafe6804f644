// SPDX-License-Identifier: MIT
// Host pixels on their way to the output's depth and size.
#include <gtest/gtest.h>

#include "entry/open_cell.h"

namespace {

using entry_test::Bytes;
using entry_test::bytesOf;
using entry_test::Cell;
using entry_test::Picture;
using entry_test::word;

Bytes zeros(size_t n) {
  return Bytes(n, 0);
}

Bytes join(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes &part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

const Bytes kFourColors = {255, 0, 0, 0, 255, 0, 0, 0, 255, 7, 8, 9};
// What the ditherer appends to every table it chooses.
const Bytes kFixedColors = {255, 255, 255, 255, 255, 0, 255, 0, 255, 0, 255, 255,
                            255, 0,   0,   0,   255, 0, 0,   0, 255, 0, 0,   0};
const Bytes kMonoTable = {0,   0,   0,   255, 255, 255, 64,  64,  64,  128, 128, 128,
                          160, 160, 160, 192, 192, 192, 208, 208, 208, 224, 224, 224};

// ---- Opening

TEST(CellDataOpen, AnswersTheRowsAskedFor) {
  Picture picture(24, 1, {{1, 2, 3}});
  EXPECT_EQ(Cell(picture, 24, 1, 4711).openAnswer, 4711u);
}

TEST(CellDataOpen, ADeeperOutputTakesTheSourcePaletteOver) {
  Picture picture(4, 2, {{0x01}}, kFourColors);
  Cell cell(picture, 8, 2, 1);
  EXPECT_EQ(cell.record().nColors, 16) << "entries of the source's depth";
  EXPECT_EQ(cell.palette(), join({kFourColors, zeros(768 - 12)}));
  EXPECT_EQ(bytesOf(cell.cached(BANDCACHE_PALETTE)), join({kFourColors, zeros(768 - 12)}));
}

TEST(CellDataOpen, APaletteBufferThatIsTooSmallGrows) {
  Picture picture(4, 2, {{0x01}}, kFourColors);
  OffscreenRecord record = {};
  record.lpPicture = &picture.record();
  record.nBits = 4;
  record.nColors = 2;
  record.lpPalette = static_cast<uint8_t *>(kvlPtrGlobalAlloc(6));
  const HostWord request[OFFSCREEN_WORDS] = {};
  CellDataOpen(&record, request);
  EXPECT_EQ(record.nColors, 16);
  EXPECT_EQ(bytesOf(kvlPtrGlobalHandle(record.lpPalette)), join({kFourColors, zeros(36)}));
  CellDataClose(&record);
  kvlPtrGlobalFree(record.lpPalette);
}

TEST(CellDataOpen, APaletteBufferShorterThanItIsSaidToBeGrows) {
  Picture picture(4, 2, {{0x01}}, kFourColors);
  OffscreenRecord record = {};
  record.lpPicture = &picture.record();
  record.nBits = 4;
  record.nColors = 256;
  record.lpPalette = static_cast<uint8_t *>(kvlPtrGlobalAlloc(3));
  const HostWord request[OFFSCREEN_WORDS] = {};
  CellDataOpen(&record, request);
  EXPECT_EQ(bytesOf(kvlPtrGlobalHandle(record.lpPalette)), join({kFourColors, zeros(36)}));
  CellDataClose(&record);
  kvlPtrGlobalFree(record.lpPalette);
}

TEST(CellDataOpen, APaletteBesideTrueColorHas256Entries) {
  Picture picture(24, 1, {{1, 2, 3}}, kFourColors);
  OffscreenRecord record = {};
  record.lpPicture = &picture.record();
  record.nBits = 24;
  record.nColors = 256;
  record.lpPalette = static_cast<uint8_t *>(kvlPtrGlobalAlloc(768));
  const HostWord request[OFFSCREEN_WORDS] = {};
  CellDataOpen(&record, request);
  EXPECT_EQ(record.nColors, 256) << "an index is a byte at most, whatever the depth";
  EXPECT_EQ(bytesOf(kvlPtrGlobalHandle(record.lpPalette)), join({kFourColors, zeros(768 - 12)}));
  CellDataClose(&record);
  kvlPtrGlobalFree(record.lpPalette);
}

TEST(CellDataOpen, ALongSourcePaletteIsTakenUpToItsDepth) {
  Picture picture(1, 2, {{0x40}}, kFourColors);
  Cell cell(picture, 1, 2, 1);
  EXPECT_EQ(cell.record().nColors, 2);
  EXPECT_EQ(cell.palette(), Bytes(kFourColors.begin(), kFourColors.begin() + 6));
}

TEST(CellDataOpen, WithoutASourcePaletteTheOutputsStaysBlack) {
  Picture picture(4, 2, {{0x01}});
  Cell cell(picture, 8, 2, 1);
  EXPECT_EQ(cell.record().nColors, 256);
  EXPECT_EQ(cell.palette(), zeros(768));
  EXPECT_EQ(cell.cached(BANDCACHE_PALETTE), 0u);
}

TEST(CellDataOpen, TrueColorOutputHasNoPalette) {
  Picture picture(4, 2, {{0x01}}, kFourColors);
  Cell cell(picture, 24, 2, 1);
  EXPECT_EQ(cell.record().nColors, 0);
  EXPECT_EQ(cell.record().lpPalette, nullptr);
  EXPECT_EQ(cell.cached(BANDCACHE_PALETTE), 0u);
}

TEST(CellDataOpen, TrueColorTo256ColorsIsReducedByMedianCut) {
  // Two 15-bit colours: blue 31 sorts before red 31. The rest of the table is black.
  Picture picture(24, 2, {{0xFF, 0x00, 0x00, 0x00, 0x00, 0xFF}});
  Cell cell(picture, 8, 2, 1);
  EXPECT_EQ(cell.record().nColors, 256);
  const Bytes expected = join({{0, 0, 255, 255, 0, 0}, zeros(762)});
  EXPECT_EQ(cell.palette(), expected);
  EXPECT_EQ(bytesOf(cell.cached(BANDCACHE_PALETTE)), expected);
}

TEST(CellDataOpen, SixteenColorsComeFromTheDitherer) {
  Picture picture(24, 2, {{0xFF, 0x00, 0x00, 0x00, 0x00, 0xFF}});
  Cell cell(picture, 4, 2, 1);
  EXPECT_EQ(cell.record().nColors, 16);
  EXPECT_EQ(cell.palette(), join({{0, 0, 255, 255, 0, 0}, kFixedColors, zeros(18)}));
}

TEST(CellDataOpen, IndexedPicturesAreReducedByTheDithererToo) {
  Picture picture(8, 2, {{0, 1}}, {255, 0, 0, 0, 0, 255});
  Cell cell(picture, 4, 2, 1);
  EXPECT_EQ(cell.record().nColors, 16);
  EXPECT_EQ(cell.palette(), join({{0, 0, 255, 255, 0, 0}, kFixedColors, zeros(18)}));
}

TEST(CellDataOpen, BilevelHoldsEightGreysOfWhichTwoCount) {
  for (uint16_t bits : {uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
    Picture picture(bits, 1, {{1, 2, 3}}, bits == 24 ? Bytes() : kFourColors);
    Cell cell(picture, 1, 1, 1);
    EXPECT_EQ(cell.record().nColors, 2);
    EXPECT_EQ(cell.palette(), kMonoTable) << "the buffer of two entries has grown";
    EXPECT_EQ(bytesOf(cell.cached(BANDCACHE_PALETTE)), kMonoTable);
  }
}

TEST(CellDataOpen, OpeningTwiceKeepsOneCache) {
  Picture picture(24, 1, {{1, 2, 3}});
  Cell cell(picture, 8, 1, 1);
  const HostWord request[OFFSCREEN_WORDS] = {1, 7};
  EXPECT_EQ(CellDataOpen(&cell.record(), request), 7u);
  EXPECT_NE(cell.cached(BANDCACHE_PALETTE), 0u);
}

TEST(CellDataOpen, MissingRecordsAnswerZero) {
  OffscreenRecord record = {};
  const HostWord request[OFFSCREEN_WORDS] = {1, 7};
  EXPECT_EQ(CellDataOpen(nullptr, request), 0u);
  EXPECT_EQ(CellDataOpen(&record, request), 0u);
  PictureRecord picture = {};
  record.lpPicture = &picture;
  EXPECT_EQ(CellDataOpen(&record, nullptr), 0u);
  EXPECT_EQ(record.hBandCache, 0u);
}

// ---- The band

TEST(CellDataBand, NothingToConvertIsTheHostsOwnBlock) {
  for (uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
    Picture picture(bits, 2, {{1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}});
    const Bytes before = picture.pixels();
    Cell cell(picture, bits, 2, 2);
    EXPECT_EQ(cell.band(), picture.record().hBits) << bits;
    EXPECT_EQ(cell.cached(BANDCACHE_BAND), 0u) << "and no copy of it";
    EXPECT_EQ(picture.pixels(), before);
  }
}

TEST(CellDataBand, AnotherDepthIsANewBlock) {
  Picture picture(4, 3, {{0x01, 0x20}}, kFourColors);
  Cell cell(picture, 24, 3, 1);
  const Handle band = cell.band();
  EXPECT_EQ(bytesOf(band), (Bytes{255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0}));
  EXPECT_EQ(cell.cached(BANDCACHE_BAND), band);
}

TEST(CellDataBand, ASmallerOutputIsShrunk) {
  // Of ten columns to four: 0, 2, 5 and the last.
  Picture picture(8, 10, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}, kFourColors);
  Cell cell(picture, 8, 4, 1);
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{0, 2, 5, 9}));
}

TEST(CellDataBand, ALargerOutputIsStretched) {
  // Two columns to five: A A A B B. One row to two.
  Picture picture(8, 2, {{1, 2}}, kFourColors);
  Cell cell(picture, 8, 5, 2);
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{1, 1, 1, 2, 2, 0, 0, 0, 1, 1, 1, 2, 2, 0, 0, 0}));
}

TEST(CellDataBand, AnOddHeightRepeatsARow) {
  // Three rows to four, from the bottom of the block on: its last row is written once, each other
  // row follows, and the first gets what is left.
  Picture picture(8, 1, {{1}, {2}, {3}}, kFourColors);
  Cell cell(picture, 8, 1, 4);
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{1, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0}));
}

TEST(CellDataBand, NarrowerAndHigherIsShrunkAndThenReadAsIfItWereNot) {
  // Shrinking already makes 2 by 4 of the 4 by 2. The stretch then takes those 16 bytes for two rows
  // of 4 and shears them: what it reads as row 0 and row 1 are the new rows' bytes.
  Picture picture(8, 4, {{1, 2, 3, 4}, {5, 6, 7, 8}}, kFourColors);
  Cell cell(picture, 8, 2, 4);
  // After the shrink: rows {1,4}, {1,4}, {5,8}, {5,8}, each padded to 4 bytes. Read as 4 by 2: row 0
  // is 1 4 0 0, row 1 is 1 4 0 0. From four columns to two: column 0 and the last: 1 0.
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(CellDataBand, TheStretchAfterAShrinkReadsZerosPastTheShrunkBlock) {
  // 1000 by 10 to 50 by 11: the stretch reads a block of 52 * 11 bytes as 1000 * 10.
  std::vector<Bytes> rows(10, Bytes(1000, 9));
  Picture picture(8, 1000, rows, kFourColors);
  Cell cell(picture, 8, 50, 11);
  const Bytes band = bytesOf(cell.band());
  ASSERT_EQ(band.size(), 52u * 11);
  EXPECT_EQ(band[0], 9);
  EXPECT_EQ(Bytes(band.end() - 52, band.end()), zeros(52)) << "the source's last rows lie past the end";
}

TEST(CellDataBand, NarrowerAndHigherIsShearedAtItsNewDepth) {
  // As above, and brought to 24 bits in between: rows of 8 bytes, 11 12 13 41 42 43 00 00 twice and
  // 51 52 53 81 82 83 00 00 twice. Read as 4 by 2 a row has 12 bytes:
  //   11 12 13   41 42 43   00 00 11   12 13 41
  //   42 43 00   00 51 52   53 81 82   83 00 00
  // Of those the columns 0 and 3 are taken, each row twice.
  Bytes palette(9 * 3);
  for (size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<uint8_t>(i / 3 * 10 + i % 3 + 1);
  Picture picture(8, 4, {{1, 2, 3, 4}, {5, 6, 7, 8}}, palette);
  Cell cell(picture, 24, 2, 4);
  const Bytes top = {11, 12, 13, 12, 13, 41, 0, 0};
  const Bytes bottom = {42, 43, 0, 83, 0, 0, 0, 0};
  EXPECT_EQ(bytesOf(cell.band()), join({top, top, bottom, bottom}));
}

TEST(CellDataBand, NarrowerAndHigherIsShearedAfterTheDither) {
  // Shrunk, the rows are white black, white black, black white, black white; the dither repeats the
  // first pixel of each. Of 4 bytes each, the first two rows are the stretch's 4 by 2 pixels: 1 1 0 0
  // twice. The columns 0 and 3 of them are 1 0.
  const Bytes white(3, 255);
  const Bytes black(3, 0);
  Picture picture(24, 4, {join({white, white, black, black}), join({black, black, white, white})});
  Cell cell(picture, 1, 2, 4);
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{0x80, 0, 0, 0, 0x80, 0, 0, 0, 0x80, 0, 0, 0, 0x80, 0, 0, 0}));
}

TEST(CellDataBand, SizeAndDepthTogether) {
  Picture picture(24, 2, {{0xFF, 0x00, 0x00, 0x00, 0x00, 0xFF}});
  Cell cell(picture, 8, 4, 2);
  // The table is blue-ish (entry 0) and red (entry 1) in the order of the pixel's own bytes.
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{1, 1, 0, 0, 1, 1, 0, 0}));
}

TEST(CellDataBand, ASmallerOutputIsShrunkBeforeItsDepthChanges) {
  Picture picture(8, 10, {{0, 1, 2, 3, 0, 1, 2, 3, 0, 1}}, kFourColors);
  Cell cell(picture, 24, 4, 1);
  // Columns 0, 2, 5 and 9: the indices 0, 2, 1 and 1.
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 255, 0}));
}

TEST(CellDataBand, TrueColorToBilevelUsesTheFirstTwoGreys) {
  Picture picture(24, 4, {{255, 255, 255, 0, 0, 0, 255, 255, 255, 0, 0, 0}});
  Cell cell(picture, 1, 4, 1);
  // White is entry 1, black entry 0; the last pixel of a row repeats the one before it.
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{0xB0, 0, 0, 0}));
}

TEST(CellDataBand, FourBytePixelsLoseTheirFourthByte) {
  Picture picture(32, 1, {{1, 2, 3, 99}});
  Cell cell(picture, 24, 1, 1);
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{1, 2, 3, 0}));
}

TEST(CellDataBand, FourBytePixelsAreReducedToAnIndexedOutput) {
  // Red, blue, white: by their 15-bit colours blue is entry 0, red 1, white 2, then come the fixed ones.
  Picture picture(32, 3, {{255, 0, 0, 9, 0, 0, 255, 7, 255, 255, 255, 1}});
  const Bytes own = {0, 0, 255, 255, 0, 0, 255, 255, 255};
  Cell eight(picture, 8, 3, 1);
  EXPECT_EQ(eight.palette(), join({own, kFixedColors, zeros(768 - 33)}));
  EXPECT_EQ(bytesOf(eight.band()), (Bytes{1, 0, 2, 0}));
  // Dithered, the last pixel is what the one before it is.
  Cell four(picture, 4, 3, 1);
  EXPECT_EQ(four.palette(), join({own, kFixedColors, zeros(15)}));
  EXPECT_EQ(bytesOf(four.band()), (Bytes{0x10, 0x00, 0, 0}));
  // White, black and red, which has the luminance 76: nearer to black, and the last repeats it.
  Picture bilevel(32, 4, {{255, 255, 255, 0, 0, 0, 0, 255, 255, 0, 0, 255, 255, 255, 255, 255}});
  Cell one(bilevel, 1, 4, 1);
  EXPECT_EQ(one.palette(), kMonoTable);
  EXPECT_EQ(bytesOf(one.band()), (Bytes{0x80, 0, 0, 0}));
}

TEST(CellDataBand, ADepthThatNobodyReadsIsIndex0Throughout) {
  for (const int bits : {0, 2, 3, 5, 16, 31, 33, 64, 32768, 65535}) {
    Picture picture(8, 2, {{1, 2}}, kFourColors);
    picture.record().nBits = static_cast<uint16_t>(bits);
    Cell cell(picture, 8, 3, 2);
    EXPECT_EQ(bytesOf(cell.band()), zeros(8)) << bits;
    EXPECT_EQ(picture.pixels(), (Bytes{1, 2, 0, 0}));
  }
}

TEST(CellDataBand, ABlockThatIsTooShortIsReadAsIfZerosFollowed) {
  Picture picture(8, 3, {{1, 2, 3}, {4, 5, 6}}, kFourColors);
  GlobalFree(picture.record().hBits);
  picture.record().hBits = entry_test::blockOf({1, 2, 3, 0, 4});
  Cell cell(picture, 8, 3, 2);
  const Handle band = cell.band();
  EXPECT_NE(band, picture.record().hBits);
  EXPECT_EQ(bytesOf(band), (Bytes{1, 2, 3, 0, 4, 0, 0, 0}));
}

TEST(CellDataBand, APaletteThatIsTooShortIsBlackBehindItsEnd) {
  Picture picture(8, 2, {{0, 200}}, {9, 8, 7});
  Cell cell(picture, 24, 2, 1);
  EXPECT_EQ(bytesOf(cell.band()), (Bytes{9, 8, 7, 0, 0, 0, 0, 0}));
}

TEST(CellDataBand, WithoutPixelsThereIsNone) {
  Picture picture(8, 2, {{1, 2}}, kFourColors);
  const Handle bits = picture.record().hBits;
  picture.record().hBits = 0;
  for (uint16_t depth : {uint16_t{1}, uint16_t{8}, uint16_t{24}}) {
    Cell cell(picture, depth, 2, 1);
    EXPECT_EQ(cell.band(), 0u);
  }
  picture.record().hBits = bits;
}

TEST(CellDataBand, APictureThatFitsInNoBlockIsNone) {
  Picture picture(24, 2, {{1, 2}});
  picture.record().nWidth = 65535;
  picture.record().nHeight = 65535;
  Cell cell(picture, 24, 65535, 65535);
  EXPECT_EQ(cell.band(), 0u);
}

TEST(CellDataBand, AnOutputThatFitsInNoBlockIsNone) {
  Picture picture(8, 2, {{1, 2}}, kFourColors);
  Cell cell(picture, 8, 0xFFFFFFFFu, 0xFFFFFFFEu);
  EXPECT_EQ(cell.band(), 0u);
  picture.record().nBits = 7;
  EXPECT_EQ(cell.band(), 0u);
}

TEST(CellDataBand, SizesOfZeroAreHarmless) {
  Picture picture(8, 2, {{1, 2}}, kFourColors);
  picture.record().nWidth = 0;
  EXPECT_EQ(bytesOf(Cell(picture, 8, 3, 2).band()), zeros(8));
  picture.record().nWidth = 2;
  picture.record().nHeight = 0;
  EXPECT_EQ(bytesOf(Cell(picture, 8, 3, 2).band()), zeros(8));
  picture.record().nHeight = 1;
  EXPECT_EQ(bytesOf(Cell(picture, 8, 0, 0).band()).size(), 0u);
}

TEST(CellDataBand, TheNextBandReplacesTheLast) {
  Picture picture(8, 10, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}, kFourColors);
  Cell cell(picture, 8, 4, 1);
  cell.band();
  const Handle second = cell.band();
  EXPECT_EQ(cell.cached(BANDCACHE_BAND), second);
  EXPECT_EQ(bytesOf(second), (Bytes{0, 2, 5, 9}));
}

TEST(CellDataBand, MissingRecordsHaveNoBand) {
  OffscreenRecord record = {};
  EXPECT_EQ(CellDataBand(nullptr), 0u);
  EXPECT_EQ(CellDataBand(&record), 0u);
  PictureRecord picture = {};
  record.lpPicture = &picture;
  EXPECT_EQ(CellDataBand(&record), 0u) << "not opened";
}

// ---- Depth, close, and the draw procedure

TEST(CellDataDepth, DithersBelowEightBitsAndConvertsOtherwise) {
  // A grey of 96 with a table of black, white and grey 128: the nearest entry is 128 (32 off) for
  // both pixels when converting; a dither gives the last pixel of a row the entry before it, and
  // pushes -32 * 7 / 16 into the second of three.
  const Handle pixels = entry_test::blockOf({96, 96, 96, 70, 70, 70, 96, 96, 96, 0, 0, 0});
  const Handle table = entry_test::blockOf({0, 0, 0, 255, 255, 255, 128, 128, 128});
  const Handle converted = CellDataDepth(pixels, 3, 1, 24, 8, 0, table, 3);
  EXPECT_EQ(bytesOf(converted), (Bytes{2, 2, 2, 0}));
  // 70 + trunc(7 * (96 - 128) / 16) = 70 - 14 = 56: nearer to black.
  const Handle dithered = CellDataDepth(pixels, 3, 1, 24, 4, 0, table, 3);
  EXPECT_EQ(bytesOf(dithered), (Bytes{0x20, 0x00, 0, 0}));
  for (Handle handle : {pixels, table, converted, dithered}) GlobalFree(handle);
}

TEST(CellDataClose, MayComeTwice) {
  Picture picture(24, 1, {{1, 2, 3}});
  Cell cell(picture, 8, 1, 1);
  cell.band();
  EXPECT_EQ(CellDataClose(&cell.record()), 0);
  EXPECT_EQ(cell.record().hBandCache, 0u);
  EXPECT_EQ(CellDataClose(&cell.record()), 0);
  EXPECT_EQ(CellDataClose(nullptr), 0);
}

TEST(DrawExportCellData, QueryTurnsExtentsIntoInches) {
  PictureRecord picture = {};
  picture.dExtentX = 800;
  picture.dExtentY = -400;
  picture.nResolution = 100;
  PictureFormat format = {};
  EXPECT_EQ(DrawExportCellData(RAXEL_DRAW_QUERY, word(&picture), word(&format), 0), 0u);
  EXPECT_EQ(format.dWidth, 8.0);
  EXPECT_EQ(format.dHeight, -4.0);
  EXPECT_EQ(format.nResolution, 100u);
  EXPECT_EQ(format.nKind, RAXEL_KIND_CELL_DATA);
  picture.nResolution = 0;
  DrawExportCellData(RAXEL_DRAW_QUERY, word(&picture), word(&format), 0);
  EXPECT_EQ(format.dWidth, 800.0) << "without a resolution the extents are inches";
  picture.nResolution = 65535;
  DrawExportCellData(RAXEL_DRAW_QUERY, word(&picture), word(&format), 0);
  EXPECT_EQ(format.nResolution, 65535u);
}

TEST(DrawExportCellData, ItsOperationsAreThoseOfCellData) {
  Picture picture(8, 10, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}, kFourColors);
  OffscreenRecord record = {};
  record.lpPicture = &picture.record();
  record.nBits = 8;
  record.nWidth = 4;
  record.nBandRows = 1;
  record.nColors = 256;
  record.lpPalette = static_cast<uint8_t *>(kvlPtrGlobalAlloc(768));
  const HostWord request[OFFSCREEN_WORDS] = {4, 1, 8, 256, word(record.lpPalette)};
  EXPECT_EQ(DrawExportCellData(RAXEL_DRAW_OPEN, word(&record), word(request), 0), 1u);
  const Handle band = DrawExportCellData(RAXEL_DRAW_BAND, word(&record), 500, 600);
  EXPECT_EQ(bytesOf(band), (Bytes{0, 2, 5, 9})) << "the row range is not looked at";
  EXPECT_EQ(DrawExportCellData(RAXEL_DRAW_CLOSE, word(&record), 0, 0), 0u);
  EXPECT_EQ(record.hBandCache, 0u);
  kvlPtrGlobalFree(record.lpPalette);
}

TEST(DrawExportCellData, OthersDoNothing) {
  for (HostWord op : {HostWord{4}, HostWord{5}, ~HostWord{0}}) {
    EXPECT_EQ(DrawExportCellData(op, 1, 1, 1), 0u);
  }
  for (HostWord op : {HostWord{0}, HostWord{1}, HostWord{2}, HostWord{3}}) {
    EXPECT_EQ(DrawExportCellData(op, 0, 0, 0), 0u);
  }
  PictureRecord picture = {};
  picture.dExtentX = 3;
  PictureFormat format = {};
  EXPECT_EQ(DrawExportCellData(RAXEL_DRAW_QUERY, 0, word(&format), 0), 0u);
  EXPECT_EQ(DrawExportCellData(RAXEL_DRAW_QUERY, word(&picture), 0, 0), 0u);
  EXPECT_EQ(format.nKind, 0);
}

}  // namespace
