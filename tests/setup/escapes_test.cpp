// SPDX-License-Identifier: MIT
// Setup escapes, one by one.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "raxel/memory.h"
#include "setup/settings.h"
#include "support/blocks.h"
#include "support/globals.h"
#include "support/temp_dir.h"

namespace {

constexpr int32_t kNoEscape = 40;  // a number between those of escapes

class Escapes : public testing::Test {
 protected:
  Escapes() : handle_(support::newBlock(sizeof(RasterSetup))) {
    record_ = static_cast<RasterSetup *>(GlobalLock(handle_));
    setup::useDefaults(*record_);
    std::strcpy(record_->szModeName, "MODE");
    std::strcpy(record_->szProfilePath, profile_.c_str());
  }
  ~Escapes() override { GlobalFree(handle_); }

  int32_t set(int32_t escape, int32_t value, int32_t save = 0, int32_t size = 4) {
    return xEscapeSetup(handle_, escape, size, &value, nullptr, save);
  }
  int32_t setDouble(int32_t escape, double value, int32_t save = 0, int32_t size = 8) {
    return xEscapeSetup(handle_, escape, size, &value, nullptr, save);
  }
  std::string saved() const { return support::readText(profile_); }

  support::Globals globals_;
  support::TempDir folder_;
  std::string profile_ = folder_.file("profile.ini");
  Handle handle_;
  RasterSetup *record_;
};

// ---- Numbers, handles, sizes

TEST_F(Escapes, NumbersThatAreNotHandledAnswerZero) {
  for (int32_t number : {0, 2, 8, 15, 20, 24, 27, 40, 55, 58, 80, 82, 1000, -1, INT32_MIN, 65536 + 1}) {
    int32_t value = 101, output = 4711;
    EXPECT_EQ(xEscapeSetup(handle_, number, 4, &value, &output, 1), 0) << number;
    EXPECT_EQ(output, 4711);
  }
  EXPECT_EQ(record_->nColorMode, RAXEL_STORED_COLORS);
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, TheNullHandleIsRefused) {
  int32_t value = 102;
  for (int32_t number :
       std::initializer_list<int32_t>{RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ESCAPE_GET_RESOLUTION, kNoEscape})
    EXPECT_EQ(xEscapeSetup(0, number, 4, &value, &value, 0), -1);
}

TEST_F(Escapes, ABlockTooShortForARecordIsRefused) {
  xEscapeSetup(handle_, kNoEscape, 0, nullptr, nullptr, 0);
  const Handle block = GlobalAlloc(RAXEL_MOVEABLE_ZERO, sizeof(RasterSetup) - 1);
  const double five = 5.0;
  EXPECT_EQ(xEscapeSetup(block, RAXEL_ESCAPE_SET_WIDTH, sizeof five, &five, nullptr, 0), RAXEL_REFUSED);
  EXPECT_EQ(EditSetup(block, 1), RAXEL_REFUSED);
  EXPECT_EQ(DestroySetup(block), 1);
  EXPECT_EQ(lpRaster, record_) << "the current one stays";
  GlobalFree(block);
}

TEST_F(Escapes, TheRecordBecomesTheCurrentOne) {
  lpRaster = nullptr;
  xEscapeSetup(handle_, kNoEscape, 0, nullptr, nullptr, 0);
  EXPECT_EQ(lpRaster, record_);
}

TEST_F(Escapes, AWrongSizeIsRefusedOrIgnored) {
  for (int32_t number :
       {RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ESCAPE_SET_BITMAP_MODE, RAXEL_ESCAPE_SET_COMPRESSION,
        RAXEL_ESCAPE_SET_X_RESOLUTION, RAXEL_ESCAPE_SET_Y_RESOLUTION}) {
    for (int32_t size : {0, 1, 2, 8, -4}) EXPECT_EQ(set(number, 150, 1, size), -1) << number;
  }
  for (int32_t number : {RAXEL_ESCAPE_SET_WIDTH, RAXEL_ESCAPE_SET_HEIGHT}) {
    for (int32_t size : {0, 4, 7, -8}) EXPECT_EQ(setDouble(number, 5.5, 1, size), -1) << number;
  }
  for (int32_t number : {RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ESCAPE_SET_SIZE_MODE,
                         RAXEL_ESCAPE_GET_COLOR_MODE, RAXEL_ESCAPE_SET_OUTPUT_PROC}) {
    for (int32_t size : {0, 2, 3, 16}) {
      int32_t value = 1, output = 4711;
      EXPECT_EQ(xEscapeSetup(handle_, number, size, &value, &output, 1), 1) << number;
      EXPECT_EQ(output, 4711);
    }
  }
  EXPECT_EQ(record_->nSizeMode, RAXEL_STORED_SIZE_PICTURE);
  EXPECT_EQ(record_->nResolutionMode, RAXEL_STORED_RESOLUTION_PICTURE);
  EXPECT_EQ(record_->lpfnOutputProc, nullptr);
  EXPECT_EQ(record_->nCompressionMode, RAXEL_STORED_COMPRESS_NONE);
  EXPECT_EQ(record_->dWidth, 6.67);
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, SettersWithoutInputAndGettersWithoutOutputAreRefused) {
  for (int32_t number :
       {RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ESCAPE_SET_BITMAP_MODE, RAXEL_ESCAPE_SET_COMPRESSION,
        RAXEL_ESCAPE_SET_X_RESOLUTION, RAXEL_ESCAPE_SET_Y_RESOLUTION, RAXEL_ESCAPE_SET_RESOLUTION_MODE,
        RAXEL_ESCAPE_SET_SIZE_MODE}) {
    EXPECT_EQ(xEscapeSetup(handle_, number, 4, nullptr, nullptr, 1), -1) << number;
  }
  for (int32_t number : {RAXEL_ESCAPE_SET_WIDTH, RAXEL_ESCAPE_SET_HEIGHT})
    EXPECT_EQ(xEscapeSetup(handle_, number, 8, nullptr, nullptr, 1), -1);
  for (int32_t number : {RAXEL_ESCAPE_GET_RESOLUTION, RAXEL_ESCAPE_GET_SIZE, RAXEL_ESCAPE_GET_USER_DATA,
                         RAXEL_ESCAPE_GET_COLOR_MODE}) {
    EXPECT_EQ(xEscapeSetup(handle_, number, 4, nullptr, nullptr, 0), -1) << number;
  }
  RasterPictureInfo in = {};
  RasterInfoResult out = {};
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_RASTER_INFO, 0, nullptr, &out, 0), -1);
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_RASTER_INFO, 0, &in, nullptr, 0), -1);
}

// ---- Options by code

struct Code {
  int32_t host, stored;
};

TEST_F(Escapes, ColorModesAreStoredByTheirOwnCodes) {
  for (const auto &[host, stored] : {Code{RAXEL_ASK_COLORS, RAXEL_STORED_COLORS},
                                     {RAXEL_ASK_COLORS_INVERT, RAXEL_STORED_COLORS_INVERT},
                                     {RAXEL_ASK_COLORS_INVERT_GREY, RAXEL_STORED_COLORS_INVERT_GREY},
                                     {RAXEL_ASK_COLORS_GREY, RAXEL_STORED_COLORS_GREY},
                                     {RAXEL_ASK_COLORS_GREY_INVERT, RAXEL_STORED_COLORS_GREY_INVERT}}) {
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_COLOR_MODE, host), 1);
    EXPECT_EQ(record_->nColorMode, stored);
  }
  for (int32_t wrong : {100, 106, 0, -1, INT32_MIN, INT32_MAX})
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_COLOR_MODE, wrong, 1), -1) << wrong;
  EXPECT_EQ(record_->nColorMode, RAXEL_STORED_COLORS_GREY_INVERT);
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, BitmapModesAreStoredByTheirOwnCodes) {
  for (const auto &[host, stored] : {Code{RAXEL_ASK_MODE_BILEVEL, RAXEL_STORED_MODE_BILEVEL},
                                     {RAXEL_ASK_MODE_GREY16, RAXEL_STORED_MODE_GREY16},
                                     {RAXEL_ASK_MODE_GREY256, RAXEL_STORED_MODE_GREY256},
                                     {RAXEL_ASK_MODE_COLOR8, RAXEL_STORED_MODE_COLOR8},
                                     {RAXEL_ASK_MODE_COLOR16, RAXEL_STORED_MODE_COLOR16},
                                     {RAXEL_ASK_MODE_COLOR256, RAXEL_STORED_MODE_COLOR256},
                                     {RAXEL_ASK_MODE_RGB, RAXEL_STORED_MODE_RGB}}) {
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_BITMAP_MODE, host), 1);
    EXPECT_EQ(record_->nBitmapMode, stored);
  }
  for (int32_t wrong : {139, 147, int32_t{RAXEL_STORED_MODE_BILEVEL}})
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_BITMAP_MODE, wrong, 1), -1) << wrong;
  EXPECT_EQ(record_->nBitmapMode, RAXEL_STORED_MODE_RGB);
}

TEST_F(Escapes, CompressionsAreStoredByTheirOwnCodes) {
  for (const auto &[host, stored] : {Code{RAXEL_ASK_COMPRESS_NONE, RAXEL_STORED_COMPRESS_NONE},
                                     {RAXEL_ASK_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_PACKBITS},
                                     {RAXEL_ASK_COMPRESS_HUFFMAN, RAXEL_STORED_COMPRESS_HUFFMAN},
                                     {RAXEL_ASK_COMPRESS_LZW, RAXEL_STORED_COMPRESS_LZW},
                                     {RAXEL_ASK_COMPRESS_T4, RAXEL_STORED_COMPRESS_T4},
                                     {RAXEL_ASK_COMPRESS_T6, RAXEL_STORED_COMPRESS_T6}}) {
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_COMPRESSION, host), 1);
    EXPECT_EQ(record_->nCompressionMode, stored);
  }
  for (int32_t wrong : {149, 156, int32_t{RAXEL_STORED_COMPRESS_NONE}})
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_COMPRESSION, wrong, 1), -1) << wrong;
  EXPECT_EQ(record_->nCompressionMode, RAXEL_STORED_COMPRESS_T6);
}

TEST_F(Escapes, ResolutionAndSizeModesAreNeverRefusedAndNeverSaved) {
  for (int32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_RESOLUTION_MODE, i, 1), 1);
    EXPECT_EQ(record_->nResolutionMode, RAXEL_STORED_RESOLUTION_DISPLAY + i);
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_SIZE_MODE, i, 1), 1);
    EXPECT_EQ(record_->nSizeMode, RAXEL_STORED_SIZE_DISPLAY + i);
  }
  for (int32_t wrong : {-1, 4, 307, INT32_MIN}) {
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_RESOLUTION_MODE, wrong, 1), 1);
    EXPECT_EQ(set(RAXEL_ESCAPE_SET_SIZE_MODE, wrong, 1), 1);
  }
  EXPECT_EQ(record_->nResolutionMode, RAXEL_STORED_RESOLUTION_USER);
  EXPECT_EQ(record_->nSizeMode, RAXEL_STORED_SIZE_USER);
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, ColorModeComesBackByTheHostsCode) {
  for (int32_t host = RAXEL_ASK_COLORS; host <= RAXEL_ASK_COLORS_GREY_INVERT; ++host) {
    set(RAXEL_ESCAPE_SET_COLOR_MODE, host);
    int32_t output = 0;
    EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_COLOR_MODE, 4, nullptr, &output, 0), 1);
    EXPECT_EQ(output, host);
  }
  for (int32_t stored : {102, 108, 0}) {
    record_->nColorMode = stored;
    int32_t output = 4711;
    EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_COLOR_MODE, 4, nullptr, &output, 0), -1);
    EXPECT_EQ(output, 4711);
  }
}

// ---- Resolutions and sizes

TEST_F(Escapes, ResolutionsLieIn32To400) {
  for (int32_t number : {RAXEL_ESCAPE_SET_X_RESOLUTION, RAXEL_ESCAPE_SET_Y_RESOLUTION}) {
    const int16_t &field =
        number == RAXEL_ESCAPE_SET_X_RESOLUTION ? record_->tiff.nXResolution : record_->tiff.nYResolution;
    EXPECT_EQ(set(number, 32), 1);
    EXPECT_EQ(field, 32);
    EXPECT_EQ(set(number, 400), 1);
    EXPECT_EQ(field, 400);
    for (int32_t wrong : {31, 401, 0, -96, 65536 + 96}) EXPECT_EQ(set(number, wrong, 1), -1) << wrong;
    EXPECT_EQ(field, 400);
  }
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, SizesLieIn03125To22) {
  for (int32_t number : {RAXEL_ESCAPE_SET_WIDTH, RAXEL_ESCAPE_SET_HEIGHT}) {
    const double &field = number == RAXEL_ESCAPE_SET_WIDTH ? record_->dWidth : record_->dHeight;
    EXPECT_EQ(setDouble(number, 0.03125), 1);
    EXPECT_EQ(field, 0.03125);
    EXPECT_EQ(setDouble(number, 22.0), 1);
    EXPECT_EQ(field, 22.0);
    for (double wrong : {22.01, 0.03124, 0.0, -1.0, std::nan(""), HUGE_VAL}) {
      EXPECT_EQ(setDouble(number, wrong, 1), -1) << wrong;
    }
    EXPECT_EQ(field, 22.0);
  }
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, ThePicturesOwnResolutionAndSizeReadAsZeros) {
  int32_t resolution[2] = {7, 7};
  double size[2] = {7, 7};
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_RESOLUTION, 0, nullptr, resolution, 0), 1);
  EXPECT_EQ(resolution[0], 0);
  EXPECT_EQ(resolution[1], 0);
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_SIZE, 0, nullptr, size, 0), 1);
  EXPECT_EQ(size[0], 0.0);
  EXPECT_EQ(size[1], 0.0);
}

TEST_F(Escapes, OtherModesReadAsTheRecordHasThem) {
  record_->nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
  record_->nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
  record_->tiff.nXResolution = -5;
  record_->tiff.nYResolution = 150;
  int32_t resolution[2];
  double size[2];
  xEscapeSetup(handle_, RAXEL_ESCAPE_GET_RESOLUTION, 0, nullptr, resolution, 0);
  EXPECT_EQ(resolution[0], -5);
  EXPECT_EQ(resolution[1], 150);
  xEscapeSetup(handle_, RAXEL_ESCAPE_GET_SIZE, 0, nullptr, size, 0);
  EXPECT_EQ(size[0], 6.67);
  EXPECT_EQ(size[1], 5.0);
}

TEST_F(Escapes, ValuesMayLieAtAnyAddress) {
  char room[24];
  const double width = 7.5;
  std::memcpy(room + 1, &width, sizeof width);
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_SET_WIDTH, 8, room + 1, nullptr, 0), 1);
  EXPECT_EQ(record_->dWidth, 7.5);
  record_->nSizeMode = RAXEL_STORED_SIZE_USER;
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_SIZE, 0, nullptr, room + 3, 0), 1);
  double back[2];
  std::memcpy(back, room + 3, sizeof back);
  EXPECT_EQ(back[0], 7.5);
  EXPECT_EQ(back[1], 5.0);
}

// ---- The host's own words

TEST_F(Escapes, UserDataIsTheInputItself) {
  const auto value = static_cast<HostWord>(0xFEDCBA9876543210u);
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_SET_USER_DATA, 0, reinterpret_cast<const void *>(value),
                         nullptr, 1),
            1);
  EXPECT_EQ(record_->dwUserData, value);
  uint32_t output[2] = {7, 7};
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_USER_DATA, 0, nullptr, output, 0), 1);
  EXPECT_EQ(output[0], static_cast<uint32_t>(value));
  EXPECT_EQ(output[1], 7u) << "four bytes come back";
}

HostWord procedure(HostWord, HostWord, HostWord, HostWord) {
  return 0;
}

TEST_F(Escapes, TheOutputProcedureIsTheInputItself) {
  const void *address = reinterpret_cast<const void *>(&procedure);
  for (int32_t size : {4, static_cast<int32_t>(sizeof(void *))}) {
    EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_SET_OUTPUT_PROC, size, address, nullptr, 1), 1);
    EXPECT_EQ(record_->lpfnOutputProc, &procedure);
    EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_SET_OUTPUT_PROC, size, nullptr, nullptr, 1), 1);
    EXPECT_EQ(record_->lpfnOutputProc, nullptr);
  }
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, RasterInfoComesFromThisRecord) {
  const RasterPictureInfo in = {96, 0, 100, 800, 400, 0, 0};
  RasterInfoResult out = {};
  lpRaster = nullptr;
  EXPECT_EQ(xEscapeSetup(handle_, RAXEL_ESCAPE_GET_RASTER_INFO, 0, &in, &out, 0), 1);
  EXPECT_EQ(out.nWidth, 800);
  EXPECT_EQ(out.nHeight, 400);
  EXPECT_EQ(out.nDepth, 8);
  EXPECT_EQ(record_->dWidth, 8.0);
}

// ---- Saving

TEST_F(Escapes, SavedOptionsGoUnderTheirKeysAsStoredCodes) {
  support::writeFile(profile_, "[MODE]\nDriver=D\n[OTHER]\nColor Mode=103\n");
  set(RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ASK_COLORS_GREY, 1);
  set(RAXEL_ESCAPE_SET_BITMAP_MODE, RAXEL_ASK_MODE_RGB, 1);
  set(RAXEL_ESCAPE_SET_COMPRESSION, RAXEL_ASK_COMPRESS_T6, 7);
  set(RAXEL_ESCAPE_SET_X_RESOLUTION, 32, 1);
  set(RAXEL_ESCAPE_SET_Y_RESOLUTION, 400, -1);
  EXPECT_EQ(saved(),
            "[MODE]\nDriver=D\nColor Mode=106\nBitmap Mode=222\nCompression Mode=230\n"
            "X Resolution=32\nY Resolution=400\n[OTHER]\nColor Mode=103\n");
}

TEST_F(Escapes, BothEndsOfAResolutionAreSaved) {
  for (const int32_t number : {11, 12}) {
    const std::string key = number == 11 ? "X Resolution=" : "Y Resolution=";
    for (const int32_t dpi : {32, 400}) {
      support::writeFile(profile_, "[MODE]\nDriver=D\n");
      EXPECT_EQ(set(number, dpi, 1), 1);
      EXPECT_EQ(saved(), "[MODE]\nDriver=D\n" + key + std::to_string(dpi) + "\n");
    }
  }
}

TEST_F(Escapes, WithoutTheSaveFlagTheProfileStays) {
  set(RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ASK_COLORS_GREY);
  setDouble(RAXEL_ESCAPE_SET_WIDTH, 5.0);
  EXPECT_EQ(saved(), "");
}

TEST_F(Escapes, TheWidthIsSavedWithAStrayPointThree) {
  support::writeFile(profile_, "[MODE]\nDriver=D\nSize Mode=603\n");
  EXPECT_EQ(setDouble(RAXEL_ESCAPE_SET_WIDTH, 6.67, 1), 1);
  EXPECT_EQ(setDouble(RAXEL_ESCAPE_SET_HEIGHT, 8.625, 1), 1);
  EXPECT_EQ(saved(), "[MODE]\nDriver=D\nSize Mode=603\nWidth=.36.67\nHeight=8.62\n");
  LoadProfile(1);
  EXPECT_EQ(record_->dWidth, 0.36) << ".36.67 reads back as 0.36";
  EXPECT_EQ(record_->dHeight, 8.62);
}

TEST_F(Escapes, TheWidthKeepsSixDigitsTheHeightThree) {
  support::writeFile(profile_, "[MODE]\nDriver=D\n");
  setDouble(RAXEL_ESCAPE_SET_WIDTH, 12.3456789, 1);
  setDouble(RAXEL_ESCAPE_SET_HEIGHT, 12.3456789, 1);
  EXPECT_EQ(saved(), "[MODE]\nDriver=D\nWidth=.312.3457\nHeight=12.3\n");
}

TEST_F(Escapes, WithoutAProfileSavingDoesNothing) {
  record_->szProfilePath[0] = '\0';
  const support::Environment inidir("INIDIR", folder_.path().c_str());
  EXPECT_EQ(set(RAXEL_ESCAPE_SET_X_RESOLUTION, 200, 1), 1);
  EXPECT_EQ(record_->tiff.nXResolution, 200);
  EXPECT_TRUE(std::filesystem::exists(folder_.path()));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

}  // namespace
