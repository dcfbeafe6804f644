#include "raster/memory_output.h"

#include "raxel/memory.h"
#include "raxel/stream.h"

namespace raster {
namespace {

constexpr HostWord kGrowth = 4096;  // bytes added each time the block fills

// The stream writes the block's new address here whenever it grows, so it outlives every call.
void *blockAddress = nullptr;

}  // namespace

Handle openMemoryOutput() {
  freeMemoryOutput();
  blockAddress = GlobalLock(GlobalAlloc(RAXEL_MOVEABLE_ZERO, 1));
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = reinterpret_cast<HostWord>(&blockAddress);
  descriptor.dwGrow = kGrowth;
  return kvlOpen(nullptr, &descriptor, KVL_OUTPUT);
}

void freeMemoryOutput() {
  GlobalFree(GlobalHandle(blockAddress));
  blockAddress = nullptr;
}

}  // namespace raster
