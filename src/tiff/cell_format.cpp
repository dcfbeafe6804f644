// SPDX-License-Identifier: MIT
// What size, resolution and depth a bitmap must have to become the picture that the settings ask for.
#include "raxel/settings.h"
#include "runtime/aspect.h"
#include "runtime/bitmap_modes.h"
#include "runtime/numbers.h"

namespace {

// The display as the settings see it. Its horizontal resolution speaks for both axes.
struct Display {
  double width = 0.0;
  double height = 0.0;
  int16_t resolution = 0;
};

Display askDisplay() {
  Display display;
  int16_t yResolution = 0;
  GetDisplayInfo(&display.width, &display.height, &display.resolution, &yResolution);
  return display;
}

// Takes the output size from the picture (inches) or the display.
void settleSize(RasterSetup &setup, double width, double height, uint32_t resolution) {
  if (setup.nSizeMode == RAXEL_STORED_SIZE_PICTURE && resolution != 0) {
    setup.dWidth = width;
    setup.dHeight = height;
  } else if (setup.nSizeMode == RAXEL_STORED_SIZE_DISPLAY) {
    if (const Display display = askDisplay(); display.resolution != 0) {
      setup.dWidth = display.width;
      setup.dHeight = display.height;
    }
  }
}

// Takes the output resolution from the picture or the display; 16 bits are kept of it.
void settleResolution(RasterSetup &setup, uint32_t resolution) {
  if (setup.nResolutionMode == RAXEL_STORED_RESOLUTION_PICTURE && resolution != 0) {
    setup.tiff.nXResolution = setup.tiff.nYResolution = static_cast<int16_t>(resolution);
  } else if (setup.nResolutionMode == RAXEL_STORED_RESOLUTION_DISPLAY) {
    if (const Display display = askDisplay(); display.resolution != 0) {
      setup.tiff.nXResolution = setup.tiff.nYResolution = display.resolution;
    }
  }
}

// Brings size and resolution in the settings up to date, and turns the picture's size into pixels. A
// picture without a resolution (0) has mere proportions, and one that does not tell it (null) takes its own
// size.
void settleFormat(RasterSetup &setup, double &width, double &height, uint32_t *resolution) {
  const uint32_t pictureResolution = resolution == nullptr ? 0 : *resolution;
  settleSize(setup, width, height, pictureResolution);
  settleResolution(setup, pictureResolution);

  double inches[2] = {setup.dWidth, setup.dHeight};
  const bool ownSize =
      setup.nSizeMode == RAXEL_STORED_SIZE_PICTURE && (resolution == nullptr || *resolution != 0);
  if (!ownSize) RasterAdjustAspect(inches, width, height);

  if (setup.tiff.nXResolution == 0) return;
  width = inches[0] * setup.tiff.nXResolution;
  height = inches[1] * setup.tiff.nYResolution;
  if (resolution != nullptr) *resolution = static_cast<uint32_t>(int32_t{setup.tiff.nXResolution});
}

}  // namespace

int32_t QueryCellFormat(double *width, double *height, uint16_t *bitsPerPixel, uint32_t *resolution,
                        uint16_t * /*colorSpace*/, void * /*flags*/) {
  if (lpRaster == nullptr || width == nullptr || height == nullptr) return 0;
  settleFormat(*lpRaster, *width, *height, resolution);
  const runtime::BitmapMode *mode = runtime::bitmapMode(lpRaster->nBitmapMode);
  if (bitsPerPixel != nullptr && mode != nullptr) *bitsPerPixel = mode->bitsPerPixel();
  return 0;
}

// The picture's proportions here are plainly width over height. A resolution of 0 makes infinities and
// NaNs, which come out as a size of 0 pixels at the end of the road.
void RasterAdjustAspect(double *result, double pictureWidth, double pictureHeight) {
  if (lpRaster == nullptr || result == nullptr) return;
  const runtime::Inches size =
      runtime::fitProportions(pictureWidth / pictureHeight, {lpRaster->dWidth, lpRaster->dHeight},
                              lpRaster->tiff.nXResolution, lpRaster->tiff.nYResolution);
  result[0] = size.width;
  result[1] = size.height;
}

void ScaleImageSize(double *width, double *height) {
  constexpr double kLongest = 22.0;  // inches
  if (width == nullptr || height == nullptr) return;
  if (*width >= *height && *width > kLongest) {
    *height = *height * (kLongest / *width);
    *width = kLongest;
  } else if (*height > *width && *height > kLongest) {
    *width = *width * (kLongest / *height);
    *height = kLongest;
  }
}
