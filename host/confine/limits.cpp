// SPDX-License-Identifier: MIT
#include "confine/limits.h"

#include <fcntl.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <limits>

#include "confine/filter.h"

namespace host {
namespace {

// The sanitizers reserve more address space than any limit would leave.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kLimitsMemory = false;
#else
constexpr bool kLimitsMemory = sizeof(void *) == 8;
#endif

using Resource = decltype(RLIMIT_CPU);

// The lower one of a limit that this process has and another.
rlimit lowered(Resource resource, uint64_t most) {
  rlimit limit{};
  getrlimit(resource, &limit);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, most);
  return limit;
}

void forbid(Resource resource) {
  const rlimit none{0, 0};
  setrlimit(resource, &none);
}

// However the parent numbered it, and whatever it has there.
void keepOnly(int line) {
  if (line != kLineToParent && dup2(line, kLineToParent) < 0) _exit(1);
  close_range(STDIN_FILENO, STDOUT_FILENO, 0);
  close_range(kLineToParent + 1, ~0u, 0);
}

void filterCalls() {
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return;
  const std::span<const sock_filter> filter = systemCallFilter();
  // The kernel reads it only.
  const sock_fprog program{static_cast<unsigned short>(filter.size()),
                           const_cast<sock_filter *>(filter.data())};
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0);
}

}  // namespace

uint64_t addressSpace(pid_t process) {
  char name[40] = "/proc/self/statm", told[100] = "";
  if (process != 0) std::snprintf(name, sizeof name, "/proc/%d/statm", static_cast<int>(process));
  const int about = open(name, O_RDONLY | O_CLOEXEC);
  if (about < 0) return 0;
  const ssize_t size = read(about, told, sizeof told - 1);
  close(about);
  // Pages, for which 0 stands where there is no number.
  return size > 0 ? std::strtoull(told, nullptr, 10) * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

double processorTime(pid_t process) {
  clockid_t clock{};
  timespec time{};
  if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
    return std::numeric_limits<double>::infinity();
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void confineThisProcess(const Allowance &most, uint64_t parentsSpace, int line) {
  keepOnly(line);
  const rlimit time = lowered(RLIMIT_CPU, most.seconds);
  setrlimit(RLIMIT_CPU, &time);
  if (kLimitsMemory && parentsSpace != 0) {
    const rlimit space = lowered(RLIMIT_AS, parentsSpace + most.memory);
    setrlimit(RLIMIT_AS, &space);
  }
  for (const Resource resource : {RLIMIT_CORE, RLIMIT_NOFILE, RLIMIT_NPROC}) forbid(resource);
  filterCalls();
}

void setAllowance(pid_t child, const Allowance &most, uint64_t parentsSpace) {
  // A limit that this process has itself is the child's as well.
  const rlimit time = lowered(RLIMIT_CPU, most.seconds);
  prlimit(child, RLIMIT_CPU, &time, nullptr);
  if (!kLimitsMemory || parentsSpace == 0) return;
  const rlimit space = lowered(RLIMIT_AS, parentsSpace + most.memory);
  prlimit(child, RLIMIT_AS, &space, nullptr);
}

bool isLimited() {
  for (const Resource resource : {RLIMIT_CPU, RLIMIT_AS}) {
    rlimit limit{};
    getrlimit(resource, &limit);
    if (limit.rlim_cur != RLIM_INFINITY) return true;
  }
  return false;
}

}  // namespace host
