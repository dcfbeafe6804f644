// SPDX-License-Identifier: MIT
#include "tiff/reference_lzw.h"

#include <algorithm>

namespace reference {

namespace {

// The table searched from the prefix on: what goes on from a string comes behind it.
class SearchedStrings {
 public:
  // The code of a known string, or 0.
  uint32_t find(uint32_t prefix, uint32_t byte, uint32_t next) const {
    for (uint32_t code = std::max(prefix, 258u); code < next; ++code) {
      if (keys_[code] == (prefix << 16 | byte)) return code;
    }
    return 0;
  }
  void add(uint32_t prefix, uint32_t byte, uint32_t code) { keys_[code] = prefix << 16 | byte; }
  void clear() {}

 private:
  std::vector<uint32_t> keys_ = std::vector<uint32_t>(4096);
};

// The same, where each string knows the first one that goes on from it, and each of those the next one.
class LinkedStrings {
 public:
  uint32_t find(uint32_t prefix, uint32_t byte, uint32_t) const {
    uint32_t code = strings_[prefix].first;
    while (code != 0 && strings_[code].byte != byte) code = strings_[code].next;
    return code;
  }
  void add(uint32_t prefix, uint32_t byte, uint32_t code) {
    String &before = strings_[prefix];
    strings_[code] = {byte, 0, 0, 0};
    (before.first == 0 ? before.first : strings_[before.last].next) = code;
    before.last = code;
  }
  void clear() { std::fill_n(strings_.begin(), 256, String()); }

 private:
  struct String {
    uint32_t byte = 0, first = 0, last = 0, next = 0;
  };
  std::vector<String> strings_ = std::vector<String>(4096);
};

template <class Strings>
std::vector<LzwCode> codesOf(std::span<const uint8_t> strip, Strings &strings) {
  std::vector<LzwCode> out;
  out.reserve(strip.size() + 4);
  uint32_t width = 9;
  uint32_t next = 258;
  out.push_back({256, width});
  if (strip.size() > 1) {
    uint32_t prefix = strip[0];
    size_t at = 1;
    while (at < strip.size()) {
      const uint32_t c = strip[at++];
      const uint32_t known = strings.find(prefix, c, next);
      const bool found = known != 0;
      if (found) prefix = known;
      const bool remain = at < strip.size();
      if (found && remain) continue;
      strings.add(prefix, c, next++);
      const uint32_t tested = next;
      const auto writeAndCheck = [&] {
        out.push_back({prefix, width});
        if (tested == 512 || tested == 1024 || tested == 2048) ++width;
        if (tested == 4090) {
          out.push_back({256, width});
          width = 9;
          next = 258;
          strings.clear();
        }
        prefix = c;
      };
      writeAndCheck();
      if (found || remain) continue;
      writeAndCheck();
    }
  }
  out.push_back({257, width});
  return out;
}

}  // namespace

std::vector<LzwCode> lzwCodes(std::span<const uint8_t> strip) {
  SearchedStrings strings;
  return codesOf(strip, strings);
}

std::vector<LzwCode> lzwCodesSooner(std::span<const uint8_t> strip) {
  // What a string of an earlier strip left is met by none of this one.
  static thread_local LinkedStrings strings;
  strings.clear();
  return codesOf(strip, strings);
}

Bytes packLzw(std::span<const LzwCode> codes) {
  Bytes out;
  out.reserve(codes.size() * 3 / 2 + 2);
  uint32_t held = 0, bits = 0;
  for (const LzwCode &c : codes) {
    held = held << c.width | c.code;
    for (bits += c.width; bits >= 8; bits -= 8) out.push_back(static_cast<uint8_t>(held >> (bits - 8)));
  }
  if (bits > 0) out.push_back(static_cast<uint8_t>(held << (8 - bits)));
  return out;
}

// A string is where it stands in the output and how long it is: a new one is the string before it and the
// byte after that, which follow each other there.
Bytes unpackLzw(std::span<const uint8_t> codes, size_t length) {
  struct String {
    size_t begin;
    size_t size;
  };
  Bytes out;
  out.reserve(length);
  std::vector<String> strings;  // from code 258 on
  strings.reserve(std::min<size_t>(length, 4096));
  uint32_t width = 9;
  size_t bit = 0;
  bool cleared = false;
  bool afterClear = false;
  String previous{0, 0};
  while (bit + width <= codes.size() * 8) {
    uint32_t three = 0;  // bytes that the code lies in
    for (size_t i = bit / 8; i < bit / 8 + 3; ++i) three = three << 8 | (i < codes.size() ? codes[i] : 0u);
    const uint32_t code = three >> (24 - width - bit % 8) & ((1u << width) - 1);
    bit += width;
    if (code == 256) {
      strings.clear();
      width = 9;
      cleared = afterClear = true;
      continue;
    }
    if (code == 257 || out.size() >= length || !cleared) break;
    if (afterClear && code > 255) break;
    if (!afterClear) {
      if (code > 258 + strings.size() || strings.size() == 4096 - 258) break;
      strings.push_back({previous.begin, previous.size + 1});
    }
    afterClear = false;
    const size_t begin = out.size();
    if (code < 256) {
      out.push_back(static_cast<uint8_t>(code));
      previous = {begin, 1};
    } else {
      const String &string = strings[code - 258];
      for (size_t i = 0; i < string.size; ++i) out.push_back(out[string.begin + i]);
      previous = {begin, string.size};
    }
    const size_t known = 258 + strings.size();
    if (known == 511 || known == 1023 || known == 2047) ++width;
  }
  return out;
}

}  // namespace reference
