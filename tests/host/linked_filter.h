// SPDX-License-Identifier: MIT
// The filter linked into the tests, as the command finds it in raxel.so.
#pragma once

#include "filter/handover.h"
#include "filter/library.h"
#include "host/pictures.h"
#include "raxel/filter.h"
#include "raxel/settings.h"
#include "raxel/stream.h"

namespace host_test {

inline host::Library linkedFilter() {
  host::Library library;
  library.createSetup = CreateSetup;
  library.destroySetup = DestroySetup;
  library.escapeSetup = xEscapeSetup;
  library.exportCellData = ExportCellData;
  library.outputPicture = OutputPicture;
  library.settings = &lpRaster;
  library.openStream = kvlOpen;
  library.writeStream = kvlWrite;
  library.closeStream = kvlClose;
  library.services = services();
  return library;
}

// What goes over to it of a picture that is prepared, or whose rows are still to come.
inline host::Handover handoverOf(const RaxelPlan &plan, const prepare::HandleMemory &pixels,
                                 const prepare::HandleMemory &table,
                                 const prepare::RowByRow *rows = nullptr) {
  return {pixels,
          table,
          static_cast<uint16_t>(plan.bits),
          static_cast<uint16_t>(plan.width),
          static_cast<uint16_t>(plan.height),
          plan.extentX,
          plan.extentY,
          static_cast<uint16_t>(plan.unitsPerInch),
          rows};
}

}  // namespace host_test
