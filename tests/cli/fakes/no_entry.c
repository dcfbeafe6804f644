// A library of the right version whose table lists a function that it does not have.
#include <stdint.h>

#include "raxel/filter.h"

static const FilterExportEntry table[] = {{"KVLGetFilterVersion", 1005, 0, 0}, {"CreateSetup", 1001, 0, 0}};

void fltLoadPointers(FilterLoadRecord *record) {
  record->count = 2;
  record->table = table;
}
uint32_t KVLGetFilterVersion(void) {
  return RAXEL_VERSION;
}
