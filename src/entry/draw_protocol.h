// The four operations of a draw procedure, and the kinds of pictures that one reports.
#pragma once

#include "raxel/types.h"

namespace entry {

enum DrawOp : HostWord { kDrawQuery = 0, kDrawOpen = 1, kDrawClose = 2, kDrawBand = 3 };

inline constexpr int16_t kKindCellData = 1;
inline constexpr int16_t kKindMetafile = 4;

}  // namespace entry
