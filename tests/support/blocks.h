// SPDX-License-Identifier: MIT
// Blocks of handle memory, as hosts make them.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "raxel/memory.h"

namespace support {

// A block of zeros.
inline Handle newBlock(size_t size) {
  return GlobalAlloc(RAXEL_MOVEABLE_ZERO, static_cast<uint32_t>(size));
}

// A block with these bytes.
inline Handle blockOf(const std::vector<uint8_t> &bytes) {
  const Handle handle = newBlock(bytes.size());
  if (!bytes.empty()) std::memcpy(GlobalLock(handle), bytes.data(), bytes.size());
  return handle;
}

// What a block holds.
inline std::vector<uint8_t> bytesOf(Handle handle) {
  const auto *data = static_cast<const uint8_t *>(GlobalLock(handle));
  return {data, data + GlobalSize(handle)};
}

// The file in the block of an in-memory output, without the 0xFF behind it and the block's spare room.
inline std::vector<uint8_t> fileIn(Handle block) {
  std::vector<uint8_t> bytes = block != 0 ? bytesOf(block) : std::vector<uint8_t>();
  while (!bytes.empty() && bytes.back() == 0) bytes.pop_back();
  if (!bytes.empty()) bytes.pop_back();
  return bytes;
}

}  // namespace support
