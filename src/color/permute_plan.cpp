// Which 64 bytes each group of a row is taken from, and what goes where.
#include <algorithm>
#include <cstring>

#include "color/permute.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

// What a depth asks of its groups.
struct Shape {
  uint32_t bits;     // of a pixel
  uint32_t whole;    // pixels that fill whole bytes: groups begin at multiples of it
  uint32_t most;     // pixels in a group
  uint32_t least;    // with fewer, single pixels are no slower
  uint32_t indexes;  // rows of `index` for each group
  uint32_t stretch;  // bytes of the source that a group is taken from
};

// The shortest of the stretches that bits can be taken from.
Shape shapeOfBits(std::span<const uint32_t> columns) {
  constexpr uint32_t kGroup = 64;
  uint32_t longest = 0;
  for (size_t x = 0; x < columns.size(); x += kGroup) {
    const size_t last = std::min<size_t>(x + kGroup, columns.size()) - 1;
    longest = std::max(longest, columns[last] / 8 - columns[x] / 8 + 1);
  }
  const uint32_t stretch = longest <= 8 ? 8 : longest <= 16 ? 16 : 64;
  return {1, 8, kGroup, kGroup, stretch == 8 ? 1u : 2u, stretch};
}

Shape shapeOf(int16_t depth, std::span<const uint32_t> columns) {
  switch (depth) {
    case 1:
      return shapeOfBits(columns);
    case 4:
      return {4, 2, 128, 16, 2, 64};
    case 8:
      return {8, 1, 64, 8, 1, 64};
    case 24:
      return {24, 1, 21, 4, 1, 64};
    default:
      return {32, 1, 16, 4, 1, 64};
  }
}

// How many of the columns, from the first on, lie in the stretch that begins with the first one's byte.
size_t columnsWithin(std::span<const uint32_t> columns, const Shape &shape, uint64_t first) {
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

void fillNibbles(uint8_t *high, uint8_t *low, std::span<const uint32_t> columns, uint32_t first) {
  const auto byteOf = [first](uint32_t column) { return column / 2 - first; };
  for (size_t i = 0; i < columns.size(); i += 2) {
    const uint32_t left = columns[i];
    const uint32_t right = columns[std::min(i + 1, columns.size() - 1)];
    *high++ = static_cast<uint8_t>(byteOf(left) | (left % 2 != 0 ? 64 : 0));
    *low++ = static_cast<uint8_t>(byteOf(right) | (right % 2 == 0 ? 64 : 0));
  }
}

// Pixels fill bytes from the top bit down: a bit's number counts from the other end of its byte.
uint8_t bitNumber(uint32_t pixel) {
  return static_cast<uint8_t>(pixel ^ 7);
}

void fillBitsOfEight(uint8_t *bits, std::span<const uint32_t> columns, uint32_t first) {
  for (size_t i = 0; i < columns.size(); ++i) bits[i ^ 7] = bitNumber(columns[i] - 8 * first);
}

// False when the eight pixels of some byte lie in more than eight bytes of the source.
bool fillBits(uint8_t (&bytes)[64], uint8_t (&bits)[64], std::span<const uint32_t> columns, uint32_t first,
              uint32_t stretch) {
  for (size_t i = 0; i < columns.size(); i += 8) {
    const uint32_t byte = columns[i] / 8;
    const size_t n = std::min<size_t>(8, columns.size() - i);
    if (columns[i + n - 1] / 8 - byte >= 8) return false;
    for (uint32_t b = 0; b < 8; ++b) {
      bytes[i + b] = static_cast<uint8_t>(std::min(byte - first + b, stretch - 1));
    }
    for (size_t k = 0; k < n; ++k) bits[(i + k) ^ 7] = bitNumber(columns[i + k] - 8 * byte);
  }
  return true;
}

bool fillGroup(MovePlan &plan, const Shape &shape, std::span<const uint32_t> columns, uint32_t first) {
  uint8_t(*index)[64] = plan.index + plan.groups * shape.indexes;
  std::memset(index, 0, shape.indexes * sizeof *index);
  if (shape.bits == 1 && shape.stretch != 8) {
    return fillBits(index[0], index[1], columns, first, shape.stretch);
  }
  if (shape.bits == 1) fillBitsOfEight(index[0], columns, first);
  if (shape.bits == 4) fillNibbles(index[0], index[1], columns, first);
  if (shape.bits == 8) fillBytes<1>(index[0], columns, first);
  if (shape.bits == 24) fillBytes<3>(index[0], columns, first);
  if (shape.bits == 32) fillBytes<4>(index[0], columns, first);
  return true;
}

// The bytes that n pixels fill, the last one perhaps in part.
size_t bytesOf(size_t n, const Shape &shape) {
  return (n * shape.bits + 7) / 8;
}

// Chooses the narrowest store that takes the longest group, and tells which groups are far enough from
// the end of the row for it: what it writes beyond its group is written again by the groups after it.
void chooseMove(MovePlan &plan, const Shape &shape, size_t longest) {
  using Move = decltype(plan.move);
  constexpr Move kBytes[] = {permuteBytes16, permuteBytes32, permuteBytes64};
  constexpr Move kNibbles[] = {permuteNibbles16, permuteNibbles32, permuteNibbles64};
  constexpr Move kBits[] = {permuteBits8, permuteBits16, permuteBits64};
  const int store = longest <= 16 ? 0 : longest <= 32 ? 1 : 2;
  const int stretch = shape.stretch <= 8 ? 0 : shape.stretch <= 16 ? 1 : 2;
  plan.move = shape.bits == 1 ? kBits[stretch] : shape.bits == 4 ? kNibbles[store] : kBytes[store];
  const size_t stored = shape.bits == 1 ? 8 : size_t{16} << store;
  plan.whole = 0;
  plan.reach = 0;
  while (plan.whole < plan.groups && plan.group[plan.whole].to + stored <= plan.bytes) {
    plan.reach = size_t{plan.group[plan.whole++].from} + shape.stretch;
  }
}

}  // namespace

void planPermute(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth) {
  const Shape shape = shapeOf(depth, columns);
  plan.columns = 0;
  plan.groups = 0;
  plan.bytes = 0;
  size_t longest = 0;
  while (plan.columns < columns.size() && (plan.groups + 1) * shape.indexes <= MovePlan::kMostGroups) {
    const auto rest = columns.subspan(plan.columns);
    const uint64_t first = uint64_t{rest[0]} * shape.bits / 8;
    const size_t n = columnsWithin(rest, shape, first);
    if (first + shape.stretch > UINT32_MAX || (n < shape.least && n < rest.size()) ||
        !fillGroup(plan, shape, rest.first(n), static_cast<uint32_t>(first))) {
      break;
    }
    const uint64_t last = ((uint64_t{rest[n - 1]} + 1) * shape.bits + 7) / 8;
    plan.group[plan.groups++] = {.from = static_cast<uint32_t>(first),
                                 .to = static_cast<uint32_t>(plan.bytes),
                                 .reads = ~uint64_t{0} >> (64 - (last - first))};
    longest = std::max(longest, bytesOf(n, shape));
    plan.columns += n;
    plan.bytes += bytesOf(n, shape);
  }
  if (shape.whole > 1 && plan.columns < columns.size()) plan.columns = 0;
  if (plan.columns != 0) chooseMove(plan, shape, longest);
}

}  // namespace color

#endif
