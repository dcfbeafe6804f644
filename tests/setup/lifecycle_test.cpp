// SPDX-License-Identifier: MIT
// Setups from CreateSetup to DestroySetup, and the profile they are loaded from.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "raxel/memory.h"
#include "runtime/settings_in_use.h"
#include "support/globals.h"
#include "support/temp_dir.h"

namespace {

class Lifecycle : public testing::Test {
 protected:
  ~Lifecycle() override {
    if (handle_ != 0) DestroySetup(handle_);
  }

  // A setup loaded from this profile text.
  RasterSetup &create(const std::string &profile, const char *mode = "MODE", const char *application = "") {
    support::writeFile(folder_.file("raxel.ini"), profile);
    return createFrom(folder_.file("raxel.ini").c_str(), mode, application);
  }
  RasterSetup &createFrom(const char *profile, const char *mode, const char *application) {
    if (handle_ != 0) DestroySetup(handle_);
    handle_ = CreateSetup(0, profile, mode, application);
    return *static_cast<RasterSetup *>(GlobalLock(handle_));
  }

  support::Globals globals_;
  support::TempDir folder_;
  Handle handle_ = 0;
};

// ---- Which profile

TEST_F(Lifecycle, NoProfileAnywhereYieldsTheDefaults) {
  const RasterSetup &record = createFrom(folder_.file("none.ini").c_str(), "MODE", "APP");
  EXPECT_STREQ(record.szDriverName, "RAXEL.1");
  EXPECT_EQ(record.nBitmapMode, RAXEL_STORED_MODE_COLOR256);
  EXPECT_EQ(record.nCompressionMode, RAXEL_STORED_COMPRESS_NONE);
  EXPECT_EQ(record.nColorMode, RAXEL_STORED_COLORS);
  EXPECT_EQ(record.nSizeMode, RAXEL_STORED_SIZE_PICTURE);
  EXPECT_EQ(record.nResolutionMode, RAXEL_STORED_RESOLUTION_PICTURE);
  EXPECT_EQ(record.tiff.nXResolution, 96);
  EXPECT_EQ(record.tiff.nYResolution, 96);
  EXPECT_EQ(record.dWidth, 6.67);
  EXPECT_EQ(record.dHeight, 5.0);
  EXPECT_EQ(record.tiff.wLayoutMode, RAXEL_STORED_LAYOUT_STRIPS);
  EXPECT_EQ(record.nLineMode, 0);
  EXPECT_STREQ(record.szProfilePath, "");
  EXPECT_STREQ(record.szModeName, "") << "the names are not taken over either";
  EXPECT_STREQ(record.szAppName, "");
  EXPECT_STREQ(szFilter, "RAXEL") << "upper-cased in place";
}

TEST_F(Lifecycle, TheNewRecordIsTheCurrentOne) {
  const RasterSetup &record = createFrom("none.ini", nullptr, nullptr);
  EXPECT_EQ(hRaster, handle_);
  EXPECT_EQ(lpRaster, &record);
  EXPECT_EQ(hSetup, 0u);
}

TEST_F(Lifecycle, AProfileIsFoundUnderInidirFirst) {
  support::writeFile(folder_.file("some.ini"), "[M]\nDriver=D\nColor Mode=105\n");
  const support::Environment inidir("INIDIR", folder_.path().c_str());
  const RasterSetup &record = createFrom("some.ini", "M", "");
  EXPECT_EQ(record.szProfilePath, folder_.file("some.ini"));
  EXPECT_EQ(record.nColorMode, RAXEL_STORED_COLORS_INVERT_GREY);
}

TEST_F(Lifecycle, WithoutAProfileArgumentTheLibrarysOwnNameCounts) {
  std::strcpy(export_szDLLName, "/opt/host/filters/tiffout.1.so");
  support::writeFile(folder_.file("tiffout.ini"), "[M]\nDriver=D\n");
  const support::Environment inidir("INIDIR", folder_.path().c_str());
  EXPECT_EQ(createFrom("", "M", "").szProfilePath, folder_.file("tiffout.ini"));
  EXPECT_STREQ(export_szDLLName, "/opt/host/filters/tiffout.1.so") << "the host's own value stays";
}

TEST_F(Lifecycle, TheLibraryLearnsItsNameOnlyWhenItNeedsIt) {
  createFrom("none.ini", nullptr, nullptr);
  EXPECT_STREQ(export_szDLLName, "");
  createFrom(nullptr, nullptr, nullptr);
  // These tests are linked to the library's objects: the name is theirs.
  EXPECT_STREQ(export_szDLLName, "raxel_tests");
}

TEST_F(Lifecycle, PathsOf144CharactersAndMoreAreNotFound) {
  const support::Environment inidir("INIDIR", nullptr);
  for (size_t length : {144u, 145u, 300u, 5000u}) {
    const RasterSetup &record = createFrom(std::string(length, 'p').c_str(), "M", "A");
    EXPECT_STREQ(record.szProfilePath, "") << length;
    EXPECT_STREQ(record.szDriverName, "RAXEL.1");
  }
}

TEST_F(Lifecycle, NamesAreCutAt143Characters) {
  const std::string profile = "[" + std::string(143, 'm') + "]\nDriver=D\nColor Mode=106\n";
  for (size_t length : {143u, 144u, 300u}) {
    const std::string mode(length, 'm');
    const std::string application(length, 'a');
    const RasterSetup &record = create(profile, mode.c_str(), application.c_str());
    EXPECT_EQ(std::strlen(record.szModeName), 143u);
    EXPECT_EQ(std::strlen(record.szAppName), 143u);
    EXPECT_EQ(record.nColorMode, RAXEL_STORED_COLORS_GREY);
  }
}

// ---- Which section

TEST_F(Lifecycle, ArgumentsNameApplicationAndMode) {
  const RasterSetup &record = create("[MODE]\nDriver=FILTER.7\n", "MODE", "Painter");
  EXPECT_STREQ(record.szAppName, "Painter");
  EXPECT_STREQ(record.szModeName, "MODE");
  EXPECT_STREQ(record.szDriverName, "FILTER.7");
}

TEST_F(Lifecycle, TheDefaultModeStandsInTheFiltersOwnSection) {
  const std::string profile =
      "[Painter]\n~Mode=WRONG\n[RAXEL]\n~Mode=RIGHT\n[RIGHT]\nDriver=D\nBitmap Mode=215\n";
  for (const char *none : {static_cast<const char *>(nullptr), ""}) {
    const RasterSetup &record = create(profile, none, "Painter");
    EXPECT_STREQ(record.szModeName, "RIGHT");
    EXPECT_EQ(record.nBitmapMode, RAXEL_STORED_MODE_BILEVEL);
  }
  EXPECT_STREQ(create(profile, "", nullptr).szAppName, "RAXEL");
}

TEST_F(Lifecycle, AFilterWithoutANameHasNoSectionOfItsOwn) {
  char *name = std::exchange(szFilter, nullptr);
  const RasterSetup &record = create("[RAXEL]\n~Mode=RIGHT\n", "", nullptr);
  szFilter = name;
  EXPECT_STREQ(record.szAppName, "");
  EXPECT_STREQ(record.szModeName, "");
}

TEST_F(Lifecycle, ALibrarysNameWithoutRoomForItsExtensionHasNoProfile) {
  std::memset(export_szDLLName, 'a', sizeof export_szDLLName);
  EXPECT_STREQ(createFrom(nullptr, "MODE", "").szProfilePath, "");
}

TEST_F(Lifecycle, NoModeAnywhereLeavesARecordOfZeros) {
  const RasterSetup &record = create("[MODE]\nDriver=D\n", nullptr, nullptr);
  EXPECT_STREQ(record.szModeName, "");
  EXPECT_EQ(record.nColorMode, 0);
}

TEST_F(Lifecycle, ASectionWithoutDriverLeavesZerosNotDefaults) {
  const RasterSetup &record = create("[MODE]\nColor Mode=105\nWidth=7.5\n");
  EXPECT_STREQ(record.szModeName, "MODE");
  EXPECT_STREQ(record.szDriverName, "");
  EXPECT_EQ(record.nColorMode, 0);
  EXPECT_EQ(record.nSizeMode, 0);
  EXPECT_EQ(record.nResolutionMode, 0);
  EXPECT_EQ(record.nBitmapMode, 0);
  EXPECT_EQ(record.nCompressionMode, 0);
  EXPECT_EQ(record.tiff.wLayoutMode, 0);
  EXPECT_EQ(record.tiff.nXResolution, 0);
  EXPECT_EQ(record.dWidth, 0.0);
}

// ---- Which values

TEST_F(Lifecycle, KeysThatAreMissingHaveDefaults) {
  const RasterSetup &record = create("[MODE]\nDriver=D\n");
  EXPECT_EQ(record.nColorMode, RAXEL_STORED_COLORS);
  EXPECT_EQ(record.nSizeMode, RAXEL_STORED_SIZE_PICTURE);
  EXPECT_EQ(record.nResolutionMode, RAXEL_STORED_RESOLUTION_PICTURE);
  EXPECT_EQ(record.nBitmapMode, RAXEL_STORED_MODE_COLOR256);
  EXPECT_EQ(record.nLineMode, 119);
  EXPECT_EQ(record.tiff.wLayoutMode, RAXEL_STORED_LAYOUT_STRIPS);
  EXPECT_EQ(record.nCompressionMode, RAXEL_STORED_COMPRESS_NONE);
  EXPECT_EQ(record.tiff.nXResolution, 96);
  EXPECT_EQ(record.tiff.nYResolution, 96);
  EXPECT_EQ(record.dWidth, 6.67);
  EXPECT_EQ(record.dHeight, 5.0);
}

TEST_F(Lifecycle, EveryKeyIsReadAsItStands) {
  const RasterSetup &record = create(
      "[MODE]\nDriver=D\nColor Mode=107\nSize Mode=603\nResolution Mode=310\nBitmap Mode=999\n"
      "Line Mode=3\nNot Defined=771\nCompression Mode=228\nX Resolution=300\nY Resolution=150\n"
      "Width=8.25\nHeight=11.5\n");
  EXPECT_EQ(record.nColorMode, RAXEL_STORED_COLORS_GREY_INVERT);
  EXPECT_EQ(record.nSizeMode, RAXEL_STORED_SIZE_USER);
  EXPECT_EQ(record.nResolutionMode, RAXEL_STORED_RESOLUTION_USER);
  EXPECT_EQ(record.nBitmapMode, 999) << "codes are not checked here";
  EXPECT_EQ(record.nLineMode, 3);
  EXPECT_EQ(record.tiff.wLayoutMode, RAXEL_STORED_LAYOUT_TILES)
      << "tiles, under the name that the table lacks";
  EXPECT_EQ(record.nCompressionMode, 228);
  EXPECT_EQ(record.tiff.nXResolution, 300);
  EXPECT_EQ(record.tiff.nYResolution, 150);
  EXPECT_EQ(record.dWidth, 8.25);
  EXPECT_EQ(record.dHeight, 11.5);
}

TEST_F(Lifecycle, ResolutionsAndLayoutKeep16Bits) {
  const RasterSetup &record =
      create("[MODE]\nDriver=D\nNot Defined=66307\nX Resolution=65836\nY Resolution=65535\n");
  EXPECT_EQ(record.tiff.wLayoutMode, RAXEL_STORED_LAYOUT_TILES);  // 66307 - 65536
  EXPECT_EQ(record.tiff.nXResolution, 300);                       // 65836 - 65536
  EXPECT_EQ(record.tiff.nYResolution, 96) << "-1, repaired";
}

TEST_F(Lifecycle, AShortSizeKeepsTheRestOfTheDefault) {
  const RasterSetup &record = create("[MODE]\nDriver=D\nWidth=8\nHeight=2\n");
  EXPECT_EQ(record.dWidth, 8.67);
  EXPECT_EQ(record.dHeight, 2.0);
}

TEST_F(Lifecycle, SizesOutsideTheirRangeAreRepaired) {
  // "30" over "6.67" is 3067; "2" over "5.0" is 2.0.
  const RasterSetup &record = create("[MODE]\nDriver=D\nSize Mode=603\nWidth=30\nHeight=2\n");
  EXPECT_EQ(record.dWidth, 6.67);
  EXPECT_EQ(record.dHeight, 2.0);
}

TEST_F(Lifecycle, DriverNamesAreCutAtTwelveCharacters) {
  EXPECT_STREQ(create("[MODE]\nDriver=ABCDEFGHIJKLMNOP\n").szDriverName, "ABCDEFGHIJKL");
}

TEST_F(Lifecycle, DisplayModesTakeTheDisplayUnchecked) {
  const support::Environment display("DISPLAYINFO", "30000 100 1000 10");
  const RasterSetup &record =
      create("[MODE]\nDriver=D\nSize Mode=600\nResolution Mode=307\nX Resolution=300\nWidth=7.77\n");
  EXPECT_EQ(record.tiff.nXResolution, 1000);
  EXPECT_EQ(record.tiff.nYResolution, 10);
  EXPECT_EQ(record.dWidth, 30.0);
  EXPECT_EQ(record.dHeight, 10.0);
}

TEST_F(Lifecycle, PrinterModesFallBackToTheDisplay) {
  SetDisplayInfo(720, 720, 72, 36);
  SetPrinterInfo(8.27, 11.69, 300, 300);
  const RasterSetup &record = create("[MODE]\nDriver=D\nSize Mode=601\nResolution Mode=308\n");
  EXPECT_EQ(record.nSizeMode, RAXEL_STORED_SIZE_DISPLAY);
  EXPECT_EQ(record.nResolutionMode, RAXEL_STORED_RESOLUTION_DISPLAY);
  EXPECT_EQ(record.tiff.nXResolution, 72);
  EXPECT_EQ(record.tiff.nYResolution, 36);
  EXPECT_EQ(record.dWidth, 10.0);
  EXPECT_EQ(record.dHeight, 20.0);
}

TEST_F(Lifecycle, PrinterModesTakeThePrinterWhenTheHostSaysThereIsOne) {
  RasterSetup &record = create("[MODE]\nDriver=D\nSize Mode=601\nResolution Mode=308\n");
  SetPrinterInfo(8.25, 11.5, 300, 150);
  record.bPrinterInfo = 1;
  EXPECT_EQ(LoadProfile(0), 1);
  EXPECT_EQ(record.nSizeMode, RAXEL_STORED_SIZE_PRINTER);
  EXPECT_EQ(record.nResolutionMode, RAXEL_STORED_RESOLUTION_PRINTER);
  EXPECT_EQ(record.tiff.nXResolution, 300);
  EXPECT_EQ(record.tiff.nYResolution, 150);
  EXPECT_EQ(record.dWidth, 8.25);
  EXPECT_EQ(record.dHeight, 11.5);
}

TEST_F(Lifecycle, SizesOfTheDisplayWithUserResolutionAreNotChecked) {
  SetDisplayInfo(100, 100, 0, 0);
  const RasterSetup &record = create("[MODE]\nDriver=D\nSize Mode=600\nX Resolution=900\n");
  EXPECT_EQ(record.tiff.nXResolution, 900) << "the limits are looked at with the two size keys alone";
}

TEST_F(Lifecycle, LoadProfileAnswersWhetherTheSectionWasRead) {
  RasterSetup &record = create("[MODE]\nDriver=D\nColor Mode=104\n");
  record.nColorMode = 0;
  EXPECT_EQ(LoadProfile(1), 1);
  EXPECT_EQ(record.nColorMode, RAXEL_STORED_COLORS_INVERT);
  std::strcpy(record.szModeName, "OTHER");
  EXPECT_EQ(LoadProfile(1), 0);
  record.szModeName[0] = '\0';
  EXPECT_EQ(LoadProfile(1), 0);
  lpRaster = nullptr;
  EXPECT_EQ(LoadProfile(1), 0);
}

TEST_F(Lifecycle, CreatingASetupWritesNothing) {
  const std::string text = "[MODE]\nDriver=D\n";
  create(text);
  EXPECT_EQ(support::readText(folder_.file("raxel.ini")), text);
}

// ---- The other calls

TEST_F(Lifecycle, EditKeepsTheHostsDataAndMakesTheRecordCurrent) {
  RasterSetup &record = createFrom("none.ini", nullptr, nullptr);
  lpRaster = nullptr;
  EXPECT_EQ(EditSetup(handle_, ~HostWord{0}), 0);
  EXPECT_EQ(record.dwEditData, ~HostWord{0});
  EXPECT_EQ(lpRaster, &record);
  EXPECT_EQ(EditSetup(0, 1), -1);
  EXPECT_EQ(lpRaster, &record);
}

TEST_F(Lifecycle, DestroyTakesTheRecordOutOfEveryGlobal) {
  createFrom("none.ini", nullptr, nullptr);
  hSetup = handle_;
  lpSetup = lpRaster;
  EXPECT_EQ(DestroySetup(handle_), 0);
  handle_ = 0;
  EXPECT_EQ(hRaster, 0u);
  EXPECT_EQ(lpRaster, nullptr);
  EXPECT_EQ(hSetup, 0u);
  EXPECT_EQ(lpSetup, nullptr);
  EXPECT_EQ(DestroySetup(0), 1);
}

TEST_F(Lifecycle, DestroyLeavesOtherSetupsTheirGlobals) {
  const Handle other = CreateSetup(0, "none.ini", nullptr, nullptr);
  RasterSetup *otherRecord = lpRaster;
  createFrom("none.ini", nullptr, nullptr);
  hRaster = hSetup = other;
  lpSetup = otherRecord;
  DestroySetup(handle_);
  handle_ = other;
  EXPECT_EQ(hRaster, other);
  EXPECT_EQ(hSetup, other);
  EXPECT_EQ(lpSetup, otherRecord);
  EXPECT_EQ(lpRaster, nullptr);
}

TEST_F(Lifecycle, DestroyTellsARunningExport) {
  createFrom("none.ini", nullptr, nullptr);
  const runtime::SettingsInUse outer(lpRaster);
  const runtime::SettingsInUse inner(nullptr);
  EXPECT_FALSE(outer.destroyed());
  DestroySetup(handle_);
  handle_ = 0;
  EXPECT_TRUE(outer.destroyed());
  EXPECT_FALSE(inner.destroyed());
}

TEST_F(Lifecycle, SavingHasNothingLeftToDo) {
  EXPECT_EQ(SaveProfile(), 1);
  EXPECT_EQ(LoadProfileList(4711), 4711u);
  EXPECT_EQ(LoadProfileList(4711, 0.5, "and more", 815), 4711u);
}

TEST_F(Lifecycle, BackupSendsLaterWritesToATemporaryFile) {
  RasterSetup &record = create("[MODE]\nDriver=D\n");
  EXPECT_EQ(BackupProfile(&record), 1);
  EXPECT_EQ(record.szReserved, folder_.file("raxel.ini"));
  EXPECT_EQ(std::string(record.szProfilePath).substr(0, 5), "/tmp/");
  EXPECT_NE(record.szProfilePath, folder_.file("raxel.ini"));
  EXPECT_FALSE(std::filesystem::exists(record.szProfilePath)) << "no file is copied";
  EXPECT_EQ(BackupProfile(nullptr), 0);
}

}  // namespace
