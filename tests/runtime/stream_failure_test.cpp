// SPDX-License-Identifier: MIT
// Disks that fill up and files that cannot be used: every failure is reported, at the latest by the
// close.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/file_limit.h"
#include "runtime/record_of_stream.h"
#include "support/temp_dir.h"

namespace {

using support::record;

TEST(FullDisk, AShortFileIsReportedAtTheClose) {
  const Handle h = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(kvlClose(h), -1);
}

TEST(FullDisk, ALongFileIsReportedAtTheFlushThatMeetsIt) {
  const Handle h = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  const std::string bytes(12288, 'x');
  EXPECT_EQ(kvlWrite(h, bytes.data(), 12288), 12288) << "exactly one window";
  EXPECT_EQ(record(h).nError, 0);
  EXPECT_EQ(kvlWrite(h, "y", 1), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(record(h).nPos, 12288);
  EXPECT_EQ(kvlWrite(h, "y", 1), 0) << "the error sticks";
  EXPECT_EQ(kvlClose(h), -1);
}

TEST(FullDisk, AWriteOfManyWindowsFails) {
  const Handle h = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  const std::string bytes(100000, 'x');
  EXPECT_EQ(kvlWrite(h, bytes.data(), 100000), -1);
  EXPECT_EQ(record(h).nHigh, 12287) << "the window that failed is kept";
  EXPECT_EQ(record(h).bDirty, 1);
  EXPECT_EQ(kvlClose(h), -1);
}

TEST(FullDisk, FlushAnswersMinusOne) {
  const Handle h = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(FlushKvlIO(h), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlClose(h), -1);
}

// Bytes dropped by a seek are gone although every later flush succeeds.
TEST(FullDisk, BytesLostByASeekAreReportedAtTheClose) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "head", 4), 4);
  EXPECT_EQ(FlushKvlIO(h), 4);
  EXPECT_EQ(kvlWrite(h, "tail", 4), 4);
  {
    const support::FileLimit limit(4);
    EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_START), 0) << "the seek itself goes on";
  }
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlWrite(h, "H", 1), 1);
  EXPECT_EQ(kvlClose(h), -1);
  EXPECT_EQ(support::readText(path), "Head");
}

TEST(FullDisk, BytesLostByAReadAreReportedAtTheClose) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "tail", 4), 4);
  {
    const support::FileLimit limit(2);
    char c;
    EXPECT_EQ(kvlRead(h, &c, 1), 1) << "the fill goes on, from where it last was";
  }
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlClose(h), -1);
}

// The record after a failing write in bulk is that of the byte that could not be stored.
TEST(FullDisk, TheRecordStandsAtTheWindowThatFailed) {
  const support::TempDir dir;
  for (const uint32_t bytes : {0u, 5000u, 12288u, 30000u, 36864u}) {
    const std::string path = dir.file(std::to_string(bytes));
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
    std::string from(100000, 0);
    for (size_t i = 0; i < from.size(); ++i) from[i] = static_cast<char>(i / 12288 + 1);
    const support::FileLimit limit(bytes);
    EXPECT_EQ(kvlWrite(h, from.data(), 100000), -1);
    const auto whole = static_cast<int32_t>(bytes / 12288 * 12288);
    EXPECT_EQ(record(h).lBufStart, whole) << bytes;
    EXPECT_EQ(record(h).lNextRead, whole);
    EXPECT_EQ(record(h).nPos, 12288);
    EXPECT_EQ(record(h).nHigh, 12287);
    EXPECT_EQ(static_cast<const char *>(GlobalLock(record(h).hBuffer))[0], whole / 12288 + 1);
    EXPECT_EQ(record(h).lSize, whole);
    EXPECT_EQ(kvlClose(h), -1);
    EXPECT_EQ(support::readText(path), from.substr(0, bytes));
  }
}

TEST(FullDisk, ACopyIsReportedShort) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  support::writeFile(path, std::string(5000, 'x'));
  EXPECT_EQ(kvlCopy(path.c_str(), "/dev/full"), -1) << "only the close could tell";
  support::writeFile(path, std::string(100000, 'x'));
  EXPECT_EQ(kvlCopy(path.c_str(), "/dev/full"), 12288 - 100000);
}

TEST(FullDisk, ABorrowedStreamIsReportedAtTheClose) {
  FILE *fp = std::fopen("/dev/full", "r+");
  ASSERT_NE(fp, nullptr);
  KvlStreamDesc d = {};
  d.fpOpen = reinterpret_cast<HostWord>(fp);
  const Handle h = kvlOpen(nullptr, &d, KVL_ATTACH);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(kvlClose(h), -1);
  std::fclose(fp);
}

TEST(UselessFile, WritesToAStreamOpenForReadingFail) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  support::writeFile(path, "abc");
  const Handle h = kvlOpen(path.c_str(), nullptr, KVL_READ);
  EXPECT_EQ(kvlWrite(h, "x", 1), 1) << "into the window";
  EXPECT_EQ(FlushKvlIO(h), -1);
  EXPECT_EQ(kvlClose(h), -1);
  EXPECT_EQ(support::readText(path), "abc");
}

TEST(UselessFile, PipesHaveNoPositions) {
  const support::TempDir dir;
  const std::string path = dir.file("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const Handle h = kvlOpen(path.c_str(), nullptr, KVL_UPDATE);
  ASSERT_NE(h, 0u);
  char c;
  EXPECT_EQ(kvlRead(h, &c, 1), -1);
  EXPECT_EQ(kvlSeek(h, 5, KVL_FROM_START), -1);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_END), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlWrite(h, "x", 1), 1);
  EXPECT_EQ(kvlClose(h), -1);
}

// 4 GiB and 5 bytes, of which none is on the disk: 32 bits would say 5.
TEST(UselessFile, AnEndPast2To31IsNoPosition) {
  if (sizeof(off_t) < 8) GTEST_SKIP() << "no such file can be made here";
  const support::TempDir dir;
  const std::string path = dir.file("huge");
  support::writeFile(path, "abc");
  ASSERT_EQ(truncate(path.c_str(), static_cast<off_t>(int64_t{0x100000005})), 0);
  const Handle h = kvlOpen(path.c_str(), nullptr, KVL_UPDATE);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(record(h).lSize, INT32_MAX);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_END), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST(UselessFile, AFileThatFailsToReadAnswersMinusOne) {
  // The memory of this process has no page at offset 0.
  const Handle h = kvlOpen("/proc/self/mem", nullptr, KVL_READ);
  ASSERT_NE(h, 0u);
  char c;
  EXPECT_EQ(kvlRead(h, &c, 1), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(FillKvlIOBuf(h), -1);
  EXPECT_EQ(kvlClose(h), 0) << "nothing of ours was lost";
}

}  // namespace
