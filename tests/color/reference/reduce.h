// SPDX-License-Identifier: MIT
// A plain form of the choice of a colour table, one step after the other. It shares no line with the
// library and is what the library is compared with.
#pragma once

#include "color/reference/pixels.h"

namespace reference {

struct Reduced {
  Bytes table;  // three bytes for each wanted colour
  int count;
};

// The table of a 24-bit picture whose rows are padded to four bytes.
Reduced reduce(const Bytes &rows, uint32_t width, uint32_t height, int wanted);

// The sort alone: sorts n entries and takes in the one past them.
struct Color {
  int cell;
  int count;
  bool operator==(const Color &) const = default;
};
void sortColors(Color *list, int axis, int n);

}  // namespace reference
