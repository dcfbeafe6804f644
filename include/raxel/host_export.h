// SPDX-License-Identifier: MIT
// The whole road of a picture in one call: prepared, sent through the filter, checked, put in its
// place.
//
// The records begin with their size, so that they can grow at their ends: fields that a caller does
// not know yet count as 0. All numbers have fixed widths, all texts are UTF-8 and end with a zero byte.
//
// Any thread may call any function here. The filter takes one picture at a time, so exports queue at
// one lock; a process that forks should do so while none is under way.
#ifndef RAXEL_HOST_EXPORT_H
#define RAXEL_HOST_EXPORT_H

#include <stdint.h>

#include "raxel/host_names.h"
#include "raxel/host_picture.h"

RAXEL_BEGIN

// The version of these headers, as raxelHostVersion returns that of the library: 0x00MMmmpp.
#define RAXEL_HOST_VERSION_MAJOR 2
#define RAXEL_HOST_VERSION_MINOR 0
#define RAXEL_HOST_VERSION_PATCH 5
#define RAXEL_HOST_VERSION \
  (RAXEL_HOST_VERSION_MAJOR << 16 | RAXEL_HOST_VERSION_MINOR << 8 | RAXEL_HOST_VERSION_PATCH)
RAXEL_EXPORT uint32_t raxelHostVersion(void);

// Bits of RaxelHostJob.flags.
enum {
  RAXEL_HOST_VERIFY = 1,       // decode what was written with libtiff and compare every pixel with the plan
  RAXEL_HOST_FORCE = 2,        // replace a file that is write-protected
  RAXEL_HOST_NO_CLOBBER = 4,   // never replace a file
  RAXEL_HOST_ONLY_TIFF = 32,   // never replace a file that holds something else than a TIFF
  RAXEL_HOST_DRY_RUN = 8,      // work out the plan and write nothing
  RAXEL_HOST_SYNC_CHILD = 16,  // leave a long wait for the disk to a child process, so that a signal ends
                               // this one at once; for programs without threads or children of their own
  RAXEL_HOST_NO_SYNC = 64,  // rename without waiting for the disk: a process that ends leaves the old file
                            // or the new one as ever, but a machine that loses its power may leave neither
};

// How the picture gets into the filter. The bytes are the same.
typedef enum RaxelHostRoad {
  RAXEL_ROAD_CELL,      // a finished picture: in one call, or by bands of its rows, where the file does not
                        // show it and nothing is scaled or reduced
  RAXEL_ROAD_DRIVER,    // a driver session: resolutions must be equal, some sizes are refused
  RAXEL_ROAD_METAFILE,  // a metafile session, which no platform of today records: always refused
  RAXEL_ROADS           // how many there are
} RaxelHostRoad;

// Where an export is.
typedef enum RaxelHostStage {
  RAXEL_STAGE_PREPARING,  // the pixels are made ready
  RAXEL_STAGE_WRITING     // they go through the filter
} RaxelHostStage;

// Told of the progress, some fifty times a second at most: the stage, the part of it that is done (0 to
// 1) and the bytes written so far. Answers 0 to go on; any other answer stops the export.
typedef int32_t (*RaxelHostProgress)(void *context, int32_t stage, double part, uint64_t bytes);

// Asked as often whether to stop: 0 to go on. For programs that show no progress. Both are called once more
// when the disk has the new file: a stop then still leaves the old one.
typedef int32_t (*RaxelHostStop)(void *context);

// Takes the file's bytes from first to last in pieces, when the whole file has been made: an export
// that fails before has written nothing. Answers 0, or an errno when it cannot.
typedef int32_t (*RaxelHostWrite)(void *context, const void *bytes, uint64_t count);

// Told the name of the temporary file when it is made, and null when it is gone: for a program whose
// signal handler removes it. Signals that end a program wait meanwhile, as far as the calling thread is
// concerned.
typedef void (*RaxelHostTemporary)(void *context, const char *path);

struct RaxelHostResult;

// Asked for the next page of a file of several, when the one before is written: `page` counts from 1 on,
// for the first is in the job. Picture and request hold what they held for the page before, and are
// changed; what the picture of the page before pointed to may be freed. `before` tells of that page.
// Answers 1, or 0 when there are no more pages; any other answer stops the export, and the old file stays.
typedef int32_t (*RaxelHostNextPage)(void *context, uint32_t page, const struct RaxelHostResult *before,
                                     RaxelPicture *picture, RaxelRequest *request);

// What a finished directory says of the picture beside its pixels. Texts are in UTF-8; null and "" leave
// them out.
typedef struct RaxelMetadata {
  uint32_t size;  // sizeof(RaxelMetadata)
  const char *description;
  const char *artist;
  const char *copyright;
  const char *dateTime;  // in the format's own form, "2026:01:31 23:59:59"
  // An ICC profile, which is written as it is: of RGB for the mode rgb, of greys for those of greys. Null
  // for none.
  const uint8_t *icc;
  uint64_t iccBytes;
} RaxelMetadata;

// What is to be done. Everything that it points to is borrowed until the call returns.
typedef struct RaxelHostJob {
  uint32_t size;   // sizeof(RaxelHostJob)
  uint32_t flags;  // RAXEL_HOST_VERIFY...

  RaxelPicture picture;  // what there is
  RaxelRequest request;  // what is wanted

  // The output: a file, or the callback, or, when both are null, a block of memory. The file is written
  // beside the one of that name, brought to the disk (but for RAXEL_HOST_NO_SYNC), and renamed, so that the
  // old one stays bit for bit until the new one is whole. "-" is standard output; it, pipes and devices get
  // their bytes at the end.
  const char *path;
  RaxelHostWrite write;

  // May each be null. `context` is handed to all of them.
  RaxelHostProgress progress;
  RaxelHostStop stop;
  RaxelHostTemporary temporary;
  void *context;

  int32_t road;  // RaxelHostRoad

  // Null for a file of one picture. Else every page is finished, with NewSubfileType 2 and PageNumber; no
  // more memory is used than for the largest.
  RaxelHostNextPage nextPage;

  int32_t predictor;  // RaxelPredictor; of all pages

  // Null for none. nextPage may change the record, for the pages from then on.
  const RaxelMetadata *metadata;
} RaxelHostJob;

enum { RAXEL_HOST_MESSAGE_BYTES = 1024 };

// What has become of it. The caller sets `size`; the call sets all else.
typedef struct RaxelHostResult {
  uint32_t size;      // sizeof(RaxelHostResult)
  int32_t code;       // RaxelHostCode, as it is returned
  int32_t error;      // the errno behind it; 0 for none
  uint32_t verified;  // 1: the written bytes show the picture
  uint64_t bytes;     // of the file
  uint8_t *memory;    // output in memory: the file, the caller's from now on (raxelHostFree); else null

  double prepareSeconds;
  double writeSeconds;

  // Why it failed, in one sentence that is cut where there is no room; empty for RAXEL_HOST_OK.
  char message[RAXEL_HOST_MESSAGE_BYTES];

  RaxelPlan plan;     // all 0 when the request was refused; its notes say what was changed on the way;
                      // of the last page where there are several
  uint32_t pages;     // in the file
  int32_t predictor;  // none or horizontal, as written; of the last page where there are several
} RaxelHostResult;

// Clears `size` bytes of a job, sets its size, and its request to raxelHostDefaults, but finished, with
// RAXEL_PREDICTOR_AUTO. Does nothing for null.
RAXEL_EXPORT void raxelHostJobDefaults(RaxelHostJob *job, uint32_t size);

// Exports a picture. Returns RAXEL_HOST_OK with the output complete, or another RaxelHostCode with the
// old file untouched, nothing kept in memory and nothing left behind; so too in *result, which may be
// null unless the output goes to memory. Opens the filter as raxelHostOpen(null) does when none is open.
// Memory is asked for before the filter is, which would end the process without it. Sets the record of
// the settings where no escape reaches: strips or tiles.
RAXEL_EXPORT int raxelHostExport(const RaxelHostJob *job, RaxelHostResult *result);

// Frees memory of a result. Null is allowed.
RAXEL_EXPORT void raxelHostFree(void *memory);

// Loads the filter, for as long as the process lives: from the path given, or, for null or "", from the
// one in the environment variable RAXEL_LIBRARY, be it there or not. Where that is not set or empty, or the
// program runs with another user's rights, from the first that is there of raxel.so, ../lib/raxel/raxel.so
// and raxel/raxel.so seen from the program's folder; the same three seen from that of libraxelhost; and
// raxel.so in the folder that the build was configured to install into. Returns RAXEL_HOST_OK, also when
// that filter is open already; RAXEL_HOST_NO_FILTER; RAXEL_HOST_BAD_ARGUMENT when another one is open; or
// RAXEL_HOST_NO_MEMORY.
RAXEL_EXPORT int raxelHostOpen(const char *path);

// The path of the open filter; null when there is none.
RAXEL_EXPORT const char *raxelHostFilter(void);

// Why the last raxelHostOpen of this thread failed, in one sentence; empty when it did not. Never null.
RAXEL_EXPORT const char *raxelHostOpenError(void);

RAXEL_END

#endif
