// SPDX-License-Identifier: MIT
// Gathers the rows that go to a file on disk into larger writes, which cost the system far less.
#pragma once

#include <cstdint>
#include <span>

#include "runtime/blocks.h"

namespace tiff {

class Collector {
 public:
  // Only a file on disk is worth it: in memory a row is stored at once anyway, and a host's stream sees
  // each row by itself.
  //   capacity  bytes to gather, at most
  Collector(Handle file, uint64_t capacity);

  // Whether rows are gathered at all: otherwise each is written as it comes.
  bool gathers() const { return static_cast<bool>(block_); }

  // Takes a row, or writes it. Returns its length, or the result of a write that failed, which may be
  // that of earlier rows.
  int32_t write(const uint8_t *bytes, size_t count);

  // Writes what was gathered. False when the stream did not take it all: then it is gone.
  bool finish();

 private:
  Handle file_;
  runtime::Block block_;  // none where nothing is gathered
  std::span<uint8_t> room_;
  size_t held_ = 0;
};

}  // namespace tiff
