// SPDX-License-Identifier: MIT
// What a file and a growing block hold after any calls, without windows and flushes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "raxel/stream_codes.h"

namespace runtime_test {

using Bytes = std::vector<uint8_t>;

// A file with a position, and nothing between.
struct PlainFile {
  Bytes bytes;
  int64_t at = 0;

  int32_t write(const Bytes &from) {
    if (from.empty()) return 0;
    const auto start = static_cast<size_t>(at);
    if (bytes.size() < start + from.size()) bytes.resize(start + from.size());
    std::copy(from.begin(), from.end(), bytes.data() + start);
    at += static_cast<int64_t>(from.size());
    return static_cast<int32_t>(from.size());
  }
  Bytes read(size_t n) {
    const size_t start = std::min(static_cast<size_t>(at), bytes.size());
    const size_t end = std::min(start + n, bytes.size());
    at += static_cast<int64_t>(end - start);
    return {bytes.data() + start, bytes.data() + end};
  }
  int32_t seek(int64_t offset, int32_t whence) {
    const int64_t from = whence == KVL_FROM_START      ? 0
                         : whence == KVL_FROM_POSITION ? at
                                                       : static_cast<int64_t>(bytes.size());
    if (from + offset < 0) return -1;
    at = from + offset;
    return static_cast<int32_t>(at);
  }
};

// A block of the caller's that grows: stores behind nLimit add nGrow bytes.
struct PlainBlock {
  Bytes bytes;
  int64_t at, high, limit, grow;

  int32_t write(const Bytes &from) {
    for (const uint8_t byte : from) {
      if (at > limit) {
        limit += grow;
        bytes.resize(static_cast<size_t>(limit + 1));
      }
      bytes[static_cast<size_t>(at)] = byte;
      high = std::max(high, at++);
    }
    return static_cast<int32_t>(from.size());
  }
  Bytes read(size_t n) {
    Bytes out;
    while (out.size() < n && at <= high) out.push_back(bytes[static_cast<size_t>(at++)]);
    return out;
  }
  int32_t seek(int64_t offset, int32_t whence) {
    const int64_t target = whence == KVL_FROM_START      ? offset
                           : whence == KVL_FROM_POSITION ? at + offset
                                                         : high + 1 + offset;
    if (target < 0) return -1;
    // One past the last byte is reached from the end without growing, from the start by growing.
    if (target > limit + (whence == KVL_FROM_END ? 1 : 0) &&
        !(whence == KVL_FROM_POSITION && offset == 0)) {
      limit = target + grow;
      bytes.resize(static_cast<size_t>(limit + 1));
    }
    at = target;
    return static_cast<int32_t>(at);
  }
};

}  // namespace runtime_test
