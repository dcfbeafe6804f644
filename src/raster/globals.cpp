// SPDX-License-Identifier: MIT
// The driver's state block, while there is one.
#include "raxel/driver.h"

Handle hEMData = 0;
RasterDriverState *lpEMData = nullptr;
