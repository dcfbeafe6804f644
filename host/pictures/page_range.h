// SPDX-License-Identifier: MIT
// Which pages of an input are meant.
#pragma once

#include <cstdint>

namespace host {

// A run of pages, from 1 on; `last` 0 is the last that there is.
struct PageRange {
  uint32_t first, last;
};

}  // namespace host
