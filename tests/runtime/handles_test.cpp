// Handle memory: the block's layout, locking, reallocation and the pointer layer.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "raxel/memory.h"

namespace {

// The rounded length of a block follows from where its slack ends: size + 34, low three bits off.
TEST(Handles, DataLieTwentyFourBytesPastTheHandle) {
  for (uint32_t size : {0u, 1u, 6u, 13u, 14u, 4096u}) {
    const Handle h = GlobalAlloc(66, size);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(GlobalLock(h)), h + 24);
    EXPECT_EQ(GlobalSize(h), size);
    EXPECT_EQ(GlobalFree(h), 0);
  }
}

TEST(Handles, BackOffsetAppearsWithTheFirstLock) {
  const Handle h = GlobalAlloc(66, 10);
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
  for (int i = 0; i < 16; ++i) EXPECT_EQ(p[i], 0);
  GlobalFree(h);
}

TEST(Handles, ReallocationKeepsTheSmallerSizeAndZeroesTheTail) {
  Handle h = GlobalAlloc(66, 8);
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

TEST(Handles, ReallocationOfAPointerHandleCopiesTheCallersMemory) {
  char text[] = "caller";
  const Handle h = GlobalReAlloc(GlobalPointerToHandle(text, 6), 4, 66);
  EXPECT_EQ(std::memcmp(GlobalLock(h), "call", 4), 0);
  EXPECT_STREQ(text, "caller");
  GlobalFree(h);
}

TEST(Handles, NullHandles) {
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

TEST(HandlesDeathTest, ExhaustionPrintsTheRoundedLengthAndEndsTheProcess) {
  // Nothing can supply these on a 32-bit machine; a 64-bit one may, so ask there under a limit.
  if (sizeof(void *) == 4) {
    EXPECT_DEATH(GlobalAlloc(66, 0xFFFFFFF0u), "");
  } else {
    GTEST_SKIP() << "a 64-bit machine can supply every size that a u32 asks for";
  }
}

}  // namespace
