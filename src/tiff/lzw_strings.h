// SPDX-License-Identifier: MIT
// The strings that an LZW stream has made so far, kept so that the longest known beginning of what
// follows is found without a search entry by entry. A string is a known one and a byte more, and goes by
// its code; the codes below 256 are the single bytes. No string that can still be found is kept twice.
#pragma once

#include <cstdint>
#include <cstring>

#include "runtime/unaligned.h"

namespace tiff {

constexpr uint32_t kFirstFree = 258;
constexpr uint32_t kClearAt = 4090;  // readers allow 4094; our exact bytes are a promise

// The places that strings were put in, to be set free when the table is cleared.
struct PlacesMade {
  uint32_t count;
  uint32_t places[kClearAt];
};

// For pictures that repeat little: most strings are of a few bytes. Those of two have a place for every
// pair. Longer ones are in lists of what extends the same string, oldest first: one list for each value of
// the last byte's low bits, so that hardly any holds more than one. A place holds a code and, above its
// bits, the number of the table that it is of: to clear a table is to count on, and only every fifteenth
// time to set the places free. All zeros are the state before the first clear().
struct StringLists {
  static constexpr uint32_t kLists = 16;
  static constexpr uint32_t kCodes = 4096;

  uint16_t pairs[256 * 256];       // by the two bytes as they lie in memory
  uint16_t first[kCodes][kLists];  // codes that extend a code
  uint16_t next[kCodes];           // in the list that a code is in
  uint8_t last[kCodes];            // byte of a code's string
  uint32_t table;                  // kCodes times the number of the present one, 1 to 15

  // The code in a place; kCodes or more when it holds none of the present table.
  uint32_t codeIn(uint16_t place) const { return static_cast<uint16_t>(place - table); }
  uint16_t *pair(const uint8_t *bytes) { return pairs + runtime::load<uint16_t>(bytes); }
  // Where the code of the string `prefix` and `byte`, not a pair, is or belongs.
  uint16_t *find(uint32_t prefix, uint32_t byte) {
    uint16_t *place = &first[prefix][byte % kLists];
    for (uint32_t code; (code = codeIn(*place)) < kCodes && last[code] != byte;) place = &next[code];
    return place;
  }
  // In a place that is free: one that pair() gave, or find() for this byte.
  void addPair(uint16_t *place, uint32_t code) { *place = static_cast<uint16_t>(table + code); }
  void add(uint16_t *place, uint32_t byte, uint32_t code) {
    *place = static_cast<uint16_t>(table + code);
    next[code] = 0;
    last[code] = static_cast<uint8_t>(byte);
  }
  void clear() {
    table = (table + kCodes) % (16 * kCodes);
    if (table != 0) return;
    std::memset(pairs, 0, sizeof pairs);
    std::memset(first, 0, sizeof first);
    table = kCodes;
  }
};

// For data that repeats much: a place for every byte and code. The places of one byte lie together, since
// such data has few bytes that come often. All zeros hold no strings.
struct StringColumns {
  uint16_t codes[256][4096];  // by byte, and by the code that it extends; 0 is none
  PlacesMade made;

  void clear() {
    for (uint32_t i = 0; i < made.count; ++i) codes[made.places[i] >> 12][made.places[i] & 0xFFF] = 0;
    made.count = 0;
  }
};

// Strings of one repeated byte, which flat pictures are full of: one of any length is taken in one step.
struct RunStrings {
  static constexpr uint32_t kListed = 128;

  uint16_t longest[256];         // code of the longest such string of each byte
  uint16_t length[256];          // its length
  uint16_t codes[256][kListed];  // the codes of those shorter than kListed, by length

  void clear() {
    for (uint32_t byte = 0; byte < 256; ++byte) {
      longest[byte] = static_cast<uint16_t>(byte);
      length[byte] = 1;
    }
  }
  // Notes the string `prefix` and `byte` if it is such a one.
  void add(uint32_t prefix, uint32_t byte, uint32_t code) {
    if (longest[byte] != prefix) return;
    longest[byte] = static_cast<uint16_t>(code);
    const uint32_t n = ++length[byte];
    if (n < kListed) codes[byte][n] = static_cast<uint16_t>(code);
  }
};

}  // namespace tiff
