// The generic driver entry: its address and version for the host, and the metafile session's
// operations behind it.
#include <cstddef>

#include "raxel/driver.h"
#include "raxel/filter.h"
#include "runtime/unaligned.h"

static_assert(offsetof(SessionCommon, nSessError) == 4 && offsetof(SessionCommon, lpSessStatus) == 8);
static_assert(sizeof(void *) != 4 || offsetof(SessionCommon, nSessStatusArg) == 12);

namespace entry {
namespace {

enum Operation : int16_t { kInitialise = 0, kExecute = 2, kTerminate = -1, kVersion = -2, kAddress = -3 };

constexpr int32_t kSessionClosed = 1;

// Operations are signed numbers in the low half of a word.
int16_t operationOf(uint32_t op) {
  return static_cast<int16_t>(static_cast<uint16_t>(op));
}

// A session that the host's common block says is not closed is not opened again.
int32_t initialise(void *record) {
  const bool open = hCommon != 0 && lpCommon != nullptr && lpCommon->nSessState != kSessionClosed;
  return open ? 0 : initdvr(static_cast<HostWord *>(record));
}

// Calls one driver function, named by the first 32 bits of its record. What it returns is of no
// account: the result is the session's error, which the host may write as well.
int32_t execute(void *record) {
  if (lpCommon == nullptr) return 0;
  lpCommon->nSessError = 0;
  if (record == nullptr || lpCommon->nSessState <= 0) return 0;
  const DriverFunction function = getfunc(runtime::load<uint32_t>(record));
  esc_mode(1);
  function(reinterpret_cast<HostWord>(record));
  esc_mode(0);
  return lpCommon != nullptr ? lpCommon->nSessError : 0;
}

int32_t terminate() {
  if (lpCommon != nullptr) lpCommon->nSessError = 0;
  return termdvr(0);
}

int32_t tellVersion(void *record) {
  if (record != nullptr) runtime::store(record, KVLGetFilterVersion());
  return 4;  // bytes
}

}  // namespace
}  // namespace entry

int32_t dd_entry(uint32_t op, void *out, uint32_t /*unused*/) {
  if (out == nullptr) return 0;
  if (entry::operationOf(op) == entry::kVersion) runtime::store(out, KVLGetFilterVersion());
  if (entry::operationOf(op) == entry::kAddress) runtime::store(out, &dd_entry32);
  return 0;
}

int32_t dd_entry32(HostWord /*unused*/, uint32_t op, void *record) {
  switch (entry::operationOf(op)) {
    case entry::kInitialise:
      return entry::initialise(record);
    case entry::kExecute:
      return entry::execute(record);
    case entry::kTerminate:
      return entry::terminate();
    case entry::kVersion:
      return entry::tellVersion(record);
    default:
      return 0;
  }
}
