// SPDX-License-Identifier: MIT
// The status callback: what it is called with, and what its answers mean.
#include <gtest/gtest.h>

#include <cstring>

#include "entry/host_calls.h"
#include "raxel/filter.h"

namespace {

using Arguments = std::array<HostWord, 7>;

class Status : public testing::Test {
 protected:
  Status() {
    std::memset(static_cast<void *>(&record_), 0, sizeof record_);
    record_.lpStatus = host_.record();
    lpRaster = &record_;
  }
  ~Status() override { lpRaster = nullptr; }

  int32_t call(HostWord a, HostWord b) {
    return CallGetSet_Status(entry_test::HostStatus::procedure(), 5, a, b, 13, 14, 15, 16);
  }

  entry_test::HostStatus host_;
  RasterSetup record_;
};

TEST_F(Status, TheCallbackReceivesContextAndSixValues) {
  EXPECT_EQ(call(11, 12), 0);
  ASSERT_EQ(host_.calls.size(), 1u);
  EXPECT_EQ(host_.calls[0].arguments, (Arguments{5, 11, 12, 13, 14, 15, 16}));
}

TEST_F(Status, NoCallbackAnswersZero) {
  EXPECT_EQ(CallGetSet_Status(nullptr, 5, 0, 0, 0, 0, 0, 0), 0);
}

TEST_F(Status, ARefusedPlainReportIsAskedAboutAgain) {
  host_.answers = {9, 4};
  EXPECT_EQ(call(0, 0), 4);
  ASSERT_EQ(host_.calls.size(), 2u);
  EXPECT_EQ(host_.calls[1].arguments, (Arguments{5, 2, 61, 0, 0, 0, 0}));
  EXPECT_EQ(host_.calls[1].block, std::vector<HostWord>(10, 0));
}

TEST_F(Status, TheSecondAnswerDecides) {
  host_.answers = {9, 0};
  EXPECT_EQ(call(0, 0), 0);
}

TEST_F(Status, OnlyPlainReportsAreAskedAboutAgain) {
  host_.answers = {9, 8, 7};
  EXPECT_EQ(call(1, 0), 9);
  EXPECT_EQ(call(0, 1), 8);
  EXPECT_EQ(call(static_cast<HostWord>(0), static_cast<HostWord>(-2)), 7);
  EXPECT_EQ(host_.calls.size(), 3u);
}

TEST_F(Status, AnAcceptedReportIsNotAskedAboutAgain) {
  EXPECT_EQ(call(0, 0), 0);
  EXPECT_EQ(host_.calls.size(), 1u);
}

TEST_F(Status, ProgressGoesOutAsTheFourthValue) {
  EXPECT_EQ(UpdateStatus(33), 0);
  ASSERT_EQ(host_.calls.size(), 1u);
  EXPECT_EQ(host_.calls[0].arguments, (Arguments{77, 0, 0, 0, 33, 0, 0}));
}

TEST_F(Status, ARefusedProgressReportStops) {
  host_.answers = {1, 1, -3, -1};
  EXPECT_EQ(UpdateStatus(50), RAXEL_STOPPED);
  EXPECT_EQ(UpdateStatus(60), RAXEL_STOPPED);
}

TEST_F(Status, ARefusalTakenBackGoesOn) {
  host_.answers = {1, 0};
  EXPECT_EQ(UpdateStatus(50), 0);
  EXPECT_EQ(host_.calls.size(), 2u);
}

TEST_F(Status, NobodyToTellGoesOn) {
  host_.word(2) = 0;
  EXPECT_EQ(UpdateStatus(50), 0);
  record_.lpStatus = nullptr;
  EXPECT_EQ(UpdateStatus(50), 0);
  lpRaster = nullptr;
  EXPECT_EQ(UpdateStatus(50), 0);
  EXPECT_TRUE(host_.calls.empty());
}

}  // namespace
