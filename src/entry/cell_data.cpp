// SPDX-License-Identifier: MIT
// The band of host pixels: the whole picture, brought to the output's depth and size in memory.
#include "entry/cell_data.h"

#include "raxel/color.h"

namespace entry {
namespace {

struct Size {
  uint32_t width;
  uint32_t height;
};

// Gives a block that is shorter than its picture a copy with zeros behind, so that whatever the writer
// does to the pixels it does to those as well.
bool extendTo(Working &pixels, uint64_t bytes) {
  if (GlobalSize(pixels.handle()) >= bytes) return true;
  const Handle longer = runtime::longerCopy(pixels.handle(), bytes);
  if (longer == 0) return false;
  pixels.replace(longer);
  return true;
}

// The picture at the output's depth and size. Leaves `pixels` the host's own block when nothing has
// to be converted; false when there is no such picture. To the colour library, pixels and table
// entries past the end of their blocks are zeros.
bool convert(const OffscreenRecord &record, const PictureRecord &picture, Working &pixels) {
  const Size from = {picture.nWidth, picture.nHeight};
  const Size to = {record.nWidth, record.nBandRows};
  const auto fromBits = static_cast<int16_t>(picture.nBits);
  const auto toBits = static_cast<int16_t>(record.nBits);
  const uint64_t bytes = runtime::bitmapBytes(from.width, from.height, picture.nBits);
  if (!runtime::fitsInBlock(bytes)) return false;

  const bool shrinks = to.width < from.width || to.height < from.height;
  if (shrinks) {
    pixels.replace(rlShrinkBitmap(pixels.handle(), fromBits, from.width, from.height, to.width, to.height));
    if (pixels.handle() == 0) return false;
  }
  if (fromBits != toBits) {
    const Size now = shrinks ? to : from;
    const Handle table = lockCache(record)[BANDCACHE_PALETTE];
    pixels.replace(CellDataDepth(pixels.handle(), now.width, now.height, fromBits, toBits, picture.hPalette,
                                 table, record.nColors));
    if (pixels.handle() == 0) return false;
  }
  if (to.width > from.width || to.height > from.height) {
    // Still with the source's sizes, also when the other direction has just been shrunk and the rows
    // have new lengths: the picture comes out sheared then. That is what hosts get for such sizes.
    pixels.replace(rlStretchBitmap(pixels.handle(), toBits, from.width, from.height, to.width, to.height));
    if (pixels.handle() == 0) return false;
  }
  return pixels.isOurs() || extendTo(pixels, bytes);
}

}  // namespace
}  // namespace entry

Handle CellDataBand(OffscreenRecord *record) {
  if (record == nullptr || record->lpPicture == nullptr || record->hBandCache == 0) return 0;
  const auto &picture = *static_cast<const PictureRecord *>(record->lpPicture);
  entry::Working pixels(picture.hBits);
  bool there = picture.hBits != 0;
  if (there && entry::isReadable(picture.nBits)) {
    there = entry::convert(*record, picture, pixels);
  } else if (there) {
    pixels.replace(
        runtime::allocate(runtime::bitmapBytes(record->nWidth, record->nBandRows, record->nBits)));
  }
  HostWord &band = entry::lockCache(*record)[BANDCACHE_BAND];
  GlobalFree(band);
  band = there ? pixels.release() : 0;
  return there ? pixels.handle() : 0;
}

Handle CellDataDepth(Handle pixels, uint32_t width, uint32_t height, int16_t sourceBits, int16_t bits,
                     Handle sourcePalette, Handle palette, uint16_t colors) {
  if (bits < 8 && bits < sourceBits) {
    return rlDitherGivenCT(pixels, width, height, sourceBits, bits, sourcePalette, palette, colors);
  }
  return rlConvertBitmapDepth(pixels, width, height, sourceBits, bits, sourcePalette, palette, colors);
}

int32_t CellDataClose(OffscreenRecord *record) {
  if (record == nullptr || record->hBandCache == 0) return 0;
  const HostWord *cache = entry::lockCache(*record);
  GlobalFree(cache[BANDCACHE_BAND]);
  GlobalFree(cache[BANDCACHE_PALETTE]);
  GlobalFree(record->hBandCache);
  record->hBandCache = 0;
  return 0;
}
