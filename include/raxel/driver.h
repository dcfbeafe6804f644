// The raster driver: the filter driven like a graphics device, one numbered function at a time.
#ifndef RAXEL_DRIVER_H
#define RAXEL_DRIVER_H

#include "raxel/settings.h"
#include "raxel/types.h"

RAXEL_BEGIN

// One error: who raised it and its code. Also the reply format, 8 bytes.
typedef struct ErrEntry {
  uint32_t nFunc;
  int16_t nCode;
  int16_t nPad;  // 0
} ErrEntry;

// Entry index i of the error stack is errors[i + 1]; index -1 is FirstError.
#define RAXEL_ERR_CAPACITY 10

typedef struct RasterDriverState {
  Handle hOutFile;
  Handle hCellBuf;
  uint32_t bCellActive;
  uint32_t nCellRowsDone;
  uint8_t ColorTable[256][3];
  uint8_t BkColor[3];
  uint32_t nLastErrFunc;
  int16_t nLastError;
  uint32_t nErrMax;
  uint32_t nErrCount;
  uint32_t nErrLost;
  ErrEntry errors[1 + RAXEL_ERR_CAPACITY];  // FirstError, then ErrStack
  double DevWindow[6];                      // x1, y1, z1, x2, y2, z2
  double DevViewport[6];
  uint32_t nState;  // 1, 2, 4, 8 or 16
  uint32_t nCurFunc;
  uint32_t nReplyPos;
  uint32_t nReplySize;
  Handle hReplyBuf;
  uint8_t *lpReplyBuf;
  char szOutFile[RAXEL_NAME_ROOM];
  uint32_t nCellWidth;
  uint32_t nCellHeight;
  uint32_t nCellBits;
  HostWord *lpHostStatus;  // [1] context, [2] callback, [12] procedure context
  uint32_t nColorOp;       // 0..4
  Handle hSetupRef;
  uint32_t nResolution;
  uint16_t nCellFlags;
} RasterDriverState;

RAXEL_EXPORT extern Handle hEMData;
RAXEL_EXPORT extern RasterDriverState *lpEMData;
RAXEL_EXPORT extern const int32_t GDPSupport[8];

// Every driver function takes the address of a function record (its first 32-bit word is the
// opcode) and returns its argument.
typedef HostWord (*DriverFunction)(HostWord record);

RAXEL_EXPORT int32_t RASTER_dd_entry(uint32_t op, void *out, uint32_t unused);
RAXEL_EXPORT int32_t RASTER_dd_entry32(HostWord unused, uint32_t op, void *record);
RAXEL_EXPORT int32_t RASTER_initdvr(HostWord *record);
RAXEL_EXPORT int32_t RASTER_termdvr(void);
RAXEL_EXPORT DriverFunction getfunc(uint32_t opcode);
RAXEL_EXPORT HostWord d_noop(HostWord record);
RAXEL_EXPORT int32_t InquireSupport(uint32_t opcode, int32_t argument);
RAXEL_EXPORT int32_t InqGDPSupport(int32_t primitive);
RAXEL_EXPORT int32_t AllocGlobal(void);
RAXEL_EXPORT int32_t FreeGlobal(void);
RAXEL_EXPORT int32_t LockGlobal(HostWord unused);
RAXEL_EXPORT int32_t UnlockGlobal(HostWord unused);

RAXEL_EXPORT void push_er(int32_t code);
RAXEL_EXPORT HostWord d_popes(HostWord record);
RAXEL_EXPORT HostWord d_empes(HostWord value);
RAXEL_EXPORT HostWord dq_es(void);
RAXEL_EXPORT void mov2buf(const void *source, uint32_t count);

RAXEL_EXPORT HostWord d_opdv(HostWord record);
RAXEL_EXPORT HostWord d_cldv(HostWord record);
RAXEL_EXPORT HostWord d_begp(HostWord record);
RAXEL_EXPORT HostWord d_begpb(HostWord record);
RAXEL_EXPORT HostWord d_endp(HostWord record);
RAXEL_EXPORT HostWord ds_dvwn(HostWord record);
RAXEL_EXPORT HostWord ds_bgc(HostWord record);
RAXEL_EXPORT HostWord ds_dvvp(HostWord record);
RAXEL_EXPORT HostWord ds_vpsm(HostWord record);
RAXEL_EXPORT HostWord dq_dvwn(HostWord record);
RAXEL_EXPORT HostWord dq_dvvp(HostWord record);
RAXEL_EXPORT HostWord ds_axc(HostWord record);
RAXEL_EXPORT HostWord ds_tran(HostWord record);
RAXEL_EXPORT HostWord ds_clpr(HostWord record);
RAXEL_EXPORT HostWord ds_clip(HostWord record);
RAXEL_EXPORT HostWord ds_ct(HostWord record);
RAXEL_EXPORT HostWord ds_dm(HostWord record);
RAXEL_EXPORT HostWord d_reset(HostWord first, HostWord second);
RAXEL_EXPORT HostWord ds_fl(HostWord record);
RAXEL_EXPORT int32_t RASTER_escape(void);

RAXEL_EXPORT HostWord d_gdp(HostWord record);
RAXEL_EXPORT HostWord d_ca(HostWord record);
RAXEL_EXPORT void RasterWriteCellData(Handle pixels, uint32_t width, uint32_t rows, uint32_t resolution,
                                      uint32_t bitsPerPixel, int32_t kind);

// Default attribute tables, for the host; the driver reads none of them.
RAXEL_EXPORT extern const uint8_t ln_def[64];
RAXEL_EXPORT extern const uint8_t tx_def[64];
RAXEL_EXPORT extern const uint8_t mk_def[64];
RAXEL_EXPORT extern const uint8_t fl_def[64];
RAXEL_EXPORT extern const uint8_t eg_def[64];
RAXEL_EXPORT extern const uint8_t dtr_def[64];

RAXEL_END

#endif
