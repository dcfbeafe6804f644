// Export settings: the settings record, the profile it is loaded from, the setup calls and escapes.
//
// One settings record is one export configuration. A host makes it with CreateSetup, knows it by its
// handle alone, changes it through numbered escapes (xEscapeSetup), passes the handle to every
// export, and gives it back with DestroySetup:
//
//   Handle setup = CreateSetup(0, "painter.ini", "TIF Export", "Painter");
//   const int32_t rgb = 146, own = 3, dpi = 300;
//   xEscapeSetup(setup, 9, 4, &rgb, NULL, 0);    // bitmap mode: RGB
//   xEscapeSetup(setup, 18, 4, &own, NULL, 0);   // resolution mode: the setup's own
//   xEscapeSetup(setup, 11, 4, &dpi, NULL, 1);   // X resolution, saved in the profile as well
//   ...
//   DestroySetup(setup);
//
// Texts are NUL-terminated bytes, borrowed for the call. Numbers are written to and read from the
// profile as in the C locale, whatever the host's locale is.
#ifndef RAXEL_SETTINGS_H
#define RAXEL_SETTINGS_H

#include "raxel/setting_codes.h"
#include "raxel/tiff.h"
#include "raxel/types.h"

RAXEL_BEGIN

// Bytes of every name in the record, terminator included.
#define RAXEL_NAME_ROOM 144

// The record behind a setup handle: one zero-initialised moveable block. All numbers are native. The
// codes are those that a profile holds; escapes use others (see xEscapeSetup). The default is what
// UseDefaultSettings sets.
//
//   nColorMode        103 colours as they are (default)   104 every channel inverted, 255 - v
//                     105 greys inverted (a pixel whose channels lie pairwise within 10)
//                     106 grey, (3 R + 6 G + B) / 10      107 inverted grey
//   nSizeMode         600 the display's size   601 the printer's page (600 without a printer)
//                     602 the picture's own (default)     603 dWidth by dHeight
//   nResolutionMode   307 the display's   308 the printer's (307 without a printer)
//                     309 the picture's own (default)     310 nXResolution by nYResolution
//   nBitmapMode       215 bilevel   216 16 greys   217 256 greys   218 8 fixed colours
//                     219 16 colours   221 256 colours (default)   222 RGB, 24 bits
//   nCompressionMode  224 none (default)   225 PackBits   226 CCITT modified Huffman   227 LZW
//                     229 CCITT T.4 (Group 3)   230 CCITT T.6 (Group 4); others: none
//   tiff.wLayoutMode  772 strips (default)   771 tiles of 512 by 128 pixels
typedef struct RasterSetup {
  char szAppName[RAXEL_NAME_ROOM];      // profile section of the application
  char szModeName[RAXEL_NAME_ROOM];     // profile section of this mode's keys; default empty
  char szProfilePath[RAXEL_NAME_ROOM];  // full path of the profile; empty when none was found
  char szReserved[RAXEL_NAME_ROOM];     // the real profile after BackupProfile; default empty
  char szDriverName[13];                // value of the key "Driver"; default szFilter and ".1"
  uint32_t dwReserved1;                 // 0
  HostWord dwEditData;                  // second argument of the last EditSetup; default 0
  HostWord dwUserData;                  // escapes 25 and 26; default 0
  int32_t nColorMode;
  uint32_t dwReserved2;  // 0
  // Words of the running export.
  // Host status record (raxel/filter.h): stays borrowed until the setup is destroyed or another export
  // stores another one. Framed pictures of the raster driver report to it.
  HostWord *lpStatus;
  HostWord dwPlatformA;                // kept for the platform's metafile hooks
  HostWord dwPlatformB;                // the same
  HostWord dwStatusValue;              // metafile session: word 4 of the status record
  HostWord dwPlatformResult;           // metafile session: what InitPlatformMetafileFilter returned
  StreamProc lpfnOutputProc;           // escape 81: the output goes through this procedure; default null
  int32_t nLineMode;                   // value of "Line Mode", told to hosts that record metafiles
  char szOutputFile[RAXEL_NAME_ROOM];  // metafile session: output name
  int32_t nSizeMode;
  int32_t nResolutionMode;
  int32_t nBitmapMode;
  int32_t nCompressionMode;
  TiffWriterState tiff;  // the writer's state; its resolutions and layout are settings
  double dWidth;         // inches, 0.03125..22.0, default 6.67
  double dHeight;        // inches, 0.03125..22.0, default 5.0
  // Session state of a platform with metafiles; nothing in the library sets these.
  double dPictureGeometry[4];
  double dRoundedWidth;
  double dRoundedHeight;
  uint32_t bPrinterInfo;  // not 0: printer information is available. Nothing in the library sets it
  Handle hOutFile;        // metafile session: output stream
  void *lpOutputMemory;   // metafile session into memory: locked address of the output block
} RasterSetup;

// One row of the string table.
typedef struct StringTableEntry {
  uint16_t id;
  const char *text;
} StringTableEntry;

// Input of escape 56, 28 bytes on every machine, at any address.
//
//    0 i32  display resolution, dots per inch      4 i32  not used
//    8 i32  picture resolution, picture units per inch; 0: it has none
//   12 i32  picture width, picture units          16 i32  picture height
//   20 i32  display width, dots                   24 i32  display height
typedef struct RasterPictureInfo {
  int32_t nDisplayResolution;
  int32_t nUnused;
  int32_t nPictureResolution;
  int32_t nPictureWidth;
  int32_t nPictureHeight;
  int32_t nDisplayWidth;
  int32_t nDisplayHeight;
} RasterPictureInfo;

// Output of escape 56, 12 bytes on every machine, at any address.
//
//    0 i32  width, pixels    4 i32  height, pixels
//    8 i32  bits per pixel, negative for grey: 1, -4, -8, 4, 8 or 24. A bitmap mode that has no
//           depth leaves this word as it was
typedef struct RasterInfoResult {
  int32_t nWidth;
  int32_t nHeight;
  int32_t nDepth;
} RasterInfoResult;

// The settings record in use. hRaster and lpRaster: on the export-session path; lpRaster names the
// record of the last call that locked one. hSetup and lpSetup: as the raster driver sees it.
RAXEL_EXPORT extern Handle hRaster;
RAXEL_EXPORT extern RasterSetup *lpRaster;
RAXEL_EXPORT extern Handle hSetup;
RAXEL_EXPORT extern RasterSetup *lpSetup;

// The filter's short name, "raxel". CreateSetup upper-cases it in place, for the rest of the
// process; it names a profile section and begins the default driver name.
RAXEL_EXPORT extern char *szFilter;

// The stem of the library's own file name ("raxel" of raxel.so), from which the default profile gets
// its name. CreateSetup fills it when it needs it and finds it empty; a value of the host's stays.
RAXEL_EXPORT extern char export_szDLLName[260];

// Names of profile keys and sections, searched from the top. The last entry, "Not Defined", stands
// for every id that is missing, and 26 is missing on purpose: the profile chooses strips or tiles
// under the key "Not Defined".
RAXEL_EXPORT extern const StringTableEntry gStringTable[25];

// Copies the text with this id (its low 16 bits) to `buffer` and returns the text's length, or 0 for
// an unknown id, which gets "Not Defined". At most `size` bytes are copied: a text and terminator
// that do not fit leave a prefix WITHOUT a terminator. 144 bytes hold every text. `module` is not
// used. A null buffer or a size below 1 copies nothing; the result is the same.
RAXEL_EXPORT int32_t LoadString(HostWord module, uint32_t id, char *buffer, int32_t size);

// Fills a record with the defaults; szAppName and nLineMode stay as they are. Returns 0.
RAXEL_EXPORT int32_t UseDefaultSettings(RasterSetup *record);

// Repairs the record at lpRaster: resolutions outside 32..400 become 96, a width outside
// 0.03125..22.0 becomes 6.67, such a height 5.0. Returns 0, -62 (a resolution was repaired) or -63
// (a size was; this hides -62).
RAXEL_EXPORT int32_t LimitCheck(void);

// ---- A setup's life

// Makes a settings record and returns its handle, which the host keeps until DestroySetup. It
// becomes hRaster and lpRaster.
//   reserved     not used
//   profile      the profile's file name, looked for under the directory in the environment variable
//                "INIDIR" first, then as given. Null or empty: export_szDLLName's file name cut at
//                its first point, and ".ini". 144 characters or more: not found
//   mode         the section with this mode's keys. Null or empty: the value of "~Mode" in the
//                section named by szFilter. Cut at 143 characters
//   application  kept in szAppName. Null or empty: szFilter. Cut at 143 characters
// Without a profile the record has the defaults, and no names. With one, the keys of the mode's
// section are read (LoadProfile); a section without "Driver" leaves zeros, not the defaults.
RAXEL_EXPORT Handle CreateSetup(HostWord reserved, const char *profile, const char *mode,
                                const char *application);

// Reads section szModeName of file szProfilePath into the record at lpRaster. Returns 1, or 0 when
// the section has no value of "Driver" (nothing else is read then). `flag` is not used.
//
//   Driver             szDriverName, 12 characters
//   Color Mode         103..107, default 103       Size Mode          600..603, default 602
//   Resolution Mode    307..310, default 309       Bitmap Mode        215..222, default 221
//   Line Mode          default 119                 Not Defined        772 strips or 771 tiles
//   Compression Mode   224..230, default 224
//   X Resolution, Y Resolution   default 96; read unless the resolution mode is 307 or 308
//   Width, Height                inches, default "6.67" and "5.0"; read unless the size mode is 600
//                                or 601, and then resolutions and sizes are repaired (LimitCheck)
//
// Codes are taken as they stand. A stored width or height lies over its default and keeps the
// default's remaining characters: 8 is read as 8.67. Modes 307, 308, 600 and 601 take their values,
// unchecked, from the display and the printer.
RAXEL_EXPORT int32_t LoadProfile(int32_t flag);

// Keeps a value of the host's in dwEditData and makes the record lpRaster. Returns 0, or -1 for the
// null handle.
RAXEL_EXPORT int32_t EditSetup(Handle setup, HostWord data);

// Frees a setup. lpRaster becomes null, and whichever of the other globals name this record. Returns
// 0, or 1 for the null handle. An export that runs with it (the call then comes from a callback)
// ends with code 300; the output of a metafile session that was never ended is closed.
RAXEL_EXPORT int32_t DestroySetup(Handle setup);

// Escapes write each key as they change it: nothing is left to save. Returns 1.
RAXEL_EXPORT int32_t SaveProfile(void);

// Sends later writes to a new temporary file: szReserved remembers the real profile, szProfilePath
// becomes the new name. No file is copied. Returns 1, or 0 for a null record.
RAXEL_EXPORT int32_t BackupProfile(RasterSetup *record);

// Does nothing and returns its first argument, whatever follows it.
RAXEL_EXPORT HostWord LoadProfileList(HostWord first, ...);

// ---- Escapes

// Reads or changes one option. Returns 1 when the escape was carried out, 0 for a number that is not
// in the table, -1 for the null handle, a refused value, a setter without input or a getter without
// output. The record becomes lpRaster. `input` and `output` are the host's, at any address.
//
//   number  size  what it does                                                  saved under, as
//      1     4    input 101..105: colour mode 103..107                          Color Mode, stored code
//      9     4    input 140..146: bitmap mode 215 to 219, 221, 222              Bitmap Mode, stored code
//     10     4    input 150..155: compression 224 to 227, 229, 230              Compression Mode, code
//     11     4    input 32..400: X resolution, dots per inch                    X Resolution
//     12     4    input 32..400: Y resolution                                   Y Resolution
//     13     8    input a double, 0.03125..22.0: width in inches                Width, ".3%g"
//     14     8    input a double, 0.03125..22.0: height in inches               Height, "%.3g"
//     16     -    output two i32: X and Y resolution; 0, 0 in mode 309
//     17     -    output two doubles: width and height; 0.0, 0.0 in mode 602
//     18     4    input 0..3: resolution mode 307..310; others change nothing
//     19     4    input 0..3: size mode 600..603; others change nothing
//     25     -    user data = the argument `input` itself
//     26     -    output one u32: the low 32 bits of the user data
//     56     -    input a RasterPictureInfo, output a RasterInfoResult (GetRasterInfo)
//     57     4    output one i32: the colour mode as 101..105; any other stored code is refused
//     81     4    host stream procedure (raxel/stream.h) = the argument `input` itself; null: none.
//                 The size may also be that of a pointer
//
// Another size than the table's is refused (-1) by escapes 1 to 14 and does nothing, with answer 1,
// on 18, 19, 57 and 81. With a `save` other than 0, escapes 1 to 14 also write the key to section
// szModeName of the profile; without a profile they write nothing. The width's format is a slip that
// profiles depend on: 6.67 is stored as .36.67, which reads back as 0.36.
RAXEL_EXPORT int32_t xEscapeSetup(Handle setup, int32_t escape, int32_t size, const void *input,
                                  void *output, int32_t save);

// Works out the pixel size and depth that an export of this picture will have, for the record at
// lpRaster (not for `setup`), and brings its size and resolution up to date: in mode 602 the
// picture's own size, in 600 the display's; in mode 309 the picture's own resolution, in 307 the
// display's. Resolutions of 0 change nothing. Pixels are rounded up.
RAXEL_EXPORT void GetRasterInfo(Handle setup, const RasterPictureInfo *picture, RasterInfoResult *result);

// Fits a picture's proportions into dWidth by dHeight of the record at lpRaster, shrinking one side
// by whole pixels. `pair` receives width and height in inches. The proportions are
// (|width| + 1) / (|height| + 1), both truncated to integers first.
RAXEL_EXPORT void AdjustAspect(double *pair, double width, double height);

// ---- Display and printer

// Tells the library about the display: size in dots, resolutions in dots per inch. Fields left 0
// stand for 1280 by 1078 dots at 96 by 96 dots per inch.
RAXEL_EXPORT void SetDisplayInfo(double width, double height, int16_t xResolution, int16_t yResolution);

// Tells the library about the printer: size in INCHES, resolutions in dots per inch.
RAXEL_EXPORT void SetPrinterInfo(double width, double height, int16_t xResolution, int16_t yResolution);

// The display's size in inches and its resolutions; each output may be null. Returns 0. The
// environment variable "DISPLAYINFO" goes before SetDisplayInfo: four decimal numbers, width, height,
// x and y resolution, each followed by exactly one other character ("1024 768 72 72"); a missing
// number is 0, and a resolution of 0 makes a size infinite or no number.
RAXEL_EXPORT int32_t GetDisplayInfo(double *width, double *height, int16_t *xResolution,
                                    int16_t *yResolution);

// The printer as SetPrinterInfo stored it, without defaults and without a division.
RAXEL_EXPORT int32_t GetPrinterInfo(double *width, double *height, int16_t *xResolution,
                                    int16_t *yResolution);

// A placeholder. Returns 0.
RAXEL_EXPORT int32_t GetDisplayColorInfo(HostWord unused);

RAXEL_END

#endif
