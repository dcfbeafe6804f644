// SPDX-License-Identifier: MIT
// The colour library's own names for handle memory.
#include "raxel/color.h"
#include "runtime/blocks.h"

Handle rlGetMemory(int16_t elementSize, uint32_t elementCount) {
  if (elementSize < 0) return 0;
  return runtime::allocate(static_cast<uint64_t>(elementSize) * elementCount);
}

void *rlLockMemory(Handle handle) {
  return GlobalLock(handle);
}

int32_t rlUnlockMemory(Handle handle) {
  return handle != 0 ? GlobalUnlock(handle) : 0;
}

int32_t rlFreeNewData(Handle handle) {
  if (handle == 0) return 0;
  GlobalFree(handle);
  return 1;
}

Handle rlPointertoHandle(const void *pointer) {
  return GlobalHandle(pointer);
}
