// SPDX-License-Identifier: MIT
// A library of the right version whose table lists a function that it does not have.
#include <stdint.h>

#include "raxel/filter.h"

static const FilterExportEntry table[] = {{"KVLGetFilterVersion", RAXEL_ORDINAL_VERSION, 0, 0},
                                          {"CreateSetup", RAXEL_ORDINAL_CREATE_SETUP, 0, 0}};

void fltLoadPointers(FilterLoadRecord *record) {
  record->count = 2;
  record->table = table;
}
uint32_t KVLGetFilterVersion(void) {
  return RAXEL_VERSION;
}
