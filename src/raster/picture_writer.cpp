// SPDX-License-Identifier: MIT
// Writes one complete picture from one buffer: the road of a cell array outside a frame.
#include <cstring>

#include "raster/cell_geometry.h"
#include "raster/driver_state.h"
#include "raxel/color.h"
#include "raxel/memory.h"
#include "raxel/tiff.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"
#include "runtime/settings_in_use.h"

namespace raster {
namespace {

// A picture on its way to the writer. `owned` holds the pixels once they are no longer the caller's.
struct Picture {
  Handle bits = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t depth = 0;
  int32_t kind = RAXEL_RASTER_INDEXED;
  runtime::Block owned;
  runtime::Block palette;
};

struct Target {
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t depth = 0;
};

// Reports progress. False when the host asks to stop, ended the session, or destroyed the settings
// meanwhile; the last is an error of the picture's.
bool report(const runtime::SettingsInUse &use, uint32_t percent) {
  const int32_t answer = tellHost(0, 0, 0, percent);
  if (lpEMData == nullptr) return false;
  if (use.destroyed() || !useDriverSetup()) {
    push_er(RAXEL_NO_MEMORY);
    return false;
  }
  return answer == 0;
}

// The window's size in inches when a resolution is known, else the picture's own in pixels.
Target targetOf(uint32_t width, uint32_t rows, uint32_t resolution) {
  double targetWidth = width;
  double targetHeight = rows;
  if (resolution != 0) {
    const double *window = lpEMData->DevWindow;
    targetWidth = extentOf(window[3], window[0]) / resolution;
    targetHeight = extentOf(window[4], window[1]) / resolution;
  }
  Target target;
  uint16_t colorSpace = 0;  // neither is read or written: no setting asks for four channels
  uint8_t flags[9] = {};
  QueryCellFormat(&targetWidth, &targetHeight, &target.depth, &resolution, &colorSpace, flags);
  target.width = runtime::toU32(targetWidth);
  target.height = runtime::toU32(targetHeight);
  return target;
}

// Takes a converted picture in place of the one before it. False when there is none.
bool replace(Picture &picture, Handle converted, uint32_t width, uint32_t height) {
  if (converted == 0) return false;
  picture.owned = runtime::Block(converted);
  picture.bits = converted;
  picture.width = width;
  picture.height = height;
  return true;
}

bool shrink(Picture &picture, const Target &target) {
  return replace(picture,
                 rlShrinkBitmap(picture.bits, static_cast<int16_t>(picture.depth), picture.width,
                                picture.height, target.width, target.height),
                 target.width, target.height);
}

bool stretch(Picture &picture, const Target &target) {
  return replace(picture,
                 rlStretchBitmap(picture.bits, static_cast<int16_t>(picture.depth), picture.width,
                                 picture.height, target.width, target.height),
                 target.width, target.height);
}

// Four channels become three, in place and packed: rows lose their padding.
void dropFourthChannel(Picture &picture) {
  if (picture.kind == RAXEL_RASTER_CMYK) {
    rlCMYKtoRGB(picture.bits, picture.width, picture.height);
  } else {
    rlALPHAtoRGB(picture.bits, picture.width, picture.height);
  }
  picture.depth = 24;
  picture.kind = RAXEL_RASTER_RGB;
}

// The palette handle comes back as the table of the new depth, or 0; the old copy stays ours to free.
bool changeDepth(Picture &picture, const Target &target) {
  Handle table = picture.palette.handle();
  const Handle converted = rlChangeColorResolution(picture.bits, picture.width, picture.height,
                                                   static_cast<int16_t>(picture.depth),
                                                   static_cast<int16_t>(target.depth), &table);
  if (table != picture.palette.handle()) picture.palette = runtime::Block(table);
  if (!replace(picture, converted, picture.width, picture.height)) return false;
  picture.depth = target.depth;
  picture.kind = target.depth > 23 ? RAXEL_RASTER_RGB : RAXEL_RASTER_INDEXED;
  return true;
}

// Heights alone decide whether a picture is scaled, so the target may be wider than the rows. The
// block is then filled up with zeros to the writer's size, and whatever the writer does to pixels it
// does to those as well. False when no block holds that many.
bool fillUp(Picture &picture, const Target &target) {
  const uint64_t bytes = runtime::bitmapBytes(target.width, target.height, target.depth);
  if (GlobalSize(picture.bits) >= bytes) return true;
  return replace(picture, runtime::longerCopy(picture.bits, bytes), target.width, target.height);
}

// The writer reads up to 256 entries, so a shorter table goes to it with black after its end.
void writeFile(const Picture &picture, const Target &target) {
  uint8_t palette[256][3] = {};
  if (picture.palette) {
    const std::span<const uint8_t> table = picture.palette.bytes();
    std::memcpy(palette, table.data(), table.size() < sizeof palette ? table.size() : sizeof palette);
  } else {
    std::memcpy(palette, lpEMData->ColorTable, sizeof palette);
  }
  const Handle file = lpEMData->hOutFile;
  Handle descriptor = 0;
  BeginCellBitmap(file, target.width, target.height, target.depth, palette[0], &descriptor);
  WriteCellBits(file, picture.bits, target.width, target.height, target.depth, picture.kind, descriptor);
  EndCellBitmap(file, descriptor);
}

}  // namespace
}  // namespace raster

void RasterWriteCellData(Handle pixels, uint32_t width, uint32_t rows, uint32_t resolution,
                         uint32_t bitsPerPixel, int32_t kind) {
  if (lpEMData == nullptr || pixels == 0) return;
  if (!raster::useDriverSetup()) {
    push_er(RAXEL_NO_MEMORY);
    return;
  }
  const runtime::SettingsInUse use(lpSetup);
  const raster::Target target = raster::targetOf(width, rows, resolution);
  if (target.depth == 0) return;
  raster::Picture picture;
  picture.bits = pixels;
  picture.width = width;
  picture.height = rows;
  picture.depth = bitsPerPixel;
  picture.kind = kind;
  uint32_t percent = 0;

  // Only heights are compared; the width follows along.
  if (target.height < rows) {
    if (!raster::shrink(picture, target)) return;
    if (!raster::report(use, percent += RAXEL_REPORT_STEP)) return;
  }
  if (picture.depth < 24) {
    picture.palette = runtime::Block::ofSize(sizeof lpEMData->ColorTable);
    std::memcpy(picture.palette.data(), lpEMData->ColorTable, sizeof lpEMData->ColorTable);
  }
  if ((picture.kind == RAXEL_RASTER_CMYK || picture.kind == RAXEL_RASTER_ALPHA) &&
      target.depth < picture.depth) {
    raster::dropFourthChannel(picture);
  }
  if (target.depth != picture.depth) {
    if (!raster::changeDepth(picture, target)) return;
    if (!raster::report(use, percent += RAXEL_REPORT_STEP)) return;
  }
  if (target.height > rows) {
    if (!raster::stretch(picture, target)) return;
    if (!raster::report(use, percent += RAXEL_REPORT_STEP)) return;
  }
  if (percent < RAXEL_REPORT_WRITING && !raster::report(use, RAXEL_REPORT_WRITING)) return;
  if (!raster::fillUp(picture, target)) return;
  raster::writeFile(picture, target);
}
