// SPDX-License-Identifier: MIT
// The nearest entry of one table for many pixels: the answers of color::nearest, remembered.
//
// Colours are grouped in fine cells of 4 x 4 x 4. When a pixel first falls into a cell, the answers
// for all its 64 colours are worked out and kept; from then on a pixel costs two look-ups. README.md
// tells how few entries have to be compared for that, and why every tie still falls to the lower
// index.
//
//   address of a colour, 24 bits:  rrrrrr gggggg bbbbbb   rr gg bb
//                                  fine cell              place in the cell
#pragma once

#include <cstdint>
#include <span>

#include "runtime/blocks.h"

namespace color {

struct NearestSearch {
  std::span<const uint8_t> table;
  int32_t count = 0;  // entries searched: those of the table, none when a negative number was asked for

  // The memory of answers; not there for small pictures and for tables of more than 256 entries.
  runtime::Block memory;
  uint16_t *cells = nullptr;  // for each fine cell the unit with its answers, 0 while it is not met
  uint16_t *lists = nullptr;  // for each coarse cell (16 x 16 x 16) the first unit of its list, or 0
  uint16_t *greys = nullptr;  // for each sum of channels the index of the nearest grey, plus 1, or 0
  uint16_t *alike = nullptr;  // kAlikeSlots units by a hash of their answers
  uint8_t *units = nullptr;   // pieces of 64 bytes
  uint32_t unitsUsed = 0;
  uint32_t unitCount = 0;

  // The colours of the table (entries that are not grey), in index order.
  uint32_t colorCount = 0;
  uint8_t colors[256][3];
  uint8_t colorIndexes[256];
};

constexpr uint32_t kUnitBytes = 64;
constexpr uint32_t kAlikeSlots = 8192;

// Prepares a search in a table.
//   count   as a caller gives it: a signed number in 16 bits, cut at what the table holds
//   pixels  about how many searches will follow
void startSearch(NearestSearch &search, std::span<const uint8_t> table, uint16_t count, uint64_t pixels);

// The low byte of each pixel's index; pixels are 3 or 4 bytes, of which the first 3 are looked at.
void findNearest(NearestSearch &search, const uint8_t *pixels, int pixelBytes, uint8_t *indexes,
                 uint32_t n);

// The answer for a colour whose cell has no unit yet; gives it one where there is room
// (nearest_cells.cpp).
uint8_t findInNewCell(NearestSearch &search, uint32_t address);

// What each channel of a colour adds to its address.
struct AddressTable {
  uint32_t red[256];
  uint32_t green[256];
  uint32_t blue[256];
};
extern const AddressTable kAddress;

inline uint32_t addressOf(uint32_t red, uint32_t green, uint32_t blue) {
  return kAddress.red[red] | kAddress.green[green] | kAddress.blue[blue];
}

}  // namespace color
