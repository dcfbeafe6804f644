// An output that was written into a block of handle memory.
#pragma once

#include "raxel/filter_codes.h"
#include "raxel/memory.h"

namespace runtime {

// To be called once the output's stream is closed. `memory` is the variable that the stream kept the
// block's locked address in; a block that grew has a new address and so a new handle, which the host
// gets here. Without a status record nobody could find the block: it is freed. Null: no such output.
inline void handOverOutput(void *&memory, HostWord *status) {
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
