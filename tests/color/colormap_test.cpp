// SPDX-License-Identifier: MIT
// The map from one picture's indexes to another's, and the library's names for handle memory.
#include "color/colormap.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <vector>

#include "raxel/color.h"
#include "raxel/memory.h"

namespace {

using Words = std::vector<uint32_t>;

Words takeMap(Handle map) {
  const auto *words = static_cast<const uint32_t *>(rlLockMemory(map));
  Words out(words, words + GlobalSize(map) / 4);
  EXPECT_EQ(rlUnlockMemory(map), 0);
  EXPECT_EQ(rlFreeColormap(map), 0);
  return out;
}

constexpr uint8_t kTwo[] = {255, 0, 0, 7, 8, 9};
constexpr uint8_t kThree[] = {0, 0, 0, 250, 1, 2, 9, 9, 9};

TEST(Colormap, DeepSourcesHaveNone) {
  for (const int16_t depth : std::to_array<int16_t>({-1, 0, 9, 16, 24, 31, 32, 33, 32767})) {
    EXPECT_EQ(rlBuildColormap(kTwo, depth, kThree, 8, 3), 0u) << depth;
  }
}

// Bytes that the heap has handed out. (A checking heap does not count them, but reports what is lost.)
size_t heapInUse() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

TEST(Colormap, DeepSourcesAllocateNothing) {
  for (const int16_t depth : std::to_array<int16_t>({9, 16, 24, 32})) {
    const size_t before = heapInUse();
    const Handle map = rlBuildColormap(kTwo, depth, kThree, 8, 3);
    EXPECT_EQ(heapInUse(), before) << depth;
    EXPECT_EQ(map, 0u) << depth;
  }
}

TEST(Colormap, NamesTheNearestEntries) {
  EXPECT_EQ(takeMap(rlBuildColormap(kTwo, 1, kThree, 8, 3)), (Words{1, 2}));
  EXPECT_EQ(takeMap(rlBuildColormap(kTwo, 1, kThree, 1, 1)), (Words{0, 0}));
}

TEST(Colormap, HoldsRgbWordsForTwentyFourBitsOnly) {
  EXPECT_EQ(takeMap(rlBuildColormap(kTwo, 1, nullptr, 24, 0)), (Words{0xFF000000, 0x07080900}));
  EXPECT_EQ(takeMap(rlBuildColormap(kTwo, 1, kThree, 24, 3)), (Words{0xFF000000, 0x07080900}));
  EXPECT_EQ(takeMap(rlBuildColormap(kTwo, 1, kThree, 32, 3)), (Words{1, 2}));
}

TEST(Colormap, TheSourcesTableServesADeeperDestination) {
  // An index is kept when it is its own nearest entry: twins give the lower one.
  const std::vector<uint8_t> table{1, 20, 3, 1, 20, 3, 4, 4, 4, 200, 0, 0};
  EXPECT_EQ(takeMap(rlBuildColormap(table.data(), 2, nullptr, 8, 0)), (Words{0, 0, 2, 3}));
  EXPECT_EQ(takeMap(rlBuildColormap(table.data(), 2, nullptr, 2, 0)), (Words{0, 0, 2, 3}));
  // ... and not a shallower one, where the words stay 0.
  EXPECT_EQ(takeMap(rlBuildColormap(table.data(), 2, nullptr, 1, 0)), (Words{0, 0, 0, 0}));
}

TEST(Colormap, StaysZeroWithoutATable) {
  EXPECT_EQ(takeMap(rlBuildColormap(nullptr, 4, kThree, 8, 3)), Words(16, 0));
  EXPECT_EQ(takeMap(rlBuildColormap(nullptr, 8, nullptr, 24, 0)), Words(256, 0));
}

TEST(Colormap, GreysOfASourceFindOnlyGreys) {
  const uint8_t source[] = {100, 102, 104, 100, 110, 120};
  const uint8_t colors[] = {90, 0, 0, 100, 110, 121};
  EXPECT_EQ(takeMap(rlBuildColormap(source, 1, colors, 4, 2)), (Words{0, 1}));
}

TEST(Colormap, EntriesPastAShortTableAreBlack) {
  Words map(4, 0xEEEEEEEE);
  const std::vector<uint8_t> table{1, 2, 3, 4, 5};
  color::fillColormap(map, table, 2, {}, 24, 0);
  EXPECT_EQ(map, (Words{0x01020300, 0x04050000, 0, 0}));
}

TEST(ColorMemory, IsZeroFilledAndFreedOnce) {
  const Handle h = rlGetMemory(3, 5);
  EXPECT_EQ(GlobalSize(h), 15u);
  const auto *p = static_cast<const uint8_t *>(rlLockMemory(h));
  for (int i = 0; i < 15; ++i) EXPECT_EQ(p[i], 0);
  EXPECT_EQ(rlPointertoHandle(p), h);
  EXPECT_EQ(rlUnlockMemory(h), 0);
  EXPECT_EQ(rlFreeNewData(h), 1);
}

TEST(ColorMemory, NullHandlesDoNothing) {
  EXPECT_EQ(rlLockMemory(0), nullptr);
  EXPECT_EQ(rlUnlockMemory(0), 0);
  EXPECT_EQ(rlFreeNewData(0), 0);
  EXPECT_EQ(rlFreeColormap(0), 0);
  EXPECT_EQ(rlPointertoHandle(nullptr), 0u);
}

TEST(ColorMemory, SizesThatFitInNoBlockGiveNone) {
  EXPECT_EQ(rlGetMemory(-1, 1), 0u);
  EXPECT_EQ(rlGetMemory(-32768, 0), 0u);
  EXPECT_EQ(rlGetMemory(2, 0x80000000), 0u);
  EXPECT_EQ(rlGetMemory(32767, 0xFFFFFFFF), 0u);
  const Handle h = rlGetMemory(0, 0xFFFFFFFF);
  EXPECT_EQ(GlobalSize(h), 0u);
  EXPECT_EQ(rlFreeNewData(h), 1);
}

// A map that is shorter than its depth has room for is filled to its end, and none at all of a deep source.
TEST(Colormap, IsFilledAsFarAsItGoes) {
  std::array<uint32_t, 4> map = {9, 9, 9, 9};

  color::fillColormap(std::span(map).first(3), kTwo, 2, kThree, 24, 3);
  EXPECT_EQ(map, (std::array<uint32_t, 4>{0xFF000000, 0x07080900, 0, 9}));
  color::fillColormap(map, kThree, 24, kThree, 24, 3);
  EXPECT_EQ(map, (std::array<uint32_t, 4>{0xFF000000, 0x07080900, 0, 9}));
}

}  // namespace
