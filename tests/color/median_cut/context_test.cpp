// SPDX-License-Identifier: MIT
// The context of a reduction: pictures counted together, tables chosen one after the other.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "raxel/color.h"
#include "raxel/memory.h"
#include "runtime/live_blocks.h"
#include "support/blocks.h"

namespace {

using Bytes = std::vector<uint8_t>;

class Context {
 public:
  ~Context() { EXPECT_EQ(TermColorLib(handle_), 0); }
  ColorLibContext &record() const { return *static_cast<ColorLibContext *>(GlobalLock(handle_)); }
  Handle handle() const { return handle_; }
  uint16_t counter(size_t cell) const {
    return static_cast<const uint16_t *>(GlobalLock(record().hHistogram))[cell];
  }

 private:
  Handle handle_ = InitColorLib();
};

const Bytes kRedAndBlue{255, 0, 0, 0, 0, 255, 0, 0};  // two pixels and their padding
const Bytes kGreen{0, 255, 0, 0};

TEST(ColorLib, StartsZeroFilled) {
  const Context context;
  EXPECT_EQ(GlobalSize(context.handle()), sizeof(ColorLibContext));
  EXPECT_EQ(context.record().hHistogram, 0u);
  EXPECT_EQ(context.record().hBoxes, 0u);
  EXPECT_EQ(context.record().hBoxOrder, 0u);
  EXPECT_EQ(context.record().nDistinct, 0);
}

TEST(ColorLib, EndsForTheNullHandleWithZero) {
  EXPECT_EQ(TermColorLib(0), 0);
}

TEST(ColorLib, LeavesNoBlockBehind) {
  const size_t blocks = runtime::countBlocks();
  {
    const Context context;
    uint16_t count = 1;
    Bytes table(3);
    EXPECT_EQ(direct_indexed(kRedAndBlue.data(), 2, 1, &count, 3, table.data(), context.handle()), 0);
    EXPECT_EQ(runtime::countBlocks(), blocks + 4)
        << "the context, the histogram, the boxes and their order";
  }
  EXPECT_EQ(runtime::countBlocks(), blocks);
}

TEST(ColorLib, CountsWithoutChoosing) {
  const Context context;
  uint16_t count = 9;
  Bytes table(27, 0xEE);
  EXPECT_EQ(direct_indexed(kRedAndBlue.data(), 2, 1, &count, 0, table.data(), context.handle()), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(table, Bytes(27, 0xEE));
  EXPECT_EQ(context.record().nDistinct, 2);
  EXPECT_EQ(context.counter(31 << 10), 1);
  EXPECT_EQ(context.counter(31), 1);
  EXPECT_EQ(context.counter(0), 0) << "padding is no pixel";
  EXPECT_EQ(context.record().hBoxes, 0u);
  count = 5;
  EXPECT_EQ(direct_indexed(kRedAndBlue.data(), 2, 1, &count, 2, nullptr, context.handle()), 0);
  EXPECT_EQ(context.counter(31), 2);
}

TEST(ColorLib, ChoosesFromAllPicturesCounted) {
  const Context context;
  uint16_t count = 0;
  direct_indexed(kRedAndBlue.data(), 2, 1, &count, 0, nullptr, context.handle());
  count = 4;
  Bytes table(12, 0xEE);
  EXPECT_EQ(direct_indexed(kGreen.data(), 1, 1, &count, 3, table.data(), context.handle()), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(table, (Bytes{0, 0, 255, 0, 255, 0, 255, 0, 0, 0xEE, 0xEE, 0xEE}));
  EXPECT_EQ(context.record().nDistinct, 3) << "kept";
  EXPECT_EQ(context.counter(31 << 5), 1);
}

TEST(ColorLib, ForgetsAfterATableUnlessAskedToKeep) {
  const Context context;
  uint16_t count = 4;
  Bytes table(12);
  EXPECT_EQ(direct_indexed(kRedAndBlue.data(), 2, 1, &count, 1, table.data(), context.handle()), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(context.record().nDistinct, 0);
  EXPECT_EQ(context.counter(31), 0);
}

TEST(ColorLib, WritesNoMoreEntriesThanThereIsRoomFor) {
  const Context context;
  const Bytes row{0, 0, 8, 0, 0, 16, 0, 0, 24, 0, 0, 32};
  uint16_t count = 0;
  direct_indexed(row.data(), 4, 1, &count, 0, nullptr, context.handle());
  context.record().nDistinct = 0;  // a host has been at the record
  count = 3;
  Bytes table(12, 0xEE);
  EXPECT_EQ(direct_indexed(row.data(), 4, 0, &count, 1, table.data(), context.handle()), 0);
  EXPECT_EQ(table, (Bytes{0, 0, 15, 0, 0, 23, 0, 0, 31, 0xEE, 0xEE, 0xEE}));
}

TEST(ColorLib, IsReusedForTablesOfOtherSizes) {
  const Context context;
  Bytes table(3 * 100);
  for (const uint16_t wanted : {uint16_t{3}, uint16_t{100}, uint16_t{1}, uint16_t{0}, uint16_t{5}}) {
    uint16_t count = wanted;
    EXPECT_EQ(direct_indexed(kRedAndBlue.data(), 2, 1, &count, 1, table.data(), context.handle()), 0);
    EXPECT_EQ(count, wanted > 2 ? 2 : wanted);
    EXPECT_EQ(GlobalSize(context.record().hBoxes), wanted * sizeof(ColorBox));
    EXPECT_EQ(GlobalSize(context.record().hBoxOrder), wanted * 2u);
  }
}

TEST(ColorLib, RemembersItsLastSplit) {
  const Context context;
  // Blues 1 to 4, one pixel each: half of 4 is 2, reached at position 1.
  const Bytes row{0, 0, 8, 0, 0, 16, 0, 0, 24, 0, 0, 32};
  uint16_t count = 3;
  Bytes table(9);
  EXPECT_EQ(direct_indexed(row.data(), 4, 1, &count, 3, table.data(), context.handle()), 0);
  EXPECT_EQ(context.record().nBoxes, 2);
  EXPECT_EQ(context.record().iSplitBox, 0);
  EXPECT_EQ(context.record().iFirst, 0);
  EXPECT_EQ(context.record().iLast, 3);
  EXPECT_EQ(context.record().iMedian, 1);
}

TEST(ColorLib, CountersStayAt65535) {
  const Context context;
  const Bytes rows(size_t{400} * 1200, 0xFF);  // 400 by 400 white pixels
  uint16_t count = 0;
  direct_indexed(rows.data(), 256, 255, &count, 0, nullptr, context.handle());
  EXPECT_EQ(context.counter(32767), 65280);
  direct_indexed(rows.data(), 255, 1, &count, 0, nullptr, context.handle());
  EXPECT_EQ(context.counter(32767), 65535);
  direct_indexed(rows.data(), 400, 400, &count, 0, nullptr, context.handle());
  EXPECT_EQ(context.counter(32767), 65535);
  direct_indexed(rows.data(), 1, 1, &count, 0, nullptr, context.handle());
  EXPECT_EQ(context.counter(32767), 65535);
  EXPECT_EQ(context.record().nDistinct, 1);
}

TEST(ColorLib, RefusesWhatIsMissing) {
  const Context context;
  uint16_t count = 4;
  Bytes table(12);
  EXPECT_EQ(direct_indexed(kGreen.data(), 1, 1, &count, 3, table.data(), 0), -1);
  EXPECT_EQ(direct_indexed(nullptr, 1, 1, &count, 3, table.data(), context.handle()), -1);
  EXPECT_EQ(direct_indexed(kGreen.data(), 1, 1, nullptr, 3, table.data(), context.handle()), -1);
  EXPECT_EQ(direct_indexed(kGreen.data(), 1, 1, &count, 3, nullptr, context.handle()), -1);
  EXPECT_EQ(count, 4);
  const Handle small = support::newBlock(4);  // no context fits in it
  EXPECT_EQ(direct_indexed(kGreen.data(), 1, 1, &count, 3, table.data(), small), -1);
  EXPECT_EQ(TermColorLib(small), -1);
  GlobalFree(small);
}

TEST(ColorLib, NegativeSidesHoldNoPixels) {
  const Context context;
  uint16_t count = 4;
  Bytes table(12);
  EXPECT_EQ(direct_indexed(kGreen.data(), UINT32_MAX, 1, &count, 3, table.data(), context.handle()), 0);
  EXPECT_EQ(count, 0);
  count = 4;
  EXPECT_EQ(direct_indexed(kGreen.data(), 1, -1, &count, 3, table.data(), context.handle()), 0);
  EXPECT_EQ(count, 0);
}

// Sixteen colours in turn, over more columns than 16 bits with a sign count.
TEST(ColorLib, WidthsAbove32767Count) {
  constexpr uint32_t kWide = 40000;
  Bytes row(kWide * 3);
  for (size_t x = 0; x < kWide; ++x) row[3 * x] = static_cast<uint8_t>(x % 16 * 8);
  const Context context;
  uint16_t count = 17;
  Bytes table(51);
  EXPECT_EQ(direct_indexed(row.data(), kWide, 1, &count, 3, table.data(), context.handle()), 0);
  EXPECT_EQ(count, 16);
  EXPECT_EQ(Bytes(table.begin() + 45, table.begin() + 48), Bytes({127, 0, 0}));
}

}  // namespace
