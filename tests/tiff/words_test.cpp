// SPDX-License-Identifier: MIT
// The numbers that a directory is made of: words, longs and entries, byte by byte.
#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/temp_dir.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::hex;

TEST(Words, WordIsTheLowSixteenBitsLowByteFirst) {
  support::HostOutput out;
  EXPECT_EQ(WriteWord(out.file, 0x12345678), 2);
  EXPECT_EQ(out.bytes(), hex("78 56"));
}

TEST(Words, LongIsFourBytesLowByteFirst) {
  support::HostOutput out;
  EXPECT_EQ(WriteLong(out.file, 0x12345678), 4);
  EXPECT_EQ(out.bytes(), hex("78 56 34 12"));
}

TEST(Words, AHostSeesOneByteAWrite) {
  support::HostOutput out;
  WriteWord(out.file, 0x4949);
  WriteLong(out.file, 8);
  EXPECT_EQ(out.host.writeSizes(), (std::vector<size_t>(6, 1)));
}

TEST(Words, NoFileWritesNothing) {
  EXPECT_EQ(WriteWord(0, 7), 0);
  EXPECT_EQ(WriteLong(0, 7), 0);
}

// A host's answer to the write that failed is the result, and nothing follows it.
TEST(Words, WordAnswersWhatTheFailingWriteAnswered) {
  for (size_t n = 1; n <= 2; ++n) {
    support::HostOutput out;
    out.host.failAt(n);
    EXPECT_EQ(WriteWord(out.file, 0x4949), -1) << n;
    EXPECT_EQ(out.host.calls().size(), n);
  }
  support::HostOutput full;
  full.host.limitTo(1);
  EXPECT_EQ(WriteWord(full.file, 0x4949), 0);
}

TEST(Words, LongStopsAtItsFirstFailingWrite) {
  for (size_t n = 1; n <= 4; ++n) {
    support::HostOutput out;
    out.host.failAt(n);
    EXPECT_EQ(WriteLong(out.file, 8), -1) << n;
    EXPECT_EQ(out.host.calls().size(), n);
    EXPECT_EQ(out.bytes().size(), n - 1);
  }
}

TEST(Words, TheyLandInAFileOnDiskAsWell) {
  const support::TempDir dir;
  const std::string name = dir.file("words");
  const Handle file = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
  EXPECT_EQ(WriteWord(file, 0x4949), 2);
  EXPECT_EQ(WriteLong(file, 0x12345678), 4);
  EXPECT_EQ(kvlClose(file), 0);
  EXPECT_EQ(support::readFile(name), hex("49 49 78 56 34 12"));
}

TEST(Entries, LongEntryIsTwelveBytes) {
  support::HostOutput out;
  uint16_t entries = 4;
  EXPECT_EQ(WriteSimpleTag(out.file, 278, 4, 1, 0x01020304, &entries), 4);
  EXPECT_EQ(entries, 5);
  EXPECT_EQ(out.bytes(), hex("16 01  04 00  01 00 00 00  04 03 02 01"));
}

// A SHORT stands in the first half of the value field, and the other half stays zero.
TEST(Entries, ShortValueIsCutToSixteenBits) {
  support::HostOutput out;
  uint16_t entries = 0;
  WriteSimpleTag(out.file, 256, 3, 1, 65537, &entries);
  EXPECT_EQ(out.bytes(), hex("00 01  03 00  01 00 00 00  01 00 00 00"));
}

TEST(Entries, ResultIsThatOfTheValue) {
  support::HostOutput out;
  uint16_t entries = 0;
  out.host.failAt(3, support::HostStream::Failure::kOnce);  // in the type
  EXPECT_EQ(WriteSimpleTag(out.file, 256, 3, 1, 5, &entries), 4);
  out.host.failAt(11);  // the third byte of the value
  EXPECT_EQ(WriteSimpleTag(out.file, 256, 3, 1, 5, &entries), -1);
  EXPECT_EQ(entries, 2);
}

TEST(Entries, NoCounterIsNoHarm) {
  support::HostOutput out;
  EXPECT_EQ(WriteSimpleTag(out.file, 256, 3, 1, 5, nullptr), 4);
}

}  // namespace
