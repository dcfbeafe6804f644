// SPDX-License-Identifier: MIT
// Which pointers are those of handle memory.
#include "runtime/live_blocks.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "raxel/memory.h"
#include "support/blocks.h"
#include "support/random.h"

namespace {

using runtime::blockWithData;

TEST(LiveBlocks, AreKnownByTheirDataUntilTheyGo) {
  const Handle h = support::newBlock(100);
  const auto *data = static_cast<const uint8_t *>(GlobalLock(h));
  EXPECT_EQ(blockWithData(data), h);
  EXPECT_EQ(blockWithData(data + 1), 0u) << "only the beginning counts";
  EXPECT_EQ(blockWithData(data - 24), 0u);
  GlobalFree(h);
  EXPECT_EQ(blockWithData(data), 0u);
  EXPECT_EQ(blockWithData(nullptr), 0u);
}

TEST(LiveBlocks, AreCounted) {
  const size_t before = runtime::countBlocks();
  const Handle first = support::newBlock(1);
  const Handle second = GlobalReAlloc(support::newBlock(1), 100000, 66);
  EXPECT_EQ(runtime::countBlocks(), before + 2);
  GlobalFree(first);
  GlobalFree(second);
  EXPECT_EQ(runtime::countBlocks(), before);
}

TEST(LiveBlocks, KeepTheirPlaceThroughAReallocation) {
  Handle h = support::newBlock(10);
  const void *before = GlobalLock(h);
  const Handle between = support::newBlock(10);
  h = GlobalReAlloc(h, 1000000, 66);
  EXPECT_EQ(blockWithData(GlobalLock(h)), h);
  EXPECT_EQ(blockWithData(before) != 0, before == GlobalLock(h));
  GlobalFree(h);
  GlobalFree(between);
}

TEST(LiveBlocks, ForeignMemoryIsNone) {
  alignas(8) uint8_t memory[64] = {};
  EXPECT_EQ(blockWithData(memory + 24), 0u);
  const Handle h = GlobalPointerToHandle(memory + 24, 16);
  EXPECT_EQ(blockWithData(GlobalLock(h)), 0u) << "a pointer handle does not own what it describes";
  GlobalFree(h);
}

TEST(LiveBlocks, AnyNumberOfThemComesAndGoes) {
  support::Random random(7);
  std::vector<Handle> blocks;
  std::vector<const void *> gone;
  for (int step = 0; step < 20000; ++step) {
    if (blocks.size() < 2000 && random.chance(step < 10000 ? 70 : 30)) {
      blocks.push_back(support::newBlock(static_cast<uint32_t>(random.between(0, 60))));
    } else if (!blocks.empty()) {
      const int64_t last = static_cast<int64_t>(blocks.size()) - 1;
      std::swap(blocks[static_cast<size_t>(random.between(0, last))], blocks.back());
      const void *data = GlobalLock(blocks.back());
      GlobalFree(blocks.back());
      blocks.pop_back();
      EXPECT_EQ(blockWithData(data), 0u);
    }
    if (step % 500 != 0) continue;
    for (const Handle h : blocks) ASSERT_EQ(blockWithData(GlobalLock(h)), h) << step;
  }
  for (const Handle h : blocks) GlobalFree(h);
}

TEST(LiveBlocks, ThreadsMayAllocateAtTheSameTime) {
  std::vector<std::thread> threads;
  std::atomic<int> unknown = 0;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      std::vector<Handle> blocks;
      for (int i = 0; i < 3000; ++i) {
        blocks.push_back(support::newBlock(8));
        if (i % 3 == 2) {
          GlobalFree(blocks.front());
          blocks.erase(blocks.begin());
        }
      }
      for (const Handle h : blocks) unknown += blockWithData(GlobalLock(h)) == h ? 0 : 1;
      for (const Handle h : blocks) GlobalFree(h);
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(unknown, 0);
}

}  // namespace
