// SPDX-License-Identifier: MIT
// The driver's two entries, its initialisation and its termination.
#include <cstring>

#include "raster/driver_state.h"
#include "raster/record.h"
#include "raster/support.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "runtime/settings_block.h"
#include "runtime/settings_in_use.h"

namespace raster {
namespace {

void takeSetup(Handle setup) {
  hSetup = setup;
  lpSetup = runtime::lockSettings(setup);
  lpEMData->hSetupRef = setup;
  if (lpSetup == nullptr) return;
  const int64_t treatment = int64_t{lpSetup->nColorMode} - RAXEL_STORED_COLORS;
  if (treatment >= RAXEL_TREAT_NONE && treatment < RAXEL_TREATMENTS) {
    lpEMData->nColorOp = static_cast<uint32_t>(treatment);
  }
}

// Tells the host that progress will count to 100. Its answer is ignored.
void announceProgress(HostWord *status) {
  lpEMData->lpHostStatus = status;
  if (status == nullptr) return;
  if (status[RAXEL_STATUS_CALLBACK] == 0 || status[RAXEL_STATUS_CONTEXT] == 0) return;
  tellHost(0, static_cast<HostWord>(RAXEL_REPORT_STARTED), RAXEL_REPORT_COMPLETE, 0);
}

// A reply buffer past this size is refused: no allocator of a session should end the process.
bool makeReplyBuffer(uint32_t size) {
  if (size > INT32_MAX) return false;
  // A state that the host marked as ended is initialised in place and still has its old buffer.
  GlobalFree(lpEMData->hReplyBuf);
  lpEMData->hReplyBuf = runtime::allocate(size);
  lpEMData->nReplySize = size;
  lpEMData->lpReplyBuf = static_cast<uint8_t *>(GlobalLock(lpEMData->hReplyBuf));
  return true;
}

// A name that does not fit is refused: a cut path would name another file.
bool takeName(const char *name) {
  if (name == nullptr) name = "";
  const size_t length = ::strnlen(name, RAXEL_NAME_ROOM);
  if (length >= RAXEL_NAME_ROOM) return false;
  std::memcpy(lpEMData->szOutFile, name, length + 1);
  return true;
}

int32_t giveUp(int32_t code) {
  endState();
  return code;
}

int32_t dispatch(HostWord record) {
  if (lpEMData == nullptr) return 0;
  lpEMData->nLastError = 0;
  if (record == 0 || static_cast<int32_t>(lpEMData->nState) <= 0) return 0;
  getfunc(field<uint32_t>(record, kOpcodeAt))(record);
  return lpEMData == nullptr ? 0 : lpEMData->nLastError;
}

}  // namespace
}  // namespace raster

int32_t RASTER_dd_entry(uint32_t op, void *out, uint32_t /*unused*/) {
  if (out == nullptr) return 0;
  switch (op & 0xFFFF) {
    case RAXEL_ENTRY_VERSION:
      runtime::store<uint32_t>(out, RAXEL_VERSION);
      break;
    case RAXEL_ENTRY_ADDRESS:
      runtime::store(out, &RASTER_dd_entry32);
      break;
    default:
      break;
  }
  return 0;
}

int32_t RASTER_dd_entry32(HostWord /*unused*/, uint32_t op, void *record) {
  switch (op & 0xFFFF) {
    case RAXEL_ENTRY_START: {
      // With a common block, a state that was not marked -1 counts as initialised.
      const bool running = hCommon != 0 && lpEMData != nullptr && lpEMData->nState != UINT32_MAX;
      return running ? 0 : RASTER_initdvr(static_cast<HostWord *>(record));
    }
    case RAXEL_ENTRY_EXECUTE:
      return raster::dispatch(reinterpret_cast<HostWord>(record));
    case RAXEL_ENTRY_END:
      if (lpEMData != nullptr) lpEMData->nLastError = 0;
      return RASTER_termdvr();
    case RAXEL_ENTRY_VERSION:
      if (record != nullptr) runtime::store<uint32_t>(record, RAXEL_VERSION);
      return sizeof(uint32_t);
    default:
      return 0;
  }
}

int32_t RASTER_initdvr(HostWord *record) {
  if (record == nullptr) return RAXEL_NO_MEMORY;
  AllocGlobal();
  if (lpEMData == nullptr) return RAXEL_NO_MEMORY;
  raster::takeSetup(record[RAXEL_START_SETUP]);
  const runtime::SettingsInUse use(lpSetup);
  raster::announceProgress(reinterpret_cast<HostWord *>(record[RAXEL_START_STATUS]));
  if (lpEMData == nullptr) return RAXEL_NO_MEMORY;
  if (use.destroyed()) return raster::giveUp(RAXEL_NO_MEMORY);
  if (!raster::makeReplyBuffer(static_cast<uint32_t>(record[RAXEL_START_REPLY_BYTES])))
    return raster::giveUp(RAXEL_NO_MEMORY);
  if (!raster::takeName(reinterpret_cast<const char *>(record[RAXEL_START_NAME])))
    return raster::giveUp(RAXEL_CANNOT_WRITE);
  record[RAXEL_START_REPLIES] = reinterpret_cast<HostWord>(lpEMData->lpReplyBuf);
  lpEMData->nState = RAXEL_STATE_INITIALISED;
  raster::writeCapabilities(reinterpret_cast<uint32_t *>(record[RAXEL_START_CAPABILITIES]),
                            lpEMData->nColorOp);
  return RAXEL_OK;
}

int32_t RASTER_termdvr() {
  if (lpEMData == nullptr) return 0;
  if (lpEMData->nState != RAXEL_STATE_INITIALISED) d_cldv(0);
  raster::endState();
  return 0;
}
