// SPDX-License-Identifier: MIT
#include "support/paths.h"

namespace support {

std::string sourcePath(const std::string &fromTop) {
  return std::string(RAXEL_SOURCE_DIR "/") + fromTop;
}

}  // namespace support
