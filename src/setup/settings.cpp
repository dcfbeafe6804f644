// SPDX-License-Identifier: MIT
#include "setup/settings.h"

#include <algorithm>
#include <cstring>

#include "setup/text.h"

namespace setup {
namespace {

// The driver's name is the filter's short name and ".1", cut to the field's 12 characters.
void defaultDriverName(RasterSetup &record) {
  copyText(record.szDriverName, szFilter);
  const size_t length = std::strlen(record.szDriverName);
  copyText(std::span(record.szDriverName).subspan(length), ".1");
}

bool isResolution(int16_t dotsPerInch) {
  return dotsPerInch >= kLowestResolution && dotsPerInch <= kHighestResolution;
}

// A NaN is neither too small nor too large and stays.
bool isOutsideSizes(double inches) {
  return inches < kSmallestSize || inches > kLargestSize;
}

}  // namespace

void useDefaults(RasterSetup &record) {
  record.szModeName[0] = '\0';
  record.szProfilePath[0] = '\0';
  record.szReserved[0] = '\0';
  defaultDriverName(record);
  record.dwReserved1 = 0;
  record.dwEditData = 0;
  record.dwUserData = 0;
  record.nBitmapMode = RAXEL_STORED_MODE_COLOR256;
  record.tiff.wLayoutMode = RAXEL_STORED_LAYOUT_STRIPS;
  record.nCompressionMode = RAXEL_STORED_COMPRESS_NONE;
  record.nColorMode = RAXEL_STORED_COLORS;
  record.nSizeMode = RAXEL_STORED_SIZE_PICTURE;
  record.nResolutionMode = RAXEL_STORED_RESOLUTION_PICTURE;
  record.tiff.nXResolution = kDefaultResolution;
  record.tiff.nYResolution = kDefaultResolution;
  record.dWidth = kDefaultWidth;
  record.dHeight = kDefaultHeight;
  record.dwReserved2 = 0;
}

int32_t repairLimits(RasterSetup &record) {
  int32_t result = RAXEL_OK;
  for (int16_t *resolution : {&record.tiff.nXResolution, &record.tiff.nYResolution}) {
    if (isResolution(*resolution)) continue;
    *resolution = kDefaultResolution;
    result = RAXEL_RESOLUTION_REPAIRED;
  }
  if (isOutsideSizes(record.dWidth)) {
    record.dWidth = kDefaultWidth;
    result = RAXEL_SIZE_REPAIRED;
  }
  if (isOutsideSizes(record.dHeight)) {
    record.dHeight = kDefaultHeight;
    result = RAXEL_SIZE_REPAIRED;
  }
  return result;
}

}  // namespace setup

int32_t UseDefaultSettings(RasterSetup *record) {
  if (record != nullptr) setup::useDefaults(*record);
  return 0;
}

int32_t LimitCheck() {
  return lpRaster != nullptr ? setup::repairLimits(*lpRaster) : 0;
}
