// SPDX-License-Identifier: MIT
// Export settings: the settings record, the profile it is loaded from, the setup calls and escapes.
//
// One settings record is one export configuration. A host makes it with CreateSetup, knows it by its
// handle alone, changes it through numbered escapes (xEscapeSetup), passes the handle to every
// export, and gives it back with DestroySetup:
//
//   Handle setup = CreateSetup(0, "painter.ini", "TIF Export", "Painter");
//   const int32_t rgb = RAXEL_ASK_MODE_RGB, user = RAXEL_ASK_RESOLUTION_USER, dpi = 300;
//   xEscapeSetup(setup, RAXEL_ESCAPE_SET_BITMAP_MODE, 4, &rgb, NULL, 0);
//   xEscapeSetup(setup, RAXEL_ESCAPE_SET_RESOLUTION_MODE, 4, &user, NULL, 0);
//   xEscapeSetup(setup, RAXEL_ESCAPE_SET_X_RESOLUTION, 4, &dpi, NULL, 1);  // saved in the profile as well
//   ...
//   DestroySetup(setup);
//
// Texts are NUL-terminated bytes, borrowed for the call. Numbers are written to and read from the
// profile as in the C locale, whatever the host's locale is.
#ifndef RAXEL_SETTINGS_H
#define RAXEL_SETTINGS_H

#include "raxel/setting_codes.h"
#include "raxel/settings_record.h"
#include "raxel/tiff.h"
#include "raxel/types.h"

RAXEL_BEGIN

// One row of the string table.
typedef struct StringTableEntry {
  uint16_t id;
  const char *text;
} StringTableEntry;

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
//   Color Mode         a RaxelStoredColors         Size Mode          a RaxelStoredSize
//   Resolution Mode    a RaxelStoredResolution     Bitmap Mode        a RaxelStoredMode
//   Line Mode          default RAXEL_STORED_LINES  Not Defined        a RaxelStoredLayout
//   Compression Mode   a RaxelStoredCompress
//   X Resolution, Y Resolution   default 96; read unless the resolution is the display's or printer's
//   Width, Height                inches, default "6.67" and "5.0"; read unless the size is the display's
//                                or the printer's, and then resolutions and sizes are repaired (LimitCheck)
//
// Codes are taken as they stand. A stored width or height lies over its default and keeps the default's
// remaining characters: 8 is read as 8.67. What the display and the printer say is taken unchecked.
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

// Reads or changes one option. `escape` is a RaxelEscape, and `size` the bytes of the value that it
// takes or gives. Returns RAXEL_ESCAPE_DONE; RAXEL_ESCAPE_UNKNOWN for a number that is not in the table;
// RAXEL_REFUSED for the null handle, a refused value, a setter without input or a getter without output.
// The record becomes lpRaster. `input` and `output` are the host's, at any address.
//
//   escape RAXEL_ESCAPE_...    size  what is special about it
//      1 SET_COLOR_MODE          4
//      9 SET_BITMAP_MODE         4
//     10 SET_COMPRESSION         4
//     11 SET_X_RESOLUTION        4   refuses what is not 32..400
//     12 SET_Y_RESOLUTION        4   the same
//     13 SET_WIDTH               8   refuses what is not 0.03125..22.0; saved with ".3%g"
//     14 SET_HEIGHT              8   the same; saved with "%.3g"
//     16 GET_RESOLUTION          -   0, 0 in mode RAXEL_STORED_RESOLUTION_PICTURE
//     17 GET_SIZE                -   0.0, 0.0 in mode RAXEL_STORED_SIZE_PICTURE
//     18 SET_RESOLUTION_MODE     4   a mode that is none changes nothing
//     19 SET_SIZE_MODE           4   the same
//     25 SET_USER_DATA           -
//     26 GET_USER_DATA           -
//     56 GET_RASTER_INFO         -   a RasterPictureInfo in, a RasterInfoResult out; see GetRasterInfo
//     57 GET_COLOR_MODE          4   refuses, and gives nothing, when the stored code is none
//     81 SET_OUTPUT_PROC         4   null: none. The size may also be that of a pointer
//
// Another size than the table's is refused by escapes 1 to 14 and does nothing, with answer 1, on 18, 19,
// 57 and 81. With a `save` other than 0, escapes 1 to 14 also write the key to section szModeName of the
// profile, options by their stored code; without a profile they write nothing. The width's format is a
// slip that profiles depend on: 6.67 is stored as .36.67, which reads back as 0.36.
RAXEL_EXPORT int32_t xEscapeSetup(Handle setup, int32_t escape, int32_t size, const void *input,
                                  void *output, int32_t save);

// Works out the pixel size and depth that an export of this picture will have, for the record at
// lpRaster (not for `setup`), and brings its size and resolution up to date where the size or resolution
// mode is the picture's or the display's. Resolutions of 0 change nothing. Pixels are rounded up.
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
