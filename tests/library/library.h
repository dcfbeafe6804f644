// SPDX-License-Identifier: MIT
// The built raxel.so, opened as a host application does: by dlopen, every function found by its name.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "raxel/raxel.h"

namespace library {

// The address of an exported name; the test fails, and null comes back, when it is not there. The
// library is opened at the first call, RTLD_NOW and RTLD_GLOBAL.
void *address(const char *name);

// LOADED(CreateSetup)(0, ...) calls the library's own CreateSetup, whatever else bears that name.
#define LOADED(name) (reinterpret_cast<decltype(&::name)>(library::address(#name)))
// LOADED_DATA(szFilter) is the address of the exported variable.
#define LOADED_DATA(name) (reinterpret_cast<decltype(&::name)>(library::address(#name)))

}  // namespace library
