// SPDX-License-Identifier: MIT
// Opening and closing the output device.
#include "raster/driver_state.h"
#include "raster/memory_output.h"
#include "raxel/filter.h"
#include "raxel/stream.h"
#include "runtime/host_output.h"

namespace raster {
namespace {

// The three ways out; 0 when the output cannot be opened.
Handle openOutput(const RasterDriverState &state, StreamProc procedure) {
  if (procedure != nullptr) {
    return runtime::openThroughProcedure(state.szOutFile, procedure, state.lpHostStatus);
  }
  return state.szOutFile[0] != '\0' ? kvlOpen(state.szOutFile, nullptr, KVL_OUTPUT) : openMemoryOutput();
}

}  // namespace
}  // namespace raster

HostWord d_opdv(HostWord record) {
  if (lpEMData == nullptr) return record;
  d_empes(record);
  lpEMData->nState = RAXEL_STATE_OPEN;
  if (lpEMData->hOutFile != 0) kvlClose(lpEMData->hOutFile);  // only a call past the table finds one
  const StreamProc procedure = lpSetup != nullptr ? lpSetup->lpfnOutputProc : nullptr;
  lpEMData->hOutFile = raster::openOutput(*lpEMData, procedure);
  // A host procedure that declines is not reported.
  if (lpEMData->hOutFile == 0 && procedure == nullptr) push_er(RAXEL_CANNOT_WRITE);
  return record;
}

HostWord d_cldv(HostWord record) {
  if (lpEMData == nullptr) return record;
  lpEMData->nState = RAXEL_STATE_INITIALISED;  // whatever happens next
  const bool stopped = RASTER_escape() != 0;
  if (lpEMData == nullptr) return record;
  const Handle output = lpEMData->hOutFile;
  lpEMData->hOutFile = 0;
  if (stopped) {
    kvlCloseandDelete(output, lpEMData->szOutFile);
  } else if (kvlClose(output) != 0) {
    push_er(RAXEL_CANNOT_WRITE);
  }
  return record;
}

int32_t RASTER_escape() {
  if (raster::tellHost(0, 0, 0, 0) == 0) return 0;
  push_er(RAXEL_STOPPED);
  return RAXEL_STOPPED;
}
