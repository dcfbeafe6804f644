// SPDX-License-Identifier: MIT
// Filling in the offsets and byte counts of strips and tiles.
#include "tiff/patches.h"

#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/temp_dir.h"
#include "tiff/output.h"
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

// In a file on disk the numbers may wait, and give the bytes that a stream gets which has each at once:
// also where they would lie over each other, or over what is still to be written.
TEST(PatchesOnDisk, AreThoseOfAStream) {
  const struct {
    const char *name;
    uint32_t offsets, counts, strips, first, planned, written;
  } rows[] = {
      {"whole", 20, 60, 5, 1, 5, 5},
      {"a part", 20, 60, 5, 3, 3, 3},
      {"counts first", 60, 20, 5, 1, 5, 5},
      {"side by side", 40, 20, 5, 1, 5, 5},
      {"fewer", 20, 60, 5, 1, 5, 2},
      {"more than pieces", 20, 60, 5, 4, 3, 3},
      {"none planned", 20, 60, 5, 1, 0, 2},
      {"from nothing", 20, 60, 5, 0, 3, 3},
      {"overlapping", 20, 30, 5, 1, 5, 5},
      {"overlapping back", 30, 20, 5, 1, 5, 5},
      {"offsets too far", 150, 60, 5, 1, 5, 5},
      {"counts too far", 20, 150, 5, 1, 5, 5},
      {"one strip", 20, 60, 1, 1, 1, 1},
      {"no number", 20, 60, 5, 1, 5, 0},
  };
  const support::TempDir dir;
  for (const auto &row : rows) {
    const auto write = [&](Handle file) {
      const support::InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS);
      TiffWriterState &state = lpRaster->tiff;
      state.hTiffFile = file;
      state.nOffsetsPos = row.offsets;
      state.nCountsPos = row.counts;
      state.nStripsDown = row.strips;
      state.nTilesAcross = 1;
      for (int i = 0; i < 40; ++i) WriteLong(file, 0);
      tiff::Patches patches(state, row.first, row.planned);
      for (uint32_t k = row.first; k < row.first + row.written; ++k) {
        patches.begin(k);
        for (uint32_t byte = 0; byte <= k; ++byte) kvlWrite(file, "\xEE", 1);
        patches.end(k, k + 1);
      }
      patches.finish();
      kvlWrite(file, "end", 3);
    };
    support::HostOutput out;
    write(out.file);
    const std::string name = dir.file(row.name);
    const Handle file = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
    write(file);
    EXPECT_EQ(kvlClose(file), 0);
    EXPECT_EQ(support::readFile(name), out.bytes()) << row.name;
  }
}

// A strip that was begun and not ended has its offset, and no count.
TEST(PatchesOnDisk, AStripThatWasNotEndedHasNoCount) {
  const support::TempDir dir;
  const std::string name = dir.file("out");
  const support::InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS);
  TiffWriterState &state = lpRaster->tiff;
  state.hTiffFile = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
  state.nOffsetsPos = 0;
  state.nCountsPos = 8;
  state.nStripsDown = 2;
  state.nTilesAcross = 1;
  for (int i = 0; i < 4; ++i) WriteLong(state.hTiffFile, 0x11111111);
  tiff::Patches patches(state, 1, 2);
  patches.begin(1);
  patches.finish();
  EXPECT_EQ(kvlClose(state.hTiffFile), 0);
  EXPECT_EQ(support::readFile(name), hex("10000000 11111111 11111111 11111111"));
}

// --- Going to a place

TEST(SeekTo, GoesWhereAFileIsReadToo) {
  const support::TempDir dir;
  const std::string name = dir.file("ten");
  const Handle made = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
  kvlWrite(made, "0123456789", 10);
  tiff::seekBack(made, 4);
  EXPECT_EQ(tiff::tell(made), 4u);
  tiff::seekBack(made, 12);
  EXPECT_EQ(tiff::tell(made), 12u);
  tiff::seekTo(made, 3);
  tiff::seekTo(made, 0x80000000);  // which is no position of a stream
  EXPECT_EQ(tiff::tell(made), 3u);
  EXPECT_EQ(kvlClose(made), 0);
  const Handle file = kvlOpen(name.c_str(), nullptr, KVL_READ);
  char byte = 0;
  tiff::seekTo(file, 7);
  EXPECT_EQ(kvlRead(file, &byte, 1), 1);
  EXPECT_EQ(byte, '7');
  EXPECT_EQ(kvlClose(file), 0);
}

}  // namespace
