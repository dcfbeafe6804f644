// SPDX-License-Identifier: MIT
#include "filter/handover.h"

#include <array>
#include <cstring>

#include "failure.h"

namespace host {
namespace {

// Offsets in the export info.
enum InfoOffset {
  kDisplayDpi = 2,
  kPictureUnits = 10,
  kExtentX = 12,
  kExtentY = 16,
  kDisplayX = 20,
  kDisplayY = 24
};

template <class Value>
void put(std::array<uint8_t, EXPORT_CELL_INFO_BYTES> &info, InfoOffset at, Value value) {
  std::memcpy(info.data() + at, &value, sizeof value);
}

}  // namespace

uint32_t exportCells(const Library &library, const Setup &setup, const Handover &picture, const char *name,
                     OutputStream &stream) {
  PictureRecord record{};
  record.nBits = picture.bits;
  record.nWidth = picture.width;
  record.nHeight = picture.height;
  record.hPalette = picture.table.handle();
  record.hBits = picture.pixels.handle();

  std::array<uint8_t, EXPORT_CELL_INFO_BYTES> info{};
  put(info, kDisplayDpi, uint16_t{96});
  put(info, kPictureUnits, picture.unitsPerInch);
  put(info, kExtentX, picture.extentX);
  put(info, kExtentY, picture.extentY);
  put(info, kDisplayX, int32_t{1280});
  put(info, kDisplayY, int32_t{1024});

  std::array<HostWord, RAXEL_RECORD_WORDS> exportRecord{};
  exportRecord[RAXEL_RECORD_SETUP] = setup.handle();
  exportRecord[RAXEL_RECORD_STATUS] = reinterpret_cast<HostWord>(stream.status());
  return library.exportCellData(name, &record, info.data(), exportRecord.data());
}

void checkComplete(const OutputStream &stream, uint32_t result, const std::string &output,
                   const Library &library) {
  if (result == RAXEL_OK && stream.complete() && stream.closed()) return;
  const std::string code = result == RAXEL_OK ? "" : " (code " + std::to_string(result) + ")";
  throw Failure(RAXEL_HOST_FILTER_FAILED, library.path + ": stopped before the picture was complete" +
                                              code + "; " + output + " is not written");
}

}  // namespace host
