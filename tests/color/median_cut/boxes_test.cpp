// SPDX-License-Identifier: MIT
// The boxes of the median cut: what is measured, which is split, where, and into which slots.
#include "color/median_cut/boxes.h"

#include <gtest/gtest.h>

#include <vector>

#include "raxel/color.h"

namespace {

using States = std::vector<uint16_t>;

constexpr uint16_t rgb5(int red, int green, int blue) {
  return static_cast<uint16_t>(red << 10 | green << 5 | blue);
}

// Entries that differ in blue only: pairs of blue and count, and the spare entry.
std::vector<ColorFreq> listOf(const std::vector<std::pair<int, int>> &entries) {
  std::vector<ColorFreq> list;
  for (const auto &[blue, count] : entries)
    list.push_back({rgb5(0, 0, blue), static_cast<uint16_t>(count)});
  list.push_back({0, 0});
  return list;
}

ColorBox boxOver(int first, int last, uint8_t axis = 2) {
  ColorBox box{};
  box.first = static_cast<uint16_t>(first);
  box.last = static_cast<uint16_t>(last);
  box.axis = axis;
  return box;
}

TEST(Box, IsMeasuredOverItsEntries) {
  const std::vector<ColorFreq> list{
      {rgb5(9, 9, 9), 9}, {rgb5(1, 2, 3), 2}, {rgb5(5, 2, 6), 1}, {rgb5(30, 0, 0), 7}};
  ColorBox box;
  getCRectData(&box, list.data(), 1, 2);
  EXPECT_EQ(box.first, 1);
  EXPECT_EQ(box.last, 2);
  EXPECT_EQ(box.pixelCount, 3u);
  EXPECT_EQ(box.redMin, 1);
  EXPECT_EQ(box.redMax, 5);
  EXPECT_EQ(box.greenMin, 2);
  EXPECT_EQ(box.greenMax, 2);
  EXPECT_EQ(box.blueMin, 3);
  EXPECT_EQ(box.blueMax, 6);
  EXPECT_EQ(box.axis, 0);
  EXPECT_EQ(box.redMean, 2);    // (1 * 2 + 5) / 3
  EXPECT_EQ(box.greenMean, 2);  // 6 / 3
  EXPECT_EQ(box.blueMean, 4);   // (3 * 2 + 6) / 3
}

TEST(Box, EqualSidesGoToRedThenGreen) {
  const auto axisOf = [](uint16_t a, uint16_t b) {
    const ColorFreq list[] = {{a, 1}, {b, 1}};
    ColorBox box;
    getCRectData(&box, list, 0, 1);
    return box.axis;
  };
  EXPECT_EQ(axisOf(rgb5(0, 0, 0), rgb5(4, 4, 4)), 0);
  EXPECT_EQ(axisOf(rgb5(0, 0, 0), rgb5(3, 4, 4)), 1);
  EXPECT_EQ(axisOf(rgb5(0, 0, 0), rgb5(4, 3, 4)), 0);
  EXPECT_EQ(axisOf(rgb5(0, 4, 0), rgb5(3, 0, 5)), 2);
  EXPECT_EQ(axisOf(rgb5(7, 7, 7), rgb5(7, 7, 7)), 0);
}

TEST(Box, WithoutPixelsHasMeansOfZero) {
  const ColorFreq list[] = {{rgb5(9, 9, 9), 0}};
  ColorBox box;
  getCRectData(&box, list, 0, 0);
  EXPECT_EQ(box.pixelCount, 0u);
  EXPECT_EQ(box.redMean, 0);
  EXPECT_EQ(box.redMin, 9);
  getCRectData(&box, list, 1, 0);  // no entries at all
  EXPECT_EQ(box.redMin, 255);
  EXPECT_EQ(box.blueMax, 0);
  EXPECT_EQ(box.axis, 0);
  getCRectData(nullptr, list, 0, 0);
  getCRectData(&box, nullptr, 0, 0);
}

TEST(Box, SumsDoNotOverflow) {
  // 31 * 65535 * 32768 is past 32 bits; the pixels alone are not.
  const std::vector<ColorFreq> list(32768, {rgb5(31, 31, 31), 65535});
  const ColorBox box = color::measureBox(list, 0, 32767);
  EXPECT_EQ(box.pixelCount, 2147450880u);
  EXPECT_EQ(box.redMean, 31);
  EXPECT_EQ(box.blueMean, 31);
}

int32_t medianOf(const std::vector<ColorFreq> &list, int first, int last) {
  const ColorBox box = boxOver(first, last);
  return find_median(list.data(), &box);
}

TEST(Median, OfOneOrTwoEntriesIsTheFirst) {
  const auto list = listOf({{1, 1}, {2, 9}, {3, 9}});
  EXPECT_EQ(medianOf(list, 1, 1), 1);
  EXPECT_EQ(medianOf(list, 1, 2), 1);
}

TEST(Median, IsWhereHalfThePixelsAreReached) {
  // Half of 10 is 5: 1, 3, then 6.
  EXPECT_EQ(medianOf(listOf({{1, 1}, {2, 2}, {3, 3}, {4, 4}}), 0, 3), 2);
  // Half of 21 is 10, reached by the first entry.
  EXPECT_EQ(medianOf(listOf({{1, 15}, {2, 5}, {3, 1}}), 0, 2), 0);
}

TEST(Median, GoesToTheEndOfARunWhenThatIsNearer) {
  // Half of 22 is 11; position 1 has 12. The run of 2s ends at position 2 with 13, 2 above; going
  // down takes off the 4 of position 0, 3 below.
  EXPECT_EQ(medianOf(listOf({{1, 4}, {2, 8}, {2, 1}, {3, 9}}), 0, 3), 2);
  // With a 3 in place of the 4 half of 21 is 10: 12 is 2 above, 11 - 3 = 8 is 2 below, so down.
  EXPECT_EQ(medianOf(listOf({{1, 3}, {2, 8}, {2, 1}, {3, 9}}), 0, 3), 0);
}

TEST(Median, StepsDownThroughTheWholeRunAndOnePast) {
  // Half of 11 is 5; position 2 has 7. Down: 7 - 3 = 4 at position 1, 4 - 1 = 3 at position 0, which
  // the run's own first entry led to. Up: 10 at position 3.
  EXPECT_EQ(medianOf(listOf({{1, 1}, {2, 3}, {2, 3}, {2, 3}, {5, 1}}), 0, 4), 0);
}

TEST(Median, ComparesTheLastEntryWithTheOnePastTheBox) {
  // Half of 11 is 5, reached at the last position. An equal key past the box starts the way down.
  EXPECT_EQ(medianOf(listOf({{1, 1}, {2, 1}, {3, 9}, {3, 1}}), 0, 2), 1);
  EXPECT_EQ(medianOf(listOf({{1, 1}, {2, 1}, {3, 9}, {4, 1}}), 0, 2), 2);
}

TEST(Median, NullRecordsAnswerZero) {
  const ColorBox box = boxOver(0, 5);
  EXPECT_EQ(find_median(nullptr, &box), 0);
  EXPECT_EQ(find_median(listOf({}).data(), nullptr), 0);
  EXPECT_EQ(color::findMedian({}, box), 0);
}

// Slots as they stand after a split of slot 0 over all entries of a list.
struct Slots {
  std::vector<ColorBox> boxes;
  States states;
  uint16_t nBoxes = 1;

  Slots(const std::vector<ColorFreq> &list, uint16_t median, size_t count = 4)
      : boxes(count, ColorBox{}), states(count, 0xFFFF) {
    boxes[0] = boxOver(0, static_cast<int>(list.size()) - 2);
    states[0] = 0;
    EXPECT_EQ(
        split(boxes.data(), 0, median, &nBoxes, states.data(), list.data(), static_cast<uint16_t>(count)),
        1);
  }
};

void expectRange(const ColorBox &box, int first, int last) {
  EXPECT_EQ(box.first, first);
  EXPECT_EQ(box.last, last);
}

TEST(Split, OfTwoEntriesGivesTwoThatCannotBeSplit) {
  const Slots slots(listOf({{1, 5}, {2, 6}}), 0);
  EXPECT_EQ(slots.states, (States{0xFFFF, 0xFFFE, 0xFFFE, 0xFFFF}));
  EXPECT_EQ(slots.nBoxes, 2);
  expectRange(slots.boxes[1], 0, 0);
  expectRange(slots.boxes[2], 1, 1);
  EXPECT_EQ(slots.boxes[1].pixelCount, 5u);
  EXPECT_EQ(slots.boxes[2].blueMean, 2);
  expectRange(slots.boxes[0], 0, 1);  // the parent's record stays
}

TEST(Split, InTheMiddleGivesTwoThatCanBeSplit) {
  const Slots slots(listOf({{1, 1}, {2, 1}, {3, 1}, {4, 1}}), 1);
  EXPECT_EQ(slots.states, (States{0xFFFF, 1, 2, 0xFFFF}));
  expectRange(slots.boxes[1], 0, 1);
  expectRange(slots.boxes[2], 2, 3);
}

TEST(Split, AtTheLastEntryLeavesItAlone) {
  const Slots slots(listOf({{1, 1}, {2, 1}, {3, 1}}), 2);
  EXPECT_EQ(slots.states, (States{0xFFFF, 1, 0xFFFE, 0xFFFF}));
  expectRange(slots.boxes[1], 0, 1);
  expectRange(slots.boxes[2], 2, 2);
}

TEST(Split, BeforeTheLastEntryLeavesOneThatCannotBeSplit) {
  const Slots slots(listOf({{1, 1}, {2, 1}, {3, 1}}), 1);
  EXPECT_EQ(slots.states, (States{0xFFFF, 1, 0xFFFE, 0xFFFF}));
  expectRange(slots.boxes[1], 0, 1);
  expectRange(slots.boxes[2], 2, 2);
}

TEST(Split, MarksALowerBoxSplittableEvenWithOneEntry) {
  const Slots slots(listOf({{1, 1}, {2, 1}}), 1);
  EXPECT_EQ(slots.states, (States{0xFFFF, 1, 0xFFFE, 0xFFFF}));
  expectRange(slots.boxes[1], 0, 0);
  expectRange(slots.boxes[2], 1, 1);
}

TEST(Split, OfOneEntryGivesItAndACopy) {
  const Slots slots(listOf({{1, 7}}), 0);
  EXPECT_EQ(slots.states, (States{0xFFFF, 0xFFFE, 0xFFFE, 0xFFFF}));
  expectRange(slots.boxes[1], 0, 0);
  expectRange(slots.boxes[2], 0, 0);
  EXPECT_EQ(slots.boxes[1].pixelCount, 7u);
  EXPECT_EQ(slots.boxes[2].pixelCount, 7u);
}

TEST(Split, TakesTheLowestFreeSlots) {
  const auto list = listOf({{1, 1}, {2, 1}, {3, 1}, {4, 1}});
  std::vector<ColorBox> boxes(6, ColorBox{});
  boxes[2] = boxOver(0, 3);
  States states{0xFFFF, 1, 2, 0xFFFE, 0xFFFF, 0xFFFF};
  uint16_t nBoxes = 3;
  split(boxes.data(), 2, 1, &nBoxes, states.data(), list.data(), 6);
  EXPECT_EQ(states, (States{0, 1, 0xFFFF, 0xFFFE, 4, 0xFFFF}));
  EXPECT_EQ(nBoxes, 4);
}

TEST(Split, WithoutFreeSlotsUsesTheLast) {
  const auto list = listOf({{1, 1}, {2, 1}, {3, 1}, {4, 1}});
  std::vector<ColorBox> boxes(2, ColorBox{});
  boxes[0] = boxOver(0, 3);
  States states{0, 1};
  uint16_t nBoxes = 2;
  split(boxes.data(), 0, 1, &nBoxes, states.data(), list.data(), 2);
  EXPECT_EQ(states, (States{0xFFFF, 1}));
  expectRange(boxes[1], 2, 3);  // the upper box, written after the lower one
}

TEST(Split, NullRecordsAndSlotsThatAreNone) {
  const auto list = listOf({{1, 1}});
  ColorBox box = boxOver(0, 0);
  uint16_t state = 0;
  uint16_t nBoxes = 1;
  EXPECT_EQ(split(nullptr, 0, 0, &nBoxes, &state, list.data(), 1), 0);
  EXPECT_EQ(split(&box, 0, 0, nullptr, &state, list.data(), 1), 0);
  EXPECT_EQ(split(&box, 0, 0, &nBoxes, nullptr, list.data(), 1), 0);
  EXPECT_EQ(split(&box, 0, 0, &nBoxes, &state, nullptr, 1), 0);
  EXPECT_EQ(split(&box, 1, 0, &nBoxes, &state, list.data(), 1), 0);
  EXPECT_EQ(split(&box, 0, 0, &nBoxes, &state, list.data(), 0), 0);
  EXPECT_EQ(nBoxes, 1);
}

TEST(LargestBox, IsTheFirstOfTheFullestThatCanBeSplit) {
  std::vector<ColorBox> boxes(6, ColorBox{});
  for (size_t i = 0; i < 6; ++i) boxes[i].pixelCount = 10;
  boxes[1].pixelCount = 99;
  boxes[4].pixelCount = 99;
  boxes[5].pixelCount = 100;
  const auto find = [&](const States &states) {
    return GetMaxHistSum(boxes.data(), states.data(), static_cast<uint16_t>(states.size()));
  };
  EXPECT_EQ(find({0, 1, 2, 3, 4, 0xFFFE}), 1);
  EXPECT_EQ(find({0, 0xFFFF, 2, 3, 4, 0x8005}), 4);  // read as signed, 0x8005 is negative
  EXPECT_EQ(find({0xFFFF, 0xFFFF, 2, 3}), 2);
  EXPECT_EQ(find({0xFFFF, 0xFFFE, 0xFFFF}), 0);
  EXPECT_EQ(find({}), 0);
  EXPECT_EQ(GetMaxHistSum(nullptr, nullptr, 3), 0);
}

TEST(LargestBox, MayBeEmpty) {
  const std::vector<ColorBox> boxes(3, ColorBox{});
  EXPECT_EQ(GetMaxHistSum(boxes.data(), States{0xFFFF, 1, 2}.data(), 3), 1);
}

}  // namespace
