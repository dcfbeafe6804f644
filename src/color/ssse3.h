// What functions of Vectors::kSsse3 (see kernels.h) are compiled for, and what they share.
#pragma once

#include "runtime/ssse3.h"

#if defined(RAXEL_HAS_SSSE3)

namespace color {

using runtime::loadSixteen;
using runtime::storeSixteen;

}  // namespace color

#endif
