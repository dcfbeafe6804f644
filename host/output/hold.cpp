// SPDX-License-Identifier: MIT
#include "output/hold.h"

#include <initializer_list>

namespace host {

sigset_t stopSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set, signal);
  return set;
}

Hold::Hold() {
  const sigset_t set = stopSignals();
  pthread_sigmask(SIG_BLOCK, &set, &before_);
}

Hold::~Hold() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace host
