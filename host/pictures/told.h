// SPDX-License-Identifier: MIT
// What a child that decodes a picture tells its parent, in records of one size.
#pragma once

#include <cstdint>

namespace host {

enum TellKind : uint32_t {
  kTellAnnounced = 1,  // what the picture will be, turned; the child waits for the parent
  kTellRows,           // what it is before it is turned, whose rows come
  kTellPiece,          // the next of their bytes, in the window (confine/window.h)
  kTellDone,           // what it is, with all its rows
  kTellRefused,        // why it cannot be read, as the one text
  kTellNoMemory,
  kTellReady,  // that it is done with the picture, and waits for another place
};

struct Told {
  uint32_t kind;
  uint32_t width, height, bits;
  uint32_t orientation;
  uint32_t bytes;   // of a piece
  uint32_t colors;  // of the table; 0 for none
  uint32_t tableKnown;
  double dpiX, dpiY;
  uint32_t texts;          // notes that are new, each ended by a 0
  uint8_t table[256 * 3];  // red, green, blue
  char text[1500];
};

}  // namespace host
