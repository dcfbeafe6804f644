// SPDX-License-Identifier: MIT
// The records of streams: how one is described, what a procedure is told, and what a handle stands for.
#ifndef RAXEL_STREAM_RECORD_H
#define RAXEL_STREAM_RECORD_H

#include <stdio.h>

#include "raxel/stream_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

// Optional second argument of kvlOpen. Clear all six words and set those in use.
typedef struct KvlStreamDesc {
  HostWord lpMemVar;  // address of a variable with a locked block's address, or the procedure's context
  HostWord dwLength;  // bytes in that block
  HostWord dwGrow;    // bytes added each time the block fills, 32 bits with a sign; it does not grow by
                      // writing when this is 0, and not at all when it is negative
  HostWord fpOpen;    // an already open FILE *
  HostWord lpfnProc;  // a StreamProc
  HostWord dwToken;   // the procedure's token, for KVL_ATTACH
} KvlStreamDesc;

// A stream procedure gets every call on its stream, unchanged and in order, and its answers are the
// results. Its first argument is the context at open, 0 for the tests, and the token at every other.
//
//   operation       argument 1              argument 2       answer
//   KVL_OP_OPEN     name                    the open mode    a token for the stream; 0 declines
//   KVL_OP_READ     buffer                  count            bytes moved, -1 for a failure
//   KVL_OP_WRITE    buffer                  count            bytes moved, -1 for a failure
//   KVL_OP_SEEK     address of an int32_t   a KvlOrigin      new position, -1 for a failure
//   KVL_OP_CLOSE    0                       0, or KVL_DELETE when the file is to be deleted
//   KVL_OP_EXISTS   name                    0                the result of kvlOpen
//   KVL_OP_DELETE   name                    0                the result of kvlOpen
//
// A procedure that declines a name stays attached, with token 0, while the file of that name opens:
// it then gets every call, and the file none.

// The record behind a stream handle. File streams keep a window of the file in hBuffer: index 0 is
// file offset lBufStart, and indices 0..nHigh hold bytes.
typedef struct KvlStream {
  FILE *fp;               // the open stream; null for memory blocks and procedures
  Handle hBuffer;         // the window of 12,288 bytes, or the caller's block
  void **lpBlockVar;      // the caller's variable, rewritten whenever the block grows
  int32_t nPos;           // index of the next byte to read or write
  int32_t nHigh;          // index of the last valid byte; -1 when there is none
  int32_t nLimit;         // last usable index
  int32_t lBufStart;      // file offset of index 0
  int32_t lNextRead;      // file offset just past the window; -1 marks a memory stream
  int32_t bDirty;         // 1 when the window holds bytes not yet written
  int32_t nGrow;          // bytes added to the block each time it fills
  int32_t lSize;          // size of the file at its last flush, or the block's nHigh at open
  StreamProc lpfnProc;    // every call goes there when it is not null
  HostWord dwProcToken;   // its first argument
  uint32_t nMode;         // the open mode
  int32_t bBorrowed;      // 1 when fp belongs to the caller and stays open
  int32_t nError;         // 0, or -1 once something failed
  uint16_t wDataFormat;   // KvlDataFormat, the order of typed data
  uint16_t wFloatFormat;  // kept for the caller
  uint16_t wLineFormat;   // KvlLineFormat, the line ending
  int32_t bIsNamed;       // 1 when opened by name
  int32_t bDocument;      // always 0
} KvlStream;

RAXEL_END

#endif
