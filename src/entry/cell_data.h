// Host pixels on their way to the output's depth and size.
#pragma once

#include <algorithm>
#include <cstring>

#include "raxel/filter.h"
#include "runtime/blocks.h"

namespace entry {

// Depths of source pictures that the colour library reads. A picture of any other depth is black.
inline bool isReadable(uint32_t bits) {
  return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32;
}

// Bytes of a picture whose rows are padded to a multiple of 4; the largest number when 64 bits do
// not hold them.
inline uint64_t pictureBytes(uint32_t width, uint32_t height, uint32_t bits) {
  const uint64_t stride = (uint64_t{width} * bits + 31) / 32 * 4;
  return stride > 0xFFFFFFFFu ? UINT64_MAX : stride * height;
}

// Bytes of the colour table that indices of this depth need; none above 8 bits.
inline uint64_t tableBytes(uint32_t bits) {
  return bits <= 8 ? uint64_t{3} << bits : 0;
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

  // Makes sure that the block holds this many bytes: a shorter one is replaced by a copy with zeros
  // behind. False for the null handle and for sizes that fit in no block.
  bool extendTo(uint64_t bytes) {
    if (handle_ == 0) return false;
    if (GlobalSize(handle_) >= bytes) return true;
    const Handle longer = runtime::allocate(bytes);
    if (longer == 0) return false;
    const auto from = runtime::lockBytes(handle_);
    if (!from.empty()) std::memcpy(GlobalLock(longer), from.data(), from.size());
    replace(longer);
    return true;
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
