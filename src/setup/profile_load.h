// SPDX-License-Identifier: MIT
// Reading a mode section of the profile into a settings record.
#pragma once

#include "raxel/settings.h"

namespace setup {

// Finds the profile, puts its full path into the record and returns true; false when there is none,
// with whatever path was tried left behind. A null or empty `profile` means the library's own.
bool findProfile(RasterSetup &record, const char *profile);

// Reads every key of section szModeName. False, and nothing else read, without a "Driver" value.
bool loadProfile(RasterSetup &record);

}  // namespace setup
