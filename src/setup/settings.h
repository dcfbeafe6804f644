// SPDX-License-Identifier: MIT
// The settings record's defaults and limits.
#pragma once

#include "raxel/settings.h"

namespace setup {

// Dots per inch, and inches: the ranges both included, and what replaces a value outside them.
inline constexpr int32_t kLowestResolution = 32;
inline constexpr int32_t kHighestResolution = 400;
inline constexpr int16_t kDefaultResolution = 96;
inline constexpr double kSmallestSize = 0.03125;
inline constexpr double kLargestSize = 22.0;
inline constexpr double kDefaultWidth = 6.67;
inline constexpr double kDefaultHeight = 5.0;

// Resolutions keep the low 16 bits of a number.
constexpr int16_t low16(int32_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(value));
}

// Fills a record with the built-in defaults; szAppName and nLineMode stay as they are.
void useDefaults(RasterSetup &record);

// Repairs resolutions and sizes outside their ranges. Returns 0, RAXEL_RESOLUTION_REPAIRED or
// RAXEL_SIZE_REPAIRED; a repaired size hides a repaired resolution.
int32_t repairLimits(RasterSetup &record);

}  // namespace setup
