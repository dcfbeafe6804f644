// SPDX-License-Identifier: MIT
// The draw procedure for host pixels: it tells their size, and has one band for the whole picture.
#include "raxel/filter.h"

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
  format.nKind = RAXEL_KIND_CELL_DATA;
}

}  // namespace
}  // namespace entry

HostWord DrawExportCellData(HostWord op, HostWord a, HostWord b, HostWord /*c*/) {
  auto *record = reinterpret_cast<OffscreenRecord *>(a);
  switch (op) {
    case RAXEL_DRAW_QUERY:
      if (a != 0 && b != 0) {
        entry::query(*reinterpret_cast<const PictureRecord *>(a), *reinterpret_cast<PictureFormat *>(b));
      }
      return 0;
    case RAXEL_DRAW_OPEN:
      return CellDataOpen(record, reinterpret_cast<const HostWord *>(b));
    case RAXEL_DRAW_CLOSE:
      return static_cast<HostWord>(CellDataClose(record));
    case RAXEL_DRAW_BAND:
      return CellDataBand(record);
    default:
      return 0;
  }
}
