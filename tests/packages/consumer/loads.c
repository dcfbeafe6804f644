// SPDX-License-Identifier: MIT
// Loads the filter whose path the build knows, and says its version. Prints "loads 0x02000005".
#define RAXEL_NO_SHORT_NAMES
#include <dlfcn.h>
#include <raxel/raxel.h>
#include <stdio.h>

// Names of the application's own.
static const double zero = 0.0, one = 1.0;
static double split(double whole) {
  return whole / 2 + zero * one;
}

int main(void) {
  void *filter = dlopen(FILTER, RTLD_NOW | RTLD_LOCAL);
  uint32_t (*version)(void);
  if (!filter) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  *(void **)&version = dlsym(filter, "KVLGetFilterVersion");
  if (!version || version() != RAXEL_VERSION || split(2) != 1.0) return 1;
  printf("loads 0x%08X\n", (unsigned)version());
  return 0;
}
