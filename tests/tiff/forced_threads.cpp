// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <utility>

#include "support/threads.h"
#include "tiff/threads.h"

namespace {

uint32_t ofEnvironment() {
  const char *text = std::getenv("RAXEL_TEST_THREADS");
  return text == nullptr ? 0 : static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

uint32_t forcedCount = ofEnvironment();  // 0: as always

}  // namespace

namespace support {

Threads::Threads(uint32_t threads) : before_(std::exchange(forcedCount, threads)) {}
Threads::~Threads() {
  forcedCount = before_;
}

}  // namespace support

// Instead of the library's own.
uint32_t tiff::codingThreads(uint64_t bytes, uint64_t chunks, uint64_t least) {
  if (forcedCount == 0) return chooseThreads(bytes, chunks, least, 2, kMostThreads);
  return chooseThreads(1, chunks, 0, forcedCount, kMostThreads);
}
