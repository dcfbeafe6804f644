// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>

#include "filter/given.h"
#include "host/linked_filter.h"
#include "support/temp_dir.h"

namespace {

using host_test::Color;

// A picture of these bits and colours, 300 by 200 pixels.
struct Read {
  host::Picture picture;
  explicit Read(uint32_t bits, const std::vector<Color> &colors = {}) {
    picture.allocate(300, 200, bits);
    for (size_t i = 0; i < colors.size(); ++i)
      std::copy_n(colors[i].begin(), 3, picture.table.begin() + 3 * i);
    if (!colors.empty()) picture.useTable(static_cast<uint32_t>(colors.size()));
  }
};

RaxelRequest requestOf(const host::Options &options, const Read &read,
                       std::vector<std::string> *notes = nullptr) {
  const host::Library filter = host_test::linkedFilter();
  const host::Given given(filter, options);
  std::vector<std::string> ignored;
  return host::requestFor(options, {}, given.setup, read.picture, notes ? *notes : ignored);
}

int modeOf(const Read &read) {
  return requestOf({}, read).mode;
}

}  // namespace

// A resolution that no number of dots can say, as a file has it that nobody looked through.
TEST(Request, ABoundlessResolutionIsTold) {
  Read read(8);
  read.picture.dpiX = 1e300;
  read.picture.dpiY = 96;
  std::vector<std::string> notes;
  EXPECT_EQ(requestOf({}, read, &notes).dpiX, 100000);
  ASSERT_FALSE(notes.empty());
  EXPECT_EQ(notes[0], "the picture's 1000000000 dots an inch cannot be written; 100000 are");
}

TEST(Request, TakesTheSmallestModeThatKeepsThePicture) {
  EXPECT_EQ(modeOf(Read(24)), RAXEL_MODE_RGB);
  EXPECT_EQ(modeOf(Read(8)), RAXEL_MODE_GREY256);
  EXPECT_EQ(modeOf(Read(4)), RAXEL_MODE_GREY16);
  EXPECT_EQ(modeOf(Read(2)), RAXEL_MODE_GREY16);
  EXPECT_EQ(modeOf(Read(1)), RAXEL_MODE_BILEVEL);
  EXPECT_EQ(modeOf(Read(1, {{255, 255, 255}, {0, 0, 0}})), RAXEL_MODE_BILEVEL);
  EXPECT_EQ(modeOf(Read(1, {{255, 255, 255}, {0, 0, 9}})), RAXEL_MODE_COLOR16);
  EXPECT_EQ(modeOf(Read(1, {{0, 0, 0}, {100, 100, 100}})), RAXEL_MODE_GREY256);
  EXPECT_EQ(modeOf(Read(4, {{17, 17, 17}, {34, 34, 34}})), RAXEL_MODE_GREY16);
  EXPECT_EQ(modeOf(Read(4, {{17, 17, 17}, {35, 35, 35}})), RAXEL_MODE_GREY256);
  EXPECT_EQ(modeOf(Read(4, {{1, 2, 3}})), RAXEL_MODE_COLOR16);
  EXPECT_EQ(modeOf(Read(8, std::vector<Color>(16, Color{1, 2, 3}))), RAXEL_MODE_COLOR16);
  EXPECT_EQ(modeOf(Read(8, std::vector<Color>(17, Color{1, 2, 3}))), RAXEL_MODE_COLOR256);
}

// The smallest mode that holds it, unless another one is asked for.
TEST(Request, APaletteDecidesTheMode) {
  const auto requestWith = [](size_t colors, const host::Options &options) {
    static host::Palette palette;
    palette.assign(colors, {1, 2, 3});
    const host::Library filter = host_test::linkedFilter();
    const host::Given given(filter, options);
    std::vector<std::string> notes;
    return host::requestFor(options, palette, given.setup, Read(1).picture, notes);
  };
  host::Options options;
  EXPECT_EQ(requestWith(16, options).mode, RAXEL_MODE_COLOR16);
  EXPECT_EQ(requestWith(17, options).mode, RAXEL_MODE_COLOR256);
  EXPECT_EQ(requestWith(17, options).paletteColors, 17u);
  EXPECT_EQ(requestWith(17, options).palette[50], 3);
  options.mode = RAXEL_MODE_COLOR256;
  EXPECT_EQ(requestWith(2, options).mode, RAXEL_MODE_COLOR256);
  EXPECT_EQ(requestWith(0, options).palette, nullptr);
}

TEST(Request, TellsThatAnotherResolutionPrintsAtAnotherSize) {
  const auto notesOf = [](double ownX, double ownY, const host::Options &options) {
    Read read(24);
    read.picture.dpiX = ownX;
    read.picture.dpiY = ownY;
    std::vector<std::string> notes;
    requestOf(options, read, &notes);
    return notes;
  };
  using Notes = std::vector<std::string>;
  host::Options options;
  EXPECT_EQ(notesOf(600, 600, options), Notes());
  options.dpi = {203, 203};
  // 600 / 203 = 2.9557
  EXPECT_EQ(notesOf(600, 600, options),
            (Notes{"at this resolution it prints 2.96 times as large as at its own; "
                   "--size or --paper gives it a size"}));
  EXPECT_EQ(notesOf(203, 406, options),
            (Notes{"at this resolution it prints 1 by 2 times as large as at its own; "
                   "--size or --paper gives it a size"}));
  EXPECT_EQ(notesOf(203.2, 202.8, options), Notes());
  EXPECT_EQ(notesOf(0, 0, options), Notes());
  EXPECT_EQ(notesOf(1, 1, options), Notes());
  options.size = host::SizeBox{2, 0, false};
  EXPECT_EQ(notesOf(600, 600, options), Notes());
}

TEST(Request, TakesThePicturesResolutionWhereAFileCanHoldIt) {
  const auto dpiOf = [](double dpiX, double dpiY) {
    Read read(24);
    read.picture.dpiX = dpiX;
    read.picture.dpiY = dpiY;
    std::vector<std::string> notes;
    const RaxelRequest request = requestOf({}, read, &notes);
    return std::array{request.dpiX, request.dpiY, static_cast<double>(notes.size())};
  };
  EXPECT_EQ(dpiOf(0, 0), (std::array{96.0, 96.0, 0.0}));
  EXPECT_EQ(dpiOf(1, 1), (std::array{96.0, 96.0, 0.0}));
  EXPECT_EQ(dpiOf(299.9994, 299.9994), (std::array{300.0, 300.0, 0.0}));
  EXPECT_EQ(dpiOf(204, 98), (std::array{204.0, 98.0, 0.0}));
  EXPECT_EQ(dpiOf(600, 600), (std::array{600.0, 600.0, 0.0}));
  EXPECT_EQ(dpiOf(10, 203.2), (std::array{10.0, 203.2, 0.0}));
  EXPECT_EQ(dpiOf(96.012, 299.72), (std::array{96.0, 299.72, 0.0}));
  EXPECT_EQ(dpiOf(200000, 96), (std::array{100000.0, 96.0, 1.0}));
}

TEST(Request, FitsThePictureIntoTheBox) {
  const auto sizeOf = [](host::SizeBox box, std::array<double, 2> dpi) {
    host::Options options;
    options.size = box;
    options.dpi = dpi;
    const Read read(24);
    const RaxelRequest request = requestOf(options, read);
    RaxelPlan plan;
    EXPECT_EQ(raxelHostPlan(&read.picture.view, &request, &plan), RAXEL_HOST_OK);
    return std::array{plan.width, plan.rows};
  };
  EXPECT_EQ(sizeOf({6, 6, false}, {100, 100}), (std::array{600u, 400u}));
  EXPECT_EQ(sizeOf({9, 2, false}, {100, 100}), (std::array{300u, 200u}));
  EXPECT_EQ(sizeOf({0, 1, false}, {100, 100}), (std::array{150u, 100u}));
  EXPECT_EQ(sizeOf({30, 30, true}, {96, 96}), (std::array{30u, 20u}));
  EXPECT_EQ(sizeOf({1, 0, true}, {96, 96}), (std::array{1u, 1u}));
}

TEST(Request, KeepsTheProportionsOnPaperAtTwoResolutions) {
  const auto sizeOf = [](host::SizeBox box, std::array<double, 2> own) {
    host::Options options;
    options.size = box;
    options.dpi = {200, 100};
    Read read(24);  // 300 by 200
    read.picture.dpiX = own[0];
    read.picture.dpiY = own[1];
    const RaxelRequest request = requestOf(options, read);
    RaxelPlan plan;
    EXPECT_EQ(raxelHostPlan(&read.picture.view, &request, &plan), RAXEL_HOST_OK);
    return std::array{plan.width, plan.rows};
  };
  EXPECT_EQ(sizeOf({3, 0, false}, {0, 0}), (std::array{600u, 200u}));  // 3 by 2 inches
  EXPECT_EQ(sizeOf({0, 2, false}, {72, 72}), (std::array{600u, 200u}));
  EXPECT_EQ(sizeOf({3, 3, false}, {1, 1}), (std::array{600u, 200u}));
  EXPECT_EQ(sizeOf({3, 0, false}, {200, 100}), (std::array{600u, 400u}));  // its own: 1.5 by 2 inches
  // Pixels are meant as they are, unless a side is left open.
  EXPECT_EQ(sizeOf({60, 60, true}, {0, 0}), (std::array{60u, 60u}));
  EXPECT_EQ(sizeOf({60, 0, true}, {0, 0}), (std::array{60u, 40u}));
}

TEST(Request, ASettingComesFromTheNearestSource) {
  const support::TempDir folder;
  support::writeFile(
      folder.file("p.ini"),
      "[m]\nDriver=RAXEL.1\nBitmap Mode=216\nCompression Mode=225\nColor Mode=106\nResolution Mode=310\n"
      "X Resolution=200\nY Resolution=100\nNot Defined=771\n");
  host::Options options;
  options.profile = folder.file("p.ini");
  options.section = "m";
  const Read read(24);
  RaxelRequest request = requestOf(options, read);
  EXPECT_EQ(request.mode, RAXEL_MODE_GREY16);
  EXPECT_EQ(request.compression, RAXEL_COMPRESS_PACKBITS);
  EXPECT_EQ(request.treatment, RAXEL_TREAT_GREY);
  EXPECT_EQ(request.layout, RAXEL_LAYOUT_TILES);
  EXPECT_EQ(request.dpiX, 200);
  EXPECT_EQ(request.dpiY, 100);
  options.set = {{9, "146"}, {10, "153"}};
  request = requestOf(options, read);
  EXPECT_EQ(request.mode, RAXEL_MODE_RGB);
  EXPECT_EQ(request.compression, RAXEL_COMPRESS_LZW);
  EXPECT_EQ(request.dpiX, 200);
  options.mode = RAXEL_MODE_COLOR16;
  options.dpi = {72, 72};
  options.layout = RAXEL_LAYOUT_STRIPS;
  options.treatment = RAXEL_TREAT_NONE;
  request = requestOf(options, read);
  EXPECT_EQ(request.mode, RAXEL_MODE_COLOR16);
  EXPECT_EQ(request.dpiX, 72);
  EXPECT_EQ(request.layout, RAXEL_LAYOUT_STRIPS);
  EXPECT_EQ(request.treatment, RAXEL_TREAT_NONE);
  EXPECT_EQ(request.compression, RAXEL_COMPRESS_LZW);
}

TEST(Request, EveryCompressionOfAProfileHasItsOwn) {
  const std::pair<int, int> all[] = {{RAXEL_STORED_COMPRESS_NONE, RAXEL_COMPRESS_NONE},
                                     {RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_COMPRESS_PACKBITS},
                                     {RAXEL_STORED_COMPRESS_HUFFMAN, RAXEL_COMPRESS_HUFFMAN},
                                     {RAXEL_STORED_COMPRESS_LZW, RAXEL_COMPRESS_LZW},
                                     {RAXEL_STORED_COMPRESS_T4, RAXEL_COMPRESS_T4},
                                     {RAXEL_STORED_COMPRESS_T6, RAXEL_COMPRESS_T6}};
  const support::TempDir folder;
  host::Options options;
  options.profile = folder.file("p.ini");
  options.section = "m";
  for (const auto &[stored, meant] : all) {
    support::writeFile(options.profile, "[m]\nDriver=RAXEL.1\nBitmap Mode=215\nCompression Mode=" +
                                            std::to_string(stored) + "\n");
    EXPECT_EQ(requestOf(options, Read(1)).compression, meant) << stored;
  }
}

// A profile that nobody named, found in the usual folder and without the mode that it speaks of.
TEST(Request, AnEmptySectionOfAnUnnamedProfileIsNoChoice) {
  const support::TempDir folder;
  support::writeFile(folder.file("raxel_host_tests.ini"), "[RAXEL]\n~Mode=none\n");
  support::writeFile(folder.file("raxel.ini"), "[RAXEL]\n~Mode=none\n");
  setenv("INIDIR", folder.path().c_str(), 1);
  const RaxelRequest request = requestOf({}, Read(8));
  unsetenv("INIDIR");
  EXPECT_EQ(request.mode, RAXEL_MODE_GREY256);
  EXPECT_EQ(request.dpiX, 96);
  EXPECT_EQ(request.inchesX, 0);
}
