// SPDX-License-Identifier: MIT
// Pictures as the filter knows them: the host's, and the output while a draw procedure has it open.
#ifndef RAXEL_PICTURE_H
#define RAXEL_PICTURE_H

#include "raxel/filter_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

// The host's description of a pixel picture; 32 bytes on a 32-bit machine.
//
//   0 u16 nBits   2 u16 nWidth   4 u16 nHeight   6 u16 nResolution   8 f64 dExtentX   16 f64 dExtentY
//   24 handle hPalette   then handle hBits
//
// Rows lie bottom row first, each padded to a multiple of 4 bytes. 1-bit pixels begin with the most
// significant bit, 4-bit pixels with the high half; 24-bit pixels are blue, green, red, and the
// filter writes them as red, green, blue. THE LIBRARY WORKS IN PLACE where it does not have to
// convert: the host's pixel block is changed by the export (24-bit pixels swapped, bits inverted,
// indices mapped).
//
// The output's size in pixels is extent / nResolution * the output's dots per inch, truncated, the
// height then rounded up to an even number. A picture of another size or depth is converted:
// shrunk, brought to the depth (fewer colours: by median cut, or dithered below 8 bits), stretched.
typedef struct PictureRecord {
  uint16_t nBits;        // 1, 4, 8 or 24; 32 is read as red, green, blue and a byte to ignore.
                         // At any other depth all pixels are index 0: the palette's first
                         // colour in an indexed output at least as deep, else black
  uint16_t nWidth;       // pixels
  uint16_t nHeight;      // rows
  uint16_t nResolution;  // extent units per inch; 0: the extents are inches. Set by ExportCellData
  double dExtentX;       // size in extent units. Set by ExportCellData
  double dExtentY;
  Handle hPalette;  // red, green, blue per entry; 0 when there is none
  Handle hBits;     // rows; 0: nothing can be written (300)
} PictureRecord;

// Second argument of a draw procedure's query, zero on entry.
typedef struct PictureFormat {
  double dWidth;         // inches; the pipeline turns them into pixels afterwards
  double dHeight;        // inches
  uint32_t nResolution;  // dots per inch of the picture; 0: it has none
  int16_t nKind;         // RaxelPictureKind
} PictureFormat;

// The pipeline's idea of the output while a draw procedure has it open.
typedef struct OffscreenRecord {
  void *lpPicture;     // the caller's picture record
  DrawProc lpfnDraw;   // its draw procedure
  uint16_t nColors;    // entries of the output palette; 0 for 24 bits
  uint8_t *lpPalette;  // red, green, blue per entry, zeros at first. Memory of kvlPtrGlobalAlloc: a
                       // draw procedure that needs more room replaces it by kvlPtrGlobalReAlloc, and
                       // the pipeline frees what it finds here
  uint32_t nWidth;     // output width, pixels
  uint32_t nBandRows;  // rows that were offered for a band: the whole (even) height
  uint16_t nBits;      // output bits per pixel: 1, 4, 8 or 24
  Handle hBandCache;   // the draw procedure's own block; 0 at first
  uint8_t bFlag;       // first byte of the query's flag block: 0
} OffscreenRecord;

// Words of the request that comes with opening.
enum {
  OFFSCREEN_WIDTH,    // pixels
  OFFSCREEN_ROWS,     // rows offered for a band
  OFFSCREEN_BITS,     // bits per pixel
  OFFSCREEN_COLORS,   // entries of the palette
  OFFSCREEN_PALETTE,  // its address
  OFFSCREEN_WORDS
};

// Words of the block that DrawExportCellData keeps in hBandCache.
enum {
  BANDCACHE_BAND,     // handle of the last converted picture, 0: none
  BANDCACHE_PALETTE,  // handle of a copy of the output palette, 0: none
  BANDCACHE_WORDS
};

RAXEL_END

#endif
