// SPDX-License-Identifier: MIT
// The descriptor that ties the calls for one picture together: how palette indices are remapped, and
// which strip or tile comes next. A block of 265 bytes, its two numbers native and unaligned.
#pragma once

#include <cstddef>

#include "raxel/memory.h"
#include "runtime/unaligned.h"

namespace tiff {

struct CellFormat {
  uint8_t bRemap;         // 1 when some input index maps to another output index
  uint8_t abRemap[256];   // output index of each input index
  uint8_t nNextStrip[4];  // 1-based number of the next strip or tile to patch
  uint8_t nFirstRed[4];   // 1-bit input: the red byte of palette entry 0
};
static_assert(sizeof(CellFormat) == 265);
static_assert(offsetof(CellFormat, nNextStrip) == 257 && offsetof(CellFormat, nFirstRed) == 261);

// The descriptor behind a handle; null when the handle does not name one.
inline CellFormat *cellFormat(Handle descriptor) {
  if (GlobalSize(descriptor) < sizeof(CellFormat)) return nullptr;
  return static_cast<CellFormat *>(GlobalLock(descriptor));
}

inline uint32_t nextStrip(const CellFormat &format) {
  return runtime::load<uint32_t>(format.nNextStrip);
}
inline void setNextStrip(CellFormat &format, uint32_t number) {
  runtime::store(format.nNextStrip, number);
}
inline uint32_t firstRed(const CellFormat &format) {
  return runtime::load<uint32_t>(format.nFirstRed);
}
inline void setFirstRed(CellFormat &format, uint32_t red) {
  runtime::store(format.nFirstRed, red);
}

}  // namespace tiff
