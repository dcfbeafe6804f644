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

}  // namespace host
