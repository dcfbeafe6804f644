// SPDX-License-Identifier: MIT
// The host's functions of the library's names. No header of the library is included here: the
// declarations would say that these are something else.
#include "library/hostile.h"

namespace {
std::string calls;
}

std::string hostileCalls() {
  return calls;
}

#define HOSTILE(name)                                                \
  extern "C" __attribute__((visibility("default"))) long name(void); \
  extern "C" long name(void) {                                       \
    calls += #name " ";                                              \
    return 77;                                                       \
  }
#include "hostile_names.inc"
