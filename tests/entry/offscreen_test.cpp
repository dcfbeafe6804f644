// SPDX-License-Identifier: MIT
// The offscreen hooks: what reaches the draw procedure.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "entry/host_calls.h"
#include "raxel/filter.h"
#include "runtime/live_blocks.h"

namespace {

using entry_test::word;

struct DrawCall {
  HostWord op, a, b, c;
};
std::vector<DrawCall> drawn;
std::array<HostWord, OFFSCREEN_WORDS> requested;
HostWord drawAnswer;

HostWord draw(HostWord op, HostWord a, HostWord b, HostWord c) {
  drawn.push_back({op, a, b, c});
  if (op == RAXEL_DRAW_OPEN) {
    const auto *request = reinterpret_cast<const HostWord *>(b);
    for (size_t i = 0; i < OFFSCREEN_WORDS; ++i) requested[i] = request[i];
  }
  return drawAnswer;
}

class Offscreen : public testing::Test {
 protected:
  Offscreen() {
    drawn.clear();
    drawAnswer = 0;
  }
  int picture_ = 0;
  uint8_t palette_[12] = {};
};

TEST_F(Offscreen, QueryHandsOverPictureAndFormat) {
  PictureFormat format = {};
  QueryPlatformOffscreen(&format, &picture_, draw);
  ASSERT_EQ(drawn.size(), 1u);
  EXPECT_EQ(drawn[0].op, HostWord{RAXEL_DRAW_QUERY});
  EXPECT_EQ(drawn[0].a, word(&picture_));
  EXPECT_EQ(drawn[0].b, word(&format));
  EXPECT_EQ(drawn[0].c, 0u);
}

TEST_F(Offscreen, InitFillsTheRecordAndTheRequest) {
  drawAnswer = 17;
  uint32_t rows = 100;
  const uint8_t flags[9] = {5, 6};
  OffscreenRecord *record = InitPlatformOffscreen(640, &rows, 8, 256, palette_, &picture_, draw, flags);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(rows, 17u) << "the draw procedure's answer";
  EXPECT_EQ(record->lpPicture, &picture_);
  EXPECT_EQ(record->lpfnDraw, &draw);
  EXPECT_EQ(record->nColors, 256);
  EXPECT_EQ(record->lpPalette, palette_);
  EXPECT_EQ(record->nWidth, 640u);
  EXPECT_EQ(record->nBandRows, 100u) << "the rows asked for";
  EXPECT_EQ(record->nBits, 8);
  EXPECT_EQ(record->hBandCache, 0u);
  EXPECT_EQ(record->bFlag, 5) << "the first byte of the flag block";
  EXPECT_EQ(requested, (std::array<HostWord, 5>{640, 100, 8, 256, word(palette_)}));
  EXPECT_EQ(drawn[0].op, HostWord{RAXEL_DRAW_OPEN});
  EXPECT_EQ(drawn[0].a, word(record));
  EXPECT_EQ(drawn[0].c, 0u);

  drawAnswer = 4711;
  EXPECT_EQ(DrawPlatformOffscreen(record, 20, 60), 4711u);
  EXPECT_EQ(drawn[1].op, HostWord{RAXEL_DRAW_BAND});
  EXPECT_EQ(drawn[1].a, word(record));
  EXPECT_EQ(drawn[1].b, 20u);
  EXPECT_EQ(drawn[1].c, 60u);

  EXPECT_EQ(TermPlatformOffscreen(record), 0);
  EXPECT_EQ(drawn[2].op, HostWord{RAXEL_DRAW_CLOSE});
  EXPECT_EQ(drawn[2].a, word(record));
  EXPECT_EQ(drawn[2].b, 0u);
  EXPECT_EQ(drawn[2].c, 0u);
}

TEST_F(Offscreen, NothingToDrawWithIsHarmless) {
  uint32_t rows = 100;
  PictureFormat format = {};
  EXPECT_EQ(QueryPlatformOffscreen(&format, &picture_, nullptr), 0);
  EXPECT_EQ(InitPlatformOffscreen(1, &rows, 8, 0, nullptr, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(InitPlatformOffscreen(1, nullptr, 8, 0, nullptr, nullptr, draw, nullptr), nullptr);
  EXPECT_EQ(rows, 100u);
  EXPECT_EQ(DrawPlatformOffscreen(nullptr, 0, 1), 0u);
  EXPECT_EQ(TermPlatformOffscreen(nullptr), 0);
  EXPECT_TRUE(drawn.empty());
}

TEST_F(Offscreen, ARecordWhoseProcedureIsGoneIsOnlyFreed) {
  uint32_t rows = 1;
  OffscreenRecord *record = InitPlatformOffscreen(1, &rows, 24, 0, nullptr, nullptr, draw, nullptr);
  record->lpfnDraw = nullptr;
  drawn.clear();
  EXPECT_EQ(DrawPlatformOffscreen(record, 0, 1), 0u);
  const size_t blocks = runtime::countBlocks();
  EXPECT_EQ(TermPlatformOffscreen(record), 0);
  EXPECT_EQ(runtime::countBlocks(), blocks - 1);
  EXPECT_TRUE(drawn.empty());
}

TEST_F(Offscreen, FlagsMayBeMissing) {
  uint32_t rows = 1;
  OffscreenRecord *record = InitPlatformOffscreen(1, &rows, 24, 0, nullptr, nullptr, draw, nullptr);
  EXPECT_EQ(record->bFlag, 0);
  TermPlatformOffscreen(record);
}

}  // namespace
