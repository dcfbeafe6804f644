// SPDX-License-Identifier: MIT
// The filter's front door: the export table, the one-call export, and the picture pipeline behind it.
//
// A host that has loaded the library calls fltLoadPointers, finds the entries' names by their
// ordinals, looks the names up in the library, and checks KVLGetFilterVersion. Then CreateSetup
// (raxel/settings.h), and one of three ways to hand a picture over: ExportCellData here, the raster
// driver (raxel/driver.h), or a metafile session (raxel/metafile.h).
//
// One call at a time: the library keeps its state in globals. Callbacks may call back into it, but
// must not start another export, and must leave the handles alone that the running one works with.
#ifndef RAXEL_FILTER_H
#define RAXEL_FILTER_H

#include "raxel/driver.h"
#include "raxel/filter_codes.h"
#include "raxel/metafile.h"
#include "raxel/picture.h"
#include "raxel/settings.h"
#include "raxel/types.h"

RAXEL_BEGIN

#define RAXEL_VERSION 0x02000005u
#define RAXEL_TABLE_ROWS 9

// ---- The front door

// One row of the export table; 12 bytes on a 32-bit machine.
typedef struct FilterExportEntry {
  const char *name;    // what the host looks up in the library
  uint16_t ordinal;    // the host's number for it
  uint16_t reserved1;  // 0
  uint32_t reserved2;  // 0
} FilterExportEntry;

// Handed to fltLoadPointers.
typedef struct FilterLoadRecord {
  uint32_t hostWord;               // the host's, untouched
  uint16_t count;                  // out: 9
  uint16_t hostHalf;               // the host's, untouched
  const FilterExportEntry *table;  // out: FilterExportTable
} FilterLoadRecord;

// A row for every RaxelOrdinal, in their order. Two names stand for other symbols: "EscapeSetup" for
// xEscapeSetup, and "szDLLName" for the buffer export_szDLLName.
RAXEL_EXPORT extern const FilterExportEntry FilterExportTable[RAXEL_TABLE_ROWS];

// Fills count and table in; the table lives as long as the library. A null record is left alone.
RAXEL_EXPORT void fltLoadPointers(FilterLoadRecord *record);

// 0x02000005. Every version query of the library gives this number.
RAXEL_EXPORT uint32_t KVLGetFilterVersion(void);
// Data for the host; no code of the library reads them.
RAXEL_EXPORT extern uint16_t FilterVersion;        // 1
RAXEL_EXPORT extern uint16_t FilterID;             // 18
RAXEL_EXPORT extern int32_t NUM_GDSF_CHARSETS;     // alternative character sets: 0
RAXEL_EXPORT extern uint8_t GDSF_CHARSETLIST[34];  // zeros
RAXEL_EXPORT extern char DebugStr[80];             // zeros

#ifndef RAXEL_NO_SHORT_NAMES  // zero, one
// The same, with names that an application may have for itself.
RAXEL_EXPORT extern double zero;  // 0.0
RAXEL_EXPORT extern double one;   // 1.0
#endif
// ---- The host status record
//
// An array of host words of the host's. ExportCellData and initdvr store its address in the settings
// record (lpStatus) and leave it there: it stays borrowed until the setup is destroyed or another export
// stores another one. A framed picture of the raster driver with the same setup reports to it. 13 words,
// of which the library reads and writes:
//
//   RAXEL_STATUS_...
//    1 CONTEXT  2 CALLBACK   the status callback (StatusCallback), or 0, and what it is handed
//    4 VALUE                 metafile session: a value kept in the settings record
//    6 OUTPUT                out: handle of the block that holds an in-memory output. Valid after the
//                            export; the host frees it with GlobalFree. The block ends with one byte 0xFF
//                            behind the file's last byte, and may have spare room behind that
//    7 to 11 FRAME_...       metafile session: the picture frame and its units per inch
//   12 PROC_CONTEXT          host stream procedure: first word of its stream descriptor, the context of
//                            its open call
//
// The callback is called as callback(context, a, b, c, d, e, f):
//   0, 0, 0, percent, 0, 0    after every band that was written, 1..100. An answer other than 0
//                             objects, and the library asks again:
//   2, 61, 0, 0, 0, block     the follow-up; `block` is 10 host words of zeros for the host to use
//                             and is gone after the call. 0: go on after all. Other: stop
//   0, -2, 100, 0, 0, 0       the raster driver has started; the answer does not matter
// What a stop leaves: the output as far as it was written, closed but not completed.

// ---- One call: a finished picture

// ExportCellInfo: 28 bytes with the same offsets on every machine, at any address.
//
//    0  not read                              2 i16  display dots per inch, both axes
//    4  not read                             10 u16  picture resolution: extent units per inch
//   12 i32  picture extent X                 16 i32  picture extent Y
//   20 i32  display width, dots              24 i32  display height, dots
#define EXPORT_CELL_INFO_BYTES 28

// Writes a picture as a TIFF file.
//   name          the output's name; with neither a name nor a stream procedure in the settings
//                 (escape 81) the output goes into a block, whose handle is in word 6 of the status
//                 record afterwards. A stream procedure goes before the name, and is told it
//   picture       nResolution, dExtentX and dExtentY are set from `info`
//   info          28 bytes, above
//   exportRecord  7 host words, of which those of RaxelRecordWord are read
// Returns 22 for a missing setup handle, picture, info or record (nothing is opened), 303 when the
// output cannot be opened, and otherwise 0 WHATEVER BECAME OF THE PICTURE: a host that has to know
// looks at the bytes, or hands the output to a stream procedure of its own.
RAXEL_EXPORT uint32_t ExportCellData(const char *name, PictureRecord *picture, const void *info,
                                     HostWord *exportRecord);

// ---- The pipeline

// Writes the picture that a draw procedure draws to an open stream, with the settings at lpRaster.
// Returns 0; 27 when the settings name no bitmap mode, the output is 0 rows high, there is no draw
// procedure or it allows no rows; 901 when the host stops it; 300 when a callback destroys the settings
// record, and before the file is begun when no block can hold a band; else what WriteCellBits returns
// (300, 303). A picture that was not completed leaves the stream as far as it was written.
//
// The draw procedure is called with (op, a, b, c), in this order:
// RAXEL_DRAW_...
//   QUERY  a picture, b PictureFormat    set size, resolution and kind; the answer is not looked at
//   OPEN   a OffscreenRecord, b request  answer the rows of a band, at most the rows offered; 0: no
//   BAND   a OffscreenRecord, b first    answer the handle of the band's rows at the output's width
//          row, c last row (not          and depth, bottom row first; it stays the procedure's own
//          included), counted from the   and is changed in place. 0: no memory. Bands come highest
//          bottom                        rows first: height 100 in bands of 40 is 60..100, 20..60,
//                                        0..20. Progress is reported after each
//   CLOSE  a OffscreenRecord             free what was kept; always called when open was
RAXEL_EXPORT int32_t OutputPicture(Handle file, void *picture, DrawProc draw);

// The platform's hooks for drawing surfaces; here each asks the draw procedure, as above.
RAXEL_EXPORT int32_t QueryPlatformOffscreen(PictureFormat *format, void *picture, DrawProc draw);
// `bandRows`: in the rows offered, out the draw procedure's answer. `palette`: `colors` entries of memory
// of kvlPtrGlobalAlloc, or null; it stays the caller's, who frees what lpPalette holds at the end, since a
// draw procedure may have replaced it. `flags`: 9 bytes, of which the first is read, or null. Null without
// a draw procedure or `bandRows`; nothing has been called then.
RAXEL_EXPORT OffscreenRecord *InitPlatformOffscreen(uint32_t width, uint32_t *bandRows, uint16_t bits,
                                                    uint16_t colors, uint8_t *palette, void *picture,
                                                    DrawProc draw, const void *flags);
RAXEL_EXPORT Handle DrawPlatformOffscreen(OffscreenRecord *record, uint32_t first, uint32_t last);
// Frees the record.
RAXEL_EXPORT int32_t TermPlatformOffscreen(OffscreenRecord *record);

// Tells the status callback of the record at lpRaster how far the export is. Returns 0 to go on
// (also when there is nobody to tell), 901 to stop.
RAXEL_EXPORT int32_t UpdateStatus(uint32_t percent);

// The one place where the host's status callback is called: callback(context, a to f). When a and b
// are 0 and the answer is not, the follow-up (2, 61) is asked and its answer is the result;
// otherwise the first answer is. A null callback answers 0.
RAXEL_EXPORT int32_t CallGetSet_Status(StatusCallback callback, HostWord context, HostWord a, HostWord b,
                                       HostWord c, HostWord d, HostWord e, HostWord f);

// The draw procedure for a PictureRecord: one band, the whole picture, converted in memory. When
// depth and size are the output's already, the band is the host's own block and nothing is copied.
RAXEL_EXPORT HostWord DrawExportCellData(HostWord op, HostWord a, HostWord b, HostWord c);

// Its open: settles the output palette. With at least the source's depth the source's table is taken
// over; else a table is chosen for it. Returns the rows offered; 0 for a missing record, picture or
// request, and, after pushing 303 on the driver's error stack, without memory for the cache.
RAXEL_EXPORT uint32_t CellDataOpen(OffscreenRecord *record, const HostWord *request);

// Its band: the converted picture, kept in the cache until the next band or close; or the picture's
// own rows when nothing had to be converted; or 0.
RAXEL_EXPORT Handle CellDataBand(OffscreenRecord *record);

// Brings rows to another depth and returns a new block: dithered when the new depth is below 8 and
// below the source's, else pixel by pixel. `colors` entries of `palette` count. Returns 0 without pixels,
// and when no block holds the rows at either depth.
RAXEL_EXPORT Handle CellDataDepth(Handle pixels, uint32_t width, uint32_t height, int16_t sourceBits,
                                  int16_t bits, Handle sourcePalette, Handle palette, uint16_t colors);

// Its close: frees the cache and what it holds. Returns 0.
RAXEL_EXPORT int32_t CellDataClose(OffscreenRecord *record);

RAXEL_END

#endif
