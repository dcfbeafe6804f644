// SPDX-License-Identifier: MIT
// How many cores the filter codes a picture on.
#pragma once

namespace host {

// Those that this process may use, which are fewer than the machine has under taskset and in some
// containers.
unsigned usableCores();

// The share of each of `jobs` processes in the cores that there are, or in the `threads` that were asked
// for (0: none were), at least one. `held` is what the environment allows each process (0: no limit).
unsigned coresEach(unsigned cores, unsigned threads, unsigned jobs, unsigned held);

// Tells the filter, and those of the child processes, through the environment's RAXEL_THREADS.
void shareCores(unsigned threads, unsigned jobs);

}  // namespace host
