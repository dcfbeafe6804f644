// SPDX-License-Identifier: MIT
// The bytes between the end of a block's data and the end of the block, which are nobody's: the address
// sanitizer reports whoever touches them, where it is compiled in. Elsewhere they are plain zeros.
#pragma once

#include "runtime/handle_layout.h"

#if defined(__SANITIZE_ADDRESS__)
#define RAXEL_CHECKED_SLACK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RAXEL_CHECKED_SLACK 1
#endif
#endif

#if defined(RAXEL_CHECKED_SLACK)
#include <sanitizer/asan_interface.h>
#endif

namespace runtime {

// Nobody may touch what lies behind a block's data from here on.
inline void closeSlack([[maybe_unused]] Handle handle) {
#if defined(RAXEL_CHECKED_SLACK)
  const size_t used = kDataAt + load<uint32_t>(blockOf(handle));
  const auto whole = static_cast<size_t>(blockBytes(load<uint32_t>(blockOf(handle))));
  __asan_poison_memory_region(blockOf(handle) + used, whole - used);
#endif
}

// The other way round, before the heap gets a block back. Handles without a slack are left alone.
inline void openSlack([[maybe_unused]] Handle handle) {
#if defined(RAXEL_CHECKED_SLACK)
  if (handle == 0 || !ownsData(handle)) return;
  const size_t used = kDataAt + load<uint32_t>(blockOf(handle));
  const auto whole = static_cast<size_t>(blockBytes(load<uint32_t>(blockOf(handle))));
  __asan_unpoison_memory_region(blockOf(handle) + used, whole - used);
#endif
}

}  // namespace runtime
