// SPDX-License-Identifier: MIT
// Functions of libraries that are loaded when they are needed.
#pragma once

#include <dlfcn.h>

namespace host {

// Looks a name up; false when the library has none of it.
template <class Function>
bool resolve(void *library, const char *name, Function &function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

}  // namespace host
