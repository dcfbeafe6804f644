// SPDX-License-Identifier: MIT
// The raster driver's state block, which a host reaches through lpEMData.
#ifndef RAXEL_DRIVER_STATE_H
#define RAXEL_DRIVER_STATE_H

#include "raxel/driver_codes.h"
#include "raxel/settings_record.h"
#include "raxel/types.h"

RAXEL_BEGIN

// One error: who raised it and its code. 8 bytes, in the block and in replies.
typedef struct ErrEntry {
  uint32_t nFunc;  // nCurFunc at the time
  int16_t nCode;   // 300, 303 or 901
  int16_t nPad;    // 0
} ErrEntry;

#define RAXEL_ERR_CAPACITY 10

// From a successful op 0 to op -1; zero-filled at the start. A host reaches it through lpEMData.
typedef struct RasterDriverState {
  Handle hOutFile;             // output stream while the device is open
  Handle hCellBuf;             // rows collected between begin and end raster
  uint32_t bCellActive;        // 1 between begin and end raster
  uint32_t nCellRowsDone;      // rows placed into hCellBuf so far
  uint8_t ColorTable[256][3];  // R, G, B
  uint8_t BkColor[3];          // background R, G, B; kept only
  uint32_t nLastErrFunc;       // nCurFunc of the last error pushed
  int16_t nLastError;          // its code; cleared before each function and RESULT of the dispatch after
  uint32_t nErrMax;            // capacity of the error stack: 0 unless the host stores 1 to 10 here
  uint32_t nErrCount;          // entries on it
  uint32_t nErrLost;           // pushes that found it full
  ErrEntry FirstError;         // first error since the stack was emptied; see push_er
  ErrEntry ErrStack[RAXEL_ERR_CAPACITY];  // bottom first; FirstError lies right before it
  double DevWindow[6];                    // x1, y1, z1, x2, y2, z2
  double DevViewport[6];                  // the same order; z1 and z2 are never set
  uint32_t nState;                        // RaxelDeviceState
  uint32_t nCurFunc;                      // the host's tag for errors; the driver only reads it
  uint32_t nReplyPos;                     // bytes of replies so far; nothing rewinds it
  uint32_t nReplySize;                    // room for replies, as the host asked
  Handle hReplyBuf;
  uint8_t *lpReplyBuf;  // what the host reads replies from; the driver's
  char szOutFile[RAXEL_NAME_ROOM];
  uint32_t nCellWidth;  // of the picture between begin and end raster
  uint32_t nCellHeight;
  uint32_t nCellBits;
  HostWord *lpHostStatus;  // the host's: [1] context, [2] callback, [12] procedure context
  uint32_t nColorOp;       // RaxelTreatment, from the setup's colour mode
  Handle hSetupRef;
  uint32_t nResolution;  // dots per inch from viewport mode 1; 0: none
  uint16_t nCellFlags;   // bytes 14 and 15 of begin raster's data; kept only
} RasterDriverState;

RAXEL_EXPORT extern Handle hEMData;
RAXEL_EXPORT extern RasterDriverState *lpEMData;  // null outside a session

RAXEL_END

#endif
