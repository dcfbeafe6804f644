// SPDX-License-Identifier: MIT
// Cell arrays: where rows land, and the files that framed and unframed pictures become.
#include "raster/cell_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "raster/session.h"
#include "support/blocks.h"
#include "support/temp_dir.h"
#include "support/tiff_reader.h"

namespace {

using raster_test::Host;

// Rows of `stride` bytes, row r filled with first + r.
std::vector<uint8_t> numberedRows(size_t rows, size_t stride, uint8_t first) {
  std::vector<uint8_t> out;
  for (size_t r = 0; r < rows; ++r) out.insert(out.end(), stride, static_cast<uint8_t>(first + r));
  return out;
}

std::vector<uint8_t> bufferRows(size_t stride) {
  const auto *data = static_cast<const uint8_t *>(GlobalLock(lpEMData->hCellBuf));
  const size_t size = GlobalSize(lpEMData->hCellBuf);
  std::vector<uint8_t> firsts;
  for (size_t at = 0; at < size; at += stride) firsts.push_back(data[at]);
  return firsts;
}

class Cells : public testing::Test {
 protected:
  Cells() : host(dir.file("cells.tif")) {}
  support::TempDir dir;
  Host host;
};

TEST_F(Cells, OutsideTheBodyTheyChangeNothingInTheState) {
  const auto state = [] {
    const auto *bytes = static_cast<const uint8_t *>(GlobalLock(hEMData));
    return std::vector<uint8_t>(bytes, bytes + GlobalSize(hEMData));
  };
  const auto ignored = [&] {
    const std::vector<uint8_t> before = state();
    EXPECT_EQ(host.send(Host::cellArray(4, 1, 8, {1, 2, 3, 4})), 0);
    return state() == before;
  };
  host.initialise();
  EXPECT_TRUE(ignored()) << "initialised";
  host.send(RAXEL_OP_OPEN_DEVICE);
  EXPECT_TRUE(ignored()) << "open";
  host.send(RAXEL_OP_BEGIN_PICTURE);
  host.setWindow(0, 0, 3, 3);
  EXPECT_TRUE(ignored()) << "picture begun";
  host.send(RAXEL_OP_BEGIN_BODY);
  host.beginRaster(4, 4, 8);
  EXPECT_FALSE(ignored()) << "body begun";
  host.send(RAXEL_OP_END_PICTURE);
  EXPECT_TRUE(ignored()) << "picture ended, with a frame left open";
}

TEST_F(Cells, TheWindowCutsTheirWidth) {
  host.openBody(100, 10);
  host.beginRaster(120, 10, 1);
  EXPECT_EQ(lpEMData->nCellWidth, 100u);
  EXPECT_EQ(GlobalSize(lpEMData->hCellBuf), 160u) << "a 1-bit row of 100 pixels takes 16 bytes";
  host.beginRaster(60, 10, 1, 0x1234);
  EXPECT_EQ(lpEMData->nCellWidth, 60u);
  EXPECT_EQ(lpEMData->nCellFlags, 0x1234);
}

TEST_F(Cells, PrecisionGivesBitsPerPixel) {
  host.openBody(10, 10);
  const std::pair<int32_t, uint32_t> precisions[] = {{-32768, 1}, {-8, 8}, {24, 24}, {4, 4}, {-1, 1}};
  for (const auto &[precision, bits] : precisions) {
    host.beginRaster(10, 2, precision);
    EXPECT_EQ(lpEMData->nCellBits, bits) << precision;
  }
}

TEST_F(Cells, PointsBeforeTheDataAreSteppedOver) {
  host.openBody(10, 10);
  host.beginRaster(7, 3, 8, 5, 4);
  EXPECT_EQ(lpEMData->nCellWidth, 7u);
  EXPECT_EQ(lpEMData->nCellHeight, 3u);
}

TEST_F(Cells, ABeginRecordThatIsTooShortOrHasTooManyPointsIsIgnored) {
  host.openBody(10, 10);
  auto record = Host::recordOf(RAXEL_OP_PRIMITIVE, 60);
  Host::put<int32_t>(record, 16, RAXEL_PRIMITIVE_BEGIN_RASTER);
  Host::put<uint32_t>(record, 24, 27);
  host.send(record);
  EXPECT_EQ(lpEMData->bCellActive, 0u);
  Host::put<uint32_t>(record, 20, 0xFFFFFFFFu);
  Host::put<uint32_t>(record, 24, 28);
  host.send(record);
  EXPECT_EQ(lpEMData->bCellActive, 0u);
  Host::put<int32_t>(record, 16, -4);
  Host::put<uint32_t>(record, 20, 0);
  host.send(record);
  EXPECT_EQ(lpEMData->bCellActive, 0u) << "other primitives do nothing";
}

TEST_F(Cells, TopDownRowsFillFromTheStart) {
  host.openBody(4, 10);
  host.beginRaster(4, 10, 8);
  host.send(Host::cellArray(4, 6, 8, numberedRows(6, 4, 1)));
  EXPECT_EQ(lpEMData->nCellRowsDone, 6u);
  host.send(Host::cellArray(4, 6, 8, numberedRows(6, 4, 11)));
  EXPECT_EQ(lpEMData->nCellRowsDone, 10u) << "only four of the second six are placed";
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 11, 12, 13, 14}));
  host.send(Host::cellArray(4, 6, 8, numberedRows(6, 4, 21)));
  EXPECT_EQ(lpEMData->nCellRowsDone, 10u);
}

TEST_F(Cells, BottomUpRowsLeaveTheLastBufferRowEmpty) {
  host.openBody(4, 4);
  host.beginRaster(4, 4, 8);
  host.send(Host::cellArray(4, 4, 8, numberedRows(4, 4, 1), true));
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{3, 2, 1, 0})) << "the fourth row is dropped";
  EXPECT_EQ(lpEMData->nCellRowsDone, 0u);
  host.send(Host::cellArray(4, 1, 8, numberedRows(1, 4, 9), true));
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{3, 2, 9, 0})) << "counted down to 0 it starts again";
}

TEST_F(Cells, DirectionComparesTheArrayWithTheWindow) {
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  host.send(RAXEL_OP_BEGIN_PICTURE);
  host.setWindow(0, 3, 3, 0);  // y grows downward
  host.send(RAXEL_OP_BEGIN_BODY);
  host.beginRaster(4, 4, 8);
  host.send(Host::cellArray(4, 1, 8, numberedRows(1, 4, 7)));  // first y below second: they disagree
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{0, 0, 7, 0}));
}

TEST_F(Cells, MixedDirectionsNeverLeaveTheBuffer) {
  host.openBody(4, 4);
  host.beginRaster(4, 4, 8);
  host.send(Host::cellArray(4, 4, 8, numberedRows(4, 4, 1)));
  EXPECT_EQ(lpEMData->nCellRowsDone, 4u);
  host.send(Host::cellArray(4, 2, 8, numberedRows(2, 4, 21), true));
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{1, 2, 22, 21}));
}

TEST_F(Cells, ColorRowsCarryTheirFullWidthInTheRecord) {
  host.openBody(2, 2);
  host.beginRaster(5, 2, 24);
  EXPECT_EQ(lpEMData->nCellWidth, 2u);
  // Five pixels take 16 bytes a row; two of them take 8.
  std::vector<uint8_t> pixels = numberedRows(2, 16, 1);
  pixels[0] = 200;
  pixels[16] = 201;
  host.send(Host::cellArray(5, 2, 24, pixels));
  EXPECT_EQ(bufferRows(8), (std::vector<uint8_t>{200, 201}));
}

TEST_F(Cells, OtherDepthsHaveRowsAsWideAsTheWindow) {
  host.openBody(4, 2);
  host.beginRaster(8, 2, 8);
  host.send(Host::cellArray(8, 2, 8, numberedRows(2, 4, 1)));
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{1, 2}));
}

TEST_F(Cells, NegativePrecisionPointsAtTheRows) {
  host.openBody(4, 2);
  host.beginRaster(4, 2, 8);
  const std::vector<uint8_t> elsewhere = numberedRows(2, 4, 50);
  auto record = Host::cellArray(4, 2, -8, {});
  Host::put(record, 102, elsewhere.data());
  host.send(record);
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{50, 51}));
  Host::put<const uint8_t *>(record, 102, nullptr);
  EXPECT_EQ(host.send(record), 0);
  EXPECT_EQ(lpEMData->nCellRowsDone, 2u);
  host.beginRaster(4, 2, 8);
  Host::put(record, 24, 1.0);
  Host::put(record, 48, 0.0);
  EXPECT_EQ(host.send(record), 0);
  EXPECT_EQ(lpEMData->nCellRowsDone, 0u) << "nor does an upward array without rows start its count";
}

// The window is 100 pixels wide and the array 120: rows of 100 go into the buffer.
TEST_F(Cells, TheWindowCutsTheArraysOwnColumns) {
  host.openBody(100, 2);
  const auto placed = [&](uint32_t columns, int32_t framePrecision, int32_t precision,
                          const std::vector<uint8_t> &pixels) {
    host.beginRaster(120, 2, framePrecision);
    auto record = Host::cellArray(columns, 2, precision, precision < 0 ? std::vector<uint8_t>() : pixels);
    if (precision < 0) Host::put(record, 102, pixels.data());
    EXPECT_EQ(host.send(record), 0);
    const auto *buffer = static_cast<const uint8_t *>(GlobalLock(lpEMData->hCellBuf));
    return std::vector<uint8_t>(buffer, buffer + GlobalSize(lpEMData->hCellBuf));
  };
  std::vector<uint8_t> pixels(2 * 360);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i % 251);
  const auto from = [&](size_t at, size_t count) {
    return std::vector<uint8_t>(pixels.begin() + static_cast<std::ptrdiff_t>(at),
                                pixels.begin() + static_cast<std::ptrdiff_t>(at + count));
  };
  // 100 pixels of 1 bit take 16 bytes, and the source's rows lie as far apart.
  EXPECT_EQ(placed(120, 1, -32768, pixels), from(0, 32)) << "one bit, the rows elsewhere";
  EXPECT_EQ(placed(120, 1, 1, pixels), from(0, 32));
  EXPECT_EQ(placed(120, 8, -8, pixels), from(0, 200));
  EXPECT_EQ(placed(120, 8, 8, pixels), from(0, 200));
  // Only true colour carries its full width: 360 bytes a row.
  std::vector<uint8_t> colors = from(0, 300);
  colors.insert(colors.end(), pixels.begin() + 360, pixels.begin() + 660);
  EXPECT_EQ(placed(120, 24, 24, pixels), colors);
  EXPECT_EQ(placed(120, 24, -24, pixels), colors);
}

// Rows of no bits lie in the record itself, and are counted.
TEST_F(Cells, PrecisionZeroIsNoPointer) {
  host.openBody(10, 2);
  host.beginRaster(10, 2, 8);
  EXPECT_EQ(host.send(Host::cellArray(10, 2, 0, std::vector<uint8_t>(20))), 0);
  EXPECT_EQ(lpEMData->nCellRowsDone, 2u);
}

// Two arrays of a row each: the second lies where rows of one bit a pixel put it, 4 bytes on.
TEST_F(Cells, PrecisionMinus32768IsOneBitInAnArrayToo) {
  host.openBody(20, 2);
  host.beginRaster(20, 2, -32768);
  // The bytes behind a row are none of it.
  for (const std::vector<uint8_t> &row : {numberedRows(8, 1, 0xA1), numberedRows(8, 1, 0xB1)}) {
    auto record = Host::cellArray(20, 1, -32768, {});
    Host::put(record, 102, row.data());
    EXPECT_EQ(host.send(record), 0);
  }
  EXPECT_EQ(bufferRows(1), (std::vector<uint8_t>{0xA1, 0xA2, 0xA3, 0xA4, 0xB1, 0xB2, 0xB3, 0xB4}));
}

// An array's own columns count, not those that begin raster announced: rows of 4 bytes stand 4 apart in
// the source and in the buffer, whose rows are 8 long.
TEST_F(Cells, AnArrayNarrowerThanAnnouncedHasItsOwnWidth) {
  host.openBody(8, 2);
  host.beginRaster(8, 2, 8);
  std::vector<uint8_t> pixels(16, 99);
  for (uint8_t i = 0; i < 8; ++i) pixels[i] = static_cast<uint8_t>(i + 1);
  EXPECT_EQ(host.send(Host::cellArray(4, 2, 8, pixels)), 0);
  EXPECT_EQ(bufferRows(1), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Cells, ColorTreatmentAppliesToColorRows) {
  host.settings().nColorMode = RAXEL_STORED_COLORS_INVERT;  // every channel inverted
  host.openBody(1, 2);
  host.beginRaster(1, 2, 24);
  host.send(Host::cellArray(1, 1, 24, {10, 20, 30, 99}));
  const auto *row = static_cast<const uint8_t *>(GlobalLock(lpEMData->hCellBuf));
  EXPECT_EQ(row[0], 245);
  EXPECT_EQ(row[1], 235);
  EXPECT_EQ(row[2], 225);
  EXPECT_EQ(row[3], 99) << "padding is no pixel";
}

TEST_F(Cells, ArraysLargerThanAnnouncedAreCutAtTheBuffer) {
  host.openBody(64, 4);
  host.beginRaster(4, 4, 8);
  host.send(Host::cellArray(64, 4, 8, numberedRows(4, 64, 1)));  // 64-byte rows into 16 bytes
  EXPECT_EQ(bufferRows(4), (std::vector<uint8_t>{1, 1, 1, 1}));
  EXPECT_EQ(lpEMData->nCellRowsDone, 4u) << "the counter moves past rows that were dropped";
}

TEST_F(Cells, WithoutABufferTheyPushError300) {
  host.openBody(1000000, 1000000);
  EXPECT_EQ(host.beginRaster(1000000, 1000000, 24), 0);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  EXPECT_EQ(host.send(Host::cellArray(4, 1, 8, {1, 2, 3, 4})), RAXEL_NO_MEMORY);
  EXPECT_EQ(host.endRaster(), 0);
}

// 2^31 pixels of 2^30 bits are a row of 2^58 bytes, and 64 of them are 2^64: as a 64-bit number, 0.
TEST_F(Cells, ABufferOfMoreBytesThanANumberCountsIsNone) {
  host.openBody(2147483648.0, 4);
  EXPECT_EQ(host.beginRaster(0x80000000u, 64, 0x40000000), 0);
  EXPECT_EQ(lpEMData->nCellWidth, 0x80000000u);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  EXPECT_EQ(host.send(Host::cellArray(4, 1, 8, {1, 2, 3, 4})), RAXEL_NO_MEMORY);
}

TEST_F(Cells, HugeRowCountsOfNothingEndAtOnce) {
  host.openBody(4, 4);
  host.beginRaster(4, 0xFFFFFFFFu, 0);
  host.send(Host::cellArray(4, 0xFFFFFFFEu, 0, {}));
  EXPECT_EQ(lpEMData->nCellRowsDone, 0xFFFFFFFEu);
}

TEST_F(Cells, StrangeWindowsGiveTheFullWidth) {
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  host.send(RAXEL_OP_BEGIN_PICTURE);
  host.setWindow(-std::numeric_limits<double>::infinity(), 0, std::numeric_limits<double>::infinity(), 1);
  host.send(RAXEL_OP_BEGIN_BODY);
  host.beginRaster(12, 2, 8);
  EXPECT_EQ(lpEMData->nCellWidth, 12u);
  host.send(RAXEL_OP_END_PICTURE);
  host.send(RAXEL_OP_BEGIN_PICTURE);
  host.setWindow(std::nan(""), 0, 2.9, 1);
  host.send(RAXEL_OP_BEGIN_BODY);
  host.beginRaster(12, 2, 8);
  EXPECT_EQ(lpEMData->nCellWidth, 3u) << "no number counts as 0";
}

TEST_F(Cells, EndRasterWithoutBeginWritesNothing) {
  host.openBody(4, 4);
  EXPECT_EQ(host.endRaster(), 0);
  host.finish();
  EXPECT_TRUE(support::readFile(dir.file("cells.tif")).empty());
}

// Rows land in the buffer from its start, and the file shows the buffer's last row on top.
TEST_F(Cells, AFramedColorPictureBecomesAFile) {
  host.openBody(4, 4, 0.254);  // 100 dots per inch
  host.beginRaster(4, 4, 24);
  std::vector<uint8_t> pixels;
  for (uint8_t i = 0; i < 48; ++i) pixels.push_back(i);
  EXPECT_EQ(host.send(Host::cellArray(4, 4, 24, pixels)), 0);
  EXPECT_EQ(host.endRaster(), 0);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  host.finish();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.width(), 4u);
  EXPECT_EQ(file.height(), 4u);
  EXPECT_EQ(file.value(282), 100u);
  std::vector<uint8_t> expected;
  for (int row = 3; row >= 0; --row) {
    for (int x = 0; x < 4; ++x) {
      const int at = row * 12 + x * 3;
      for (int channel : {2, 1, 0}) expected.push_back(static_cast<uint8_t>(at + channel));
    }
  }
  EXPECT_EQ(support::uncompressedRows(file), expected);
}

TEST_F(Cells, AFramedIndexedPictureTakesItsPaletteFromTheColorTable) {
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  host.openBody(4, 2, 0.254);
  host.setColors(0, {1, 2, 3, 10, 20, 30});
  host.beginRaster(4, 2, 8);
  host.send(Host::cellArray(4, 2, 8, {0, 1, 1, 0, 1, 0, 0, 1}));
  host.endRaster();
  host.finish();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(support::uncompressedRows(file), (std::vector<uint8_t>{1, 0, 0, 1, 0, 1, 1, 0}));
  ASSERT_NE(file.find(320), nullptr);
  EXPECT_EQ(file.value(320, 0, 0), 257u);
  EXPECT_EQ(file.value(320, 0, 1), 2570u);
  EXPECT_EQ(file.value(320, 0, 256), 514u);
  EXPECT_EQ(file.value(320, 0, 513), 7710u);
}

// 25.4 / 0.127 dots per inch; the picture is written at its own resolution.
TEST_F(Cells, AFramedPictureHasTheResolutionOfTheViewport) {
  host.openBody(4, 2, 0.127);
  host.beginRaster(4, 2, 24);
  EXPECT_EQ(host.send(Host::cellArray(4, 2, 24, std::vector<uint8_t>(24, 7))), 0);
  EXPECT_EQ(host.endRaster(), 0);
  host.finish();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.value(282), 200u);
  EXPECT_EQ(file.value(283), 200u);
  EXPECT_EQ(file.width(), 4u);
}

// The frame goes the way of every picture, and that way's progress is for the settings' own status record.
TEST_F(Cells, AFramesProgressGoesToTheStatusRecordOfTheSetup) {
  Host earlier;  // stands for the host of an export that used this setup before
  HostWord exportRecord[RAXEL_RECORD_WORDS] = {};
  exportRecord[RAXEL_RECORD_SETUP] = host.setup_;
  exportRecord[RAXEL_RECORD_STATUS] = reinterpret_cast<HostWord>(earlier.status_.data());
  PictureRecord picture = {};
  const uint8_t info[EXPORT_CELL_INFO_BYTES] = {};
  ASSERT_EQ(ExportCellData(dir.file("one.tif").c_str(), &picture, info, exportRecord), 0u);
  ASSERT_TRUE(earlier.calls.empty()) << "a picture without size has no progress";

  host.openBody(4, 4);
  host.beginRaster(4, 4, 24);
  host.send(Host::cellArray(4, 4, 24, std::vector<uint8_t>(48)));
  const size_t heard = host.calls.size();
  EXPECT_EQ(host.endRaster(), 0);
  EXPECT_EQ(host.calls.size(), heard);
  ASSERT_EQ(earlier.calls.size(), 1u);
  EXPECT_EQ(earlier.calls[0].context, reinterpret_cast<HostWord>(&earlier));
  EXPECT_EQ(earlier.calls[0].values, (std::array<HostWord, 6>{0, 0, 0, 100, 0, 0}));
  host.finish();
}

TEST_F(Cells, APaletteOfMoreBitsThanTheTableHasEndsInBlack) {
  host.initialise();
  for (size_t i = 0; i < 256; ++i) {
    const uint8_t color[3] = {static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i), 77};
    std::memcpy(lpEMData->ColorTable[i], color, 3);
  }
  std::memset(lpEMData->BkColor, 99, sizeof lpEMData->BkColor);  // it stands behind the table
  for (const uint32_t bits : {1u, 4u, 8u, 9u, 12u, 23u}) {
    const runtime::Block palette = raster::paletteOf(*lpEMData, bits);
    const auto bytes = palette.bytes();
    ASSERT_EQ(bytes.size(), size_t{3} << bits);
    const size_t known = std::min<size_t>(bytes.size(), 768);
    EXPECT_EQ(std::memcmp(bytes.data(), lpEMData->ColorTable, known), 0) << bits;
    const auto black = [](uint8_t value) { return value == 0; };
    EXPECT_TRUE(std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(known), bytes.end(), black))
        << bits;
  }
}

// No colour library reads such pixels, and the picture is black.
TEST_F(Cells, AFramedPictureOfNineToTwentyThreeBitsIsBlack) {
  for (const int32_t bits : {9, 12, 16, 23}) {
    host.openBody(4, 4, 0.254);
    host.setColors(0, std::vector<uint8_t>(768, 200));
    host.beginRaster(4, 4, bits);
    EXPECT_EQ(host.send(Host::cellArray(4, 4, bits, std::vector<uint8_t>(64, 0xA5))), 0);
    EXPECT_EQ(host.endRaster(), 0);
    host.finish();
    const auto bytes = support::readFile(dir.file("cells.tif"));
    const auto file = support::readTiff(bytes);
    ASSERT_TRUE(file.ok()) << file.error;
    EXPECT_EQ(support::uncompressedRows(file), std::vector<uint8_t>(48)) << bits;
  }
}

TEST_F(Cells, AnUnframedPictureIsWrittenAtOnce) {
  host.openBody(4, 4, 0.254);
  std::vector<uint8_t> pixels;
  for (uint8_t i = 0; i < 48; ++i) pixels.push_back(i);
  EXPECT_EQ(host.send(Host::cellArray(4, 4, 24, pixels)), 0);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  EXPECT_EQ(lpEMData->nCellRowsDone, 0u);
  // No conversion and equal heights: the one report is the half-way one.
  ASSERT_EQ(host.calls.size(), 2u);
  EXPECT_EQ(host.calls[1].values[3], 50u);
  host.finish();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.width(), 4u);
  ASSERT_EQ(support::uncompressedRows(file).size(), 48u);
  EXPECT_EQ(support::uncompressedRows(file)[0], 38) << "buffer row 3, red and blue exchanged";
}

TEST_F(Cells, AnUnframedBottomUpPictureMissesItsLastRow) {
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  host.openBody(4, 4, 0.254);
  host.send(Host::cellArray(4, 4, 8, numberedRows(4, 4, 1), true));
  host.finish();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  const auto rows = support::uncompressedRows(file);
  ASSERT_EQ(rows.size(), 16u);
  EXPECT_EQ(rows[0], 0);
  EXPECT_EQ(rows[4], 1);
  EXPECT_EQ(rows[8], 2);
  EXPECT_EQ(rows[12], 3);
}

// Shrinking and a change of depth each count for 20 percent; then half-way is reported.
TEST_F(Cells, UnframedConversionsReportTheirProgress) {
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  host.settings().dWidth = 0.5;
  host.settings().dHeight = 0.5;
  host.openBody(100, 100);
  host.send(Host::cellArray(100, 100, 24, std::vector<uint8_t>(100 * 300, 90)));
  std::vector<HostWord> percents;
  for (size_t i = 1; i < host.calls.size(); ++i) percents.push_back(host.calls[i].values[3]);
  EXPECT_EQ(percents, (std::vector<HostWord>{20, 40, 50}));
  host.finish();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.width(), 48u);
  EXPECT_EQ(file.height(), 48u);
}

TEST_F(Cells, UnframedStretchingReportsToo) {
  host.settings().dWidth = 2.0;
  host.settings().dHeight = 2.0;
  host.openBody(16, 16);
  host.send(Host::cellArray(16, 16, 24, std::vector<uint8_t>(16 * 48, 90)));
  std::vector<HostWord> percents;
  for (size_t i = 1; i < host.calls.size(); ++i) percents.push_back(host.calls[i].values[3]);
  EXPECT_EQ(percents, (std::vector<HostWord>{20, 50}));
}

TEST_F(Cells, ARefusedReportAbandonsAnUnframedPicture) {
  host.openBody(16, 16);
  host.refuseFrom = host.calls.size() + 1;
  host.send(Host::cellArray(16, 16, 24, std::vector<uint8_t>(16 * 48, 90)));
  host.refuseFrom = 0;
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  host.finish();
  EXPECT_TRUE(support::readFile(dir.file("cells.tif")).empty());
}

TEST_F(Cells, WithoutASetupOutputFails) {
  host.record_[RAXEL_START_SETUP] = 0;
  host.openBody(4, 4);
  EXPECT_EQ(host.send(Host::cellArray(4, 1, 8, {1, 2, 3, 4})), RAXEL_NO_MEMORY);
  host.beginRaster(4, 4, 8);
  EXPECT_EQ(host.endRaster(), RAXEL_NO_MEMORY);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
}

TEST_F(Cells, AnUnknownBitmapModeWritesNothing) {
  host.settings().nBitmapMode = 220;
  host.openBody(4, 4);
  EXPECT_EQ(host.send(Host::cellArray(4, 4, 8, std::vector<uint8_t>(16))), 0);
  host.finish();
  EXPECT_TRUE(support::readFile(dir.file("cells.tif")).empty());
}

TEST_F(Cells, SeveralPicturesLeaveTheFirstDirectoryToTheLast) {
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  for (int picture = 0; picture < 2; ++picture) {
    host.beginBody(4, 4, 0.254);
    host.send(Host::cellArray(4, 4, 8, numberedRows(4, 4, static_cast<uint8_t>(1 + 10 * picture))));
    host.send(RAXEL_OP_END_PICTURE);
  }
  host.send(RAXEL_OP_CLOSE_DEVICE);
  host.terminate();
  const auto bytes = support::readFile(dir.file("cells.tif"));
  // Two whole files one after the other, and the patches of both go to the first.
  const size_t one = 8 + 2 + 14 * 12 + 4 + 768 * 2 + 16 + 16;
  EXPECT_EQ(bytes.size(), 2 * one);
}

// Four channels are reached only by calling the function itself.
TEST_F(Cells, FourChannelPicturesLoseTheFourthBeforeDepthsChange) {
  for (int32_t kind : {2, 3}) {
    host.settings().nBitmapMode = RAXEL_STORED_MODE_RGB;
    host.initialise();
    host.send(RAXEL_OP_OPEN_DEVICE);
    lpEMData->DevWindow[3] = 3;
    lpEMData->DevWindow[4] = 3;
    Handle pixels = support::newBlock(64);
    auto *p = static_cast<uint8_t *>(GlobalLock(pixels));
    for (int i = 0; i < 16; ++i) {
      const uint8_t pixel[4] = {10, 200, 30, 100};
      std::memcpy(p + i * 4, pixel, 4);
    }
    RasterWriteCellData(pixels, 4, 4, 100, 32, kind);
    GlobalFree(pixels);
    host.terminate();
    const auto bytes = support::readFile(dir.file("cells.tif"));
    const auto file = support::readTiff(bytes);
    ASSERT_TRUE(file.ok()) << file.error;
    const auto rows = support::uncompressedRows(file);
    ASSERT_EQ(rows.size(), 48u);
    // The writer exchanges the first and third byte of every pixel.
    EXPECT_EQ(rows[0], kind == 2 ? 155 : 30) << kind;
    EXPECT_EQ(rows[1], kind == 2 ? 55 : 200) << kind;
    EXPECT_EQ(rows[2], kind == 2 ? 155 : 10) << kind;
  }
}

// A fourth channel is dropped on the way to fewer bits only: pixels of 24 bits have none to lose.
TEST_F(Cells, ThreeChannelsOfTheOutputsDepthStayWhateverTheirKind) {
  for (const int32_t kind : {RAXEL_RASTER_CMYK, RAXEL_RASTER_ALPHA}) {
    host.settings().nBitmapMode = RAXEL_STORED_MODE_RGB;
    host.initialise();
    host.send(RAXEL_OP_OPEN_DEVICE);
    lpEMData->DevWindow[3] = 3;
    lpEMData->DevWindow[4] = 3;
    const Handle pixels = support::newBlock(48);
    auto *p = static_cast<uint8_t *>(GlobalLock(pixels));
    for (uint8_t i = 0; i < 48; ++i) p[i] = static_cast<uint8_t>(i < 36 ? i : 100 + i % 3);
    RasterWriteCellData(pixels, 4, 4, 100, 24, kind);
    GlobalFree(pixels);
    host.terminate();
    const auto bytes = support::readFile(dir.file("cells.tif"));
    const auto file = support::readTiff(bytes);
    ASSERT_TRUE(file.ok()) << file.error;
    const auto rows = support::uncompressedRows(file);
    ASSERT_EQ(rows.size(), 48u);
    // The last row is the first of the file, and the first and third byte of every pixel are exchanged.
    EXPECT_EQ(std::vector<uint8_t>(rows.begin(), rows.begin() + 6),
              (std::vector<uint8_t>{102, 101, 100, 102, 101, 100}))
        << kind;
    EXPECT_EQ(std::vector<uint8_t>(rows.end() - 3, rows.end()), (std::vector<uint8_t>{11, 10, 9})) << kind;
  }
}

TEST_F(Cells, WithoutARecordOrAStateNothingIsDone) {
  host.initialise();
  const uint8_t record[64] = {};
  const auto word = reinterpret_cast<HostWord>(record);
  EXPECT_EQ(d_gdp(0), 0u);
  EXPECT_EQ(d_ca(0), 0u);
  RasterDriverState *state = std::exchange(lpEMData, nullptr);
  EXPECT_EQ(d_gdp(word), word);
  EXPECT_EQ(d_ca(word), word);
  lpEMData = state;
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
}

}  // namespace
