// SPDX-License-Identifier: MIT
#include "prepare/document.h"

#include <gtest/gtest.h>

#include "host/pictures.h"
#include "support/random.h"

using host_test::prepared;
using host_test::request;
using host_test::TestPicture;
using prepare::Kind;
using prepare::kindOf;
using prepare::Tones;
using prepare::tonesOf;

namespace {

Tones tones(const TestPicture &picture) {
  return tonesOf(prepare::Source(picture.view, RAXEL_TREAT_NONE, nullptr));
}

Kind kind(const TestPicture &picture) {
  return kindOf(tones(picture));
}

// Strokes of three pixels in every twenty, with a pixel of grey on either side.
void drawStrokes(TestPicture &picture, unsigned ink, unsigned paper) {
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    for (uint32_t x = 0; x < picture.view.width; ++x) {
      const uint32_t at = x % 20;
      picture.setIndex(x, y, at < 3 ? ink : at == 3 || at == 19 ? (ink + paper) / 2 : paper);
    }
  }
}

}  // namespace

TEST(HostDocument, CountsLevelsAndWhatCutsWouldPart) {
  TestPicture picture(3, 2, 8);
  const unsigned rows[2][3] = {{10, 20, 20}, {10, 30, 5}};
  for (uint32_t y = 0; y < 2; ++y) {
    for (uint32_t x = 0; x < 3; ++x) picture.setIndex(x, y, rows[y][x]);
  }
  const Tones seen = tones(picture);
  EXPECT_EQ(seen.levels[10], 2u);
  EXPECT_EQ(seen.levels[20], 2u);
  EXPECT_EQ(seen.levels[30], 1u);
  // A cut below 15 parts 10|20, 10|30 and 30|5 side by side, and 20|5 one above the other, which counts
  // twice.
  uint64_t parted = 0;
  for (size_t i = 0; i <= 15; ++i) parted += seen.steps[i];
  EXPECT_EQ(parted, 3u + 2u);
  for (size_t i = 16; i <= 25; ++i) parted += seen.steps[i];
  EXPECT_EQ(parted, 2u + 2u);  // 10|30, 30|5 and 20|30
}

TEST(HostDocument, StrokesOnPaperAreADocument) {
  for (const auto &[ink, paper] : {std::pair{20u, 240u}, std::pair{150u, 250u}, std::pair{200u, 15u}}) {
    TestPicture page(200, 100, 8);
    drawStrokes(page, ink, paper);
    const Kind seen = kind(page);
    EXPECT_TRUE(seen.isDocument) << ink;
    EXPECT_GT(seen.cut, std::min(ink, paper));
    EXPECT_LE(seen.cut, std::max(ink, paper));
  }
}

TEST(HostDocument, TwoTonesAreCutHalfWay) {
  TestPicture page(8, 8, 8);
  for (uint32_t x = 0; x < 4; ++x) page.setIndex(x, x, 255);
  EXPECT_TRUE(kind(page).isDocument);
  EXPECT_EQ(kind(page).cut, 128);
}

TEST(HostDocument, SmoothTonesAreNone) {
  TestPicture ramp(256, 64, 8), subject(256, 64, 8);
  for (uint32_t y = 0; y < 64; ++y) {
    for (uint32_t x = 0; x < 256; ++x) {
      ramp.setIndex(x, y, x);
      // A dark thing with soft sides on white: of two tones, and yet grey lies on no edge.
      subject.setIndex(x, y, x < 60 ? 20 : x < 90 ? 20 + (x - 60) * 7 : 235);
    }
  }
  EXPECT_FALSE(kind(ramp).isDocument);
  EXPECT_FALSE(kind(subject).isDocument);
}

TEST(HostDocument, FaintTonesAreNone) {
  TestPicture page(200, 100, 8);
  drawStrokes(page, 180, 200);
  EXPECT_FALSE(kind(page).isDocument);
}

TEST(HostDocument, AnEmptySheetStaysEmpty) {
  TestPicture sheet(300, 200, 8), grey(300, 200, 8);
  support::Random random(3);
  for (uint32_t y = 0; y < 200; ++y) {
    for (uint32_t x = 0; x < 300; ++x) {
      sheet.setIndex(x, y, 240 + random.byte() % 8);
      grey.setIndex(x, y, 210);
    }
  }
  EXPECT_TRUE(kind(sheet).isDocument);
  EXPECT_EQ(kind(sheet).cut, 128);
  EXPECT_FALSE(kind(grey).isDocument);  // no scanner makes it, and a flat grey is meant
}

TEST(HostDocument, LooksAtPartOfLargePictures) {
  TestPicture page(4200, 2100, 8);
  drawStrokes(page, 20, 240);
  uint64_t seen = 0;
  for (const uint64_t count : tones(page).levels) seen += count;
  EXPECT_EQ(seen, uint64_t{4200} * 2100 / 2);
  EXPECT_TRUE(kind(page).isDocument);
}

TEST(HostDocument, DecidesOnlyWhatTheRequestLeavesOpen) {
  TestPicture page(200, 100, 8);
  drawStrokes(page, 20, 240);
  RaxelRequest wanted = request(RAXEL_MODE_BILEVEL);
  const auto notes = [&] { return prepared(page, wanted).plan.notes; };
  EXPECT_EQ(notes(), unsigned{RAXEL_NOTE_REDUCED | RAXEL_NOTE_DOCUMENT});
  EXPECT_EQ(prepared(page, wanted).plan.threshold, kind(page).cut);
  wanted.dither = RAXEL_DITHER_ON;
  EXPECT_EQ(notes(), unsigned{RAXEL_NOTE_REDUCED | RAXEL_NOTE_DITHERED});
  EXPECT_EQ(prepared(page, wanted).plan.threshold, -1);
  wanted.dither = RAXEL_DITHER_OFF;
  EXPECT_EQ(notes(), unsigned{RAXEL_NOTE_REDUCED});
  wanted = request(RAXEL_MODE_GREY16);
  EXPECT_EQ(notes(), unsigned{RAXEL_NOTE_REDUCED | RAXEL_NOTE_DITHERED});
}
