// SPDX-License-Identifier: MIT
// The words that every raxel header shares: handles, host words, callbacks and result codes.
//
// A host sees three kinds of numbers. Handles name blocks of handle memory (raxel/memory.h). Host
// words carry whatever the host passed in and wants back: an address, a token, a context. Plain
// numbers have the width that each declaration gives. All numbers in memory are native; only the
// TIFF file is little-endian everywhere.
//
// The library keeps its state in process-wide globals: make one call at a time.
#ifndef RAXEL_TYPES_H
#define RAXEL_TYPES_H

#include <stdint.h>

#if defined(__GNUC__)
#define RAXEL_EXPORT __attribute__((visibility("default")))
#else
#define RAXEL_EXPORT
#endif

#ifdef __cplusplus
#define RAXEL_BEGIN extern "C" {
#define RAXEL_END }
#else
#define RAXEL_BEGIN
#define RAXEL_END
#endif

RAXEL_BEGIN

// Names a block of handle memory; 0 is the null handle. Wide enough to hold an address.
typedef uintptr_t Handle;

// A value of the host's own: an address, a token, a context. "Word N" of a record of host words is
// index N, so that a 32-bit build has it at byte 4 * N.
typedef uintptr_t HostWord;

// Asks or tells the host something. A plain progress report is (context, 0, 0, 0, percent, 0, 0);
// an answer other than 0 asks to stop. Negative values arrive sign-extended to a host word.
typedef int32_t (*StatusCallback)(HostWord context, HostWord a, HostWord b, HostWord c, HostWord d,
                                  HostWord e, HostWord f);

// Receives every operation of a stream that the host keeps itself (raxel/stream.h).
typedef HostWord (*StreamProc)(HostWord contextOrToken, HostWord op, HostWord arg1, HostWord arg2);

// Supplies the pixels of a picture to the output pipeline (raxel/filter.h).
typedef HostWord (*DrawProc)(HostWord op, HostWord a, HostWord b, HostWord c);

// Every result code, who raises it and what the host sees.
enum RaxelCode {
  RAXEL_OK = 0,                     // success in the export paths
  RAXEL_NO_MEMORY_OUTPUT = 21,      // never seen here: running out of memory ends the process
  RAXEL_BAD_SETUP = 22,             // the setup handle is 0 or cannot be locked
  RAXEL_NO_FORMAT = 27,             // no picture format, or the draw procedure allows no rows
  RAXEL_NO_MEMORY = 300,            // out of memory, a missing block, or no metafile
  RAXEL_CANNOT_WRITE = 303,         // output not opened, written or closed; unknown compression
  RAXEL_STOPPED = 901,              // the host asked to stop
  RAXEL_REFUSED = -1,               // refused value or null handle
  RAXEL_RESOLUTION_REPAIRED = -62,  // a resolution was out of range and is now 96
  RAXEL_SIZE_REPAIRED = -63  // a side was out of range: that width is now 6.67, that height 5.0 inches
};

RAXEL_END

#endif
