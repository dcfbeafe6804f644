// SPDX-License-Identifier: MIT
// Memory streams: where their data end, how the block grows, and the byte that closing adds.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/host_output.h"
#include "runtime/record_of_stream.h"
#include "support/blocks.h"
#include "support/cases.h"

namespace {

using support::record;

TEST(MemoryOutput, BeginsInABlockOfOneByte) {
  void *memory = nullptr;
  const Handle h = runtime::openIntoBlock(&memory);
  EXPECT_EQ(GlobalSize(GlobalHandle(memory)), 1u);
  EXPECT_EQ(kvlClose(h), 0);
  GlobalFree(GlobalHandle(memory));
}

// A block of the caller's, as an export into memory hands it over.
struct Memory : testing::Test {
  void *data = nullptr;

  ~Memory() override { GlobalFree(GlobalHandle(data)); }

  void hold(const std::string &bytes) {
    GlobalFree(GlobalHandle(data));
    data = GlobalLock(support::newBlock(bytes.size()));
    std::memcpy(data, bytes.data(), bytes.size());
  }
  uint32_t size() const { return GlobalSize(GlobalHandle(data)); }
  std::string bytes() const { return {static_cast<const char *>(data), size()}; }
  Handle open(uint32_t mode, uint32_t length, uint32_t grow) {
    KvlStreamDesc d = {};
    d.lpMemVar = reinterpret_cast<HostWord>(&data);
    d.dwLength = length;
    d.dwGrow = grow;
    return kvlOpen("", &d, mode);
  }
};

TEST_F(Memory, TrailingZeroBytesAndOneMoreAreNoData) {
  hold(std::string("abcde\0\0\0", 8));
  const Handle h = open(KVL_READ, 8, 0);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(record(h).nHigh, 3) << "abcd";
  EXPECT_EQ(record(h).lSize, 3);
  EXPECT_EQ(record(h).nLimit, 7) << "the block keeps its length";
  EXPECT_EQ(record(h).lNextRead, -1);
  EXPECT_EQ(record(h).lBufStart, 0);
  EXPECT_EQ(record(h).fp, nullptr);
  EXPECT_EQ(record(h).wLineFormat, 2);
  EXPECT_EQ(record(h).bIsNamed, 0);
  EXPECT_EQ(record(h).hBuffer, GlobalHandle(data));
  char text[8] = {};
  EXPECT_EQ(kvlRead(h, text, 8), 4);
  EXPECT_STREQ(text, "abcd");
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(bytes(), std::string("abcde\0\0\0", 8)) << "a stream that was read leaves the block alone";
}

TEST_F(Memory, AnEmptyBlockHasLessThanNoData) {
  for (const uint32_t length : {0u, 1u, 4u}) {
    hold(std::string(length, '\0'));
    const Handle h = open(KVL_UPDATE, length, 16);
    EXPECT_EQ(record(h).nHigh, -2);
    EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_END), -1) << "its end lies before its start";
    EXPECT_EQ(kvlSeek(h, 1, KVL_FROM_END), 0);
    char c;
    EXPECT_EQ(kvlRead(h, &c, 1), 0);
    EXPECT_EQ(kvlClose(h), -1) << "so nothing can be added there";
    EXPECT_EQ(bytes(), std::string(length, '\0'));
  }
}

TEST_F(Memory, CreatingStartsEmptyAndClosingAppendsOneByte) {
  hold("garbage");
  const Handle h = open(KVL_OUTPUT, 7, 16);
  EXPECT_EQ(record(h).nHigh, -1);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_START), 0);
  EXPECT_EQ(kvlWrite(h, "X", 1), 1);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(bytes(),
            "Xbc\xFF"
            "age")
      << "at the end of the data, wherever the position was";
}

TEST_F(Memory, TheClosingByteKeepsTheDataWhenReopened) {
  hold(std::string(1, '\0'));
  Handle h = open(KVL_OUTPUT, 1, 8);
  EXPECT_EQ(kvlWrite(h, "ab\0\0", 4), 4);
  EXPECT_EQ(kvlClose(h), 0);
  h = open(KVL_READ, size(), 0);
  char text[8] = {};
  EXPECT_EQ(kvlRead(h, text, 8), 4);
  EXPECT_EQ(std::string(text, 4), std::string("ab\0\0", 4));
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Memory, GrowsByItsIncrementAndTellsTheCaller) {
  hold(std::string(1, '\0'));
  const Handle h = open(KVL_OUTPUT, 1, 10);
  EXPECT_EQ(kvlWrite(h, "a", 1), 1);
  EXPECT_EQ(size(), 1u) << "exactly full is not yet too small";
  EXPECT_EQ(kvlWrite(h, "b", 1), 1);
  EXPECT_EQ(size(), 11u);
  EXPECT_EQ(record(h).nLimit, 10);
  EXPECT_EQ(kvlWrite(h, "0123456789abcdef", 16), 16);
  EXPECT_EQ(size(), 21u);
  EXPECT_EQ(GlobalLock(record(h).hBuffer), data);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(bytes(), std::string("ab0123456789abcdef\xFF\0\0", 21));
}

TEST_F(Memory, ClosingMayGrowTheBlockOnceMore) {
  hold("....");
  const Handle h = open(KVL_OUTPUT, 4, 3);
  EXPECT_EQ(kvlWrite(h, "full", 4), 4);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(bytes(), std::string("full\xFF\0\0", 7));
}

TEST_F(Memory, AFixedBlockRefusesWhatDoesNotFit) {
  hold("....");
  const Handle h = open(KVL_OUTPUT, 4, 0);
  EXPECT_EQ(kvlWrite(h, "full", 4), 4);
  EXPECT_EQ(kvlWrite(h, "x", 1), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlWrite(h, "x", 1), 0);
  EXPECT_EQ(FlushKvlIO(h), -1);
  EXPECT_EQ(kvlClose(h), -1) << "there is no room for the last byte";
  EXPECT_EQ(bytes(), "full");
}

TEST_F(Memory, ANegativeIncrementNeverShrinks) {
  for (const bool bySeek : {false, true}) {
    hold("....");
    const Handle h = open(KVL_OUTPUT, 4, 0);
    static_cast<KvlStream *>(GlobalLock(h))->nGrow = -3;
    EXPECT_EQ(bySeek ? kvlSeek(h, 9, KVL_FROM_START) : kvlWrite(h, "12345", 5), -1);
    EXPECT_EQ(size(), 4u);
    EXPECT_EQ(kvlClose(h), bySeek ? 0 : -1) << "the last byte finds room only where none was written";
  }
}

TEST_F(Memory, ATargetBehindTheBlockGrowsIt) {
  hold("ab");
  const Handle h = open(KVL_OUTPUT, 2, 10);
  EXPECT_EQ(kvlSeek(h, 1, KVL_FROM_START), 1) << "past the data, inside the block";
  EXPECT_EQ(size(), 2u);
  EXPECT_EQ(kvlSeek(h, 2, KVL_FROM_START), 2);
  EXPECT_EQ(size(), 13u) << "target + increment + 1";
  EXPECT_EQ(record(h).nLimit, 12);
  EXPECT_EQ(record(h).nHigh, -1) << "moving adds no data";
  char c;
  EXPECT_EQ(kvlRead(h, &c, 1), 0);
  EXPECT_EQ(kvlWrite(h, "z", 1), 1);
  EXPECT_EQ(record(h).nHigh, 2);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(bytes().substr(0, 4), "abz\xFF");
}

TEST_F(Memory, FromTheEndTheNextByteNeedsNoGrowth) {
  hold("abc");
  const Handle h = open(KVL_OUTPUT, 3, 5);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_END), 3);
  EXPECT_EQ(size(), 3u);
  EXPECT_EQ(kvlSeek(h, 1, KVL_FROM_END), 4);
  EXPECT_EQ(size(), 10u) << "one further does";
  EXPECT_EQ(kvlSeek(h, -3, KVL_FROM_END), 0);
  EXPECT_EQ(kvlSeek(h, -4, KVL_FROM_END), -1);
  EXPECT_EQ(record(h).nError, -1);
  for (int32_t whence : {3, -1, 77}) EXPECT_EQ(kvlSeek(h, 0, whence), -1);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Memory, GrowthEndsAtTwoGigabytes) {
  for (const uint32_t grow : {0x7FFFFFFFu, 0xFFFFFFFFu}) {
    for (const bool bySeek : {false, true}) {
      hold("abc");
      const Handle h = open(KVL_OUTPUT, 3, grow);
      EXPECT_EQ(bySeek ? kvlSeek(h, 100, KVL_FROM_START) : kvlWrite(h, "12345", 5), -1);
      EXPECT_EQ(record(h).nError, -1);
      EXPECT_EQ(size(), 3u);
      EXPECT_EQ(kvlClose(h), bySeek ? 0 : -1);
    }
  }
}

// From 2^31 on the number is a negative one, and the block does not grow.
TEST_F(Memory, NegativeGrowthIsNone) {
  for (const uint32_t grow : {0x80000000u, 0xFFFFFFFFu}) {
    hold("");
    const Handle h = open(KVL_OUTPUT, 0, grow);
    EXPECT_EQ(record(h).nGrow, static_cast<int32_t>(grow));
    EXPECT_EQ(kvlWrite(h, "1", 1), -1);
    EXPECT_EQ(size(), 0u);
    kvlClose(h);
  }
}

TEST_F(Memory, ReadingStreamsStayInsideTheirData) {
  hold("abcdef");
  const Handle h = open(KVL_READ, 6, 0);
  EXPECT_EQ(kvlSeek(h, 4, KVL_FROM_START), 4) << "the last byte of data";
  EXPECT_EQ(kvlSeek(h, 5, KVL_FROM_START), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Memory, TheLengthEndsWithTheBlock) {
  hold("abcdef");
  const Handle h = open(KVL_READ, 4000000000u, 0);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(record(h).nLimit, 5);
  EXPECT_EQ(record(h).nHigh, 4);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Memory, WithoutABlockNothingOpens) {
  EXPECT_EQ(open(KVL_OUTPUT, 0, 16), 0u) << "the variable is null";
  KvlStreamDesc d = {};
  EXPECT_EQ(kvlOpen("", &d, KVL_OUTPUT), 0u);
  EXPECT_EQ(kvlOpen(nullptr, &d, KVL_OUTPUT), 0u);
}

TEST_F(Memory, FillFindsNoMoreAndFlushGrows) {
  hold("ab");
  const Handle h = open(KVL_OUTPUT, 2, 6);
  EXPECT_EQ(FillKvlIOBuf(h), 0);
  EXPECT_EQ(FlushKvlIO(h), 1);
  EXPECT_EQ(size(), 8u);
  EXPECT_EQ(record(h).nPos, 0);
  EXPECT_EQ(kvlClose(h), 0);
}

// Growing 25,600 times by one page moves the data a few times only.
TEST_F(Memory, AHundredMegabytesGrowPageByPage) {
  hold(std::string(1, '\0'));
  const Handle h = open(KVL_OUTPUT, 1, 4096);
#if defined(__SANITIZE_ADDRESS__)
  const size_t pages = 500;  // that heap copies at every growth
#else
  const size_t pages = support::cases(25600);
#endif
  const std::string page(4096, 'p');
  for (size_t i = 0; i < pages; ++i) ASSERT_EQ(kvlWrite(h, page.data(), 4096), 4096);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_POSITION), static_cast<int32_t>(pages * 4096));
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(bytes().find_first_not_of('p'), pages * 4096);
}

}  // namespace
