// SPDX-License-Identifier: MIT
// The codes of libraxelhost, and words for codes, notes, modes and compressions.
#ifndef RAXEL_HOST_NAMES_H
#define RAXEL_HOST_NAMES_H

#include <stdint.h>

#include "raxel/types.h"

RAXEL_BEGIN

// Why a picture cannot be prepared or written. raxelHostMessage has a sentence for each. The numbers stay:
// a new one comes before RAXEL_HOST_CODES, which counts those of these headers.
typedef enum RaxelHostCode {
  RAXEL_HOST_OK,                   // done
  RAXEL_HOST_BAD_ARGUMENT,         // a null pointer, or a value outside its enumeration
  RAXEL_HOST_BAD_PICTURE,          // no pixels or too many, an unknown depth, rows shorter than the width
  RAXEL_HOST_TOO_WIDE,             // more than 65535 pixels
  RAXEL_HOST_TOO_TALL,             // more than 65534 rows
  RAXEL_HOST_TOO_LARGE,            // 2 GiB of pixels and more
  RAXEL_HOST_BAD_RESOLUTION,       // outside 1 to 100,000 dots an inch, or 32 to 400 whole ones
  RAXEL_HOST_BAD_SIZE,             // a size that is negative, not a number or less than half a pixel
  RAXEL_HOST_FAX_NEEDS_1_BIT,      // a fax compression with any other mode than bilevel
  RAXEL_HOST_TILES_NEED_T6,        // tiles with any other compression than T.6
  RAXEL_HOST_TILES_TOO_FLAT,       // one row of tiles and several columns
  RAXEL_HOST_TILES_TOO_WIDE,       // more than 2016 pixels
  RAXEL_HOST_ONE_STRIP_NEEDS_FAX,  // one strip with LZW, PackBits or tiles
  RAXEL_HOST_NO_SERVICE,           // a service of the filter is needed and missing
  RAXEL_HOST_NO_QUANTIZER,         // the library that the quantizer needs is not there
  RAXEL_HOST_NO_THRESHOLD,         // the library that finds the threshold is not there
  RAXEL_HOST_NO_MEMORY,            // not enough for this picture
  RAXEL_HOST_NO_FILTER,            // raxel.so is not found, cannot be loaded or is of another version
  RAXEL_HOST_FILTER_FAILED,        // it stopped before the picture was complete
  RAXEL_HOST_BAD_ROAD,             // the road that was asked for cannot carry this picture
  RAXEL_HOST_NO_CREATE,            // the output cannot be created
  RAXEL_HOST_NO_WRITE,             // a write failed
  RAXEL_HOST_NOT_VERIFIED,         // the written bytes do not show the picture
  RAXEL_HOST_STOPPED,              // a callback asked for it
  RAXEL_HOST_PREDICTOR_NEEDS_LZW,  // differences in anything but 8-bit greys or RGB as LZW
  RAXEL_HOST_BAD_PALETTE,          // one for no mode of free colours, or with more than the mode holds
  RAXEL_HOST_CODES                 // how many there are
} RaxelHostCode;

// One sentence for a code, with the way out where there is one. Never null.
RAXEL_EXPORT const char *raxelHostMessage(int code);

// One sentence for one bit of the notes. Never null.
RAXEL_EXPORT const char *raxelHostNote(uint32_t note);

// The name of a mode or compression, and the number that its escape takes for a prepared picture (8
// colours are handed over as 16, so that the filter does not map them again); null and -1 for none.
RAXEL_EXPORT const char *raxelHostModeName(int mode);
RAXEL_EXPORT int32_t raxelHostModeValue(int mode);
RAXEL_EXPORT const char *raxelHostCompressionName(int compression);
RAXEL_EXPORT int32_t raxelHostCompressionValue(int compression);

// The mode or compression of a name or one of its other names ("g4", "fax", "group4"...), in any
// case; -1 for none. raxelHost…Alias lists them: the other name number n, or null past the last.
RAXEL_EXPORT int raxelHostFindMode(const char *name);
RAXEL_EXPORT int raxelHostFindCompression(const char *name);
RAXEL_EXPORT const char *raxelHostModeAlias(int mode, int n);
RAXEL_EXPORT const char *raxelHostCompressionAlias(int compression, int n);

RAXEL_END

#endif
