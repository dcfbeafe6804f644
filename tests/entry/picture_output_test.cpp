// SPDX-License-Identifier: MIT
// The pipeline: stages, bands, progress, and what is left after a failure.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "entry/drawn_picture.h"
#include "entry/export_host.h"
#include "raxel/stream.h"
#include "raxel/tiff.h"
#include "support/stream_procedure.h"
#include "support/threads.h"
#include "support/tiff_reader.h"

namespace {

using entry_test::Bytes;
using entry_test::DrawnPicture;
using entry_test::ExportHost;
using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

class PictureOutput : public testing::Test {
 protected:
  PictureOutput() { host_.settings().lpStatus = host_.status.record(); }

  // Draws a picture of this many pixels (at 96 dots per inch) to a host stream.
  int32_t output(double width, double height) {
    KvlStreamDesc desc = {};
    desc.lpMemVar = stream_.context();
    desc.lpfnProc = stream_.procedureWord();
    const Handle file = kvlOpen("out", &desc, KVL_OUTPUT);
    picture_.width = width / 96;
    picture_.height = height / 96;
    if (!keepRecord_) lpRaster = &host_.settings();
    const int32_t result = OutputPicture(file, this, DrawnPicture::draw);
    kvlClose(file);
    return result;
  }

  ExportHost host_;
  DrawnPicture picture_;
  support::HostStream stream_;
  bool keepRecord_ = false;
};

TEST_F(PictureOutput, QueriesOpensDrawsAndClosesInOrder) {
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(picture_.ops,
            (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_BAND, RAXEL_DRAW_CLOSE}));
}

TEST_F(PictureOutput, OneBandIsReportedOnceWith100) {
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(host_.status.percents(), std::vector<uint32_t>{100});
}

TEST_F(PictureOutput, ThreeBandsReport33And66And100) {
  picture_.bandRows = 2;
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(host_.status.percents(), (std::vector<uint32_t>{33, 66, 100}));
}

TEST_F(PictureOutput, SevenBandsReportTruncatedPercentages) {
  picture_.bandRows = 2;
  EXPECT_EQ(output(5, 14), 0);
  EXPECT_EQ(host_.status.percents(), (std::vector<uint32_t>{14, 28, 42, 57, 71, 85, 100}));
}

TEST_F(PictureOutput, BandsComeHighestRowsFirst) {
  picture_.bandRows = 40;
  EXPECT_EQ(output(5, 100), 0);
  EXPECT_EQ(picture_.ranges, (Ranges{{60, 100}, {20, 60}, {0, 20}}));
}

TEST_F(PictureOutput, RowsInTheFileRunFromTheTopDown) {
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  picture_.bandRows = 40;
  EXPECT_EQ(output(5, 100), 0);
  const auto file = support::readTiff(stream_.bytes());
  ASSERT_TRUE(file.ok()) << file.error;
  const Bytes rows = support::uncompressedRows(file);
  ASSERT_EQ(rows.size(), 500u);
  for (size_t y = 0; y < 100; ++y) EXPECT_EQ(rows[y * 5], 99 - y) << y;
}

TEST_F(PictureOutput, HeightsAreRoundedUpToEvenOnes) {
  EXPECT_EQ(output(5, 7), 0);
  EXPECT_EQ(picture_.ranges, (Ranges{{0, 8}}));
  const auto file = support::readTiff(stream_.bytes());
  EXPECT_EQ(file.width(), 5u) << "a width is not rounded";
  EXPECT_EQ(file.height(), 8u);
}

TEST_F(PictureOutput, MoreRowsThanThereAreAreCapped) {
  picture_.bandRows = 1000;
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(picture_.ranges, (Ranges{{0, 6}}));
  EXPECT_EQ(host_.status.percents(), std::vector<uint32_t>{100});
}

TEST_F(PictureOutput, TheRequestDescribesTheOutput) {
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR16;
  EXPECT_EQ(output(5, 7), 0);
  EXPECT_EQ(picture_.request[OFFSCREEN_WIDTH], 5u);
  EXPECT_EQ(picture_.request[OFFSCREEN_ROWS], 8u);
  EXPECT_EQ(picture_.request[OFFSCREEN_BITS], 4u);
  EXPECT_EQ(picture_.request[OFFSCREEN_COLORS], 16u);
  EXPECT_EQ(picture_.request[OFFSCREEN_PALETTE], reinterpret_cast<HostWord>(picture_.opened.lpPalette));
  EXPECT_NE(picture_.opened.lpPalette, nullptr);
  EXPECT_EQ(picture_.opened.nColors, 16);
  EXPECT_EQ(picture_.opened.nBandRows, 8u);
  EXPECT_EQ(picture_.opened.bFlag, 0);
  EXPECT_EQ(picture_.opened.lpPicture, this);
}

TEST_F(PictureOutput, TrueColorHasNoPalette) {
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(picture_.request[OFFSCREEN_COLORS], 0u);
  EXPECT_EQ(picture_.request[OFFSCREEN_PALETTE], 0u);
}

// ---- Nothing to write

TEST_F(PictureOutput, NoBandRowsIs27AndCloses) {
  picture_.refusesRows = true;
  EXPECT_EQ(output(5, 6), RAXEL_NO_FORMAT);
  EXPECT_EQ(picture_.ops, (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_CLOSE}));
  EXPECT_TRUE(stream_.bytes().empty());
}

TEST_F(PictureOutput, AModeWithoutDepthIs27AndNothingIsWritten) {
  for (int32_t mode : {0, 220, 214, 223}) {
    host_.settings().nBitmapMode = mode;
    EXPECT_EQ(output(5, 6), RAXEL_NO_FORMAT) << mode;
  }
  EXPECT_TRUE(stream_.bytes().empty());
  EXPECT_EQ(picture_.ops,
            (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_QUERY, RAXEL_DRAW_QUERY, RAXEL_DRAW_QUERY}))
      << "never opened";
}

TEST_F(PictureOutput, WithoutHeightIs27) {
  EXPECT_EQ(output(5, 0), RAXEL_NO_FORMAT);
  EXPECT_EQ(output(5, -3), RAXEL_NO_FORMAT);
  EXPECT_TRUE(stream_.bytes().empty());
}

TEST_F(PictureOutput, AHeightThatRoundsPast32BitsIs27) {
  // 4294967295 is rounded up to 2^32, of which 32 bits keep 0.
  EXPECT_EQ(output(5, 1e30), RAXEL_NO_FORMAT);
}

TEST_F(PictureOutput, WithoutWidthIs300) {
  EXPECT_EQ(output(0, 6), RAXEL_NO_MEMORY);
}

// The writing finds it out, behind header and directory.
TEST_F(PictureOutput, ABandThatNoBlockHoldsIs300FromTheWriting) {
  picture_.noPixels = true;
  EXPECT_EQ(output(100000, 1e6), RAXEL_NO_MEMORY);
  EXPECT_EQ(picture_.ops,
            (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_BAND, RAXEL_DRAW_CLOSE}));
  // 8 bytes of header, 13 entries, no further directory, two resolutions: one strip of 3e11 bytes.
  EXPECT_EQ(stream_.bytes().size(), 8u + 2 + 13 * 12 + 4 + 16);
  EXPECT_TRUE(host_.status.calls.empty());
}

TEST_F(PictureOutput, ABandThatNoBlockHoldsWithGigabytesOfTilesIs300BeforeAnythingIsWritten) {
  host_.settings().tiff.wLayoutMode =
      RAXEL_STORED_LAYOUT_TILES;  // a directory of 65535 times ten million tiles otherwise
  host_.settings().nCompressionMode = RAXEL_STORED_COMPRESS_T6;
  EXPECT_EQ(output(33553920, 1e9), RAXEL_NO_MEMORY);
  EXPECT_EQ(picture_.ops, (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_CLOSE}));
  EXPECT_TRUE(stream_.bytes().empty());
}

TEST_F(PictureOutput, SoDoAFewMoreThanEightMillionTiles) {
  host_.settings().tiff.wLayoutMode = RAXEL_STORED_LAYOUT_TILES;
  host_.settings().nCompressionMode = RAXEL_STORED_COMPRESS_T6;
  EXPECT_EQ(output(512 * 1024, 128 * 8193), RAXEL_NO_MEMORY);  // 8,389,632; the limit is 8,388,608
  EXPECT_TRUE(stream_.bytes().empty());
}

// Beyond 1,024 by 8,192 tiles.
TEST_F(PictureOutput, SoDoesARowOrColumnOfTilesThatIsBegun) {
  host_.settings().tiff.wLayoutMode = RAXEL_STORED_LAYOUT_TILES;
  host_.settings().nCompressionMode = RAXEL_STORED_COMPRESS_T6;
  constexpr double kWidth = 512 * 1024, kHeight = 128 * 8192;
  EXPECT_EQ(output(kWidth + 1, kHeight), RAXEL_NO_MEMORY);
  EXPECT_EQ(output(kWidth, kHeight + 2), RAXEL_NO_MEMORY);
  EXPECT_TRUE(stream_.bytes().empty());
  // As many are listed, here on a disk that takes nothing but the header.
  picture_.noPixels = true;
  stream_.keepNoLog();
  stream_.limitTo(8);
  EXPECT_EQ(output(kWidth, kHeight), RAXEL_NO_MEMORY);
  EXPECT_EQ(stream_.bytes().size(), 8u);
}

TEST_F(PictureOutput, WithoutSettingsIs27) {
  keepRecord_ = true;
  lpRaster = nullptr;
  EXPECT_EQ(output(5, 6), RAXEL_NO_FORMAT);
}

TEST_F(PictureOutput, WithoutADrawProcedureIs27) {
  lpRaster = &host_.settings();
  EXPECT_EQ(OutputPicture(0, this, nullptr), RAXEL_NO_FORMAT);
}

TEST_F(PictureOutput, ABandWithoutPixelsIs300AndCloses) {
  picture_.noPixels = true;
  EXPECT_EQ(output(5, 6), RAXEL_NO_MEMORY);
  EXPECT_EQ(picture_.ops,
            (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_BAND, RAXEL_DRAW_CLOSE}));
  EXPECT_TRUE(host_.status.calls.empty()) << "only a band that was written is reported";
}

// ---- Stopping

TEST_F(PictureOutput, AStopLeavesTheRestUndrawn) {
  picture_.bandRows = 2;
  host_.status.answers = {0, 1, 1};  // the second report, and its follow-up
  EXPECT_EQ(output(5, 6), RAXEL_STOPPED);
  EXPECT_EQ(picture_.ops, (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_BAND,
                                                 RAXEL_DRAW_BAND, RAXEL_DRAW_CLOSE}));
}

TEST_F(PictureOutput, ARefusalTakenBackGoesOn) {
  picture_.bandRows = 2;
  host_.status.answers = {1, 0, 1, 0, 1, 0};
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(host_.status.calls.size(), 6u);
}

TEST_F(PictureOutput, AStopAtEveryReportReleasesEverything) {
  picture_.bandRows = 2;
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  for (size_t report = 0; report < 5; ++report) {
    host_.status.calls.clear();
    host_.status.answers.assign(report, 0);
    host_.status.answers.insert(host_.status.answers.end(), {1, 1});
    EXPECT_EQ(output(5, 10), RAXEL_STOPPED) << report;
    EXPECT_EQ(host_.status.percents().size(), report + 1);
  }
}

// ---- Callbacks that call back

TEST_F(PictureOutput, ACallbackThatLocksAnotherSetupChangesNothing) {
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  picture_.bandRows = 2;
  EXPECT_EQ(output(5, 6), 0);
  const Bytes expected = stream_.bytes();

  const Handle other = CreateSetup(0, "none", nullptr, nullptr);
  constexpr int32_t kNoEscape = 40;
  const auto lockOther = [other] { xEscapeSetup(other, kNoEscape, 0, nullptr, nullptr, 0); };
  picture_.action = [&](HostWord) { lockOther(); };
  host_.status.action = lockOther;
  stream_.bytes().clear();
  EXPECT_EQ(output(5, 6), 0);
  EXPECT_EQ(stream_.bytes(), expected);
  EXPECT_EQ(lpRaster, &host_.settings());
  DestroySetup(other);
}

TEST_F(PictureOutput, ACallbackThatDestroysAnotherSetupChangesNothing) {
  picture_.action = [](HostWord) { DestroySetup(CreateSetup(0, "none", nullptr, nullptr)); };
  EXPECT_EQ(output(5, 6), 0);
}

TEST_F(PictureOutput, ACallbackThatDestroysTheSetupEndsThePicture) {
  for (HostWord when : {HostWord{0}, HostWord{1}, HostWord{3}}) {
    ExportHost host;
    lpRaster = &host.settings();
    keepRecord_ = true;
    picture_.ops.clear();
    picture_.action = [&](HostWord op) {
      if (op != when) return;
      DestroySetup(host.setup());
      host.forgetSetup();
    };
    EXPECT_EQ(output(5, 6), RAXEL_NO_MEMORY) << when;
    EXPECT_EQ(picture_.ops.back(), when == 0 ? 0u : 2u) << "closed when it was open";
  }
}

TEST_F(PictureOutput, AReportThatDestroysTheSetupEndsThePicture) {
  host_.status.action = [&] {
    DestroySetup(host_.setup());
    host_.forgetSetup();
  };
  EXPECT_EQ(output(5, 6), RAXEL_NO_MEMORY);
  EXPECT_EQ(picture_.ops,
            (std::vector<HostWord>{RAXEL_DRAW_QUERY, RAXEL_DRAW_OPEN, RAXEL_DRAW_BAND, RAXEL_DRAW_CLOSE}));
}

// ---- Strips that are coded side by side

struct Coded {
  int32_t mode, compression;
};
constexpr Coded kCoded[] = {{RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_LZW},
                            {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6}};

TEST_F(PictureOutput, ThreadsChangeNothingThatAHostSees) {
  for (const auto &[mode, compression] : kCoded) {
    host_.settings().nBitmapMode = mode;
    host_.settings().nCompressionMode = compression;
    picture_.bandRows = 50;
    struct Seen {
      std::vector<uint32_t> percents;
      std::string calls;
      Bytes file;
      std::vector<HostWord> ops;
      bool operator==(const Seen &) const = default;
    };
    std::vector<Seen> seen;
    for (const uint32_t threads : {1u, 8u}) {
      const support::Threads forced(threads);
      host_.status.calls.clear();
      stream_.clearLog();
      stream_.bytes().clear();
      picture_.ops.clear();
      EXPECT_EQ(output(301, 150), 0);
      seen.push_back({host_.status.percents(), stream_.log(), stream_.bytes(), picture_.ops});
    }
    EXPECT_EQ(seen[0].percents, (std::vector<uint32_t>{33, 66, 100}));
    EXPECT_TRUE(seen[0] == seen[1]) << mode;
  }
}

TEST_F(PictureOutput, ADestroyedSetupEndsThePictureOnManyThreadsToo) {
  const support::Threads forced(8);
  for (const auto &[mode, compression] : kCoded) {
    ExportHost host;
    host.settings().nBitmapMode = mode;
    host.settings().nCompressionMode = compression;
    lpRaster = &host.settings();
    keepRecord_ = true;
    picture_.bandRows = 50;
    size_t bands = 0;
    picture_.action = [&](HostWord op) {
      if (op != RAXEL_DRAW_BAND || ++bands < 2) return;  // strips of the first have been coded
      DestroySetup(host.setup());
      host.forgetSetup();
    };
    EXPECT_EQ(output(301, 150), RAXEL_NO_MEMORY) << mode;
    EXPECT_EQ(bands, 2u);
  }
}

// ---- Streams that fail

TEST_F(PictureOutput, AStreamThatFailsAtAnyCallEndsWith0Or303) {
  picture_.bandRows = 2;
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  ASSERT_EQ(output(5, 6), 0);
  const size_t calls = stream_.calls().size();
  size_t failures = 0;
  for (size_t n = 2; n < calls; ++n) {  // from the first call after the open
    support::HostStream failing;
    failing.failAt(n);
    KvlStreamDesc desc = {};
    desc.lpMemVar = failing.context();
    desc.lpfnProc = failing.procedureWord();
    const Handle file = kvlOpen("out", &desc, KVL_OUTPUT);
    lpRaster = &host_.settings();
    const int32_t result = OutputPicture(file, this, DrawnPicture::draw);
    kvlClose(file);
    EXPECT_TRUE(result == 0 || result == RAXEL_CANNOT_WRITE) << n << ": " << result;
    failures += result == RAXEL_CANNOT_WRITE ? 1 : 0;
  }
  EXPECT_GT(failures, calls / 2) << "a disk that stays full is noticed with the first row of pixels";
}

TEST_F(PictureOutput, ADiskThatFillsUpIs303WhileRowsAreWritten) {
  picture_.bandRows = 2;
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  ASSERT_EQ(output(5, 6), 0);
  const size_t size = stream_.bytes().size();
  for (size_t room : {size - 1, size - 15, size - 29}) {
    stream_.bytes().clear();
    stream_.limitTo(room);
    EXPECT_EQ(output(5, 6), RAXEL_CANNOT_WRITE) << room;
  }
}

}  // namespace
