// SPDX-License-Identifier: MIT
// The heap sort of the colour list.
//
// It sorts a box of n entries, but builds its heap over n + 1: the entry just past the box takes part
// and may end up inside it, while one of the box's own moves out to the next box. Host tables
// depend on it; the list has a spare entry at its end for the last box.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/color.h"

namespace color {

// Lets the entry at start sink below larger ones in the heap that ends at position last. Of two equal
// children the right one rises. No position past the list is touched.
void adjustHeap(std::span<ColorFreq> list, int32_t axis, int32_t start, int32_t last);

// Sorts the first n entries by one 5-bit channel (0 red, 1 green, 2 blue), ascending.
void heapSort(std::span<ColorFreq> list, int32_t axis, int32_t n);

}  // namespace color
