// SPDX-License-Identifier: MIT
#include "color/median_cut/reduce.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/median_cut/boxes.h"
#include "color/median_cut/heap.h"
#include "color/median_cut/histogram.h"
#include "runtime/blocks.h"
#include "runtime/unaligned.h"

static_assert(sizeof(void *) != 4 || sizeof(ColorLibContext) == 24, "three handles and six numbers");

namespace color {

namespace {

using Counters = std::span<uint16_t, kCells>;

// A 5-bit channel as a byte: every value but 0 gets its low bits set, so that 31 becomes 255.
uint8_t widen(uint32_t channel5) {
  return static_cast<uint8_t>(channel5 == 0 ? 0 : channel5 * 8 | 7);
}

void putEntry(std::span<uint8_t> table, size_t i, uint32_t red5, uint32_t green5, uint32_t blue5) {
  if (3 * i + 2 >= table.size()) return;
  table[3 * i] = widen(red5);
  table[3 * i + 1] = widen(green5);
  table[3 * i + 2] = widen(blue5);
}

// The first cell from here on that holds a colour, or kCells. Most cells of most pictures are empty: four
// of them are looked at together.
uint32_t nextCell(Counters counters, uint32_t cell) {
  for (; cell % 4 != 0; ++cell) {
    if (counters[cell] != 0) return cell;
  }
  while (cell < kCells && runtime::load<uint64_t>(&counters[cell]) == 0) cell += 4;
  while (cell < kCells && counters[cell] == 0) ++cell;
  return cell;
}

// The table of a picture with few colours: each of them, in the order of their cells.
void listCells(Counters counters, std::span<uint8_t> table) {
  size_t n = 0;
  for (uint32_t cell = nextCell(counters, 0); cell < kCells; cell = nextCell(counters, cell + 1)) {
    const auto color15 = static_cast<uint16_t>(cell);
    putEntry(table, n++, channelOf(color15, 0), channelOf(color15, 1), channelOf(color15, 2));
  }
}

// The block behind a handle as an array of T, empty when it is smaller than that.
template <class T>
std::span<T> lockArray(Handle handle, size_t n) {
  if (handle == 0 || GlobalSize(handle) < n * sizeof(T)) return {};
  return {static_cast<T *>(GlobalLock(handle)), n};
}

// A cleared block of a new size in place of the one that a field names, if any.
bool renew(Handle &field, uint64_t size) {
  if (!runtime::fitsInBlock(size)) return false;
  field = GlobalReAlloc(field, static_cast<uint32_t>(size), RAXEL_MOVEABLE_ZERO);
  std::memset(GlobalLock(field), 0, static_cast<size_t>(size));
  return true;
}

// Cuts the list into boxes and writes an entry for each slot.
//
// The loop ends one box short: a split frees the parent's slot, so that at the end one slot more than
// there are boxes has been used, and it still holds the parent of the last split. That parent's mean
// is the last colour of the table (of two wanted colours the second was never a parent: it is black).
void cutIntoTable(ColorLibContext &context, std::span<ColorFreq> list, std::span<ColorBox> boxes,
                  std::span<uint16_t> states, std::span<uint8_t> table) {
  std::fill(states.begin(), states.end(), kFreeSlot);
  context.nBoxes = 1;
  states[0] = 0;
  boxes[0] = measureBox(list, 0, context.nDistinct - 1);
  while (size_t{context.nBoxes} + 1 < boxes.size()) {
    const uint32_t slot = largestBox(boxes, states);
    const ColorBox box = boxes[slot];
    heapSort(list.subspan(box.first), box.axis, box.last - box.first + 1);
    const int32_t median = findMedian(list, box);
    splitBox(boxes, states, slot, median, list);
    context.iSplitBox = static_cast<uint16_t>(slot);
    context.iFirst = box.first;
    context.iLast = box.last;
    context.iMedian = static_cast<uint16_t>(median);
    ++context.nBoxes;
  }
  for (size_t i = 0; i < boxes.size(); ++i) {
    putEntry(table, i, boxes[i].redMean, boxes[i].greenMean, boxes[i].blueMean);
  }
}

// The median cut of all that was counted so far; false when there is no memory for it.
bool cutHistogram(ColorLibContext &context, Counters counters, uint16_t wanted, std::span<uint8_t> table) {
  const std::span<ColorBox> boxes = lockArray<ColorBox>(context.hBoxes, wanted);
  const std::span<uint16_t> states = lockArray<uint16_t>(context.hBoxOrder, wanted);
  // One entry more than there are colours: the heap sort takes in the one past the last box.
  const size_t entries = size_t{context.nDistinct} + 1;
  const runtime::Block block = runtime::Block::ofSize(entries * sizeof(ColorFreq));
  if (!block || boxes.empty() || states.empty()) return false;
  const std::span<ColorFreq> list = lockArray<ColorFreq>(block.handle(), entries);
  size_t n = 0;
  for (uint32_t cell = nextCell(counters, 0); cell < kCells && n < context.nDistinct;
       cell = nextCell(counters, cell + 1)) {
    list[n++] = {static_cast<uint16_t>(cell), counters[cell]};
  }
  cutIntoTable(context, list, boxes, states, table);
  return true;
}

}  // namespace

int32_t reduce(std::span<const uint8_t> rows, uint32_t width, int32_t height, uint16_t *count,
               uint16_t mode, std::span<uint8_t> table, Handle handle) {
  const std::span<ColorLibContext> record = lockArray<ColorLibContext>(handle, 1);
  if (record.empty() || rows.data() == nullptr || count == nullptr) return -1;
  const bool build = (mode & kBuildTable) != 0;
  if (build && table.data() == nullptr) return -1;
  ColorLibContext &context = record[0];
  if (context.hHistogram == 0) context.hHistogram = runtime::allocate(kCells * sizeof(uint16_t));
  const std::span<uint16_t> histogram = lockArray<uint16_t>(context.hHistogram, kCells);
  if (histogram.empty()) return -1;
  const Counters counters(histogram.data(), kCells);

  const uint16_t wanted = *count;
  if (build && !(renew(context.hBoxes, uint64_t{wanted} * sizeof(ColorBox)) &&
                 renew(context.hBoxOrder, uint64_t{wanted} * sizeof(uint16_t)))) {
    return -1;
  }
  const uint32_t fresh = countColors(counters, rows, width, static_cast<uint32_t>(std::max(height, 0)));
  context.nDistinct = static_cast<uint16_t>(context.nDistinct + fresh);
  if (!build) {
    *count = 0;
    return 0;
  }

  int32_t result = 0;
  if (context.nDistinct < wanted) {
    listCells(counters, table);
    *count = context.nDistinct;
  } else if (wanted != 0 && !cutHistogram(context, counters, wanted, table)) {
    result = -1;
  }
  if ((mode & kKeepHistogram) == 0) {
    std::memset(counters.data(), 0, counters.size_bytes());
    context.nDistinct = 0;
  }
  return result;
}

namespace {

void printReduction(uint16_t wanted, uint16_t obtained, std::span<const uint8_t> table) {
  std::fprintf(stderr, "Color Reduction in Process...24bit -> %d colors\n", wanted);
  std::fprintf(stderr, "  -new color table size: %d\n", obtained);
  for (size_t i = 0; i < obtained && 3 * i + 2 < table.size(); ++i) {
    std::fprintf(stderr, "   color %d: [%d, %d, %d]\n", static_cast<int>(i), table[3 * i], table[3 * i + 1],
                 table[3 * i + 2]);
  }
}

}  // namespace

runtime::Block reducePicture(std::span<const uint8_t> rows, uint32_t width, int32_t height,
                             uint16_t &count) {
  const uint16_t wanted = count;
  runtime::Block table = runtime::Block::ofSize(uint64_t{wanted} * 3);
  const Handle context = InitColorLib();
  // No result is looked at: a table that could not be chosen is all zeros, and the count stays.
  reduce(rows, width, height, &count, kBuildTable | kKeepHistogram, table.bytes(), context);
  TermColorLib(context);
  if (printsSummaries()) printReduction(wanted, count, table.bytes());
  return table;
}

}  // namespace color

Handle InitColorLib(void) {
  return GlobalAlloc(RAXEL_MOVEABLE_ZERO, sizeof(ColorLibContext));
}

int32_t TermColorLib(Handle handle) {
  if (handle == 0) return 0;
  const std::span<ColorLibContext> context = color::lockArray<ColorLibContext>(handle, 1);
  if (context.empty()) return -1;
  for (Handle block : {context[0].hHistogram, context[0].hBoxes, context[0].hBoxOrder}) {
    if (block != 0) GlobalFree(block);
  }
  GlobalFree(handle);
  return 0;
}

int32_t direct_indexed(const uint8_t *rows, uint32_t width, int16_t height, uint16_t *count, uint16_t mode,
                       uint8_t *table, Handle context) {
  if (rows == nullptr || count == nullptr) return -1;
  const uint32_t columns = width <= INT32_MAX ? width : 0;
  const uint32_t lines = height > 0 ? static_cast<uint32_t>(height) : 0;
  // The host answers for what its geometry names.
  const auto size =
      static_cast<size_t>(std::min<uint64_t>(color::bitmapSize(columns, lines, 24), SIZE_MAX / 2));
  std::span<uint8_t> entries;
  if (table != nullptr) entries = {table, size_t{*count} * 3};
  return color::reduce({rows, size}, columns, height, count, mode, entries, context);
}

Handle rlReduceColorTable(Handle bits, uint32_t width, int16_t height, uint16_t *count) {
  if (count == nullptr) return 0;
  return color::reducePicture(runtime::lockBytes(bits), width, height, *count).release();
}
