// SPDX-License-Identifier: MIT
#include "library/library.h"

#include <dlfcn.h>

namespace library {

void *address(const char *name) {
  static void *const handle = dlopen(RAXEL_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
  if (handle == nullptr) {
    ADD_FAILURE() << dlerror();
    return nullptr;
  }
  void *const found = dlsym(handle, name);
  EXPECT_NE(found, nullptr) << name;
  return found;
}

}  // namespace library
