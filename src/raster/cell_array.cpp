// SPDX-License-Identifier: MIT
// Cell arrays: rows of pixels, collected between begin raster and end raster into one picture, or
// each a picture of its own outside such a frame.
#include "raster/cell_array.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "raster/cell_geometry.h"
#include "raster/driver_state.h"
#include "raster/record.h"
#include "raxel/color.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"

namespace raster {
namespace {

constexpr uint32_t kMostPoints = 0x7FFFFFF / 24;  // more points than this cannot precede the data

uint32_t outputWidth(const RasterDriverState &state, uint32_t columns) {
  return spanOf(state.DevWindow[3], state.DevWindow[0], columns);
}

void dropBuffer(RasterDriverState &state) {
  GlobalFree(state.hCellBuf);
  state.hCellBuf = 0;
}

void beginRaster(RasterDriverState &state, HostWord record) {
  const auto points = field<uint32_t>(record, kPointCountAt);
  if (points > kMostPoints) return;
  const size_t lengthAt = kPointsAt + kPointBytes * points;
  if (field<uint32_t>(record, lengthAt) < kBeginBytes) return;
  const HostWord data = record + lengthAt + sizeof(uint32_t);

  const auto columns = field<uint32_t>(data, kBeginColumnsAt);
  const auto rows = field<uint32_t>(data, kBeginRowsAt);
  state.nCellFlags = field<uint16_t>(data, kBeginFlagsAt);
  state.bCellActive = 1;
  state.nCellWidth = outputWidth(state, columns);
  state.nCellHeight = rows;
  state.nCellBits = bitsOf(field<int32_t>(data, kBeginPrecisionAt));
  state.nCellRowsDone = 0;
  dropBuffer(state);
  state.hCellBuf = runtime::allocate(runtime::bitmapBytes(state.nCellWidth, rows, state.nCellBits));
}

void endRaster(RasterDriverState &state) {
  state.bCellActive = 0;
  if (state.hCellBuf == 0) return;
  if (!useDriverSetup()) {
    push_er(RAXEL_NO_MEMORY);
    dropBuffer(state);
    return;
  }
  // What the host does meanwhile finds no buffer to drop.
  const runtime::Block pixels(std::exchange(state.hCellBuf, 0));
  PictureRecord picture = {};
  picture.nBits = static_cast<uint16_t>(state.nCellBits);
  picture.nWidth = static_cast<uint16_t>(state.nCellWidth);
  picture.nHeight = static_cast<uint16_t>(state.nCellHeight);
  picture.nResolution = static_cast<uint16_t>(state.nResolution);
  picture.dExtentX = state.nCellWidth;
  picture.dExtentY = state.nCellHeight;
  picture.hBits = pixels.handle();
  runtime::Block palette;
  if (state.nCellBits < 24) {
    palette = paletteOf(state, state.nCellBits);
    if (!palette) {
      push_er(RAXEL_NO_MEMORY);
      return;
    }
    picture.hPalette = palette.handle();
  }
  OutputPicture(state.hOutFile, &picture, DrawExportCellData);
}

// One cell array, with its record's numbers resolved.
struct Cells {
  uint32_t bits;
  uint32_t width;
  uint32_t rows;
  uint64_t rowBytes;
  uint64_t sourceStride;
  bool bottomUp;
  int32_t treatment;      // of the colours of 24-bit rows; 0: none
  const uint8_t *pixels;  // null when the record's pointer is null
};

// Rows run upward when the array and the window disagree about which way y grows.
bool runsBottomUp(const RasterDriverState &state, HostWord record) {
  const auto first = field<double>(record, kFirstYAt);
  const auto second = field<double>(record, kSecondYAt);
  const double windowFirst = state.DevWindow[1];
  const double windowSecond = state.DevWindow[4];
  return (second < first && windowSecond > windowFirst) || (second > first && windowSecond < windowFirst);
}

Cells readCells(const RasterDriverState &state, HostWord record) {
  const auto precision = field<int32_t>(record, kPrecisionAt);
  const auto columns = field<uint32_t>(record, kColumnsAt);
  Cells cells = {};
  cells.bits = bitsOf(precision);
  cells.width = outputWidth(state, columns);
  cells.rows = field<uint32_t>(record, kRowsAt);
  cells.rowBytes = runtime::rowStride(cells.width, cells.bits);
  // Only 24-bit sources carry their full width when the window cuts the row.
  cells.sourceStride = cells.bits == 24 ? runtime::rowStride(columns, 24) : cells.rowBytes;
  cells.bottomUp = runsBottomUp(state, record);
  cells.treatment = static_cast<int32_t>(state.nColorOp);
  cells.pixels =
      precision < 0 ? field<const uint8_t *>(record, kPixelsAt) : recordBytes(record) + kPixelsAt;
  return cells;
}

// Copies one row into the buffer, cut where the buffer ends, and treats its colours.
void placeRow(const Cells &cells, const uint8_t *source, std::span<uint8_t> buffer, uint64_t row) {
  const uint64_t at = row * cells.rowBytes;
  const uint64_t copied = std::min<uint64_t>(cells.rowBytes, buffer.size() - at);
  uint8_t *target = buffer.data() + at;
  std::memcpy(target, source, static_cast<size_t>(copied));
  if (cells.bits == 24 && cells.treatment != 0) {
    const auto pixels = static_cast<uint32_t>(std::min<uint64_t>(cells.width, copied / 3));
    rev_rgb(pixels, target, cells.treatment);
  }
}

// Rows that lie in the buffer at all, in part or whole. A cell array wider or deeper than begin
// raster announced reaches past its end.
uint64_t rowsInside(const Cells &cells, std::span<const uint8_t> buffer) {
  return cells.rowBytes == 0 ? 0 : (buffer.size() + cells.rowBytes - 1) / cells.rowBytes;
}

// Row r goes to buffer row done - 1 - r.
void placeUpward(const Cells &cells, std::span<uint8_t> buffer, uint32_t count, uint32_t done) {
  const uint64_t inside = rowsInside(cells, buffer);
  for (uint64_t r = done > inside ? done - inside : 0; r < count; ++r) {
    placeRow(cells, cells.pixels + cells.sourceStride * r, buffer, done - 1 - r);
  }
}

// Row r goes to buffer row done + r.
void placeDownward(const Cells &cells, std::span<uint8_t> buffer, uint32_t count, uint32_t done) {
  const uint64_t inside = rowsInside(cells, buffer);
  for (uint64_t r = 0; r < count && done + r < inside; ++r) {
    placeRow(cells, cells.pixels + cells.sourceStride * r, buffer, done + r);
  }
}

// Places the array's rows into a picture of `height` rows and moves its row counter `done`.
// Bottom-up the counter starts at height - 1, so that the first row lands in row height - 2 and the
// last buffer row is never filled; when it has come down to 0 the next array starts again there.
void placeRows(const Cells &cells, Handle block, uint32_t height, uint32_t &done) {
  if (cells.pixels == nullptr && block != 0) return;
  if (cells.bottomUp && done == 0 && height != 0) done = height - 1;
  if (block == 0) {
    push_er(RAXEL_NO_MEMORY);
    return;
  }
  const std::span<uint8_t> buffer = runtime::lockBytes(block);
  if (cells.bottomUp) {
    const uint32_t count = std::min(cells.rows, done);
    placeUpward(cells, buffer, count, done);
    done -= count;
  } else {
    const uint32_t count = std::min(cells.rows, height > done ? height - done : 0);
    placeDownward(cells, buffer, count, done);
    done += count;
  }
}

void writeAlone(RasterDriverState &state, const Cells &cells) {
  dropBuffer(state);
  state.hCellBuf = runtime::allocate(runtime::bitmapBytes(cells.width, cells.rows, cells.bits));
  uint32_t done = 0;
  placeRows(cells, state.hCellBuf, cells.rows, done);
  const runtime::Block pixels(std::exchange(state.hCellBuf, 0));
  if (!pixels) return;
  RasterWriteCellData(pixels.handle(), cells.width, cells.rows, state.nResolution, cells.bits,
                      cells.bits == 24 ? RAXEL_RASTER_RGB : RAXEL_RASTER_INDEXED);
}

// Inside a frame the rows wait for its end; outside they are a picture.
void takeCells(RasterDriverState &state, const Cells &cells) {
  if (state.bCellActive != 0) {
    placeRows(cells, state.hCellBuf, state.nCellHeight, state.nCellRowsDone);
  } else {
    writeAlone(state, cells);
  }
}

}  // namespace
}  // namespace raster

runtime::Block raster::paletteOf(const RasterDriverState &state, uint32_t bits) {
  const size_t entries = size_t{1} << bits;
  runtime::Block palette = runtime::Block::ofSize(uint64_t{entries} * 3);
  if (palette) std::memcpy(palette.data(), state.ColorTable, std::min<size_t>(entries, 256) * 3);
  return palette;
}

HostWord d_gdp(HostWord record) {
  if (lpEMData == nullptr || record == 0) return record;
  switch (raster::field<int32_t>(record, raster::kPrimitiveAt)) {
    case RAXEL_PRIMITIVE_BEGIN_RASTER:
      raster::beginRaster(*lpEMData, record);
      break;
    case RAXEL_PRIMITIVE_END_RASTER:
      raster::endRaster(*lpEMData);
      break;
    default:
      break;
  }
  return record;
}

HostWord d_ca(HostWord record) {
  if (lpEMData == nullptr || record == 0) return record;
  raster::takeCells(*lpEMData, raster::readCells(*lpEMData, record));
  return record;
}
