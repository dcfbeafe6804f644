// SPDX-License-Identifier: MIT
#include "prepare/services.h"

#include <cstdlib>

#include "raxel/memory.h"

#if defined(__SANITIZE_ADDRESS__)
#define RAXEL_MARKED_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RAXEL_MARKED_HEAP 1
#endif
#endif

#if defined(RAXEL_MARKED_HEAP) && defined(__GLIBC__)
extern "C" void *__libc_malloc(size_t bytes);
extern "C" void __libc_free(void *block);
#endif

namespace prepare {
namespace {

// The address sanitizer's heap marks every byte of a block, when it is had and when it is given back: of
// blocks that nobody touches that is most of an export's time. The C library's own heap knows as well
// whether there is room.
#if defined(RAXEL_MARKED_HEAP) && defined(__GLIBC__)
void *have(size_t bytes) {
  return __libc_malloc(bytes);
}
void giveBack(void *block) {
  __libc_free(block);
}
#else
void *have(size_t bytes) {
  return std::malloc(bytes);
}
void giveBack(void *block) {
  std::free(block);
}
#endif

}  // namespace

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
  void *volatile probe = have(static_cast<size_t>(bytes + kBeside));
  giveBack(probe);
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
