// SPDX-License-Identifier: MIT
#include "setup/geometry.h"

#include <cmath>

#include "runtime/bitmap_modes.h"
#include "runtime/numbers.h"
#include "runtime/unaligned.h"
#include "setup/settings.h"

static_assert(sizeof(RasterPictureInfo) == 28 && sizeof(RasterInfoResult) == 12);

namespace setup {
namespace {

// One more than a side's whole units, so that no side is empty.
double sideOf(double units) {
  const auto whole = runtime::truncateTo<int64_t>(units);
  return std::fabs(static_cast<double>(whole)) + 1.0;
}

void takeSize(RasterSetup &record, const RasterPictureInfo &picture) {
  if (record.nSizeMode == RAXEL_STORED_SIZE_PICTURE && picture.nPictureResolution != 0) {
    record.dWidth = static_cast<double>(picture.nPictureWidth) / picture.nPictureResolution;
    record.dHeight = static_cast<double>(picture.nPictureHeight) / picture.nPictureResolution;
  } else if (record.nSizeMode == RAXEL_STORED_SIZE_DISPLAY && picture.nDisplayResolution != 0) {
    record.dWidth = static_cast<double>(picture.nDisplayWidth) / picture.nDisplayResolution;
    record.dHeight = static_cast<double>(picture.nDisplayHeight) / picture.nDisplayResolution;
  }
}

void takeResolution(RasterSetup &record, const RasterPictureInfo &picture) {
  int32_t dotsPerInch = 0;
  if (record.nResolutionMode == RAXEL_STORED_RESOLUTION_PICTURE) dotsPerInch = picture.nPictureResolution;
  if (record.nResolutionMode == RAXEL_STORED_RESOLUTION_DISPLAY) dotsPerInch = picture.nDisplayResolution;
  if (dotsPerInch == 0) return;
  record.tiff.nXResolution = low16(dotsPerInch);
  record.tiff.nYResolution = low16(dotsPerInch);
}

// Bits per pixel of a bitmap mode, negative for grey; `other` for a code that is none.
int32_t signedDepth(int32_t bitmapMode, int32_t other) {
  const runtime::BitmapMode *mode = runtime::bitmapMode(bitmapMode);
  if (mode == nullptr) return other;
  return mode->isGrey() ? -int32_t{mode->bitsPerPixel()} : int32_t{mode->bitsPerPixel()};
}

}  // namespace

runtime::Inches fitAspect(const RasterSetup &record, double pictureWidth, double pictureHeight) {
  return runtime::fitProportions(sideOf(pictureWidth) / sideOf(pictureHeight),
                                 {record.dWidth, record.dHeight}, record.tiff.nXResolution,
                                 record.tiff.nYResolution);
}

RasterInfoResult rasterInfo(RasterSetup &record, const RasterPictureInfo &picture,
                            const RasterInfoResult &before) {
  takeSize(record, picture);
  takeResolution(record, picture);
  const bool ownSize = picture.nPictureResolution != 0 && record.nSizeMode == RAXEL_STORED_SIZE_PICTURE;
  const runtime::Inches size = ownSize ? runtime::Inches{record.dWidth, record.dHeight}
                                       : fitAspect(record, picture.nPictureWidth, picture.nPictureHeight);
  return {runtime::toI32(std::ceil(record.tiff.nXResolution * size.width)),
          runtime::toI32(std::ceil(record.tiff.nYResolution * size.height)),
          signedDepth(record.nBitmapMode, before.nDepth)};
}

}  // namespace setup

void GetRasterInfo(Handle /*setup*/, const RasterPictureInfo *picture, RasterInfoResult *result) {
  // The record last locked counts, not the handle.
  if (lpRaster == nullptr || picture == nullptr || result == nullptr) return;
  const auto before = runtime::load<RasterInfoResult>(result);
  const auto raster = setup::rasterInfo(*lpRaster, runtime::load<RasterPictureInfo>(picture), before);
  runtime::store(result, raster);
}

void AdjustAspect(double *pair, double width, double height) {
  if (lpRaster == nullptr || pair == nullptr) return;
  const runtime::Inches size = setup::fitAspect(*lpRaster, width, height);
  runtime::store(pair, size.width);
  runtime::store(pair + 1, size.height);
}
