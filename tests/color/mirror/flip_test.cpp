// SPDX-License-Identifier: MIT
// Mirroring in place, where pixel x changes places with pixel width - x.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "raxel/color.h"
#include "raxel/memory.h"
#include "runtime/slack.h"
#include "support/blocks.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A flipped picture, followed by the bytes past its block's size.
Bytes flip(const Bytes &bits, int16_t depth, uint32_t width, uint32_t height, bool leftRight,
           bool topBottom) {
  const Handle block = support::newBlock(bits.size());
  if (!bits.empty()) std::memcpy(GlobalLock(block), bits.data(), bits.size());
  EXPECT_EQ(rlFlipBitmap(block, depth, width, height, leftRight ? 1 : 0, topBottom ? 1 : 0), block);
  const auto *p = static_cast<const uint8_t *>(GlobalLock(block));
  Bytes out;
  {
    const runtime::OpenSlack slack(block);
    out.assign(p, p + bits.size() + 3);
  }
  GlobalFree(block);
  return out;
}

TEST(Flip, WithoutFlagsChangesNothing) {
  const Bytes bits{1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(flip(bits, 8, 4, 2, false, false), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0}));
}

TEST(Flip, TopToBottomSwapsWholeRows) {
  const Bytes bits{1, 2, 3, 0xA0, 4, 5, 6, 0xA1, 7, 8, 9, 0xA2};
  EXPECT_EQ(flip(bits, 8, 3, 3, false, true),
            (Bytes{7, 8, 9, 0xA2, 4, 5, 6, 0xA1, 1, 2, 3, 0xA0, 0, 0, 0}));
  EXPECT_EQ(flip({1, 0, 0, 0, 2, 0, 0, 0}, 8, 1, 2, false, true), (Bytes{2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}));
}

TEST(Flip, LeftToRightExchangesTheFirstPixelWithThePadding) {
  // A B C and its padding: A goes into the padding, the padding to the front; C is its own partner's
  // neighbour: width - 1 is 2, past the middle.
  const Bytes row{'A', 'a', '1', 'B', 'b', '2', 'C', 'c', '3', 'x', 'y', 'z'};
  EXPECT_EQ(flip(row, 24, 3, 1, true, false),
            (Bytes{'x', 'y', 'z', 'B', 'b', '2', 'C', 'c', '3', 'A', 'a', '1', 0, 0, 0}));
}

TEST(Flip, LeftToRightExchangesTheLastPixelWithTheSecond) {
  // Without padding on the only row, pixel 0 goes into the block's spare bytes.
  EXPECT_EQ(flip({1, 2, 3, 4}, 8, 4, 1, true, false), (Bytes{0, 4, 3, 2, 1, 0, 0}));
}

TEST(Flip, RowsWithoutPaddingExchangePixelsWithTheNext) {
  // All four pixels are read first: 1 and 5 are exchanged, then 5's place takes what lay past the
  // block, and 5 goes there.
  EXPECT_EQ(flip({1, 2, 3, 4, 5, 6, 7, 8}, 8, 4, 2, true, false), (Bytes{5, 4, 3, 2, 0, 8, 7, 6, 5, 0, 0}));
}

TEST(Flip, TheMiddleRowIsMirroredOnce) {
  EXPECT_EQ(flip({1, 2, 3, 0xA0, 4, 5, 6, 0xA1, 7, 8, 9, 0xA2}, 8, 3, 3, true, false),
            (Bytes{0xA0, 2, 3, 1, 0xA1, 5, 6, 4, 0xA2, 8, 9, 7, 0, 0, 0}));
}

TEST(Flip, BothFlagsTurnThePictureAround) {
  EXPECT_EQ(flip({1, 2, 3, 0xA0, 4, 5, 6, 0xA1}, 8, 3, 2, true, true),
            (Bytes{0xA1, 5, 6, 4, 0xA0, 2, 3, 1, 0, 0, 0}));
}

TEST(Flip, SharedBytesAreMirroredByPixels) {
  // 1 bit, 3 pixels: 1 0 1 and the fourth bit; pixel 0 is exchanged with bit 3.
  EXPECT_EQ(flip({0xA0, 0, 0, 0}, 1, 3, 1, true, false), (Bytes{0x30, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(flip({0x12, 0x34, 0, 0}, 4, 3, 1, true, false), (Bytes{0x42, 0x31, 0, 0, 0, 0, 0}));
}

TEST(Flip, LongRowsOfSharedBytesAreMirroredByPixels) {
  // Pixel 3 of 136 changes places with pixel 133, pixel 3 of 40 with pixel 37.
  Bytes bits(20), mirrored(23);
  bits[0] = 0x10;
  mirrored[16] = 0x04;
  EXPECT_EQ(flip(bits, 1, 136, 1, true, false), mirrored);
  // Of 137, pixel 1 with pixel 136, alone in its byte.
  bits = Bytes(20), mirrored = Bytes(23);
  bits[0] = 0x40;
  mirrored[17] = 0x80;
  EXPECT_EQ(flip(bits, 1, 137, 1, true, false), mirrored);
  bits = Bytes(20), mirrored = Bytes(23);
  bits[1] = 0x0A;
  mirrored[18] = 0x0A;
  EXPECT_EQ(flip(bits, 4, 40, 1, true, false), mirrored);
}

TEST(Flip, MemoryOfTheHostsOwnEndsWithItsSize) {
  Bytes memory{1, 2, 3, 4, 99, 99};
  const Handle block = GlobalPointerToHandle(memory.data(), 4);
  EXPECT_EQ(rlFlipBitmap(block, 8, 4, 1, 1, 0), block);
  EXPECT_EQ(memory, (Bytes{0, 4, 3, 2, 99, 99}));
  GlobalFree(block);
  // One byte short of a row: pixels 0 and 1 have their partners past the end.
  memory = {1, 2, 3, 99};
  const Handle cut = GlobalPointerToHandle(memory.data(), 3);
  EXPECT_EQ(rlFlipBitmap(cut, 8, 4, 1, 1, 0), cut);
  EXPECT_EQ(memory, (Bytes{0, 0, 3, 99}));
  GlobalFree(cut);
}

TEST(Flip, RowsPastTheBlockAreBlankAndDropped) {
  // Eight rows claimed, one and a half there and 10 spare bytes: the upper rows get blank ones.
  EXPECT_EQ(flip({1, 2, 3, 4, 5, 6}, 8, 4, 8, false, true), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Flip, SizesThatAreNone) {
  const Bytes bits{1, 2, 3, 4};
  const Bytes same{1, 2, 3, 4, 0, 0, 0};
  EXPECT_EQ(flip(bits, 8, 0, 5, true, true), same);
  EXPECT_EQ(flip(bits, 8, 4, 0, true, true), same);
  EXPECT_EQ(flip(bits, 0, 4, 1, true, true), same);
  EXPECT_EQ(flip(bits, -8, 4, 1, true, true), same);
  EXPECT_EQ(rlFlipBitmap(0, 8, 4, 1, 1, 1), 0u);
}

TEST(Flip, SizesFarPastTheBlockEndAtOnce) {
  const Bytes bits(4000, 1);
  for (const int16_t depth : {int16_t{1}, int16_t{4}, int16_t{8}, int16_t{16}, int16_t{24}, int16_t{32}}) {
    flip(bits, depth, 0xFFFFFFFF, 0xFFFFFFFF, true, true);
    flip(bits, depth, 1, 0xFFFFFFFF, true, true);
    flip(bits, depth, 0xFFFFFFFF, 1, true, true);
    flip({}, depth, 0xFFFFFFFF, 0xFFFFFFFF, true, true);
  }
  EXPECT_EQ(flip({1, 2, 3, 4}, 8, 1, 0xFFFFFFFF, false, true), (Bytes{0, 0, 0, 0, 0, 0, 0}));
}

std::string printed(int16_t depth, uint32_t width, uint32_t height, bool leftRight) {
  _debug_color_res = 4;
  testing::internal::CaptureStderr();
  flip(Bytes(48, 1), depth, width, height, leftRight, true);
  _debug_color_res = 0;
  return testing::internal::GetCapturedStderr();
}

TEST(Flip, NamesThePixelsAboveLevelThree) {
  // Depths that hold no pixels are no exception: the places are printed, and nothing is set.
  for (const int depth : {1, 4, 8, 24, 32, 2, 16, 0, -1, -32768}) {
    SCOPED_TRACE(depth);
    const auto bits = static_cast<int16_t>(depth);
    EXPECT_EQ(printed(bits, 3, 2, true), "(0,0): (3,0): (0,0): (3,0): ");
    EXPECT_EQ(printed(bits, 4, 3, true),
              "(0,0): (4,0): (0,0): (4,0): (1,0): (3,0): (1,0): (3,0): "
              "(0,0): (4,0): (0,0): (4,0): (1,0): (3,0): (1,0): (3,0): ");
    EXPECT_EQ(printed(bits, 1, 2, true), "");
    EXPECT_EQ(printed(bits, 3, 2, false), "");
  }
}

}  // namespace
