// SPDX-License-Identifier: MIT
// Filling in the offsets and byte counts of strips and tiles.
#include <gtest/gtest.h>

#include "support/hex.h"
#include "tiff/writer_fixture.h"

namespace {

using support::hex;

class Patches : public testing::Test {
 protected:
  void SetUp() override {
    for (int i = 0; i < 40; ++i) WriteLong(out.file, 0);
    use.setup.tiff.hTiffFile = out.file;
    use.setup.tiff.nOffsetsPos = 20;
    use.setup.tiff.nCountsPos = 60;
    use.setup.tiff.nStripsDown = 5;
    out.host.clearLog();
  }
  support::InUse use{RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS};
  support::HostOutput out;
};

TEST_F(Patches, OffsetIsTheCurrentPosition) {
  EXPECT_EQ(SetStripOrTileOffset(3), 0);
  EXPECT_EQ(support::slice(out.bytes(), 24, 12), hex("00000000 A0000000 00000000"));
  EXPECT_EQ(out.host.log(),
            "seek 0 from 1 = 160\nseek 28 from 0 = 28\nwrite 1 x 4\nseek 160 from 0 = 160\n");
}

TEST_F(Patches, ByteCountIsTheArgument) {
  EXPECT_EQ(SetStripOrTileByteCount(1, 0x01020304), 0);
  EXPECT_EQ(support::slice(out.bytes(), 56, 12), hex("00000000 04030201 00000000"));
  EXPECT_EQ(out.host.log(),
            "seek 0 from 1 = 160\nseek 60 from 0 = 60\nwrite 1 x 4\nseek 160 from 0 = 160\n");
}

TEST_F(Patches, OffsetCountsFromTheHeader) {
  use.setup.tiff.dwTiffBase = 100;
  SetStripOrTileOffset(1);
  EXPECT_EQ(support::slice(out.bytes(), 20, 4), hex("3C000000"));
}

// With one row of strips or tiles only the first is patched, and with none, none.
TEST_F(Patches, OneRowPatchesTheFirstOnly) {
  use.setup.tiff.nStripsDown = 1;
  use.setup.tiff.nTilesAcross = 4;
  SetStripOrTileOffset(2);
  SetStripOrTileByteCount(2, 9);
  SetStripOrTileOffset(0);
  EXPECT_TRUE(out.host.calls().empty());
  SetStripOrTileOffset(1);
  EXPECT_EQ(out.host.calls().size(), 7u);
  use.setup.tiff.nStripsDown = 0;
  SetStripOrTileByteCount(1, 9);
  EXPECT_EQ(out.host.calls().size(), 7u);
}

// A number past the array lands behind it: bands of several calls count on that way.
TEST_F(Patches, NumbersPastTheArrayLandBehindIt) {
  SetStripOrTileOffset(12);
  EXPECT_EQ(support::slice(out.bytes(), 64, 4), hex("A0000000"));
}

TEST_F(Patches, NothingInUseDoesNothing) {
  lpRaster = nullptr;
  EXPECT_EQ(SetStripOrTileOffset(1), 0);
  EXPECT_EQ(SetStripOrTileByteCount(1, 1), 0);
  EXPECT_TRUE(out.host.calls().empty());
}

}  // namespace
