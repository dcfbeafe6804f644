// SPDX-License-Identifier: MIT
// With too little memory an export is refused, and the process lives: the filter itself ends it.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "raxel/host.h"
#include "support/temp_dir.h"

namespace {

uint64_t addressSpace() {
  unsigned long pages = 0;
  FILE *file = std::fopen("/proc/self/statm", "r");
  if (file && std::fscanf(file, "%lu", &pages) != 1) pages = 0;
  if (file) std::fclose(file);
  return uint64_t{pages} * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

// What becomes of an export in a process that may take so many bytes: its code, or -1 when the process
// died.
int codeWithin(uint64_t limit, const RaxelHostJob &job) {
  const pid_t child = fork();
  if (child == 0) {
    const rlimit bound{limit, limit};
    if (setrlimit(RLIMIT_AS, &bound) != 0) _exit(100);
    RaxelHostResult result{};
    result.size = sizeof result;
    _exit(raxelHostExport(&job, &result));
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct Photo {
  std::vector<uint8_t> pixels;
  RaxelHostJob job;

  Photo(uint32_t width, uint32_t height) : pixels(size_t{3} * width * height) {
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * i / 1000 + i % 5);
    raxelHostJobDefaults(&job, sizeof job);
    job.picture = {width, height, 24, pixels.data(), size_t{3} * width, nullptr, 0};
  }
};

}  // namespace

TEST(HostMemory, TwelveMegapixelsDoNotFitIntoAQuarterOfAGigabyte) {
  const Photo photo(4000, 3000);
  RaxelHostJob job = photo.job;
  ASSERT_EQ(raxelHostOpen(nullptr), RAXEL_HOST_OK);
  constexpr uint64_t kLimit = uint64_t{250000} * 1024;  // ulimit -v 250000
  // Enlarged by half it takes more; whether it fits depends on the mode, and the process lives in each.
  int refused = 0;
  job.request.inchesX = 6000.0 / 96;
  for (int mode : {RAXEL_MODE_BILEVEL, RAXEL_MODE_COLOR256, RAXEL_MODE_RGB}) {
    job.request.mode = mode;
    job.request.quantizer = RAXEL_QUANTIZE_FILTER;
    const int code = codeWithin(kLimit, job);
    EXPECT_TRUE(code == RAXEL_HOST_OK || code == RAXEL_HOST_NO_MEMORY)
        << raxelHostModeName(mode) << ": " << code;
    refused += code == RAXEL_HOST_NO_MEMORY ? 1 : 0;
  }
  EXPECT_GE(refused, 1);
}

TEST(HostMemory, UncompressedPicturesTakeNoBlockOfTheirSize) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  const Photo photo(4000, 3000);
  RaxelHostJob job = photo.job;
  job.path = path.c_str();
  ASSERT_EQ(raxelHostOpen(nullptr), RAXEL_HOST_OK);
  // Asked for before the filter is, but hardly touched: kept free for what it takes.
  constexpr uint64_t kKeptFree = uint64_t{17} << 20;
  malloc_trim(0);
  const uint64_t limit = addressSpace() + kKeptFree + (uint64_t{4} << 20);
  EXPECT_EQ(codeWithin(limit, job), RAXEL_HOST_OK);
  job.request.compression = RAXEL_COMPRESS_PACKBITS;
  EXPECT_EQ(codeWithin(limit, job), RAXEL_HOST_NO_MEMORY) << "the block of 36 MB fits as well";
}

TEST(HostMemory, NoLimitEndsTheProcess) {
  const Photo photo(900, 700);
  ASSERT_EQ(raxelHostOpen(nullptr), RAXEL_HOST_OK);
  struct Case {
    int mode, quantizer, road, compression = RAXEL_COMPRESS_NONE, strips = RAXEL_STRIPS_QUARTERS;
  };
  for (const Case &c :
       {Case{RAXEL_MODE_RGB, 0, RAXEL_ROAD_CELL}, Case{RAXEL_MODE_RGB, 0, RAXEL_ROAD_DRIVER},
        Case{RAXEL_MODE_BILEVEL, 0, 0, RAXEL_COMPRESS_T6},
        Case{RAXEL_MODE_BILEVEL, 0, 0, RAXEL_COMPRESS_T6, RAXEL_STRIPS_ONE},

        Case{RAXEL_MODE_GREY16, 0, 0}, Case{RAXEL_MODE_COLOR256, RAXEL_QUANTIZE_FILTER, 0},
        Case{RAXEL_MODE_COLOR16, RAXEL_QUANTIZE_FILTER, 0}}) {
    RaxelHostJob job = photo.job;
    job.request.mode = c.mode;
    job.request.quantizer = c.quantizer;
    job.request.compression = c.compression;
    job.request.strips = c.strips;
    job.road = c.road;
    bool fitted = false, refused = false;
    malloc_trim(0);
    // What has been taken so far, and half a megabyte more each time.
    for (uint64_t more = 0; more < 100 && !fitted; ++more) {
      const int code = codeWithin(addressSpace() + (more << 19), job);
      ASSERT_TRUE(code == RAXEL_HOST_OK || code == RAXEL_HOST_NO_MEMORY)
          << raxelHostModeName(c.mode) << " with " << more << " halves of a megabyte: " << code;
      (code == RAXEL_HOST_OK ? fitted : refused) = true;
    }
    EXPECT_TRUE(fitted && refused) << raxelHostModeName(c.mode);
  }
}
