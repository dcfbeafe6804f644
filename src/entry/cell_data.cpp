// The draw procedure for host pixels: one band, the whole picture, converted in memory.
#include "entry/cell_data.h"

#include "entry/draw_protocol.h"
#include "raxel/color.h"

namespace entry {
namespace {

void query(const PictureRecord &picture, PictureFormat &format) {
  format.dWidth = picture.dExtentX;
  format.dHeight = picture.dExtentY;
  format.nResolution = picture.nResolution;
  if (format.nResolution != 0) {
    format.dWidth /= format.nResolution;
    format.dHeight /= format.nResolution;
  }
  format.nKind = kKindCellData;
}

struct Size {
  uint32_t width;
  uint32_t height;
};

// The picture at the output's depth and size. Leaves `pixels` the host's own block when nothing has
// to be converted; false when there is no such picture.
bool convert(const OffscreenRecord &record, const PictureRecord &picture, Working &pixels) {
  const Size from = {picture.nWidth, picture.nHeight};
  const Size to = {record.nWidth, record.nBandRows};
  const auto fromBits = static_cast<int16_t>(picture.nBits);
  const auto toBits = static_cast<int16_t>(record.nBits);
  if (!pixels.extendTo(pictureBytes(from.width, from.height, picture.nBits))) return false;

  const bool shrinks = to.width < from.width || to.height < from.height;
  if (shrinks) {
    pixels.replace(rlShrinkBitmap(pixels.handle(), fromBits, from.width, from.height, to.width, to.height));
    if (pixels.handle() == 0) return false;
  }
  if (fromBits != toBits) {
    const Size now = shrinks ? to : from;
    Working sourceTable(picture.hPalette);
    sourceTable.extendTo(tableBytes(picture.nBits));
    const Handle table = lockCache(record)[BANDCACHE_PALETTE];
    pixels.replace(CellDataDepth(pixels.handle(), now.width, now.height, fromBits, toBits,
                                 sourceTable.handle(), table, record.nColors));
    if (pixels.handle() == 0) return false;
  }
  if (to.width > from.width || to.height > from.height) {
    // Still with the source's sizes, also when the other direction has just been shrunk and the rows
    // have new lengths: the picture comes out sheared then. Pictures have always come out so.
    if (!pixels.extendTo(pictureBytes(from.width, from.height, record.nBits))) return false;
    pixels.replace(rlStretchBitmap(pixels.handle(), toBits, from.width, from.height, to.width, to.height));
    if (pixels.handle() == 0) return false;
  }
  return true;
}

}  // namespace
}  // namespace entry

HostWord DrawExportCellData(HostWord op, HostWord a, HostWord b, HostWord /*c*/) {
  auto *record = reinterpret_cast<OffscreenRecord *>(a);
  switch (op) {
    case entry::kDrawQuery:
      if (a != 0 && b != 0) {
        entry::query(*reinterpret_cast<const PictureRecord *>(a), *reinterpret_cast<PictureFormat *>(b));
      }
      return 0;
    case entry::kDrawOpen:
      return CellDataOpen(record, reinterpret_cast<const HostWord *>(b));
    case entry::kDrawClose:
      return static_cast<HostWord>(CellDataClose(record));
    case entry::kDrawBand:
      return CellDataBand(record);
    default:
      return 0;
  }
}

Handle CellDataBand(OffscreenRecord *record) {
  if (record == nullptr || record->lpPicture == nullptr || record->hBandCache == 0) return 0;
  const auto &picture = *static_cast<const PictureRecord *>(record->lpPicture);
  entry::Working pixels(picture.hBits);
  bool there = picture.hBits != 0;
  if (there && entry::isReadable(picture.nBits)) {
    there = entry::convert(*record, picture, pixels);
  } else if (there) {
    pixels.replace(
        runtime::allocate(entry::pictureBytes(record->nWidth, record->nBandRows, record->nBits)));
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
