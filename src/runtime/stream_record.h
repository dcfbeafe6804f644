// SPDX-License-Identifier: MIT
// The record behind a stream handle, as the stream sources see it.
//
// A stream moves bytes through a window of the file: buffer index 0 is file offset lBufStart,
// indices 0..nHigh hold bytes, nPos is the next one to read or write, and nLimit is the last index
// there is. While the window is clean, lNextRead is the offset just past its bytes. A memory stream
// is the same with the caller's block as its one window; lNextRead is -1 there. A stream with a
// procedure has no window: every call goes to the host.
#pragma once

#include <cstdio>
#include <span>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/handle_layout.h"

namespace runtime {

constexpr int32_t kBufferSize = 12288;  // of a file stream's window

struct Stream : KvlStream {
  int32_t bBytesLost;  // 1 once written bytes could not be flushed and are gone; close reports it
};

// Null for the null handle.
inline Stream *streamOf(Handle handle) {
  return handle == 0 ? nullptr : static_cast<Stream *>(static_cast<void *>(dataOf(handle)));
}

inline uint8_t *windowOf(const Stream &stream) {
  return dataOf(stream.hBuffer);
}

inline bool isMemory(const Stream &stream) {
  return stream.lNextRead == -1;
}

inline bool isOpenForWriting(const Stream &stream) {
  return (stream.nMode & (KVL_WRITE | KVL_UPDATE)) != 0;
}

inline int32_t fail(Stream &stream) {
  stream.nError = -1;
  return -1;
}

// Passes a call to the stream's procedure. Signed arguments go over sign-extended.
inline int32_t askProcedure(const Stream &stream, KvlOp op, const void *address, int32_t argument) {
  return static_cast<int32_t>(stream.lpfnProc(stream.dwProcToken, op, reinterpret_cast<HostWord>(address),
                                              static_cast<HostWord>(argument)));
}

// Opens a window without bytes at a file offset.
void moveWindow(Stream &stream, int32_t offset);
// Fills the window from lNextRead. Returns the bytes found, 0 at the end of the data, -1 on failure.
int32_t fillWindow(Stream &stream);
// Writes the window's bytes to the file, or grows a memory block by nGrow. Returns the bytes
// written, 0 for a clean file, 1 for a grown block, -1 on failure.
int32_t flushWindow(Stream &stream);
// Makes the block of a memory stream end at index `limit`. Returns whether it could.
bool growBlock(Stream &stream, int64_t limit);

// The byte calls for streams without a procedure; the results are those of kvlRead and kvlWrite.
int32_t readBytes(Stream &stream, std::span<uint8_t> to);
int32_t writeBytes(Stream &stream, std::span<const uint8_t> from);
int32_t seekTo(Stream &stream, int32_t offset, int32_t whence);

// Moves a file stream that is open for writing to a position where bytes will be written next, and does
// not read what lies there: to patch four bytes costs four bytes then. The position just past the
// window's bytes is reached without a flush. For the library's own steps back and forth between two
// calls of the host, which finds its streams as kvlSeek leaves them.
void seekToWrite(Stream &stream, int32_t position);

// A line as it came from a stream: the bytes stored, and whether the data ended (or failed) before
// a line ending was found.
struct Line {
  int32_t stored;
  bool ended;
};
Line readLine(Handle handle, char *buffer, int32_t max);

}  // namespace runtime
