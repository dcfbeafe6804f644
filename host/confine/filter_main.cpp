// SPDX-License-Identifier: MIT
// Writes the instructions of a confined child's filter of system calls, for confine/filter.cpp to include.
// libseccomp makes them while raxel is built: when pictures are read there is no time to lose.
#include <fcntl.h>
#include <linux/filter.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "confine/filter.h"

namespace {

struct Rule {
  int call;
  std::vector<scmp_arg_cmp> when{};  // all of these hold
};

// An argument of 32 bits: the upper half of its register may hold anything.
scmp_arg_cmp is(unsigned argument, int value) {
  return {argument, SCMP_CMP_MASKED_EQ, 0xFFFFFFFF, static_cast<uint32_t>(value)};
}
scmp_arg_cmp has(unsigned argument, int bits) {
  return {argument, SCMP_CMP_MASKED_EQ, static_cast<uint32_t>(bits), static_cast<uint32_t>(bits)};
}
scmp_arg_cmp lacks(unsigned argument, int bits) {
  return {argument, SCMP_CMP_MASKED_EQ, static_cast<uint32_t>(bits), 0};
}

std::vector<Rule> allowed() {
  std::vector<Rule> rules{
      {SCMP_SYS(read), {is(0, host::kLineToParent)}},
      {SCMP_SYS(write), {is(0, host::kLineToParent)}},
      {SCMP_SYS(write), {is(0, STDERR_FILENO)}},
      // Pages that can be run would let a decoder bring its own code.
      {SCMP_SYS(mprotect), {lacks(2, PROT_EXEC)}},
      {SCMP_SYS(mmap), {lacks(2, PROT_EXEC), has(3, MAP_ANONYMOUS)}},
      {SCMP_SYS(mmap2), {lacks(2, PROT_EXEC), has(3, MAP_ANONYMOUS)}},
  };
  for (const int call :
       {SCMP_SYS(munmap),          SCMP_SYS(mremap),          SCMP_SYS(brk),          SCMP_SYS(madvise),
        SCMP_SYS(futex),           SCMP_SYS(clock_gettime),   SCMP_SYS(gettimeofday), SCMP_SYS(time),
        SCMP_SYS(rt_sigaction),    SCMP_SYS(rt_sigprocmask),  SCMP_SYS(rt_sigreturn), SCMP_SYS(sigreturn),
        SCMP_SYS(sigaltstack),     SCMP_SYS(restart_syscall), SCMP_SYS(getpid),       SCMP_SYS(gettid),
        SCMP_SYS(sched_yield),     SCMP_SYS(getrandom),       SCMP_SYS(exit),         SCMP_SYS(exit_group),
        SCMP_SYS(clock_gettime64), SCMP_SYS(futex_time64)})
    rules.push_back({call});
  return rules;
}

bool addRules(scmp_filter_ctx filter) {
  for (const Rule &rule : allowed()) {
    if (seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, rule.call, static_cast<unsigned>(rule.when.size()),
                               rule.when.data()) != 0)
      return false;
  }
  return true;
}

// What the library writes into a pipe, which has room for more than a filter may take.
std::vector<sock_filter> programOf(scmp_filter_ctx filter) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  std::vector<sock_filter> program(BPF_MAXINSNS);
  const bool written = seccomp_export_bpf(filter, ends[1]) == 0;
  close(ends[1]);
  const ssize_t got = written ? read(ends[0], program.data(), program.size() * sizeof program[0]) : 0;
  close(ends[0]);
  program.resize(got > 0 ? static_cast<size_t>(got) / sizeof program[0] : 0);
  return program;
}

}  // namespace

int main() {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ERRNO(EPERM));
  // As a tree: the kernel asks it about each of its calls when a process takes it.
  constexpr uint32_t kTree = 2;
  std::vector<sock_filter> program;
  if (filter && seccomp_attr_set(filter, SCMP_FLTATR_CTL_OPTIMIZE, kTree) == 0 && addRules(filter))
    program = programOf(filter);
  if (filter) seccomp_release(filter);
  for (const sock_filter &one : program) {
    std::printf("{0x%02X, %u, %u, 0x%08X},\n", unsigned{one.code}, unsigned{one.jt}, unsigned{one.jf},
                one.k);
  }
  return program.empty() ? 1 : 0;
}
