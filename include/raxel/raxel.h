// SPDX-License-Identifier: MIT
// The whole of raxel's interface.
//
// Some names of the library are words that an application may want for itself. Where RAXEL_NO_SHORT_NAMES
// is defined before the first of these headers is included, they leave such names out and no others; the
// line that does so says which they are. dlsym still finds them. The headers of libraxelhost (raxel/host.h)
// declare no name of the filter.
#ifndef RAXEL_RAXEL_H
#define RAXEL_RAXEL_H

#include "raxel/color.h"
#include "raxel/driver.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "raxel/profile.h"
#include "raxel/settings.h"
#include "raxel/stream.h"
#include "raxel/text.h"
#include "raxel/tiff.h"
#include "raxel/types.h"

#endif
