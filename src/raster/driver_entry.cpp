// The driver's two entries, its initialisation and its termination.
#include <cstring>

#include "raster/driver_state.h"
#include "raster/record.h"
#include "raster/support.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "runtime/settings_in_use.h"

namespace {

// Words of the initialisation record.
constexpr int kNameWord = 3;
constexpr int kReplySizeWord = 9;
constexpr int kReplyBufferWord = 10;
constexpr int kSetupWord = 13;
constexpr int kStatusWord = 14;
constexpr int kCapabilitiesWord = 15;

constexpr int32_t kFirstTreatment = 103;  // colour mode of treatment 0
constexpr int32_t kLastTreatment = 107;

void takeSetup(Handle setup) {
  hSetup = setup;
  lpSetup = static_cast<RasterSetup *>(GlobalLock(setup));
  lpEMData->hSetupRef = setup;
  if (lpSetup == nullptr) return;
  const int32_t mode = lpSetup->nColorMode;
  if (mode >= kFirstTreatment && mode <= kLastTreatment) {
    lpEMData->nColorOp = static_cast<uint32_t>(mode - kFirstTreatment);
  }
}

// Tells the host that progress will count to 100. Its answer is ignored.
void announceProgress(HostWord *status) {
  lpEMData->lpHostStatus = status;
  if (status == nullptr) return;
  if (status[raster::kStatusCallback] == 0 || status[raster::kStatusContext] == 0) return;
  raster::tellHost(0, static_cast<HostWord>(intptr_t{-2}), 100, 0);
}

// A reply buffer past this size is refused: no allocator of a session should end the process.
bool makeReplyBuffer(uint32_t size) {
  if (size > INT32_MAX) return false;
  // A state that the host marked as ended is initialised in place and still has its old buffer.
  GlobalFree(lpEMData->hReplyBuf);
  lpEMData->hReplyBuf = runtime::allocate(size);
  lpEMData->lpReplyBuf = nullptr;
  if (lpEMData->hReplyBuf == 0) return false;
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
  raster::releaseOwned(*lpEMData);
  FreeGlobal();
  return code;
}

int32_t dispatch(HostWord record) {
  if (lpEMData == nullptr) return 0;
  lpEMData->nLastError = 0;
  if (record == 0 || static_cast<int32_t>(lpEMData->nState) <= 0) return 0;
  getfunc(raster::field<uint32_t>(record, raster::kOpcodeAt))(record);
  return lpEMData == nullptr ? 0 : lpEMData->nLastError;
}

}  // namespace

int32_t RASTER_dd_entry(uint32_t op, void *out, uint32_t /*unused*/) {
  if (out == nullptr) return 0;
  switch (static_cast<int16_t>(op)) {
    case -2:
      runtime::store<uint32_t>(out, RAXEL_VERSION);
      break;
    case -3:
      runtime::store(out, &RASTER_dd_entry32);
      break;
    default:
      break;
  }
  return 0;
}

int32_t RASTER_dd_entry32(HostWord /*unused*/, uint32_t op, void *record) {
  switch (static_cast<int16_t>(op)) {
    case 0: {
      // With a common block, a state that was not marked -1 counts as initialised.
      const bool running = hCommon != 0 && lpEMData != nullptr && lpEMData->nState != UINT32_MAX;
      return running ? 0 : RASTER_initdvr(static_cast<HostWord *>(record));
    }
    case 2:
      return dispatch(reinterpret_cast<HostWord>(record));
    case -1:
      if (lpEMData != nullptr) lpEMData->nLastError = 0;
      return RASTER_termdvr();
    case -2:
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
  takeSetup(record[kSetupWord]);
  const runtime::SettingsInUse use(lpSetup);
  announceProgress(reinterpret_cast<HostWord *>(record[kStatusWord]));
  if (lpEMData == nullptr) return RAXEL_NO_MEMORY;
  if (use.destroyed()) return giveUp(RAXEL_NO_MEMORY);
  if (!makeReplyBuffer(static_cast<uint32_t>(record[kReplySizeWord]))) return giveUp(RAXEL_NO_MEMORY);
  if (!takeName(reinterpret_cast<const char *>(record[kNameWord]))) return giveUp(RAXEL_CANNOT_WRITE);
  record[kReplyBufferWord] = reinterpret_cast<HostWord>(lpEMData->lpReplyBuf);
  lpEMData->nState = raster::kInitialised;
  raster::writeCapabilities(reinterpret_cast<uint32_t *>(record[kCapabilitiesWord]), lpEMData->nColorOp);
  return RAXEL_OK;
}

int32_t RASTER_termdvr() {
  if (lpEMData == nullptr) return 0;
  if (lpEMData->nState != raster::kInitialised) d_cldv(0);
  if (lpEMData == nullptr) return 0;
  raster::releaseOwned(*lpEMData);
  FreeGlobal();
  return 0;
}
