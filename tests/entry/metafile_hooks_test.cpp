// SPDX-License-Identifier: MIT
// The metafile hooks of a platform without metafiles.
#include <gtest/gtest.h>

#include "raxel/filter.h"

namespace {

HostWord query(MetafilePicture &picture, PictureFormat &format) {
  return DrawPlatformMetafile(RAXEL_DRAW_QUERY, reinterpret_cast<HostWord>(&picture),
                              reinterpret_cast<HostWord>(&format), 0);
}

TEST(MetafileHooks, InitClearsItsOutputsAndAnswersTheFirstValue) {
  HostWord a = 1, b = 2, callback = 3;
  Handle setup = 4;
  EXPECT_EQ(InitPlatformMetafileFilter(4711, 4712, nullptr, &a, &setup, &b, &callback), 4711u);
  EXPECT_EQ(a, 0u);
  EXPECT_EQ(b, 0u);
  EXPECT_EQ(callback, 0u);
  EXPECT_EQ(setup, 0u);
  EXPECT_EQ(InitPlatformMetafileFilter(7, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 7u);
}

TEST(MetafileHooks, NothingIsRecorded) {
  EXPECT_EQ(GetMetaFileHandle(), 0u);
  EXPECT_EQ(DeleteMetaFileHandle(), 0);
  EXPECT_EQ(TermPlatformMetafileFilter(), 0);
}

TEST(MetafileDraw, QueryDividesTheFrameByItsResolution) {
  MetafilePicture picture = {};
  picture.nFrameLeft = static_cast<HostWord>(-100);
  picture.nFrameTop = 900;
  picture.nFrameRight = 500;
  picture.nFrameBottom = 300;
  picture.nFrameResolution = 100;
  PictureFormat format = {};
  EXPECT_EQ(query(picture, format), 0u);
  EXPECT_EQ(format.dWidth, 6.0);   // right - left
  EXPECT_EQ(format.dHeight, 6.0);  // top - bottom
  EXPECT_EQ(format.nResolution, 100u);
  EXPECT_EQ(format.nKind, RAXEL_KIND_METAFILE);
}

TEST(MetafileDraw, WithoutAResolutionTheFrameIsTakenAsItIs) {
  MetafilePicture picture = {};
  picture.nFrameRight = 0x7FFFFFFF;
  picture.nFrameLeft = 0x80000000u;
  picture.nFrameBottom = 10;
  PictureFormat format = {};
  query(picture, format);
  EXPECT_EQ(format.dWidth, 4294967295.0) << "no overflow";
  EXPECT_EQ(format.dHeight, -10.0);
  EXPECT_EQ(format.nResolution, 0u);
}

TEST(MetafileDraw, TheResolutionIsUnsigned) {
  MetafilePicture picture = {};
  picture.nFrameRight = 100;
  picture.nFrameResolution = 0xFFFFFFFFu;
  PictureFormat format = {};
  query(picture, format);
  EXPECT_EQ(format.dWidth, 100.0 / 4294967295.0);
}

TEST(MetafileDraw, NoRowsNoPixelsNoFailure) {
  EXPECT_EQ(DrawPlatformMetafile(RAXEL_DRAW_QUERY, 0, 0, 0), 0u);
  MetafilePicture picture{};
  EXPECT_EQ(DrawPlatformMetafile(RAXEL_DRAW_QUERY, reinterpret_cast<HostWord>(&picture), 0, 0), 0u);
  PictureFormat format{};
  EXPECT_EQ(DrawPlatformMetafile(RAXEL_DRAW_QUERY, 0, reinterpret_cast<HostWord>(&format), 0), 0u);
  for (HostWord op : {HostWord{1}, HostWord{2}, HostWord{3}, HostWord{4}}) {
    EXPECT_EQ(DrawPlatformMetafile(op, 0, 0, 0), 0u) << op;
  }
}

TEST(MetafileDraw, AQueryNeedsAPictureAndAFormat) {
  MetafilePicture picture = {};
  picture.nFrameRight = 100;
  PictureFormat format = {};
  format.dWidth = 7.0;
  const auto from = reinterpret_cast<HostWord>(&picture);
  const auto to = reinterpret_cast<HostWord>(&format);
  EXPECT_EQ(DrawPlatformMetafile(RAXEL_DRAW_QUERY, from, 0, 0), 0u);
  EXPECT_EQ(DrawPlatformMetafile(RAXEL_DRAW_QUERY, 0, to, 0), 0u);
  EXPECT_EQ(format.dWidth, 7.0);
}

}  // namespace
