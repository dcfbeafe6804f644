// SPDX-License-Identifier: MIT
// The window of a stream: filling it, flushing it, and growing the block of a memory stream.
#include "runtime/stream_disk.h"

namespace runtime {

void moveWindow(Stream &stream, int32_t offset) {
  stream.nPos = 0;
  stream.nHigh = -1;
  stream.nLimit = kBufferSize - 1;
  stream.lBufStart = offset;
  stream.lNextRead = offset;
  stream.bDirty = 0;
}

bool growBlock(Stream &stream, int64_t limit) {
  if (stream.nGrow < 0 || limit + 1 > INT32_MAX) return false;
  stream.hBuffer = GlobalReAlloc(stream.hBuffer, static_cast<uint32_t>(limit + 1), RAXEL_MOVEABLE_ZERO);
  // The caller's variable always names the block's data as locked, wherever they moved.
  *stream.lpBlockVar = GlobalLock(stream.hBuffer);
  stream.nLimit = static_cast<int32_t>(limit);
  stream.bDirty = 0;
  return true;
}

int32_t flushWindow(Stream &stream) {
  if (isMemory(stream)) {
    if (stream.nGrow <= 0) return -1;
    return growBlock(stream, int64_t{stream.nLimit} + stream.nGrow) ? 1 : -1;
  }
  if (stream.bDirty == 0) return 0;
  const int32_t count = stream.nHigh + 1;
  const int64_t end = int64_t{stream.lBufStart} + count;
  const std::span<const uint8_t> bytes{windowOf(stream), static_cast<size_t>(count)};
  if (end > INT32_MAX || writeAt(stream, stream.lBufStart, bytes) != count) return fail(stream);
  moveWindow(stream, static_cast<int32_t>(end));
  stream.lSize = sizeAfterWrite(stream, stream.lBufStart);
  return count;
}

int32_t fillWindow(Stream &stream) {
  if (isMemory(stream) || stream.fp == nullptr) return 0;
  // A flush that fails does not keep the fill from going on, but its bytes are gone then.
  const bool lost = stream.bDirty != 0 && flushWindow(stream) < 0;
  const int32_t start = stream.lNextRead;
  // Past 2^31 - 1 no offset has a name.
  const int32_t room = INT32_MAX - start;
  const int32_t wanted = room < kBufferSize ? room : kBufferSize;
  if (wanted == 0) return fail(stream);
  const int32_t count = readAt(stream, start, {windowOf(stream), static_cast<size_t>(wanted)});
  if (count < 0) return fail(stream);
  if (lost) stream.bBytesLost = 1;
  moveWindow(stream, start);
  stream.nHigh = count - 1;
  stream.lNextRead = start + count;
  return count;
}

}  // namespace runtime

int32_t FillKvlIOBuf(Handle handle) {
  runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return -1;
  return stream->lpfnProc != nullptr ? 0 : runtime::fillWindow(*stream);
}

int32_t FlushKvlIO(Handle handle) {
  runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return -1;
  return stream->lpfnProc != nullptr ? 0 : runtime::flushWindow(*stream);
}
