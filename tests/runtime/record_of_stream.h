// SPDX-License-Identifier: MIT
// The record behind a stream's handle, as tests look into it.
#pragma once

#include "raxel/memory.h"
#include "raxel/stream.h"

namespace support {

inline const KvlStream &record(Handle handle) {
  return *static_cast<const KvlStream *>(GlobalLock(handle));
}

}  // namespace support
