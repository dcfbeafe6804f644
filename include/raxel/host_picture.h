// SPDX-License-Identifier: MIT
// A picture made ready for the filter: what there is, what is wanted, the plan, the pixels.
//
//   picture -> scale -> colour treatment -> reduce or dither -> rows bottom first -> pixels, table
//
// No function here keeps anything between calls, writes to the source picture or prints. Any number
// of threads may call them, except that the services are the filter's: one call at a time.
#ifndef RAXEL_HOST_PICTURE_H
#define RAXEL_HOST_PICTURE_H

#include <stddef.h>
#include <stdint.h>

#include "raxel/setting_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

// What the file's pixels are. The order is that of the filter's bitmap-mode escape.
typedef enum RaxelMode {
  RAXEL_MODE_BILEVEL,   // 1 bit, black and white
  RAXEL_MODE_GREY16,    // 4 bits, 16 grey levels
  RAXEL_MODE_GREY256,   // 8 bits, 256 grey levels
  RAXEL_MODE_COLOR8,    // 4 bits, the eight corners of the colour cube
  RAXEL_MODE_COLOR16,   // 4 bits, 16 colours of the picture's own
  RAXEL_MODE_COLOR256,  // 8 bits, 256 colours of the picture's own
  RAXEL_MODE_RGB,       // 24 bits
  RAXEL_MODES           // how many there are
} RaxelMode;

// How the file's pixels are coded. The order is that of the filter's compression escape.
typedef enum RaxelCompression {
  RAXEL_COMPRESS_NONE,      // not at all
  RAXEL_COMPRESS_PACKBITS,  // runs of bytes
  RAXEL_COMPRESS_HUFFMAN,   // CCITT modified Huffman, bilevel only
  RAXEL_COMPRESS_LZW,       // a dictionary of strings
  RAXEL_COMPRESS_T4,        // CCITT Group 3, bilevel only
  RAXEL_COMPRESS_T6,        // CCITT Group 4, bilevel only
  RAXEL_COMPRESSIONS        // how many there are
} RaxelCompression;

// How the pixels of the file are cut up.
typedef enum RaxelLayout {
  RAXEL_LAYOUT_STRIPS,  // into strips of whole rows
  RAXEL_LAYOUT_TILES    // into tiles
} RaxelLayout;

// Into how many strips the rows of a finished file are cut. Uncompressed files are one in any case.
typedef enum RaxelStrips {
  RAXEL_STRIPS_QUARTERS,  // quarters of the height, as the filter does
  RAXEL_STRIPS_ONE        // all rows in one, which fax programs ask for
} RaxelStrips;

// Whether the rows of a finished LZW file hold the differences from pixel to pixel (tag Predictor 2), which
// makes photos a good deal smaller. For 8-bit greys and RGB.
typedef enum RaxelPredictor {
  RAXEL_PREDICTOR_NONE,        // the pixels themselves
  RAXEL_PREDICTOR_HORIZONTAL,  // the differences
  RAXEL_PREDICTOR_AUTO,        // the smaller: the filter codes a part of the picture both ways; none in
                               // other modes and compressions
  RAXEL_PREDICTORS             // how many there are
} RaxelPredictor;

// Whether lost levels are spread by error diffusion.
typedef enum RaxelDither {
  RAXEL_DITHER_AUTO,  // where a picture loses levels that the eye would miss: to bilevel (unless it has two
                      // colours or is a document), to 16 greys and to 8 and 16 colours
  RAXEL_DITHER_ON,    // wherever any are lost
  RAXEL_DITHER_OFF    // nowhere
} RaxelDither;

// How the levels of a bilevel file are cut into black and white. A picture of another size is scaled first.
typedef enum RaxelThreshold {
  RAXEL_THRESHOLD_NONE,      // as `dither` says: a document where its ink ends, and with RAXEL_DITHER_OFF
                             // in the middle, so that what is below 128 becomes black
  RAXEL_THRESHOLD_LEVEL,     // below `thresholdLevel`
  RAXEL_THRESHOLD_OTSU,      // below one level for all of the picture, which Leptonica finds
  RAXEL_THRESHOLD_ADAPTIVE,  // below the level of each pixel's surroundings, by Leptonica: Sauvola's
                             // method, for shadows and stains
  RAXEL_THRESHOLDS           // how many there are
} RaxelThreshold;

// Who chooses the colours when a picture has more than the mode allows.
typedef enum RaxelQuantizer {
  RAXEL_QUANTIZE_BEST,    // the smallest error
  RAXEL_QUANTIZE_FAST,    // Leptonica's median cut
  RAXEL_QUANTIZE_FILTER,  // the filter's own median cut on 15-bit colours
  RAXEL_QUANTIZERS        // how many there are
} RaxelQuantizer;

// The most pixels that a picture may have from left to right, and from top to bottom.
#define RAXEL_HOST_LONGEST_SIDE 67108864u

// A picture as it was read. Borrowed; never written.
typedef struct RaxelPicture {
  uint32_t width;  // pixels, up to RAXEL_HOST_LONGEST_SIDE
  uint32_t height;
  uint32_t bits;         // 1, 2, 4, 8: indices, leftmost pixel in the high bits; 24: red, green, blue
  const uint8_t *rows;   // the top row
  size_t stride;         // bytes from one row to the row below
  const uint8_t *table;  // colour of each index as red, green, blue; null: grey from black to white
  uint32_t colors;       // entries in the table; an index beyond them is black
} RaxelPicture;

// What is wanted.
typedef struct RaxelRequest {
  int32_t mode;         // RaxelMode
  int32_t compression;  // RaxelCompression
  int32_t layout;       // RaxelLayout
  double dpiX;          // dots an inch: 1 to 100,000, or whole ones from 32 to 400 when `finish` is 0
  double dpiY;
  double inchesX;  // size to scale to; 0 in both keeps the pixels, 0 in one keeps the proportions
  double inchesY;
  // Pixels of a white page, in the middle of which the picture lies; 0 in both for none. It must have room
  // for the picture at its size.
  uint32_t pageWidth;
  uint32_t pageHeight;
  int32_t treatment;  // RaxelTreatment
  int32_t dither;     // RaxelDither
  int32_t quantizer;  // RaxelQuantizer
  // The colours that the modes color16 and color256 take instead of the picture's own: red, green, blue of
  // each. They begin the file's table in their order, and black fills it up. Null for none.
  const uint8_t *palette;
  uint32_t paletteColors;  // 1 to 16, or to 256
  int32_t threshold;       // RaxelThreshold, with anything but RAXEL_DITHER_ON
  int32_t thresholdLevel;  // 0 to 255, for RAXEL_THRESHOLD_LEVEL
  int32_t finish;  // 1: raxelHostExport gives the file its finished directory; 0: it stays as the filter
                   // writes it, and what follows must be 0
  int32_t strips;  // RaxelStrips
} RaxelRequest;

// Things done on the way that the user may want to know, as bits.
enum {
  RAXEL_NOTE_ROW_REPEATED = 1,          // the height was odd: the last row stands twice
  RAXEL_NOTE_SCALED = 2,                // the pixels were resampled to the wanted size
  RAXEL_NOTE_REDUCED = 4,               // colours or levels were lost
  RAXEL_NOTE_DITHERED = 8,              // lost levels were spread by error diffusion
  RAXEL_NOTE_LZW_AS_PACKBITS = 16,      // one-byte strips, which LZW cannot carry here
  RAXEL_NOTE_HUFFMAN_AS_PACKBITS = 32,  // a one-byte row ends a strip: a common reader misreads it
  RAXEL_NOTE_RUNS_AS_T6 = 64,           // a row of T.4 or Huffman with more runs than a common reader takes
  RAXEL_NOTE_DOCUMENT = 128,            // taken for a document: grey is cut and not dithered
  RAXEL_NOTE_NO_DOCUMENT = 256,         // taken for none: grey is dithered
  RAXEL_NOTES = 9                       // how many bits there are
};

// The job, worked out. Written by raxelHostPlan; raxelHostPrepare sets compression and notes anew.
typedef struct RaxelPlan {
  uint32_t width;      // pixels in a row of the file
  uint32_t rows;       // rows of the picture, or of the page that it lies on
  uint32_t height;     // rows of the file: rows, made even
  uint32_t bits;       // bits a pixel in the block: 1, 4, 8 or 24
  uint32_t stride;     // bytes a row in the block, a multiple of 4
  uint64_t bytes;      // size of the block: stride * height
  uint32_t colors;     // entries of the table: 2 ** bits, or 0 for RGB
  int32_t mode;        // RaxelMode, as requested
  int32_t layout;      // RaxelLayout, as requested
  double dpiX, dpiY;   // as requested
  int32_t finish;      // as requested
  int32_t strips;      // as requested
  int32_t filterDpiX;  // for escapes 11 and 12: the nearest that the filter takes
  int32_t filterDpiY;
  int32_t compression;  // RaxelCompression to set: as requested, or another with a note
  uint32_t notes;
  uint32_t pictureWidth;  // of the columns and rows, those of the picture: less than all on a page
  uint32_t pictureRows;
  int32_t threshold;           // the level below which grey became black; -1 where none was cut so
  uint32_t unitsPerInch;       // 32768, for the picture record's nResolution
  int32_t extentX, extentY;    // in those units, for the export info: exact at every resolution
  int32_t queryX, queryY;      // the same for escape 56, which rounds the other way
  uint64_t uncompressedBytes;  // size of the file without compression
} RaxelPlan;

// What the preparation borrows from the filter. Fill it with dlsym (or by linking) under the names of
// the members. Every member is needed for dithering to bilevel and 16 greys, for treatments and for
// RAXEL_QUANTIZE_FILTER; all other work is done without.
typedef struct RaxelServices {
  Handle (*GlobalAlloc)(uint32_t flags, uint32_t size);
  void *(*GlobalLock)(Handle handle);
  int32_t (*GlobalUnlock)(Handle handle);
  int32_t (*GlobalFree)(Handle handle);
  Handle (*rlReduceColorTable)(Handle bits, uint32_t width, int16_t height, uint16_t *count);
  Handle (*rlConvertBitmapDepth)(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                 int16_t depth, Handle sourceTable, Handle table, uint16_t count);
  void (*rlDitherGetCT)(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                        Handle sourceTable, Handle *table, uint16_t *count);
  Handle (*rlDitherGivenCT)(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                            int16_t depth, Handle sourceTable, Handle table, uint16_t count);
  void (*rev_rgb)(uint32_t width, uint8_t *row, int32_t mode);
} RaxelServices;

// Sets every field: RGB, no compression, strips, 96 dots an inch, the picture's pixels, no treatment, not
// finished.
RAXEL_EXPORT void raxelHostDefaults(RaxelRequest *request);

// Works out the job. Returns RAXEL_HOST_OK with *plan filled, or the reason for a refusal with *plan
// cleared. Looks at no pixel, so it is cheap enough to call after every keystroke.
RAXEL_EXPORT int raxelHostPlan(const RaxelPicture *picture, const RaxelRequest *request, RaxelPlan *plan);

// The same without the refusals that name a combination which readers cannot open: for a host whose
// user insists. Sizes that the file cannot hold are still refused.
RAXEL_EXPORT int raxelHostPlanAnyway(const RaxelPicture *picture, const RaxelRequest *request,
                                     RaxelPlan *plan);

// Prepares the pixels.
//   picture, request  the ones the plan was made from
//   services          the filter's functions; null when none of them is needed
//   plan              in and out: compression and notes are set anew, for the pixels decide on them
//   pixels            plan->bytes, zero-filled, 8-aligned; receives the rows, bottom row first
//   table             768 bytes; receives plan->colors entries as red, green, blue
// Returns RAXEL_HOST_OK, or a reason; pixels and table then hold nothing of use.
RAXEL_EXPORT int raxelHostPrepare(const RaxelPicture *picture, const RaxelRequest *request,
                                  const RaxelServices *services, RaxelPlan *plan, uint8_t *pixels,
                                  uint8_t *table);

// True when this build has the libraries that a quantizer needs (Leptonica is looked for on the way).
RAXEL_EXPORT int raxelHostHasQuantizer(int quantizer);

RAXEL_END

#endif
