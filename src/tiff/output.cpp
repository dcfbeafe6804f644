// SPDX-License-Identifier: MIT
#include "tiff/output.h"

#include "runtime/stream_record.h"

namespace tiff {
namespace {

const runtime::Stream *record(Handle file) {
  return runtime::streamOf(file);
}

}  // namespace

bool isHostStream(Handle file) {
  return file != 0 && record(file)->lpfnProc != nullptr;
}

bool isDiskFile(Handle file) {
  return file != 0 && record(file)->lpfnProc == nullptr && record(file)->fp != nullptr;
}

uint32_t tell(Handle file) {
  return static_cast<uint32_t>(kvlSeek(file, 0, KVL_FROM_POSITION));
}

void seekTo(Handle file, uint32_t position) {
  if (isDiskFile(file) && runtime::isOpenForWriting(*record(file)) && position <= INT32_MAX) {
    runtime::seekToWrite(*runtime::streamOf(file), static_cast<int32_t>(position));
  } else {
    kvlSeek(file, static_cast<int32_t>(position), KVL_FROM_START);
  }
}

void seekBack(Handle file, uint32_t position) {
  const bool atEnd = isDiskFile(file) && int64_t{position} >= record(file)->lSize;
  if (atEnd) return seekTo(file, position);
  kvlSeek(file, static_cast<int32_t>(position), KVL_FROM_START);
}

bool writeAll(Handle file, std::span<const uint8_t> bytes) {
  if (bytes.size() > INT32_MAX) return false;
  const auto count = static_cast<int32_t>(bytes.size());
  return kvlWrite(file, bytes.data(), count) == count;
}

}  // namespace tiff
