// SPDX-License-Identifier: MIT
// How many seeded cases a test runs: all of them on the native release build, fewer where every
// instruction is checked or emulated. RAXEL_CASES=N in the environment scales by N percent.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace support {

inline size_t cases(size_t full) {
#if defined(__SANITIZE_ADDRESS__)
  size_t percent = 10;
#elif defined(__powerpc__) || defined(__i386__)
  size_t percent = 5;
#else
  size_t percent = 100;
#endif
  if (const char *wanted = std::getenv("RAXEL_CASES")) percent = std::strtoul(wanted, nullptr, 10);
  const size_t n = full * percent / 100;
  return n == 0 ? 1 : n;
}

// Whether a case of many is tried: of a hundred as many as `cases` leaves, spread over all of them.
inline bool isTurn(size_t number) {
  return number * cases(100) % 100 < cases(100);
}

}  // namespace support
