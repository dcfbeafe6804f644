// SPDX-License-Identifier: MIT
// A picture handed over in bands becomes the file that a block of its size becomes.
#include "filter/bands.h"

#include <gtest/gtest.h>

#include <optional>

#include "export/pace.h"
#include "host/linked_filter.h"
#include "support/cases.h"

namespace {

using host_test::TestPicture;

struct Sent {
  std::vector<uint8_t> file;
  uint32_t notes = 0;
  uint64_t block = 0;  // bytes of the largest block of pixels
  bool complete = false, closed = false;
};

// The file of a picture as the filter leaves it, from a block of the whole picture or in bands.
Sent send(const RaxelPicture &picture, const RaxelRequest &request, bool inBands) {
  static const host::Library library = host_test::linkedFilter();
  RaxelPlan plan;
  EXPECT_EQ(raxelHostPlan(&picture, &request, &plan), RAXEL_HOST_OK);
  Sent sent;
  sent.block = inBands ? host::bandBytes(plan) : plan.bytes;
  const prepare::HandleMemory pixels(library.services, sent.block), table(library.services, 768);
  std::optional<prepare::RowByRow> rows;
  if (inBands) {
    EXPECT_TRUE(host::takesBands(plan) && prepare::isRowByRow(picture.bits, request, plan));
    rows.emplace(picture, request, library.services, plan, table.bytes());
  } else {
    EXPECT_EQ(raxelHostPrepare(&picture, &request, &library.services, &plan, pixels.bytes(), table.bytes()),
              RAXEL_HOST_OK);
  }
  sent.notes = plan.notes;
  const host::Handover handover = host_test::handoverOf(plan, pixels, table, rows ? &*rows : nullptr);
  host::Sink sink(-1);
  host::Pace pace(RaxelHostJob{});
  host::OutputStream stream(sink, pace);
  host::Setup setup(library);
  host::sendPlan(setup, plan);
  setup.setOutput(&host::OutputStream::procedure);
  EXPECT_EQ(inBands ? host::exportBands(library, setup, plan, handover, stream)
                    : host::exportCells(library, setup, handover, "output", stream),
            uint32_t{RAXEL_OK});
  sent.file.assign(sink.kept().begin(), sink.kept().end());
  sent.complete = stream.complete();
  sent.closed = stream.closed();
  return sent;
}

void fill(TestPicture &picture) {
  uint32_t state = 1;
  for (uint8_t &byte : picture.rows) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(state >> 24);
  }
}

// What goes in, and the modes in which its rows are made one by one.
struct Row {
  uint32_t bits, colors;  // 0: without a table
  std::vector<int> modes;
};
const std::vector<Row> kRows{
    {24, 0, {RAXEL_MODE_RGB, RAXEL_MODE_GREY256}},
    {8, 0, {RAXEL_MODE_RGB, RAXEL_MODE_GREY256, RAXEL_MODE_COLOR256}},
    {8, 200, {RAXEL_MODE_RGB, RAXEL_MODE_GREY256, RAXEL_MODE_COLOR256}},
    {4, 16, {RAXEL_MODE_RGB, RAXEL_MODE_GREY256, RAXEL_MODE_COLOR256, RAXEL_MODE_COLOR16}},
    {2, 0, {RAXEL_MODE_RGB, RAXEL_MODE_COLOR256, RAXEL_MODE_COLOR16}},
    {1, 0, {RAXEL_MODE_BILEVEL, RAXEL_MODE_RGB, RAXEL_MODE_GREY256, RAXEL_MODE_COLOR16}},
    {1, 2, {RAXEL_MODE_BILEVEL, RAXEL_MODE_COLOR16, RAXEL_MODE_COLOR256}},
};

std::vector<host_test::Color> someColors(uint32_t count) {
  std::vector<host_test::Color> colors;
  for (uint32_t i = 0; i < count; ++i) {
    colors.push_back(
        {static_cast<uint8_t>(i * 3 + 1), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 7)});
  }
  return colors;
}

// Compares all kinds at one size; returns the most bands that one of them took.
uint64_t compareAll(uint32_t width, uint32_t height, int treatment = RAXEL_TREAT_NONE) {
  uint64_t most = 0;
  for (const Row &row : kRows) {
    TestPicture picture(width, height, row.bits);
    fill(picture);
    if (row.colors != 0) picture.useTable(someColors(row.colors));
    for (const int mode : row.modes) {
      RaxelRequest request = host_test::request(mode);
      request.treatment = treatment;
      const Sent block = send(picture.view, request, false), bands = send(picture.view, request, true);
      EXPECT_TRUE(bands.complete && bands.closed);
      EXPECT_EQ(bands.notes, block.notes);
      EXPECT_TRUE(bands.file == block.file) << width << " by " << height << ", " << row.bits << " bits, "
                                            << row.colors << " colours, " << raxelHostModeName(mode);
      most = std::max(most, block.block / bands.block);
    }
  }
  return most;
}

}  // namespace

TEST(Bands, WriteTheFileOfABlock) {
  size_t turn = 0;
  for (const uint32_t width : {1u, 2u, 3u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 32u, 33u, 100u}) {
    for (const uint32_t height : {1u, 2u, 3u, 4u, 5u, 11u, 64u}) {
      if (support::isTurn(turn++)) compareAll(width, height);
    }
  }
}

TEST(Bands, AreSeveralForALargePicture) {
  EXPECT_GE(compareAll(1999, 1001), 40u);
  EXPECT_GE(compareAll(65535, 5), 4u);  // of a row each
  compareAll(1, 65533);
}

TEST(Bands, TreatColoursAsABlockDoes) {
  for (const int treatment : {RAXEL_TREAT_INVERT, RAXEL_TREAT_GREY}) compareAll(301, 203, treatment);
}

TEST(Bands, NeedABlockOfAtMostAMegabyte) {
  RaxelPlan plan{};
  for (const uint32_t stride : {4u, 1000u, 12000u, 196608u}) {
    for (const uint32_t height : {2u, 300u, 65534u}) {
      plan.stride = stride;
      plan.height = height;
      EXPECT_LE(host::bandBytes(plan), uint64_t{1} << 20);
      EXPECT_GE(host::bandBytes(plan), stride);
      EXPECT_LE(host::bandBytes(plan), uint64_t{stride} * height);
    }
  }
}

TEST(Bands, AreForStripsThatDoNotShowThem) {
  RaxelPlan plan{};
  for (int compression = 0; compression < RAXEL_COMPRESSIONS; ++compression) {
    plan.compression = compression;
    EXPECT_EQ(host::takesBands(plan), compression == RAXEL_COMPRESS_NONE);
  }
}

TEST(Bands, LeaveToTheBlockWhatDependsOnOtherRows) {
  const TestPicture picture(10, 10, 24);
  for (const int mode : {RAXEL_MODE_BILEVEL, RAXEL_MODE_GREY16, RAXEL_MODE_COLOR8, RAXEL_MODE_COLOR16,
                         RAXEL_MODE_COLOR256}) {
    const RaxelRequest request = host_test::request(mode);
    RaxelPlan plan;
    ASSERT_EQ(raxelHostPlan(&picture.view, &request, &plan), RAXEL_HOST_OK);
    EXPECT_FALSE(prepare::isRowByRow(24, request, plan)) << raxelHostModeName(mode);
  }
}
