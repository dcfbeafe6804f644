// SPDX-License-Identifier: MIT
// Strips and rows of tiles coded on several threads: the same file, the same calls in the same order, the
// same pixels left behind, as with one.
#include "tiff/side_by_side.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "support/threads.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::HostStream;
using support::InUse;
using support::Pixels;
using Job = support::WriterJob;

// Everything that a host can see of a picture.
struct Seen {
  int32_t code = 0;
  uint32_t counted = 0;
  std::vector<HostStream::Call> calls;
  Bytes file;
  Bytes pixels;
  friend bool operator==(const Seen &, const Seen &) = default;
};

void PrintTo(const Seen &seen, std::ostream *out) {
  *out << seen.code << ", " << seen.counted << " bytes counted, " << seen.calls.size() << " calls, "
       << seen.file.size() << " bytes";
}

class SideBySide : public testing::TestWithParam<Job> {
 protected:
  void SetUp() override {
    const Job &job = GetParam();
    picture = {job.width, job.height, support::depthOfMode(job.mode), {}, {}};
    support::Random random(13);
    picture.pixels = random.bytes(size_t{picture.stride()} * job.height + 1);  // and a byte behind
    for (size_t i = 0; i < picture.pixels.size(); i += 3) picture.pixels[i] = 0x5A;
    // No index is mapped to itself.
    for (size_t i = 0; i < 768; ++i) picture.palette.push_back(static_cast<uint8_t>(i / 3 * 7 + 3));
  }
  Seen seenBy(uint32_t threads, size_t failAt = 0,
              HostStream::Failure failure = HostStream::Failure::kOnce) {
    const support::Threads forced(threads);
    InUse use(GetParam().mode, GetParam().compression, GetParam().layout);
    support::HostOutput out;
    if (failAt != 0) out.host.failAt(failAt, failure);
    const Pixels block(picture.pixels);
    Seen seen;
    seen.code = support::writePicture(out.file, picture, block.handle());
    seen.counted = use.setup.tiff.nStripBytes;
    seen.calls = out.host.calls();
    seen.file = out.bytes();
    seen.pixels = block.bytes();
    return seen;
  }
  Bytes onDisk(uint32_t threads) {
    const support::Threads forced(threads);
    const support::TempDir dir;
    const std::string name = dir.file("picture.tif");
    InUse use(GetParam().mode, GetParam().compression, GetParam().layout);
    const Handle file = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
    const Pixels block(picture.pixels);
    EXPECT_EQ(support::writePicture(file, picture, block.handle()), 0);
    EXPECT_EQ(kvlClose(file), 0);
    return support::readFile(name);
  }

  support::Picture picture;
};

TEST_P(SideBySide, AHostSeesTheSame) {
  const Seen alone = seenBy(1);
  EXPECT_EQ(alone.code, 0);
  for (const uint32_t threads : {2u, 3u, 8u}) EXPECT_EQ(seenBy(threads), alone) << threads;
}

TEST_P(SideBySide, AFileIsTheSame) {
  const Bytes alone = onDisk(1);
  for (const uint32_t threads : {2u, 3u, 8u}) EXPECT_EQ(onDisk(threads), alone) << threads;
}

TEST_P(SideBySide, EveryFailureIsTheSame) {
  const size_t calls = seenBy(1).calls.size();
  const size_t step = std::max<size_t>(1, calls / support::cases(150));
  for (size_t n = 1; n <= calls; n += step) {
    for (const auto failure : {HostStream::Failure::kOnce, HostStream::Failure::kForever}) {
      EXPECT_EQ(seenBy(8, n, failure), seenBy(1, n, failure)) << n;
    }
  }
}

// A block that ends early cannot be read apart, and is coded in turn.
TEST_P(SideBySide, AShortBlockIsTheSame) {
  for (const size_t missing : {2u, 3u, 100u}) {
    picture.pixels.resize(picture.pixels.size() - std::min<size_t>(missing, picture.pixels.size()));
    EXPECT_EQ(seenBy(8), seenBy(1)) << missing;
  }
}

INSTANTIATE_TEST_SUITE_P(Pictures, SideBySide,
                         testing::Values(Job{"rgb", RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_LZW,
                                             RAXEL_STORED_LAYOUT_STRIPS, 31, 41},
                                         Job{"fullRows", RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_LZW,
                                             RAXEL_STORED_LAYOUT_STRIPS, 32, 7},
                                         Job{"grey256", RAXEL_STORED_MODE_GREY256,
                                             RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_LAYOUT_STRIPS, 64, 43},
                                         Job{"grey256padded", RAXEL_STORED_MODE_GREY256,
                                             RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_LAYOUT_STRIPS, 61, 43},
                                         Job{"grey16", RAXEL_STORED_MODE_GREY16, RAXEL_STORED_COMPRESS_LZW,
                                             RAXEL_STORED_LAYOUT_STRIPS, 45, 23},
                                         Job{"fixed8", RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_COMPRESS_LZW,
                                             RAXEL_STORED_LAYOUT_STRIPS, 8, 5},
                                         Job{"colors256", RAXEL_STORED_MODE_COLOR256,
                                             RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_LAYOUT_STRIPS, 50, 20},
                                         Job{"lzwTiles", RAXEL_STORED_MODE_GREY256,
                                             RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_LAYOUT_TILES, 300,
                                             260},
                                         Job{"t6", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6,
                                             RAXEL_STORED_LAYOUT_STRIPS, 333, 50},
                                         Job{"t6grey", RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_T6,
                                             RAXEL_STORED_LAYOUT_STRIPS, 33, 50},
                                         Job{"tiles", RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6,
                                             RAXEL_STORED_LAYOUT_TILES, 1100, 400}),
                         [](const auto &job) { return job.param.name; });

// --- Threads

struct Caller {
  pthread_t thread = pthread_self();
  size_t calls = 0;
  size_t elsewhere = 0;

  static HostWord answer(HostWord token, HostWord op, HostWord first, HostWord second) {
    auto &self = *reinterpret_cast<Caller *>(token);
    ++self.calls;
    if (pthread_equal(self.thread, pthread_self()) == 0) ++self.elsewhere;
    if (op == HostStream::kSeek) {
      return second == 0 ? static_cast<HostWord>(*reinterpret_cast<const int32_t *>(first)) : 1000;
    }
    return op == HostStream::kOpen ? token : second;
  }
};

TEST(SideBySideThreads, TheHostIsCalledByItsOwnAlone) {
  const support::Threads forced(8);
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_LZW);
  Caller caller;
  KvlStreamDesc descriptor{};
  descriptor.lpMemVar = reinterpret_cast<HostWord>(&caller);
  descriptor.lpfnProc = reinterpret_cast<HostWord>(&Caller::answer);
  const Handle file = kvlOpen("watched", &descriptor, KVL_OUTPUT);
  const Pixels block(Bytes(400 * 300));
  EXPECT_EQ(support::writePicture(file, {100, 400, 24, {}, {}}, block.handle()), 0);
  kvlClose(file);
  EXPECT_GT(caller.calls, 50u);
  EXPECT_EQ(caller.elsewhere, 0u);
}

// Stands in a small band of four strips, for looking at the threads themselves.
struct Band {
  Bytes pixels = Bytes(64 * 64, 0x77);
  tiff::CellBand band{.cells = {pixels, 64, 64},
                      .width = 64,
                      .rows = 64,
                      .chunkRows = 16,
                      .swaps = false,
                      .swapsByRow = false,
                      .nibbles = false,
                      .map = nullptr};
  tiff::ChunkPlan plan{band, tiff::coderOf(RAXEL_TIFF_LZW), 0};
};

TEST(SideBySideThreads, AreNoneForOne) {
  const Band band;
  EXPECT_FALSE(tiff::SideBySide(band.plan, 1).started());
  EXPECT_TRUE(tiff::SideBySide(band.plan, 2).started());  // and end when nobody takes anything
}

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
// While it is there no thread can be made: its stack would be larger than any memory.
class NoThreads {
 public:
  NoThreads() {
    pthread_attr_t large;
    EXPECT_EQ(pthread_getattr_default_np(&before_), 0);
    EXPECT_EQ(pthread_getattr_default_np(&large), 0);
    EXPECT_EQ(pthread_attr_setstacksize(&large, SIZE_MAX / 8 * 7), 0);
    EXPECT_EQ(pthread_setattr_default_np(&large), 0);
    pthread_attr_destroy(&large);
  }
  ~NoThreads() {
    EXPECT_EQ(pthread_setattr_default_np(&before_), 0);
    pthread_attr_destroy(&before_);
  }
  NoThreads(const NoThreads &) = delete;
  NoThreads &operator=(const NoThreads &) = delete;

 private:
  pthread_attr_t before_;
};

TEST(SideBySideThreads, ThatCannotBeMadeAreDoneWithout) {
  const Band band;
  const NoThreads none;
  EXPECT_FALSE(tiff::SideBySide(band.plan, 4).started());
}

TEST_P(SideBySide, WithoutThreadsItIsTheSame) {
  const Seen alone = seenBy(1);
  const NoThreads none;
  EXPECT_EQ(seenBy(8), alone);
}

#endif

// Without the memory for it nothing is tried: running out of memory would end the process.
TEST(SideBySideThreads, TakeNoMemoryThatIsNotThere) {
  Band band;
  band.band.cells.rowBytes = uint64_t{1} << 50;
  EXPECT_FALSE(tiff::SideBySide(band.plan, 8).started());
  band.band.cells.rowBytes = uint64_t{1} << 56;  // no length of memory at all
  EXPECT_FALSE(tiff::SideBySide(band.plan, 2).started());
}

// --- A chunk by itself

TEST(ChunksApart, ThatNoBlockHoldsAre300) {
  Band band;
  tiff::Workbench bench;
  tiff::CodedChunk out;
  band.band.cells.rowBytes = uint64_t{1} << 40;
  tiff::codeChunkApart(band.plan, band.band.chunk(0), 0, bench, out);
  EXPECT_EQ(out.result, RAXEL_NO_MEMORY);
  EXPECT_EQ(out.pieces, 0u);
  band.band.cells.rowBytes = 64;
  band.plan.tilesAcross = 0x40000000;  // a list of four gigabytes
  tiff::codeChunkApart(band.plan, band.band.chunk(0), 0, bench, out);
  EXPECT_EQ(out.result, RAXEL_NO_MEMORY);
  EXPECT_EQ(out.pieces, 0u);
  EXPECT_FALSE(out.lost);
}

TEST(ChunksApart, WithFewerPixelsThanTheirWidthAre300) {
  Band band;
  band.band.width = 64 * 8 + 1;
  const tiff::ChunkPlan plan{band.band, tiff::coderOf(RAXEL_TIFF_T6), 0};
  tiff::Workbench bench;
  tiff::CodedChunk out;
  tiff::codeChunkApart(plan, band.band.chunk(0), 0, bench, out);
  EXPECT_EQ(out.result, RAXEL_NO_MEMORY);
  EXPECT_EQ(out.pieces, 0u);
  EXPECT_FALSE(out.lost);
  band.band.width = 64 * 8;
  tiff::codeChunkApart(plan, band.band.chunk(0), 0, bench, out);
  EXPECT_EQ(out.result, RAXEL_OK);
  EXPECT_EQ(out.pieces, 1u);
}

// Short chunks and long ones with the same bench, against a new one for each.
TEST(ChunksApart, FindWhatTheBenchKeepsLongEnough) {
  const Band band;
  tiff::Workbench kept;
  tiff::CodedChunk again;
  for (const uint32_t rows : {1u, 16u, 2u}) {
    tiff::Workbench bench;
    tiff::CodedChunk out;
    tiff::codeChunkApart(band.plan, {0, rows}, 0, bench, out);
    tiff::codeChunkApart(band.plan, {0, rows}, 0, kept, again);
    ASSERT_EQ(again.pieces, 1u);
    ASSERT_EQ(again.length(0), out.length(0));
    EXPECT_EQ(std::memcmp(again.codes.data(), out.codes.data(), out.length(0)), 0) << rows;
  }
}

// Pixels that alternate below white ones take six bytes of codes for each of theirs, and white ones below
// them two: more than the room of twice the pixels that there is at first.
TEST(ChunksApart, WhoseCodesFindNoRoomAreLost) {
  Bytes pixels(64 * 128, 0xFF);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = i / 64 % 2 == 0 ? 0x55 : 0xFF;
  const tiff::CellBand band{.cells = {pixels, 64, 64},
                            .width = 512,
                            .rows = 128,
                            .chunkRows = 128,
                            .swaps = false,
                            .swapsByRow = false,
                            .nibbles = false,
                            .map = nullptr};
  for (const uint32_t tilesAcross : {0u, 1u}) {
    for (const bool benchIsSmall : {false, true}) {
      const tiff::ChunkPlan plan{band, tiff::coderOf(RAXEL_TIFF_T6), tilesAcross};
      tiff::Workbench bench;
      tiff::CodedChunk out;
      // A strip is coded straight into the result, and a tile by way of the bench.
      const bool small = benchIsSmall || tilesAcross == 0;
      (small && tilesAcross != 0 ? bench.memory.out : out.codes) = tiff::FaxBuffer::untold(100);
      tiff::codeChunkApart(plan, band.chunk(0), 0, bench, out);
      EXPECT_TRUE(out.lost);
      EXPECT_EQ(out.result, RAXEL_NO_MEMORY);
      EXPECT_EQ(out.pieces, 0u);
    }
  }
}

// What is asked for: for each thread a chunk to pack, two coded ones that wait, each of twice its pixels at
// most, and 4 MB of tables; for each but the caller's a stack and a heap.
TEST(SideBySideThreads, AskForWhatTheyTake) {
  const Band band;
  const uint64_t own = sizeof(void *) < 8 ? 10u << 20 : 144u << 20;
  EXPECT_EQ(tiff::bytesBesides(band.plan, 3), 3 * (1024 + 2 * 2 * 1024 + (4u << 20)) + 2 * own);
}

// Two coded chunks for each thread wait to be written, whichever is the slow one.
TEST(SideBySideThreads, KeepTwoChunksEachThatAreNotWrittenYet) {
  static std::atomic<int> coded;
  coded = 0;
  tiff::Coder counting = tiff::coderOf(RAXEL_TIFF_LZW);
  counting.encode = [](const tiff::Piece &, tiff::CoderMemory &) { return static_cast<uint32_t>(++coded); };
  Band band;
  band.band.chunkRows = 4;  // 16 chunks
  const tiff::ChunkPlan plan{band.band, counting, 0};
  const tiff::SideBySide coding(plan, 2);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (coded < 4 && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  EXPECT_EQ(coded, 4);
}

// --- How many

TEST(CodingThreads, AreBoundByChunksCoresAndTheHost) {
  const uint64_t least = 1 << 20;
  EXPECT_EQ(tiff::chooseThreads(least + 1, 4, least, 16, 8), 4u);
  EXPECT_EQ(tiff::chooseThreads(least + 1, 400, least, 16, 8), 8u);
  EXPECT_EQ(tiff::chooseThreads(least + 1, 400, least, 3, 8), 3u);
  EXPECT_EQ(tiff::chooseThreads(least + 1, 400, least, 16, 2), 2u);
  EXPECT_EQ(tiff::chooseThreads(least + 1, 1, least, 16, 8), 1u);
  EXPECT_EQ(tiff::chooseThreads(least + 1, 2, least, 16, 8), 2u);
  EXPECT_EQ(tiff::chooseThreads(least, 4, least, 16, 8), 1u);
  EXPECT_EQ(tiff::chooseThreads(least + 1, 4, least, 0, 8), 1u);
}

TEST(CodingThreads, OneToSevenAreWhatTheTextSaysAndEightAllElse) {
  for (const auto &[text, threads] :
       std::initializer_list<std::pair<const char *, uint32_t>>{{"1", 1},
                                                                {"2", 2},
                                                                {"007", 7},
                                                                {"8", 8},
                                                                {"9", 8},
                                                                {"4294967297", 8},
                                                                {"0", 8},
                                                                {"", 8},
                                                                {"-1", 8},
                                                                {"2x", 8},
                                                                {" 2", 8},
                                                                {"1.5", 8}}) {
    EXPECT_EQ(tiff::threadsOfText(text), threads) << text;
  }
  EXPECT_EQ(tiff::threadsOfText(nullptr), 8u);
}

}  // namespace
