// SPDX-License-Identifier: MIT
// Handle memory: the block's layout, locking, reallocation and the pointer layer.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "runtime/live_blocks.h"

namespace {

// A byte between the data's end and the block's: zero, or nobody's to read where accesses are checked.
void expectSlack(const uint8_t *byte) {
#if defined(__SANITIZE_ADDRESS__)
  EXPECT_TRUE(__asan_address_is_poisoned(byte));
#else
  EXPECT_EQ(*byte, 0);
#endif
}

// The rounded length of a block follows from where its slack ends: size + 34, low three bits off.
TEST(Handles, DataLieTwentyFourBytesPastTheHandle) {
  for (uint32_t size : {0u, 1u, 6u, 13u, 14u, 4096u}) {
    const Handle h = GlobalAlloc(RAXEL_MOVEABLE_ZERO, size);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(GlobalLock(h)), h + 24);
    EXPECT_EQ(GlobalSize(h), size);
    EXPECT_EQ(GlobalFree(h), 0);
  }
}

TEST(Handles, BackOffsetAppearsWithTheFirstLock) {
  const Handle h = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 10);
  const auto *data = reinterpret_cast<const uint8_t *>(h + 24);
  EXPECT_EQ(data[-1], 0);
  EXPECT_EQ(GlobalHandle(data), reinterpret_cast<Handle>(data));
  void *p = GlobalLock(h);
  EXPECT_EQ(data[-1], 24);
  EXPECT_EQ(GlobalHandle(p), h);
  GlobalFree(h);
}

TEST(Handles, BlocksAreZeroFilledWithTheirSlack) {
  const Handle h = GlobalAlloc(0, 13);  // 40 bytes in all: 24 before the data, 13, then 3 of slack
  const auto *p = static_cast<const uint8_t *>(GlobalLock(h));
  for (int i = 0; i < 13; ++i) EXPECT_EQ(p[i], 0);
  for (int i = 13; i < 16; ++i) expectSlack(p + i);
  GlobalFree(h);
}

// A block has a header and slack, which no size_t of 32 bits holds beside as many bytes.
TEST(Handles, TheLongestBlockLeavesRoomForItsHeader) {
  constexpr bool isWide = sizeof(size_t) > 4;
  EXPECT_TRUE(runtime::fitsInBlock(0x7FFFFF00));
  for (const uint64_t size : {0x7FFFFFDEu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    EXPECT_EQ(runtime::fitsInBlock(size), isWide) << size;
  EXPECT_FALSE(runtime::fitsInBlock(0x100000000u));
}

TEST(Handles, ReallocationKeepsTheSmallerSizeAndZeroesTheTail) {
  Handle h = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 8);
  std::memcpy(GlobalLock(h), "abcdefgh", 8);
  h = GlobalReAlloc(h, 3, 66);
  EXPECT_EQ(GlobalSize(h), 3u);
  EXPECT_EQ(std::memcmp(GlobalLock(h), "abc", 3), 0);
  h = GlobalReAlloc(h, 100000, 66);
  const auto *p = static_cast<const uint8_t *>(GlobalLock(h));
  EXPECT_EQ(std::memcmp(p, "abc", 3), 0);
  for (int i = 3; i < 100000; ++i) ASSERT_EQ(p[i], 0) << i;
  GlobalFree(h);
}

// Bytes in use on the heap; 0 where a checking heap does not count them.
size_t heapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

TEST(Handles, ReallocationLeavesNothingOfTheOldHandle) {
  Handle h = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 100);
  const size_t before = heapInUse();
  for (int round = 0; round < 50; ++round) {
    for (const uint32_t size : {30000u, 700u, 1000000u, 100u}) {
      const Handle old = h;
      const void *oldData = GlobalLock(old);
      h = GlobalReAlloc(old, size, 66);
      if (h == old) continue;  // the block has grown or shrunk where it lies
      EXPECT_EQ(runtime::blockWithData(oldData), 0u) << "no block any more";
#if defined(__SANITIZE_ADDRESS__)
      EXPECT_TRUE(__asan_address_is_poisoned(reinterpret_cast<const void *>(old)));
#endif
    }
  }
  EXPECT_LT(heapInUse(), before + 1000000) << "the old blocks would be tens of millions";
  EXPECT_EQ(GlobalSize(h), 100u);
  GlobalFree(h);
}

TEST(Handles, ReallocationOfAPointerHandleCopiesTheCallersMemory) {
  char text[] = "caller";
  const Handle h = GlobalReAlloc(GlobalPointerToHandle(text, 6), 4, 66);
  EXPECT_EQ(std::memcmp(GlobalLock(h), "call", 4), 0);
  EXPECT_STREQ(text, "caller");
  GlobalFree(h);
}

TEST(Handles, NullHandlesHoldNothingUntilReallocated) {
  EXPECT_EQ(GlobalLock(0), nullptr);
  EXPECT_EQ(GlobalUnlock(0), 0);
  EXPECT_EQ(GlobalHandle(nullptr), 0u);
  EXPECT_EQ(GlobalSize(0), 0u);
  EXPECT_EQ(GlobalFree(0), 0);
  const Handle h = GlobalReAlloc(0, 5, 66);
  EXPECT_EQ(GlobalSize(h), 5u);
  GlobalFree(h);
}

TEST(Handles, CompactAnswersItsArgument) {
  EXPECT_EQ(GlobalCompact(0), 65536u);
  EXPECT_EQ(GlobalCompact(5), 5u);
}

TEST(Handles, PointerHandleDescribesCallerMemory) {
  std::vector<uint8_t> memory(64, 7);
  const Handle h = GlobalPointerToHandle(memory.data() + 32, 32);
  EXPECT_EQ(GlobalLock(h), memory.data() + 32);
  EXPECT_EQ(GlobalSize(h), 32u);
  EXPECT_EQ(memory[31], 7) << "no back-offset goes before memory that is not ours";
  GlobalFree(h);
}

TEST(PointerMemory, NullAndZeroTouchNothing) {
  EXPECT_EQ(kvlPtrGlobalAlloc(0), nullptr);
  EXPECT_EQ(kvlPtrGlobalFree(nullptr), 0u);
}

TEST(PointerMemory, GrowsAndFrees) {
  auto *p = static_cast<uint8_t *>(kvlPtrGlobalReAlloc(nullptr, 4, 0));
  std::memcpy(p, "wxyz", 4);
  p = static_cast<uint8_t *>(kvlPtrGlobalReAlloc(p, 9000, 66));
  EXPECT_EQ(std::memcmp(p, "wxyz\0", 5), 0);
  EXPECT_EQ(GlobalSize(kvlPtrGlobalHandle(p)), 9000u);
  EXPECT_EQ(kvlPtrGlobalReAlloc(p, 0, 66), nullptr);
}

// Bytes that the heap hands out for a request: what a block of this length, and no shorter one, has.
TEST(Handles, BlocksAreTheSizePlusThirtyFourRoundedDownToEight) {
  const uint32_t lengths[][2] = {{0, 32}, {1, 32}, {5, 32}, {6, 40}, {13, 40}, {14, 48}, {4096, 4128}};
  for (const auto &[size, length] : lengths) {
    Handle h = GlobalAlloc(RAXEL_MOVEABLE_ZERO, size);
    for (int pass = 0; pass < 2; ++pass) {
      const auto *block = reinterpret_cast<const uint8_t *>(h);
      EXPECT_GE(malloc_usable_size(reinterpret_cast<void *>(h)), length);
#if defined(__SANITIZE_ADDRESS__)
      EXPECT_EQ(malloc_usable_size(reinterpret_cast<void *>(h)), length) << "that heap adds nothing";
#endif
      for (uint32_t i = 24; i < 24 + size; ++i) EXPECT_EQ(block[i], 0);
      for (uint32_t i = 24 + size; i < length; ++i) expectSlack(block + i);
      h = GlobalReAlloc(h, size, 66);  // and a block of the same size again
    }
    GlobalFree(h);
  }
}

TEST(Handles, TheHeaderLiesInFrontOfTheData) {
  const Handle h = GlobalAlloc(0x12345678, 10);
  const auto *block = reinterpret_cast<const uint8_t *>(h);
  uint32_t words[3];
  std::memcpy(words, block, 12);
  EXPECT_EQ(words[0], 10u);
  EXPECT_EQ(words[1], 0x12345678u);
  EXPECT_EQ(words[2], 0u);
  void *data;
  std::memcpy(&data, block + 12, sizeof data);
  EXPECT_EQ(data, block + 24);
  EXPECT_EQ(block[12 + sizeof data], 24);
  EXPECT_EQ(h % 8, 0u);
  GlobalFree(h);
}

TEST(Handles, ReallocationRecordsItsOwnFlagsAndForgetsTheLock) {
  Handle h = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 10);
  GlobalLock(h);
  h = GlobalReAlloc(h, 12, 7);
  uint32_t flags;
  std::memcpy(&flags, reinterpret_cast<const uint8_t *>(h) + 4, 4);
  EXPECT_EQ(flags, 7u);
  EXPECT_EQ(reinterpret_cast<const uint8_t *>(h)[23], 0) << "the next lock writes it";
  GlobalFree(h);
}

TEST(Handles, TheByteBeforeForeignDataIsNotOurs) {
  // Caller memory within reach of a one-byte back-offset, behind the header itself.
  alignas(8) uint8_t memory[64];
  std::memset(memory, 7, sizeof memory);
  const Handle h = GlobalPointerToHandle(memory + 8, 8);
  EXPECT_EQ(GlobalLock(h), memory + 8);
  EXPECT_EQ(memory[7], 7);
  auto *header = reinterpret_cast<uint8_t *>(h);
  EXPECT_EQ(header[12 + sizeof(void *)], 20);
  GlobalFree(h);
}

TEST(PointerMemory, ReallocationOfNullIgnoresTheFlags) {
  void *p = kvlPtrGlobalReAlloc(nullptr, 4, 5);
  uint32_t flags;
  std::memcpy(&flags, reinterpret_cast<const uint8_t *>(kvlPtrGlobalHandle(p)) + 4, 4);
  EXPECT_EQ(flags, 66u);
  EXPECT_EQ(kvlPtrGlobalFree(p), 0u);
  EXPECT_EQ(kvlPtrGlobalReAlloc(nullptr, 0, 66), nullptr);
  EXPECT_EQ(kvlPtrGlobalHandle(nullptr), 0u);
}

// A block of some size: new, grown or shrunk.
[[maybe_unused]] Handle madeOf(uint32_t size, int way) {
  switch (way) {
    case 0:
      return GlobalAlloc(RAXEL_MOVEABLE_ZERO, size);
    case 1:
      return GlobalReAlloc(GlobalAlloc(RAXEL_MOVEABLE_ZERO, size / 2), size, RAXEL_MOVEABLE_ZERO);
    default:
      return GlobalReAlloc(GlobalAlloc(RAXEL_MOVEABLE_ZERO, size + 100), size, RAXEL_MOVEABLE_ZERO);
  }
}

[[maybe_unused]] void touch(Handle handle, uint32_t at) {
  auto *data = static_cast<volatile uint8_t *>(GlobalLock(handle));
  data[at] = 1;
}

TEST(HandlesDeathTest, AnOverrunByOneByteIsSeen) {
#if !defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "nobody looks here";
#else
  for (uint32_t size = 0; size < 17; ++size) {
    for (int way = 0; way < 3; ++way) {
      const Handle h = madeOf(size, way);
      const auto *data = static_cast<const uint8_t *>(GlobalLock(h));
      EXPECT_FALSE(__asan_address_is_poisoned(data + size - 1)) << size << ' ' << way;
      EXPECT_TRUE(__asan_address_is_poisoned(data + size)) << size << ' ' << way;
      GlobalFree(h);
    }
  }
  // What it is called depends on what lies eight bytes further on.
  const Handle h = madeOf(8, 2);
  EXPECT_DEATH(touch(h, 8), "AddressSanitizer: (use-after-poison|heap-buffer-overflow)");
  GlobalFree(h);
#endif
}

// Leaves little memory to this process, and sends the message where death tests read it.
[[maybe_unused]] void limitMemory(rlim_t addressSpace) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  const rlimit limit = {addressSpace, addressSpace};
  setrlimit(RLIMIT_AS, &limit);
}

[[maybe_unused]] void exhaust(uint32_t size, rlim_t addressSpace) {
  limitMemory(addressSpace);
  GlobalAlloc(RAXEL_MOVEABLE_ZERO, size);
}

[[maybe_unused]] void exhaustByGrowing(uint32_t size, rlim_t addressSpace) {
  limitMemory(addressSpace);
  GlobalReAlloc(GlobalAlloc(RAXEL_MOVEABLE_ZERO, 8), size, 66);
}

TEST(HandlesDeathTest, ExhaustionPrintsTheRoundedLengthAndEndsTheProcess) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the checking heap ends the process with a report of its own";
#else
  // %ld of the rounded length, which a 32-bit long shows as a negative number.
  const std::string start = "GloalAlloc function failed due to insufficient memory: needs ";
  const bool wide = sizeof(long) == 8;
  EXPECT_EXIT(exhaust(4000000000u, 1u << 30), testing::KilledBySignal(SIGABRT),
              start + (wide ? "4000000032" : "-294967264") + " bytes memory!!");
  EXPECT_EXIT(exhaust(0xFFFFFFFFu, 1u << 30), testing::KilledBySignal(SIGABRT),
              start + (wide ? "4294967328" : "32") + " bytes memory!!");
  EXPECT_EXIT(exhaustByGrowing(4000000000u, 1u << 30), testing::KilledBySignal(SIGABRT),
              start + (wide ? "4000000032" : "-294967264") + " bytes memory!!");
#endif
}

TEST(PointerHandles, OfNothingGrowToZeros) {
  char none = 'x';
  const Handle h = GlobalReAlloc(GlobalPointerToHandle(&none, 0), 4, RAXEL_MOVEABLE_ZERO);
  EXPECT_EQ(GlobalSize(h), 4u);
  EXPECT_EQ(std::memcmp(GlobalLock(h), "\0\0\0\0", 4), 0);
  GlobalFree(h);
}

}  // namespace
