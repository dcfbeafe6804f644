#include "tiff/output.h"

#include "raxel/memory.h"

namespace tiff {
namespace {

const KvlStream *record(Handle file) {
  return static_cast<const KvlStream *>(GlobalLock(file));
}

}  // namespace

bool isHostStream(Handle file) {
  return file != 0 && record(file)->lpfnProc != nullptr;
}

bool isDiskFile(Handle file) {
  return file != 0 && record(file)->lpfnProc == nullptr && record(file)->fp != nullptr;
}

uint32_t tell(Handle file) {
  return static_cast<uint32_t>(kvlSeek(file, 0, 1));
}

void seekTo(Handle file, uint32_t position) {
  kvlSeek(file, static_cast<int32_t>(position), 0);
}

bool writeAll(Handle file, std::span<const uint8_t> bytes) {
  if (bytes.size() > INT32_MAX) return false;
  const auto count = static_cast<int32_t>(bytes.size());
  return kvlWrite(file, bytes.data(), count) == count;
}

}  // namespace tiff
