// SPDX-License-Identifier: MIT
// A disk that fails at every possible call of a picture's writing, once or from then on, in every
// compression. Either the file is whole, or the writer or the close says that it is not; and nothing is
// left open or allocated.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "runtime/file_limit.h"
#include "runtime/live_blocks.h"
#include "support/disk.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::Disk;
using support::DiskCall;
using support::DiskFailure;
using support::InUse;
using support::Pixels;
using Job = support::WriterJob;

// How a picture's writing ended.
struct End {
  bool opened = false;
  int32_t code = -1;
  int32_t closed = -1;
  bool failed = false;  // the disk did
  bool whole() const { return opened && code == RAXEL_OK && closed == 0; }
};

class DiskFaults : public testing::TestWithParam<Job> {
 protected:
  void SetUp() override {
    const Job &job = GetParam();
    picture_ = {job.width, job.height, support::depthOfMode(job.mode), {}, Bytes(768)};
    support::Random random(11);
    picture_.pixels = random.bytes(size_t{picture_.stride()} * job.height);
    write(DiskCall::kCount, 0, DiskFailure::kOnce);
    good_ = support::readFile(path_);
    ASSERT_GT(good_.size(), 30000u) << "several windows";
  }

  End write(DiskCall call, size_t number, DiskFailure failure) {
    const InUse use(GetParam().mode, GetParam().compression, GetParam().layout);
    const Pixels block(picture_.pixels);
    End end;
    std::filesystem::remove(path_);
    const Disk disk(call, number, failure);
    const Handle file = kvlOpen(path_.c_str(), nullptr, KVL_OUTPUT);
    end.opened = file != 0;
    if (end.opened) {
      end.code = support::writePicture(file, picture_, block.handle());
      end.closed = kvlClose(file);
    }
    end.failed = disk.failed();
    return end;
  }

  // Every call of a kind in turn. Returns how many there were.
  template <class Check>
  size_t tryAll(DiskCall call, DiskFailure failure, Check check) {
    const size_t descriptors = support::openDescriptors();
    const size_t blocks = runtime::countBlocks();
    for (size_t number = 1;; ++number) {
      const End end = write(call, number, failure);
      if (!end.failed || HasFailure()) return number - 1;
      check(end, number);
      if (end.whole()) {
        EXPECT_EQ(support::readFile(path_), good_) << number << ": it is said to be whole";
      }
      EXPECT_EQ(support::openDescriptors(), descriptors) << number;
      EXPECT_EQ(runtime::countBlocks(), blocks) << number;
    }
  }

  support::TempDir dir_;
  std::string path_ = dir_.file("out.tif");
  support::Picture picture_;
  Bytes good_;
};

TEST_P(DiskFaults, AreReported) {
  for (const DiskFailure failure : {DiskFailure::kOnce, DiskFailure::kForever}) {
    const size_t written = tryAll(DiskCall::kWrite, failure, [](const End &end, size_t number) {
      EXPECT_FALSE(end.whole()) << number;
      EXPECT_TRUE(end.code == RAXEL_OK || end.code == RAXEL_CANNOT_WRITE) << end.code;
    });
    EXPECT_GT(written, 2u);
    const size_t opened = tryAll(DiskCall::kOpen, failure,
                                 [](const End &end, size_t number) { EXPECT_FALSE(end.opened) << number; });
    EXPECT_EQ(opened, 1u);
    const size_t closed = tryAll(DiskCall::kClose, failure, [](const End &end, size_t number) {
      EXPECT_EQ(end.code, RAXEL_OK) << number;
      EXPECT_EQ(end.closed, -1) << number;
    });
    EXPECT_EQ(closed, 1u);
    // These may have other ways around them, but none that ends in a file of other bytes.
    for (const DiskCall call : {DiskCall::kRead, DiskCall::kSeek}) {
      tryAll(call, failure, [](const End &end, size_t number) { EXPECT_TRUE(end.opened) << number; });
    }
  }
}

TEST_P(DiskFaults, BytesThatGoInPiecesAreNone) {
  for (const DiskFailure failure : {DiskFailure::kShort, DiskFailure::kInterrupted}) {
    const auto whole = [](const End &end, size_t number) { EXPECT_TRUE(end.whole()) << number; };
    EXPECT_GT(tryAll(DiskCall::kWrite, failure, whole), 2u);
    tryAll(DiskCall::kRead, failure, whole);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Pictures, DiskFaults,
    testing::Values(Job{"rgb", RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE,
                        RAXEL_STORED_LAYOUT_STRIPS, 150, 80},
                    Job{"packbits", RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_PACKBITS,
                        RAXEL_STORED_LAYOUT_STRIPS, 150, 80},
                    Job{"huffman", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_HUFFMAN,
                        RAXEL_STORED_LAYOUT_STRIPS, 500, 300},
                    Job{"lzw", RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_COMPRESS_LZW,
                        RAXEL_STORED_LAYOUT_STRIPS, 200, 200},
                    Job{"t4", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T4,
                        RAXEL_STORED_LAYOUT_STRIPS, 500, 300},
                    Job{"t6", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6,
                        RAXEL_STORED_LAYOUT_STRIPS, 500, 300},
                    Job{"tiles", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6,
                        RAXEL_STORED_LAYOUT_TILES, 600, 260}),
    [](const auto &job) { return job.param.name; });

// A disk that ends within a file of 64 KB, at every byte of it (RAXEL_EVERY_SIZE) or at some.
TEST(DiskFaultsInAFile, EverySizeOfDiskIsReported) {
  const bool all = std::getenv("RAXEL_EVERY_SIZE") != nullptr;
  const support::TempDir dir;
  const std::string path = dir.file("out.tif");
  const InUse use(RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_NONE);
  support::Random random(5);
  const support::Picture picture{256, 256, 8, random.bytes(65536), Bytes(768)};
  const auto isWhole = [&](rlim_t limit) {
    const Pixels block(picture.pixels);
    const support::FileLimit limited(limit);
    const Handle file = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
    const int32_t code = support::writePicture(file, picture, block.handle());
    return (kvlClose(file) == 0) & (code == RAXEL_OK);
  };
  ASSERT_TRUE(isWhole(1 << 20));
  const auto size = static_cast<rlim_t>(support::readFile(path).size());
  ASSERT_GT(size, 65536u);
  for (rlim_t limit = 0; limit < size; limit += all ? 1 : 997) ASSERT_FALSE(isWhole(limit)) << limit;
  ASSERT_FALSE(isWhole(size - 1));
  ASSERT_TRUE(isWhole(size));
  if (all) std::printf("{\"sizes\": %zu}\n", static_cast<size_t>(size) + 1);
}

}  // namespace
