// The strings that an LZW stream has made so far, kept so that the longest known beginning of what
// follows is found without a search entry by entry. A string is a known one and a byte more, and goes by
// its code; the codes below 256 are the single bytes. No string that can still be found is kept twice.
#pragma once

#include <cstdint>

namespace tiff {

constexpr uint32_t kFirstFree = 258;
constexpr uint32_t kClearAt = 4090;  // readers allow 4094; our exact bytes are a promise

// The places that strings were put in, to be set free when the table is cleared.
struct PlacesMade {
  uint32_t count;
  uint32_t places[kClearAt];
};

// For data in which most strings go on in few ways: pictures that repeat little. Strings of two bytes have
// a place for every pair; longer ones are in a list of all that extend the same string, oldest first. All
// zeros hold no strings.
struct StringLists {
  using Link = uint32_t;  // a code, and the last byte of its string above; 0 is the end of a list
  struct Node {
    Link first;  // of the strings that extend this one
    Link next;   // in the list that this one is in
  };

  uint16_t pairs[256][256];  // 0 is none
  Node nodes[4096];
  PlacesMade made;

  // Where the link to the string `prefix` and `byte`, not a pair, is or belongs.
  Link *find(uint32_t prefix, uint32_t byte) {
    Link *link = &nodes[prefix].first;
    while (*link != 0 && *link >> 16 != byte) link = &nodes[*link & 0xFFFF].next;
    return link;
  }
  void clear() {
    for (uint32_t i = 0; i < made.count; ++i) pairs[made.places[i] >> 8][made.places[i] & 0xFF] = 0;
    made.count = 0;
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
