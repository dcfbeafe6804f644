// SPDX-License-Identifier: MIT
// The metafile session: a host records a picture as a platform metafile, and the filter renders it when
// the session ends.
//
// This platform has no metafiles. Its hooks, at the end, are the places where a platform with them puts
// its own; a session here opens and closes its output and ends with code 300.
#ifndef RAXEL_METAFILE_H
#define RAXEL_METAFILE_H

#include "raxel/filter_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

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
  HostWord nFrameLeft;  // the host status record's, signed 32-bit numbers
  HostWord nFrameTop;
  HostWord nFrameRight;
  HostWord nFrameBottom;
  HostWord nFrameResolution;
  double dGeometry[4];   // dPictureGeometry of the settings record
  double dRoundedWidth;  // the same of the settings record
  double dRoundedHeight;
  HostWord dwPlatform;  // dwPlatformA of the settings record
} MetafilePicture;

// Tells the host where to go on. Op RAXEL_ENTRY_VERSION copies the version's 4 bytes to `out`, and
// RAXEL_ENTRY_ADDRESS the sizeof(void *) bytes of dd_entry32's address; any other op, and a null `out`,
// does nothing. `out` may be at any address. Returns 0.
RAXEL_EXPORT int32_t dd_entry(uint32_t op, void *out, uint32_t unused);

// The metafile session's working entry. RAXEL_ENTRY_...
//
//   START    initdvr(record), and its result. Nothing, and 0, when hCommon and lpCommon are set and
//            nSessState is not 1. A null record is 22
//   EXECUTE  clears nSessError; with nSessState above 0 looks the record's first 32-bit word up in the
//            raster driver's table and calls what it finds. Returns nSessError; 0 without lpCommon.
//            Nothing is executed for a null record
//   END      clears nSessError; termdvr, and its result. Without lpCommon only that
//   VERSION  copies its 4 bytes to the record, unless that is null, and returns 4
// Others return 0. The records of EXECUTE and VERSION may be at any address.
RAXEL_EXPORT int32_t dd_entry32(HostWord unused, uint32_t op, void *record);
#ifndef RAXEL_NO_SHORT_NAMES  // initdvr, termdvr, escape
// Opens a session. The record has the words of RaxelStartWord; the output's name is a writable text, which
// the library copies and empties. The output is opened as ExportCellData opens it. Returns 0; 22 without a
// record or a usable setup handle; 303 when the output cannot be opened or its name has 144 characters or
// more (a host procedure that refuses goes unnoticed). An output left open by an earlier session of this
// setup is closed first.
RAXEL_EXPORT int32_t initdvr(HostWord *record);

// Ends the session: renders the metafile through OutputPicture, closes the output. Returns 300
// without a metafile (always, on this platform), without a session, and when `escape` stops it
// before rendering; 303 when the output cannot be closed; else OutputPicture's result, or
// TermPlatformMetafileFilter's when that is 0.
RAXEL_EXPORT int32_t termdvr(HostWord unused);

// Asks the session's host, through lpCommon, whether to stop: the plain report with nSessStatusArg as
// its fourth value. Returns 0, or 901 after pushing it on the driver's error stack.
RAXEL_EXPORT int32_t escape(void);
#endif
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
