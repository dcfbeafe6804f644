// SPDX-License-Identifier: MIT
// What is known of the display and the printer.
#pragma once

#include <cstdint>

namespace setup {

struct DeviceInfo {
  double dWidth;   // display: dots; printer: inches
  double dHeight;  // the same
  int16_t nXRes;   // dots per inch
  int16_t nYRes;
};

// The display as the library takes it to be, in dots: from the environment variable "DISPLAYINFO",
// else what the host has set, else 1280 by 1078 dots at 96 by 96 dots per inch.
DeviceInfo displayInDots();

// Reads "width height x-resolution y-resolution", each number followed by one character that
// belongs to none. A missing number is 0.
DeviceInfo parseDisplayInfo(const char *text);

}  // namespace setup
