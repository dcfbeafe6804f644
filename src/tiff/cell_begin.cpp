// SPDX-License-Identifier: MIT
// The beginning and the end of a picture: the writer's state settled from the settings, the file's
// front written, and the descriptor that carries the rest.
#include <algorithm>

#include "raxel/settings.h"
#include "runtime/bitmap_modes.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"
#include "tiff/coders.h"
#include "tiff/colors.h"
#include "tiff/geometry.h"

namespace tiff {
namespace {

void settleModes(TiffWriterState &state, const RasterSetup &setup) {
  state.nCompression = coderOfMode(setup.nCompressionMode).compression;
  state.nWriterKind = RAXEL_WRITER_CELLS;
  state.dwNewSubfileType = 0;
  state.nSamplesPerPixel = 1;
  const runtime::BitmapMode *mode = runtime::bitmapMode(setup.nBitmapMode);
  if (mode == nullptr) return;  // what the picture before had
  state.nPhotometric = mode->photometric;
  state.nBitsPerSample = mode->bitsPerSample;
  state.nSamplesPerPixel = mode->samplesPerPixel;
  state.nColors = mode->colors;
}

// Strips or rows of tiles, and columns of tiles. An uncompressed picture is one strip.
void settleStrips(TiffWriterState &state, uint32_t width, uint32_t height) {
  uint32_t rows = stripRows(height);
  state.nTilesAcross = 1;
  if (isTiled(state)) {
    rows = std::clamp<uint32_t>(height, 1, kTileRows);
    state.nTilesAcross =
        static_cast<uint16_t>((uint64_t{width} + kTilePixelsAcross - 1) / kTilePixelsAcross);
  }
  if (isPlain(state)) {
    state.nRowsPerStrip = height;
    state.nStripsDown = 1;
  } else {
    state.nRowsPerStrip = rows;
    state.nStripsDown = static_cast<uint32_t>((uint64_t{height} + rows - 1) / rows);
  }
}

}  // namespace
}  // namespace tiff

int32_t BeginCellBitmap(Handle file, uint32_t width, uint32_t height, uint16_t bitsPerPixel,
                        const uint8_t *palette, Handle *descriptorOut) {
  if (lpRaster == nullptr || descriptorOut == nullptr) return 0;
  *descriptorOut = runtime::allocate(sizeof(tiff::CellFormat));
  tiff::CellFormat *format = tiff::cellFormat(*descriptorOut);
  if (format == nullptr) return 0;
  tiff::setNextStrip(*format, 1);

  TiffWriterState &state = lpRaster->tiff;
  const tiff::Palette entries(palette, bitsPerPixel);
  tiff::settleModes(state, *lpRaster);
  state.hTiffFile = file;
  state.nImageLength = height;
  state.nImageWidth = width;
  tiff::settleStrips(state, width, height);
  tiff::settleColorMap(state, entries);

  WriteTiffHdr(&state);
  WriteTiffDir(&state);
  if (tiff::isPlain(state)) {
    SetStripOrTileOffset(1);
    SetStripOrTileByteCount(1,
                            static_cast<uint32_t>(runtime::packedRowBytes(width, bitsPerPixel) * height));
  }

  tiff::buildRemap(*format, state, entries);
  if (bitsPerPixel == 1) tiff::setFirstRed(*format, entries.channel(0, 0));
  GlobalUnlock(*descriptorOut);
  return -1;  // every bit set: rows go from bottom to top
}

int32_t EndCellBitmap(Handle /*file*/, Handle descriptor) {
  if (descriptor != 0) {
    GlobalUnlock(descriptor);
    GlobalFree(descriptor);
  }
  return 0;
}
