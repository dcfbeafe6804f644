#include "entry/output_stream.h"

#include "entry/host_status.h"
#include "raxel/memory.h"
#include "runtime/memory_output.h"

namespace entry {
namespace {

constexpr HostWord kGrowth = 4096;  // bytes

Handle openThroughProcedure(const OutputRequest &request) {
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = statusWord(request.status, RAXEL_STATUS_PROC_CONTEXT);
  descriptor.lpfnProc = reinterpret_cast<HostWord>(request.procedure);
  return kvlOpen(request.name, &descriptor, KVL_OUTPUT);
}

Handle openInMemory(const OutputRequest &request, void **memory) {
  const Handle block = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 1);
  if (request.status != nullptr) request.status[RAXEL_STATUS_OUTPUT] = block;
  *memory = GlobalLock(block);
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = reinterpret_cast<HostWord>(memory);
  descriptor.dwGrow = kGrowth;
  const Handle stream = kvlOpen(nullptr, &descriptor, KVL_OUTPUT);
  if (stream == 0) {
    if (request.status != nullptr) request.status[RAXEL_STATUS_OUTPUT] = 0;
    GlobalFree(block);
    *memory = nullptr;
  }
  return stream;
}

}  // namespace

Handle openOutput(const OutputRequest &request, void **memory) {
  *memory = nullptr;
  if (request.procedure != nullptr) return openThroughProcedure(request);
  if (request.name != nullptr && request.name[0] != '\0') return kvlOpen(request.name, nullptr, KVL_OUTPUT);
  return openInMemory(request, memory);
}

int32_t closeOutput(Handle stream, HostWord *status, void **memory) {
  const int32_t closed = kvlClose(stream);
  runtime::handOverOutput(*memory, status);
  return closed;
}

}  // namespace entry
