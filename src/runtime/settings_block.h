// SPDX-License-Identifier: MIT
// The settings record behind a handle.
#pragma once

#include "raxel/memory.h"
#include "raxel/settings_record.h"

namespace runtime {

// Null for the null handle, and for a block that is too short for a record.
inline RasterSetup *lockSettings(Handle handle) {
  return handle != 0 && GlobalSize(handle) >= sizeof(RasterSetup)
             ? static_cast<RasterSetup *>(GlobalLock(handle))
             : nullptr;
}

}  // namespace runtime
