// Export settings: the settings record, profile loading, the setup calls and the setup escapes.
#ifndef RAXEL_SETTINGS_H
#define RAXEL_SETTINGS_H

#include "raxel/tiff.h"
#include "raxel/types.h"

RAXEL_BEGIN

#define RAXEL_NAME_ROOM 144

// One export configuration. The host knows it by its handle alone. All numbers native.
typedef struct RasterSetup {
  char szAppName[RAXEL_NAME_ROOM];      // profile section of the application
  char szModeName[RAXEL_NAME_ROOM];     // profile section of this mode's keys
  char szProfilePath[RAXEL_NAME_ROOM];  // full path of the profile; empty when none
  char szReserved[RAXEL_NAME_ROOM];
  char szDriverName[13];  // value of the key "Driver"
  uint32_t dwReserved1;
  HostWord dwEditData;  // second argument of the last EditSetup
  HostWord dwUserData;  // escapes 25 and 26
  int32_t nColorMode;   // 103..107
  uint32_t dwReserved2;
  // Session words.
  HostWord *lpStatus;    // host status record: [1] context, [2] callback
  HostWord dwPlatformA;  // kept for the platform's metafile hooks
  HostWord dwPlatformB;
  HostWord dwStatusValue;              // word 4 of the status record
  HostWord dwPlatformResult;           // what InitPlatformMetafileFilter returned
  StreamProc lpfnOutputProc;           // escape 81: output goes through this procedure
  int32_t nLineMode;                   // value of "Line Mode"
  char szOutputFile[RAXEL_NAME_ROOM];  // metafile session: output name
  int32_t nSizeMode;                   // 600..603
  int32_t nResolutionMode;             // 307..310
  int32_t nBitmapMode;                 // 215..219, 221, 222
  int32_t nCompressionMode;            // 224..230
  TiffWriterState tiff;                // the writer's state, resolutions and layout included
  double dWidth;                       // output size in inches, 0.03125..22.0
  double dHeight;
  // Session state of a platform with metafiles; nothing in the library sets these.
  double dPictureGeometry[4];
  double dRoundedWidth;
  double dRoundedHeight;
  uint32_t bPrinterInfo;  // stays 0: no printer information
  Handle hOutFile;        // metafile session: output stream
  void *lpOutputMemory;   // metafile session into memory: locked address of the output block
} RasterSetup;

typedef struct StringTableEntry {
  uint16_t id;
  const char *text;
} StringTableEntry;

// Seven signed 32-bit words, in on escape 56.
typedef struct RasterPictureInfo {
  int32_t nDisplayResolution;
  int32_t nUnused;
  int32_t nPictureResolution;
  int32_t nPictureWidth;
  int32_t nPictureHeight;
  int32_t nDisplayWidth;
  int32_t nDisplayHeight;
} RasterPictureInfo;

// Three 32-bit words, out on escape 56.
typedef struct RasterInfoResult {
  int32_t nWidth;
  int32_t nHeight;
  int32_t nDepth;  // negative for grey
} RasterInfoResult;

// The settings record in use: on the export-session path, and as the raster driver sees it.
RAXEL_EXPORT extern Handle hRaster;
RAXEL_EXPORT extern RasterSetup *lpRaster;
RAXEL_EXPORT extern Handle hSetup;
RAXEL_EXPORT extern RasterSetup *lpSetup;

// The filter's short name, "raxel"; CreateSetup upper-cases it in place.
RAXEL_EXPORT extern char *szFilter;
// The stem of the library's own file name; CreateSetup fills it when it needs it and it is empty.
RAXEL_EXPORT extern char export_szDLLName[260];

RAXEL_EXPORT extern const StringTableEntry gStringTable[25];

RAXEL_EXPORT int32_t LoadString(HostWord module, uint32_t id, char *buffer, int32_t size);
RAXEL_EXPORT int32_t UseDefaultSettings(RasterSetup *record);
RAXEL_EXPORT int32_t LimitCheck(void);

RAXEL_EXPORT Handle CreateSetup(HostWord reserved, const char *profile, const char *mode,
                                const char *application);
RAXEL_EXPORT int32_t LoadProfile(int32_t flag);
RAXEL_EXPORT int32_t EditSetup(Handle setup, HostWord data);
RAXEL_EXPORT int32_t DestroySetup(Handle setup);
RAXEL_EXPORT int32_t SaveProfile(void);
RAXEL_EXPORT int32_t BackupProfile(RasterSetup *record);
RAXEL_EXPORT HostWord LoadProfileList(HostWord first);

RAXEL_EXPORT int32_t xEscapeSetup(Handle setup, int32_t escape, int32_t size, const void *input,
                                  void *output, int32_t save);
RAXEL_EXPORT void GetRasterInfo(Handle setup, const RasterPictureInfo *picture, RasterInfoResult *result);
RAXEL_EXPORT void AdjustAspect(double *pair, double width, double height);

RAXEL_EXPORT void SetDisplayInfo(double width, double height, int16_t xResolution, int16_t yResolution);
RAXEL_EXPORT void SetPrinterInfo(double width, double height, int16_t xResolution, int16_t yResolution);
RAXEL_EXPORT int32_t GetDisplayInfo(double *width, double *height, int16_t *xResolution,
                                    int16_t *yResolution);
RAXEL_EXPORT int32_t GetPrinterInfo(double *width, double *height, int16_t *xResolution,
                                    int16_t *yResolution);
RAXEL_EXPORT int32_t GetDisplayColorInfo(HostWord unused);

RAXEL_END

#endif
