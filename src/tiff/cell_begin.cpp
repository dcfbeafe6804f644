// The beginning and the end of a picture: the writer's state settled from the settings, the file's
// front written, and the descriptor that carries the rest.
#include <algorithm>

#include "raxel/settings.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"
#include "tiff/colors.h"
#include "tiff/geometry.h"

namespace tiff {
namespace {

struct BitmapMode {
  int32_t mode;
  uint32_t photometric;
  uint32_t bitsPerSample;
  uint32_t samplesPerPixel;
  uint32_t colors;
};

constexpr BitmapMode kBitmapModes[] = {
    {215, kBlackIsZero, 1, 1, 2},    // bilevel
    {216, kBlackIsZero, 4, 1, 16},   // 16 greys
    {217, kBlackIsZero, 8, 1, 256},  // 256 greys
    {218, kPalette, 4, 1, 8},        // the 8 fixed colours
    {219, kPalette, 4, 1, 16},       // 16 colours
    {221, kPalette, 8, 1, 256},      // 256 colours
    {222, kRgb, 8, 3, 0},            // RGB
};

struct CompressionMode {
  int32_t mode;
  uint32_t compression;
};

constexpr CompressionMode kCompressionModes[] = {
    {225, 32773},  // PackBits
    {226, 2},      // CCITT modified Huffman
    {227, 5},      // LZW
    {229, 3},      // CCITT T.4
    {230, 4},      // CCITT T.6
};

uint32_t compressionOf(int32_t mode) {
  for (const CompressionMode &row : kCompressionModes) {
    if (row.mode == mode) return row.compression;
  }
  return 1;
}

constexpr uint32_t kWriterKind = 5;

void settleModes(TiffWriterState &state, const RasterSetup &setup) {
  state.nCompression = compressionOf(setup.nCompressionMode);
  state.nWriterKind = kWriterKind;
  state.dwNewSubfileType = 0;
  state.nSamplesPerPixel = 1;
  for (const BitmapMode &row : kBitmapModes) {
    if (row.mode != setup.nBitmapMode) continue;
    state.nPhotometric = row.photometric;
    state.nBitsPerSample = row.bitsPerSample;
    state.nSamplesPerPixel = row.samplesPerPixel;
    state.nColors = row.colors;
  }
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
  if (state.nCompression == 1) {
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
  if (state.nCompression == 1) {
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
