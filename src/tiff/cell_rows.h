// SPDX-License-Identifier: MIT
// The rows of a host's bitmap: bottom row first, padded, and changed in place. The block behind them
// may be shorter than its rows: bytes past its end read as 0 and are never written.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

namespace tiff {

struct CellRows {
  std::span<uint8_t> block;  // all that the host's block holds
  uint64_t rowBytes;         // bytes of a row that go into the file
  uint64_t stride;           // bytes from one row to the next

  // As many of the bytes from `at` on as the block holds, at most `count`.
  std::span<uint8_t> held(uint64_t at, uint64_t count) const {
    const uint64_t from = std::min<uint64_t>(at, block.size());
    return block.subspan(static_cast<size_t>(from),
                         static_cast<size_t>(std::min<uint64_t>(count, block.size() - from)));
  }
  std::span<uint8_t> heldRow(uint64_t row) const { return held(row * stride, rowBytes); }

  // A row's bytes without its padding: in the block itself, or in `spare` (rowBytes bytes) with zeros
  // where the block ends too early.
  const uint8_t *row(uint64_t number, std::span<uint8_t> spare) const {
    const std::span<uint8_t> bytes = heldRow(number);
    if (bytes.size() == rowBytes) return bytes.data();
    copyPadded(bytes, spare.data());
    return spare.data();
  }
  // The same, copied out.
  void copyRow(uint64_t number, uint8_t *to) const { copyPadded(heldRow(number), to); }

 private:
  void copyPadded(std::span<const uint8_t> bytes, uint8_t *to) const {
    if (!bytes.empty()) std::memcpy(to, bytes.data(), bytes.size());
    std::memset(to + bytes.size(), 0, static_cast<size_t>(rowBytes) - bytes.size());
  }
};

}  // namespace tiff
