// SPDX-License-Identifier: MIT
// The settings record in use and the filter's own names. All constant-initialised.
#include "raxel/settings.h"

static char filterName[] = "raxel";  // writable: CreateSetup upper-cases it in place

Handle hRaster = 0;
RasterSetup *lpRaster = nullptr;
Handle hSetup = 0;
RasterSetup *lpSetup = nullptr;
char *szFilter = filterName;
char export_szDLLName[260] = {};
