// SPDX-License-Identifier: MIT
// The pixel size of the picture that an export will write.
#pragma once

#include "raxel/settings.h"
#include "runtime/aspect.h"

namespace setup {

// Fits a picture's proportions into the record's box, shrinking one side by whole pixels.
runtime::Inches fitAspect(const RasterSetup &record, double pictureWidth, double pictureHeight);

// Brings the record's size and resolution up to date with a picture and works out the raster.
// `before` is what the host's result holds: its depth stays for a bitmap mode that has none.
RasterInfoResult rasterInfo(RasterSetup &record, const RasterPictureInfo &picture,
                            const RasterInfoResult &before);

}  // namespace setup
