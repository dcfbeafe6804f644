// SPDX-License-Identifier: MIT
// The built library knows its own file name, and finds the profile that goes by it.
#include <gtest/gtest.h>

#include "library/library.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace {

TEST(Profile, GoesByTheLibrarysFileName) {
  const support::TempDir folder;
  const support::Environment profiles("INIDIR", folder.path().c_str());
  support::writeFile(folder.file("raxel.ini"),
                     "[RAXEL]\n~Mode=Mine\n[Mine]\nDriver=MINE.1\nBitmap Mode=217\n");
  const Handle setup = LOADED(CreateSetup)(0, nullptr, nullptr, nullptr);
  ASSERT_NE(setup, 0u);
  EXPECT_STREQ(*LOADED_DATA(export_szDLLName), "raxel");
  const RasterSetup &settings = **LOADED_DATA(lpRaster);
  EXPECT_EQ(settings.szProfilePath, folder.file("raxel.ini"));
  EXPECT_STREQ(settings.szModeName, "Mine");
  EXPECT_STREQ(settings.szDriverName, "MINE.1");
  EXPECT_EQ(settings.nBitmapMode, RAXEL_STORED_MODE_GREY256);
  EXPECT_EQ(LOADED(DestroySetup)(setup), 0);
}

}  // namespace
