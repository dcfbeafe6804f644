// SPDX-License-Identifier: MIT
// The driver's error stack and the reply buffer.
//
// Index -1 of the stack is FirstError, which stands right before it in the block. The driver never sets a
// capacity, so as delivered every push finds the stack full and overwrites index -1: FirstError is then
// always the latest error and nErrLost counts them all. A host that stores a capacity of up to 10 gets a
// working stack.
#include <algorithm>
#include <cstddef>

#include "raster/record.h"
#include "raxel/driver.h"

namespace raster {
namespace {

// The host may store anything in these two; only 0 to 10 can index the stack.
int32_t clampToStack(uint32_t value) {
  return std::clamp(static_cast<int32_t>(value), 0, RAXEL_ERR_CAPACITY);
}

static_assert(offsetof(RasterDriverState, ErrStack) ==
              offsetof(RasterDriverState, FirstError) + sizeof(ErrEntry));

ErrEntry &entry(int32_t index) {
  return index < 0 ? lpEMData->FirstError : lpEMData->ErrStack[index];
}

}  // namespace
}  // namespace raster

void push_er(int32_t code) {
  if (lpEMData == nullptr) return;
  const ErrEntry pushed = {lpEMData->nCurFunc, static_cast<int16_t>(code), 0};
  const int32_t count = raster::clampToStack(lpEMData->nErrCount);
  const int32_t capacity = raster::clampToStack(lpEMData->nErrMax);
  if (count != 0) {
    // A repeated error of one function is recorded once, and does not become the result again.
    const ErrEntry &top = raster::entry(count - 1);
    if (top.nFunc == pushed.nFunc && top.nCode == pushed.nCode) return;
  }
  if (count == 0) raster::entry(-1) = pushed;
  if (count >= capacity) {
    raster::entry(capacity - 1) = pushed;
    lpEMData->nErrLost += 1;
  } else {
    raster::entry(count) = pushed;
    lpEMData->nErrCount = static_cast<uint32_t>(count + 1);
  }
  lpEMData->nLastErrFunc = pushed.nFunc;
  lpEMData->nLastError = pushed.nCode;
}

HostWord d_popes(HostWord record) {
  if (lpEMData == nullptr || record == 0) return record;
  int32_t count = raster::clampToStack(lpEMData->nErrCount);
  // A negative number is answered as it came, and pops nothing.
  const int32_t n = std::min(raster::field<int32_t>(record, raster::kPopCountAt), count);
  mov2buf(&n, sizeof n);
  for (int32_t i = 0; i < n; ++i) {
    --count;
    lpEMData->nErrCount = static_cast<uint32_t>(count);
    mov2buf(&raster::entry(count), sizeof(ErrEntry));
  }
  return record;
}

// FirstError stays as it is.
HostWord d_empes(HostWord value) {
  if (lpEMData == nullptr) return value;
  lpEMData->nErrCount = 0;
  lpEMData->nErrLost = 0;
  lpEMData->nLastErrFunc = 0;
  lpEMData->nLastError = 0;
  return value;
}

HostWord dq_es() {
  if (lpEMData == nullptr) return 0;
  mov2buf(&lpEMData->nErrCount, sizeof lpEMData->nErrCount);
  mov2buf(&raster::entry(-1), sizeof(ErrEntry));
  mov2buf(&lpEMData->nErrLost, sizeof lpEMData->nErrLost);
  return 0;
}

// Replies of one session accumulate: nothing rewinds the position, and what no longer fits is cut.
void mov2buf(const void *source, uint32_t count) {
  if (lpEMData == nullptr || lpEMData->lpReplyBuf == nullptr || source == nullptr) return;
  const uint32_t position = lpEMData->nReplyPos;
  const uint32_t room = lpEMData->nReplySize > position ? lpEMData->nReplySize - position : 0;
  const uint32_t moved = std::min(count, room);
  if (moved != 0) std::memcpy(lpEMData->lpReplyBuf + position, source, moved);
  lpEMData->nReplyPos = position + moved;
}
