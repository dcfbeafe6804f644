// SPDX-License-Identifier: MIT
#include "color/median_cut/boxes.h"

#include <algorithm>

#include "color/median_cut/histogram.h"

static_assert(sizeof(ColorFreq) == 4 && sizeof(ColorBox) == 20, "records of the host's without holes");

namespace color {

namespace {

// One channel's extremes and weighted sum, as they are gathered over a box.
struct Channel {
  uint8_t min = 255;
  uint8_t max = 0;
  uint64_t sum = 0;  // past 32 bits from about 138 million pixels on

  void add(uint32_t value, uint16_t count) {
    min = std::min(min, static_cast<uint8_t>(value));
    max = std::max(max, static_cast<uint8_t>(value));
    sum += uint64_t{value} * count;
  }
  int extent() const { return max - min; }
  uint8_t mean(uint32_t pixels) const {
    return pixels != 0 ? static_cast<uint8_t>(sum / pixels) : uint8_t{0};
  }
};

uint32_t firstFree(std::span<const uint16_t> states, uint32_t from) {
  for (uint32_t slot = from; slot < states.size(); ++slot) {
    if (states[slot] == kFreeSlot) return slot;
  }
  return static_cast<uint32_t>(states.size() - 1);
}

}  // namespace

ColorBox measureBox(std::span<const ColorFreq> list, int32_t first, int32_t last) {
  Channel red;
  Channel green;
  Channel blue;
  ColorBox box{};
  box.first = static_cast<uint16_t>(first);
  box.last = static_cast<uint16_t>(last);
  for (int64_t i = std::max(first, 0); i <= last && i < static_cast<int64_t>(list.size()); ++i) {
    const ColorFreq &entry = list[static_cast<size_t>(i)];
    box.pixelCount += entry.count;
    red.add(channelOf(entry.color15, 0), entry.count);
    green.add(channelOf(entry.color15, 1), entry.count);
    blue.add(channelOf(entry.color15, 2), entry.count);
  }
  box.redMin = red.min;
  box.redMax = red.max;
  box.greenMin = green.min;
  box.greenMax = green.max;
  box.blueMin = blue.min;
  box.blueMax = blue.max;
  // Equal sides go to red, then to green.
  int longest = red.extent();
  if (green.extent() > longest) {
    longest = green.extent();
    box.axis = 1;
  }
  if (blue.extent() > longest) box.axis = 2;
  box.redMean = red.mean(box.pixelCount);
  box.greenMean = green.mean(box.pixelCount);
  box.blueMean = blue.mean(box.pixelCount);
  return box;
}

uint32_t largestBox(std::span<const ColorBox> boxes, std::span<const uint16_t> states) {
  uint32_t found = 0;
  uint32_t most = 0;
  bool any = false;
  for (uint32_t slot = 0; slot < boxes.size(); ++slot) {
    if (static_cast<int16_t>(states[slot]) < 0) continue;
    if (any && boxes[slot].pixelCount <= most) continue;
    any = true;
    found = slot;
    most = boxes[slot].pixelCount;
  }
  return found;
}

int32_t findMedian(std::span<const ColorFreq> list, const ColorBox &box) {
  const int32_t first = box.first;
  const int32_t last = box.last;
  if (last - first <= 1) return first;
  const auto at = [list](int32_t i) {
    const auto position = static_cast<size_t>(i);
    return position < list.size() ? list[position] : ColorFreq{};
  };
  const auto sameKeyAsNext = [at, axis = box.axis](int32_t i) {
    return channelOf(at(i).color15, axis) == channelOf(at(i + 1).color15, axis);
  };
  int64_t total = 0;
  for (int32_t i = first; i <= last; ++i) total += at(i).count;
  const int64_t half = total / 2;

  int32_t middle = first;
  int64_t sum = at(first).count;
  while (sum < half && middle < last) sum += at(++middle).count;

  // Up to the end of the run of equal keys that holds the middle.
  int32_t above = middle;
  int64_t sumAbove = sum;
  while (above < last && sameKeyAsNext(above)) sumAbove += at(++above).count;

  // Down through the run. What is taken off is the count of the entry stepped to, not of the one
  // stepped from, and from the box's last entry the comparison is with the entry past the box. The
  // cut positions depend on it.
  int32_t below = middle;
  int64_t sumBelow = sum;
  while (below > first && sameKeyAsNext(below)) sumBelow -= at(--below).count;

  return half - sumBelow > sumAbove - half ? above : below;
}

void splitBox(std::span<ColorBox> boxes, std::span<uint16_t> states, uint32_t slot, int32_t median,
              std::span<const ColorFreq> list) {
  const int32_t first = boxes[slot].first;
  const int32_t last = boxes[slot].last;

  const uint32_t lower = firstFree(states, 0);
  if (median == first) {
    states[lower] = kUnsplittable;
    boxes[lower] = measureBox(list, first, median);
  } else {
    // Marked as one that can be split even when it holds a single entry.
    states[lower] = static_cast<uint16_t>(lower);
    boxes[lower] = measureBox(list, first, median == last ? median - 1 : median);
  }

  const uint32_t upper = firstFree(states, lower + 1);
  if (median == last) {
    states[upper] = kUnsplittable;
    boxes[upper] = measureBox(list, median, last);
  } else {
    states[upper] = median + 1 == last ? kUnsplittable : static_cast<uint16_t>(upper);
    boxes[upper] = measureBox(list, median + 1, last);
  }
  states[slot] = kFreeSlot;
}

}  // namespace color

namespace {

// The exported calls know no list length: the host answers for every position that a box names.
constexpr size_t kLongestList = 65537;

}  // namespace

void getCRectData(ColorBox *box, const ColorFreq *list, int16_t first, int16_t last) {
  if (box == nullptr || list == nullptr) return;
  *box = color::measureBox({list, kLongestList}, first, last);
}

int32_t find_median(const ColorFreq *list, const ColorBox *box) {
  if (list == nullptr || box == nullptr) return 0;
  return color::findMedian({list, kLongestList}, *box);
}

int32_t split(ColorBox *boxes, uint16_t slot, uint16_t median, uint16_t *nBoxes, uint16_t *states,
              const ColorFreq *list, uint16_t colorCount) {
  if (boxes == nullptr || nBoxes == nullptr || states == nullptr || list == nullptr) return 0;
  if (slot >= colorCount) return 0;
  color::splitBox({boxes, colorCount}, {states, colorCount}, slot, median, {list, kLongestList});
  *nBoxes = static_cast<uint16_t>(*nBoxes + 1);
  return 1;
}

int32_t GetMaxHistSum(const ColorBox *boxes, const uint16_t *states, uint16_t colorCount) {
  if (boxes == nullptr || states == nullptr) return 0;
  return static_cast<int32_t>(color::largestBox({boxes, colorCount}, {states, colorCount}));
}
