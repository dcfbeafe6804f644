// SPDX-License-Identifier: MIT
// Leaves the library's idea of the current setup, and the environment, as a test found them.
#pragma once

#include <cstring>

#include "raxel/settings.h"
#include "support/environment.h"

namespace support {

// The setup globals and the variables that setups are made from. None of them is set as long as this lives,
// and none afterwards.
class Globals {
 public:
  Globals() { clear(); }
  ~Globals() { clear(); }
  Globals(const Globals &) = delete;
  Globals &operator=(const Globals &) = delete;

 private:
  static void clear() {
    hRaster = hSetup = 0;
    lpRaster = lpSetup = nullptr;
    std::memset(export_szDLLName, 0, sizeof export_szDLLName);
    std::strcpy(szFilter, "raxel");
    SetDisplayInfo(0, 0, 0, 0);
    SetPrinterInfo(0, 0, 0, 0);
  }

  Environment display_{"DISPLAYINFO", nullptr};
  Environment profiles_{"INIDIR", nullptr};
};

}  // namespace support
