// SPDX-License-Identifier: MIT
// Progress and stop requests: the one place where the host's status callback is called.
#include "raxel/filter.h"
#include "runtime/host_status.h"

namespace {

// Words for the host to fill in when it is asked again.
constexpr int kAnswerWords = 10;

}  // namespace

int32_t CallGetSet_Status(StatusCallback callback, HostWord context, HostWord a, HostWord b, HostWord c,
                          HostWord d, HostWord e, HostWord f) {
  if (callback == nullptr) return 0;
  const int32_t answer = callback(context, a, b, c, d, e, f);
  // Only a refused plain report is asked about again; the second answer then decides.
  if (answer == 0 || a != 0 || b != 0) return answer;
  HostWord block[kAnswerWords] = {};
  return callback(context, RAXEL_REPORT_ASK_AGAIN, RAXEL_REPORT_STOP, 0, 0, 0,
                  reinterpret_cast<HostWord>(block));
}

int32_t UpdateStatus(uint32_t percent) {
  const HostWord *status = lpRaster != nullptr ? lpRaster->lpStatus : nullptr;
  const StatusCallback callback = runtime::statusCallback(status);
  if (callback == nullptr) return 0;
  const HostWord context = runtime::statusWord(status, RAXEL_STATUS_CONTEXT);
  return CallGetSet_Status(callback, context, 0, 0, 0, percent, 0, 0) == 0 ? RAXEL_OK : RAXEL_STOPPED;
}
