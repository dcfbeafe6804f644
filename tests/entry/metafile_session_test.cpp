// SPDX-License-Identifier: MIT
// Metafile sessions from initdvr to termdvr.
#include "entry/metafile_session.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "entry/export_host.h"
#include "raxel/driver.h"
#include "raxel/stream_codes.h"
#include "support/golden.h"
#include "support/stream_procedure.h"
#include "support/temp_dir.h"

namespace {

using entry_test::Bytes;
using entry_test::ExportHost;

class MetafileSession : public testing::Test {
 protected:
  MetafileSession() {
    record_[RAXEL_START_PLATFORM_1] = 4711;
    record_[RAXEL_START_SETUP] = host_.setup();
    record_[RAXEL_START_STATUS] = reinterpret_cast<HostWord>(host_.status.record());
  }
  ~MetafileSession() override {
    hCommon = 0;
    lpCommon = nullptr;
  }

  // Starts a session that writes to this name.
  int32_t start(const std::string &name) {
    name_.assign(name.begin(), name.end());
    name_.push_back('\0');
    record_[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name_.data());
    record_[RAXEL_START_SETUP] = host_.setup();
    return initdvr(record_.data());
  }
  static int32_t end() { return termdvr(0); }

  ExportHost host_;
  support::TempDir folder_;
  std::vector<char> name_;
  std::array<HostWord, 16> record_ = {};
  SessionCommon common_ = {};
};

TEST_F(MetafileSession, OpensAndClosesItsOutputAndEndsWith300) {
  const std::string path = folder_.file("out.tif");
  EXPECT_EQ(start(path), 0);
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(lpRaster, &host_.settings());
  EXPECT_EQ(hRaster, host_.setup());
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  EXPECT_EQ(support::readFile(path).size(), 0u) << "no picture is written";
  EXPECT_EQ(host_.settings().hOutFile, 0u);
}

TEST_F(MetafileSession, EmptiesTheHostsNameAndItsSetupWord) {
  hSetup = 99;
  EXPECT_EQ(start(folder_.file("out.tif")), 0);
  EXPECT_EQ(name_[0], '\0');
  EXPECT_EQ(record_[RAXEL_START_SETUP], 0u);
  EXPECT_EQ(hSetup, 0u) << "the hook has set it";
  EXPECT_EQ(host_.settings().szOutputFile, folder_.file("out.tif"));
  end();
}

TEST_F(MetafileSession, KeepsTheHostsWords) {
  host_.status.word(RAXEL_STATUS_VALUE) = 1234;
  host_.settings().dwPlatformA = 5;
  host_.settings().dwPlatformB = 6;
  start(folder_.file("out.tif"));
  EXPECT_EQ(host_.settings().lpStatus, host_.status.record());
  EXPECT_EQ(host_.settings().dwStatusValue, 1234u);
  EXPECT_EQ(host_.settings().dwPlatformResult, 4711u) << "the hook's answer: the first value";
  EXPECT_EQ(host_.settings().dwPlatformA, 0u);
  EXPECT_EQ(host_.settings().dwPlatformB, 0u);
  end();
}

TEST_F(MetafileSession, WithoutASetupNothingIsOpened) {
  const std::string path = folder_.file("out.tif");
  name_.assign(path.begin(), path.end());
  name_.push_back('\0');
  record_[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name_.data());
  record_[RAXEL_START_SETUP] = 0;
  EXPECT_EQ(initdvr(record_.data()), RAXEL_BAD_SETUP);
  EXPECT_EQ(lpRaster, nullptr);
  EXPECT_STREQ(name_.data(), path.c_str());
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(initdvr(nullptr), RAXEL_BAD_SETUP);
}

TEST_F(MetafileSession, NamesOf143CharactersFitAndOf144DoNot) {
  const std::string folder = folder_.path() + "/";
  const std::string fits = folder + std::string(143 - folder.size(), 'n');
  EXPECT_EQ(start(fits), 0);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  EXPECT_TRUE(std::filesystem::exists(fits));

  for (size_t length : {144u, 145u, 200u}) {
    const std::string tooLong = folder + std::string(length - folder.size(), 'x');
    EXPECT_EQ(start(tooLong), RAXEL_CANNOT_WRITE) << length;
    EXPECT_EQ(name_[0], '\0') << "emptied all the same";
    EXPECT_EQ(host_.settings().hOutFile, 0u);
    EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
}

TEST_F(MetafileSession, AnOutputThatCannotBeOpenedIs303) {
  EXPECT_EQ(start(folder_.file("no/such/folder/out.tif")), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, AnOutputThatCannotBeClosedIs303) {
  ASSERT_EQ(start("/dev/full"), 0);
  EXPECT_EQ(WriteLong(host_.settings().hOutFile, 1), 4) << "into the stream's buffer";
  EXPECT_EQ(end(), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(host_.settings().hOutFile, 0u);
}

TEST_F(MetafileSession, WithoutANameTheOutputIsABlock) {
  EXPECT_EQ(start(""), 0);
  EXPECT_NE(host_.status.word(RAXEL_STATUS_OUTPUT), 0u);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  const Bytes bytes = entry_test::bytesOf(host_.status.word(RAXEL_STATUS_OUTPUT));
  ASSERT_FALSE(bytes.empty());
  EXPECT_EQ(bytes[0], 0xFF) << "closing a block appends one byte";
  support::golden("entry/metafile-session", bytes);
  GlobalFree(host_.status.word(RAXEL_STATUS_OUTPUT));
}

TEST_F(MetafileSession, ANullNameIsAnEmptyOne) {
  record_[RAXEL_START_NAME] = 0;
  EXPECT_EQ(initdvr(record_.data()), 0);
  EXPECT_NE(host_.status.word(RAXEL_STATUS_OUTPUT), 0u);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  GlobalFree(host_.status.word(RAXEL_STATUS_OUTPUT));
}

TEST_F(MetafileSession, ABlockThatNobodyCanFindIsFreed) {
  record_[RAXEL_START_STATUS] = 0;
  EXPECT_EQ(start(""), 0);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, AHostProcedureReceivesTheOutput) {
  support::HostStream stream;
  host_.settings().lpfnOutputProc = stream.procedure();
  host_.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream.context();
  EXPECT_EQ(start("picture.tif"), 0);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  EXPECT_EQ(stream.log(), "open picture.tif 4097\nclose\n");
}

// The name that a host procedure writes while it opens the output.
char *namedWhileOpening = nullptr;

TEST_F(MetafileSession, ANameThatAHostProcedureWritesIsEmptiedToo) {
  host_.settings().lpfnOutputProc = [](HostWord, HostWord operation, HostWord, HostWord) -> HostWord {
    if (operation == KVL_OP_OPEN) std::strcpy(namedWhileOpening, "x");
    return 1;
  };
  name_.resize(16);
  namedWhileOpening = name_.data();
  record_[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name_.data());
  EXPECT_EQ(initdvr(record_.data()), 0);
  EXPECT_EQ(name_[0], '\0');
  end();
}

TEST_F(MetafileSession, AHostProcedureThatRefusesGoesUnnoticed) {
  support::HostStream stream;
  host_.settings().lpfnOutputProc = stream.procedure();
  host_.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream.context();
  stream.failAt(1);
  EXPECT_EQ(start(""), 0);
  EXPECT_EQ(host_.settings().hOutFile, 0u);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, EndingTwiceClosesOnce) {
  support::HostStream stream;
  host_.settings().lpfnOutputProc = stream.procedure();
  host_.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream.context();
  start("a");
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  EXPECT_EQ(stream.count(support::HostStream::kClose), 1u);
}

TEST_F(MetafileSession, EndingWithoutASessionIs300) {
  lpRaster = nullptr;
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, StartingAgainClosesTheFirstOutput) {
  support::HostStream stream;
  host_.settings().lpfnOutputProc = stream.procedure();
  host_.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream.context();
  start("a");
  EXPECT_EQ(start("b"), 0);
  EXPECT_EQ(stream.log(), "open a 4097\nclose\nopen b 4097\n");
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, StartingAgainInMemoryHandsTheFirstBlockOver) {
  start("");
  host_.status.word(RAXEL_STATUS_OUTPUT) = 0;
  EXPECT_EQ(start(folder_.file("second.tif")), 0);
  EXPECT_NE(host_.status.word(RAXEL_STATUS_OUTPUT), 0u)
      << "the first output's block, which grew when it was closed";
  GlobalFree(host_.status.word(RAXEL_STATUS_OUTPUT));
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, DestroyingTheSetupEndsTheSessionQuietly) {
  start("");
  DestroySetup(host_.setup());
  host_.forgetSetup();
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
  GlobalFree(host_.status.word(RAXEL_STATUS_OUTPUT));
}

Handle victim = 0;
HostWord atThis = 0;  // the call at which a host's procedure destroys it
HostWord destroyer(HostWord, HostWord op, HostWord, HostWord) {
  if (op == atThis && victim != 0) DestroySetup(std::exchange(victim, 0));
  return 7;
}

TEST_F(MetafileSession, ASetupDestroyedAtTheOpeningStartsNothing) {
  host_.settings().lpfnOutputProc = destroyer;
  victim = host_.setup();
  atThis = KVL_OP_OPEN;
  EXPECT_EQ(start("x"), RAXEL_BAD_SETUP);
  host_.forgetSetup();
  EXPECT_EQ(lpRaster, nullptr);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

TEST_F(MetafileSession, ASetupDestroyedAtTheClosingBeforeAnotherStartStartsNothing) {
  host_.settings().lpfnOutputProc = destroyer;
  EXPECT_EQ(start("x"), 0);
  victim = host_.setup();
  atThis = KVL_OP_CLOSE;
  EXPECT_EQ(start("y"), RAXEL_BAD_SETUP);
  host_.forgetSetup();
  EXPECT_EQ(lpRaster, nullptr);
  EXPECT_EQ(end(), RAXEL_NO_MEMORY);
}

// ---- Writer fields

TEST(WriterFields, FollowTheBitmapMode) {
  const struct {
    int32_t mode;
    uint32_t photometric, bits, samples, colors;
  } rows[] = {{RAXEL_STORED_MODE_BILEVEL, RAXEL_TIFF_BLACK_IS_ZERO, 1, 55, 2},
              {RAXEL_STORED_MODE_GREY16, RAXEL_TIFF_BLACK_IS_ZERO, 4, 55, 16},
              {RAXEL_STORED_MODE_GREY256, RAXEL_TIFF_BLACK_IS_ZERO, 8, 55, 256},
              {RAXEL_STORED_MODE_COLOR8, RAXEL_TIFF_PALETTE, 4, 55, 8},
              {RAXEL_STORED_MODE_COLOR16, RAXEL_TIFF_PALETTE, 4, 55, 16},
              {RAXEL_STORED_MODE_COLOR256, RAXEL_TIFF_PALETTE, 8, 55, 256},
              {RAXEL_STORED_MODE_RGB, RAXEL_TIFF_RGB, 8, 3, 0},
              {220, 55, 55, 55, 55},
              {0, 55, 55, 55, 55}};
  for (const auto &row : rows) {
    TiffWriterState tiff = {};
    tiff.nPhotometric = tiff.nBitsPerSample = tiff.nSamplesPerPixel = tiff.nColors = 55;
    entry::setWriterFields(tiff, row.mode);
    EXPECT_EQ(tiff.nPhotometric, row.photometric) << row.mode;
    EXPECT_EQ(tiff.nBitsPerSample, row.bits) << row.mode;
    EXPECT_EQ(tiff.nSamplesPerPixel, row.samples) << row.mode;
    EXPECT_EQ(tiff.nColors, row.colors) << row.mode;
  }
}

TEST_F(MetafileSession, SetsTheWriterFieldsAtTheStart) {
  host_.settings().nBitmapMode = RAXEL_STORED_MODE_GREY256;
  start(folder_.file("out.tif"));
  EXPECT_EQ(host_.settings().tiff.nPhotometric, RAXEL_TIFF_BLACK_IS_ZERO);
  EXPECT_EQ(host_.settings().tiff.nColors, 256u);
  end();
  host_.settings().nBitmapMode = 220;
  start(folder_.file("out.tif"));
  EXPECT_EQ(host_.settings().tiff.nColors, 256u) << "220 leaves them as they are";
  end();
}

// ---- Items

struct Item {
  HostWord setup, number, size;
  int32_t value;
  HostWord e, f;
  friend bool operator==(const Item &, const Item &) = default;
};
std::vector<Item> told;

int32_t tell(HostWord setup, HostWord item, HostWord size, HostWord value, HostWord e, HostWord f) {
  told.push_back({setup, item, size, *reinterpret_cast<const int32_t *>(value), e, f});
  return 1;
}

TEST(Items, FiveSettingsAreTold) {
  RasterSetup settings = {};
  settings.nColorMode = RAXEL_STORED_COLORS;
  settings.nLineMode = 119;
  told.clear();
  entry::tellItems(&tell, 70, 80, settings);
  EXPECT_EQ(told, (std::vector<Item>{{70, 1, 4, RAXEL_ASK_COLORS, 0, 0},
                                     {70, 2, 4, 110, 0, 0},
                                     {70, 6, 4, 130, 0, 0},
                                     {80, 5, 4, 119, 0, 0},
                                     {70, 3, 4, 1, 0, 0}}));
}

TEST(Items, ColorModesGoOutByTheHostsCodes) {
  const int32_t rows[][2] = {{102, RAXEL_ASK_COLORS},
                             {RAXEL_STORED_COLORS, RAXEL_ASK_COLORS},
                             {RAXEL_STORED_COLORS_INVERT, RAXEL_ASK_COLORS_INVERT},
                             {RAXEL_STORED_COLORS_INVERT_GREY, RAXEL_ASK_COLORS_INVERT_GREY},
                             {RAXEL_STORED_COLORS_GREY, RAXEL_ASK_COLORS_GREY},
                             {RAXEL_STORED_COLORS_GREY_INVERT, RAXEL_ASK_COLORS_GREY_INVERT},
                             {108, RAXEL_ASK_COLORS},
                             {0, RAXEL_ASK_COLORS}};
  for (const auto &row : rows) {
    RasterSetup settings = {};
    settings.nColorMode = row[0];
    told.clear();
    entry::tellItems(&tell, 1, 2, settings);
    EXPECT_EQ(told[0].value, row[1]);
  }
}

int32_t setLineMode(HostWord, HostWord item, HostWord, HostWord value, HostWord, HostWord) {
  told.push_back({0, item, 0, 0, 0, 0});
  *reinterpret_cast<int32_t *>(value) = static_cast<int32_t>(1000 + item);
  return 0;
}

TEST(Items, TheLineModeIsTheRecordsOwn) {
  RasterSetup settings = {};
  settings.nColorMode = RAXEL_STORED_COLORS_INVERT;
  settings.nLineMode = 119;
  entry::tellItems(&setLineMode, 1, 2, settings);
  EXPECT_EQ(settings.nLineMode, 1005) << "the host has changed it";
  EXPECT_EQ(settings.nColorMode, RAXEL_STORED_COLORS_INVERT) << "the others are copies";
}

int32_t destroySetup(HostWord setup, HostWord item, HostWord, HostWord, HostWord, HostWord) {
  told.push_back({setup, item, 0, 0, 0, 0});
  if (item == 2) DestroySetup(setup);
  return 0;
}

TEST(Items, AHostThatDestroysTheSetupIsToldNoMore) {
  support::Globals globals;
  const Handle setup = CreateSetup(0, "none", nullptr, nullptr);
  told.clear();
  entry::tellItems(&destroySetup, setup, setup, *lpRaster);
  ASSERT_EQ(told.size(), 2u);
  EXPECT_EQ(told[1].number, 2u);
}

// ---- escape

TEST_F(MetafileSession, EscapeAsksTheSessionsHost) {
  lpCommon = &common_;
  common_.lpSessStatus = host_.status.record();
  common_.nSessStatusArg = 4242;
  EXPECT_EQ(escape(), 0);
  ASSERT_EQ(host_.status.calls.size(), 1u);
  EXPECT_EQ(host_.status.calls[0].arguments, (std::array<HostWord, 7>{77, 0, 0, 0, 4242, 0, 0}));
}

TEST_F(MetafileSession, ARefusalThatIsKeptUpPushes901) {
  RasterDriverState driver = {};
  lpEMData = &driver;
  lpCommon = &common_;
  common_.lpSessStatus = host_.status.record();
  host_.status.answers = {1, 0, 1, 1};
  EXPECT_EQ(escape(), 0) << "taken back in the follow-up";
  EXPECT_EQ(driver.nLastError, 0);
  EXPECT_EQ(escape(), RAXEL_STOPPED);
  EXPECT_EQ(driver.nLastError, RAXEL_STOPPED);
  lpEMData = nullptr;
}

TEST_F(MetafileSession, EscapeWithoutAHostGoesOn) {
  EXPECT_EQ(escape(), 0);
  lpCommon = &common_;
  EXPECT_EQ(escape(), 0);
  common_.lpSessStatus = host_.status.record();
  host_.status.word(RAXEL_STATUS_CALLBACK) = 0;
  EXPECT_EQ(escape(), 0);
  EXPECT_EQ(esc_mode(1), 0);
  EXPECT_EQ(AltFontsAvailable(), 0);
}

// ---- Rendering, with a metafile that a platform would have recorded

class Rendering : public MetafileSession {
 protected:
  Rendering() {
    lpCommon = &common_;
    common_.lpSessStatus = host_.status.record();
    start(path_);
    host_.status.calls.clear();
  }
  ~Rendering() override { end(); }
  std::string path_ = folder_.file("out.tif");
};

TEST_F(Rendering, AsksBeforeAndAfterAndDrawsInBetween) {
  EXPECT_EQ(entry::renderMetafile(1, host_.settings()), RAXEL_NO_FORMAT) << "the hook allows no band rows";
  EXPECT_EQ(host_.status.calls.size(), 2u);
  EXPECT_TRUE(std::filesystem::exists(path_));
}

TEST_F(Rendering, AStopBeforeItIs300) {
  host_.status.answers = {1, 1};
  EXPECT_EQ(entry::renderMetafile(1, host_.settings()), RAXEL_NO_MEMORY);
  EXPECT_EQ(host_.status.calls.size(), 2u);
  EXPECT_TRUE(std::filesystem::exists(path_));
}

TEST_F(Rendering, AStopAfterItDeletesTheFile) {
  host_.status.answers = {0, 1, 1};
  EXPECT_EQ(entry::renderMetafile(1, host_.settings()), RAXEL_NO_FORMAT);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(Rendering, ANameOfOneCharacterIsDeletedToo) {
  end();
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  EXPECT_EQ(start("o"), 0);
  EXPECT_TRUE(std::filesystem::exists("o"));
  host_.status.answers = {0, 1, 1};
  entry::renderMetafile(1, host_.settings());
  EXPECT_FALSE(std::filesystem::exists("o"));
  std::filesystem::current_path(before);
}

TEST_F(Rendering, WithoutAMetafileNobodyIsAsked) {
  EXPECT_EQ(entry::renderMetafile(0, host_.settings()), RAXEL_NO_MEMORY);
  EXPECT_TRUE(host_.status.calls.empty());
}

TEST_F(Rendering, ASetupDestroyedWhileAskingIs300) {
  host_.status.action = [this] {
    if (host_.setup() != 0) DestroySetup(host_.setup());
    host_.forgetSetup();
  };
  EXPECT_EQ(entry::renderMetafile(1, host_.settings()), RAXEL_NO_MEMORY);
}

}  // namespace
