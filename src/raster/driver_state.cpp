// SPDX-License-Identifier: MIT
// The driver's state block: allocated at initialisation, locked for its whole life.
#include "raster/driver_state.h"

#include "raster/memory_output.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/host_status.h"

namespace raster {

void endState() {
  if (lpEMData == nullptr) return;
  const Handle output = lpEMData->hOutFile;
  GlobalFree(lpEMData->hCellBuf);
  GlobalFree(lpEMData->hReplyBuf);
  FreeGlobal();
  // A host that is told of the close may call again: by then there is no state.
  if (output != 0) kvlClose(output);
  freeMemoryOutput();
}

bool useDriverSetup() {
  if (lpSetup == nullptr) return false;
  hRaster = hSetup;
  lpRaster = lpSetup;
  return true;
}

int32_t tellHost(HostWord a, HostWord b, HostWord c, HostWord d) {
  if (lpEMData == nullptr || lpEMData->lpHostStatus == nullptr) return 0;
  const HostWord *status = lpEMData->lpHostStatus;
  return CallGetSet_Status(runtime::statusCallback(status),
                           runtime::statusWord(status, RAXEL_STATUS_CONTEXT), a, b, c, d, 0, 0);
}

}  // namespace raster

// With a common block the state is the host's business, and nothing is allocated.
int32_t AllocGlobal() {
  if (hCommon != 0) return 0;
  // A second initialisation starts afresh; what the first one left is closed quietly.
  raster::endState();
  hEMData = GlobalAlloc(RAXEL_MOVEABLE_ZERO, sizeof(RasterDriverState));
  lpEMData = static_cast<RasterDriverState *>(GlobalLock(hEMData));
  return 0;
}

int32_t FreeGlobal() {
  if (lpEMData == nullptr) return 0;
  GlobalUnlock(hEMData);
  GlobalFree(hEMData);
  hEMData = 0;
  lpEMData = nullptr;
  return 0;
}

int32_t LockGlobal(HostWord /*unused*/) {
  return 0;
}

int32_t UnlockGlobal(HostWord /*unused*/) {
  return 0;
}
