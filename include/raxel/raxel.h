// The whole of raxel's interface.
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
