// SPDX-License-Identifier: MIT
// kvlRead, kvlWrite and kvlSeek.
//
// Writing behaves as one store a byte, with a flush whenever the next byte finds the window full, and
// does the same in bulk: whole spans between two flushes, and runs of whole windows straight from
// the caller's memory.
#include <algorithm>
#include <cstring>

#include "runtime/stream_disk.h"

namespace runtime {

namespace {

// How many bytes fit between the position and the window's end; 0 where a flush is due.
size_t roomInWindow(const Stream &stream) {
  return static_cast<size_t>(stream.nLimit - stream.nPos + 1);
}

// Stores bytes that fit.
void storeInWindow(Stream &stream, std::span<const uint8_t> from) {
  std::memcpy(windowOf(stream) + stream.nPos, from.data(), from.size());
  stream.nPos += static_cast<int32_t>(from.size());
  stream.nHigh = std::max(stream.nHigh, stream.nPos - 1);
  stream.bDirty = 1;
}

// Room for the next byte to write. Returns 1, or what kvlWrite then answers: 0 when an earlier
// failure forbids another try, -1 when the flush fails.
int32_t makeRoom(Stream &stream) {
  if (stream.nError != 0) return 0;
  if (flushWindow(stream) < 0) return fail(stream);
  // A window full of bytes that were only read flushes nothing and still has to give way.
  if (stream.nPos > stream.nLimit) moveWindow(stream, stream.lBufStart + stream.nPos);
  return 1;
}

// How many bytes of a long write can skip an empty window: all whole windows but the last piece,
// which stays in the window as if it had been stored there byte by byte.
size_t straightLength(const Stream &stream, size_t left) {
  const bool empty = !isMemory(stream) && stream.nHigh < 0 && stream.nError == 0;
  if (!empty) return 0;
  const size_t length = (left - 1) / kBufferSize * kBufferSize;
  return stream.lBufStart + static_cast<int64_t>(length) > INT32_MAX ? 0 : length;
}

// Writes whole windows straight to the file. When that fails, the window that failed is kept as if
// its own flush had failed.
int32_t writeStraight(Stream &stream, std::span<const uint8_t> from) {
  const int32_t written = writeAt(stream, stream.lBufStart, from);
  const int32_t whole = written / kBufferSize * kBufferSize;
  if (whole != 0) {
    moveWindow(stream, stream.lBufStart + whole);
    stream.lSize = sizeAfterWrite(stream, stream.lBufStart);
  }
  if (static_cast<size_t>(whole) == from.size()) return whole;
  std::memcpy(windowOf(stream), from.data() + whole, kBufferSize);
  stream.nPos = kBufferSize;
  stream.nHigh = kBufferSize - 1;
  stream.bDirty = 1;
  return fail(stream);
}

// Whether a target can be reached without the file: it is a byte of the window. The place just past the
// last one is not.
bool isInWindow(const Stream &stream, int64_t target) {
  if (isMemory(stream)) return target <= stream.nLimit;
  return target >= stream.lBufStart && target <= int64_t{stream.lBufStart} + stream.nHigh;
}

int32_t moveWithin(Stream &stream, int64_t target) {
  stream.nPos = static_cast<int32_t>(target - stream.lBufStart);
  return static_cast<int32_t>(target);
}

int32_t growAndMove(Stream &stream, int64_t target) {
  if (!growBlock(stream, target + stream.nGrow)) return fail(stream);
  return moveWithin(stream, target);
}

void flushOrLose(Stream &stream) {
  if (stream.bDirty == 0 || flushWindow(stream) >= 0) return;
  stream.bBytesLost = 1;
  stream.bDirty = 0;
}

// Moves through the file itself, and fills the window from the new position on.
int32_t seekFile(Stream &stream, int32_t offset, int32_t whence) {
  flushOrLose(stream);
  const int32_t position = positionOf(stream, offset, whence);
  if (position < 0) return fail(stream);
  if (position == INT32_MAX) {  // a position, and nothing can be read at it
    moveWindow(stream, position);
    return position;
  }
  stream.lNextRead = position;
  return fillWindow(stream) < 0 ? -1 : position;
}

}  // namespace

int32_t readBytes(Stream &stream, std::span<uint8_t> to) {
  size_t done = 0;
  while (done < to.size()) {
    if (stream.nPos > stream.nHigh) {
      const int32_t filled = fillWindow(stream);
      if (filled < 0) return fail(stream);
      if (filled == 0) break;
    }
    const size_t here = static_cast<size_t>(stream.nHigh - stream.nPos) + 1;
    const size_t n = std::min(here, to.size() - done);
    std::memcpy(to.data() + done, windowOf(stream) + stream.nPos, n);
    stream.nPos += static_cast<int32_t>(n);
    done += n;
  }
  return static_cast<int32_t>(done);
}

int32_t writeBytes(Stream &stream, std::span<const uint8_t> from) {
  size_t done = 0;
  while (done < from.size()) {
    if (stream.nPos > stream.nLimit) {
      const int32_t room = makeRoom(stream);
      if (room < 1) return room;
    }
    if (const size_t straight = straightLength(stream, from.size() - done); straight != 0) {
      if (writeStraight(stream, from.subspan(done, straight)) < 0) return -1;
      done += straight;
    }
    const size_t n = std::min(roomInWindow(stream), from.size() - done);
    storeInWindow(stream, from.subspan(done, n));
    done += n;
  }
  return static_cast<int32_t>(done);
}

int32_t seekTo(Stream &stream, int32_t offset, int32_t whence) {
  const int64_t here = int64_t{stream.lBufStart} + stream.nPos;
  if (whence == KVL_FROM_POSITION && offset == 0) return here > INT32_MAX ? -1 : static_cast<int32_t>(here);
  if (whence == KVL_FROM_START || whence == KVL_FROM_POSITION) {
    const int64_t target = whence == KVL_FROM_START ? offset : here + offset;
    if (target < 0 || target > INT32_MAX) return fail(stream);
    if (target > stream.lSize && !isOpenForWriting(stream)) return fail(stream);
    if (isInWindow(stream, target)) return moveWithin(stream, target);
    if (isMemory(stream)) return growAndMove(stream, target);
    return seekFile(stream, static_cast<int32_t>(target), KVL_FROM_START);
  }
  if (!isMemory(stream)) return seekFile(stream, offset, whence);
  const int64_t target = int64_t{stream.nHigh} + 1 + offset;
  if (whence != KVL_FROM_END || target < 0) return fail(stream);
  // Just past the block is still no reason to grow it; the next write does.
  return target <= int64_t{stream.nLimit} + 1 ? moveWithin(stream, target) : growAndMove(stream, target);
}

void seekToWrite(Stream &stream, int32_t position) {
  const int64_t past = int64_t{stream.lBufStart} + stream.nHigh + 1;
  if (position >= stream.lBufStart && position <= past) {
    moveWithin(stream, position);
  } else {
    flushOrLose(stream);
    moveWindow(stream, position);
  }
}

}  // namespace runtime

int32_t kvlRead(Handle handle, void *buffer, int32_t count) {
  runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return 0;
  if (stream->lpfnProc != nullptr) return runtime::askProcedure(*stream, KVL_OP_READ, buffer, count);
  if (buffer == nullptr || count <= 0) return 0;
  return runtime::readBytes(*stream, {static_cast<uint8_t *>(buffer), static_cast<size_t>(count)});
}

int32_t kvlWrite(Handle handle, const void *buffer, int32_t count) {
  runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return 0;
  if (stream->lpfnProc != nullptr) return runtime::askProcedure(*stream, KVL_OP_WRITE, buffer, count);
  if (buffer == nullptr || count <= 0) return 0;
  const std::span<const uint8_t> from{static_cast<const uint8_t *>(buffer), static_cast<size_t>(count)};
  // Directories come a byte at a time and packed rows in small pieces: most writes only store.
  if (from.size() > runtime::roomInWindow(*stream)) return runtime::writeBytes(*stream, from);
  runtime::storeInWindow(*stream, from);
  return count;
}

int32_t kvlSeek(Handle handle, int32_t offset, int32_t whence) {
  runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return -1;
  if (stream->lpfnProc != nullptr) return runtime::askProcedure(*stream, KVL_OP_SEEK, &offset, whence);
  return runtime::seekTo(*stream, offset, whence);
}
