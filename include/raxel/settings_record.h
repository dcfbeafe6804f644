// SPDX-License-Identifier: MIT
// The settings record: what a setup handle stands for, and the records in use; and those of escape 56.
#ifndef RAXEL_SETTINGS_RECORD_H
#define RAXEL_SETTINGS_RECORD_H

#include "raxel/setting_codes.h"
#include "raxel/tiff.h"
#include "raxel/types.h"

RAXEL_BEGIN

// Bytes of every name in the record, terminator included.
#define RAXEL_NAME_ROOM 144

// The record behind a setup handle: one zero-initialised moveable block. All numbers are native. The
// default is what UseDefaultSettings sets. Codes are those that a profile holds (RAXEL_STORED_...).
typedef struct RasterSetup {
  char szAppName[RAXEL_NAME_ROOM];      // profile section of the application
  char szModeName[RAXEL_NAME_ROOM];     // profile section of this mode's keys; default empty
  char szProfilePath[RAXEL_NAME_ROOM];  // full path of the profile; empty when none was found
  char szReserved[RAXEL_NAME_ROOM];     // the real profile after BackupProfile; default empty
  char szDriverName[13];                // value of the key "Driver"; default szFilter and ".1"
  uint32_t dwReserved1;                 // 0
  HostWord dwEditData;                  // second argument of the last EditSetup; default 0
  HostWord dwUserData;                  // escapes 25 and 26; default 0
  int32_t nColorMode;                   // RaxelStoredColors
  uint32_t dwReserved2;                 // 0
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
  int32_t nSizeMode;                   // RaxelStoredSize
  int32_t nResolutionMode;             // RaxelStoredResolution
  int32_t nBitmapMode;                 // RaxelStoredMode
  int32_t nCompressionMode;            // RaxelStoredCompress
  TiffWriterState tiff;                // the writer's state; its resolutions and layout are settings
  double dWidth;                       // inches, 0.03125..22.0, default 6.67
  double dHeight;                      // inches, 0.03125..22.0, default 5.0
  // Session state of a platform with metafiles; nothing in the library sets these.
  double dPictureGeometry[4];
  double dRoundedWidth;
  double dRoundedHeight;
  uint32_t bPrinterInfo;  // not 0: printer information is available. Nothing in the library sets it
  Handle hOutFile;        // metafile session: output stream
  void *lpOutputMemory;   // metafile session into memory: locked address of the output block
} RasterSetup;

// The settings record in use. hRaster and lpRaster: on the export-session path; lpRaster names the
// record of the last call that locked one. hSetup and lpSetup: as the raster driver sees it.
RAXEL_EXPORT extern Handle hRaster;
RAXEL_EXPORT extern RasterSetup *lpRaster;
RAXEL_EXPORT extern Handle hSetup;
RAXEL_EXPORT extern RasterSetup *lpSetup;

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

RAXEL_END

#endif
