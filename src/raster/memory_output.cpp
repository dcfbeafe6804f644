// SPDX-License-Identifier: MIT
#include "raster/memory_output.h"

#include "raxel/memory.h"
#include "runtime/host_output.h"

namespace raster {
namespace {

// The stream writes the block's new address here whenever it grows, so it outlives every call.
void *blockAddress = nullptr;

}  // namespace

Handle openMemoryOutput() {
  freeMemoryOutput();
  return runtime::openIntoBlock(&blockAddress);
}

void freeMemoryOutput() {
  GlobalFree(GlobalHandle(blockAddress));
  blockAddress = nullptr;
}

}  // namespace raster
