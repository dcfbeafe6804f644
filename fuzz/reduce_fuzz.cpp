// SPDX-License-Identifier: MIT
// Colours chosen by median cut, searched and mapped, and single pixels: what the plain forms give.
#include "color/reference/pixels.h"
#include "color/reference/reduce.h"
#include "color_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

void reduce(fuzz::Input &input) {
  const auto wanted = static_cast<uint16_t>(input.once(4) ? input.word() : input.byte());
  const uint32_t width = fuzz::side(input), height = fuzz::side(input);
  const fuzz::Bytes rows = fuzz::filled(input, size_t{plain::lineBytes(width, 24)} * height);
  const fuzz::ExactBlock bits(rows);
  uint16_t count = wanted;
  const runtime::Block table(
      rlReduceColorTable(bits.handle(), width, static_cast<int16_t>(height), &count));
  const reference::Reduced expected = reference::reduce(rows, width, height, wanted);
  fuzz::require(count == expected.count, "as many colours as the plain form");
  fuzz::require(pictures::bytesOf(table.handle()) == expected.table, "the table of the plain form");
  fuzz::require(bits.bytes() == rows, "the picture is never changed");
}

// Several pictures in one context, whose histogram may be kept.
void reduceInSteps(fuzz::Input &input) {
  const Handle context = InitColorLib();
  for (unsigned step = input.byte() % 4 + 1; step > 0; --step) {
    const uint32_t width = fuzz::side(input);
    const auto height = static_cast<int16_t>(fuzz::side(input));
    const fuzz::Exact rows(
        fuzz::filled(input, size_t{plain::lineBytes(width, 24)} * static_cast<size_t>(height)));
    uint16_t count = input.byte();
    const unsigned wanted = count;
    const fuzz::Exact table(size_t{3} * wanted);
    const int32_t answer = direct_indexed(rows.data(), width, height, &count,
                                          static_cast<uint16_t>(input.byte() % 4), table.data(), context);
    fuzz::require(answer == 0 || answer == -1, "an answer that the call may give");
    fuzz::require(count <= wanted, "no more colours than there is room for");
  }
  fuzz::require(TermColorLib(context) == 0, "a context ends");
}

void search(fuzz::Input &input) {
  const plain::Table table = fuzz::table(input, 256);
  const fuzz::Exact entries(table.entries);
  const uint8_t *at = table.given ? entries.data() : nullptr;
  const auto count = static_cast<int>(table.given ? table.count : 0);
  for (unsigned n = 0; n < 8 && at != nullptr; ++n) {
    const int red = input.byte(), green = input.byte(), blue = input.byte();
    fuzz::require(rlNearestRGBIndex(static_cast<int16_t>(red), static_cast<int16_t>(green),
                                    static_cast<int16_t>(blue), at, static_cast<int16_t>(count)) ==
                      reference::nearest(red, green, blue, at, count),
                  "the entry that the plain search finds");
  }
  const auto sourceDepth = static_cast<int16_t>(input.byte() % 12 - 1);
  const bool isIndexed = sourceDepth >= 1 && sourceDepth <= 8;
  const fuzz::Exact source(fuzz::filled(input, isIndexed ? size_t{3} << sourceDepth : 0));
  const uint8_t *from = input.once(4) ? nullptr : source.data();
  const int depth = fuzz::oneOf<int>(input, {1, 4, 8, 24, 32});
  const runtime::Block map(
      rlBuildColormap(from, sourceDepth, at, static_cast<int16_t>(depth), static_cast<uint16_t>(count)));
  const reference::Words expected = reference::colormap(from, sourceDepth, at, depth, count);
  fuzz::require(map.bytes().size() == expected.size() * 4, "a map as long as the plain one");
  fuzz::require(expected.empty() || std::memcmp(map.data(), expected.data(), expected.size() * 4) == 0,
                "the plain map");
}

void pixels(fuzz::Input &input) {
  const int depth = fuzz::depth(input);
  const uint32_t width = fuzz::side(input), height = fuzz::side(input);
  const auto line = static_cast<uint32_t>(rlBytesPerLine(width, static_cast<int16_t>(depth)));
  fuzz::require(line == reference::lineBytes(width, depth), "as many bytes as a plain row");
  fuzz::Bytes theirs = fuzz::filled(input, size_t{line} * height);
  const fuzz::Exact ours(theirs);
  const uint32_t count = input.byte() % 64 + 1;
  const fuzz::Exact table(fuzz::filled(input, size_t{3} * count));
  reference::Words map(256);
  for (size_t i = 0; i < map.size(); ++i) map[i] = static_cast<uint32_t>(i * 7 % (count + 2));
  for (unsigned n = 0; n < 12; ++n) {
    const uint32_t x = input.byte() % width, y = input.byte() % height;
    const auto stride = static_cast<int32_t>(line);
    const auto bits = static_cast<int16_t>(depth);
    fuzz::require(rlGetPixel(ours.data(), stride, x, y, bits) ==
                      reference::getPixel(theirs.data(), line, x, y, depth),
                  "the plain pixel");
    const unsigned kind = input.byte();
    const uint32_t *withMap = kind % 2 == 1 ? map.data() : nullptr;
    const uint8_t *withTable = kind % 4 > 1 ? table.data() : nullptr;
    const uint32_t value = withMap != nullptr ? input.byte() : input.quad();
    rlSetPixel(ours.data(), stride, x, y, bits, value, withMap, withTable, static_cast<uint16_t>(count));
    reference::setPixel(theirs.data(), line, x, y, depth, value, withMap, withTable, count);
  }
  fuzz::require(std::equal(theirs.begin(), theirs.end(), ours.data()), "the plain picture");
}

// Entries, and the one past them, which takes part.
void sort(fuzz::Input &input) {
  const auto count = static_cast<uint16_t>(input.byte() + 1);
  const auto axis = static_cast<int16_t>(input.byte() % 3);
  std::vector<ColorFreq> ours;
  std::vector<reference::Color> theirs;
  const fuzz::Bytes cells = fuzz::filled(input, 2 * (size_t{count} + 1));
  for (uint16_t i = 0; i <= count; ++i) {
    const auto cell = static_cast<uint16_t>((cells[2u * i] << 8 | cells[2u * i + 1]) & 0x7FFF);
    ours.push_back({cell, i});
    theirs.push_back({cell, i});
  }
  HeapSort(ours.data(), axis, count);
  reference::sortColors(theirs.data(), axis, count);
  for (size_t i = 0; i < ours.size(); ++i) {
    fuzz::require(reference::Color{ours[i].color15, ours[i].count} == theirs[i], "the plain order");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  switch (input.byte() % 6) {
    case 0:
    case 1:
      reduce(input);
      break;
    case 2:
      reduceInSteps(input);
      break;
    case 3:
      search(input);
      break;
    case 4:
      pixels(input);
      break;
    default:
      sort(input);
  }
  return 0;
}
