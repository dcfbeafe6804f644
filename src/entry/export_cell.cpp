// SPDX-License-Identifier: MIT
// The one-call export: a finished picture becomes a file, a block or a host stream.
#include <cstddef>

#include "entry/output_stream.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "runtime/settings_block.h"
#include "runtime/settings_in_use.h"
#include "runtime/unaligned.h"

// What hosts lay out by offset, and on 32-bit machines to the end.
static_assert(offsetof(PictureRecord, nWidth) == 2 && offsetof(PictureRecord, nHeight) == 4 &&
              offsetof(PictureRecord, nResolution) == 6 && offsetof(PictureRecord, dExtentX) == 8 &&
              offsetof(PictureRecord, dExtentY) == 16 && offsetof(PictureRecord, hPalette) == 24);
static_assert(sizeof(void *) != 4 || (offsetof(PictureRecord, hBits) == 28 && sizeof(PictureRecord) == 32));

namespace entry {
namespace {

// What the host says about picture and display: 28 bytes with fixed offsets, at any address.
struct CellInfo {
  int16_t displayResolution;   // dots per inch, for both axes
  uint16_t pictureResolution;  // extent units per inch
  int32_t extentX;
  int32_t extentY;
  int32_t displayWidth;  // dots
  int32_t displayHeight;
};

CellInfo readInfo(const void *info) {
  const auto *bytes = static_cast<const uint8_t *>(info);
  return {runtime::load<int16_t>(bytes + 2),  runtime::load<uint16_t>(bytes + 10),
          runtime::load<int32_t>(bytes + 12), runtime::load<int32_t>(bytes + 16),
          runtime::load<int32_t>(bytes + 20), runtime::load<int32_t>(bytes + 24)};
}

}  // namespace
}  // namespace entry

uint32_t ExportCellData(const char *name, PictureRecord *picture, const void *info,
                        HostWord *exportRecord) {
  if (picture == nullptr || info == nullptr || exportRecord == nullptr) return RAXEL_BAD_SETUP;
  RasterSetup *settings = runtime::lockSettings(exportRecord[RAXEL_RECORD_SETUP]);
  if (settings == nullptr) return RAXEL_BAD_SETUP;
  auto *status = reinterpret_cast<HostWord *>(exportRecord[RAXEL_RECORD_STATUS]);
  const runtime::SettingsInUse use(settings);
  lpRaster = settings;
  settings->lpStatus = status;

  void *memory = nullptr;
  const Handle file = entry::openOutput({name, settings->lpfnOutputProc, status}, &memory);
  if (file == 0) return RAXEL_CANNOT_WRITE;
  // The host's procedure may have locked another record meanwhile. One that destroyed ours has left
  // none, and the picture has no format then.
  lpRaster = use.destroyed() ? nullptr : settings;

  const entry::CellInfo cell = entry::readInfo(info);
  SetDisplayInfo(cell.displayWidth, cell.displayHeight, cell.displayResolution, cell.displayResolution);
  picture->dExtentX = cell.extentX;
  picture->dExtentY = cell.extentY;
  picture->nResolution = cell.pictureResolution;

  // Once the output is open the call reports success, whatever became of the picture: hosts learn of
  // that through the status callback or the stream procedure.
  OutputPicture(file, picture, DrawExportCellData);
  entry::closeOutput(file, status, &memory);
  return RAXEL_OK;
}
