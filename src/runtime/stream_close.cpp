// SPDX-License-Identifier: MIT
// kvlClose, kvlCloseandDelete and kvlCopy.
#include "runtime/stream_record.h"

namespace runtime {

namespace {

// Ends a written memory stream with one byte 0xFF, so that the zero bytes before it count as data
// when the block is opened again.
int32_t closeMemory(Stream &stream) {
  if (!isOpenForWriting(stream)) return 0;
  const uint8_t last = 0xFF;
  if (seekTo(stream, 0, KVL_FROM_END) < 0) return -1;
  return writeBytes(stream, {&last, 1}) == 1 ? 0 : -1;
}

int32_t closeFile(Stream &stream) {
  const bool lost = flushWindow(stream) < 0 || stream.bBytesLost != 0;
  const bool closed = stream.bBorrowed != 0 || std::fclose(stream.fp) == 0;
  return lost || !closed ? -1 : 0;
}

// Closes all that the record holds, and frees it. `last` is the procedure's last argument.
int32_t closeStream(Handle handle, int32_t last) {
  Stream &stream = *streamOf(handle);
  int32_t result = 0;
  const bool ownsWindow = !isMemory(stream);
  if (stream.lpfnProc != nullptr) {
    askProcedure(stream, KVL_OP_CLOSE, nullptr, last);
    if (stream.fp != nullptr) closeFile(stream);
  } else {
    result = isMemory(stream) ? closeMemory(stream) : closeFile(stream);
  }
  if (ownsWindow && stream.hBuffer != 0) GlobalFree(stream.hBuffer);
  GlobalFree(handle);
  return result;
}

}  // namespace

}  // namespace runtime

int32_t kvlClose(Handle handle) {
  return handle == 0 ? -1 : runtime::closeStream(handle, 0);
}

int32_t kvlCloseandDelete(Handle handle, const char *name) {
  if (handle == 0) return -1;
  const bool hasProcedure = runtime::streamOf(handle)->lpfnProc != nullptr;
  runtime::closeStream(handle, hasProcedure ? static_cast<int32_t>(KVL_DELETE) : 0);
  if (!hasProcedure) kvlOpen(name, nullptr, KVL_DELETE);
  return 0;
}

int32_t kvlCopy(const char *source, const char *destination) {
  const Handle from = kvlOpen(source, nullptr, KVL_READ);
  if (from == 0) return -1;                                     // and the destination stays as it was
  const Handle to = kvlOpen(destination, nullptr, KVL_OUTPUT);  // without one no byte is written
  uint8_t block[4096];
  uint32_t balance = 0;  // bytes written minus bytes read, modulo 2^32
  int32_t count;
  while ((count = kvlRead(from, block, sizeof block)) >= 1) {
    const int32_t written = kvlWrite(to, block, count);
    balance += static_cast<uint32_t>(written > 0 ? written : 0) - static_cast<uint32_t>(count);
  }
  // A failure that the counts do not show is one all the same.
  const bool failed = (kvlClose(from) | (to == 0 ? 0 : kvlClose(to)) | count) < 0;
  return balance == 0 && failed ? -1 : static_cast<int32_t>(balance);
}
