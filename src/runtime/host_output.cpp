// SPDX-License-Identifier: MIT
#include "runtime/host_output.h"

#include "raxel/memory.h"
#include "runtime/host_status.h"

namespace runtime {

namespace {

constexpr HostWord kGrowth = 4096;  // bytes added each time the block fills

}  // namespace

Handle openThroughProcedure(const char *name, StreamProc procedure, const HostWord *status) {
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = statusWord(status, RAXEL_STATUS_PROC_CONTEXT);
  descriptor.lpfnProc = reinterpret_cast<HostWord>(procedure);
  return kvlOpen(name, &descriptor, KVL_OUTPUT);
}

Handle openIntoBlock(void **memory) {
  const Handle block = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 1);
  *memory = GlobalLock(block);
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = reinterpret_cast<HostWord>(memory);
  descriptor.dwGrow = kGrowth;
  return kvlOpen(nullptr, &descriptor, KVL_OUTPUT);
}

void handOverBlock(void *&memory, HostWord *status) {
  if (memory == nullptr) return;
  const Handle block = GlobalHandle(memory);
  if (status != nullptr) {
    status[RAXEL_STATUS_OUTPUT] = block;
  } else {
    GlobalFree(block);
  }
  memory = nullptr;
}

}  // namespace runtime
