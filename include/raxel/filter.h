// The filter's front door: the export table, the one-call export, the picture pipeline behind it,
// and the metafile session.
//
// A host that has loaded the library calls fltLoadPointers, finds the entries' names by their
// ordinals, looks the names up in the library, and checks KVLGetFilterVersion. Then CreateSetup
// (raxel/settings.h), and one of three ways to hand a picture over: ExportCellData here, the raster
// driver (raxel/driver.h), or a metafile session (dd_entry32, at the end of this header).
//
// One call at a time: the library keeps its state in globals. Callbacks may call back into it, but
// must not start another export, and must leave the handles alone that the running one works with.
#ifndef RAXEL_FILTER_H
#define RAXEL_FILTER_H

#include "raxel/driver.h"
#include "raxel/filter_codes.h"
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

// Ordinals 1001 to 1006 and 1008 to 1010: CreateSetup, DestroySetup, EditSetup, EscapeSetup,
// KVLGetFilterVersion, dd_entry, RASTER_dd_entry, ExportCellData, szDLLName. Two names stand for
// other symbols: "EscapeSetup" for xEscapeSetup, and "szDLLName" for the buffer export_szDLLName.
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
RAXEL_EXPORT extern double zero;                   // 0.0
RAXEL_EXPORT extern double one;                    // 1.0

// ---- The host status record
//
// An array of host words of the host's. ExportCellData and initdvr store its address in the settings
// record (lpStatus) and leave it there: it stays borrowed until the setup is destroyed or another export
// stores another one. A framed picture of the raster driver with the same setup reports to it. 13 words,
// of which the library reads and writes:
//
//    1  context, handed back with every status callback
//    2  status callback (StatusCallback), or 0
//    4  metafile session: a value kept in the settings record
//    6  out: handle of the block that holds an in-memory output. Valid after the export; the host
//       frees it with GlobalFree. The block ends with one byte 0xFF behind the file's last byte, and
//       may have spare room behind that
//    7  metafile session: picture frame, left     8  top     9  right     10  bottom
//   11  metafile session: frame units per inch; 0: the frame is in inches
//   12  host stream procedure: first word of its stream descriptor, the context of its open call
//
// The callback is called as callback(context, a, b, c, d, e, f):
//   0, 0, 0, percent, 0, 0    after every band that was written, 1..100. An answer other than 0
//                             objects, and the library asks again:
//   2, 61, 0, 0, 0, block     the follow-up; `block` is 10 host words of zeros for the host to use
//                             and is gone after the call. 0: go on after all. Other: stop
//   0, -2, 100, 0, 0, 0       the raster driver has started; the answer is of no account
// What a stop leaves: the output as far as it was written, closed but not completed.

// ---- Pictures

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
  int16_t nKind;         // 1 cell data, 4 metafile
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
//   exportRecord  7 host words: word 2 the setup handle, word 6 the host status record (may be null)
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
//   0 query  a picture, b PictureFormat    set size, resolution and kind; the answer is not looked at
//   1 open   a OffscreenRecord, b request  answer the rows of a band, at most the rows offered; 0: no
//   3 band   a OffscreenRecord, b first    answer the handle of the band's rows at the output's width
//            row, c last row (not          and depth, bottom row first; it stays the procedure's own
//            included), counted from the   and is changed in place. 0: no memory. Bands come highest
//            bottom                        rows first: height 100 in bands of 40 is 60..100, 20..60,
//                                          0..20. Progress is reported after each
//   2 close  a OffscreenRecord             free what was kept; always called when open was
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

// ---- The metafile session

// The host's block for a metafile session; the library never allocates, sets or frees it.
typedef struct SessionCommon {
  int32_t nSessState;       // 1 closed; above 0 functions are dispatched
  int16_t nSessError;       // result of the last dispatched function; the library clears it, the host
                            // and its functions set it
  HostWord *lpSessStatus;   // host status record of `escape`
  HostWord nSessStatusArg;  // value d of its status callback
} SessionCommon;

RAXEL_EXPORT extern Handle hCommon;
RAXEL_EXPORT extern SessionCommon *lpCommon;

// The picture that a metafile session draws, handed to DrawPlatformMetafile.
typedef struct MetafilePicture {
  Handle hMetafile;
  HostWord nFrameLeft;  // words 7 to 11 of the host status record, signed 32-bit numbers
  HostWord nFrameTop;
  HostWord nFrameRight;
  HostWord nFrameBottom;
  HostWord nFrameResolution;
  double dGeometry[4];   // dPictureGeometry of the settings record
  double dRoundedWidth;  // the same of the settings record
  double dRoundedHeight;
  HostWord dwPlatform;  // dwPlatformA of the settings record
} MetafilePicture;

// Tells the host where to go on: op -2 copies the version's 4 bytes to `out`, op -3 the sizeof(void *)
// bytes of dd_entry32's address; any other op, and a null `out`, does nothing. `out` may be at any address.
// op is the low 16 bits, signed. Returns 0.
RAXEL_EXPORT int32_t dd_entry(uint32_t op, void *out, uint32_t unused);

// The metafile session's working entry; op is the low 16 bits, signed.
//
//    0  initialise: initdvr(record), and its result. Nothing, and 0, when hCommon and lpCommon are
//       set and nSessState is not 1
//    2  execute one function: clears nSessError; with nSessState above 0 looks the record's first
//       32-bit word up in the raster driver's table and calls what it finds. Returns nSessError
//   -1  terminate: clears nSessError; termdvr, and its result
//   -2  version: copies its 4 bytes to the record and returns 4
// Others return 0. Without lpCommon, op 2 returns 0 and op -1 only terminates. A null record is 22 for
// op 0; for op 2 nothing is executed, and the result is 0 after clearing; for op -2 nothing is written, and
// the result is 4 all the same. The records of op 2 and op -2 may be at any address.
RAXEL_EXPORT int32_t dd_entry32(HostWord unused, uint32_t op, void *record);

// Opens a session. The record's host words: 1 and 5 platform values, 3 the output's name (a writable
// text; the library copies it and empties it), 13 in the setup handle, out the handle that the
// platform's hook gives (0 here), 14 the host status record. The output is opened as ExportCellData
// opens it. Returns 0; 22 without a record or a usable setup handle; 303 when the output cannot be opened
// or its name has 144 characters or more (a host procedure that refuses goes unnoticed). An output left
// open by an earlier session of this setup is closed first.
RAXEL_EXPORT int32_t initdvr(HostWord *record);

// Ends the session: renders the metafile through OutputPicture, closes the output. Returns 300
// without a metafile (always, on this platform), without a session, and when `escape` stops it
// before rendering; 303 when the output cannot be closed; else OutputPicture's result, or
// TermPlatformMetafileFilter's when that is 0.
RAXEL_EXPORT int32_t termdvr(HostWord unused);

// Asks the session's host, through lpCommon, whether to stop: the plain report with nSessStatusArg as
// its fourth value. Returns 0, or 901 after pushing it on the driver's error stack.
RAXEL_EXPORT int32_t escape(void);

// Called with 1 before and 0 after each dispatched function. Does nothing; returns 0.
RAXEL_EXPORT int32_t esc_mode(int32_t on);

// Whether there are alternative fonts. Returns 0.
RAXEL_EXPORT int32_t AltFontsAvailable(void);

// The platform's metafile services. This platform has none: each does nothing and returns 0, except
// as said. A platform with metafiles replaces the five.

// Prepares recording. Out: two words kept in the settings record, the setup handle that the host is
// given back, and the host's item callback (0: none), which is then told five settings. All four are
// cleared here, and value1 is returned.
RAXEL_EXPORT HostWord InitPlatformMetafileFilter(HostWord value1, HostWord value2, HostWord *status,
                                                 HostWord *wordA, Handle *setup, HostWord *wordB,
                                                 HostWord *itemCallback);
// The recorded metafile, 0 when there is none.
RAXEL_EXPORT Handle GetMetaFileHandle(void);
RAXEL_EXPORT int32_t DeleteMetaFileHandle(void);
// Ends recording; its result is termdvr's when nothing else failed.
RAXEL_EXPORT int32_t TermPlatformMetafileFilter(void);
// The draw procedure for a MetafilePicture. Query divides the frame by its resolution; open allows no
// rows and a band has no pixels, so that OutputPicture ends with 27.
RAXEL_EXPORT HostWord DrawPlatformMetafile(HostWord op, HostWord a, HostWord b, HostWord c);

RAXEL_END

#endif
