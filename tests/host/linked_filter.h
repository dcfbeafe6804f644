// SPDX-License-Identifier: MIT
// The filter linked into the tests, as the command finds it in raxel.so.
#pragma once

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

}  // namespace host_test
