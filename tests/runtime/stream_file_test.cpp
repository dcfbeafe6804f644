// SPDX-License-Identifier: MIT
// File streams: modes, positions, the window, attached streams, close and delete, copying.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/record_of_stream.h"
#include "support/temp_dir.h"

namespace {

using support::record;

int32_t tell(Handle handle) {
  return kvlSeek(handle, 0, KVL_FROM_POSITION);
}

struct File : testing::Test {
  support::TempDir dir;
  std::string path = dir.file("data");

  Handle open(uint32_t mode) { return kvlOpen(path.c_str(), nullptr, mode); }
};

TEST_F(File, StartsWithAnEmptyWindow) {
  const Handle h = open(KVL_OUTPUT);
  ASSERT_NE(h, 0u);
  const KvlStream &s = record(h);
  EXPECT_NE(s.fp, nullptr);
  EXPECT_EQ(GlobalSize(s.hBuffer), 12288u);
  EXPECT_EQ(s.lpBlockVar, nullptr);
  EXPECT_EQ(s.nPos, 0);
  EXPECT_EQ(s.nHigh, -1);
  EXPECT_EQ(s.nLimit, 12287);
  EXPECT_EQ(s.lBufStart, 0);
  EXPECT_EQ(s.lNextRead, 0);
  EXPECT_EQ(s.bDirty, 0);
  EXPECT_EQ(s.lSize, 0);
  EXPECT_EQ(s.nMode, 4097u);
  EXPECT_EQ(s.bBorrowed, 0);
  EXPECT_EQ(s.nError, 0);
  EXPECT_EQ(s.wDataFormat, 0);
  EXPECT_EQ(s.wLineFormat, 2);
  EXPECT_EQ(s.bIsNamed, 1);
  EXPECT_EQ(s.bDocument, 0);
  EXPECT_EQ(kvlWrite(h, "x", 0), 0);
  EXPECT_EQ(s.bDirty, 0);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, WritesAndReadsBack) {
  Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "hello world", 11), 11);
  EXPECT_EQ(tell(h), 11);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "hello world");
  h = open(KVL_READ);
  char text[32] = {};
  EXPECT_EQ(record(h).lSize, 11);
  EXPECT_EQ(kvlRead(h, text, 5), 5);
  EXPECT_EQ(kvlRead(h, text + 5, 20), 6);
  EXPECT_STREQ(text, "hello world");
  errno = EINTR;  // from some call before
  EXPECT_EQ(kvlRead(h, text, 1), 0);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, WholeWindowsKeepTheLastOne) {
  const Handle h = open(KVL_OUTPUT);
  const std::string bytes(3 * 12288, 'w');
  EXPECT_EQ(kvlWrite(h, bytes.data(), 3 * 12288), 3 * 12288);
  EXPECT_EQ(record(h).lBufStart, 2 * 12288);
  EXPECT_EQ(record(h).nPos, 12288);
  EXPECT_EQ(support::readText(path).size(), 2u * 12288);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), bytes);
}

TEST_F(File, ModesChooseHowTheFileOpens) {
  EXPECT_EQ(open(KVL_READ), 0u) << "nothing to read";
  EXPECT_EQ(open(KVL_UPDATE), 0u) << "nothing to update";
  support::writeFile(path, "abc");
  Handle h = open(KVL_UPDATE);
  EXPECT_EQ(kvlWrite(h, "X", 1), 1);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "Xbc");
  h = open(KVL_UPDATE | KVL_WRITE);  // update wins: nothing is cut
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "Xbc");
  h = open(KVL_CREATE | KVL_UPDATE);  // create wins over both
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "");
  support::writeFile(path, "abc");
  h = open(KVL_WRITE);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "");
  support::writeFile(path, "abc");
  h = open(KVL_CREATE);
  EXPECT_EQ(kvlWrite(h, "z", 1), 1);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "z");
}

TEST_F(File, ExistenceTestAnswersMinusOneForAbsentFiles) {
  EXPECT_EQ(open(KVL_EXISTS), static_cast<Handle>(-1));
  support::writeFile(path, "");
  const Handle answer = open(KVL_EXISTS);
  EXPECT_NE(answer, static_cast<Handle>(-1));
  EXPECT_NE(answer, 0u);
  EXPECT_EQ(kvlOpen(dir.path().c_str(), nullptr, KVL_EXISTS), static_cast<Handle>(-1));
  EXPECT_EQ(kvlOpen(nullptr, nullptr, KVL_EXISTS), static_cast<Handle>(-1));
  EXPECT_EQ(kvlOpen("", nullptr, KVL_EXISTS), static_cast<Handle>(-1));
}

TEST_F(File, DeletesFilesButNoFolders) {
  support::writeFile(path, "x");
  EXPECT_EQ(open(KVL_DELETE), 1u);
  EXPECT_EQ(open(KVL_DELETE), 0u);
  const std::string folder = dir.file("folder");
  ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
  EXPECT_EQ(kvlOpen(folder.c_str(), nullptr, KVL_DELETE), 0u);
  EXPECT_EQ(access(folder.c_str(), F_OK), 0);
  EXPECT_EQ(kvlOpen(nullptr, nullptr, KVL_DELETE), 0u);
  EXPECT_EQ(kvlOpen("", nullptr, KVL_DELETE), 0u);
}

TEST_F(File, FoldersDoNotOpen) {
  EXPECT_EQ(kvlOpen(dir.path().c_str(), nullptr, KVL_READ), 0u);
  EXPECT_EQ(kvlOpen(dir.path().c_str(), nullptr, KVL_UPDATE), 0u);
  EXPECT_EQ(kvlOpen(dir.path().c_str(), nullptr, KVL_OUTPUT), 0u);
}

TEST_F(File, NamesOfAnyLengthDoNotOpenWhereTheSystemRefusesThem) {
  for (size_t length : {143u, 144u, 300u, 5000u}) {
    const std::string name = dir.file(std::string(length, 'n'));
    const Handle h = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
    EXPECT_EQ(h != 0, length <= 255) << length;
    if (h != 0) {
      EXPECT_EQ(kvlClose(h), 0);
    }
  }
}

TEST_F(File, ReadOnlyStreamRefusesPositionsPastTheEnd) {
  support::writeFile(path, "0123456789");
  const Handle h = open(KVL_READ);
  EXPECT_EQ(kvlSeek(h, 10, KVL_FROM_START), 10);
  EXPECT_EQ(record(h).nError, 0);
  EXPECT_EQ(kvlSeek(h, 11, KVL_FROM_START), -1);
  EXPECT_EQ(record(h).nError, -1);
  char c = 0;
  EXPECT_EQ(kvlSeek(h, 3, KVL_FROM_START), 3);
  EXPECT_EQ(kvlRead(h, &c, 1), 1);
  EXPECT_EQ(c, '3');
  EXPECT_EQ(kvlSeek(h, 3, KVL_FROM_END), 13) << "from the end nothing is checked";
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, WritableStreamMaySeekPastItsEnd) {
  const Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlSeek(h, 20000, KVL_FROM_START), 20000);
  EXPECT_EQ(kvlWrite(h, "end", 3), 3);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), std::string(20000, '\0') + "end");
}

// Without the write bits the size at the last flush is the limit, whatever the window holds.
TEST_F(File, CreatedWithoutWriteBitsCannotSeekIntoUnflushedBytes) {
  const Handle h = open(KVL_CREATE);
  EXPECT_EQ(kvlWrite(h, "0123456789", 10), 10);
  EXPECT_EQ(kvlSeek(h, 5, KVL_FROM_START), -1);
  EXPECT_EQ(FlushKvlIO(h), 10);
  EXPECT_EQ(kvlSeek(h, 5, KVL_FROM_START), 5);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, NegativePositionsAndUnknownOriginsFail) {
  support::writeFile(path, "0123456789");
  const Handle h = open(KVL_UPDATE);
  EXPECT_EQ(kvlSeek(h, -1, KVL_FROM_START), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlSeek(h, 4, KVL_FROM_START), 4);
  EXPECT_EQ(kvlSeek(h, -5, KVL_FROM_POSITION), -1);
  EXPECT_EQ(kvlSeek(h, -11, KVL_FROM_END), -1);
  EXPECT_EQ(kvlSeek(h, -10, KVL_FROM_END), 0);
  for (int32_t whence : {3, 4, 5, -1, 100}) EXPECT_EQ(kvlSeek(h, 1, whence), -1) << whence;
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, SeekInsideTheWindowLeavesTheDiskAlone) {
  support::writeFile(path, "0123456789");
  const Handle h = open(KVL_READ);
  char c = 0;
  EXPECT_EQ(kvlRead(h, &c, 1), 1);
  support::writeFile(path, "abcdefghij");
  for (int32_t at : {9, 0, 4}) {
    EXPECT_EQ(kvlSeek(h, at, KVL_FROM_START), at);
    EXPECT_EQ(kvlRead(h, &c, 1), 1);
    EXPECT_EQ(c, '0' + at);
  }
  EXPECT_EQ(record(h).lBufStart, 0);
  EXPECT_EQ(record(h).lNextRead, 10);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, SeekOutOfTheWindowFillsItAtTheTarget) {
  support::writeFile(path, std::string(30000, 'q'));
  const Handle h = open(KVL_READ);
  EXPECT_EQ(kvlSeek(h, 20000, KVL_FROM_START), 20000);
  EXPECT_EQ(record(h).lBufStart, 20000);
  EXPECT_EQ(record(h).nHigh, 9999);
  EXPECT_EQ(record(h).lNextRead, 30000);
  EXPECT_EQ(kvlSeek(h, -30000, KVL_FROM_END), 0);
  EXPECT_EQ(record(h).nHigh, 12287);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, SeekOnAWritableStreamFillsTheWindowToo) {
  support::writeFile(path, std::string(40000, 'q'));
  const Handle h = open(KVL_UPDATE);
  EXPECT_EQ(kvlSeek(h, 20000, KVL_FROM_START), 20000);
  EXPECT_EQ(record(h).lBufStart, 20000);
  EXPECT_EQ(record(h).nHigh, 12287);
  EXPECT_EQ(record(h).lNextRead, 32288);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(tell(h), 20003);
  EXPECT_EQ(FlushKvlIO(h), 12288) << "the whole window goes back";
  EXPECT_EQ(tell(h), 32288);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), std::string(20000, 'q') + "abc" + std::string(19997, 'q'));
}

TEST_F(File, FillAfterASeekGoesOnBehindTheWindow) {
  support::writeFile(path, std::string(40000, 'q'));
  const Handle h = open(KVL_UPDATE);
  EXPECT_EQ(kvlSeek(h, 20000, KVL_FROM_START), 20000);
  EXPECT_EQ(FillKvlIOBuf(h), 40000 - 32288);
  EXPECT_EQ(tell(h), 32288);
  EXPECT_EQ(kvlClose(h), 0);
}

// An attached file that cannot be read has no bytes to fill the window with.
TEST_F(File, SeekOnAnAttachedWriteOnlyFileFails) {
  FILE *fp = std::fopen(path.c_str(), "w");
  KvlStreamDesc d = {};
  d.fpOpen = reinterpret_cast<HostWord>(fp);
  const Handle h = kvlOpen(nullptr, &d, KVL_ATTACH);
  EXPECT_EQ(kvlWrite(h, "0123456789", 10), 10);
  EXPECT_EQ(kvlSeek(h, 4, KVL_FROM_START), 4) << "inside the window";
  EXPECT_EQ(record(h).nError, 0);
  EXPECT_EQ(kvlSeek(h, 100, KVL_FROM_START), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(tell(h), 10) << "behind the bytes that it flushed first";
  EXPECT_EQ(kvlClose(h), 0);
  std::fclose(fp);
  EXPECT_EQ(support::readText(path), "0123456789");
}

TEST_F(File, SeekInsideTheWindowKeepsWrittenBytesInIt) {
  const Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "0123456789", 10), 10);
  EXPECT_EQ(kvlSeek(h, 2, KVL_FROM_START), 2);
  EXPECT_EQ(kvlWrite(h, "xy", 2), 2);
  EXPECT_EQ(kvlSeek(h, 9, KVL_FROM_START), 9);
  EXPECT_EQ(support::readText(path), "") << "nothing was written yet";
  EXPECT_EQ(kvlSeek(h, 10, KVL_FROM_START), 10);  // just past the bytes: no longer inside
  EXPECT_EQ(support::readText(path), "01xy456789");
  EXPECT_EQ(record(h).lBufStart, 10);
  EXPECT_EQ(record(h).nHigh, -1);
  EXPECT_EQ(kvlWrite(h, "!", 1), 1);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "01xy456789!");
}

TEST_F(File, WriteAfterReadingAWholeWindowGoesBehindIt) {
  support::writeFile(path, std::string(12288, 'a') + "tail");
  const Handle h = open(KVL_UPDATE);
  std::string read(12288, 0);
  EXPECT_EQ(kvlRead(h, read.data(), 12288), 12288);
  EXPECT_EQ(kvlWrite(h, "TA", 2), 2);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), std::string(12288, 'a') + "TAil");
}

TEST_F(File, ReadAfterWriteSeesTheFileBehind) {
  support::writeFile(path, "0123456789");
  const Handle h = open(KVL_UPDATE);
  EXPECT_EQ(kvlWrite(h, "ab", 2), 2);
  char rest[16] = {};
  EXPECT_EQ(kvlRead(h, rest, 16), 8);
  EXPECT_STREQ(rest, "23456789");
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_START), 0);
  EXPECT_EQ(kvlRead(h, rest, 3), 3);
  EXPECT_EQ(std::string(rest, 3), "ab2");
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, AttachedStreamStaysOpen) {
  FILE *fp = std::fopen(path.c_str(), "w+");
  std::fputs("head", fp);
  KvlStreamDesc d = {};
  d.fpOpen = reinterpret_cast<HostWord>(fp);
  const Handle h = kvlOpen("ignored", &d, KVL_ATTACH);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(record(h).bBorrowed, 1);
  EXPECT_EQ(record(h).bIsNamed, 0);
  EXPECT_EQ(record(h).lSize, 4);
  EXPECT_EQ(std::ftell(fp), 4) << "taking the size leaves the position alone";
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_END), 4);
  EXPECT_EQ(kvlWrite(h, "+tail", 5), 5);
  EXPECT_EQ(kvlSeek(h, 2, KVL_FROM_START), 2);
  char text[8] = {};
  EXPECT_EQ(kvlRead(h, text, 4), 4);
  EXPECT_STREQ(text, "ad+t");
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "head+tail");
  EXPECT_NE(std::fputc('!', fp), EOF);
  EXPECT_EQ(std::fclose(fp), 0);
}

TEST_F(File, AnAttachedFileMayGrowUnderTheStream) {
  support::writeFile(path, "head");
  FILE *fp = std::fopen(path.c_str(), "r+");
  KvlStreamDesc d = {};
  d.fpOpen = reinterpret_cast<HostWord>(fp);
  const Handle h = kvlOpen("ignored", &d, KVL_ATTACH);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(record(h).lSize, 4);
  support::writeFile(path, std::string(100, 'q'));
  EXPECT_EQ(kvlWrite(h, "+", 1), 1);
  EXPECT_EQ(FlushKvlIO(h), 1);
  EXPECT_EQ(record(h).lSize, 100) << "its owner may write to it as well";
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(std::fclose(fp), 0);
}

TEST_F(File, NothingToAttachToFails) {
  KvlStreamDesc d = {};
  EXPECT_EQ(kvlOpen(path.c_str(), &d, KVL_ATTACH), 0u);
  EXPECT_EQ(kvlOpen(path.c_str(), nullptr, KVL_ATTACH), 0u);
}

TEST_F(File, StandardStreamsAreBorrowed) {
  for (const char *name : {"stdin", "stdout"}) {
    const bool isInput = std::strcmp(name, "stdin") == 0;
    const Handle h = kvlOpen(name, nullptr, isInput ? KVL_READ : KVL_OUTPUT);
    ASSERT_NE(h, 0u);
    EXPECT_EQ(record(h).fp, isInput ? stdin : stdout);
    EXPECT_EQ(record(h).bBorrowed, 1);
    EXPECT_EQ(record(h).bIsNamed, 1);
    EXPECT_EQ(kvlClose(h), 0);
    EXPECT_GE(fcntl(isInput ? 0 : 1, F_GETFD), 0) << "still open";
  }
}

TEST_F(File, CloseAndDeleteRemovesTheFile) {
  const Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "x", 1), 1);
  EXPECT_EQ(kvlCloseandDelete(h, path.c_str()), 0);
  EXPECT_NE(access(path.c_str(), F_OK), 0);
  EXPECT_EQ(kvlCloseandDelete(open(KVL_OUTPUT), nullptr), 0);
  EXPECT_EQ(access(path.c_str(), F_OK), 0);
}

TEST_F(File, CopiesWholeFiles) {
  const std::string copy = dir.file("copy");
  for (size_t size : {0u, 1u, 4095u, 4096u, 4097u, 12288u, 40000u}) {
    std::string bytes(size, 0);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 256);
    support::writeFile(path, bytes);
    EXPECT_EQ(kvlCopy(path.c_str(), copy.c_str()), 0) << size;
    EXPECT_EQ(support::readText(copy), bytes) << size;
  }
}

TEST_F(File, CopyWithoutASourceLeavesTheTarget) {
  support::writeFile(path, "kept");
  EXPECT_EQ(kvlCopy(dir.file("absent").c_str(), path.c_str()), -1);
  EXPECT_EQ(kvlCopy(nullptr, path.c_str()), -1);
  EXPECT_EQ(support::readText(path), "kept");
}

// Bytes written minus bytes read: all of the source is read, and none of it written.
TEST_F(File, CopyWithoutADestinationAnswersWhatIsMissing) {
  const std::string nowhere = dir.file("no/such/folder");
  for (const int32_t size : {5, 0, 4096, 13000}) {
    support::writeFile(path, std::string(static_cast<size_t>(size), 'x'));
    EXPECT_EQ(kvlCopy(path.c_str(), nowhere.c_str()), -size);
    EXPECT_EQ(kvlCopy(path.c_str(), nullptr), -size);
  }
}

TEST_F(File, NullHandlesAnswerTheirFailure) {
  char c = 0;
  EXPECT_EQ(kvlRead(0, &c, 1), 0);
  EXPECT_EQ(kvlWrite(0, &c, 1), 0);
  EXPECT_EQ(kvlSeek(0, 0, KVL_FROM_START), -1);
  EXPECT_EQ(kvlClose(0), -1);
  EXPECT_EQ(kvlCloseandDelete(0, "x"), -1);
  EXPECT_EQ(FillKvlIOBuf(0), -1);
  EXPECT_EQ(FlushKvlIO(0), -1);
  EXPECT_EQ(unxSeek(nullptr, 0, SEEK_SET), -1);
  EXPECT_EQ(kvlOpen(nullptr, nullptr, KVL_READ), 0u);
  EXPECT_EQ(kvlOpen("", nullptr, KVL_OUTPUT), 0u);
}

TEST_F(File, NullBuffersAndNegativeCountsMoveNothing) {
  const Handle h = open(KVL_OUTPUT);
  char c = 'c';
  EXPECT_EQ(kvlWrite(h, nullptr, 5), 0);
  EXPECT_EQ(kvlWrite(h, &c, -1), 0);
  EXPECT_EQ(kvlWrite(h, &c, 0), 0);
  EXPECT_EQ(tell(h), 0);
  EXPECT_EQ(kvlWrite(h, "0123456789", 10), 10);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_START), 0);
  EXPECT_EQ(kvlRead(h, nullptr, 5), 0);
  EXPECT_EQ(kvlRead(h, &c, 0), 0);
  EXPECT_EQ(kvlRead(h, &c, -2147483647 - 1), 0);
  EXPECT_EQ(tell(h), 0);
  EXPECT_EQ(c, 'c');
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, StandardSeekAnswersThePosition) {
  support::writeFile(path, "0123456789");
  FILE *fp = std::fopen(path.c_str(), "r");
  EXPECT_EQ(unxSeek(fp, 3, SEEK_SET), 3);
  EXPECT_EQ(unxSeek(fp, 2, SEEK_CUR), 5);
  EXPECT_EQ(unxSeek(fp, 0, SEEK_END), 10);
  EXPECT_EQ(unxSeek(fp, 0x7FFFFFFF, SEEK_SET), 0x7FFFFFFF);
  EXPECT_EQ(unxSeek(fp, -1, SEEK_SET), -1);
  EXPECT_EQ(unxSeek(fp, 0, 7), -1);
  std::fclose(fp);
}

TEST_F(File, FillAndFlushAnswerWhatTheyMoved) {
  support::writeFile(path, std::string(13000, 'q'));
  const Handle h = open(KVL_UPDATE);
  EXPECT_EQ(FlushKvlIO(h), 0) << "nothing to write";
  EXPECT_EQ(FillKvlIOBuf(h), 12288);
  EXPECT_EQ(record(h).lNextRead, 12288);
  EXPECT_EQ(FillKvlIOBuf(h), 712);
  EXPECT_EQ(record(h).lBufStart, 12288);
  EXPECT_EQ(record(h).nHigh, 711);
  EXPECT_EQ(FillKvlIOBuf(h), 0);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(FlushKvlIO(h), 3);
  EXPECT_EQ(record(h).lSize, 13003);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, SeeksEndAtTwoGigabytes) {
  const Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlSeek(h, 2147483640, KVL_FROM_START), 2147483640);
  EXPECT_EQ(kvlSeek(h, 100, KVL_FROM_POSITION), -1) << "past what 32 bits can name";
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, TheLastByteThatHasAPositionCanBeTheEnd) {
  support::writeFile(path, "");
  ASSERT_EQ(truncate(path.c_str(), 2147483647), 0);
  const Handle h = open(KVL_READ);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_END), 2147483647);
  EXPECT_EQ(kvlSeek(h, -2, KVL_FROM_END), 2147483645);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(File, WritesEndAtTwoGigabytes) {
  const Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlSeek(h, 2147483640, KVL_FROM_START), 2147483640);
  const std::string bytes(20000, 'x');
  EXPECT_EQ(kvlWrite(h, bytes.data(), 20000), -1);
  EXPECT_EQ(record(h).nError, -1);
  EXPECT_EQ(kvlWrite(h, "y", 1), 0) << "after a failure no flush is tried again";
  EXPECT_EQ(kvlClose(h), -1);
  struct stat status;
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 0);
}

TEST_F(File, AFailedSeekForbidsLaterFlushes) {
  const Handle h = open(KVL_OUTPUT);
  EXPECT_EQ(kvlSeek(h, -1, KVL_FROM_START), -1);
  const std::string bytes(12288, 'x');
  EXPECT_EQ(kvlWrite(h, bytes.data(), 12288), 12288) << "there was room";
  EXPECT_EQ(kvlWrite(h, "y", 1), 0);
  EXPECT_EQ(kvlClose(h), 0) << "closing flushes all the same";
  EXPECT_EQ(support::readText(path), bytes);
}

// The last position that has a name: a stream can be there, and there is nothing to be read.
TEST(LastPosition, IsOneWhereNothingIs) {
  const support::TempDir dir;
  const Handle h = kvlOpen(dir.file("far").c_str(), nullptr, KVL_OUTPUT);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(kvlSeek(h, INT32_MAX, KVL_FROM_START), INT32_MAX);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_POSITION), INT32_MAX);
  char byte = '#';
  EXPECT_LE(kvlRead(h, &byte, 1), 0);
  EXPECT_EQ(byte, '#');
  EXPECT_EQ(kvlSeek(h, 1, KVL_FROM_START), 1);
  EXPECT_EQ(kvlRead(h, &byte, 1), 1);
  EXPECT_EQ(byte, 'b');
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(dir.file("far")), "abc");
}

// A pipe has no positions: nothing is taken from one that is attached.
TEST(AttachedPipe, IsLeftAsItIs) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "abc", 3), 3);
  FILE *fp = fdopen(ends[0], "r");
  KvlStreamDesc descriptor{};
  descriptor.fpOpen = reinterpret_cast<HostWord>(fp);
  const Handle h = kvlOpen(nullptr, &descriptor, KVL_ATTACH);
  ASSERT_NE(h, 0u);
  char bytes[3];
  EXPECT_LE(kvlRead(h, bytes, 3), 0);
  kvlClose(h);
  EXPECT_EQ(std::fgetc(fp), 'a');
  std::fclose(fp);
  close(ends[1]);
}

}  // namespace
