// SPDX-License-Identifier: MIT
// A library of the right version whose table is empty but for the version.
#include <stdint.h>

#include "raxel/filter.h"

static const FilterExportEntry table[] = {{"KVLGetFilterVersion", RAXEL_ORDINAL_VERSION, 0, 0}};

void fltLoadPointers(FilterLoadRecord *record) {
  record->count = 1;
  record->table = table;
}
uint32_t KVLGetFilterVersion(void) {
  return RAXEL_VERSION;
}
