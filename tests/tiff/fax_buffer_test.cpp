// SPDX-License-Identifier: MIT
// The block that fax codes go to: packing, growth and its failure.
#include "tiff/fax_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "tiff/reference_fax.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const tiff::FaxBuffer &buffer, uint32_t n) {
  return Bytes(buffer.data(), buffer.data() + n);
}

// A driver state that records errors, for as long as the test runs.
class ErrorState {
 public:
  ErrorState() : saved_(lpEMData) {
    state.nErrMax = RAXEL_ERR_CAPACITY;
    lpEMData = &state;
  }
  ~ErrorState() { lpEMData = saved_; }
  ErrorState(const ErrorState &) = delete;
  ErrorState &operator=(const ErrorState &) = delete;

  RasterDriverState state{};

 private:
  RasterDriverState *saved_;
};

TEST(FaxBuffer, PacksCodesFirstBitHighest) {
  tiff::FaxBuffer buffer(runtime::allocate(64));
  tiff::FaxWriter writer(buffer);
  ASSERT_TRUE(writer.reserve());
  writer.put(0b101, 3);
  writer.put(0b0000110111, 10);
  ASSERT_TRUE(writer.reserve());
  writer.put(0b1, 1);
  EXPECT_EQ(writer.byteCount(), 2u);
  EXPECT_EQ(bytesOf(buffer, 2), (Bytes{0b10100001, 0b10111100}));
  writer.fillByte();
  writer.fillByte();  // on a whole byte nothing happens
  ASSERT_TRUE(writer.reserve());
  writer.put(0xAB, 8);
  EXPECT_EQ(writer.byteCount(), 3u);
  EXPECT_EQ(bytesOf(buffer, 3), (Bytes{0b10100001, 0b10111100, 0xAB}));
}

TEST(FaxBuffer, PutsOfEveryLengthAtEveryBitPosition) {
  for (uint32_t lead = 0; lead < 8; ++lead) {
    for (uint32_t length = 0; length <= 56; ++length) {
      tiff::FaxBuffer buffer(runtime::allocate(32));
      tiff::FaxWriter writer(buffer);
      ASSERT_TRUE(writer.reserve());
      writer.put((1u << lead) - 1, lead);
      writer.put((uint64_t{1} << length) - 1, length);
      const Bytes expected = reference::packBits01(std::string(lead + length, '1'));
      ASSERT_EQ(writer.byteCount(), expected.size());
      EXPECT_EQ(bytesOf(buffer, writer.byteCount()), expected) << lead << " then " << length;
    }
  }
}

TEST(FaxBuffer, GrowsFromNothingAndKeepsItsBytes) {
  for (const uint32_t size : {0u, 1u, 2u, 15u, 16u, 17u}) {
    tiff::FaxBuffer buffer(runtime::allocate(size));
    tiff::FaxWriter writer(buffer);
    std::string bits;
    for (uint32_t i = 0; i < 20000; ++i) {
      ASSERT_TRUE(writer.reserve());
      writer.put(i % 8, 3);
      bits += {(i & 4) != 0 ? '1' : '0', (i & 2) != 0 ? '1' : '0', (i & 1) != 0 ? '1' : '0'};
    }
    ASSERT_EQ(writer.byteCount(), 7500u);
    EXPECT_EQ(bytesOf(buffer, 7500), reference::packBits01(bits)) << size;
  }
}

TEST(FaxBuffer, OverwritesWhatAnEarlierRowLeft) {
  tiff::FaxBuffer buffer(runtime::allocate(64));
  std::memset(buffer.data(), 0xFF, 64);
  tiff::FaxWriter writer(buffer);
  ASSERT_TRUE(writer.reserve());
  writer.put(0b0101, 4);
  EXPECT_EQ(writer.byteCount(), 1u);
  EXPECT_EQ(buffer.data()[0], 0x50);
}

TEST(FaxBuffer, FailedGrowthPushes300AndLosesTheBlock) {
  ErrorState errors;
  tiff::FaxBuffer buffer(runtime::allocate(20), 5019);
  EXPECT_FALSE(buffer.grow());
  EXPECT_EQ(buffer.handle(), 0u);
  EXPECT_EQ(buffer.size(), 0u);
  EXPECT_EQ(errors.state.nLastError, 300);
  EXPECT_EQ(errors.state.nErrCount, 1u);
  errors.state.nLastError = 0;
  EXPECT_FALSE(buffer.grow());  // told once
  EXPECT_EQ(errors.state.nLastError, 0);
}

TEST(FaxBuffer, GrowsByAtLeast5000BytesWithinItsBound) {
  tiff::FaxBuffer buffer(runtime::allocate(20), 5020);
  EXPECT_TRUE(buffer.grow());
  EXPECT_EQ(buffer.size(), 5020u);
  EXPECT_FALSE(buffer.grow());
  EXPECT_EQ(buffer.handle(), 0u);
}

TEST(FaxBuffer, RunsThatCannotBePlacedAreRefused) {
  tiff::FaxBuffer buffer(runtime::allocate(100), 100);
  tiff::FaxWriter writer(buffer);
  EXPECT_TRUE(writer.putRun(0, 63));
  EXPECT_FALSE(writer.putRun(0, 1000000));
  EXPECT_EQ(buffer.handle(), 0u);
}

TEST(FaxBuffer, OneForAThreadLosesItsBlockSilently) {
  const ErrorState errors;
  tiff::FaxBuffer buffer = tiff::FaxBuffer::untold(5019);
  buffer.renew(runtime::allocate(20));
  EXPECT_FALSE(buffer.grow());
  EXPECT_EQ(buffer.handle(), 0u);
  EXPECT_EQ(errors.state.nLastError, 0);
  EXPECT_EQ(errors.state.nErrCount, 0u);
}

}  // namespace
