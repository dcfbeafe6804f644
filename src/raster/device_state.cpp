// SPDX-License-Identifier: MIT
// The picture's state between open and close: begin and end, window, viewport, colours.
#include <algorithm>
#include <cstring>

#include "raster/driver_state.h"
#include "raster/record.h"
#include "raxel/color.h"
#include "runtime/numbers.h"

namespace raster {
namespace {

enum Corner { kX1, kY1, kZ1, kX2, kY2, kZ2 };

constexpr double kMillimetresPerInch = 25.4;
constexpr uint32_t kColors = 256;

void enter(uint32_t state) {
  if (lpEMData != nullptr) lpEMData->nState = state;
}

bool usable(HostWord record) {
  return lpEMData != nullptr && record != 0;
}

}  // namespace
}  // namespace raster

HostWord d_begp(HostWord record) {
  raster::enter(RAXEL_STATE_PICTURE);
  d_reset(0, 4);
  return record;
}

HostWord d_begpb(HostWord record) {
  raster::enter(RAXEL_STATE_BODY);
  return record;
}

HostWord d_endp(HostWord record) {
  raster::enter(RAXEL_STATE_ENDED);
  return record;
}

HostWord ds_dvwn(HostWord record) {
  if (!raster::usable(record)) return record;
  std::memcpy(lpEMData->DevWindow, raster::recordBytes(record) + raster::kDataAt,
              sizeof lpEMData->DevWindow);
  return record;
}

HostWord ds_bgc(HostWord record) {
  if (!raster::usable(record)) return record;
  std::memcpy(lpEMData->BkColor, raster::recordBytes(record) + raster::kDataAt, sizeof lpEMData->BkColor);
  return record;
}

// The viewport is flat: z1 and z2 are not taken.
HostWord ds_dvvp(HostWord record) {
  if (!raster::usable(record)) return record;
  for (const int corner : {raster::kX1, raster::kY1, raster::kX2, raster::kY2}) {
    lpEMData->DevViewport[corner] =
        raster::field<double>(record, raster::kDataAt + sizeof(double) * static_cast<size_t>(corner));
  }
  return record;
}

// Metric mode turns millimetres per unit into dots per inch, rounded; every other mode forgets them.
HostWord ds_vpsm(HostWord record) {
  if (!raster::usable(record)) return record;
  const auto mode = raster::field<int16_t>(record, raster::kModeAt);
  if (mode < RAXEL_VIEWPORT_PLAIN || mode > RAXEL_VIEWPORT_OTHER ||
      (lpEMData->nState & raster::kOther7) != 0)
    return record;
  const auto scale = mode == RAXEL_VIEWPORT_METRIC ? raster::field<double>(record, raster::kScaleAt) : 0.0;
  // A scale that gives no 32-bit number keeps the low 32 bits of what a 64-bit one holds.
  lpEMData->nResolution =
      scale == 0.0
          ? 0
          : static_cast<uint32_t>(runtime::truncateTo<int64_t>(raster::kMillimetresPerInch / scale + 0.5));
  return record;
}

HostWord dq_dvwn(HostWord record) {
  if (lpEMData != nullptr) mov2buf(lpEMData->DevWindow, sizeof lpEMData->DevWindow);
  return record;
}

// The reply's order is x1, y2, nothing, y1, x2, nothing: hosts read it so.
HostWord dq_dvvp(HostWord record) {
  if (lpEMData == nullptr) return record;
  const double *viewport = lpEMData->DevViewport;
  const double reply[6] = {viewport[raster::kX1], viewport[raster::kY2], 0.0,
                           viewport[raster::kY1], viewport[raster::kX2], 0.0};
  mov2buf(reply, sizeof reply);
  return record;
}

// Loads colours into the table. The colour treatment is applied to the host's own record first, to
// every colour that it announces; those past the table's end are dropped.
HostWord ds_ct(HostWord record) {
  if (!raster::usable(record)) return record;
  const auto length = raster::field<uint32_t>(record, raster::kColorLengthAt);
  const uint32_t n = length < 2 ? 0 : (length - 2) / 3;
  const auto first = raster::field<uint32_t>(record, raster::kFirstColorAt);
  uint8_t *colors = raster::recordBytes(record) + raster::kColorsAt;
  rev_rgb(n, colors, static_cast<int32_t>(lpEMData->nColorOp));
  if (first >= raster::kColors) return record;
  const size_t taken = std::min(n, raster::kColors - first);
  std::memcpy(lpEMData->ColorTable[first], colors, taken * sizeof lpEMData->ColorTable[0]);
  return record;
}

// Accepted without effect: pixels carry no attributes.
HostWord ds_axc(HostWord record) {
  return record;
}
HostWord ds_tran(HostWord record) {
  return record;
}
HostWord ds_clpr(HostWord record) {
  return record;
}
HostWord ds_clip(HostWord record) {
  return record;
}
HostWord ds_dm(HostWord record) {
  return record;
}
HostWord ds_fl(HostWord record) {
  return record;
}
HostWord d_reset(HostWord first, HostWord /*second*/) {
  return first;
}
