// The settings record's defaults and limits.
#pragma once

#include "raxel/settings.h"

namespace setup {

// Option codes as the record stores them.
enum ColorMode : int32_t { kColorsAsTheyAre = 103, kLastColorMode = 107 };
enum BitmapMode : int32_t {
  kBilevel = 215,
  kGrey16 = 216,
  kGrey256 = 217,
  kColor8 = 218,
  kColor16 = 219,
  kColor256 = 221,
  kRgb = 222
};
enum CompressionMode : int32_t { kUncompressed = 224 };
enum SizeMode : int32_t { kDisplaySize = 600, kPrinterSize, kPictureSize, kUserSize };
enum ResolutionMode : int32_t {
  kDisplayResolution = 307,
  kPrinterResolution,
  kPictureResolution,
  kUserResolution
};
enum LayoutMode : uint16_t { kTiles = 771, kStrips = 772 };

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
