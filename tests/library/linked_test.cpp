// SPDX-License-Identifier: MIT
// A host that is linked to the library and does not bother with position independence: the linker then
// gives the exported variables that it names a place in the host's own memory (a copy relocation), and
// the library must look for them there.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "raxel/raxel.h"
#include "support/capture.h"

namespace {

TEST(LinkedHost, AndLibrarySeeTheSameCommonBlock) {
  // With no common block an initialisation without a record is refused; a session that is open already
  // lets it pass.
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, nullptr), RAXEL_BAD_SETUP);
  SessionCommon common{};
  common.nSessState = 5;
  hCommon = 1;
  lpCommon = &common;
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, nullptr), 0);
  common.nSessState = 0;
  common.nSessError = 99;
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, nullptr), 0);
  EXPECT_EQ(common.nSessError, 0);
  hCommon = 0;
  lpCommon = nullptr;
}

TEST(LinkedHost, SwitchesTheLibrarysDiagnosticsOn) {
  const auto dither = [] {
    const Handle bits = GlobalAlloc(RAXEL_MOVEABLE_ZERO, 16);
    Handle table = 0;
    support::Capture printed(1);
    support::Capture reported(2);  // depth conversion says what it does there
    const Handle made = rlDitherBitmap(bits, 4, 4, 8, 1, 0, &table);
    std::string text = printed.text() + reported.text();
    if (made != 0) GlobalFree(made);
    if (table != 0) GlobalFree(table);
    GlobalFree(bits);
    return text;
  };
  EXPECT_EQ(dither(), "");
  _debug_color_res = 1;
  EXPECT_NE(dither(), "");
  _debug_color_res = 0;
  EXPECT_EQ(dither(), "");
}

TEST(LinkedHost, SeesWhatTheLibraryWrites) {
  const Handle setup = CreateSetup(0, "/nonexistent/none.ini", nullptr, nullptr);
  ASSERT_NE(setup, 0u);
  EXPECT_EQ(hRaster, setup);
  ASSERT_NE(lpRaster, nullptr);
  EXPECT_EQ(lpRaster->nBitmapMode, RAXEL_STORED_MODE_COLOR256);
  EXPECT_EQ(std::string(szFilter), "RAXEL");
  EXPECT_EQ(DestroySetup(setup), 0);
  EXPECT_EQ(lpRaster, nullptr);
}

TEST(LinkedHost, SharesTheTables) {
  FilterLoadRecord record{};
  fltLoadPointers(&record);
  EXPECT_EQ(record.table, &FilterExportTable[0]);
  EXPECT_EQ(std::string(FilterExportTable[0].name), "CreateSetup");
  EXPECT_EQ(one, 1.0);
  EXPECT_EQ(zero, 0.0);
}

}  // namespace
