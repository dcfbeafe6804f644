// SPDX-License-Identifier: MIT
// Opening cell data: the palette that the output will have.
#include <algorithm>
#include <cstring>

#include "entry/cell_data.h"
#include "raxel/color.h"
#include "raxel/driver.h"
#include "runtime/live_blocks.h"

namespace entry {
namespace {

constexpr uint32_t kEntryBytes = 3;

// Puts `entries` entries of a table into the record's palette, which grows when it has fewer, and a
// copy of at least as many entries as the output depth has indices into the cache. What the table
// lacks is black.
void adoptTable(OffscreenRecord &record, Handle table, uint32_t entries) {
  // A block of ours may be shorter than its record says.
  const Handle block = record.lpPalette == nullptr ? 0 : runtime::blockWithData(record.lpPalette);
  const bool isShort = block != 0 && GlobalSize(block) < entries * kEntryBytes;
  if (record.lpPalette == nullptr || record.nColors < entries || isShort) {
    record.lpPalette = static_cast<uint8_t *>(
        kvlPtrGlobalReAlloc(record.lpPalette, entries * kEntryBytes, RAXEL_MOVEABLE_ZERO));
  }
  const size_t bytes = size_t{entries} * kEntryBytes;
  const auto from = runtime::lockBytes(table);
  const size_t known = std::min(bytes, from.size());
  std::memset(record.lpPalette, 0, bytes);
  if (known != 0) std::memcpy(record.lpPalette, from.data(), known);

  const size_t indices = size_t{1} << std::min<uint32_t>(record.nBits, 8);
  auto copy = runtime::Block::ofSize(std::max(bytes, indices * kEntryBytes));
  std::memcpy(copy.data(), record.lpPalette, bytes);
  lockCache(record)[BANDCACHE_PALETTE] = copy.release();
}

// The output has room for every source colour: its palette is the source's.
void keepColors(OffscreenRecord &record, const PictureRecord &picture) {
  if (picture.hPalette == 0 || record.lpPalette == nullptr || record.nColors < 1) return;
  const uint32_t entries = 1u << std::min<uint32_t>(picture.nBits, 8);
  adoptTable(record, picture.hPalette, entries);
  record.nColors = static_cast<uint16_t>(entries);
}

// The output has fewer colours: a true-colour picture of 256 colours or more has them chosen by
// median cut, any other picture by the ditherer.
void reduceColors(OffscreenRecord &record, const PictureRecord &picture) {
  if (record.nBits > 8 || picture.hBits == 0 || !isReadable(picture.nBits)) return;
  if (!runtime::fitsInBlock(runtime::bitmapBytes(picture.nWidth, picture.nHeight, picture.nBits))) return;

  const uint32_t wanted = 1u << record.nBits;
  auto count = static_cast<uint16_t>(wanted);
  Handle table = 0;
  if (picture.nBits == 24 && record.nBits > 7) {
    table =
        rlReduceColorTable(picture.hBits, picture.nWidth, static_cast<int16_t>(picture.nHeight), &count);
  } else {
    rlDitherGetCT(picture.hBits, picture.nWidth, picture.nHeight, static_cast<int16_t>(picture.nBits),
                  static_cast<int16_t>(record.nBits), picture.hPalette, &table, &count);
  }
  // For one bit the ditherer has eight greys: the palette holds them all, of which two count.
  adoptTable(record, table, std::max<uint32_t>(count, wanted));
  record.nColors = static_cast<uint16_t>(wanted);
  rlFreeNewData(table);
}

}  // namespace
}  // namespace entry

uint32_t CellDataOpen(OffscreenRecord *record, const HostWord *request) {
  if (record == nullptr || record->lpPicture == nullptr || request == nullptr) return 0;
  CellDataClose(record);
  record->hBandCache = runtime::allocate(BANDCACHE_WORDS * sizeof(HostWord));
  if (record->hBandCache == 0) {
    push_er(RAXEL_CANNOT_WRITE);
    return 0;
  }
  const auto &picture = *static_cast<const PictureRecord *>(record->lpPicture);
  if (record->nBits >= picture.nBits) {
    entry::keepColors(*record, picture);
  } else {
    entry::reduceColors(*record, picture);
  }
  return static_cast<uint32_t>(request[OFFSCREEN_ROWS]);
}
