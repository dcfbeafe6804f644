// The host status record: an array of host words that lives as long as the export.
#pragma once

#include <cstddef>

#include "raxel/types.h"

namespace entry {

enum StatusWord : size_t {
  kStatusContext = 1,    // handed back with every callback
  kStatusCallback = 2,   // a StatusCallback, or 0
  kStatusValue = 4,      // metafile session: kept in the settings record
  kStatusFrameLeft = 7,  // metafile session: the picture's frame
  kStatusFrameTop = 8,
  kStatusFrameRight = 9,
  kStatusFrameBottom = 10,
  kStatusFrameResolution = 11,
  kStatusProcContext = 12,  // the context of a host stream procedure
};

// A word of a record that may be missing: then 0.
inline HostWord statusWord(const HostWord *status, StatusWord word) {
  return status != nullptr ? status[word] : 0;
}

inline StatusCallback statusCallback(const HostWord *status) {
  return reinterpret_cast<StatusCallback>(statusWord(status, kStatusCallback));
}

}  // namespace entry
