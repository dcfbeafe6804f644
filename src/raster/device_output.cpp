// Opening and closing the output device.
#include "raster/driver_state.h"
#include "raster/memory_output.h"
#include "raxel/filter.h"
#include "raxel/stream.h"

namespace {

// Through the host's own procedure. A failure on this road is not reported.
Handle openThroughProcedure(StreamProc procedure) {
  KvlStreamDesc descriptor = {};
  const HostWord *status = lpEMData->lpHostStatus;
  descriptor.lpMemVar = status == nullptr ? 0 : status[RAXEL_STATUS_PROC_CONTEXT];
  descriptor.lpfnProc = reinterpret_cast<HostWord>(procedure);
  return kvlOpen(lpEMData->szOutFile, &descriptor, KVL_OUTPUT);
}

}  // namespace

HostWord d_opdv(HostWord record) {
  if (lpEMData == nullptr) return record;
  d_empes(record);
  lpEMData->nState = RAXEL_STATE_OPEN;
  if (lpEMData->hOutFile != 0) kvlClose(lpEMData->hOutFile);  // only a call past the table finds one
  if (lpSetup != nullptr && lpSetup->lpfnOutputProc != nullptr) {
    lpEMData->hOutFile = openThroughProcedure(lpSetup->lpfnOutputProc);
    return record;
  }
  lpEMData->hOutFile = lpEMData->szOutFile[0] != '\0' ? kvlOpen(lpEMData->szOutFile, nullptr, KVL_OUTPUT)
                                                      : raster::openMemoryOutput();
  if (lpEMData->hOutFile == 0) push_er(RAXEL_CANNOT_WRITE);
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
