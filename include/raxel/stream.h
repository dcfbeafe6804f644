// SPDX-License-Identifier: MIT
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
#include "raxel/stream_record.h"
#include "raxel/typed_stream.h"
#include "raxel/types.h"

RAXEL_BEGIN

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

// Moves the position: `offset` bytes from where `whence` says, a KvlOrigin.
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
