// SPDX-License-Identifier: MIT
#include "filter/bands.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "filter/filter_stream.h"

namespace host {
namespace {

constexpr uint64_t kBandBytes = 128 << 10;

uint32_t bandRows(const RaxelPlan &plan) {
  return static_cast<uint32_t>(std::clamp<uint64_t>(kBandBytes / plan.stride, 1, plan.height));
}

// What the draw procedure gets as its picture.
struct Drawing {
  const RaxelPlan &plan;
  const Handover &picture;
};

void query(const Drawing &drawing, PictureFormat &format) {
  const Handover &picture = drawing.picture;
  format.nResolution = picture.unitsPerInch;
  format.dWidth = static_cast<double>(picture.extentX) / picture.unitsPerInch;
  format.dHeight = static_cast<double>(picture.extentY) / picture.unitsPerInch;
  format.nKind = RAXEL_KIND_CELL_DATA;
}

// Answers the rows of a band.
HostWord open(const Drawing &drawing, const OffscreenRecord &record, const HostWord *request) {
  const RaxelPlan &plan = drawing.plan;
  if (record.nWidth != plan.width || record.nBits != plan.bits || request[OFFSCREEN_ROWS] != plan.height)
    return 0;
  if (record.lpPalette)
    std::memcpy(record.lpPalette, drawing.picture.table.bytes(), size_t{3} * record.nColors);
  return bandRows(plan);
}

// Rows first to last - 1, counted from the bottom of the picture, as the block's rows from its start on.
Handle draw(const Drawing &drawing, uint32_t first, uint32_t last) {
  const RaxelPlan &plan = drawing.plan;
  uint8_t *const block = drawing.picture.pixels.bytes();
  for (uint32_t row = last; row-- > first;) {
    drawing.picture.rows->make(plan.height - 1 - row, block + size_t{plan.stride} * (row - first));
  }
  return drawing.picture.pixels.handle();
}

HostWord drawProcedure(HostWord op, HostWord a, HostWord b, HostWord c) {
  if (op == RAXEL_DRAW_QUERY) {
    query(*reinterpret_cast<const Drawing *>(a), *reinterpret_cast<PictureFormat *>(b));
    return 0;
  }
  const OffscreenRecord &record = *reinterpret_cast<const OffscreenRecord *>(a);
  const Drawing &drawing = *static_cast<const Drawing *>(record.lpPicture);
  switch (op) {
    case RAXEL_DRAW_OPEN:
      return open(drawing, record, reinterpret_cast<const HostWord *>(b));
    case RAXEL_DRAW_BAND:
      try {
        return draw(drawing, static_cast<uint32_t>(b), static_cast<uint32_t>(c));
      } catch (const std::bad_alloc &) {
        return 0;
      }
    default:
      return 0;
  }
}

}  // namespace

bool takesBands(const RaxelPlan &plan) {
  return plan.compression == RAXEL_COMPRESS_NONE;
}

uint64_t bandBytes(const RaxelPlan &plan) {
  return uint64_t{plan.stride} * bandRows(plan);
}

uint32_t exportBands(const Library &library, Setup &setup, const RaxelPlan &plan, const Handover &picture,
                     OutputStream &stream) {
  setup.setStatus(stream.status());
  setup.makeCurrent();
  const FilterStream file(library, stream);
  if (file.handle() == 0) return RAXEL_CANNOT_WRITE;
  Drawing drawing{plan, picture};
  return static_cast<uint32_t>(library.outputPicture(file.handle(), &drawing, drawProcedure));
}

}  // namespace host
