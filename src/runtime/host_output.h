// SPDX-License-Identifier: MIT
// The outputs that are no file by name: a stream procedure of the host's, and a block of handle memory.
#pragma once

#include "raxel/stream.h"
#include "raxel/types.h"

namespace runtime {

// Opens a new output through the host's procedure, which gets word 12 of the status record (0 without
// one) as its context, and the name. 0 when it declines and no file of that name opens instead.
Handle openThroughProcedure(const char *name, StreamProc procedure, const HostWord *status);

// Opens a new output into a block that starts with 1 byte and grows by 4096. Its locked address goes into
// *memory, now and at every growth, so *memory must live as long as the stream.
Handle openIntoBlock(void **memory);

// To be called once the stream of such a block is closed. A block that grew has a new address and so a new
// handle, which the host gets here, in word 6 of the status record. Without a record nobody could find the
// block: it is freed. Null: no such output.
void handOverBlock(void *&memory, HostWord *status);

}  // namespace runtime
