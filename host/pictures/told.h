// SPDX-License-Identifier: MIT
// What a child that decodes a picture tells its parent, in records of one size.
#pragma once

#include <cstdint>

namespace host {

enum TellKind : uint32_t {
  kTellAnnounced = 1,  // what the picture will be; the child waits for the parent
  kTellRows,           // that its rows come, one behind the other as a stream
  kTellDone,           // what it is, with all its rows
  kTellRefused,        // why it cannot be read, as the one text
  kTellNoMemory,
};

struct Told {
  uint32_t kind;
  uint32_t width, height, bits;
  uint32_t colors;  // of the table; 0 for none
  uint32_t tableKnown;
  double dpiX, dpiY;
  uint32_t texts;          // notes that are new, each ended by a 0
  uint8_t table[256 * 3];  // red, green, blue
  char text[1500];
};

}  // namespace host
