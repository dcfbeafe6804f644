// SPDX-License-Identifier: MIT
// How the sanitizers watch the targets, where the environment does not say otherwise: freed memory is kept
// back for some thousand executions, and blocks do not note where they were made, which takes longer than
// most executions. `./dev fuzz` runs a finding once more with all that notes.
extern "C" const char *__asan_default_options() {
  return "quarantine_size_mb=16:malloc_context_size=0";
}
