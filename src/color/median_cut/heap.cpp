// SPDX-License-Identifier: MIT
#include "color/median_cut/heap.h"

#include <algorithm>
#include <utility>

#include "color/median_cut/histogram.h"

namespace color {

void adjustHeap(std::span<ColorFreq> list, int32_t axis, int32_t start, int32_t last) {
  if (start < 0) return;
  const auto end =
      static_cast<size_t>(std::clamp<int64_t>(last, -1, static_cast<int64_t>(list.size()) - 1) + 1);
  const auto key = [list, axis](size_t i) { return channelOf(list[i].color15, axis); };
  auto parent = static_cast<size_t>(start);
  for (size_t child = 2 * parent + 1; child < end; child = 2 * parent + 1) {
    if (child + 1 < end && key(child) <= key(child + 1)) ++child;
    if (key(parent) >= key(child)) return;
    std::swap(list[parent], list[child]);
    parent = child;
  }
}

void heapSort(std::span<ColorFreq> list, int32_t axis, int32_t n) {
  // One past the box: see the top of heap.h.
  for (int32_t start = (n - 2) / 2; start >= 0; --start) adjustHeap(list, axis, start, n);
  for (int32_t i = n - 1; i >= 1; --i) {
    std::swap(list[0], list[static_cast<size_t>(i)]);
    adjustHeap(list, axis, 0, i - 1);
  }
}

}  // namespace color

void clrswap(ColorFreq *a, ColorFreq *b) {
  if (a != nullptr && b != nullptr) std::swap(*a, *b);
}

void AdjustHeap(ColorFreq *list, int16_t axis, int32_t start, int32_t last) {
  if (list == nullptr || last < 0) return;
  color::adjustHeap({list, static_cast<size_t>(last) + 1}, axis, start, last);
}

// The caller's list holds one entry more than the n that are sorted.
void HeapSort(ColorFreq *list, int16_t axis, uint16_t n) {
  if (list == nullptr || n == 0) return;
  color::heapSort({list, size_t{n} + 1}, axis, n);
}
