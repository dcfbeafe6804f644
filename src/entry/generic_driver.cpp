// SPDX-License-Identifier: MIT
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

constexpr int32_t kSessionClosed = 1;

// The operation stands in the low half of a word.
constexpr uint32_t operationOf(uint32_t op) {
  return op & 0xFFFF;
}

// A session that the host's common block says is not closed is not opened again.
int32_t initialise(void *record) {
  const bool open = hCommon != 0 && lpCommon != nullptr && lpCommon->nSessState != kSessionClosed;
  return open ? 0 : initdvr(static_cast<HostWord *>(record));
}

// Calls one driver function, named by the first 32 bits of its record. What it returns does not
// matter: the result is the session's error, which the host may write as well.
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
  if (entry::operationOf(op) == RAXEL_ENTRY_VERSION) runtime::store(out, KVLGetFilterVersion());
  if (entry::operationOf(op) == RAXEL_ENTRY_ADDRESS) runtime::store(out, &dd_entry32);
  return 0;
}

int32_t dd_entry32(HostWord /*unused*/, uint32_t op, void *record) {
  switch (entry::operationOf(op)) {
    case RAXEL_ENTRY_START:
      return entry::initialise(record);
    case RAXEL_ENTRY_EXECUTE:
      return entry::execute(record);
    case RAXEL_ENTRY_END:
      return entry::terminate();
    case RAXEL_ENTRY_VERSION:
      return entry::tellVersion(record);
    default:
      return 0;
  }
}
