// The diagnostics level, a plain number that a host writes.
#include "color/debug_level.h"

uint16_t _debug_color_res = 0;
