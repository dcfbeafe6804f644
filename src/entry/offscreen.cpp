// SPDX-License-Identifier: MIT
// The offscreen hooks. On this platform each of them asks the picture's draw procedure; a platform
// with drawing surfaces of its own would set one up here.
#include "raxel/filter.h"
#include "raxel/memory.h"

namespace {

HostWord wordOf(const void *pointer) {
  return reinterpret_cast<HostWord>(pointer);
}

}  // namespace

int32_t QueryPlatformOffscreen(PictureFormat *format, void *picture, DrawProc draw) {
  if (draw == nullptr) return 0;
  return static_cast<int32_t>(draw(RAXEL_DRAW_QUERY, wordOf(picture), wordOf(format), 0));
}

OffscreenRecord *InitPlatformOffscreen(uint32_t width, uint32_t *bandRows, uint16_t bits, uint16_t colors,
                                       uint8_t *palette, void *picture, DrawProc draw, const void *flags) {
  if (draw == nullptr || bandRows == nullptr) return nullptr;
  auto *record = static_cast<OffscreenRecord *>(kvlPtrGlobalAlloc(sizeof(OffscreenRecord)));
  record->lpPicture = picture;
  record->lpfnDraw = draw;
  record->nColors = colors;
  record->lpPalette = palette;
  record->nWidth = width;
  record->nBandRows = *bandRows;
  record->nBits = bits;
  record->bFlag = flags != nullptr ? *static_cast<const uint8_t *>(flags) : 0;

  HostWord request[OFFSCREEN_WORDS];
  request[OFFSCREEN_WIDTH] = width;
  request[OFFSCREEN_ROWS] = *bandRows;
  request[OFFSCREEN_BITS] = bits;
  request[OFFSCREEN_COLORS] = colors;
  request[OFFSCREEN_PALETTE] = wordOf(palette);
  *bandRows = static_cast<uint32_t>(draw(RAXEL_DRAW_OPEN, wordOf(record), wordOf(request), 0));
  return record;
}

Handle DrawPlatformOffscreen(OffscreenRecord *record, uint32_t first, uint32_t last) {
  if (record == nullptr || record->lpfnDraw == nullptr) return 0;
  return record->lpfnDraw(RAXEL_DRAW_BAND, wordOf(record), first, last);
}

int32_t TermPlatformOffscreen(OffscreenRecord *record) {
  if (record == nullptr) return 0;
  if (record->lpfnDraw != nullptr) record->lpfnDraw(RAXEL_DRAW_CLOSE, wordOf(record), 0, 0);
  kvlPtrGlobalFree(record);
  return 0;
}
