// SPDX-License-Identifier: MIT
#include "tiff/reference_lzw.h"

#include <algorithm>

namespace reference {

std::vector<LzwCode> lzwCodes(std::span<const uint8_t> strip) {
  std::vector<LzwCode> out;
  std::vector<uint32_t> table(4096);
  uint32_t width = 9;
  uint32_t next = 258;
  out.push_back({256, width});
  if (strip.size() > 1) {
    uint32_t prefix = strip[0];
    uint32_t search = std::max(prefix, 258u);
    size_t at = 1;
    while (at < strip.size()) {
      const uint32_t c = strip[at++];
      const uint32_t key = prefix << 16 | c;
      bool found = false;
      while (search < next && !found) {
        if (table[search] == key) {
          found = true;
          prefix = search;
        }
        ++search;
      }
      const bool remain = at < strip.size();
      if (found && remain) continue;
      search = 258;
      table[next++] = key;
      const uint32_t tested = next;
      const auto writeAndCheck = [&] {
        out.push_back({prefix, width});
        if (tested == 512 || tested == 1024 || tested == 2048) ++width;
        if (tested == 4090) {
          out.push_back({256, width});
          width = 9;
          next = 258;
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

Bytes packLzw(std::span<const LzwCode> codes) {
  std::vector<bool> bits;
  for (const LzwCode &c : codes) {
    for (uint32_t i = c.width; i-- > 0;) bits.push_back((c.code >> i & 1) != 0);
  }
  Bytes out((bits.size() + 7) / 8);
  for (size_t i = 0; i < bits.size(); ++i) {
    if (bits[i]) out[i / 8] = static_cast<uint8_t>(out[i / 8] | 0x80 >> i % 8);
  }
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
  std::vector<String> strings;  // from code 258 on
  uint32_t width = 9;
  size_t bit = 0;
  bool cleared = false;
  bool afterClear = false;
  String previous{0, 0};
  while (bit + width <= codes.size() * 8) {
    uint32_t code = 0;
    for (uint32_t i = 0; i < width; ++i, ++bit) code = code * 2 + (codes[bit / 8] >> (7 - bit % 8) & 1);
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
