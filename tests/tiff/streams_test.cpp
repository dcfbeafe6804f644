// SPDX-License-Identifier: MIT
// The same file on every kind of stream: a host's procedure, which sees the writer's every call, a
// file on disk, where patches wait until the end of a band, and a block of memory.
#include <gtest/gtest.h>

#include "support/blocks.h"
#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::InUse;
using support::Pixels;

struct StreamJob {
  int32_t mode;
  int32_t compression;
  uint16_t layout;
  uint32_t width;
  uint32_t height;
  std::vector<uint32_t> bands;  // rows, from the top of the image
  Bytes palette;
  Bytes pixels;  // for the largest band
};

StreamJob randomJob(support::Random &random) {
  const int32_t modes[] = {RAXEL_STORED_MODE_BILEVEL,  RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16,
                           RAXEL_STORED_MODE_GREY256,  RAXEL_STORED_MODE_COLOR8,  RAXEL_STORED_MODE_COLOR16,
                           RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_MODE_RGB};
  const int32_t compressions[] = {RAXEL_STORED_COMPRESS_NONE,    RAXEL_STORED_COMPRESS_PACKBITS,
                                  RAXEL_STORED_COMPRESS_HUFFMAN, RAXEL_STORED_COMPRESS_LZW,
                                  RAXEL_STORED_COMPRESS_T4,      RAXEL_STORED_COMPRESS_T6,
                                  RAXEL_STORED_COMPRESS_T6};
  StreamJob job{};
  job.mode = modes[random.between(0, 7)];
  job.compression = compressions[random.between(0, 6)];
  job.layout = random.chance(40) ? RAXEL_STORED_LAYOUT_TILES : RAXEL_STORED_LAYOUT_STRIPS;
  job.width = static_cast<uint32_t>(random.between(1, random.chance(20) ? 1500 : 60));
  job.height = static_cast<uint32_t>(random.between(1, random.chance(20) ? 300 : 20));
  for (uint32_t left = job.height; left > 0;) {
    const auto rows = random.chance(60) ? left : static_cast<uint32_t>(random.between(1, left));
    job.bands.push_back(rows);
    left -= rows;
  }
  job.palette = random.bytes(768);
  if (random.chance(50)) std::fill_n(job.palette.begin(), 3, uint8_t{255});
  const uint32_t stride = (job.width * support::depthOfMode(job.mode) + 31) / 32 * 4;
  job.pixels = Bytes(stride * job.height);
  for (size_t i = 0; i < job.pixels.size(); ++i) {
    job.pixels[i] = random.chance(70) && i > 0 ? job.pixels[i - 1] : random.byte();
  }
  if (random.chance(10))
    job.pixels.resize(static_cast<size_t>(random.between(0, static_cast<int64_t>(job.pixels.size()))));
  return job;
}

struct Outcome {
  std::vector<int32_t> codes;
  std::vector<Bytes> pixels;
  friend bool operator==(const Outcome &, const Outcome &) = default;
};

Outcome write(const StreamJob &job, Handle file) {
  InUse use(job.mode, job.compression, job.layout);
  const uint16_t bits = support::depthOfMode(job.mode);
  Outcome outcome;
  Handle descriptor = 0;
  EXPECT_EQ(BeginCellBitmap(file, job.width, job.height, bits, job.palette.data(), &descriptor), -1);
  for (const uint32_t rows : job.bands) {
    const Pixels block(job.pixels);
    outcome.codes.push_back(WriteCellBits(file, block.handle(), job.width, rows, bits, 1, descriptor));
    outcome.pixels.push_back(block.bytes());
  }
  EndCellBitmap(file, descriptor);
  return outcome;
}

TEST(Streams, EveryKindGetsTheSameFile) {
  support::Random random(11);
  const support::TempDir dir;
  const std::string name = dir.file("out.tif");
  for (size_t n = support::cases(250); n > 0; --n) {
    const StreamJob job = randomJob(random);
    SCOPED_TRACE(testing::Message() << "mode " << job.mode << " compression " << job.compression
                                    << " layout " << job.layout << " " << job.width << "x" << job.height
                                    << " in " << job.bands.size());
    support::HostOutput host;
    const Outcome outcome = write(job, host.file);

    const Handle disk = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
    ASSERT_EQ(write(job, disk), outcome);
    ASSERT_EQ(kvlClose(disk), 0);
    ASSERT_EQ(support::readFile(name), host.bytes());

    void *locked = GlobalLock(support::newBlock(1));
    KvlStreamDesc descriptor{};
    descriptor.lpMemVar = reinterpret_cast<HostWord>(&locked);
    descriptor.dwGrow = 4096;
    const Handle memory = kvlOpen(nullptr, &descriptor, KVL_OUTPUT);
    ASSERT_NE(memory, 0u);
    ASSERT_EQ(write(job, memory), outcome);
    ASSERT_EQ(kvlClose(memory), 0);
    const auto *bytes = static_cast<const uint8_t *>(locked);
    ASSERT_GT(GlobalSize(GlobalHandle(locked)), host.bytes().size());
    ASSERT_EQ(Bytes(bytes, bytes + host.bytes().size()), host.bytes());
    ASSERT_EQ(bytes[host.bytes().size()], 0xFF);  // a memory stream's end mark
    GlobalFree(GlobalHandle(locked));
  }
}

}  // namespace
