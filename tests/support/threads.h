// SPDX-License-Identifier: MIT
// How many threads the library codes with, in tests: it would not start any for their small pictures.
#pragma once

#include <cstdint>

namespace support {

// For the scope's length, so many threads for whatever can be coded side by side, however small it is and
// however few cores there are. The environment's RAXEL_TEST_THREADS does the same for a whole run; without
// either there are as many as on a machine of two cores.
class Threads {
 public:
  explicit Threads(uint32_t threads);
  ~Threads();
  Threads(const Threads &) = delete;
  Threads &operator=(const Threads &) = delete;

 private:
  uint32_t before_;
};

}  // namespace support
