// Streams: disk files, borrowed standard I/O streams, growing memory blocks and host procedures
// behind one set of calls, with line and typed I/O on top.
//
//   Handle out = kvlOpen("picture.tif", NULL, KVL_OUTPUT);
//   kvlWrite(out, "II*", 4);
//   if (kvlClose(out) != 0) ...   // a full disk shows here at the latest
//
// A handle names a stream from kvlOpen to kvlClose. Positions are byte offsets from 0 to 2^31 - 1.
// Failures are return values only. They are sticky: once a call on a file or a memory block has
// failed, nError is -1, and a write that would need a flush answers 0 without trying.
//
// A null buffer and a negative count move 0 bytes, and so does a null handle. Calls that move none by
// themselves answer a null handle with -1, and so do kvlReadLine, FillKvlIOBuf and FlushKvlIO; those that
// only set or tell a format answer 0.
#ifndef RAXEL_STREAM_H
#define RAXEL_STREAM_H

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
//   op  call     argument 1              argument 2   answer
//    1  open     name                    mode         a token for the stream; 0 declines
//    2  read     buffer                  count        bytes moved, -1 for a failure
//    3  write    buffer                  count        bytes moved, -1 for a failure
//    4  seek     address of an int32_t   whence       new position, -1 for a failure
//    5  close    0                       0, or 512 when the file is to be deleted
//    6  exists   name                    0            the result of kvlOpen
//    7  delete   name                    0            the result of kvlOpen
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
  uint16_t wDataFormat;   // order of typed data: 1 = most significant byte first, else the last
  uint16_t wFloatFormat;  // kept for the caller
  uint16_t wLineFormat;   // line ending: 1 = CR, 2 = LF, else CR LF
  int32_t bIsNamed;       // 1 when opened by name
  int32_t bDocument;      // always 0
} KvlStream;

// Opens a stream.
//   name        a file's name; null or empty for a memory block, whose variable `descriptor` names;
//               "stdin" and "stdout" are the process's own streams and stay open
//   descriptor  null for plain files; not needed after the call, but the block's variable is, until
//               the close
// Returns the stream's handle, or 0. Folders do not open.
//
// A memory block opened without KVL_CREATE ends before its trailing zero bytes, less one byte more:
// the close of a written block appends one byte 0xFF, which is that byte.
//
// KVL_EXISTS returns a value other than -1 for a file that can be read, -1 otherwise. KVL_DELETE
// returns 1 when the file was removed, 0 when not.
RAXEL_EXPORT Handle kvlOpen(const char *name, const KvlStreamDesc *descriptor, uint32_t mode);

// Closes a stream and frees its record; the handle is dead afterwards. Returns 0, or -1 when written
// bytes did not reach the file, the file did not close, or the handle is 0. A memory block stays the
// caller's, and its variable names it wherever it has moved. Always 0 for a procedure.
RAXEL_EXPORT int32_t kvlClose(Handle stream);

// Closes a stream and deletes the file called `name`. Returns 0, -1 for the null handle.
RAXEL_EXPORT int32_t kvlCloseandDelete(Handle stream, const char *name);

// Move `count` bytes at the position, which goes along. Return the bytes moved, fewer at the end of
// the data; -1 for a failure.
RAXEL_EXPORT int32_t kvlRead(Handle stream, void *buffer, int32_t count);
RAXEL_EXPORT int32_t kvlWrite(Handle stream, const void *buffer, int32_t count);

// Moves the position: `offset` from the start (whence 0), from the position (1) or from the end (2).
// Returns the new position, or -1. A seek by 0 from the position tells it. A stream opened without
// KVL_WRITE and KVL_UPDATE cannot go past lSize from the start or the position. A memory block grows
// to hold a target behind it.
RAXEL_EXPORT int32_t kvlSeek(Handle stream, int32_t offset, int32_t whence);

// Copies a file over another. Returns the bytes written minus the bytes read: 0 when all went
// through, minus the source's size when the destination does not open. -1 when the source does not
// open, and the destination then stays as it was; also when the counts agree but a read or a close
// failed.
RAXEL_EXPORT int32_t kvlCopy(const char *source, const char *destination);

// Reads a line of at most `max` bytes, without its ending (LF, CR LF or CR). The text is terminated
// as long as it is shorter than `max`. Returns its length; -1 when the data ended or failed before a
// line ending, also with the text of an unfinished last line in the buffer.
RAXEL_EXPORT int32_t kvlReadLine(Handle stream, char *buffer, int32_t max);

// Writes `length` bytes of text and the line ending that is set, each of its bytes on its own.
// Returns what writing the text did, or the failing result of the ending.
RAXEL_EXPORT int32_t kvlWriteLine(Handle stream, const char *text, int32_t length);

// Sets the line ending of kvlWriteLine (see wLineFormat; 2 at open) and returns 0.
RAXEL_EXPORT int32_t kvlSetLineFormat(Handle stream, int32_t format);

// Looks at the data from the position on for the first line ending, then goes to the start. Returns
// 2 for LF, 0 for CR LF, 1 for CR, and -1 where there is none.
RAXEL_EXPORT int32_t kvlGetLineFormat(Handle stream);

// Set and return the two format words of a stream. Both return 0; either address may be null.
RAXEL_EXPORT int32_t kvlSetDataFormat(Handle stream, uint16_t dataFormat, uint16_t floatFormat);
RAXEL_EXPORT int32_t kvlGetDataFormat(Handle stream, uint16_t *dataFormat, uint16_t *floatFormat);

// Read `count` native items of 2, 4, 4 or 8 bytes, at any address, out of the stream's byte order.
// Return count, or 0 when not all of the bytes came. kvlReadChar reads one byte, whatever the count,
// and returns what kvlRead does.
RAXEL_EXPORT int32_t kvlReadChar(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadShort(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadLong(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadFloat(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadDouble(Handle stream, void *data, int32_t count);

// Write native items in the stream's byte order, one kvlWrite each. Return count; 0 or -1 when a
// write failed. kvlWriteChar writes one byte, whatever the count.
RAXEL_EXPORT int32_t kvlWriteChar(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteShort(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteLong(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteFloat(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteDouble(Handle stream, const void *data, int32_t count);

// Move `count` native records, member by member, as a format describes them:
//
//   C S L F D   a member of 1, 2, 4, 4, 8 bytes, aligned to its size; digits before it repeat it
//   { ... }     a nested record: starts at the largest alignment inside
//   ( | | )     a union: as many raw bytes as its largest alternative has, in no byte order
//   [ ... ]     members that are stepped over
//   P           nothing, and so does a closing character
//
// Letters may be small. Padding is in the record only, not in the file; reading clears it, but for
// the byte before a short. Every record ends at a multiple of its largest alignment. Return the
// number of records, or the result of the member that failed when that is below 1. An unknown
// character sets the count so far to -1.
RAXEL_EXPORT int32_t kvlReadStruct(Handle stream, void *data, const char *format, int32_t count);
RAXEL_EXPORT int32_t kvlWriteStruct(Handle stream, const void *data, const char *format, int32_t count);

// The largest alignment between the opening brace or parenthesis at `format` and its match.
RAXEL_EXPORT int32_t GetPadWidth(const char *format);

// Measures the union at `format`: stores its size, and returns the character after the group.
RAXEL_EXPORT const char *GetUnionSize(const char *format, int32_t *size);

// Store the n low-order bytes of a value, least or most significant byte first. Bytes past the
// eighth are 0.
RAXEL_EXPORT void kvlNativeToLE(uint64_t value, uint8_t *out, int32_t n);
RAXEL_EXPORT void kvlNativeToBE(uint64_t value, uint8_t *out, int32_t n);

// Fills the window from lNextRead. Returns the bytes found, 0 at the end of the data (always for a
// memory block), -1 for a failure.
RAXEL_EXPORT int32_t FillKvlIOBuf(Handle stream);

// Writes the window to the file and empties it; grows a memory block by nGrow. Returns the bytes
// written, 1 for a grown block, 0 when there was nothing to write, -1 for a failure.
RAXEL_EXPORT int32_t FlushKvlIO(Handle stream);

// fseek, then the position it led to; -1 for a failure.
RAXEL_EXPORT int32_t unxSeek(FILE *stream, int32_t offset, int32_t whence);

// Stores the name of a file in "/tmp" that does not exist, below 144 bytes. Returns 1, or 0 when
// there is none. The first three arguments are not used, and no file is created.
RAXEL_EXPORT int32_t KVLGetTempFileName(uint32_t drive, const char *prefix, uint32_t unique, char *out);

// Copies a path up to and with its last backslash, or failing that its last slash; nothing without
// either. Returns `out`, which needs room for the whole path and may be it.
RAXEL_EXPORT char *s_getpath(char *out, const char *path);

// Copies what follows the last backslash, or failing that the last slash, or failing that the last
// colon, up to its last dot. Returns `out`, as for s_getpath.
RAXEL_EXPORT char *s_getname(char *out, const char *path);

RAXEL_END

#endif
