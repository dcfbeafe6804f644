// SPDX-License-Identifier: MIT
// The names of the profile's keys.
#pragma once

#include <cstdint>

#include "raxel/settings.h"

namespace setup {

// Ids of the texts that the library itself asks for. The table has more, for the host.
enum class Key : uint16_t {
  Mode = 1,
  Driver = 4,
  ColorMode = 11,
  BitmapMode = 17,
  ResolutionMode = 18,
  XResolution = 19,
  YResolution = 20,
  Width = 21,
  Height = 22,
  CompressionMode = 24,
  SizeMode = 25,
  Layout = 26,  // not in the table: profiles keep strips or tiles under "Not Defined"
  LineMode = 27,
};

// The first entry of the table with this id; null when there is none.
const StringTableEntry *findText(uint16_t id);

// The name of a key, "Not Defined" for an id that the table lacks.
const char *keyName(Key key);

}  // namespace setup
