// SPDX-License-Identifier: MIT
// Rows gathered into larger writes: in order, all of them, and never where a host would see it.
#include "tiff/collector.h"

#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "tiff/output.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;

int32_t write(tiff::Collector &out, const Bytes &row) {
  return out.write(row.data(), row.size());
}

TEST(Collector, AHostSeesEachRow) {
  support::HostOutput host;
  tiff::Collector out(host.file, 1000);
  EXPECT_EQ(write(out, Bytes(3)), 3);
  EXPECT_EQ(write(out, Bytes(5)), 5);
  EXPECT_EQ(host.host.log(), "write 3\nwrite 5\n");
  EXPECT_TRUE(out.finish());
  host.host.limitTo(9);
  EXPECT_EQ(write(out, Bytes(3)), 1);  // the host's own answer
}

TEST(Collector, RowsOfEverySizeReachAFileInOrder) {
  const support::TempDir dir;
  const std::string name = dir.file("rows");
  support::Random random(4);
  for (const uint64_t capacity : {uint64_t{0}, uint64_t{1}, uint64_t{100}, uint64_t{1} << 40}) {
    Bytes expected;
    const Handle file = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
    tiff::Collector out(file, capacity);
    for (int i = 0; i < 200; ++i) {
      const Bytes row = random.bytes(static_cast<size_t>(random.between(0, i % 10 == 0 ? 30000 : 60)));
      ASSERT_EQ(write(out, row), static_cast<int32_t>(row.size()));
      expected.insert(expected.end(), row.begin(), row.end());
      if (random.chance(5)) {
        ASSERT_TRUE(out.finish());
      }
    }
    EXPECT_TRUE(out.finish());
    EXPECT_TRUE(out.finish());  // nothing is left
    EXPECT_EQ(kvlClose(file), 0);
    EXPECT_EQ(support::readFile(name), expected) << capacity;
  }
}

TEST(Collector, AFullDiskShowsAtTheLatestWhenItFinishes) {
  const Handle file = kvlOpen("/dev/full", nullptr, KVL_OUTPUT);
  if (file == 0) GTEST_SKIP() << "no /dev/full here";
  tiff::Collector out(file, 100000);
  EXPECT_EQ(write(out, Bytes(60000)), 60000);
  EXPECT_FALSE(out.finish());
  EXPECT_EQ(write(out, Bytes(60000)), 60000);
  EXPECT_EQ(write(out, Bytes(60000)), -1);  // makes room first, and cannot
  kvlClose(file);
}

TEST(Collector, NoFileTakesNothing) {
  tiff::Collector out(0, 1000);
  EXPECT_EQ(write(out, Bytes(3)), 0);
  EXPECT_TRUE(out.finish());
}

// More than one call can carry. The bytes are never looked at.
TEST(Collector, RowsOfTwoGigabytesAreRefused) {
  support::HostOutput host;
  tiff::Collector out(host.file, 0);
  const uint8_t byte = 0;
  EXPECT_EQ(out.write(&byte, size_t{0x80000000}), -1);
  EXPECT_FALSE(tiff::writeAll(host.file, {&byte, size_t{0x80000000}}));
  EXPECT_TRUE(host.host.calls().empty());
}

}  // namespace
