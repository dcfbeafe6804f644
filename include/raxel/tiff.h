// SPDX-License-Identifier: MIT
// The TIFF writer: header and directory, pixels in strips or tiles, six compressions.
//
// A picture is written by four calls in this order, all on the settings record in use (lpRaster,
// raxel/settings.h):
//
//   QueryCellFormat    what size, resolution and depth the bitmap must have
//   BeginCellBitmap    settles the writer's state, writes the file's front, makes a descriptor
//   WriteCellBits      writes one band of pixels, as often as there are bands, from the top down
//   EndCellBitmap      frees the descriptor
//
// A bitmap's rows stand bottom row first, each padded to a multiple of 4 bytes. 1-bit pixels start in
// the highest bit of a byte, 4-bit pixels in its high half, and both, like 8-bit pixels, are indices
// into a palette of 3-byte entries (red, green, blue). 24-bit pixels are blue, green, red bytes.
//
// The file is little-endian everywhere, with one image and one directory. Format: TIFF Revision 6.0
// (Adobe, 1992), section numbers below; fax codes: ITU-T T.4 and T.6.
#ifndef RAXEL_TIFF_H
#define RAXEL_TIFF_H

#include "raxel/tiff_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

// The writer's part of the settings record. BeginCellBitmap fills it; a "relative position" is a
// position in the file minus dwTiffBase. N, the number of strips or tiles, is nTilesAcross times
// nStripsDown.
typedef struct TiffWriterState {
  Handle hTiffFile;           // output stream, the host's
  uint32_t nWriterKind;       // RaxelWriterKind
  uint32_t dwNewSubfileType;  // tag 254: 0
  uint32_t nImageWidth;       // pixels per row
  uint32_t nImageLength;      // rows
  uint32_t nBitsPerSample;    // 1, 4 or 8
  uint32_t nCompression;      // RaxelTiffCompression
  uint32_t nPhotometric;      // RaxelTiffPhotometric
  uint32_t nStripsDown;       // strips, or rows of tiles
  uint32_t nOffsetsEntryPos;  // relative position of the offsets entry's value field; 0 when N < 2
  uint32_t nOffsetsPos;       // relative position of the offset of strip 1
  uint32_t nCountsEntryPos;   // the same for the byte counts
  uint32_t nCountsPos;
  uint32_t nStripBytes;       // bytes produced for the current strip or tile
  uint32_t nSamplesPerPixel;  // 1, or 3 for RGB
  uint32_t nRowsPerStrip;
  int16_t nXResolution;  // dots per inch, 32..400
  int16_t nYResolution;
  uint8_t abColorMap[256][3];  // red, green, blue
  uint32_t dwTiffBase;         // file position of the header: 0, nothing sets it
  uint16_t wLayoutMode;        // RaxelStoredLayout (raxel/setting_codes.h)
  uint16_t nTilesAcross;       // columns of tiles; 1 when not tiled
  uint32_t nColors;            // palette size of the bitmap mode; 0 for RGB
} TiffWriterState;

// One code of a fax table: its length in bits, and the code in the top bits of 16.
typedef struct FaxCode {
  uint32_t length;
  uint32_t code;
} FaxCode;

// --- Numbers and entries -------------------------------------------------------------------------

// Writes the low 16 bits of `value`, low byte first. Returns 2, or what the failing write of the
// stream returned; 0 for no file. A host's stream procedure sees two writes of one byte.
RAXEL_EXPORT int32_t WriteWord(Handle file, uint32_t value);

// Writes 32 bits, low byte first, as two words. Returns 4, or the result of the word that failed; the
// second is not tried when the first fails.
RAXEL_EXPORT int32_t WriteLong(Handle file, uint32_t value);

// Writes a directory entry of 12 bytes (TIFF 6.0 section 2, "IFD Entry") and adds 1 to `*counter`.
//   tag, type   16 bits each; type 3 SHORT, 4 LONG, 5 RATIONAL
//   count       how many values
//   value       the value itself or the position of the values; of a single SHORT 16 bits are kept,
//               and the field's other half is zero
//   counter     the caller's entry counter, may be null
// Returns the result of the value's WriteLong; failures before it do not show.
RAXEL_EXPORT int32_t WriteSimpleTag(Handle file, uint32_t tag, uint32_t type, uint32_t count,
                                    uint32_t value, uint16_t *counter);

// --- The front of the file -----------------------------------------------------------------------

// Writes the header of 8 bytes at the current position: "II", 42, and 8, the position of the
// directory. Returns 0, also when a write failed: that shows when the pixels are written.
RAXEL_EXPORT int32_t WriteTiffHdr(TiffWriterState *state);

// Writes the directory right behind the header, the values it points to, and, when N is above 1, N
// zeros each for the offsets and byte counts, whose positions it leaves in the state. The stream
// stands behind it all afterwards, where the pixels begin. Entries: 254, 256, 257, 258, 259, 262, 273,
// 277, 278, 279, 282, 283, 296, and 320 for palettes; with tiles 324 for 273, 322 and 323 for 278, and
// 325 for 279, which is not ascending order. Returns 0.
RAXEL_EXPORT int32_t WriteTiffDir(TiffWriterState *state);

// --- A picture -----------------------------------------------------------------------------------

// Turns a picture's size in inches into the pixels that the settings ask for, and keeps size and
// resolution in the record where the settings say that the picture or the display decides them.
//   width, height  in: inches, or mere proportions when *resolution is 0; out: pixels, not rounded
//   bitsPerPixel   out: 1, 4, 8 or 24; left alone for a bitmap mode that does not exist
//   resolution     in: the picture's dots per inch, 0 for none; out: the output's; may be null
//   colorSpace, flags  neither read nor written
// Returns 0. Does nothing without a width, a height or a record in use.
RAXEL_EXPORT int32_t QueryCellFormat(double *width, double *height, uint16_t *bitsPerPixel,
                                     uint32_t *resolution, uint16_t *colorSpace, void *flags);

// Begins a picture: settles the state from the record's modes, writes header and directory, and for an
// uncompressed picture its one strip's position and length.
//   file           the output stream: everything from the header on goes there
//   width, height  of the whole picture, in pixels
//   bitsPerPixel   of the bitmap: 1, 4, 8 or 24
//   palette        2 to the power of bitsPerPixel entries, borrowed for the call; null reads as black
//   descriptorOut  receives a block of 265 bytes that WriteCellBits and EndCellBitmap take
// Returns -1, every bit set: rows stand from bottom to top, and the first band is the one with the
// highest rows. Returns 0 when no record is in use, and without descriptorOut or memory for it.
RAXEL_EXPORT int32_t BeginCellBitmap(Handle file, uint32_t width, uint32_t height, uint16_t bitsPerPixel,
                                     const uint8_t *palette, Handle *descriptorOut);

// Writes a band of pixels: the image's rows from the top down, in chunks of a quarter of the band's
// rows, or of up to 128 rows when tiled. Works in the host's own block: 24-bit pixels end up red first,
// a bilevel bitmap whose palette begins with white ends up inverted, and remapped indices have moved
// one byte towards the start.
//   file          takes uncompressed rows; codes and patches go to the stream of BeginCellBitmap
//   bitmap        the band's block, borrowed; bytes it lacks read as 0. Nobody else may change it
//                 meanwhile, not even a stream procedure: strips to come may have been read already
//   width, rows   of the band, in pixels
//   bitsPerPixel  of the bitmap
//   reserved      not used
//   descriptor    what BeginCellBitmap made; its count of strips goes on from band to band
// Returns 0, also for no rows; 300 for a missing block or record in use, a handle that is no
// descriptor, a width or depth of 0 or a size that fits in no block; 303 when pixels could not be
// written.
RAXEL_EXPORT int32_t WriteCellBits(Handle file, Handle bitmap, uint32_t width, uint32_t rows,
                                   uint16_t bitsPerPixel, int32_t reserved, Handle descriptor);

// Frees the descriptor; the stream stays open. Returns 0.
RAXEL_EXPORT int32_t EndCellBitmap(Handle file, Handle descriptor);

// --- Their parts ---------------------------------------------------------------------------------

// Fits a picture's proportions into the record's size: result[0] by result[1] inches, one side kept,
// whole pixels taken off the other. Does nothing without a record in use.
RAXEL_EXPORT void RasterAdjustAspect(double *result, double pictureWidth, double pictureHeight);

// Scales a size in inches down so that its longer side is at most 22.0.
RAXEL_EXPORT void ScaleImageSize(double *width, double *height);

// Finds the output index of a colour.
//   byNearest != 0  the nearest of `count` entries of `table` by squared distance, the first of equals;
//                   greys (channels within 4 of each other) only among greys, colours among colours; 0
//                   when there is none of its kind
//   byNearest == 0  the luminance 0.3 R + 0.59 G + 0.11 B, truncated, modulo `count`; `table` is not read
// Returns 0 for a count below 1.
RAXEL_EXPORT int32_t MapColors(int32_t red, int32_t green, int32_t blue, const uint8_t *table,
                               int32_t count, int32_t byNearest);

// Cuts tile `column` out of a chunk of packed rows, top row first. Past the chunk's right edge the last
// byte of each row is repeated, past its lower edge the last row; where there is nothing to repeat the
// tile is zeros.
//   tile  tileRows times tileRowBytes bytes      chunk  chunkRows times chunkRowBytes bytes
RAXEL_EXPORT void GetTileFromStrip(uint8_t *tile, const uint8_t *chunk, uint32_t tileRowBytes,
                                   uint32_t chunkRowBytes, uint32_t tileRows, uint32_t chunkRows,
                                   uint32_t column);

// Writes the current position, or `count`, into the directory as that of strip or tile k (from 1), and
// goes back to the current position. Does nothing when there is a single row of strips or tiles and k
// is not 1, or no record is in use. Returns 0.
RAXEL_EXPORT int32_t SetStripOrTileOffset(uint32_t k);
RAXEL_EXPORT int32_t SetStripOrTileByteCount(uint32_t k, uint32_t count);

// Inverts stride times rows bytes when `flip` is not 0.
RAXEL_EXPORT void tifFlipMonochromeBits(uint8_t *bits, uint32_t stride, uint32_t rows, uint32_t flip);

// Codes one piece of image data as the state's nCompression says, writes it to hTiffFile, and adds the
// bytes produced to nStripBytes, whether or not they could be written.
//   data       byteCount bytes, borrowed: a row for PackBits and codes 2 and 3, a whole strip or tile
//              of packed rows for LZW and T.6
//   width      pixels of a row; used by the fax codes
//   rows       used by T.6
// Returns RAXEL_OK; RAXEL_NO_MEMORY without a state or data, when there is no memory (for LZW's tables
// the process ends), or data for fewer pixels than asked for; RAXEL_CANNOT_WRITE when the write failed
// or nCompression is no RaxelTiffCompression to code. "Failed" means less than everything for PackBits
// and T.6, and nothing at all for the others.
RAXEL_EXPORT int32_t CompressAndWrite(TiffWriterState *state, const uint8_t *data, uint32_t byteCount,
                                      uint32_t width, uint32_t rows);

// --- Tables --------------------------------------------------------------------------------------

// Red, green, blue. The first eight entries are the palette of the 8-colour mode: white, black, blue,
// green, red, cyan, magenta, yellow.
RAXEL_EXPORT extern const uint8_t ColorDirect[16][3];
#ifndef RAXEL_NO_SHORT_NAMES  // white, black, twoD
// ITU-T T.4 tables 2 and 3: index 0 to 63 terminating codes, 63 + run / 64 make-up codes up to 2560,
// 104 the end-of-line code.
RAXEL_EXPORT extern const FaxCode white[105];
RAXEL_EXPORT extern const FaxCode black[105];
// ITU-T T.6 table 1: 0 pass, 1 horizontal, 5 + d vertical with a1 - b1 = d, -3 <= d <= 3.
RAXEL_EXPORT extern const FaxCode twoD[9];
#endif
RAXEL_END

#endif
