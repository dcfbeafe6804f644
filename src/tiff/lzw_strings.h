// The strings that an LZW stream has made so far, kept so that the longest known beginning of what
// follows is found without a search entry by entry. A string is a known one and a byte more, and goes by
// its code; the codes below 256 are the single bytes. No string that can still be found is kept twice.
#pragma once

#include <cstdint>
#include <cstring>

namespace tiff {

constexpr uint32_t kFirstFree = 258;
constexpr uint32_t kClearAt = 4090;  // readers allow 4094; our exact bytes are a promise

// The places that strings were put in, to be set free when the table is cleared.
struct PlacesMade {
  uint32_t count;
  uint32_t places[kClearAt];
};

// For pictures that repeat little: most strings are two or three bytes long. Those of two have a place for
// every pair; longer ones are hashed into slots, of which at most a quarter fill up, so that the slot
// looked at first is nearly always the right one. All zeros hold no strings.
struct StringSlots {
  static constexpr uint32_t kHashBits = 14;
  static constexpr uint32_t kSlots = 1u << kHashBits;

  uint16_t pairs[256][256];  // 0 is none
  uint32_t slots[kSlots];    // the code that is extended, the byte, and the string's own code; 0 is none
  PlacesMade pairsMade;
  PlacesMade slotsMade;

  // Where the string `prefix` and `byte`, not a pair, is or belongs.
  uint32_t *find(uint32_t prefix, uint32_t byte) {
    const uint32_t key = prefix << 8 | byte;
    uint32_t at = key * 2654435769u >> (32 - kHashBits);  // 2 ** 32 / golden ratio: neighbours lie apart
    while (slots[at] >> 12 != key && slots[at] != 0) at = (at + 1) % kSlots;
    return &slots[at];
  }
  // In a place that find() gave and that is free.
  void add(uint32_t *place, uint32_t prefix, uint32_t byte, uint32_t code) {
    *place = prefix << 20 | byte << 12 | code;
    slotsMade.places[slotsMade.count++] = static_cast<uint32_t>(place - slots);
  }
  void clear() {
    constexpr uint32_t kFew = 1000;  // above, it takes less time to set all of them free
    for (uint32_t i = 0; i < pairsMade.count; ++i) {
      pairs[pairsMade.places[i] >> 8][pairsMade.places[i] & 0xFF] = 0;
    }
    if (slotsMade.count > kFew) {
      std::memset(slots, 0, sizeof slots);
    } else {
      for (uint32_t i = 0; i < slotsMade.count; ++i) slots[slotsMade.places[i]] = 0;
    }
    pairsMade.count = slotsMade.count = 0;
  }
};
static_assert(kClearAt <= 1u << 12, "a code takes 12 bits of a slot");

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
