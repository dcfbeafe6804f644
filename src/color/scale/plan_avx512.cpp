// SPDX-License-Identifier: MIT
// Which 64 bytes each group of a row is taken from, and what goes where.
#include <algorithm>
#include <cstring>

#include "color/scale/bit_fields.h"
#include "color/scale/move_avx512.h"
#include "color/scale/move_ssse3.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

// Whether so many columns are left out that a longer stretch is worth its second permutation.
bool liesFarApart(std::span<const uint32_t> columns) {
  return columns.back() - columns.front() > columns.size() * 4 / 3;
}

GroupShape shapeOf(int16_t depth, std::span<const uint32_t> columns) {
  if (depth == 1) return shapeOfBits(columns);
  const uint32_t stretch = liesFarApart(columns) ? 128 : 64;
  return {4, 2, 128, 16, 2, stretch};
}

// How many of the columns, from the first on, lie in the stretch that begins with the first one's byte.
size_t columnsWithin(std::span<const uint32_t> columns, const GroupShape &shape, uint64_t first) {
  const uint64_t past = (first + shape.stretch) * 8 / shape.bits;
  const auto most = columns.first(std::min<size_t>(columns.size(), shape.most));
  const auto end = std::lower_bound(most.begin(), most.end(), past);
  const auto n = static_cast<size_t>(end - most.begin());
  return n == columns.size() ? n : n / shape.whole * shape.whole;
}

void fillNibbles(uint8_t *high, uint8_t *low, std::span<const uint32_t> columns, uint32_t first,
                 uint32_t otherHalf) {
  const auto byteOf = [first](uint32_t column) { return column / 2 - first; };
  for (size_t i = 0; i < columns.size(); i += 2) {
    const uint32_t left = columns[i];
    const uint32_t right = columns[std::min(i + 1, columns.size() - 1)];
    *high++ = static_cast<uint8_t>(byteOf(left) | (left % 2 != 0 ? otherHalf : 0));
    *low++ = static_cast<uint8_t>(byteOf(right) | (right % 2 == 0 ? otherHalf : 0));
  }
}

bool fillGroup(MovePlan &plan, const GroupShape &shape, std::span<const uint32_t> columns, uint32_t first) {
  uint8_t(*index)[64] = plan.index + plan.groups * shape.indexes;
  std::memset(index, 0, shape.indexes * sizeof *index);
  if (shape.bits == 1) return fillBits(index, shape, columns, first);
  fillNibbles(index[0], index[1], columns, first, shape.stretch);
  return true;
}

// The bytes that n pixels fill, the last one perhaps in part.
size_t bytesOf(size_t n, const GroupShape &shape) {
  return (n * shape.bits + 7) / 8;
}

// Chooses the function, and tells which groups are far enough from the end of the row for its full store:
// what that writes beyond its group is written again by the groups after it.
void chooseMove(MovePlan &plan, const GroupShape &shape) {
  size_t stored = 64;
  if (shape.windows != 0) {
    plan.move = shape.windows == 1 ? kMoveFields[shape.indexes - 2] : kMoveFarFields[shape.indexes - 3];
  } else if (shape.bits == 1) {
    stored = 8;
    plan.move = shape.stretch == 16 ? kMoveBits16 : kMoveBits64;
  } else {
    plan.move = shape.stretch == 64 ? kMoveNibbles : kMoveFarNibbles;
  }
  plan.whole = 0;
  plan.reach = 0;
  while (plan.whole < plan.groups && plan.group[plan.whole].to + stored <= plan.bytes) {
    plan.reach = std::max(plan.reach, size_t{plan.group[plan.whole++].from} + shape.stretch);
  }
}

// Where the next group begins: behind the last one, except that the last group of bits goes back as far as
// makes it a full one, and does some bytes again.
size_t nextGroup(const MovePlan &plan, const GroupShape &shape, std::span<const uint32_t> columns) {
  if (shape.bits != 1 || columns.size() - plan.columns >= shape.most) return plan.columns;
  const size_t bytes = bytesOf(columns.size(), shape);
  const size_t full = bytesOf(shape.most, shape);
  if (bytes < full) return plan.columns;
  const size_t back = (bytes - full) * 8;
  const auto rest = columns.subspan(back);
  return columnsWithin(rest, shape, rest[0] / 8) == rest.size() ? back : plan.columns;
}

}  // namespace

void planMoveAvx512(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth) {
  if (depth >= 8) return planMoveSsse3(plan, columns, depth);
  const GroupShape shape = shapeOf(depth, columns);
  plan.columns = 0;
  plan.groups = 0;
  plan.bytes = 0;
  plan.full = false;
  while (plan.columns < columns.size()) {
    plan.full = (plan.groups + 1) * shape.indexes > MovePlan::kMostGroups;
    if (plan.full) break;
    const size_t begin = nextGroup(plan, shape, columns);
    const auto rest = columns.subspan(begin);
    const uint64_t first = uint64_t{rest[0]} * shape.bits / 8;
    const size_t n = columnsWithin(rest, shape, first);
    if (first + shape.stretch > UINT32_MAX || (n < shape.least && n < rest.size()) ||
        !fillGroup(plan, shape, rest.first(n), static_cast<uint32_t>(first))) {
      break;
    }
    const uint64_t last = ((uint64_t{rest[n - 1]} + 1) * shape.bits + 7) / 8;
    const size_t to = bytesOf(begin, shape);
    plan.group[plan.groups++] = {.from = static_cast<uint32_t>(first),
                                 .to = static_cast<uint32_t>(to),
                                 .reads = static_cast<uint32_t>(last - first)};
    plan.columns = begin + n;
    plan.bytes = to + bytesOf(n, shape);
  }
  if (!plan.full && plan.columns < columns.size()) plan.columns = 0;
  if (plan.columns != 0) chooseMove(plan, shape);
}

}  // namespace color

#endif
