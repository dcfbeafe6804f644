// SPDX-License-Identifier: MIT
#include "entry/output_stream.h"

#include "raxel/filter_codes.h"
#include "raxel/memory.h"
#include "runtime/host_output.h"

namespace entry {
namespace {

Handle openInMemory(HostWord *status, void **memory) {
  const Handle stream = runtime::openIntoBlock(memory);
  if (status != nullptr) status[RAXEL_STATUS_OUTPUT] = GlobalHandle(*memory);
  return stream;
}

}  // namespace

Handle openOutput(const OutputRequest &request, void **memory) {
  *memory = nullptr;
  if (request.procedure != nullptr) {
    return runtime::openThroughProcedure(request.name, request.procedure, request.status);
  }
  if (request.name != nullptr && request.name[0] != '\0') return kvlOpen(request.name, nullptr, KVL_OUTPUT);
  return openInMemory(request.status, memory);
}

int32_t closeOutput(Handle stream, HostWord *status, void **memory) {
  const int32_t closed = kvlClose(stream);
  runtime::handOverBlock(*memory, status);
  return closed;
}

}  // namespace entry
