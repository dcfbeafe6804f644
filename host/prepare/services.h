// SPDX-License-Identifier: MIT
// Handle memory and functions of the filter, as the preparation borrows them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raxel/host.h"

namespace prepare {

// True when every member is there.
bool complete(const RaxelServices *services);

// True when a block of this size can be had now. The filter ends the process when its memory runs out,
// so it is asked for large blocks only after this.
bool fits(uint64_t bytes);

// Room for what the filter's functions take besides blocks of the picture's size: tables of colours, and
// the buffers of rows and coders.
inline constexpr uint64_t kFilterTables = uint64_t{16} << 20;

// A block of handle memory, locked; freed with its owner. bytes() is null when there was no room.
class HandleMemory {
 public:
  // A new block, zero-filled.
  HandleMemory(const RaxelServices &services, uint64_t bytes);
  // Takes over a block that the filter made; 0 is none.
  struct Taken {
    Handle handle;
  };
  HandleMemory(const RaxelServices &services, Taken taken);
  ~HandleMemory();
  HandleMemory(const HandleMemory &) = delete;
  HandleMemory &operator=(const HandleMemory &) = delete;

  Handle handle() const { return handle_; }
  uint8_t *bytes() const { return bytes_; }

 private:
  const RaxelServices &services_;
  Handle handle_ = 0;
  uint8_t *bytes_ = nullptr;
};

}  // namespace prepare
