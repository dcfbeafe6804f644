// SPDX-License-Identifier: MIT
// The boxes of the median cut: measuring one, choosing the next to split, finding where, splitting.
//
// A box is a stretch of the colour list together with its colours' ranges and mean. It lives in a
// slot, and each slot has a state:
//
//   0xFFFF         free
//   0xFFFE         a box that cannot be split
//   anything else  a box that can; the slot's own number is stored
//
// States are compared as signed numbers, where those of boxes that can be split are not negative.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/color.h"

namespace color {

constexpr uint16_t kFreeSlot = 0xFFFF;
constexpr uint16_t kUnsplittable = 0xFFFE;

// The box over positions first to last. Positions outside the list count nothing; the means of a box
// without pixels are 0.
ColorBox measureBox(std::span<const ColorFreq> list, int32_t first, int32_t last);

// The slot of the box with the most pixels among those that can be split, the lowest of equals; 0 when
// there is none.
uint32_t largestBox(std::span<const ColorBox> boxes, std::span<const uint16_t> states);

// The position after which to cut a box whose stretch of the list is sorted along its axis. The list
// is read one past the box's end.
int32_t findMedian(std::span<const ColorFreq> list, const ColorBox &box);

// Splits the box of a slot after position median into the two lowest free slots, or the last slot
// when none is free. The slot becomes free, and the parent's record stays there until it is reused.
void splitBox(std::span<ColorBox> boxes, std::span<uint16_t> states, uint32_t slot, int32_t median,
              std::span<const ColorFreq> list);

}  // namespace color
