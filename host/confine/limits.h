// SPDX-License-Identifier: MIT
// What a confined child may take of the machine.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace host {

struct Allowance {
  uint64_t memory;   // bytes of address space beside what the parent has
  uint64_t seconds;  // of processor time
};

// The address space of a process, 0 for this one, in bytes; 0 when it is not known.
uint64_t addressSpace(pid_t process = 0);
// The processor time that a process took so far, in seconds; infinity when it is not known.
double processorTime(pid_t process);

// In a new child whose parent had so much: gives up every descriptor but standard error and the line to
// its parent, which becomes kLineToParent, every right that decoding does not need, and what goes beyond
// the allowance. Limits that were lower stay. Where the system has no filters for its calls, the limits
// still hold.
void confineThisProcess(const Allowance &most, uint64_t parentsSpace, int line);

// From the parent: what the child may take from now on.
void setAllowance(pid_t child, const Allowance &most, uint64_t parentsSpace);
// Whether this process has limits of its own to what its children may take.
bool isLimited();

}  // namespace host
