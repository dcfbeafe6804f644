// SPDX-License-Identifier: MIT
// The host status record: an array of host words that lives as long as the export.
#pragma once

#include "raxel/filter_codes.h"
#include "raxel/types.h"

namespace runtime {

// A word of a record that may be missing: then 0.
inline HostWord statusWord(const HostWord *status, RaxelStatusWord word) {
  return status != nullptr ? status[word] : 0;
}

inline StatusCallback statusCallback(const HostWord *status) {
  return reinterpret_cast<StatusCallback>(statusWord(status, RAXEL_STATUS_CALLBACK));
}

}  // namespace runtime
