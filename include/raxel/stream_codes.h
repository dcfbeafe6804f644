// SPDX-License-Identifier: MIT
// The numbers of streams: open modes, seek origins, operations of a stream procedure, formats.
#ifndef RAXEL_STREAM_CODES_H
#define RAXEL_STREAM_CODES_H

// Open modes, bits of kvlOpen's `mode`. A file opens as "r"; as "w+" with KVL_WRITE; as "r+" with
// KVL_UPDATE, which wins over it; and as "w+" with KVL_CREATE, which wins over both.
#define KVL_READ 0x0u           // nothing else: reading only
#define KVL_WRITE 0x1u          // writing, from an empty file
#define KVL_UPDATE 0x2u         // writing into the file as it is
#define KVL_DELETE 0x200u       // no stream: deletes the named file
#define KVL_CREATE 0x1000u      // an empty file, or an empty block
#define KVL_EXISTS 0x4000u      // no stream: tests whether the named file exists
#define KVL_OUTPUT 0x1001u      // 4097: how the filter opens every output
#define KVL_ATTACH 0xFFFFFFFFu  // a stream on fpOpen, or on lpfnProc with dwToken

// Where kvlSeek counts from.
enum KvlOrigin {
  KVL_FROM_START = 0,     // the first byte
  KVL_FROM_POSITION = 1,  // the position
  KVL_FROM_END = 2        // behind the last byte
};

// Operations of a stream procedure (StreamProc); raxel/stream.h says what comes with each.
enum KvlOp {
  KVL_OP_OPEN = 1,    // open a name: a token, or 0 to decline
  KVL_OP_READ = 2,    // read into a buffer
  KVL_OP_WRITE = 3,   // write from a buffer
  KVL_OP_SEEK = 4,    // move the position
  KVL_OP_CLOSE = 5,   // close; delete the file as well when argument 2 is KVL_DELETE
  KVL_OP_EXISTS = 6,  // does a name exist?
  KVL_OP_DELETE = 7   // delete a name
};

// Line endings: wLineFormat, kvlSetLineFormat and kvlGetLineFormat.
enum KvlLineFormat {
  KVL_LINE_CRLF = 0,  // a carriage return and a line feed; so does every number not listed
  KVL_LINE_CR = 1,    // a carriage return
  KVL_LINE_LF = 2     // a line feed: how streams open
};

// Order of typed data: wDataFormat and kvlSetDataFormat.
enum KvlDataFormat {
  KVL_DATA_LITTLE_ENDIAN = 0,  // least significant byte first: how streams open, and every other number
  KVL_DATA_BIG_ENDIAN = 1      // most significant byte first
};

#endif
