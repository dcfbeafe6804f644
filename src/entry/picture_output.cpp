// SPDX-License-Identifier: MIT
// The road of every picture: ask the draw procedure for its size, settle the output's depth and
// size, open, begin the file, write band by band, end, release.
#include <algorithm>
#include <cmath>

#include "raxel/filter.h"
#include "raxel/memory.h"
#include "raxel/tiff.h"
#include "runtime/blocks.h"
#include "runtime/numbers.h"
#include "runtime/rows.h"
#include "runtime/settings_in_use.h"

namespace entry {
namespace {

// One picture on its way. Filled stage by stage; release() frees whatever is there.
struct Output {
  Handle file;
  void *picture;
  DrawProc draw;
  RasterSetup *settings;
  runtime::SettingsInUse use;

  runtime::Block formatBlock = {};
  PictureFormat *format = nullptr;
  uint16_t bits = 0;  // of an output pixel: 1, 4, 8 or 24
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t bandRows = 0;
  OffscreenRecord *screen = nullptr;  // holds the palette: the draw procedure may have moved it
  Handle writer = 0;
};

// To be called after every call into the host. A callback may have locked another settings record,
// and then ours is the current one again; it may have destroyed ours, and then the picture ends.
int32_t takeSettingsBack(const Output &out) {
  if (out.use.destroyed()) return RAXEL_NO_MEMORY;
  lpRaster = out.settings;
  return RAXEL_OK;
}

int32_t queryFormat(Output &out) {
  out.formatBlock = runtime::Block::ofSize(sizeof(PictureFormat));
  if (!out.formatBlock) return RAXEL_NO_FORMAT;
  out.format = static_cast<PictureFormat *>(GlobalLock(out.formatBlock.handle()));
  QueryPlatformOffscreen(out.format, out.picture, out.draw);
  return takeSettingsBack(out);
}

bool isDepth(uint16_t bits) {
  return bits == 1 || bits == 4 || bits == 8 || bits == 24;
}

// From inches to pixels. A height is rounded up to an even number, a width is not.
int32_t settleSize(Output &out) {
  uint16_t colorSpace = 0;
  uint8_t flags[9] = {};
  QueryCellFormat(&out.format->dWidth, &out.format->dHeight, &out.bits, &out.format->nResolution,
                  &colorSpace, flags);
  if (!isDepth(out.bits)) return RAXEL_NO_FORMAT;
  out.width = runtime::toU32(out.format->dWidth);
  out.height = (runtime::toU32(out.format->dHeight) + 1u) & ~1u;
  return RAXEL_OK;
}

// A band that no block holds ends the picture when it is to be written, behind header and directory. But
// not where the directory's two arrays alone, for such sizes in tiles, would take gigabytes before.
bool listsTooMuch(const Output &out) {
  constexpr uint64_t kMostTiles = uint64_t{1} << 23;  // arrays of 64 MiB
  const uint64_t tiles = (uint64_t{out.width} + 511) / 512 * ((uint64_t{out.height} + 127) / 128);
  return out.settings->tiff.wLayoutMode == RAXEL_STORED_LAYOUT_TILES && tiles > kMostTiles &&
         !runtime::fitsInBlock(runtime::bitmapBytes(out.width, out.bandRows, out.bits));
}

// Offers the draw procedure one band of the full height; it answers with the rows it wants.
int32_t openScreen(Output &out) {
  const bool indexed = out.bits < 9;
  const auto colors = static_cast<uint16_t>(indexed ? 1u << out.bits : 0u);
  auto *palette = static_cast<uint8_t *>(kvlPtrGlobalAlloc(3u * colors));
  const uint8_t flags[9] = {};
  uint32_t rows = out.height;
  out.screen =
      InitPlatformOffscreen(out.width, &rows, out.bits, colors, palette, out.picture, out.draw, flags);
  if (out.screen == nullptr) {
    kvlPtrGlobalFree(palette);
    return RAXEL_NO_FORMAT;
  }
  out.bandRows = std::min(rows, out.height);
  if (out.bandRows == 0) return RAXEL_NO_FORMAT;
  if (const int32_t lost = takeSettingsBack(out); lost != RAXEL_OK) return lost;
  return listsTooMuch(out) ? RAXEL_NO_MEMORY : RAXEL_OK;
}

// A writer that could not begin leaves no descriptor; the first band then reports it.
int32_t beginFile(Output &out) {
  BeginCellBitmap(out.file, out.width, out.height, out.bits, out.screen->lpPalette, &out.writer);
  return takeSettingsBack(out);
}

// Rows first to last of the picture, last not included; `rows` of them.
int32_t writeBand(Output &out, uint32_t first, uint32_t last) {
  const Handle pixels = DrawPlatformOffscreen(out.screen, first, last);
  if (const int32_t lost = takeSettingsBack(out); lost != RAXEL_OK) return lost;
  const int32_t written =
      WriteCellBits(out.file, pixels, out.width, last - first, out.bits, out.format->nKind, out.writer);
  const int32_t lost = takeSettingsBack(out);
  return written != RAXEL_OK ? written : lost;
}

int32_t report(const Output &out, uint32_t bandsDone, double bands) {
  const int32_t answer = UpdateStatus(runtime::toU32(bandsDone * 100.0 / bands));
  const int32_t lost = takeSettingsBack(out);
  return answer != RAXEL_OK ? answer : lost;
}

// From the top of the picture down: rows are counted from the bottom, so the highest band comes first.
int32_t writeBands(Output &out) {
  const double bands = std::ceil(static_cast<double>(out.height) / out.bandRows);
  uint32_t left = out.height;
  for (uint32_t i = 0; i < bands; ++i) {
    const uint32_t rows = std::min(out.bandRows, left);
    int32_t result = writeBand(out, left - rows, left);
    if (result == RAXEL_OK) result = report(out, i + 1, bands);
    if (result != RAXEL_OK) return result;
    left -= rows;
  }
  return RAXEL_OK;
}

int32_t endFile(Output &out) {
  EndCellBitmap(out.file, out.writer);
  out.writer = 0;
  return RAXEL_OK;
}

void release(Output &out) {
  // A picture that was stopped leaves the file as it is: its descriptor goes without being ended.
  GlobalFree(out.writer);
  if (out.screen == nullptr) return;
  kvlPtrGlobalFree(out.screen->lpPalette);
  out.screen->lpPalette = nullptr;
  out.format = nullptr;
  out.formatBlock = {};
  TermPlatformOffscreen(out.screen);
  takeSettingsBack(out);
}

}  // namespace
}  // namespace entry

int32_t OutputPicture(Handle file, void *picture, DrawProc draw) {
  entry::Output out = {file, picture, draw, lpRaster, runtime::SettingsInUse(lpRaster)};
  int32_t result = entry::queryFormat(out);
  if (result == RAXEL_OK) result = entry::settleSize(out);
  if (result == RAXEL_OK) result = entry::openScreen(out);
  if (result == RAXEL_OK) result = entry::beginFile(out);
  if (result == RAXEL_OK) result = entry::writeBands(out);
  if (result == RAXEL_OK) result = entry::endFile(out);
  entry::release(out);
  return result;
}
