// SPDX-License-Identifier: MIT
// The one-call export: where the output goes, what it answers, and what it leaves behind.
#include <gtest/gtest.h>

#include <string>

#include "entry/export_host.h"
#include "raxel/stream.h"
#include "support/stream_procedure.h"
#include "support/temp_dir.h"
#include "support/tiff_reader.h"

namespace {

using entry_test::Bytes;
using entry_test::CellInfo;
using entry_test::ExportHost;
using entry_test::Picture;

const std::vector<Bytes> kRows = {{1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}};

class ExportCell : public testing::Test {
 protected:
  // Sends the output through the stream procedure.
  void useStream() {
    host_.settings().lpfnOutputProc = stream_.procedure();
    host_.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream_.context();
  }
  Bytes expected() {
    Picture picture(24, 2, kRows);
    ExportHost plain;
    return plain.runInMemory(picture);
  }

  support::TempDir folder_;
  support::HostStream stream_;
  ExportHost host_;
};

// ---- Three ways out

TEST_F(ExportCell, AFileNameIsCreated) {
  const Bytes bytes = expected();
  ExportHost host;
  Picture picture(24, 2, kRows);
  const std::string path = folder_.file("out.tif");
  EXPECT_EQ(host.run(path.c_str(), picture), 0u);
  EXPECT_EQ(support::readFile(path), bytes);
  EXPECT_EQ(bytes.size(), 198u);
}

// The profile's key for it has the name that the string table lacks.
TEST_F(ExportCell, ATiledSetupFromAProfileMakesATiledFile) {
  support::writeFile(folder_.file("raxel.ini"),
                     "[PAGES]\nDriver=D\nBitmap Mode=215\nCompression Mode=230\nNot Defined=771\n");
  const Handle setup = CreateSetup(0, folder_.file("raxel.ini").c_str(), "PAGES", "");
  host_.exportRecord()[2] = setup;
  Picture white(1, 8, {{0}, {0}}, {255, 255, 255, 0, 0, 0});
  const Bytes bytes = host_.runInMemory(white);
  const support::TiffFile file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.value(322), 512u);
  EXPECT_EQ(file.value(323), 128u);
  EXPECT_EQ(file.find(273), nullptr) << "and no strips";
  EXPECT_EQ(file.find(278), nullptr);
  // 128 white rows below a white one: 128 times V0, a bit each.
  EXPECT_EQ(file.value(325), 16u);
  EXPECT_EQ(Bytes(file.piece(0).begin(), file.piece(0).end()), Bytes(16, 0xFF));
  DestroySetup(setup);
}

TEST_F(ExportCell, ByNameReplacesWhatWasThere) {
  const std::string path = folder_.file("out.tif");
  support::writeFile(path, std::string(100000, 'x'));
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(path.c_str(), picture), 0u);
  EXPECT_EQ(support::readFile(path).size(), 198u);
}

TEST_F(ExportCell, ThroughAStreamProcedureThatIsToldTheName) {
  useStream();
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run("picture.tif", picture), 0u);
  ASSERT_GE(stream_.calls().size(), 2u);
  EXPECT_EQ(stream_.calls().front().name, "picture.tif");
  EXPECT_EQ(stream_.calls().front().number, 4097);
  EXPECT_EQ(stream_.calls().back().op, support::HostStream::kClose);
  EXPECT_EQ(stream_.calls().back().number, 0);
  EXPECT_EQ(stream_.bytes().size(), 198u);
  EXPECT_TRUE(support::readTiff(stream_.bytes()).ok());
}

TEST_F(ExportCell, AStreamProcedureNeedsNoName) {
  useStream();
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(nullptr, picture), 0u);
  EXPECT_EQ(stream_.bytes().size(), 198u);
}

TEST_F(ExportCell, IntoABlockWhoseHandleIsInWord6) {
  for (const char *noName : {static_cast<const char *>(nullptr), ""}) {
    Picture picture(24, 2, kRows);
    EXPECT_EQ(host_.run(noName, picture), 0u);
    const Handle block = host_.status.word(RAXEL_STATUS_OUTPUT);
    ASSERT_NE(block, 0u);
    const Bytes bytes = entry_test::bytesOf(block);
    ASSERT_GT(bytes.size(), 198u);
    EXPECT_EQ(bytes[0], 'I');
    EXPECT_EQ(bytes[198], 0xFF) << "closing appends one byte";
    for (size_t i = 199; i < bytes.size(); ++i) ASSERT_EQ(bytes[i], 0) << "spare room";
    GlobalFree(block);
  }
}

TEST_F(ExportCell, TheBlocksHandleIsGoodHoweverOftenItGrew) {
  const std::vector<Bytes> rows(200, Bytes(200 * 3, 0x42));
  Picture picture(24, 200, rows);
  EXPECT_EQ(host_.run(nullptr, picture), 0u);
  const Bytes bytes = entry_test::bytesOf(host_.status.word(RAXEL_STATUS_OUTPUT));
  EXPECT_GE(bytes.size(), 186u + 120000u + 1u);
  EXPECT_EQ(bytes[186 + 119999], 0x42);
  EXPECT_EQ(bytes[186 + 120000], 0xFF);
  GlobalFree(host_.status.word(RAXEL_STATUS_OUTPUT));
}

TEST_F(ExportCell, ABlockThatNobodyCanFindIsFreed) {
  host_.exportRecord()[6] = 0;
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(nullptr, picture), 0u);
  EXPECT_EQ(host_.settings().lpStatus, nullptr);
}

TEST_F(ExportCell, WithoutAStatusRecordAProcedureGetsContextZero) {
  static HostWord seen;
  seen = 1;
  host_.settings().lpfnOutputProc = [](HostWord context, HostWord op, HostWord, HostWord) -> HostWord {
    if (op == KVL_OP_OPEN) seen = context;
    return 0;
  };
  host_.exportRecord()[6] = 0;
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(nullptr, picture), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(seen, 0u);
}

// ---- What it refuses

TEST_F(ExportCell, MissingRecordsAre22AndNothingIsOpened) {
  useStream();
  Picture picture(24, 2, kRows);
  const auto info = CellInfo().bytes();
  EXPECT_EQ(ExportCellData("a", nullptr, info.data(), host_.exportRecord()), 22u);
  EXPECT_EQ(ExportCellData("a", &picture.record(), nullptr, host_.exportRecord()), 22u);
  EXPECT_EQ(ExportCellData("a", &picture.record(), info.data(), nullptr), 22u);
  RasterSetup *const before = lpRaster;
  host_.exportRecord()[2] = 0;
  EXPECT_EQ(ExportCellData("a", &picture.record(), info.data(), host_.exportRecord()), 22u);
  EXPECT_EQ(lpRaster, before);
  EXPECT_TRUE(stream_.calls().empty());
}

TEST_F(ExportCell, AnOutputThatCannotBeOpenedIs303) {
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(folder_.file("no/such/folder.tif").c_str(), picture), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(host_.run(folder_.path().c_str(), picture), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(picture.record().dExtentX, 0.0) << "the picture is untouched";
  EXPECT_EQ(picture.pixels()[0], 1);
}

TEST_F(ExportCell, AProcedureThatRefusesIs303) {
  useStream();
  stream_.failAt(1);
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(nullptr, picture), RAXEL_CANNOT_WRITE);
}

// ---- What it sets

TEST_F(ExportCell, TakesGeometryFromTheInfo) {
  CellInfo info;
  info.displayResolution = 72;
  info.pictureResolution = 300;
  info.extentX = 600;
  info.extentY = -450;
  info.displayWidth = 1440;
  info.displayHeight = 720;
  host_.settings().nBitmapMode = 0;  // nothing is written
  Picture picture(24, 2, kRows);
  auto bytes = info.bytes();
  alignas(8) uint8_t unaligned[EXPORT_CELL_INFO_BYTES + 1];
  std::memcpy(unaligned + 1, bytes.data(), bytes.size());
  host_.exportRecord()[6] = 0;
  EXPECT_EQ(ExportCellData(nullptr, &picture.record(), unaligned + 1, host_.exportRecord()), 0u);
  EXPECT_EQ(picture.record().dExtentX, 600.0);
  EXPECT_EQ(picture.record().dExtentY, -450.0);
  EXPECT_EQ(picture.record().nResolution, 300);
  double width, height;
  int16_t x, y;
  GetDisplayInfo(&width, &height, &x, &y);
  EXPECT_EQ(width, 20.0);
  EXPECT_EQ(height, 10.0);
  EXPECT_EQ(x, 72);
  EXPECT_EQ(y, 72);
}

TEST_F(ExportCell, TheSetupBecomesTheCurrentOne) {
  lpRaster = nullptr;
  Picture picture(24, 2, kRows);
  host_.runInMemory(picture);
  EXPECT_EQ(lpRaster, &host_.settings());
  EXPECT_EQ(host_.settings().lpStatus, host_.status.record());
}

TEST_F(ExportCell, WorksInPlaceOnTheHostsPixels) {
  Picture picture(24, 2, kRows);
  host_.runInMemory(picture);
  EXPECT_EQ(picture.pixels(), (Bytes{3, 2, 1, 6, 5, 4, 0, 0, 9, 8, 7, 12, 11, 10, 0, 0}))
      << "blue and red of every pixel are swapped where they lie";
}

// ---- Success whatever became of the picture

TEST_F(ExportCell, AnswersZeroWhenThereIsNoFormat) {
  host_.settings().nBitmapMode = 220;
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.runInMemory(picture), Bytes());
  EXPECT_EQ(host_.run(folder_.file("empty.tif").c_str(), picture), 0u);
  EXPECT_EQ(support::readFile(folder_.file("empty.tif")).size(), 0u);
}

TEST_F(ExportCell, AnswersZeroWhenTheHostStopsIt) {
  host_.status.answers = {1, 1};
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.run(folder_.file("out.tif").c_str(), picture), 0u);
  EXPECT_EQ(host_.status.percents(), std::vector<uint32_t>{100});
}

TEST_F(ExportCell, AnswersZeroWithoutPixels) {
  Picture picture(24, 2, kRows);
  GlobalFree(picture.record().hBits);
  picture.record().hBits = 0;
  EXPECT_EQ(host_.run(folder_.file("out.tif").c_str(), picture), 0u);
  EXPECT_TRUE(host_.status.calls.empty()) << "nothing was written, so nothing is reported";
}

TEST_F(ExportCell, ReportsOnceWith100) {
  Picture picture(24, 2, kRows);
  host_.runInMemory(picture);
  EXPECT_EQ(host_.status.percents(), std::vector<uint32_t>{100});
}

TEST_F(ExportCell, ARefusalTakenBackWritesTheWholePicture) {
  const Bytes bytes = expected();
  ExportHost host;
  host.status.answers = {1, 0};
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host.runInMemory(picture), bytes);
}

// ---- Sizes

TEST_F(ExportCell, SevenRowsAreWrittenAsEight) {
  std::vector<Bytes> rows;
  for (uint8_t y = 0; y < 7; ++y) rows.push_back({y, y, y});
  Picture picture(24, 1, rows);
  const Bytes bytes = host_.runInMemory(picture);
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.height(), 8u);
  const Bytes written = support::uncompressedRows(file);
  ASSERT_EQ(written.size(), 24u);
  // The last row in the block is the picture's first; stretching from there on writes it once, and
  // row 0 of the block, the picture's last, twice.
  EXPECT_EQ(written[0], 6);
  EXPECT_EQ(written[18], 0);
  EXPECT_EQ(written[21], 0);
}

TEST_F(ExportCell, SizesOfZeroWriteNoPixels) {
  Picture picture(24, 2, kRows);
  EXPECT_EQ(host_.runInMemory(picture, 2, 0), Bytes()) << "no height, no format";
  Picture again(24, 2, kRows);
  host_.run(folder_.file("no-width.tif").c_str(), again, 0, 2);
  const Bytes bytes = support::readFile(folder_.file("no-width.tif"));
  const auto file = support::readTiff(bytes);
  EXPECT_EQ(file.width(), 0u) << "the directory is written before the first band fails";
  EXPECT_TRUE(host_.status.calls.empty());
}

TEST_F(ExportCell, OnePixelIsTwoRows) {
  Picture picture(24, 1, {{1, 2, 3}});
  const Bytes bytes = host_.runInMemory(picture);
  const auto file = support::readTiff(bytes);
  EXPECT_EQ(file.height(), 2u);
  EXPECT_EQ(support::uncompressedRows(file), (Bytes{3, 2, 1, 3, 2, 1}));
}

TEST_F(ExportCell, AFullRowOf65535PixelsKeepsItsWidth) {
  Picture picture(1, 65535, {Bytes(8192, 0x55), Bytes(8192, 0xAA)}, {0, 0, 0, 255, 255, 255});
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_BILEVEL;
  CellInfo info;
  info.pictureResolution = 96;
  info.extentX = 65535;
  info.extentY = 2;
  const auto infoBytes = info.bytes();
  EXPECT_EQ(ExportCellData(folder_.file("wide.tif").c_str(), &picture.record(), infoBytes.data(),
                           host_.exportRecord()),
            0u);
  const Bytes bytes = support::readFile(folder_.file("wide.tif"));
  const auto file = support::readTiff(bytes);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.width(), 65535u);
  EXPECT_EQ(support::uncompressedRows(file).size(), 2u * 8192);
}

TEST_F(ExportCell, ProductsPast32BitsEndWithoutAPicture) {
  // 4 000 000 000 by 4 000 000 000 pixels: no block holds them, and nothing is reported.
  Picture picture(8, 2, {{1, 2}}, Bytes(768, 9));
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  EXPECT_EQ(host_.run(folder_.file("huge.tif").c_str(), picture, 2147483647, 2147483647), 0u);
  EXPECT_TRUE(host_.status.calls.empty());
  // The same for a source that claims more than its block holds, and more than any block could.
  Picture claims(24, 2, kRows);
  claims.record().nWidth = 65535;
  claims.record().nHeight = 65535;
  EXPECT_EQ(host_.run(folder_.file("claims.tif").c_str(), claims, 2, 2), 0u);
  EXPECT_TRUE(host_.status.calls.empty());
}

// ---- Callbacks that call back, streams that fail

TEST_F(ExportCell, AProcedureThatLocksAnotherSetupAtOpenChangesNothing) {
  const Bytes bytes = expected();
  static Handle other;
  static support::HostStream *stream;
  ExportHost host;
  support::HostStream inner;
  stream = &inner;
  other = CreateSetup(0, "none", nullptr, nullptr);
  host.settings().lpfnOutputProc = [](HostWord context, HostWord op, HostWord a, HostWord b) -> HostWord {
    EditSetup(other, 0);
    return stream->procedure()(context, op, a, b);
  };
  host.status.word(RAXEL_STATUS_PROC_CONTEXT) = inner.context();
  Picture picture(24, 2, kRows);
  // The writer patches the directory by the current record, so only the open moves it here.
  host.settings().nCompressionMode = RAXEL_STORED_COMPRESS_NONE;
  EXPECT_EQ(host.run(nullptr, picture), 0u);
  EXPECT_EQ(inner.bytes().size(), bytes.size());
  DestroySetup(other);
}

TEST_F(ExportCell, ACallbackMayDestroyTheSetup) {
  Picture picture(24, 2, kRows);
  host_.status.action = [&] {
    DestroySetup(host_.setup());
    host_.forgetSetup();
  };
  EXPECT_EQ(host_.run(folder_.file("out.tif").c_str(), picture), 0u);
  EXPECT_EQ(lpRaster, nullptr);
}

TEST_F(ExportCell, AStreamThatFailsAtAnyCallIs0Or303AndLeavesNothing) {
  for (const int32_t compression :
       {RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_LZW}) {
    useStream();
    host_.settings().nCompressionMode = compression;
    stream_.clearLog();
    Picture whole(24, 2, kRows);
    ASSERT_EQ(host_.run("x", whole), 0u);
    const size_t calls = stream_.calls().size();
    for (size_t n = 1; n <= calls; ++n) {
      for (const auto failure :
           {support::HostStream::Failure::kOnce, support::HostStream::Failure::kForever}) {
        support::HostStream failing;
        failing.failAt(n, failure);
        host_.settings().lpfnOutputProc = failing.procedure();
        host_.status.word(RAXEL_STATUS_PROC_CONTEXT) = failing.context();
        Picture picture(24, 2, kRows);
        EXPECT_EQ(host_.run(nullptr, picture), n == 1 ? RAXEL_CANNOT_WRITE : RAXEL_OK) << n;
        EXPECT_FALSE(failing.isOpen()) << n;
      }
    }
  }
}

}  // namespace
