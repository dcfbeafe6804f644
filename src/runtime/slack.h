// SPDX-License-Identifier: MIT
// The bytes between the end of a block's data and the end of the block, which are nobody's: the address
// sanitizer reports whoever touches them, where it is compiled in. Elsewhere they are plain zeros.
#pragma once

#include <span>

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

// A block's slack. Handles that only describe memory, and none, have none.
inline std::span<uint8_t> slackOf(Handle handle) {
  if (handle == 0 || !ownsData(handle)) return {};
  const auto size = load<uint32_t>(blockOf(handle));
  const size_t used = kDataAt + size;
  return {blockOf(handle) + used, static_cast<size_t>(blockBytes(size)) - used};
}

// Nobody may touch what lies behind a block's data from here on.
inline void closeSlack([[maybe_unused]] Handle handle) {
#if defined(RAXEL_CHECKED_SLACK)
  __asan_poison_memory_region(slackOf(handle).data(), slackOf(handle).size());
#endif
}

// The other way round, for the heap that gets a block back.
inline void openSlack([[maybe_unused]] Handle handle) {
#if defined(RAXEL_CHECKED_SLACK)
  __asan_unpoison_memory_region(slackOf(handle).data(), slackOf(handle).size());
#endif
}

// As long as it stands, a block's slack takes part.
class OpenSlack {
 public:
  explicit OpenSlack(Handle handle) : handle_(handle) { openSlack(handle_); }
  ~OpenSlack() { closeSlack(handle_); }
  OpenSlack(const OpenSlack &) = delete;
  OpenSlack &operator=(const OpenSlack &) = delete;

 private:
  Handle handle_;
};

}  // namespace runtime
