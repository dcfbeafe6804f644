// SPDX-License-Identifier: MIT
#include "prepare/services.h"

#include <cstdlib>

#include "raxel/memory.h"

namespace prepare {

bool complete(const RaxelServices *services) {
  return services && services->GlobalAlloc && services->GlobalLock && services->GlobalUnlock &&
         services->GlobalFree && services->rlReduceColorTable && services->rlConvertBitmapDepth &&
         services->rlDitherGetCT && services->rlDitherGivenCT && services->rev_rgb;
}

bool fits(uint64_t bytes) {
  if (bytes > UINT32_MAX - 64 || bytes > SIZE_MAX / 2) return false;
  // The block itself comes with a header, and the heap grows by more than a block.
  constexpr uint64_t kBeside = uint64_t{1} << 20;
  // Kept from the optimizer, which may otherwise drop the pair.
  void *volatile probe = std::malloc(static_cast<size_t>(bytes + kBeside));
  std::free(probe);
  return probe != nullptr;
}

HandleMemory::HandleMemory(const RaxelServices &services, uint64_t bytes) : services_(services) {
  if (!fits(bytes)) return;
  handle_ = services.GlobalAlloc(RAXEL_MOVEABLE_ZERO, static_cast<uint32_t>(bytes));
  if (handle_ != 0) bytes_ = static_cast<uint8_t *>(services.GlobalLock(handle_));
}

HandleMemory::HandleMemory(const RaxelServices &services, Taken taken)
    : services_(services), handle_(taken.handle) {
  if (handle_ != 0) bytes_ = static_cast<uint8_t *>(services.GlobalLock(handle_));
}

HandleMemory::~HandleMemory() {
  if (handle_ == 0) return;
  services_.GlobalUnlock(handle_);
  services_.GlobalFree(handle_);
}

}  // namespace prepare
