// SPDX-License-Identifier: MIT
// An output that fails at every possible call, in every compression: 303 where pixels are lost, and
// never a crash, a leak or pixels left half turned.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::HostStream;
using support::InUse;
using support::Pixels;
using Job = support::WriterJob;

class FailingOutput : public testing::TestWithParam<Job> {
 protected:
  void SetUp() override {
    const Job &job = GetParam();
    picture = {job.width, job.height, support::depthOfMode(job.mode), {}, {}};
    support::Random random(7);
    const size_t size = size_t{picture.stride()} * job.height;
    picture.pixels = job.layout == RAXEL_STORED_LAYOUT_TILES ? Bytes(size, 0xF0) : random.bytes(size);
    picture.palette = Bytes(768);
    for (size_t i = 3; i < 768; ++i) picture.palette[i] = static_cast<uint8_t>(i);
  }
  // How many calls the front needs, and then every call in order.
  std::pair<size_t, std::vector<HostStream::Call>> calls() {
    InUse use(GetParam().mode, GetParam().compression, GetParam().layout);
    support::HostOutput out;
    Handle descriptor = 0;
    BeginCellBitmap(out.file, picture.width, picture.height, picture.bits, picture.palette.data(),
                    &descriptor);
    const size_t front = out.host.calls().size();
    const Pixels block(picture.pixels);
    EXPECT_EQ(
        WriteCellBits(out.file, block.handle(), picture.width, picture.height, picture.bits, 1, descriptor),
        0);
    EndCellBitmap(out.file, descriptor);
    finished = block.bytes();
    return {front, out.host.calls()};
  }
  int32_t writeFailingAt(size_t n, HostStream::Failure failure, Bytes *pixels = nullptr) {
    InUse use(GetParam().mode, GetParam().compression, GetParam().layout);
    support::HostOutput out;
    out.host.failAt(n, failure);
    const Pixels block(picture.pixels);
    const int32_t code = support::writePicture(out.file, picture, block.handle());
    if (pixels != nullptr) *pixels = block.bytes();
    return code;
  }
  // Patches are one-byte writes; no piece of pixels of these pictures is one byte.
  static bool isData(const HostStream::Call &call) {
    return call.op == HostStream::kWrite && call.number > 1;
  }

  // Every call after the front is tried; of the front's on slow builds only some.
  static size_t step(size_t n, size_t front) {
    const size_t stride = std::max<size_t>(1, 20 / support::cases(20));
    return n < front ? std::min(stride, front - n) : 1;
  }

  support::Picture picture;
  Bytes finished;  // the host's pixels when nothing failed
};

TEST_P(FailingOutput, ALostWriteOfPixelsIs303) {
  const auto [front, all] = calls();
  for (size_t n = 1; n <= all.size(); n += step(n, front)) {
    const bool lost = n > front && isData(all[n - 1]);
    EXPECT_EQ(writeFailingAt(n, HostStream::Failure::kOnce), lost ? RAXEL_CANNOT_WRITE : 0) << n;
  }
}

TEST_P(FailingOutput, AStreamThatStaysBrokenIs303) {
  const auto [front, all] = calls();
  size_t last = all.size();
  while (!isData(all[last - 1])) --last;
  for (size_t n = 1; n <= all.size(); n += step(n, front)) {
    EXPECT_EQ(writeFailingAt(n, HostStream::Failure::kForever), n <= last ? RAXEL_CANNOT_WRITE : 0) << n;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Pictures, FailingOutput,
    testing::Values(
        Job{"rgb", RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_LAYOUT_STRIPS, 5, 6},
        Job{"bilevel", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_LAYOUT_STRIPS,
            20, 5},
        Job{"packbits", RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_LAYOUT_STRIPS,
            50, 6},
        Job{"huffman", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_HUFFMAN, RAXEL_STORED_LAYOUT_STRIPS,
            60, 5},
        Job{"lzw", RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_LAYOUT_STRIPS, 9, 7},
        Job{"t4", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T4, RAXEL_STORED_LAYOUT_STRIPS, 60, 5},
        Job{"t6", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6, RAXEL_STORED_LAYOUT_STRIPS, 60, 9},
        Job{"tiles", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6, RAXEL_STORED_LAYOUT_TILES, 600,
            130}),
    [](const auto &job) { return job.param.name; });

// A block of every size up to the file's. What does not fit in front of the pixels is not reported, but
// then no pixels fit either.
TEST_P(FailingOutput, AMemoryBlockThatIsTooShortIs303) {
  const Job &job = GetParam();
  InUse use(job.mode, job.compression, job.layout);
  support::HostOutput whole;
  const Pixels pixels(picture.pixels);
  ASSERT_EQ(support::writePicture(whole.file, picture, pixels.handle()), 0);
  const size_t stride = std::max<size_t>(1, 10 / support::cases(10));
  for (size_t room = 0; room <= whole.bytes().size() + 2; room += stride) {
    const support::MemoryOutput out(room);
    const Pixels again(picture.pixels);
    EXPECT_EQ(support::writePicture(out.file, picture, again.handle()),
              room < whole.bytes().size() ? RAXEL_CANNOT_WRITE : 0)
        << room;
  }
}

// The strip that failed still gets the count of what was produced for it, and the ones after it
// nothing.
TEST(FailingStrips, TheFailedStripKeepsItsCount) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS);
  support::HostOutput out;
  const Pixels block(Bytes(4 * 8, 0x55));
  Handle descriptor = 0;
  const Bytes palette(6);
  BeginCellBitmap(out.file, 16, 8, 1, palette.data(), &descriptor);  // strips of two rows
  // A patch is 7 calls, and a strip two patches around two rows. The second row of strip 2 is lost.
  out.host.failAt(7 + 2 + 7 + 7 + 2, HostStream::Failure::kOnce);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 16, 8, 1, 1, descriptor), RAXEL_CANNOT_WRITE);
  EndCellBitmap(out.file, descriptor);
  const Bytes expected = {0xDA, 0, 0, 0, 0xDE, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                          4,    0, 0, 0, 4,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(support::slice(out.bytes(), 0xBA, 32), expected);
}

// A chunk is swapped whole, also when its first row cannot be written.
TEST(FailingStrips, PixelsAreTurnedByWholeChunks) {
  for (const bool onDisk : {false, true}) {
    InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
    Bytes pixels;
    for (uint8_t i = 0; i < 8; ++i) pixels.insert(pixels.end(), {1, 2, 3, 0});
    const Pixels block(pixels);
    Handle descriptor = 0;
    if (onDisk) {
      BeginCellBitmap(0, 1, 8, 24, nullptr, &descriptor);
      EXPECT_EQ(WriteCellBits(0, block.handle(), 1, 8, 24, 1, descriptor), RAXEL_CANNOT_WRITE);
    } else {
      support::HostOutput out;
      BeginCellBitmap(out.file, 1, 8, 24, nullptr, &descriptor);
      out.host.failAt(1);
      EXPECT_EQ(WriteCellBits(out.file, block.handle(), 1, 8, 24, 1, descriptor), RAXEL_CANNOT_WRITE);
    }
    EndCellBitmap(0, descriptor);
    Bytes expected = pixels;
    for (size_t row = 6; row < 8; ++row) std::swap(expected[4 * row], expected[4 * row + 2]);
    EXPECT_EQ(block.bytes(), expected) << onDisk;
  }
}

// A full disk answers at the write that meets it, or at the latest when the stream is closed.
TEST(FailingStrips, AFullDiskIsReported) {
  for (const int32_t compression : support::kEveryCompression) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, compression);
    const Handle file = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
    if (file == 0) GTEST_SKIP() << "no /dev/full here";
    const support::Picture picture{4000, 400, 1, {}, {}};
    support::Random random(3);
    const Pixels block(random.bytes(500 * 400));
    const int32_t code = support::writePicture(file, picture, block.handle());
    const int32_t closed = kvlClose(file);
    EXPECT_TRUE(code == RAXEL_CANNOT_WRITE || closed == -1) << compression;
  }
}

// The mark before a strip is lost: its rows are turned all the same, and those below it are not.
TEST(FailingStrips, PixelsAreTurnedWhereTheMarkIsLost) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_T4);
  const auto write = [](Handle file, Handle pixels) {
    Handle descriptor = 0;
    BeginCellBitmap(file, 1, 8, 24, nullptr, &descriptor);
    const int32_t code = pixels == 0 ? 0 : WriteCellBits(file, pixels, 1, 8, 24, 1, descriptor);
    EndCellBitmap(file, descriptor);
    return code;
  };
  support::HostOutput front;
  write(front.file, 0);
  Bytes pixels;
  for (uint8_t i = 0; i < 8; ++i) pixels.insert(pixels.end(), {1, 2, 3, 0});
  Bytes expected = pixels;
  for (size_t row = 6; row < 8; ++row) std::swap(expected[4 * row], expected[4 * row + 2]);
  const support::MemoryOutput out(front.bytes().size());
  const Pixels block(pixels);
  EXPECT_EQ(write(out.file, block.handle()), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(block.bytes(), expected);
  EXPECT_EQ(use.setup.tiff.nStripBytes, 2u);  // the mark was tried
}

}  // namespace
