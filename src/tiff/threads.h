// SPDX-License-Identifier: MIT
// How many threads are worth their while.
#pragma once

#include <cstdint>

namespace tiff {

constexpr uint32_t kMostThreads = 8;

// Threads, the caller's own among them, for coding `chunks` chunks of `bytes` bytes in all.
//   least  bytes up to which one thread does
//   cores  that the process may use
//   held   what the host allows at most
constexpr uint32_t chooseThreads(uint64_t bytes, uint64_t chunks, uint64_t least, uint32_t cores,
                                 uint32_t held) {
  if (chunks < 2 || bytes <= least) return 1;
  uint32_t threads = kMostThreads;
  if (chunks < threads) threads = static_cast<uint32_t>(chunks);
  if (cores < threads) threads = cores;
  if (held < threads) threads = held;
  return threads == 0 ? 1 : threads;
}

// The same for the cores of this machine and the number that the environment's RAXEL_THREADS holds.
uint32_t codingThreads(uint64_t bytes, uint64_t chunks, uint64_t least);

// What a text like that of RAXEL_THREADS stands for: a whole number of 1 or more; kMostThreads for
// anything else and for none.
uint32_t threadsOfText(const char *text);

}  // namespace tiff
