// SPDX-License-Identifier: MIT
// How the sanitizers watch the targets, where the environment does not say otherwise: a megabyte of freed
// memory is kept back, some executions' worth and little enough to stay in the processor's cache, and
// blocks do not note where they were made, which takes longer than most executions. `./dev fuzz` runs a
// finding once more with all that notes.
extern "C" const char *__asan_default_options() {
  return "quarantine_size_mb=1:thread_local_quarantine_size_kb=64:malloc_context_size=0";
}
