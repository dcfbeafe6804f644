// SPDX-License-Identifier: MIT
// Exports that no host should ask for: random pictures, records, settings, answers and failing streams.
// What is looked for is a crash, a hang, a leak or an access outside a block; the answers are few.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "entry/drawn_picture.h"
#include "entry/export_host.h"
#include "raxel/stream.h"
#include "support/cases.h"
#include "support/random.h"
#include "support/stream_procedure.h"

namespace {

using entry_test::Bytes;
using entry_test::CellInfo;
using entry_test::DrawnPicture;
using entry_test::ExportHost;
using support::HostStream;
using support::Random;

template <class T>
T oneOf(Random &random, std::initializer_list<T> values) {
  return values.begin()[random.next() % values.size()];
}

void randomSettings(Random &random, RasterSetup &settings) {
  settings.nBitmapMode =
      static_cast<int32_t>(random.between(RAXEL_STORED_MODE_BILEVEL - 1, RAXEL_STORED_MODE_RGB + 1));
  settings.nCompressionMode =
      static_cast<int32_t>(random.between(RAXEL_STORED_COMPRESS_NONE - 1, RAXEL_STORED_COMPRESS_T6 + 1));
  settings.tiff.wLayoutMode =
      oneOf<uint16_t>(random, {RAXEL_STORED_LAYOUT_TILES, RAXEL_STORED_LAYOUT_STRIPS, 0});
  settings.nSizeMode =
      static_cast<int32_t>(random.between(RAXEL_STORED_SIZE_DISPLAY - 1, RAXEL_STORED_SIZE_USER + 1));
  settings.nResolutionMode = static_cast<int32_t>(
      random.between(RAXEL_STORED_RESOLUTION_DISPLAY - 1, RAXEL_STORED_RESOLUTION_USER + 1));
  settings.tiff.nXResolution = static_cast<int16_t>(random.between(-2, 60));
  settings.tiff.nYResolution = static_cast<int16_t>(random.between(-2, 60));
  settings.dWidth = oneOf(random, {0.0, 0.5, 1.0, -1.0, 0.03125});
  settings.dHeight = oneOf(random, {0.0, 0.5, 1.0, -1.0, 0.03125});
}

// A record whose sizes have little to do with its blocks.
class WildPicture {
 public:
  explicit WildPicture(Random &random) {
    record_.nBits = oneOf<uint16_t>(random, {1, 4, 8, 24, 1, 4, 8, 24, 32, 0, 2, 16, 65535});
    record_.nWidth = side(random);
    record_.nHeight = side(random);
    if (random.chance(90)) record_.hBits = block(random, 5000);
    if (random.chance(70)) record_.hPalette = block(random, 900);
  }
  ~WildPicture() {
    GlobalFree(record_.hBits);
    GlobalFree(record_.hPalette);
  }
  WildPicture(const WildPicture &) = delete;
  WildPicture &operator=(const WildPicture &) = delete;
  PictureRecord &record() { return record_; }

 private:
  static uint16_t side(Random &random) {
    if (random.chance(10)) return oneOf<uint16_t>(random, {0, 1, 2, 300, 511, 513});
    return static_cast<uint16_t>(random.between(1, 50));
  }
  static Handle block(Random &random, int64_t largest) {
    return entry_test::blockOf(random.bytes(static_cast<size_t>(random.between(0, largest))));
  }
  PictureRecord record_ = {};
};

CellInfo randomInfo(Random &random) {
  CellInfo info;
  info.displayResolution = oneOf<uint16_t>(random, {0, 96, 65535});
  info.pictureResolution = oneOf<uint16_t>(random, {96, 96, 96, 0, 10, 65535});
  info.extentX = static_cast<int32_t>(random.between(-1, 60));
  info.extentY = static_cast<int32_t>(random.between(-1, 60));
  info.displayWidth = oneOf(random, {0, 1, 64, -5});
  info.displayHeight = oneOf(random, {0, 1, 64, -5});
  return info;
}

// Extents of any size, for a setup that keeps the picture's own size and has a resolution of 60: the
// output then fits in no block, or is small. What lies between would take a test's time and memory.
void randomExtents(Random &random, RasterSetup &settings, CellInfo &info) {
  const auto extentX = static_cast<int32_t>(random.between(INT32_MIN, INT32_MAX));
  const auto extentY = static_cast<int32_t>(random.between(INT32_MIN, INT32_MAX));
  const double pixels = std::max(1.0, extentX * 60.0 / 96) * std::max(2.0, extentY * 60.0 / 96);
  if (pixels > 1e6 && pixels < 4e10) return;
  settings.tiff.wLayoutMode =
      RAXEL_STORED_LAYOUT_STRIPS;  // the directory lists millions of tiles, each number by itself
  settings.nSizeMode = RAXEL_STORED_SIZE_PICTURE;
  settings.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  settings.tiff.nXResolution = settings.tiff.nYResolution = 60;
  info.pictureResolution = 96;
  info.extentX = extentX;
  info.extentY = extentY;
}

TEST(RandomExports, AnswerZeroOr303) {
  Random random(1);
  size_t written = 0;
  for (size_t i = support::cases(3000); i > 0; --i) {
    ExportHost host;
    randomSettings(random, host.settings());
    WildPicture picture(random);
    CellInfo info = randomInfo(random);
    if (random.chance(10)) randomExtents(random, host.settings(), info);
    HostStream stream;
    const bool toStream = random.chance(70);
    if (toStream) {
      host.settings().lpfnOutputProc = stream.procedure();
      host.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream.context();
      if (random.chance(50)) stream.failAt(static_cast<size_t>(random.between(1, 250)));
      if (random.chance(20)) stream.limitTo(static_cast<size_t>(random.between(0, 400)));
    }
    for (int n = 0; n < 6; ++n) host.status.answers.push_back(random.chance(80) ? 0 : 1);
    const bool hasStatus = random.chance(90);
    if (!hasStatus) {
      host.exportRecord()[6] = 0;
      if (toStream) host.settings().lpfnOutputProc = nullptr;
    }
    const auto bytes = info.bytes();
    const uint32_t answer = ExportCellData(nullptr, &picture.record(), bytes.data(), host.exportRecord());
    EXPECT_TRUE(answer == 0 || answer == RAXEL_CANNOT_WRITE) << answer;
    written += host.status.calls.empty() ? 0u : 1u;
    GlobalFree(host.status.word(RAXEL_STATUS_OUTPUT));
    EXPECT_FALSE(stream.isOpen());
  }
  EXPECT_GT(written, 0u) << "some of them are pictures after all";
}

TEST(RandomPictures, AnyDrawProcedureEndsWithAKnownCode) {
  Random random(2);
  for (size_t i = support::cases(2000); i > 0; --i) {
    ExportHost host;
    randomSettings(random, host.settings());
    host.settings().nSizeMode = RAXEL_STORED_SIZE_PICTURE;
    DrawnPicture picture;
    picture.width = static_cast<double>(random.between(-1, 40)) / 96;
    picture.height = static_cast<double>(random.between(-1, 40)) / 96;
    picture.resolution = oneOf<uint32_t>(random, {96, 96, 96, 32, 65536 + 50});
    picture.bandRows = static_cast<uint32_t>(random.between(0, 45));
    picture.refusesRows = random.chance(5);
    picture.noPixels = random.chance(5);
    for (int n = 0; n < 20; ++n) host.status.answers.push_back(random.chance(95) ? 0 : 1);
    host.settings().lpStatus = host.status.record();
    HostStream stream;
    if (random.chance(50)) stream.failAt(static_cast<size_t>(random.between(2, 300)));
    KvlStreamDesc desc = {};
    desc.lpMemVar = stream.context();
    desc.lpfnProc = stream.procedureWord();
    const Handle file = kvlOpen("out", &desc, KVL_OUTPUT);
    lpRaster = &host.settings();
    const int32_t result = OutputPicture(file, nullptr, DrawnPicture::draw);
    kvlClose(file);
    const auto known = {RAXEL_OK, RAXEL_NO_FORMAT, RAXEL_NO_MEMORY, RAXEL_CANNOT_WRITE, RAXEL_STOPPED};
    EXPECT_NE(std::find(known.begin(), known.end(), result), known.end()) << result;
    if (!picture.ops.empty() && picture.ops.size() > 1) {
      EXPECT_EQ(picture.ops.back(), 2u) << "what was opened is closed";
    }
  }
}

}  // namespace
