// SPDX-License-Identifier: MIT
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
    {"CreateSetup", RAXEL_ORDINAL_CREATE_SETUP, 0, 0},
    {"DestroySetup", RAXEL_ORDINAL_DESTROY_SETUP, 0, 0},
    {"EditSetup", RAXEL_ORDINAL_EDIT_SETUP, 0, 0},
    {"EscapeSetup", RAXEL_ORDINAL_ESCAPE_SETUP, 0, 0},
    {"KVLGetFilterVersion", RAXEL_ORDINAL_VERSION, 0, 0},
    {"dd_entry", RAXEL_ORDINAL_ENTRY, 0, 0},
    {"RASTER_dd_entry", RAXEL_ORDINAL_RASTER_ENTRY, 0, 0},
    {"ExportCellData", RAXEL_ORDINAL_EXPORT_CELL_DATA, 0, 0},
    {"szDLLName", RAXEL_ORDINAL_LIBRARY_NAME, 0, 0},
};

void fltLoadPointers(FilterLoadRecord *record) {
  if (record == nullptr) return;
  record->count = RAXEL_TABLE_ROWS;
  record->table = FilterExportTable;
}

uint32_t KVLGetFilterVersion() {
  return RAXEL_VERSION;
}
