// SPDX-License-Identifier: MIT
// Sessions of the raster driver: any records in any order, framed and unframed cell arrays, sizes that no
// block holds, replies into buffers of any size, a host that objects, and an output that fails.
#include "driver_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

bool isKnown(int32_t code) {
  return code == 0 || code == RAXEL_NO_MEMORY || code == RAXEL_CANNOT_WRITE || code == RAXEL_STOPPED;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  fuzz::DriverHost driver(input);
  fuzz::require(isKnown(driver.host.initialise()), "a code that starting may answer");
  if (lpEMData != nullptr) lpEMData->nErrMax = input.byte() % 16;
  for (size_t records = 0; input.left() > 0 && records < 150; ++records) {
    const unsigned what = input.byte();
    if (lpEMData == nullptr || what == 255) {
      driver.host.terminate();
      driver.chooseSettings();
      driver.host.initialise();
    }
    if (what == 254) dq_es();
    if (what == 253 && lpEMData != nullptr) InquireSupport(input.word(), input.byte() - 128);
    const std::vector<uint8_t> record = driver.record();
    const fuzz::Exact place(record, what % 2 == 1);
    const int32_t code = RASTER_dd_entry32(0, RAXEL_ENTRY_EXECUTE, place.data());
    fuzz::require(isKnown(code), "a code that a function may answer");
    if (lpEMData != nullptr) {
      fuzz::require(lpEMData->nReplyPos <= lpEMData->nReplySize, "replies stay inside their buffer");
    }
  }
  driver.host.terminate();
  fuzz::require(lpEMData == nullptr, "nothing is left of the session");
  fuzz::require(driver.isClosed(), "an open stream is closed");
  return 0;
}
