// SPDX-License-Identifier: MIT
// reload LIBRARY: a host that opens the library for each export and closes it again loses no memory by it.
#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>

static size_t usedAfterTurn(const char *path) {
  void *library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL || dlclose(library) != 0) {
    fprintf(stderr, "%s\n", dlerror());
    return 0;
  }
  return mallinfo2().uordblks;
}

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  usedAfterTurn(argv[1]);
  const size_t first = usedAfterTurn(argv[1]);
  size_t last = 0;
  for (int i = 0; i < 100; ++i) last = usedAfterTurn(argv[1]);
  printf("%zu bytes after two turns, %zu after a hundred more\n", first, last);
  // What malloc keeps for the next small block counts as used.
  const size_t slack = 64 << 10;
  return first != 0 && last <= first + slack ? 0 : 1;
}
