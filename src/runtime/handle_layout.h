// SPDX-License-Identifier: MIT
// Handle memory's block, byte by byte.
//
//   byte     0     size that the caller asked for (4)
//            4     flags as given, never interpreted (4)
//            8     reserved, 0 (4)
//           12     address of the data (4 or 8)
//     16 or 20     distance from the block to the data, 24 (1)
//           23     back-offset: written by GlobalLock, read by GlobalHandle (1)
//           24     the caller's data, 8-aligned, then 3 to 10 bytes of slack, all zero
//
// A pointer handle is such a header alone, and its data belong to the caller.
#pragma once

#include "raxel/types.h"
#include "runtime/unaligned.h"

namespace runtime {

constexpr size_t kFlagsAt = 4;
constexpr size_t kReservedAt = 8;
constexpr size_t kDataPtrAt = 12;
constexpr size_t kDataOffsetAt = kDataPtrAt + sizeof(void *);
constexpr size_t kDataAt = 24;
constexpr uint8_t kPointerHandleOffset = 20;  // what a pointer handle records as its data offset

// The whole block of a size: the header, the data and the slack, a multiple of 8.
constexpr uint64_t blockBytes(uint32_t size) {
  return (uint64_t{size} + kDataAt + 10) & ~uint64_t{7};
}

static_assert(kDataOffsetAt < kDataAt - 1, "the header must leave room for the back-offset");

inline uint8_t *blockOf(Handle handle) {
  return reinterpret_cast<uint8_t *>(handle);
}

// The data of a handle that is not 0, without preparing them for GlobalHandle.
inline uint8_t *dataOf(Handle handle) {
  return static_cast<uint8_t *>(load<void *>(blockOf(handle) + kDataPtrAt));
}

// Whether the data lie in the handle's own block, behind its header.
inline bool ownsData(Handle handle) {
  return dataOf(handle) == blockOf(handle) + kDataAt && blockOf(handle)[kDataOffsetAt] == kDataAt;
}

}  // namespace runtime
