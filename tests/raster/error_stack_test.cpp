// SPDX-License-Identifier: MIT
// The driver's error stack and its replies.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "raxel/driver.h"

namespace {

class ErrorStack : public testing::Test {
 protected:
  ErrorStack() : reply_(256) {
    lpEMData = &state_;
    state_.lpReplyBuf = reply_.data();
    state_.nReplySize = static_cast<uint32_t>(reply_.size());
  }
  ~ErrorStack() override { lpEMData = nullptr; }

  void push(uint32_t func, int32_t code) {
    state_.nCurFunc = func;
    push_er(code);
  }
  const ErrEntry &first() { return state_.FirstError; }
  const ErrEntry &at(int i) { return state_.ErrStack[i]; }
  void pop(int32_t n) {
    uint8_t record[20] = {};
    std::memcpy(record + 16, &n, 4);
    EXPECT_EQ(d_popes(reinterpret_cast<HostWord>(record)), reinterpret_cast<HostWord>(record));
  }
  template <class T>
  T replyAt(size_t offset) {
    T value;
    std::memcpy(&value, reply_.data() + offset, sizeof value);
    return value;
  }

  RasterDriverState state_ = {};
  std::vector<uint8_t> reply_;
};

TEST_F(ErrorStack, AsDeliveredFirstErrorIsTheLatestAndPopsFindNothing) {
  push_er(RAXEL_NO_MEMORY);
  push_er(RAXEL_CANNOT_WRITE);
  EXPECT_EQ(first().nCode, RAXEL_CANNOT_WRITE);
  EXPECT_EQ(state_.nErrLost, 2u);
  EXPECT_EQ(state_.nErrCount, 0u);
  EXPECT_EQ(state_.nLastError, RAXEL_CANNOT_WRITE);
  pop(5);
  EXPECT_EQ(state_.nReplyPos, 4u);
  EXPECT_EQ(replyAt<int32_t>(0), 0);
}

TEST_F(ErrorStack, ARepeatedErrorOfOneFunctionIsRecordedOnce) {
  state_.nErrMax = 10;
  push(7, RAXEL_CANNOT_WRITE);
  state_.nLastError = 0;
  push(7, RAXEL_CANNOT_WRITE);
  EXPECT_EQ(state_.nErrCount, 1u);
  EXPECT_EQ(state_.nLastError, 0) << "the repeat is not even the result again";
  push(8, RAXEL_CANNOT_WRITE);
  EXPECT_EQ(state_.nErrCount, 2u);
  push(8, RAXEL_NO_MEMORY);
  EXPECT_EQ(state_.nErrCount, 3u);
}

TEST_F(ErrorStack, AFullStackOverwritesItsTopAndCountsTheLoss) {
  state_.nErrMax = 2;
  push(1, RAXEL_NO_MEMORY);
  push(2, RAXEL_CANNOT_WRITE);
  push(3, RAXEL_STOPPED);
  EXPECT_EQ(at(0).nCode, RAXEL_NO_MEMORY);
  EXPECT_EQ(at(1).nCode, RAXEL_STOPPED);
  EXPECT_EQ(at(1).nFunc, 3u);
  EXPECT_EQ(state_.nErrLost, 1u);
  EXPECT_EQ(state_.nErrCount, 2u);
  EXPECT_EQ(first().nCode, RAXEL_NO_MEMORY);
  EXPECT_EQ(state_.nLastErrFunc, 3u);
}

TEST_F(ErrorStack, PopsTheNewestFirst) {
  state_.nErrMax = 10;
  push(11, RAXEL_NO_MEMORY);
  push(12, RAXEL_CANNOT_WRITE);
  pop(5);
  EXPECT_EQ(state_.nReplyPos, 20u);
  EXPECT_EQ(replyAt<int32_t>(0), 2);
  EXPECT_EQ(replyAt<uint32_t>(4), 12u);
  EXPECT_EQ(replyAt<int16_t>(8), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(replyAt<uint32_t>(12), 11u);
  EXPECT_EQ(replyAt<int16_t>(16), RAXEL_NO_MEMORY);
  EXPECT_EQ(state_.nErrCount, 0u);
}

TEST_F(ErrorStack, ANegativePopIsAnsweredAsItCame) {
  state_.nErrMax = 10;
  push(11, RAXEL_NO_MEMORY);
  pop(-3);
  EXPECT_EQ(state_.nReplyPos, 4u);
  EXPECT_EQ(replyAt<int32_t>(0), -3);
  EXPECT_EQ(state_.nErrCount, 1u);
}

TEST_F(ErrorStack, EmptyingKeepsFirstError) {
  state_.nErrMax = 10;
  push(4, RAXEL_NO_MEMORY);
  EXPECT_EQ(d_empes(77), 77u);
  EXPECT_EQ(state_.nErrCount, 0u);
  EXPECT_EQ(state_.nErrLost, 0u);
  EXPECT_EQ(state_.nLastErrFunc, 0u);
  EXPECT_EQ(state_.nLastError, 0);
  EXPECT_EQ(first().nCode, RAXEL_NO_MEMORY);
}

TEST_F(ErrorStack, SummaryIsCountFirstErrorLost) {
  push(9, RAXEL_CANNOT_WRITE);
  push(9, RAXEL_NO_MEMORY);
  EXPECT_EQ(dq_es(), 0u);
  EXPECT_EQ(state_.nReplyPos, 16u);
  EXPECT_EQ(replyAt<uint32_t>(0), 0u);
  EXPECT_EQ(replyAt<uint32_t>(4), 9u);
  EXPECT_EQ(replyAt<int16_t>(8), RAXEL_NO_MEMORY);
  EXPECT_EQ(replyAt<int16_t>(10), 0);
  EXPECT_EQ(replyAt<uint32_t>(12), 2u);
}

TEST_F(ErrorStack, RepliesAreCutWhereTheBufferEnds) {
  state_.nReplySize = 10;
  std::memset(reply_.data(), 0xEE, reply_.size());
  push(0x01020304, RAXEL_CANNOT_WRITE);
  dq_es();
  EXPECT_EQ(state_.nReplyPos, 10u);
  EXPECT_EQ(replyAt<uint32_t>(0), 0u) << "the count";
  EXPECT_EQ(replyAt<uint32_t>(4), 0x01020304u) << "the first error's tag";
  EXPECT_EQ(replyAt<int16_t>(8), RAXEL_CANNOT_WRITE) << "and its code";
  EXPECT_EQ(reply_[10], 0xEE);
  dq_es();
  EXPECT_EQ(state_.nReplyPos, 10u);
  EXPECT_EQ(replyAt<uint32_t>(4), 0x01020304u);
  EXPECT_EQ(reply_[10], 0xEE);
}

TEST_F(ErrorStack, APositionPastTheBufferMovesNothing) {
  state_.nReplySize = 8;
  state_.nReplyPos = 0xFFFFFFF0u;
  const uint32_t value = 5;
  mov2buf(&value, 4);
  EXPECT_EQ(state_.nReplyPos, 0xFFFFFFF0u);
}

TEST_F(ErrorStack, CapacitiesAndCountsOutsideTheStackCountAsItsEnds) {
  state_.nErrMax = 0x7FFFFFFF;
  for (uint32_t i = 0; i < 12; ++i) push(i, RAXEL_NO_MEMORY);
  EXPECT_EQ(state_.nErrCount, 10u);
  EXPECT_EQ(at(9).nFunc, 11u);
  EXPECT_EQ(state_.nErrLost, 2u);
  state_.nErrCount = 0xFFFFFFFFu;  // -1
  state_.nErrMax = 0x80000000u;    // negative
  push(50, RAXEL_CANNOT_WRITE);
  EXPECT_EQ(first().nFunc, 50u);
}

TEST_F(ErrorStack, CodesAreSixteenBits) {
  push_er(0x10000 + RAXEL_CANNOT_WRITE);
  EXPECT_EQ(state_.nLastError, RAXEL_CANNOT_WRITE);
  push_er(0xFFFF);
  EXPECT_EQ(state_.nLastError, -1);
}

TEST(ErrorStackAlone, WithoutAStateBlockNothingHappens) {
  lpEMData = nullptr;
  push_er(RAXEL_NO_MEMORY);
  EXPECT_EQ(d_empes(3), 3u);
  EXPECT_EQ(d_popes(0), 0u);
  EXPECT_EQ(dq_es(), 0u);
  mov2buf(nullptr, 4);
}

TEST_F(ErrorStack, WithoutARecordOrABufferNothingIsAnswered) {
  const uint32_t number = 1;
  EXPECT_EQ(d_popes(0), 0u);
  mov2buf(nullptr, 4);
  EXPECT_EQ(state_.nReplyPos, 0u);
  state_.lpReplyBuf = nullptr;
  mov2buf(&number, sizeof number);
  EXPECT_EQ(state_.nReplyPos, 0u);
}

}  // namespace
