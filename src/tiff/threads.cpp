// SPDX-License-Identifier: MIT
#include "tiff/threads.h"

#include <sched.h>
#include <unistd.h>

#include <cstdlib>

namespace tiff {
namespace {

uint32_t usableCores() {
  cpu_set_t cores;
  if (sched_getaffinity(0, sizeof cores, &cores) == 0) return static_cast<uint32_t>(CPU_COUNT(&cores));
  const long online = sysconf(_SC_NPROCESSORS_ONLN);  // more cores than the set has room for
  return online < 1 ? 1 : static_cast<uint32_t>(online);
}

}  // namespace

uint32_t threadsOfText(const char *text) {
  uint32_t number = 0;
  for (const char *at = text; at != nullptr && *at != '\0'; ++at) {
    if (*at < '0' || *at > '9') return kMostThreads;
    if (number < kMostThreads) number = number * 10 + static_cast<uint32_t>(*at - '0');
  }
  return number == 0 || number > kMostThreads ? kMostThreads : number;
}

// Weak, so that tests can say how many there are.
[[gnu::weak]] uint32_t codingThreads(uint64_t bytes, uint64_t chunks, uint64_t least) {
  if (chooseThreads(bytes, chunks, least, kMostThreads, kMostThreads) == 1) return 1;
  return chooseThreads(bytes, chunks, least, usableCores(), threadsOfText(secure_getenv("RAXEL_THREADS")));
}

}  // namespace tiff
