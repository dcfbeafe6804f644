// The TIFF writer: header and directory, cell bitmaps in strips or tiles, six compressions.
// Format: TIFF 6.0; fax codes: ITU-T T.4 and T.6.
#ifndef RAXEL_TIFF_H
#define RAXEL_TIFF_H

#include "raxel/types.h"

RAXEL_BEGIN

// The writer's part of the settings record (raxel/settings.h).
typedef struct TiffWriterState {
  Handle hTiffFile;           // output stream
  uint32_t nWriterKind;       // 5; a kind of 3 forces one strip
  uint32_t dwNewSubfileType;  // tag 254: 0
  uint32_t nImageWidth;       // pixels per row
  uint32_t nImageLength;      // rows
  uint32_t nBitsPerSample;    // 1, 4 or 8
  uint32_t nCompression;      // 1, 2, 3, 4, 5 or 32773
  uint32_t nPhotometric;      // 1 BlackIsZero, 2 RGB, 3 palette
  uint32_t nStripsDown;       // strips, or rows of tiles
  uint32_t nOffsetsEntryPos;  // value field of the offsets entry; 0 with a single strip
  uint32_t nOffsetsPos;       // where the offset of strip 1 is patched
  uint32_t nCountsEntryPos;   // the same for the byte counts
  uint32_t nCountsPos;
  uint32_t nStripBytes;       // bytes written for the current strip
  uint32_t nSamplesPerPixel;  // 1, or 3 for RGB
  uint32_t nRowsPerStrip;
  int16_t nXResolution;  // dots per inch, 32..400
  int16_t nYResolution;
  uint8_t abColorMap[256][3];  // R, G, B
  uint32_t dwTiffBase;         // file position of the header: 0, nothing sets it
  uint16_t wLayoutMode;        // 772 strips, 771 tiles
  uint16_t nTilesAcross;       // 1 when not tiled
  uint32_t nColors;            // palette size of the bitmap mode
} TiffWriterState;

// One code of a fax table: its length in bits, and the code in the top bits of 16.
typedef struct FaxCode {
  uint32_t length;
  uint32_t code;
} FaxCode;

RAXEL_EXPORT int32_t WriteWord(Handle file, uint32_t value);
RAXEL_EXPORT int32_t WriteLong(Handle file, uint32_t value);
RAXEL_EXPORT int32_t WriteSimpleTag(Handle file, uint32_t tag, uint32_t type, uint32_t count,
                                    uint32_t value, uint16_t *counter);
RAXEL_EXPORT int32_t WriteTiffHdr(TiffWriterState *state);
RAXEL_EXPORT int32_t WriteTiffDir(TiffWriterState *state);

RAXEL_EXPORT int32_t QueryCellFormat(double *width, double *height, uint16_t *bitsPerPixel,
                                     uint32_t *resolution, uint16_t *colourSpace, void *flags);
RAXEL_EXPORT int32_t BeginCellBitmap(Handle file, uint32_t width, uint32_t height, uint16_t bitsPerPixel,
                                     const uint8_t *palette, Handle *descriptorOut);
RAXEL_EXPORT int32_t WriteCellBits(Handle file, Handle bitmap, uint32_t width, uint32_t rows,
                                   uint16_t bitsPerPixel, int32_t reserved, Handle descriptor);
RAXEL_EXPORT int32_t EndCellBitmap(Handle file, Handle descriptor);
RAXEL_EXPORT void RasterAdjustAspect(double *result, double pictureWidth, double pictureHeight);
RAXEL_EXPORT void ScaleImageSize(double *width, double *height);
RAXEL_EXPORT int32_t MapColors(int32_t red, int32_t green, int32_t blue, const uint8_t *table,
                               int32_t count, int32_t byNearest);
RAXEL_EXPORT void GetTileFromStrip(uint8_t *tile, const uint8_t *chunk, uint32_t tileRowBytes,
                                   uint32_t chunkRowBytes, uint32_t tileRows, uint32_t chunkRows,
                                   uint32_t column);
RAXEL_EXPORT int32_t SetStripOrTileOffset(uint32_t k);
RAXEL_EXPORT int32_t SetStripOrTileByteCount(uint32_t k, uint32_t count);
RAXEL_EXPORT void tifFlipMonochromeBits(uint8_t *bits, uint32_t stride, uint32_t rows, uint32_t flip);

RAXEL_EXPORT int32_t CompressAndWrite(TiffWriterState *state, const uint8_t *data, uint32_t byteCount,
                                      uint32_t width, uint32_t rows);

RAXEL_EXPORT extern const uint8_t ColorDirect[16][3];
RAXEL_EXPORT extern const FaxCode white[105];
RAXEL_EXPORT extern const FaxCode black[105];
RAXEL_EXPORT extern const FaxCode twoD[9];

RAXEL_END

#endif
