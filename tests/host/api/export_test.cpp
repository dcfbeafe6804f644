// SPDX-License-Identifier: MIT
// libraxelhost as other programs use it: its header, and the shared library.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <thread>

#include "raxel/host.h"
#include "support/temp_dir.h"
#include "support/tiff_reader.h"

namespace {

// A job on a picture of its own: every pixel differs, so that a row or channel out of place is seen.
struct Job {
  std::vector<uint8_t> pixels;
  RaxelHostJob job;
  RaxelHostResult result{};

  Job(uint32_t width, uint32_t height) : pixels(size_t{3} * width * height) {
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * 7 + i / 251);
    raxelHostJobDefaults(&job, sizeof job);
    job.picture.width = width;
    job.picture.height = height;
    job.picture.bits = 24;
    job.picture.rows = pixels.data();
    job.picture.stride = size_t{3} * width;
    job.context = this;
    result.size = sizeof result;
  }
  ~Job() { raxelHostFree(result.memory); }
  Job(const Job &) = delete;
  Job &operator=(const Job &) = delete;

  int run() { return raxelHostExport(&job, &result); }
  std::vector<uint8_t> memory() const { return {result.memory, result.memory + result.bytes}; }
};

// The pixels of an uncompressed RGB file, from the top: nothing is said of where they lie.
std::vector<uint8_t> pixelsOf(const std::vector<uint8_t> &file) {
  const support::TiffFile tiff = support::readTiff(file);
  EXPECT_TRUE(tiff.ok()) << tiff.error;
  return support::uncompressedRows(tiff);
}

size_t filesIn(const std::string &folder) {
  size_t count = 0;
  for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

}  // namespace

TEST(HostExport, SaysWhetherRowsAreDifferences) {
  Job slope(64, 64);
  for (size_t i = 0; i < slope.pixels.size(); ++i) slope.pixels[i] = static_cast<uint8_t>(i / 3 + i / 192);
  slope.job.request.compression = RAXEL_COMPRESS_LZW;
  slope.job.flags = RAXEL_HOST_VERIFY;
  const auto run = [&](int32_t predictor) {
    slope.job.predictor = predictor;
    raxelHostFree(slope.result.memory);
    EXPECT_EQ(slope.run(), RAXEL_HOST_OK) << slope.result.message;
    return slope.result.bytes;
  };
  EXPECT_EQ(slope.job.predictor, RAXEL_PREDICTOR_AUTO);
  const uint64_t plain = run(RAXEL_PREDICTOR_NONE);
  EXPECT_EQ(slope.result.predictor, RAXEL_PREDICTOR_NONE);
  const uint64_t differences = run(RAXEL_PREDICTOR_HORIZONTAL);
  EXPECT_EQ(slope.result.predictor, RAXEL_PREDICTOR_HORIZONTAL);
  EXPECT_LT(differences, plain / 2);
  EXPECT_EQ(run(RAXEL_PREDICTOR_AUTO), differences);
  EXPECT_EQ(slope.result.predictor, RAXEL_PREDICTOR_HORIZONTAL);

  slope.job.request.compression = RAXEL_COMPRESS_PACKBITS;
  run(RAXEL_PREDICTOR_AUTO);
  EXPECT_EQ(slope.result.predictor, RAXEL_PREDICTOR_NONE);
  raxelHostFree(slope.result.memory);  // a refusal forgets it
  slope.job.predictor = RAXEL_PREDICTOR_HORIZONTAL;
  EXPECT_EQ(slope.run(), RAXEL_HOST_PREDICTOR_NEEDS_LZW);
  slope.job.predictor = RAXEL_PREDICTORS;
  EXPECT_EQ(slope.run(), RAXEL_HOST_BAD_ARGUMENT);
}

// The rows of such a picture are written without a look at the whole, unless its indices change.
TEST(HostExport, WritesTheColorsOfAPalette) {
  const std::vector<uint8_t> indices{0, 1, 2, 3, 3, 2, 1, 0};
  const std::vector<uint8_t> table{250, 0, 0, 0, 250, 0, 0, 0, 250, 9, 9, 9};
  const std::vector<uint8_t> palette{0, 0, 255, 0, 255, 0, 255, 0, 0};
  Job job(4, 2);
  job.job.picture = {4, 2, 8, indices.data(), 4, table.data(), 4};
  job.job.request.mode = RAXEL_MODE_COLOR256;
  job.job.request.palette = palette.data();
  job.job.request.paletteColors = 3;
  job.job.flags = RAXEL_HOST_VERIFY;
  ASSERT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  const std::vector<uint8_t> file = job.memory();
  // (9, 9, 9) is as near to each of the three: the first.
  EXPECT_EQ(pixelsOf(file), (std::vector<uint8_t>{2, 1, 0, 0, 0, 0, 1, 2}));
  const support::TiffFile tiff = support::readTiff(file);
  const std::vector<uint32_t> &map = tiff.find(320)->values;  // all reds, all greens, all blues
  ASSERT_EQ(map.size(), 768u);
  for (size_t i = 0; i < 256; ++i) {
    for (size_t c = 0; c < 3; ++c) EXPECT_EQ(map[256 * c + i], i < 3 ? palette[3 * i + c] * 257u : 0u) << i;
  }
  raxelHostFree(job.result.memory);
  job.job.request.mode = RAXEL_MODE_RGB;
  EXPECT_EQ(job.run(), RAXEL_HOST_BAD_PALETTE);
  EXPECT_STREQ(job.result.message,
               "a palette is for the modes color16, with up to 16 colours, and color256");
}

TEST(HostExport, WritesTextsAndAProfile) {
  Job job(4, 2);
  const std::vector<uint8_t> icc{1, 2, 3, 4, 5};
  RaxelMetadata metadata{};
  metadata.size = sizeof metadata;
  metadata.description = "a lake";
  metadata.artist = "";
  metadata.dateTime = "2026:01:31 23:59:59";
  metadata.icc = icc.data();
  metadata.iccBytes = icc.size();
  job.job.metadata = &metadata;
  ASSERT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  const std::vector<uint8_t> file = job.memory();
  EXPECT_EQ(job.result.plan.uncompressedBytes, file.size());
  const auto holds = [&](const std::string &bytes) {
    return std::search(file.begin(), file.end(), bytes.begin(), bytes.end()) != file.end();
  };
  EXPECT_TRUE(holds(std::string("a lake\0", 7)));
  EXPECT_TRUE(holds(std::string("2026:01:31 23:59:59\0", 20)));
  EXPECT_TRUE(holds("\1\2\3\4\5"));
  // The artist's tag, of one zero byte at least, is not there.
  EXPECT_FALSE(holds(std::string("\x3B\1\2\0", 4)));

  raxelHostFree(job.result.memory);
  for (const char *date : {"2026-01-31 23:59:59", "2026:01:31", "2026:01:31 23:59:59 "}) {
    metadata.dateTime = date;
    EXPECT_EQ(job.run(), RAXEL_HOST_BAD_ARGUMENT) << date;
  }
  metadata.dateTime = nullptr;
  metadata.icc = nullptr;
  EXPECT_EQ(job.run(), RAXEL_HOST_BAD_ARGUMENT);
  // An older program's record ends before the profile.
  metadata.size = offsetof(RaxelMetadata, icc);
  EXPECT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  raxelHostFree(job.result.memory);
  job.result.memory = nullptr;
  // The filter's own directory has no place for them.
  job.job.request.finish = 0;
  EXPECT_EQ(job.run(), RAXEL_HOST_BAD_ARGUMENT);
}

TEST(HostExport, WritesAFile) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  Job job(4, 2);
  job.job.path = path.c_str();
  ASSERT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  const std::vector<uint8_t> file = support::readFile(path);
  EXPECT_EQ(pixelsOf(file), job.pixels);
  EXPECT_EQ(job.result.code, RAXEL_HOST_OK);
  EXPECT_EQ(job.result.error, 0);
  EXPECT_EQ(job.result.bytes, file.size());
  EXPECT_EQ(job.result.memory, nullptr);
  EXPECT_EQ(job.result.verified, 0u);
  EXPECT_STREQ(job.result.message, "");
  EXPECT_EQ(job.result.plan.width, 4u);
  EXPECT_EQ(job.result.plan.notes, 0u);
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(HostExport, ReplacesAFileOfAnyKind) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  support::writeFile(path, "old");
  Job job(4, 2);
  job.job.path = path.c_str();
  job.job.flags = RAXEL_HOST_ONLY_TIFF;
  EXPECT_EQ(job.run(), RAXEL_HOST_NO_CREATE);
  EXPECT_EQ(job.result.error, EEXIST);
  EXPECT_EQ(support::readText(path), "old");
  job.job.flags = RAXEL_HOST_NO_CLOBBER;
  EXPECT_EQ(job.run(), RAXEL_HOST_NO_CREATE);
  EXPECT_EQ(job.result.error, EEXIST);
  job.job.flags = 0;
  EXPECT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  EXPECT_EQ(pixelsOf(support::readFile(path)), job.pixels);
}

TEST(HostExport, GivesMemoryTheBytesOfTheFile) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  for (int compression : {RAXEL_COMPRESS_NONE, RAXEL_COMPRESS_PACKBITS, RAXEL_COMPRESS_LZW}) {
    Job file(300, 200), memory(300, 200);
    file.job.request.compression = memory.job.request.compression = compression;
    file.job.path = path.c_str();
    ASSERT_EQ(file.run(), RAXEL_HOST_OK) << file.result.message;
    ASSERT_EQ(memory.run(), RAXEL_HOST_OK) << memory.result.message;
    EXPECT_EQ(memory.memory(), support::readFile(path)) << raxelHostCompressionName(compression);
  }
}

TEST(HostExport, GivesACallbackTheBytesOfTheFileInOrder) {
  Job memory(1000, 700), called(1000, 700);
  static std::vector<uint8_t> got;
  got.clear();
  called.job.write = [](void *context, const void *bytes, uint64_t count) -> int32_t {
    EXPECT_NE(context, nullptr);
    const auto *from = static_cast<const uint8_t *>(bytes);
    got.insert(got.end(), from, from + count);
    return 0;
  };
  ASSERT_EQ(memory.run(), RAXEL_HOST_OK) << memory.result.message;
  ASSERT_EQ(called.run(), RAXEL_HOST_OK) << called.result.message;
  EXPECT_EQ(got, memory.memory());
  EXPECT_EQ(called.result.memory, nullptr);
  EXPECT_EQ(called.result.bytes, got.size());
}

TEST(HostExport, ACallbackThatFailsGivesItsErrno) {
  Job job(4, 2);
  job.job.write = [](void *, const void *, uint64_t) -> int32_t { return ENOSPC; };
  EXPECT_EQ(job.run(), RAXEL_HOST_NO_WRITE);
  EXPECT_EQ(job.result.error, ENOSPC);
  EXPECT_STREQ(job.result.message, "the picture: cannot be written: No space left on device");
}

// The codes of a strip are put where rows are coded.
TEST(HostExport, ACallbackThatFailsEndsASingleStrip) {
  for (const int compression : {RAXEL_COMPRESS_HUFFMAN, RAXEL_COMPRESS_T4, RAXEL_COMPRESS_T6}) {
    Job job(900, 700);
    job.job.request.mode = RAXEL_MODE_BILEVEL;
    job.job.request.compression = compression;
    job.job.request.strips = RAXEL_STRIPS_ONE;
    job.job.write = [](void *, const void *, uint64_t) -> int32_t { return ENOSPC; };
    EXPECT_EQ(job.run(), RAXEL_HOST_NO_WRITE);
    EXPECT_EQ(job.result.error, ENOSPC);
  }
}

TEST(HostExport, TellsWhyAFileCannotBe) {
  const support::TempDir folder;
  const std::string path = folder.file("none/a.tif");
  Job job(4, 2);
  job.job.path = path.c_str();
  EXPECT_EQ(job.run(), RAXEL_HOST_NO_CREATE);
  EXPECT_EQ(job.result.code, RAXEL_HOST_NO_CREATE);
  EXPECT_EQ(job.result.error, ENOENT);
  EXPECT_EQ(job.result.message, path + ": cannot be created: the folder does not exist");
  EXPECT_EQ(job.result.bytes, 0u);
}

TEST(HostExport, SaysThatTheDiskIsFull) {
  if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full here";
  Job job(4, 2);
  job.job.path = "/dev/full";
  EXPECT_EQ(job.run(), RAXEL_HOST_NO_WRITE);
  EXPECT_EQ(job.result.error, ENOSPC);
}

TEST(HostExport, RefusesWithAReasonAndAnEmptyPlan) {
  Job job(4, 2);
  job.job.request.compression = RAXEL_COMPRESS_T6;
  EXPECT_EQ(job.run(), RAXEL_HOST_FAX_NEEDS_1_BIT);
  EXPECT_STREQ(job.result.message, raxelHostMessage(RAXEL_HOST_FAX_NEEDS_1_BIT));
  EXPECT_EQ(job.result.plan.width, 0u);
  EXPECT_EQ(job.result.memory, nullptr);
  job.job.request.compression = RAXEL_COMPRESS_NONE;
  job.job.road = RAXEL_ROADS;
  EXPECT_EQ(job.run(), RAXEL_HOST_BAD_ARGUMENT);
}

TEST(HostExport, TakesEveryModeAndVerifiesIt) {
  for (int mode = 0; mode < RAXEL_MODES; ++mode) {
    Job job(64, 48);
    job.job.request.mode = mode;
    job.job.flags = RAXEL_HOST_VERIFY;
    ASSERT_EQ(job.run(), RAXEL_HOST_OK) << raxelHostModeName(mode) << ": " << job.result.message;
    EXPECT_EQ(job.result.verified, 1u);
    const std::vector<uint8_t> file = job.memory();
    EXPECT_EQ(support::readTiff(file).width(), 64u);
  }
}

TEST(HostExport, WritesTiles) {
  Job job(600, 300);
  job.job.request.mode = RAXEL_MODE_BILEVEL;
  job.job.request.compression = RAXEL_COMPRESS_T6;
  job.job.request.layout = RAXEL_LAYOUT_TILES;
  job.job.flags = RAXEL_HOST_VERIFY;
  ASSERT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  const std::vector<uint8_t> file = job.memory();
  const support::TiffFile tiff = support::readTiff(file);
  EXPECT_TRUE(tiff.tiled);
  EXPECT_EQ(tiff.pieces.size(), 2u * 3u);
}

TEST(HostExport, TakesTheDriversRoad) {
  Job cell(50, 40), driver(50, 40), metafile(50, 40);
  driver.job.road = RAXEL_ROAD_DRIVER;
  ASSERT_EQ(cell.run(), RAXEL_HOST_OK);
  ASSERT_EQ(driver.run(), RAXEL_HOST_OK) << driver.result.message;
  EXPECT_EQ(driver.memory(), cell.memory());
  driver.job.request.dpiX = 200;
  raxelHostFree(driver.result.memory);
  EXPECT_EQ(driver.run(), RAXEL_HOST_BAD_ROAD);
  driver.job.request.dpiX = cell.job.request.dpiX;
  driver.job.request.mode = RAXEL_MODE_BILEVEL;
  driver.job.request.compression = RAXEL_COMPRESS_T6;
  driver.job.request.strips = RAXEL_STRIPS_ONE;
  EXPECT_EQ(driver.run(), RAXEL_HOST_BAD_ROAD);
  EXPECT_STREQ(driver.result.message, "only the one call with a finished picture writes a single strip");
  metafile.job.road = RAXEL_ROAD_METAFILE;
  EXPECT_EQ(metafile.run(), RAXEL_HOST_FILTER_FAILED);
}

TEST(HostExport, WritesTheSameFileFromBandsAndFromABlock) {
  struct Size {
    uint32_t width, height;
  };
  // At 64 dots an inch the driver's road, whose pixels are collected in a block, takes any size.
  for (const Size &size : {Size{1, 1}, Size{3, 5}, Size{1000, 999}}) {
    for (const int mode : {RAXEL_MODE_RGB, RAXEL_MODE_GREY256}) {
      Job bands(size.width, size.height), block(size.width, size.height);
      for (Job *job : {&bands, &block}) {
        job->job.request.mode = mode;
        job->job.request.dpiX = job->job.request.dpiY = 64;
        job->job.flags = RAXEL_HOST_VERIFY;
      }
      block.job.road = RAXEL_ROAD_DRIVER;
      ASSERT_EQ(bands.run(), RAXEL_HOST_OK) << bands.result.message;
      ASSERT_EQ(block.run(), RAXEL_HOST_OK) << block.result.message;
      EXPECT_EQ(bands.result.verified, 1u);
      EXPECT_EQ(bands.result.plan.notes, block.result.plan.notes);
      EXPECT_TRUE(bands.memory() == block.memory()) << size.width << " by " << size.height;
    }
  }
}

TEST(HostExport, PlansWithoutWriting) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  Job job(5, 3);
  job.job.path = path.c_str();
  job.job.flags = RAXEL_HOST_DRY_RUN;
  ASSERT_EQ(job.run(), RAXEL_HOST_OK);
  EXPECT_EQ(job.result.plan.height, 4u);
  EXPECT_EQ(job.result.plan.notes, uint32_t{RAXEL_NOTE_ROW_REPEATED});
  EXPECT_EQ(job.result.bytes, 0u);
  EXPECT_EQ(filesIn(folder.path()), 0u);
}

TEST(HostExport, TellsOfTheProgress) {
  struct Told {
    std::vector<double> parts;
    bool prepared = false;
  } static told;
  told = {};
  Job job(2000, 3000);
  job.job.request.compression = RAXEL_COMPRESS_PACKBITS;
  job.job.progress = [](void *, int32_t stage, double part, uint64_t) -> int32_t {
    if (stage == RAXEL_STAGE_PREPARING) told.prepared = true;
    if (stage == RAXEL_STAGE_WRITING) told.parts.push_back(part);
    return 0;
  };
  ASSERT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  EXPECT_TRUE(told.prepared);
  ASSERT_GE(told.parts.size(), 2u);
  EXPECT_EQ(told.parts.front(), 0.0);
  EXPECT_TRUE(std::ranges::is_sorted(told.parts));
  EXPECT_EQ(told.parts.back(), 1.0);
}

TEST(HostExport, StopsWhenAskedToAndLeavesTheOldFile) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  static int left;
  for (const int compression : {RAXEL_COMPRESS_PACKBITS, RAXEL_COMPRESS_NONE}) {
    support::writeFile(path, "old");
    // At every place where it asks.
    for (int after = 0;; ++after) {
      Job job(2000, 2000);
      job.job.request.compression = compression;
      job.job.path = path.c_str();
      left = after;
      job.job.stop = [](void *) -> int32_t { return left-- > 0 ? 0 : 1; };
      const int code = job.run();
      if (code == RAXEL_HOST_OK) {
        EXPECT_GE(after, 3);
        break;
      }
      ASSERT_EQ(code, RAXEL_HOST_STOPPED) << job.result.message;
      EXPECT_EQ(support::readText(path), "old");
      EXPECT_EQ(filesIn(folder.path()), 1u);
    }
    EXPECT_EQ(support::readFile(path).front(), 'I');
  }
}

TEST(HostExport, StopsInTheMiddleOfThePreparation) {
  for (int mode : {RAXEL_MODE_COLOR256, RAXEL_MODE_COLOR16, RAXEL_MODE_RGB}) {
    static int heard;
    heard = 0;
    Job job(3000, 2000);
    job.job.request.mode = mode;
    job.job.request.inchesX = 50;
    job.job.progress = [](void *, int32_t stage, double, uint64_t) -> int32_t {
      EXPECT_EQ(stage, int32_t{RAXEL_STAGE_PREPARING});
      return ++heard == 2 ? 1 : 0;  // the first is the beginning of the stage
    };
    EXPECT_EQ(job.run(), RAXEL_HOST_STOPPED) << raxelHostModeName(mode);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(job.result.memory, nullptr);
  }
}

TEST(HostExport, AnAnswerToTheProgressStopsToo) {
  Job job(40, 30);
  job.job.progress = [](void *, int32_t stage, double, uint64_t) -> int32_t {
    return stage == RAXEL_STAGE_WRITING ? 1 : 0;
  };
  EXPECT_EQ(job.run(), RAXEL_HOST_STOPPED);
  EXPECT_EQ(job.result.memory, nullptr);
  // And the filter is fit for the next one.
  job.job.progress = nullptr;
  EXPECT_EQ(job.run(), RAXEL_HOST_OK) << job.result.message;
  EXPECT_EQ(pixelsOf(job.memory()), job.pixels);
}

TEST(HostExport, NamesTheTemporaryWhileItIsThere) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  static std::vector<std::string> names;
  names.clear();
  Job job(4, 2);
  job.job.path = path.c_str();
  job.job.temporary = [](void *, const char *name) {
    EXPECT_TRUE(!name || access(name, F_OK) == 0);
    names.emplace_back(name ? name : "");
  };
  ASSERT_EQ(job.run(), RAXEL_HOST_OK);
  EXPECT_EQ(names, (std::vector<std::string>{folder.file(".a.tif.raxel-0"), ""}));
}

TEST(HostExport, AnyThreadMayCall) {
  Job alone(300, 200);
  alone.job.request.mode = RAXEL_MODE_GREY16;
  ASSERT_EQ(alone.run(), RAXEL_HOST_OK);
  const std::vector<uint8_t> wanted = alone.memory();
  std::array<int, 4> right{};
  std::array<std::thread, 4> threads;
  for (size_t i = 0; i < threads.size(); ++i) {
    threads[i] = std::thread([&wanted, &counted = right[i]] {
      for (int n = 0; n < 10; ++n) {
        Job job(300, 200);
        job.job.request.mode = RAXEL_MODE_GREY16;
        if (job.run() == RAXEL_HOST_OK && job.memory() == wanted) ++counted;
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(right, (std::array<int, 4>{10, 10, 10, 10}));
}

TEST(HostExport, TakesOlderAndNewerRecords) {
  struct Newer {
    RaxelHostJob known;
    std::array<uint8_t, 64> later;
  } newer;
  std::memset(&newer, 0xAA, sizeof newer);
  raxelHostJobDefaults(&newer.known, sizeof newer);
  EXPECT_EQ(newer.known.size, sizeof newer);
  EXPECT_EQ(newer.later, (std::array<uint8_t, 64>{}));
  Job job(4, 2);
  newer.known.picture = job.job.picture;
  EXPECT_EQ(raxelHostExport(&newer.known, &job.result), RAXEL_HOST_OK);

  // A caller from before the plan: what lies behind its record stays as it is.
  Job old(4, 2);
  old.result.size = offsetof(RaxelHostResult, plan);
  old.result.plan.width = 12345;
  EXPECT_EQ(old.run(), RAXEL_HOST_OK);
  EXPECT_EQ(old.result.plan.width, 12345u);
  EXPECT_EQ(old.result.size, offsetof(RaxelHostResult, plan));
}

TEST(HostExport, RefusesRecordsThatCannotBe) {
  Job job(4, 2);
  EXPECT_EQ(raxelHostExport(nullptr, &job.result), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostExport(&job.job, nullptr), RAXEL_HOST_BAD_ARGUMENT) << "memory would be lost";
  job.job.size = 8;
  EXPECT_EQ(job.run(), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_STREQ(job.result.message, raxelHostMessage(RAXEL_HOST_BAD_ARGUMENT));
  job.job.size = sizeof job.job;
  job.result.size = 0;
  EXPECT_EQ(job.run(), RAXEL_HOST_BAD_ARGUMENT);
  raxelHostJobDefaults(nullptr, 100);
  raxelHostFree(nullptr);
}

TEST(HostExport, NeedsNoResultForAFile) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  Job job(4, 2);
  job.job.path = path.c_str();
  EXPECT_EQ(raxelHostExport(&job.job, nullptr), RAXEL_HOST_OK);
  EXPECT_EQ(pixelsOf(support::readFile(path)), job.pixels);
}

TEST(HostOpen, FindsTheFilterOfTheEnvironment) {
  ASSERT_EQ(raxelHostOpen(nullptr), RAXEL_HOST_OK) << raxelHostOpenError();
  EXPECT_STREQ(raxelHostFilter(), getenv("RAXEL_LIBRARY"));
  EXPECT_EQ(raxelHostOpen(""), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOpen(raxelHostFilter()), RAXEL_HOST_OK);
  EXPECT_STREQ(raxelHostOpenError(), "");
}

TEST(HostOpen, RefusesAnotherFilterBesideIt) {
  ASSERT_EQ(raxelHostOpen(nullptr), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOpen("nowhere.so"), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_NE(std::string(raxelHostOpenError()).find("nowhere.so"), std::string::npos);
}

TEST(HostVersion, IsThatOfTheHeader) {
  EXPECT_EQ(raxelHostVersion(), uint32_t{RAXEL_HOST_VERSION});
}
