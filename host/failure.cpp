// SPDX-License-Identifier: MIT
#include "failure.h"

namespace host {

Exit exitOf(int reason) {
  switch (reason) {
    case RAXEL_HOST_OK:
      return kDone;
    case RAXEL_HOST_BAD_PICTURE:
    case RAXEL_HOST_TOO_WIDE:
    case RAXEL_HOST_TOO_TALL:
    case RAXEL_HOST_TOO_LARGE:
      return kNoInput;
    case RAXEL_HOST_NO_SERVICE:
    case RAXEL_HOST_NO_MEMORY:
    case RAXEL_HOST_NO_FILTER:
    case RAXEL_HOST_FILTER_FAILED:
      return kLibrary;
    case RAXEL_HOST_NO_CREATE:
      return kNoCreate;
    case RAXEL_HOST_NO_WRITE:
    case RAXEL_HOST_NOT_VERIFIED:
      return kNoWrite;
    case RAXEL_HOST_STOPPED:
      return kStopped;
    default:
      return kUsage;
  }
}

RaxelHostCode reasonOf(Exit code) {
  switch (code) {
    case kDone:
      return RAXEL_HOST_OK;
    case kNoInput:
      return RAXEL_HOST_BAD_PICTURE;
    case kLibrary:
      return RAXEL_HOST_FILTER_FAILED;
    case kNoCreate:
      return RAXEL_HOST_NO_CREATE;
    case kNoWrite:
      return RAXEL_HOST_NO_WRITE;
    case kStopped:
      return RAXEL_HOST_STOPPED;
    default:
      return RAXEL_HOST_BAD_ARGUMENT;
  }
}

}  // namespace host
