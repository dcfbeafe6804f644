// SPDX-License-Identifier: MIT
#include "tiff/collector.h"

#include <algorithm>
#include <cstring>

#include "tiff/output.h"

namespace tiff {
namespace {

constexpr uint64_t kMost = 256 * 1024;  // fits beside a row in the processor's second cache

}  // namespace

Collector::Collector(Handle file, uint64_t capacity) : file_(file) {
  if (!isDiskFile(file) || capacity == 0) return;
  block_ = runtime::Block::ofSize(std::min(capacity, kMost));
  room_ = block_.bytes();
}

int32_t Collector::write(const uint8_t *bytes, size_t count) {
  if (count > INT32_MAX) return -1;
  if (count > room_.size() - held_ && !finish()) return -1;
  if (room_.empty() || count > room_.size()) return kvlWrite(file_, bytes, static_cast<int32_t>(count));
  if (count != 0) std::memcpy(room_.data() + held_, bytes, count);
  held_ += count;
  return static_cast<int32_t>(count);
}

bool Collector::finish() {
  const size_t count = std::exchange(held_, 0);
  return count == 0 || writeAll(file_, room_.first(count));
}

}  // namespace tiff
