// SPDX-License-Identifier: MIT
// Times for the report.
#pragma once

#include <chrono>

namespace host {

using Clock = std::chrono::steady_clock;

// Seconds from `start`, which becomes now.
inline double secondsSince(Clock::time_point &start) {
  const Clock::time_point now = Clock::now();
  const double passed = std::chrono::duration<double>(now - start).count();
  start = now;
  return passed;
}

}  // namespace host
