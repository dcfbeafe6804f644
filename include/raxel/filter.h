// The filter's front door: the export table, the one-call export, the picture pipeline and the
// metafile session.
#ifndef RAXEL_FILTER_H
#define RAXEL_FILTER_H

#include "raxel/driver.h"
#include "raxel/settings.h"
#include "raxel/types.h"

RAXEL_BEGIN

#define RAXEL_VERSION 0x02000005u
#define RAXEL_TABLE_ROWS 9

// One row of the export table.
typedef struct FilterExportEntry {
  const char *name;
  uint16_t ordinal;
  uint16_t reserved1;
  uint32_t reserved2;
} FilterExportEntry;

// Handed to fltLoadPointers; count and table are written, the rest is the host's.
typedef struct FilterLoadRecord {
  uint32_t hostWord;
  uint16_t count;
  uint16_t hostHalf;
  const FilterExportEntry *table;
} FilterLoadRecord;

// The host's block for a metafile session; the library never allocates or frees it.
typedef struct SessionCommon {
  int32_t nSessState;       // 1 closed; above 0 dispatch is allowed
  int16_t nSessError;       // result of the last dispatched function
  HostWord *lpSessStatus;   // host status record: [1] context, [2] callback
  HostWord nSessStatusArg;  // passed as value d of the status callback by escape
} SessionCommon;

// The host's description of a pixel picture.
typedef struct PictureRecord {
  uint16_t nBits;   // 1, 4, 8 or 24
  uint16_t nWidth;  // pixels
  uint16_t nHeight;
  uint16_t nResolution;  // extent units per inch; 0: the extents are inches
  double dExtentX;
  double dExtentY;
  Handle hPalette;  // 3 bytes an entry, 0 when none
  Handle hBits;     // rows, bottom row first in the file's eyes
} PictureRecord;

typedef struct MetafilePicture {
  Handle hMetafile;
  HostWord nFrameLeft;  // words 7 to 11 of the host status record
  HostWord nFrameTop;
  HostWord nFrameRight;
  HostWord nFrameBottom;
  HostWord nFrameResolution;
  double dGeometry[4];  // from the settings record
  double dRoundedWidth;
  double dRoundedHeight;
  HostWord dwPlatform;
} MetafilePicture;

typedef struct PictureFormat {
  double dWidth;
  double dHeight;
  uint32_t nResolution;
  int16_t nKind;  // 1 cell data, 4 metafile
} PictureFormat;

typedef struct OffscreenRecord {
  void *lpPicture;
  DrawProc lpfnDraw;
  uint16_t nColors;
  uint8_t *lpPalette;
  uint32_t nWidth;
  uint32_t nBandRows;
  uint16_t nBits;
  Handle hBandCache;
  uint8_t bFlag;
} OffscreenRecord;

// OffscreenRequest and BandCache are arrays of host words.
enum {
  OFFSCREEN_WIDTH,
  OFFSCREEN_ROWS,
  OFFSCREEN_BITS,
  OFFSCREEN_COLORS,
  OFFSCREEN_PALETTE,
  OFFSCREEN_WORDS
};
enum { BANDCACHE_BAND, BANDCACHE_PALETTE, BANDCACHE_WORDS };

// ExportCellInfo: 28 bytes with fixed offsets on every build, read unaligned.
//   2 u16 display dots per inch   10 u16 picture resolution
//  12 i32 extent X   16 i32 extent Y   20 i32 display width   24 i32 display height
#define EXPORT_CELL_INFO_BYTES 28

RAXEL_EXPORT extern const FilterExportEntry FilterExportTable[RAXEL_TABLE_ROWS];
RAXEL_EXPORT extern Handle hCommon;
RAXEL_EXPORT extern SessionCommon *lpCommon;
RAXEL_EXPORT extern uint16_t FilterVersion;
RAXEL_EXPORT extern uint16_t FilterID;
RAXEL_EXPORT extern int32_t NUM_GDSF_CHARSETS;
RAXEL_EXPORT extern uint8_t GDSF_CHARSETLIST[34];
RAXEL_EXPORT extern char DebugStr[80];
RAXEL_EXPORT extern double zero;
RAXEL_EXPORT extern double one;

RAXEL_EXPORT void fltLoadPointers(FilterLoadRecord *record);
RAXEL_EXPORT uint32_t KVLGetFilterVersion(void);
RAXEL_EXPORT int32_t dd_entry(uint32_t op, void *out, uint32_t unused);
RAXEL_EXPORT int32_t dd_entry32(HostWord unused, uint32_t op, void *record);

RAXEL_EXPORT uint32_t ExportCellData(const char *name, PictureRecord *picture, const void *info,
                                     HostWord *exportRecord);
RAXEL_EXPORT int32_t OutputPicture(Handle file, void *picture, DrawProc draw);
RAXEL_EXPORT int32_t QueryPlatformOffscreen(PictureFormat *format, void *picture, DrawProc draw);
RAXEL_EXPORT OffscreenRecord *InitPlatformOffscreen(uint32_t width, uint32_t *bandRows, uint16_t bits,
                                                    uint16_t colors, uint8_t *palette, void *picture,
                                                    DrawProc draw, const void *flags);
RAXEL_EXPORT Handle DrawPlatformOffscreen(OffscreenRecord *record, uint32_t first, uint32_t last);
RAXEL_EXPORT int32_t TermPlatformOffscreen(OffscreenRecord *record);
RAXEL_EXPORT int32_t UpdateStatus(uint32_t percent);
RAXEL_EXPORT int32_t CallGetSet_Status(StatusCallback callback, HostWord context, HostWord a, HostWord b,
                                       HostWord c, HostWord d, HostWord e, HostWord f);
RAXEL_EXPORT HostWord DrawExportCellData(HostWord op, HostWord a, HostWord b, HostWord c);
RAXEL_EXPORT uint32_t CellDataOpen(OffscreenRecord *record, const HostWord *request);
RAXEL_EXPORT Handle CellDataBand(OffscreenRecord *record);
RAXEL_EXPORT Handle CellDataDepth(Handle pixels, uint32_t width, uint32_t height, int16_t sourceBits,
                                  int16_t bits, Handle sourcePalette, Handle palette, uint16_t colors);
RAXEL_EXPORT int32_t CellDataClose(OffscreenRecord *record);

RAXEL_EXPORT HostWord InitPlatformMetafileFilter(HostWord value1, HostWord value2, HostWord *status,
                                                 HostWord *wordA, Handle *setup, HostWord *wordB,
                                                 HostWord *itemCallback);
RAXEL_EXPORT Handle GetMetaFileHandle(void);
RAXEL_EXPORT int32_t DeleteMetaFileHandle(void);
RAXEL_EXPORT int32_t TermPlatformMetafileFilter(void);
RAXEL_EXPORT HostWord DrawPlatformMetafile(HostWord op, HostWord a, HostWord b, HostWord c);
RAXEL_EXPORT int32_t initdvr(HostWord *record);
RAXEL_EXPORT int32_t termdvr(HostWord unused);
RAXEL_EXPORT int32_t escape(void);
RAXEL_EXPORT int32_t esc_mode(int32_t on);
RAXEL_EXPORT int32_t AltFontsAvailable(void);

RAXEL_END

#endif
