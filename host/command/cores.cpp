// SPDX-License-Identifier: MIT
#include "command/cores.h"

#include <sched.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace host {
namespace {

constexpr char kVariable[] = "RAXEL_THREADS";

// What the filter takes from it: a whole number above 0, and else no limit.
unsigned heldByEnvironment() {
  const char *text = secure_getenv(kVariable);
  if (text == nullptr) return 0;
  unsigned number = 0;
  const char *end = text + std::strlen(text);
  const auto [last, error] = std::from_chars(text, end, number);
  return error == std::errc() && last == end ? number : 0;
}

}  // namespace

unsigned usableCores() {
  cpu_set_t cores;
  if (sched_getaffinity(0, sizeof cores, &cores) == 0) return static_cast<unsigned>(CPU_COUNT(&cores));
  return std::thread::hardware_concurrency();  // there are more than the set has room for
}

unsigned coresEach(unsigned cores, unsigned threads, unsigned jobs, unsigned held) {
  const unsigned shared = threads != 0 ? threads : std::max(cores, 1u);
  const unsigned each = std::max(shared / std::max(jobs, 1u), 1u);
  return held != 0 ? std::min(each, held) : each;
}

void shareCores(unsigned threads, unsigned jobs) {
  if (threads == 0 && jobs < 2) return;
  const unsigned each = coresEach(usableCores(), threads, jobs, heldByEnvironment());
  setenv(kVariable, std::to_string(each).c_str(), 1);
}

}  // namespace host
