// Which 64 bytes each group of a row is taken from, and what goes where.
#include <algorithm>
#include <cstring>

#include "color/scale/group_shape.h"
#include "color/scale/permute.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

// Whether so many columns are left out that a longer stretch is worth its second permutation.
bool liesFarApart(std::span<const uint32_t> columns) {
  return columns.back() - columns.front() > columns.size() * 4 / 3;
}

GroupShape shapeOf(int16_t depth, std::span<const uint32_t> columns) {
  const uint32_t stretch = liesFarApart(columns) ? 128 : 64;
  switch (depth) {
    case 1:
      return shapeOfBits(columns);
    case 4:
      return {4, 2, 128, 16, 2, stretch};
    case 8:
      return {8, 1, 64, 8, 1, stretch};
    case 24:
      return {24, 1, 21, 4, 1, stretch};
    default:
      return {32, 1, 16, 4, 1, stretch};
  }
}

// How many of the columns, from the first on, lie in the stretch that begins with the first one's byte.
size_t columnsWithin(std::span<const uint32_t> columns, const GroupShape &shape, uint64_t first) {
  const uint64_t past = (first + shape.stretch) * 8 / shape.bits;
  const auto most = columns.first(std::min<size_t>(columns.size(), shape.most));
  const auto end = std::lower_bound(most.begin(), most.end(), past);
  const auto n = static_cast<size_t>(end - most.begin());
  return n == columns.size() ? n : n / shape.whole * shape.whole;
}

template <uint32_t bytes>
void fillBytes(uint8_t *index, std::span<const uint32_t> columns, uint32_t first) {
  for (const uint32_t column : columns) {
    for (uint32_t b = 0; b < bytes; ++b) *index++ = static_cast<uint8_t>(column * bytes + b - first);
  }
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
  if (shape.bits == 4) fillNibbles(index[0], index[1], columns, first, shape.stretch);
  if (shape.bits == 8) fillBytes<1>(index[0], columns, first);
  if (shape.bits == 24) fillBytes<3>(index[0], columns, first);
  if (shape.bits == 32) fillBytes<4>(index[0], columns, first);
  return true;
}

// The bytes that n pixels fill, the last one perhaps in part.
size_t bytesOf(size_t n, const GroupShape &shape) {
  return (n * shape.bits + 7) / 8;
}

// Chooses the narrowest store that takes the longest group, and tells which groups are far enough from
// the end of the row for it: what it writes beyond its group is written again by the groups after it.
void chooseMove(MovePlan &plan, const GroupShape &shape, size_t longest) {
  const int store = longest <= 16 ? 0 : longest <= 32 ? 1 : 2;
  size_t stored = size_t{16} << store;
  if (shape.windows != 0) {
    stored = 64;
    plan.move =
        shape.windows == 1 ? kPermuteFields[shape.indexes - 2] : kPermuteFarFields[shape.indexes - 3];
  } else if (shape.bits == 1) {
    stored = 8;
    plan.move = shape.stretch == 16 ? kPermuteBits16 : kPermuteBits64;
  } else if (shape.bits == 4) {
    plan.move = shape.stretch == 64 ? kPermuteNibbles[store] : kPermuteFarNibbles[store];
  } else {
    plan.move = shape.stretch == 64 ? kPermuteBytes[store] : kPermuteFarBytes[store];
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

void planPermute(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth) {
  const GroupShape shape = shapeOf(depth, columns);
  plan.columns = 0;
  plan.groups = 0;
  plan.bytes = 0;
  plan.full = false;
  size_t longest = 0;
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
    longest = std::max(longest, bytesOf(n, shape));
    plan.columns = begin + n;
    plan.bytes = to + bytesOf(n, shape);
  }
  if (shape.whole > 1 && !plan.full && plan.columns < columns.size()) plan.columns = 0;
  if (plan.columns != 0) chooseMove(plan, shape, longest);
}

}  // namespace color

#endif
