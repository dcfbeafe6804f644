// SPDX-License-Identifier: MIT
// Strips in two dimensions: every mode, and the ends of the rows.
#include "tiff/fax_2d.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tiff/reference_fax.h"

namespace {

using Bytes = std::vector<uint8_t>;
using reference::Picture;

Bytes encode(const Picture &picture, bool pad = false) {
  const Bytes packed = reference::packPicture(picture, pad);
  tiff::FaxBuffer buffer(runtime::allocate(2 * packed.size()));
  const auto width = static_cast<uint32_t>(picture[0].size());
  const auto rows = static_cast<uint32_t>(picture.size());
  const uint32_t n = tiff::encodeFax2D(packed, width, rows, buffer);
  return Bytes(buffer.data(), buffer.data() + n);
}

// The codes of the second row alone, as bits, when the first row is known to take `first`.
Bytes afterFirstRow(const std::string &first, const std::string &second) {
  return reference::packBits01(first + second);
}

TEST(Fax2D, WhiteFirstRowIsOneBit) {
  EXPECT_EQ(encode({std::string(1728, 'w')}), (Bytes{0x80}));
  EXPECT_EQ(encode({"w"}), (Bytes{0x80}));
}

TEST(Fax2D, NoEndMarkIsWritten) {
  EXPECT_EQ(encode(Picture(8, "wwww")), (Bytes{0xFF}));
  EXPECT_EQ(encode(Picture(9, "wwww")), (Bytes{0xFF, 0x80}));
}

// 001 00110101 000101: horizontal, no white pixel, eight black
TEST(Fax2D, ABlackFirstRowIsHorizontal) {
  EXPECT_EQ(encode({"bbbbbbbb"}), (Bytes{0x26, 0xA2, 0x80}));
}

// The second row is V0 V0: the change at pixel 0 of the row above counts.
TEST(Fax2D, ChangeAtPixelZeroCountsAtTheRowStart) {
  EXPECT_EQ(encode({"bbbbbbbb", "bbbbbbbb"}), (Bytes{0x26, 0xA2, 0xE0}));
}

// After V0 at pixel 0, b1 lies strictly to the right of pixel 0: V0 V0 V0 for the second row.
// First row: 001 00110101 010 (one black), then V0.
TEST(Fax2D, AfterThatB1LiesStrictlyToTheRight) {
  EXPECT_EQ(encode({"bwwwwwww", "bwwwwwww"}), afterFirstRow("001001101010101", "111"));
  // White from the start: the change at pixel 0 above is b1, so b2 = 1 is passed over.
  EXPECT_EQ(encode({"bwwwwwww", "wwwwwwww"}), afterFirstRow("001001101010101", "00011"));
  // VL1 to pixel 0, where b1 for the next step is pixel 2, not pixel 1.
  EXPECT_EQ(encode({"wbwwwwww", "bbwwwwww"}), afterFirstRow("0010001110101", "01011"));
}

// 001 0111 11 1 for the first row, 0001 1 for the second
TEST(Fax2D, PassModeStepsOverARunAbove) {
  EXPECT_EQ(encode({"wwbbwwww", "wwwwwwww"}), (Bytes{0x2F, 0xC6}));
}

// b2 = a1 = 4 is no pass: VR2. Then a0 = 4, black: a1 = 5, b1 = 8: VL3. Then V0.
TEST(Fax2D, PassNeedsB2BeforeA1) {
  EXPECT_EQ(encode({"wwbbwwww", "wwwwbwww"}), afterFirstRow("0010111111", "00001100000101"));
}

// The edge lies at 8 above and at 8 + d below: VL3 to VR3, then the row's end.
TEST(Fax2D, VerticalModesCodeDistancesUpToThree) {
  const std::string above = "wwwwwwwwbbbbbbbb";  // 001 10011 000101
  const std::string first = "00110011000101";
  const char *codes[] = {"0000010", "000010", "010", "1", "011", "000011", "0000011"};
  for (size_t i = 0; i < 7; ++i) {
    const size_t edge = 5 + i;
    const std::string row = std::string(edge, 'w') + std::string(16 - edge, 'b');
    EXPECT_EQ(encode({above, row}), afterFirstRow(first, std::string(codes[i]) + "1")) << i;
  }
}

// Four pixels apart: horizontal, with white 4 and black 12, and white 12 and black 4.
TEST(Fax2D, EdgesFourPixelsApartAreHorizontal) {
  const std::string above = "wwwwwwwwbbbbbbbb";
  const std::string first = "00110011000101";
  EXPECT_EQ(encode({above, "wwwwbbbbbbbbbbbb"}), afterFirstRow(first, "00110110000111"));
  EXPECT_EQ(encode({above, "wwwwwwwwwwwwbbbb"}), afterFirstRow(first, "001001000011"));
}

// In black: 001 00110101 11 takes the first two pixels, then VL2 (a1 = 6 against the width 8), V0.
TEST(Fax2D, FirstRowCanUseVerticalModesNearItsEnd) {
  EXPECT_EQ(encode({"wwwwwwbb"}), reference::packBits01("0000101"));
  EXPECT_EQ(encode({"wwwwwwbw"}), reference::packBits01("0000100101"));
}

// The row ends in horizontal mode with a run of 0: a0 = 0, a1 = a2 = 16, b1 = 4, b2 = 16.
TEST(Fax2D, HorizontalModeAtTheRowEndCodesARunOfZero) {
  EXPECT_EQ(encode({"wwwwbbbbbbbbbbbb", "wwwwwwwwwwwwwwww"}),
            afterFirstRow("00110110000111", "0011010100000110111"));
}

TEST(Fax2D, WidthOrRowsZeroGiveNothing) {
  const Bytes rows(16, 0xFF);
  tiff::FaxBuffer buffer(runtime::allocate(100));
  EXPECT_EQ(tiff::encodeFax2D(rows, 0, 16, buffer), 0u);
  EXPECT_EQ(tiff::encodeFax2D(rows, 8, 0, buffer), 0u);
  EXPECT_EQ(tiff::encodeFax2D({}, 0, 0, buffer), 0u);
  EXPECT_NE(buffer.handle(), 0u);
}

TEST(Fax2D, MoreRowsThanAreThereGiveNothing) {
  const Bytes rows(16, 0xFF);
  tiff::FaxBuffer buffer(runtime::allocate(100));
  EXPECT_EQ(tiff::encodeFax2D(rows, 9, 9, buffer), 0u);
  EXPECT_EQ(tiff::encodeFax2D(rows, 0xFFFFFFFFu, 0xFFFFFFFFu, buffer), 0u);
  EXPECT_EQ(tiff::encodeFax2D(rows, 9, 8, buffer), 1u);
}

TEST(Fax2D, PadBitsAreNeverCoded) {
  for (size_t width = 1; width < 140; ++width) {
    const std::string stripes(width, 'b');
    const Picture picture = {stripes, std::string(width - 1, 'w') + "b", stripes, std::string(width, 'w')};
    EXPECT_EQ(encode(picture, false), encode(picture, true)) << width;
  }
}

TEST(Fax2D, BufferGrowsWithinOneRow) {
  Bytes rows(2 * 32768, 0xFF);
  rows[32768 + 16384] = 0x00;  // the second row has eight black pixels in its middle
  tiff::FaxBuffer buffer(runtime::allocate(0));
  const uint32_t n = tiff::encodeFax2D(rows, 262144, 2, buffer);
  const std::string expected =
      "1001" + reference::runCodes(false, 131072) + reference::runCodes(true, 8) + "1";
  EXPECT_EQ(Bytes(buffer.data(), buffer.data() + n), reference::packBits01(expected));
}

TEST(Fax2D, LostBufferGivesNothing) {
  const Bytes rows(4000, 0x55);
  tiff::FaxBuffer buffer(runtime::allocate(100), 100);
  EXPECT_EQ(tiff::encodeFax2D(rows, 3200, 10, buffer), 0u);
  EXPECT_EQ(buffer.handle(), 0u);
}

// In a block that may not grow, whatever its size: all the codes, or none and no block. Rows of long runs,
// of short ones, with a run in horizontal mode, and the same again.
TEST(Fax2D, ABlockThatIsTooSmallIsGivenUp) {
  const std::string stripes = [] {
    std::string row;
    while (row.size() < 400) row += row.size() % 6 == 0 ? "wb" : "bbww";
    return row.substr(0, 400);
  }();
  const std::string shifted = stripes.substr(5) + "wwwww";
  const std::string plain = std::string(100, 'w') + std::string(200, 'b') + std::string(100, 'w');
  std::vector<Picture> pictures = {{plain, plain, std::string(400, 'w')},
                                   {stripes, shifted, stripes, stripes, stripes, shifted},
                                   {plain, stripes, stripes}};
  // First rows that end within a byte and with one: what is left for the next row is short then.
  for (size_t width = 385; width < 400; ++width)
    pictures.push_back({stripes.substr(0, width), shifted.substr(0, width)});
  for (const Picture &picture : pictures) {
    const Bytes expected = reference::packBits01(reference::fax2D(picture));
    const Bytes packed = reference::packPicture(picture);
    bool fits = false;
    for (uint32_t room = 0; room < expected.size() + 280; ++room) {
      tiff::FaxBuffer buffer(runtime::allocate(room), room);
      const uint32_t n = tiff::encodeFax2D(packed, static_cast<uint32_t>(picture[0].size()),
                                           static_cast<uint32_t>(picture.size()), buffer);
      EXPECT_EQ(n == 0, buffer.handle() == 0) << room;
      EXPECT_FALSE(fits && n == 0) << room;
      fits = n != 0;
      if (fits) {
        EXPECT_EQ(Bytes(buffer.data(), buffer.data() + n), expected) << room;
      }
    }
    EXPECT_TRUE(fits);
  }
}

}  // namespace
