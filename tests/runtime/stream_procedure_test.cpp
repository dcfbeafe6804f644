// SPDX-License-Identifier: MIT
// Streams that the host keeps itself: every call arrives at its procedure, unchanged and in order.
#include "support/stream_procedure.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/record_of_stream.h"
#include "support/temp_dir.h"

namespace {

using support::record;

struct Call {
  HostWord token, op, arg1, arg2;
  bool operator==(const Call &) const = default;
};

std::vector<Call> calls;
std::string written;
HostWord answer = 0;  // to everything but a write
int32_t failAt = -1;  // the call that answers -1, counted from 0
HostWord openAnswer = 77;

// A host that keeps what is written and tells the offset where an address was passed.
HostWord keep(HostWord token, HostWord op, HostWord arg1, HostWord arg2) {
  const auto at = static_cast<int32_t>(calls.size());
  Call call{token, op, arg1, arg2};
  if (op == KVL_OP_SEEK) call.arg1 = static_cast<HostWord>(*reinterpret_cast<const int32_t *>(arg1));
  if (op == KVL_OP_WRITE || op == KVL_OP_READ) call.arg1 = 0;
  calls.push_back(call);
  if (at == failAt) return static_cast<HostWord>(-1);
  if (op == KVL_OP_OPEN) return openAnswer;
  if (op == KVL_OP_WRITE && arg1 != 0)
    written.append(reinterpret_cast<const char *>(arg1), static_cast<size_t>(arg2));
  return op == KVL_OP_WRITE ? arg2 : answer;
}

struct Procedure : testing::Test {
  KvlStreamDesc d = {};

  void SetUp() override {
    calls.clear();
    written.clear();
    answer = 0;
    failAt = -1;
    openAnswer = 77;
    d.lpMemVar = 0xC0DE;
    d.lpfnProc = reinterpret_cast<HostWord>(keep);
  }
};

TEST_F(Procedure, SeesTheWholeLifeOfAStream) {
  const char *name = "picture.tif";
  const Handle h = kvlOpen(name, &d, KVL_OUTPUT);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(record(h).dwProcToken, 77u);
  EXPECT_EQ(record(h).wLineFormat, 2);
  EXPECT_EQ(record(h).hBuffer, 0u);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  answer = 1234;
  EXPECT_EQ(kvlSeek(h, -5, KVL_FROM_END), 1234);
  EXPECT_EQ(kvlSeek(h, 0, KVL_FROM_POSITION), 1234);
  char buffer[4];
  answer = 2;
  EXPECT_EQ(kvlRead(h, buffer, 4), 2);
  EXPECT_EQ(kvlClose(h), 0);
  const std::vector<Call> want = {
      {0xC0DE, KVL_OP_OPEN, reinterpret_cast<HostWord>(name), KVL_OUTPUT},
      {77, KVL_OP_WRITE, 0, 3},
      {77, KVL_OP_SEEK, static_cast<HostWord>(-5), KVL_FROM_END},
      {77, KVL_OP_SEEK, 0, KVL_FROM_POSITION},
      {77, KVL_OP_READ, 0, 4},
      {77, KVL_OP_CLOSE, 0, 0},
  };
  EXPECT_EQ(calls, want);
}

TEST_F(Procedure, OddArgumentsPassUnchanged) {
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  calls.clear();
  EXPECT_EQ(kvlWrite(h, nullptr, 0), 0);
  EXPECT_EQ(kvlWrite(h, nullptr, -3), -3);
  kvlRead(h, nullptr, -1);
  kvlSeek(h, 1, 99);
  const std::vector<Call> want = {{77, KVL_OP_WRITE, 0, 0},
                                  {77, KVL_OP_WRITE, 0, static_cast<HostWord>(-3)},
                                  {77, KVL_OP_READ, 0, static_cast<HostWord>(-1)},
                                  {77, KVL_OP_SEEK, 1, 99}};
  EXPECT_EQ(calls, want);
  EXPECT_EQ(FillKvlIOBuf(h), 0);
  EXPECT_EQ(FlushKvlIO(h), 0);
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Procedure, ValuesWithoutRoomOrNumberAreNotAskedFor) {
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  calls.clear();
  uint32_t value = 0;
  EXPECT_EQ(kvlReadLong(h, nullptr, 1), 0);
  EXPECT_EQ(kvlReadLong(h, &value, 0), 0);
  EXPECT_EQ(calls, std::vector<Call>());
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Procedure, AnswersOfTheProcedureAreTheResults) {
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  failAt = static_cast<int32_t>(calls.size());
  EXPECT_EQ(kvlWrite(h, "abc", 3), -1);
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3) << "the procedure decides, no error sticks";
  failAt = static_cast<int32_t>(calls.size());
  EXPECT_EQ(kvlClose(h), 0) << "closing answers 0 whatever the procedure says";
}

TEST_F(Procedure, DeletingIsToldAtTheClose) {
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  EXPECT_EQ(kvlCloseandDelete(h, "x"), 0);
  const Call want{77, KVL_OP_CLOSE, 0, KVL_DELETE};
  EXPECT_EQ(calls.back(), want);
}

TEST_F(Procedure, ExistenceAndDeletionCarryNoContext) {
  const char *name = "x";
  answer = 5;
  EXPECT_EQ(kvlOpen(name, &d, KVL_EXISTS), 5u);
  answer = 6;
  EXPECT_EQ(kvlOpen(name, &d, KVL_DELETE), 6u);
  const std::vector<Call> want = {{0, KVL_OP_EXISTS, reinterpret_cast<HostWord>(name), 0},
                                  {0, KVL_OP_DELETE, reinterpret_cast<HostWord>(name), 0}};
  EXPECT_EQ(calls, want);
}

TEST_F(Procedure, AttachingUsesTheTokenThatWasGiven) {
  d.dwToken = 99;
  const Handle h = kvlOpen(nullptr, &d, KVL_ATTACH);
  ASSERT_NE(h, 0u);
  EXPECT_TRUE(calls.empty()) << "nothing is opened";
  EXPECT_EQ(kvlWrite(h, "z", 1), 1);
  EXPECT_EQ(kvlClose(h), 0);
  const std::vector<Call> want = {{99, KVL_OP_WRITE, 0, 1}, {99, KVL_OP_CLOSE, 0, 0}};
  EXPECT_EQ(calls, want);
}

TEST_F(Procedure, ThatDeclinesANameStaysAttachedToTheFile) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  support::writeFile(path, "old");
  openAnswer = 0;
  const Handle h = kvlOpen(path.c_str(), &d, KVL_OUTPUT);
  ASSERT_NE(h, 0u);
  EXPECT_EQ(support::readText(path), "") << "created all the same";
  EXPECT_EQ(kvlWrite(h, "abc", 3), 3);
  EXPECT_EQ(kvlClose(h), 0);
  EXPECT_EQ(support::readText(path), "");
  EXPECT_EQ(written, "abc");
  const Call want{0, KVL_OP_CLOSE, 0, 0};
  EXPECT_EQ(calls.back(), want);
}

TEST_F(Procedure, ThatDeclinesAStreamWithoutANameOpensNothing) {
  openAnswer = 0;
  EXPECT_EQ(kvlOpen("", &d, KVL_OUTPUT), 0u);
  EXPECT_EQ(kvlOpen(nullptr, &d, KVL_READ), 0u);
}

TEST_F(Procedure, EndingsOfLinesAreSingleBytes) {
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  calls.clear();
  EXPECT_EQ(kvlSetLineFormat(h, KVL_LINE_CRLF), 0);
  EXPECT_EQ(kvlWriteLine(h, "ab", 2), 2);
  const std::vector<Call> want = {
      {77, KVL_OP_WRITE, 0, 2}, {77, KVL_OP_WRITE, 0, 1}, {77, KVL_OP_WRITE, 0, 1}};
  EXPECT_EQ(calls, want);
  EXPECT_EQ(written, "ab\r\n");
  EXPECT_EQ(kvlClose(h), 0);
}

TEST_F(Procedure, ALineThatCannotBeWrittenGetsNoEnding) {
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  calls.clear();
  failAt = 0;
  EXPECT_EQ(kvlWriteLine(h, "ab", 2), -1);
  EXPECT_EQ(calls.size(), 1u);
  calls.clear();
  failAt = 1;
  EXPECT_EQ(kvlWriteLine(h, "ab", 2), -1) << "the ending failed";
  EXPECT_EQ(kvlClose(h), 0);
}

// What a host says that it has read, and has not stored, is 0.
TEST(SilentProcedure, BytesThatAreNotStoredAreZero) {
  KvlStreamDesc silent{};
  silent.lpfnProc =
      reinterpret_cast<HostWord>(+[](HostWord, HostWord, HostWord, HostWord) -> HostWord { return 1; });
  const Handle h = kvlOpen("x", &silent, KVL_READ);
  std::string buffer(5, '#');
  EXPECT_EQ(kvlReadLine(h, buffer.data(), 4), 4);
  EXPECT_EQ(buffer, std::string(4, 0) + "#");
  EXPECT_EQ(kvlClose(h), 0);
}

// Every byte of a line is a read of its own, and one that is not the line's is given back by a seek.
TEST_F(Procedure, LinesAreReadByteByByte) {
  support::HostStream host;
  d.lpMemVar = host.context();
  d.lpfnProc = host.procedureWord();
  const Handle h = kvlOpen("lines", &d, KVL_READ);
  ASSERT_NE(h, 0u);
  for (const char c : std::string("ab\r\ncd\re")) host.bytes().push_back(static_cast<uint8_t>(c));
  host.clearLog();
  EXPECT_EQ(kvlGetLineFormat(h), 0);
  EXPECT_EQ(host.log(), "read 1 x 4\nseek 0 from 0 = 0\n");
  host.clearLog();
  char line[8];
  EXPECT_EQ(kvlReadLine(h, line, 8), 2);
  EXPECT_STREQ(line, "ab");
  EXPECT_EQ(host.log(), "read 1 x 4\n");
  host.clearLog();
  EXPECT_EQ(kvlReadLine(h, line, 8), 2);
  EXPECT_STREQ(line, "cd");
  EXPECT_EQ(host.log(), "read 1 x 4\nseek -1 from 1 = 7\n");
  EXPECT_EQ(kvlReadLine(h, line, 8), -1) << "the data end before the line does";
  EXPECT_STREQ(line, "e");
  EXPECT_EQ(kvlClose(h), 0);
}

// A line, some values and a record, written through a procedure that fails at its Nth call.
int32_t writeSomething(Handle h) {
  const uint16_t shorts[2] = {1, 2};
  const uint8_t bytes[16] = {};
  kvlSetLineFormat(h, KVL_LINE_CRLF);
  if (kvlWriteLine(h, "line", 4) != 4) return 1;
  if (kvlWriteShort(h, shorts, 2) != 2) return 2;
  if (kvlWriteChar(h, shorts, 1) != 1) return 3;
  if (kvlWriteStruct(h, bytes, "CS(L|D)", 1) != 1) return 4;
  if (kvlSeek(h, 0, KVL_FROM_START) != 0) return 5;
  return 0;
}

TEST_F(Procedure, MayFailAtAnyCall) {
  const int32_t expected[] = {1, 1, 1, 2, 2, 3, 4, 4, 4, 5};
  for (int32_t n = 0; n < 12; ++n) {
    SetUp();
    const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
    failAt = n + 1;
    EXPECT_EQ(writeSomething(h), n < 10 ? expected[n] : 0) << n;
    EXPECT_EQ(kvlClose(h), 0);
  }
  SetUp();
  failAt = 0;  // -1 is a token like any other
  const Handle h = kvlOpen("x", &d, KVL_OUTPUT);
  EXPECT_NE(h, 0u);
  EXPECT_EQ(kvlClose(h), 0);
}

}  // namespace
