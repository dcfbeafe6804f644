// SPDX-License-Identifier: MIT
// Small helpers around handle memory, so that every path frees what it owns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "raxel/memory.h"
#include "runtime/handle_layout.h"

namespace runtime {

// Whether a block of this many bytes can be asked for at all. Sizes are computed in 64 bits, and a
// picture too large for one block counts as "no memory" at the caller.
inline bool fitsInBlock(uint64_t size) {
  return size <= 0xFFFFFFFFu && blockBytes(static_cast<uint32_t>(size)) <= SIZE_MAX / 2;
}

// A new zero-filled block, or 0 when its size fits in no block.
inline Handle allocate(uint64_t size) {
  return fitsInBlock(size) ? GlobalAlloc(RAXEL_MOVEABLE_ZERO, static_cast<uint32_t>(size)) : 0;
}

// The bytes behind a handle; empty for the null handle.
inline std::span<uint8_t> lockBytes(Handle handle) {
  return {static_cast<uint8_t *>(GlobalLock(handle)), GlobalSize(handle)};
}

// A new block of `size` bytes that begins with a block's and goes on with zeros; 0 when the size fits in
// no block. The size is at least the block's own.
inline Handle longerCopy(Handle handle, uint64_t size) {
  const Handle copy = allocate(size);
  const std::span<const uint8_t> held = lockBytes(handle);
  if (copy != 0 && !held.empty()) std::memcpy(GlobalLock(copy), held.data(), held.size());
  return copy;
}

// Owns a block and keeps it locked; frees it at the end of its scope unless it was released.
class Block {
 public:
  Block() = default;
  explicit Block(Handle owned) : handle_(owned) {}
  static Block ofSize(uint64_t size) { return Block(allocate(size)); }
  Block(const Block &) = delete;
  Block &operator=(const Block &) = delete;
  Block(Block &&other) noexcept : handle_(other.release()) {}
  Block &operator=(Block &&other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Block() {
    if (handle_ != 0) GlobalFree(handle_);
  }

  explicit operator bool() const { return handle_ != 0; }
  Handle handle() const { return handle_; }
  std::span<uint8_t> bytes() const { return lockBytes(handle_); }
  uint8_t *data() const { return bytes().data(); }
  // Hands the block over to the caller.
  Handle release() { return std::exchange(handle_, 0); }

 private:
  Handle handle_ = 0;
};

}  // namespace runtime
