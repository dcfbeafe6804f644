// SPDX-License-Identifier: MIT
// Steps that signals must not leave half done.
#pragma once

#include <signal.h>

namespace host {

// The signals by which a user ends a program: interrupt, terminate and hang-up.
sigset_t stopSignals();

// While it lives, they wait, as far as this thread is concerned.
class Hold {
 public:
  Hold();
  ~Hold();
  Hold(const Hold &) = delete;
  Hold &operator=(const Hold &) = delete;

 private:
  sigset_t before_;
};

}  // namespace host
