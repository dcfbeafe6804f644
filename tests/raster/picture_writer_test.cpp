// SPDX-License-Identifier: MIT
// Unframed pictures whose target is wider than their rows, and hosts that take the settings away.
#include <gtest/gtest.h>

#include <utility>

#include "raster/session.h"
#include "support/blocks.h"
#include "support/temp_dir.h"
#include "support/tiff_reader.h"

namespace {

using raster_test::Host;

// Pixels of 0.254 mm, 100 to an inch, written at 200 by 100 dots per inch: the target has the rows'
// height and twice their width, so nothing is scaled.
class WideTarget : public testing::Test {
 protected:
  WideTarget() : host(dir.file("wide.tif")) {
    host.settings().nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
    host.settings().tiff.nXResolution = 200;
    host.settings().tiff.nYResolution = 100;
  }

  // One cell array of 64 by 8 pixels of the value 0 with this colour table, in this bitmap mode. The
  // file's rows.
  std::vector<uint8_t> rowsOfZeros(int32_t mode, int32_t bits, const std::vector<uint8_t> &colors) {
    host.settings().nBitmapMode = mode;
    host.openBody(64, 8, 0.254);
    host.setColors(0, colors);
    const std::vector<uint8_t> zeros(static_cast<size_t>(64 * bits));
    EXPECT_EQ(host.send(Host::cellArray(64, 8, bits, zeros)), 0);
    host.finish();
    const auto bytes = support::readFile(dir.file("wide.tif"));
    const auto file = support::readTiff(bytes);
    EXPECT_TRUE(file.ok()) << file.error;
    EXPECT_EQ(file.width(), 128u);
    EXPECT_EQ(file.height(), 8u);
    return support::uncompressedRows(file);
  }

  support::TempDir dir;
  Host host;
};

TEST_F(WideTarget, PixelsPastTheBlockAreInvertedLikeTheOthers) {
  // Entry 0 is white, so a clear bit becomes a set one.
  EXPECT_EQ(rowsOfZeros(RAXEL_STORED_MODE_BILEVEL, 1, {255, 255, 255}), std::vector<uint8_t>(16 * 8, 0xFF));
}

TEST_F(WideTarget, PixelsPastTheBlockAreRemappedLikeTheOthers) {
  std::vector<uint8_t> descending;
  for (int level = 255; level >= 0; --level)
    descending.insert(descending.end(), 3, static_cast<uint8_t>(level));
  const auto rows = rowsOfZeros(RAXEL_STORED_MODE_GREY256, 8, descending);
  ASSERT_EQ(rows.size(), 128u * 8);
  // Mapped bytes move one towards the row's start, and the last byte of a row may come from another
  // chunk: the others are all index 0, which is white.
  for (size_t at = 0; at < rows.size(); ++at) {
    if (at % 128 != 127) {
      ASSERT_EQ(rows[at], rows[0]) << at;
    }
  }
  EXPECT_GE(rows[0], 254) << "give or take the sum of three doubles";
}

TEST_F(WideTarget, ATargetThatNoBlockHoldsLeavesNoFileStructure) {
  // Two thousand million columns of three bytes.
  host.settings().nBitmapMode = RAXEL_STORED_MODE_RGB;
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  host.send(RAXEL_OP_BEGIN_PICTURE);
  host.setWindow(0, 0, 1e9 - 1, 7);
  host.setResolution(0.254);
  host.send(RAXEL_OP_BEGIN_BODY);
  EXPECT_EQ(host.send(Host::cellArray(4, 8, 24, std::vector<uint8_t>(96))), 0);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  host.finish();
  EXPECT_TRUE(support::readFile(dir.file("wide.tif")).empty());
}

TEST_F(WideTarget, TheCallersBlockStaysAsLongAsItWas) {
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  lpEMData->DevWindow[3] = 63;
  lpEMData->DevWindow[4] = 7;
  const Handle pixels = support::newBlock(64 * 8);
  RasterWriteCellData(pixels, 64, 8, 100, 8, RAXEL_RASTER_INDEXED);
  EXPECT_EQ(GlobalSize(pixels), 512u);
  GlobalFree(pixels);
}

TEST_F(WideTarget, OneDotAnInchIsAResolution) {
  host.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  host.settings().nResolutionMode = RAXEL_STORED_RESOLUTION_PICTURE;
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  lpEMData->DevWindow[3] = 15;
  lpEMData->DevWindow[4] = 7;
  const Handle pixels = support::newBlock(8 * 4);
  RasterWriteCellData(pixels, 8, 4, 1, 8, RAXEL_RASTER_INDEXED);
  GlobalFree(pixels);
  host.finish();
  const auto bytes = support::readFile(dir.file("wide.tif"));
  const auto file = support::readTiff(bytes);
  EXPECT_EQ(file.width(), 16u) << "the window's";
  EXPECT_EQ(file.height(), 8u);
}

// Pixels of 0.254 mm: 100 dots per inch are a target of the array's own size, 50 half of it, 200 twice.
class OtherWidth : public testing::Test {
 protected:
  OtherWidth() : host(dir.file("width.tif")) {
    host.settings().nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
    host.settings().tiff.nYResolution = 100;
  }

  // The rows of the file that an array of 8 by 4 pixels becomes, whose bytes are 0 to 95.
  std::vector<uint8_t> rowsAt(int16_t xResolution, uint32_t expectedWidth) {
    host.settings().tiff.nXResolution = xResolution;
    host.openBody(8, 4, 0.254);
    std::vector<uint8_t> pixels(96);
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i);
    EXPECT_EQ(host.send(Host::cellArray(8, 4, 24, pixels)), 0);
    EXPECT_EQ(host.calls.back().values[3], 50u);
    EXPECT_EQ(host.calls.size(), 2u) << "the start of the session, and half-way: nothing was scaled";
    host.finish();
    const auto bytes = support::readFile(dir.file("width.tif"));
    const auto file = support::readTiff(bytes);
    EXPECT_TRUE(file.ok()) << file.error;
    EXPECT_EQ(file.width(), expectedWidth);
    EXPECT_EQ(file.height(), 4u);
    return support::uncompressedRows(file);
  }

  // The bytes from `first` on, the first and third of each three exchanged.
  static void addPixels(std::vector<uint8_t> &out, int first, int pixels) {
    for (int at = first; at < first + 3 * pixels; at += 3) {
      for (const int channel : {2, 1, 0}) out.push_back(static_cast<uint8_t>(at + channel));
    }
  }

  support::TempDir dir;
  Host host;
};

// The heights are equal, so nothing is shrunk: rows of 12 bytes are read where 24 were meant, from the
// fourth one down.
TEST_F(OtherWidth, ANarrowerTargetAloneShrinksNothing) {
  std::vector<uint8_t> expected;
  for (const int row : {3, 2, 1, 0}) addPixels(expected, row * 12, 4);
  EXPECT_EQ(rowsAt(50, 4), expected);
}

// Nor is anything stretched: rows of 48 bytes take the block for two, and the upper two are zeros.
TEST_F(OtherWidth, AWiderTargetAloneStretchesNothing) {
  std::vector<uint8_t> expected(2 * 48);
  for (const int row : {1, 0}) addPixels(expected, row * 48, 16);
  EXPECT_EQ(rowsAt(200, 16), expected);
}

class TakenAway : public testing::Test {
 protected:
  TakenAway() : host(dir.file("gone.tif")) {}
  support::TempDir dir;
  Host host;
};

TEST_F(TakenAway, ASetupDestroyedInTheReportIsError300) {
  host.openBody(4, 4);
  host.action = [this] {
    if (host.calls.back().values[3] == 50) host.destroySetup();
  };
  EXPECT_EQ(host.send(Host::cellArray(4, 4, 24, std::vector<uint8_t>(48))), RAXEL_NO_MEMORY);
  EXPECT_EQ(host.setup_, 0u);
  EXPECT_EQ(lpEMData->hCellBuf, 0u);
  host.action = nullptr;
  host.finish();
  EXPECT_TRUE(support::readFile(dir.file("gone.tif")).empty());
}

TEST_F(TakenAway, AStopIsNoErrorOfThePicture) {
  host.openBody(4, 4);
  host.refuseFrom = host.calls.size() + 1;
  EXPECT_EQ(host.send(Host::cellArray(4, 4, 24, std::vector<uint8_t>(48))), 0);
  host.refuseFrom = 0;
}

TEST_F(TakenAway, ASessionEndedInTheReportLeavesNothingToAnswer) {
  host.openBody(4, 4);
  host.action = [this] {
    host.action = nullptr;
    host.terminate();
  };
  EXPECT_EQ(host.send(Host::cellArray(4, 4, 24, std::vector<uint8_t>(48))), 0);
  EXPECT_EQ(lpEMData, nullptr);
}

// A new frame has a buffer of its own; that of the picture which is written stays until it is.
TEST(TakesNothingAway, AFrameBegunInTheReport) {
  const auto written = [](bool begins) {
    support::TempDir dir;
    Host host(dir.file("frame.tif"));
    host.openBody(96, 96);
    host.action = [&host, begins] {
      host.action = nullptr;
      if (begins) host.beginRaster(4, 4, 8);
    };
    EXPECT_EQ(host.send(Host::cellArray(96, 96, 24, std::vector<uint8_t>(96 * 96 * 3, 7))), 0);
    host.action = nullptr;
    host.terminate();
    return support::readFile(dir.file("frame.tif"));
  };
  EXPECT_GT(written(false).size(), 96u * 96u);
  EXPECT_EQ(written(true), written(false));
}

TEST_F(TakenAway, WithoutASetupTheWriterItselfPushes300) {
  host.record_[RAXEL_START_SETUP] = 0;
  host.initialise();
  const Handle pixels = support::newBlock(16);
  RasterWriteCellData(pixels, 4, 4, 0, 8, RAXEL_RASTER_INDEXED);
  EXPECT_EQ(lpEMData->nLastError, RAXEL_NO_MEMORY);
  GlobalFree(pixels);
}

TEST_F(WideTarget, WithoutPixelsOrAStateNothingIsWritten) {
  host.openBody(4, 4, 0.254);
  RasterWriteCellData(0, 4, 4, 0, 8, RAXEL_RASTER_INDEXED);
  const Handle pixels = support::newBlock(16);
  RasterDriverState *state = std::exchange(lpEMData, nullptr);
  RasterWriteCellData(pixels, 4, 4, 0, 8, RAXEL_RASTER_INDEXED);
  lpEMData = state;
  GlobalFree(pixels);
  host.finish();
  EXPECT_EQ(support::readFile(dir.file("wide.tif")).size(), 0u);
}

}  // namespace
