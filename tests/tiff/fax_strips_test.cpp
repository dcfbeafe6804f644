// SPDX-License-Identifier: MIT
// Three rows of sixteen pixels in all three fax codes, worked out in src/tiff/README.md.
#include "tiff/fax_strips.h"

#include <gtest/gtest.h>

namespace {

using reference::Bytes;

const reference::Picture kThreeRows = {"wwwwbbbbwwwwwwww", "wwwwwbbbwwwbbbbw", "wwwwwwwwwwwwwwww"};

TEST(FaxStrips, ModifiedHuffmanRowsEndOnWholeBytes) {
  EXPECT_EQ(support::huffmanStrip(kThreeRows, false), (Bytes{0xB7, 0x30, 0xCA, 0x18, 0xE0, 0xA8}));
}

TEST(FaxStrips, T4BeginsWithOneEolAndEndsWithSix) {
  EXPECT_EQ(support::t4Strip(kThreeRows, false),
            (Bytes{0x00, 0x01, 0xB7, 0x30, 0x00, 0x01, 0xCA, 0x18, 0xE0, 0x00, 0x01, 0xA8,
                   0x00, 0x01, 0x00, 0x01, 0x00, 0x01, 0x00, 0x01, 0x00, 0x01, 0x00, 0x01}));
}

TEST(FaxStrips, T6CodesEachRowFromTheOneAbove) {
  EXPECT_EQ(support::t6Strip(kThreeRows, false), (Bytes{0x36, 0xEE, 0x61, 0xC4, 0x60}));
}

}  // namespace
