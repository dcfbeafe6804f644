// The filter's front door: the table of entries and the version.
#include <cstddef>

#include "raxel/filter.h"

// What a 32-bit host reads by offset.
static_assert(sizeof(void *) != 4 ||
              (sizeof(FilterExportEntry) == 12 && offsetof(FilterExportEntry, ordinal) == 4));
static_assert(offsetof(FilterLoadRecord, count) == 4 && offsetof(FilterLoadRecord, table) == 8);

// The ordinals leave 1007 out: between the generic entry and the raster entry there is a hole. The
// names "EscapeSetup" and "szDLLName" stand for the symbols xEscapeSetup and export_szDLLName.
const FilterExportEntry FilterExportTable[RAXEL_TABLE_ROWS] = {
    {"CreateSetup", 1001, 0, 0},     {"DestroySetup", 1002, 0, 0},        {"EditSetup", 1003, 0, 0},
    {"EscapeSetup", 1004, 0, 0},     {"KVLGetFilterVersion", 1005, 0, 0}, {"dd_entry", 1006, 0, 0},
    {"RASTER_dd_entry", 1008, 0, 0}, {"ExportCellData", 1009, 0, 0},      {"szDLLName", 1010, 0, 0},
};

void fltLoadPointers(FilterLoadRecord *record) {
  if (record == nullptr) return;
  record->count = RAXEL_TABLE_ROWS;
  record->table = FilterExportTable;
}

uint32_t KVLGetFilterVersion() {
  return RAXEL_VERSION;
}
