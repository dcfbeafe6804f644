// SPDX-License-Identifier: MIT
// The format strings of kvlReadStruct and kvlWriteStruct, as offsets and sizes.
#pragma once

#include <cstdint>

namespace runtime {

// Groups nested deeper than this are no longer groups, so that a format of nothing but opening
// braces is laid out in a time that grows with its length alone.
constexpr int kMaxNesting = 64;
constexpr int32_t kMaxRepeat = 65535;

// Bytes and alignment of one member; 0 for a letter that is none.
struct Member {
  uint8_t size;
  uint8_t alignment;
};

// `letter` as a capital.
constexpr Member memberOf(int32_t letter) {
  switch (letter) {
    case 'C':
      return {1, 1};
    case 'S':
      return {2, 2};
    case 'L':
    case 'F':
      return {4, 4};
    case 'D':
      return {8, 8};
    default:
      return {0, 0};
  }
}

constexpr uint64_t alignUp(uint64_t offset, int32_t alignment) {
  const auto a = static_cast<uint64_t>(alignment);
  return (offset + a - 1) / a * a;
}

// Reads the digits at p, at most kMaxRepeat; 1 when there are none. Leaves p at the character after.
int32_t takeRepeat(const char *&p);

// The largest alignment of the members in a whole format, at least 1.
int32_t recordAlignment(const char *format);

}  // namespace runtime
