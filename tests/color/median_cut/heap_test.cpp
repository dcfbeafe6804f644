// SPDX-License-Identifier: MIT
// The heap sort of the colour list, and the entry past the box that takes part in it.
#include "color/median_cut/heap.h"

#include <gtest/gtest.h>

#include <vector>

#include "raxel/color.h"

namespace {

using Keys = std::vector<int>;

// A list whose entries have these blue channels and, to tell them apart, their positions as counts.
std::vector<ColorFreq> listOf(const Keys &blues) {
  std::vector<ColorFreq> list;
  for (const int blue : blues) {
    list.push_back({static_cast<uint16_t>(blue), static_cast<uint16_t>(list.size())});
  }
  return list;
}

Keys blues(const std::vector<ColorFreq> &list) {
  Keys out;
  for (const ColorFreq &entry : list) out.push_back(entry.color15);
  return out;
}

Keys places(const std::vector<ColorFreq> &list) {
  Keys out;
  for (const ColorFreq &entry : list) out.push_back(entry.count);
  return out;
}

TEST(HeapSort, SortsTheBoxAscending) {
  auto list = listOf({5, 3, 9, 1, 7, 0});
  HeapSort(list.data(), 2, 5);
  EXPECT_EQ(blues(list), (Keys{1, 3, 5, 7, 9, 0}));
}

TEST(HeapSort, TakesInTheEntryPastTheBox) {
  // The heap is built over three entries: 5 rises to the top, 1 sinks out of the box.
  auto list = listOf({1, 2, 5, 4});
  HeapSort(list.data(), 2, 2);
  EXPECT_EQ(blues(list), (Keys{2, 5, 1, 4}));
}

TEST(HeapSort, ExchangesASingleEntryWithALargerOnePastIt) {
  auto list = listOf({3, 7});
  HeapSort(list.data(), 2, 1);
  EXPECT_EQ(blues(list), (Keys{7, 3}));
  HeapSort(list.data(), 2, 1);
  EXPECT_EQ(blues(list), (Keys{7, 3}));
}

TEST(HeapSort, SortsNothingForACountOfZero) {
  auto list = listOf({3, 7});
  HeapSort(list.data(), 2, 0);
  EXPECT_EQ(blues(list), (Keys{3, 7}));
}

TEST(HeapSort, LooksAtOneChannelOnly) {
  std::vector<ColorFreq> list{
      {2 << 10 | 9 << 5 | 1, 0}, {1 << 10 | 8 << 5 | 3, 1}, {3 << 10 | 7 << 5 | 2, 2}, {0, 3}};
  HeapSort(list.data(), 0, 3);
  EXPECT_EQ(places(list), (Keys{1, 0, 2, 3}));
  HeapSort(list.data(), 1, 3);
  EXPECT_EQ(places(list), (Keys{2, 1, 0, 3}));
  HeapSort(list.data(), 2, 3);
  EXPECT_EQ(places(list), (Keys{0, 2, 1, 3}));
}

TEST(AdjustHeap, RaisesTheRightOneOfEqualChildren) {
  auto list = listOf({1, 3, 3});
  AdjustHeap(list.data(), 2, 0, 2);
  EXPECT_EQ(places(list), (Keys{2, 1, 0}));
}

TEST(AdjustHeap, WithoutEntriesDoesNothing) {
  auto list = listOf({1, 2, 3});
  AdjustHeap(list.data(), 2, 0, -1);
  AdjustHeap(nullptr, 2, 0, 2);
  EXPECT_EQ(places(list), (Keys{0, 1, 2}));
}

TEST(AdjustHeap, StopsAtEqualKeysAndAtTheLastPosition) {
  auto list = listOf({3, 3, 3});
  AdjustHeap(list.data(), 2, 0, 2);
  EXPECT_EQ(places(list), (Keys{0, 1, 2}));
  list = listOf({1, 2, 9});
  AdjustHeap(list.data(), 2, 0, 1);  // 9 lies past the last position
  EXPECT_EQ(blues(list), (Keys{2, 1, 9}));
  list = listOf({1, 2, 3, 9, 9});
  color::adjustHeap(std::span(list).first(3), 2, 1, 4);  // a position past the list
  EXPECT_EQ(blues(list), (Keys{1, 2, 3, 9, 9}));
}

TEST(AdjustHeap, SinksThroughSeveralLevels) {
  auto list = listOf({0, 8, 9, 5, 6, 7, 1});
  AdjustHeap(list.data(), 2, 0, 6);
  EXPECT_EQ(blues(list), (Keys{9, 8, 7, 5, 6, 0, 1}));
}

// Whole histograms have 32,768 entries, and one past them.
TEST(AdjustHeap, ReachesTheEntryPastAWholeHistogram) {
  std::vector<ColorFreq> list(32769, ColorFreq{1, 0});
  list[16383] = {0, 7};  // its left child is the last entry but one
  list[32768] = {9, 8};
  AdjustHeap(list.data(), 2, 16383, 32768);
  EXPECT_EQ(list[16383].count, 8);
  EXPECT_EQ(list[32768].count, 7);
}

TEST(Heap, PlacesOutsideTheListAreLeftAlone) {
  auto list = listOf({1, 5});
  color::adjustHeap(list, 2, 0, 30000);
  EXPECT_EQ(blues(list), (Keys{5, 1}));
  color::adjustHeap(list, 2, -1, 1);
  color::adjustHeap(list, 2, 7, 30000);
  color::adjustHeap({}, 2, 0, 1);
  color::heapSort(list, 2, 2);  // without the spare entry
  EXPECT_EQ(blues(list), (Keys{1, 5}));
  AdjustHeap(nullptr, 0, 0, 5);
  HeapSort(nullptr, 0, 5);
}

TEST(Heap, SwapsTwoEntriesOfTheList) {
  ColorFreq a{1, 2};
  ColorFreq b{3, 4};
  clrswap(&a, &b);
  EXPECT_EQ(a.color15, 3);
  EXPECT_EQ(a.count, 4);
  EXPECT_EQ(b.color15, 1);
  EXPECT_EQ(b.count, 2);
  clrswap(&a, nullptr);
  clrswap(nullptr, &b);
  EXPECT_EQ(a.color15, 3);
}

}  // namespace
