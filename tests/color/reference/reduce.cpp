// SPDX-License-Identifier: MIT
#include "color/reference/reduce.h"

#include <utility>

namespace reference {

namespace {

enum State { kFree, kSingle, kOpen };

struct Box {
  int first = 0;
  int last = 0;
  long long pixels = 0;
  int axis = 0;
  int mean[3] = {0, 0, 0};
};

int keyOf(const Color &color, int axis) {
  const int divisors[] = {1024, 32, 1};
  return color.cell / divisors[axis] % 32;
}

void sift(Color *list, int axis, int parent, int last) {
  while (2 * parent + 1 <= last) {
    const int left = 2 * parent + 1;
    const int right = left + 1;
    int larger = right;
    if (left == last) {
      larger = left;
    } else if (keyOf(list[left], axis) > keyOf(list[right], axis)) {
      larger = left;
    }
    if (!(keyOf(list[parent], axis) < keyOf(list[larger], axis))) break;
    std::swap(list[parent], list[larger]);
    parent = larger;
  }
}

Box boxOver(const std::vector<Color> &list, int first, int last) {
  Box box;
  box.first = first;
  box.last = last;
  int extent[3];
  long long sums[3] = {0, 0, 0};
  for (int axis = 0; axis < 3; ++axis) {
    int least = 255;
    int most = 0;
    for (int i = first; i <= last; ++i) {
      const Color &color = list[static_cast<size_t>(i)];
      const int key = keyOf(color, axis);
      if (key < least) least = key;
      if (key > most) most = key;
      sums[axis] += static_cast<long long>(key) * color.count;
      if (axis == 0) box.pixels += color.count;
    }
    extent[axis] = most - least;
  }
  if (extent[1] > extent[0]) box.axis = 1;
  if (extent[2] > extent[box.axis]) box.axis = 2;
  for (int axis = 0; axis < 3; ++axis) {
    box.mean[axis] = box.pixels == 0 ? 0 : static_cast<int>(sums[axis] / box.pixels);
  }
  return box;
}

int medianOf(const std::vector<Color> &list, const Box &box) {
  if (box.last - box.first <= 1) return box.first;
  const auto count = [&](int i) { return list[static_cast<size_t>(i)].count; };
  const auto key = [&](int i) { return keyOf(list[static_cast<size_t>(i)], box.axis); };
  int total = 0;
  for (int i = box.first; i <= box.last; ++i) total += count(i);
  const int half = total / 2;
  int i = box.first;
  int acc = count(i);
  while (acc < half) {
    i = i + 1;
    acc = acc + count(i);
  }
  int j = i;
  int up = acc;
  while (j < box.last && key(j) == key(j + 1)) {
    j = j + 1;
    up = up + count(j);
  }
  int k = i;
  int down = acc;
  while (k > box.first && key(k) == key(k + 1)) {
    k = k - 1;
    down = down - count(k);
  }
  if ((half - down) > (up - half)) return j;
  return k;
}

size_t freeSlot(const std::vector<State> &states, size_t from) {
  for (size_t slot = from; slot < states.size(); ++slot) {
    if (states[slot] == kFree) return slot;
  }
  return states.size() - 1;
}

void cut(std::vector<Box> &boxes, std::vector<State> &states, size_t b, int m,
         const std::vector<Color> &list) {
  const Box parent = boxes[b];
  const size_t s1 = freeSlot(states, 0);
  if (m == parent.first) {
    boxes[s1] = boxOver(list, parent.first, m);
    states[s1] = kSingle;
  } else {
    boxes[s1] = boxOver(list, parent.first, m == parent.last ? m - 1 : m);
    states[s1] = kOpen;
  }
  const size_t s2 = freeSlot(states, s1 + 1);
  if (m == parent.last) {
    boxes[s2] = boxOver(list, m, parent.last);
    states[s2] = kSingle;
  } else {
    boxes[s2] = boxOver(list, m + 1, parent.last);
    states[s2] = m + 1 == parent.last ? kSingle : kOpen;
  }
  states[b] = kFree;
}

size_t fullest(const std::vector<Box> &boxes, const std::vector<State> &states) {
  size_t best = 0;
  long long most = -1;
  for (size_t slot = 0; slot < boxes.size(); ++slot) {
    if (states[slot] == kOpen && boxes[slot].pixels > most) {
      most = boxes[slot].pixels;
      best = slot;
    }
  }
  return best;
}

uint8_t byteOf(int channel5) {
  return static_cast<uint8_t>(channel5 == 0 ? 0 : channel5 * 8 + 7);
}

}  // namespace

void sortColors(Color *list, int axis, int n) {
  for (int start = (n - 2) / 2; start >= 0; --start) sift(list, axis, start, n);
  for (int i = n - 1; i >= 1; --i) {
    std::swap(list[0], list[i]);
    sift(list, axis, 0, i - 1);
  }
}

Reduced reduce(const Bytes &rows, uint32_t width, uint32_t height, int wanted) {
  std::vector<uint16_t> histogram(32768, 0);
  int distinct = 0;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const uint8_t *pixel = rows.data() + size_t{y} * ((width * 3 + 3) / 4 * 4) + size_t{x} * 3;
      const auto cell = static_cast<size_t>(pixel[0] / 8 * 1024 + pixel[1] / 8 * 32 + pixel[2] / 8);
      if (histogram[cell] == 0) distinct++;
      if (histogram[cell] != 65535) histogram[cell]++;
    }
  }
  std::vector<Color> list;
  for (int cell = 0; cell < 32768; ++cell) {
    if (histogram[static_cast<size_t>(cell)] != 0)
      list.push_back({cell, histogram[static_cast<size_t>(cell)]});
  }
  list.push_back({0, 0});

  Reduced out{Bytes(static_cast<size_t>(wanted) * 3, 0), wanted};
  if (distinct < wanted) {
    for (int i = 0; i < distinct; ++i) {
      for (int axis = 0; axis < 3; ++axis) {
        out.table[static_cast<size_t>(i * 3 + axis)] = byteOf(keyOf(list[static_cast<size_t>(i)], axis));
      }
    }
    out.count = distinct;
    return out;
  }
  if (wanted == 0) return out;
  std::vector<Box> boxes(static_cast<size_t>(wanted));
  std::vector<State> states(static_cast<size_t>(wanted), kFree);
  states[0] = kOpen;
  boxes[0] = boxOver(list, 0, distinct - 1);
  for (int inUse = 1; inUse < wanted - 1; ++inUse) {
    const size_t b = fullest(boxes, states);
    sortColors(&list[static_cast<size_t>(boxes[b].first)], boxes[b].axis,
               boxes[b].last - boxes[b].first + 1);
    cut(boxes, states, b, medianOf(list, boxes[b]), list);
  }
  for (size_t slot = 0; slot < boxes.size(); ++slot) {
    for (size_t axis = 0; axis < 3; ++axis) out.table[slot * 3 + axis] = byteOf(boxes[slot].mean[axis]);
  }
  return out;
}

}  // namespace reference
