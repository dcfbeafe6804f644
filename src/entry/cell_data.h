// SPDX-License-Identifier: MIT
// Host pixels on their way to the output's depth and size.
#pragma once

#include "raxel/filter.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"

namespace entry {

// Depths of source pictures that the colour library reads. At any other depth all
// pixels are index 0.
inline bool isReadable(uint32_t bits) {
  return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32;
}

// A block that starts as somebody else's and becomes our own with the first change. The block it
// replaces is freed if it was ours.
class Working {
 public:
  explicit Working(Handle borrowed) : handle_(borrowed) {}

  Handle handle() const { return handle_; }
  bool isOurs() const { return static_cast<bool>(own_); }

  void replace(Handle fresh) {
    own_ = runtime::Block(fresh);
    handle_ = fresh;
  }

  // Hands our own block over; 0 when it is still somebody else's.
  Handle release() { return own_.release(); }

 private:
  Handle handle_;
  runtime::Block own_;
};

inline HostWord *lockCache(const OffscreenRecord &record) {
  return static_cast<HostWord *>(GlobalLock(record.hBandCache));
}

}  // namespace entry
