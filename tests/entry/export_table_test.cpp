// SPDX-License-Identifier: MIT
// The export table, and the exported data beside it.
#include <gtest/gtest.h>

#include <cstring>

#include "raxel/color.h"
#include "raxel/filter.h"

namespace {

TEST(ExportTable, HoldsNineRowsWithAHoleAt1007) {
  const struct {
    const char *name;
    int ordinal;
  } rows[] = {{"CreateSetup", 1001},     {"DestroySetup", 1002},        {"EditSetup", 1003},
              {"EscapeSetup", 1004},     {"KVLGetFilterVersion", 1005}, {"dd_entry", 1006},
              {"RASTER_dd_entry", 1008}, {"ExportCellData", 1009},      {"szDLLName", 1010}};
  ASSERT_EQ(std::size(rows), 9u);
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_STREQ(FilterExportTable[i].name, rows[i].name);
    EXPECT_EQ(FilterExportTable[i].ordinal, rows[i].ordinal);
    EXPECT_EQ(FilterExportTable[i].reserved1, 0);
    EXPECT_EQ(FilterExportTable[i].reserved2, 0u);
  }
}

TEST(ExportTable, RowsAreTwelveBytesOn32BitMachines) {
  if (sizeof(void *) == 4) {
    EXPECT_EQ(sizeof(FilterExportEntry), 12u);
  }
  EXPECT_EQ(offsetof(FilterExportEntry, ordinal), sizeof(void *));
}

TEST(LoadPointers, WritesTwoFieldsAndLeavesTheRest) {
  FilterLoadRecord record;
  std::memset(static_cast<void *>(&record), 0xA5, sizeof record);
  fltLoadPointers(&record);
  EXPECT_EQ(record.hostWord, 0xA5A5A5A5u);
  EXPECT_EQ(record.count, 9);
  EXPECT_EQ(record.hostHalf, 0xA5A5);
  EXPECT_EQ(record.table, FilterExportTable);
}

TEST(LoadPointers, NoRecordNothingWritten) {
  fltLoadPointers(nullptr);
}

TEST(Version, IsTheSameEverywhere) {
  EXPECT_EQ(KVLGetFilterVersion(), 0x02000005u);
}

TEST(ExportedData, HasItsInitialValues) {
  EXPECT_EQ(hCommon, 0u);
  EXPECT_EQ(lpCommon, nullptr);
  EXPECT_EQ(FilterVersion, 1);
  EXPECT_EQ(FilterID, 18);
  EXPECT_EQ(NUM_GDSF_CHARSETS, 0);
  EXPECT_EQ(zero, 0.0);
  EXPECT_EQ(one, 1.0);
  EXPECT_EQ(sizeof GDSF_CHARSETLIST, 34u);
  for (const uint8_t byte : GDSF_CHARSETLIST) EXPECT_EQ(byte, 0);
  EXPECT_EQ(sizeof DebugStr, 80u);
  for (const char byte : DebugStr) EXPECT_EQ(byte, 0);
  EXPECT_EQ(sizeof export_szDLLName, 260u);
  for (const char byte : export_szDLLName) EXPECT_EQ(byte, 0);
  EXPECT_STREQ(szFilter, "raxel");
  EXPECT_EQ(_debug_color_res, 0);
  EXPECT_EQ(hRaster, 0u);
  EXPECT_EQ(lpRaster, nullptr);
  EXPECT_EQ(hSetup, 0u);
  EXPECT_EQ(lpSetup, nullptr);
  EXPECT_EQ(hEMData, 0u);
  EXPECT_EQ(lpEMData, nullptr);
}

}  // namespace
