// SPDX-License-Identifier: MIT
// A host that defines a function of every name that the library exports, in the global scope where the
// loader looks first. The library calls its own all the same.
//
// Every function of names.txt is defined here to count its calls; the build writes the list into
// hostile_names.inc. (The library's own functions are reached through dlsym on its handle.)
#include "library/hostile.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "library/host.h"
#include "library/library.h"
#include "support/golden.h"
#include "support/temp_dir.h"

namespace {

// The names in the global scope are the host's: without this the tests below would prove nothing.
TEST(HostileHost, StandsInFrontOfTheLibrary) {
  for (const char *name : {"escape", "split", "stricmp", "HeapSort", "push_er", "GlobalAlloc"}) {
    EXPECT_NE(dlsym(RTLD_DEFAULT, name), library::address(name)) << name;
  }
}

TEST(HostileHost, ChangesNoExport) {
  const library::Picture colors = library::noise(24, 61, 34, 1);
  support::golden("library/61x34-bilevel", library::exportPicture(colors, {RAXEL_ASK_MODE_BILEVEL}).file);
  support::golden("library/61x34-color256", library::exportPicture(colors, {RAXEL_ASK_MODE_COLOR256}).file);
  support::golden("library/61x34-rgb", library::exportPicture(colors, {RAXEL_ASK_MODE_RGB}).file);
  support::golden("library/130x40-lzw",
                  library::exportPicture(library::noise(1, 130, 40, 2),
                                         {RAXEL_ASK_MODE_BILEVEL, RAXEL_ASK_COMPRESS_LZW})
                      .file);
  EXPECT_EQ(hostileCalls(), "");
}

TEST(HostileHost, ChangesNoProfileRewrite) {
  const support::TempDir dir;
  const std::string profile = dir.file("raxel.ini");
  support::writeFile(profile, "[Mode]\nDriver=X\n");
  const Handle setup = LOADED(CreateSetup)(0, profile.c_str(), "mode", nullptr);
  const int32_t dpi = 300;
  EXPECT_EQ(LOADED(xEscapeSetup)(setup, RAXEL_ESCAPE_SET_X_RESOLUTION, 4, &dpi, nullptr, 1), 1);
  EXPECT_EQ(LOADED(DestroySetup)(setup), 0);
  EXPECT_EQ(LOADED(GetPrivateProfileInt)("MODE", "x resolution", 0, profile.c_str()), 300);
  EXPECT_EQ(hostileCalls(), "");
}

TEST(HostileHost, ChangesNoDriverSession) {
  const library::Written written =
      library::drivePicture(library::noise(8, 40, 30, 5), {RAXEL_ASK_MODE_COLOR16});
  EXPECT_EQ(written.result, 0u);
  support::golden("library/40x30-driven-color16", written.file);
  EXPECT_EQ(hostileCalls(), "");
}

}  // namespace
