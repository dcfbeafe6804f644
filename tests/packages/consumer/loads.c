// Loads the filter whose path the build knows, and says its version. Prints "loads 0x02000005".
#include <dlfcn.h>
#include <raxel/raxel.h>
#include <stdio.h>

int main(void) {
  void *filter = dlopen(FILTER, RTLD_NOW | RTLD_LOCAL);
  uint32_t (*version)(void);
  if (!filter) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  *(void **)&version = dlsym(filter, "KVLGetFilterVersion");
  if (!version || version() != RAXEL_VERSION) return 1;
  printf("loads 0x%08X\n", (unsigned)version());
  return 0;
}
