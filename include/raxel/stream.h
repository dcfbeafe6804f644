// Streams: disk files, borrowed standard I/O streams, growing memory blocks and host procedures
// behind one set of calls, with line and typed I/O on top.
#ifndef RAXEL_STREAM_H
#define RAXEL_STREAM_H

#include <stdio.h>

#include "raxel/types.h"

RAXEL_BEGIN

#define KVL_READ 0x0u
#define KVL_WRITE 0x1u
#define KVL_UPDATE 0x2u
#define KVL_DELETE 0x200u
#define KVL_CREATE 0x1000u
#define KVL_EXISTS 0x4000u
#define KVL_OUTPUT 0x1001u  // 4097: how the filter opens every output
#define KVL_ATTACH 0xFFFFFFFFu

// Optional second argument of kvlOpen. Clear all six words and set those in use.
typedef struct KvlStreamDesc {
  HostWord lpMemVar;  // address of a variable with a locked block's address, or the procedure's context
  HostWord dwLength;  // bytes in that block
  HostWord dwGrow;    // bytes added each time the block fills
  HostWord fpOpen;    // an already open FILE *
  HostWord lpfnProc;  // a StreamProc
  HostWord dwToken;   // the procedure's token, for KVL_ATTACH
} KvlStreamDesc;

// The record behind a stream handle.
typedef struct KvlStream {
  FILE *fp;
  Handle hBuffer;
  void **lpBlockVar;
  int32_t nPos;
  int32_t nHigh;
  int32_t nLimit;
  int32_t lBufStart;
  int32_t lNextRead;
  int32_t bDirty;
  int32_t nGrow;
  int32_t lSize;
  StreamProc lpfnProc;
  HostWord dwProcToken;
  uint32_t nMode;
  int32_t bBorrowed;
  int32_t nError;
  uint16_t wDataFormat;
  uint16_t wFloatFormat;
  uint16_t wLineFormat;
  int32_t bIsNamed;
  int32_t bDocument;
} KvlStream;

RAXEL_EXPORT Handle kvlOpen(const char *name, const KvlStreamDesc *descriptor, uint32_t mode);
RAXEL_EXPORT int32_t kvlClose(Handle stream);
RAXEL_EXPORT int32_t kvlCloseandDelete(Handle stream, const char *name);
RAXEL_EXPORT int32_t kvlRead(Handle stream, void *buffer, int32_t count);
RAXEL_EXPORT int32_t kvlWrite(Handle stream, const void *buffer, int32_t count);
RAXEL_EXPORT int32_t kvlSeek(Handle stream, int32_t offset, int32_t whence);
RAXEL_EXPORT int32_t kvlCopy(const char *source, const char *destination);

RAXEL_EXPORT int32_t kvlReadLine(Handle stream, char *buffer, int32_t max);
RAXEL_EXPORT int32_t kvlWriteLine(Handle stream, const char *text, int32_t length);
RAXEL_EXPORT int32_t kvlSetLineFormat(Handle stream, int32_t format);
RAXEL_EXPORT int32_t kvlGetLineFormat(Handle stream);

RAXEL_EXPORT int32_t kvlSetDataFormat(Handle stream, uint16_t dataFormat, uint16_t floatFormat);
RAXEL_EXPORT int32_t kvlGetDataFormat(Handle stream, uint16_t *dataFormat, uint16_t *floatFormat);
RAXEL_EXPORT int32_t kvlReadChar(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadShort(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadLong(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadFloat(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadDouble(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadStruct(Handle stream, void *data, const char *format, int32_t count);
RAXEL_EXPORT int32_t kvlWriteChar(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteShort(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteLong(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteFloat(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteDouble(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteStruct(Handle stream, const void *data, const char *format, int32_t count);
RAXEL_EXPORT int32_t GetPadWidth(const char *format);
RAXEL_EXPORT const char *GetUnionSize(const char *format, int32_t *size);
RAXEL_EXPORT void kvlNativeToLE(uint64_t value, uint8_t *out, int32_t n);
RAXEL_EXPORT void kvlNativeToBE(uint64_t value, uint8_t *out, int32_t n);

RAXEL_EXPORT int32_t FillKvlIOBuf(Handle stream);
RAXEL_EXPORT int32_t FlushKvlIO(Handle stream);
RAXEL_EXPORT int32_t unxSeek(FILE *stream, int32_t offset, int32_t whence);

RAXEL_EXPORT int32_t KVLGetTempFileName(uint32_t drive, const char *prefix, uint32_t unique, char *out);
RAXEL_EXPORT char *s_getpath(char *out, const char *path);
RAXEL_EXPORT char *s_getname(char *out, const char *path);

RAXEL_END

#endif
