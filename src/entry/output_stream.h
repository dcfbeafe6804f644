// SPDX-License-Identifier: MIT
// The three ways to open an output, and what is left to do when it closes.
#pragma once

#include "raxel/stream.h"
#include "raxel/types.h"

namespace entry {

// An output on its way to open.
struct OutputRequest {
  const char *name;      // null or empty: into memory, unless there is a procedure
  StreamProc procedure;  // host stream procedure, or null
  HostWord *status;      // host status record, or null
};

// Opens a new output with mode 4097: through the host's procedure, else by name, else into a block
// of handle memory that starts with 1 byte and grows by 4096. The block's handle goes into word 6 of
// the status record, and its locked address into *memory at every growth, so *memory must live as
// long as the stream. Returns 0 when it cannot be opened; nothing is left behind then.
Handle openOutput(const OutputRequest &request, void **memory);

// Closes an output and brings word 6 of the status record up to date, since a block that grew has a
// new handle. Without a status record nobody could find the block: it is freed. Returns kvlClose's
// answer. `memory` is what openOutput was given.
int32_t closeOutput(Handle stream, HostWord *status, void **memory);

}  // namespace entry
