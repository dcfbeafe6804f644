// SPDX-License-Identifier: MIT
// The recording stream procedure, called as the library calls it.
#include "support/stream_procedure.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using support::HostStream;

HostWord word(const void *p) {
  return reinterpret_cast<HostWord>(p);
}
constexpr HostWord kMinusOne = static_cast<HostWord>(-1);

TEST(HostStream, KeepsTheFileAndTheLog) {
  HostStream host;
  const StreamProc call = host.procedure();
  EXPECT_EQ(call(host.context(), 1, word("x.tif"), 4097), host.context());
  EXPECT_EQ(call(host.context(), 3, word("abc"), 3), 3u);
  EXPECT_EQ(call(host.context(), 3, word("d"), 1), 1u);
  EXPECT_EQ(call(host.context(), 3, word("e"), 1), 1u);
  int32_t offset = -4;
  EXPECT_EQ(call(host.context(), 4, word(&offset), 1), 1u);
  EXPECT_EQ(call(host.context(), 3, word("Z"), 1), 1u);
  char read[4] = {};
  EXPECT_EQ(call(host.context(), 2, word(read), 10), 3u);
  EXPECT_STREQ(read, "cde");
  EXPECT_TRUE(host.isOpen());
  EXPECT_EQ(call(host.context(), 5, 0, 0), 0u);
  EXPECT_FALSE(host.isOpen());
  EXPECT_EQ(std::string(host.bytes().begin(), host.bytes().end()), "aZcde");
  EXPECT_EQ(host.log(),
            "open x.tif 4097\nwrite 3\nwrite 1 x 2\nseek -4 from 1 = 1\nwrite 1\nread 10\nclose\n");
  EXPECT_EQ(host.writeSizes(), (std::vector<size_t>{3, 1, 1, 1}));
  EXPECT_EQ(host.count(HostStream::kSeek), 1u);
}

TEST(HostStream, FailsFromItsNthCallOn) {
  HostStream host;
  host.failAt(2);
  const StreamProc call = host.procedure();
  EXPECT_EQ(call(host.context(), 3, word("a"), 1), 1u);
  EXPECT_EQ(call(host.context(), 3, word("b"), 1), kMinusOne);
  EXPECT_EQ(call(host.context(), 3, word("c"), 1), kMinusOne);
  EXPECT_EQ(call(host.context(), 1, word("x"), 4097), 0u);
  EXPECT_EQ(host.bytes().size(), 1u);
}

TEST(HostStream, FailsOnceWhenAsked) {
  HostStream host;
  host.failAt(1, HostStream::Failure::kOnce);
  const StreamProc call = host.procedure();
  EXPECT_EQ(call(host.context(), 1, word("x"), 4097), 0u);
  EXPECT_EQ(call(host.context(), 1, word("x"), 4097), host.context());
}

TEST(HostStream, CutsWritesAtItsCapacity) {
  HostStream host;
  host.limitTo(4);
  const StreamProc call = host.procedure();
  EXPECT_EQ(call(host.context(), 3, word("abc"), 3), 3u);
  EXPECT_EQ(call(host.context(), 3, word("def"), 3), 1u);
  EXPECT_EQ(call(host.context(), 3, word("g"), 1), 0u);
}

TEST(HostStream, LogsExistsAndDeleteWithoutAContext) {
  HostStream host;
  const StreamProc call = host.procedure();
  EXPECT_EQ(call(0, 6, word("old.tif"), 0), 1u);
  EXPECT_EQ(call(0, 7, word("old.tif"), 0), 1u);
  EXPECT_TRUE(host.deleted());
  EXPECT_EQ(host.log(), "exists old.tif\ndelete old.tif\n");
}

}  // namespace
