// SPDX-License-Identifier: MIT
// Exports by the options of raxel-export, from files or from pictures in memory: for bindings, and for
// programs whose users know the command.
//
//   RaxelHostOrder *order = raxelHostOrderNew();
//   raxelHostOrderSet(order, "compress", "t6");
//   raxelHostOrderSet(order, "output", "page.tif");
//   raxelHostOrderFile(order, "page.png");
//   if (raxelHostOrderRun(order, NULL) != RAXEL_HOST_OK) puts(raxelHostOrderMessage(order));
//   raxelHostOrderFree(order);
//
// The file has the bytes that the command would write. Options are known by their long names, and new ones
// appear in raxelHostOptions by themselves. An order belongs to one thread at a time; different orders may
// run on different threads, and queue where they use the filter.
#ifndef RAXEL_HOST_ORDER_H
#define RAXEL_HOST_ORDER_H

#include <stdint.h>

#include "raxel/host_export.h"

RAXEL_BEGIN

// How a pixel is stored in memory, channel by channel.
typedef enum RaxelPixelKind {
  RAXEL_PIXELS_BITS,  // 1 bit a pixel, leftmost in the high bit, 1 is white; pixelStep counts for nothing
  RAXEL_PIXELS_BOOL,  // a byte that is 0 for black, anything else for white
  RAXEL_PIXELS_GREY,  // black to white
  RAXEL_PIXELS_GREY_ALPHA,  // grey, opacity
  RAXEL_PIXELS_RGB,         // red, green, blue
  RAXEL_PIXELS_RGBA,        // red, green, blue, opacity
  RAXEL_PIXELS_CMYK,        // ink: cyan, magenta, yellow, black
  RAXEL_PIXELS_INDEX,       // into the table
  RAXEL_PIXEL_KINDS         // how many there are
} RaxelPixelKind;

// A picture in memory. Borrowed; never written. Rows may lie in any order and distance, and so may the
// pixels of a row and the channels of a pixel. Rows of grey, indices and RGB that lie as the filter takes
// them are read in place. Transparent parts show the option "background".
typedef struct RaxelHostPixels {
  uint32_t size;   // sizeof(RaxelHostPixels)
  uint32_t width;  // pixels, up to RAXEL_HOST_LONGEST_SIDE
  uint32_t height;
  int32_t kind;           // RaxelPixelKind
  uint32_t channelBytes;  // 1, or 2 for numbers of 16 bits in the machine's order, which become 8 bits
  uint32_t colors;        // entries of the table, 1 to 256
  const void *first;      // the first channel of the pixel at the top left
  int64_t rowStep;        // bytes from a pixel to the one below, which may be negative
  int64_t pixelStep;      // and to the one on its right
  int64_t channelStep;    // and from channel to channel
  const uint8_t *table;   // red, green, blue of each entry
  const uint8_t *alpha;   // the opacity of each entry; null: all are opaque
  double dpiX;            // dots an inch; 0 when nobody knows
  double dpiY;
  const void *const
      *rows;           // the first channel of each row, where rows lie apart; null: `first` and `rowStep`
  const uint8_t *icc;  // the ICC profile of its colors; null for none
  uint64_t iccBytes;
} RaxelHostPixels;

// Who is called while an order runs, each as its type says. All may be null.
typedef struct RaxelHostCalls {
  uint32_t size;   // sizeof(RaxelHostCalls)
  uint32_t flags;  // RAXEL_HOST_SYNC_CHILD or 0
  RaxelHostWrite write;
  RaxelHostProgress progress;
  RaxelHostStop stop;
  RaxelHostTemporary temporary;
  void *context;  // handed to all of them
} RaxelHostCalls;

typedef struct RaxelHostOrder RaxelHostOrder;

// An empty order; null when there is no memory for it.
RAXEL_EXPORT RaxelHostOrder *raxelHostOrderNew(void);

// Frees it, reports and messages included. Null is allowed.
RAXEL_EXPORT void raxelHostOrderFree(RaxelHostOrder *order);

// Sets an option by its long name ("dpi"), with its value as it is written on a command line; flags take
// null. "output" names the file, without which it goes to memory or to a callback. "dry-run" tells what
// would be written. "preset" stands for several options, as the command has them, and those that are set by
// themselves go before it. Later values replace earlier ones, but for "set". Returns RAXEL_HOST_OK, or
// RAXEL_HOST_BAD_ARGUMENT for an option or value that is not known, or that makes no sense here (those that
// the command does itself: folders, inspection, reports, help).
RAXEL_EXPORT int raxelHostOrderSet(RaxelHostOrder *order, const char *option, const char *value);

// Adds a picture file, in any format that raxel-export reads: PNG, JPEG, PNM, BMP, GIF, TIFF, WebP, JPEG
// 2000. It is read when the order runs. With "pages", all pages of all pictures go into one file; without,
// an order has one picture.
RAXEL_EXPORT int raxelHostOrderFile(RaxelHostOrder *order, const char *path);

// Adds a picture in memory. What it points to is borrowed until the order is freed.
RAXEL_EXPORT int raxelHostOrderPicture(RaxelHostOrder *order, const RaxelHostPixels *pixels);

// Runs the order. `calls` may be null. The file goes to the option "output", or to calls->write, or stays
// in memory (raxelHostOrderBytes). Returns as raxelHostExport does.
RAXEL_EXPORT int raxelHostOrderRun(RaxelHostOrder *order, const RaxelHostCalls *calls);

// Why the last call that takes this order failed, in one sentence; empty when it did not. Never null; good
// until the next call.
RAXEL_EXPORT const char *raxelHostOrderMessage(const RaxelHostOrder *order);

// The errno behind it; 0 for none.
RAXEL_EXPORT int32_t raxelHostOrderError(const RaxelHostOrder *order);

// The file of the last run, where it stayed in memory, and its size in *count, which may be null. The
// order's, until it runs again or is freed; null when there is none.
RAXEL_EXPORT const uint8_t *raxelHostOrderBytes(const RaxelHostOrder *order, uint64_t *count);

// What the last run did, as the JSON object that raxel-export --json has for a picture; empty before. Never
// null; good until the next run.
RAXEL_EXPORT const char *raxelHostOrderReport(const RaxelHostOrder *order);

// How many pages the file of the run that is under way, or of the last one, has in all, as far as it is
// known: a file that is not opened yet counts as one page, so that the number may grow while the run goes
// on. For progress callbacks, in which it may be called. 0 before.
RAXEL_EXPORT uint32_t raxelHostOrderPages(const RaxelHostOrder *order);

// All options, as the JSON document of raxel-export --help --json. Never freed; null when there is no
// memory.
RAXEL_EXPORT const char *raxelHostOptions(void);

// What a TIFF file holds, as the JSON object that raxel-export --inspect --json has for a file, from
// "input" to "decodes"; where it cannot be read, `exit` is 66 (70: for want
// of memory or of libtiff) and `faults` says why. Freed with
// raxelHostFree; null when there is no memory.
RAXEL_EXPORT char *raxelHostInspect(const char *path);

// Chooses `colors` (2 to 256) colours for a picture and finds each pixel's nearest one, or with `dither`
// (0 or 1) spreads the loss. A picture that has no more colours keeps them, in the order in which they
// appear from the top left.
//   quantizer  RaxelQuantizer
//   indices    receives one byte a pixel, rows from the top, without gaps
//   table      receives red, green, blue of each entry: room for 3 * colors bytes
//   count      receives the number of entries; may be null
// RAXEL_QUANTIZE_FILTER takes 16 or 256 colours, and opens the filter as raxelHostExport does.
RAXEL_EXPORT int raxelHostQuantize(const RaxelHostPixels *pixels, uint32_t colors, int quantizer,
                                   int dither, uint8_t *indices, uint8_t *table, uint32_t *count);

// Error diffusion to a given table of `colors` (1 to 256) entries: one index a pixel, as above.
RAXEL_EXPORT int raxelHostDither(const RaxelHostPixels *pixels, const uint8_t *table, uint32_t colors,
                                 uint8_t *indices);

RAXEL_END

#endif
