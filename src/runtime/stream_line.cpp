// SPDX-License-Identifier: MIT
// Lines of text, ending in LF, CR LF or CR.
#include "runtime/stream_record.h"

namespace runtime {

namespace {

constexpr char kCr = '\r';
constexpr char kLf = '\n';

bool readByte(Handle handle, char &byte) {
  Stream &stream = *streamOf(handle);
  if (stream.lpfnProc != nullptr || stream.nPos > stream.nHigh) return kvlRead(handle, &byte, 1) >= 1;
  byte = static_cast<char>(windowOf(stream)[stream.nPos++]);
  return true;
}

}  // namespace

Line readLine(Handle handle, char *buffer, int32_t max) {
  int32_t stored = 0;
  buffer[0] = 0;
  while (stored < max) {
    char byte = 0;  // a host procedure may say that it read, and store nothing
    if (!readByte(handle, byte)) return {stored, true};
    if (byte == kLf) break;
    if (byte == kCr) {
      if (!readByte(handle, byte)) return {stored, true};
      if (byte != kLf) kvlSeek(handle, -1, KVL_FROM_POSITION);
      break;
    }
    buffer[stored++] = byte;
    if (stored < max) buffer[stored] = 0;
  }
  return {stored, false};
}

}  // namespace runtime

int32_t kvlReadLine(Handle handle, char *buffer, int32_t max) {
  if (handle == 0) return -1;
  if (buffer == nullptr || max <= 0) return 0;
  const runtime::Line line = runtime::readLine(handle, buffer, max);
  return line.ended ? -1 : line.stored;
}

int32_t kvlWriteLine(Handle handle, const char *text, int32_t length) {
  const runtime::Stream *stream = runtime::streamOf(handle);
  if (stream == nullptr) return 0;
  const uint16_t format = stream->wLineFormat;
  const int32_t written = kvlWrite(handle, text, length);
  if (written < 0) return written;
  if (format != 2) {
    const int32_t ended = kvlWrite(handle, &runtime::kCr, 1);
    if (ended < 1) return ended;
  }
  if (format != 1) {
    const int32_t ended = kvlWrite(handle, &runtime::kLf, 1);
    if (ended < 1) return ended;
  }
  return written;
}

int32_t kvlSetLineFormat(Handle handle, int32_t format) {
  runtime::Stream *stream = runtime::streamOf(handle);
  // -1, the answer for data without a line end, is kept as 65535 and means CR LF.
  if (stream != nullptr) stream->wLineFormat = static_cast<uint16_t>(format);
  return 0;
}

int32_t kvlGetLineFormat(Handle handle) {
  if (handle == 0) return -1;
  int32_t format = -1;
  char byte = 0;
  while (format < 0 && runtime::readByte(handle, byte)) {
    if (byte == runtime::kLf) format = 2;
    if (byte == runtime::kCr) format = runtime::readByte(handle, byte) && byte == runtime::kLf ? 0 : 1;
  }
  kvlSeek(handle, 0, KVL_FROM_START);
  return format;
}
