// SPDX-License-Identifier: MIT
// Rows in one dimension: modified Huffman and T.4.
#include "tiff/fax_1d.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "raxel/tiff_codes.h"
#include "tiff/reference_fax.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes encode(const std::string &row, uint32_t compression, bool pad = false) {
  const Bytes packed = reference::packRow(row, pad);
  tiff::FaxBuffer buffer(runtime::allocate(2 * packed.size()));
  const uint32_t n = tiff::encodeFaxRow(packed, static_cast<uint32_t>(row.size()), compression, buffer);
  return Bytes(buffer.data(), buffer.data() + n);
}

struct Run {
  char color;
  size_t length;
};

std::string rowOf(std::initializer_list<Run> runs) {
  std::string row;
  for (const Run &run : runs) row.append(run.length, run.color);
  return row;
}

std::string whites(size_t n) {
  return rowOf({{'w', n}});
}
std::string blacks(size_t n) {
  return rowOf({{'b', n}});
}

// 010011011 00110101
TEST(Fax1D, AWhiteRowOf1728IsOneMakeUpAndZero) {
  EXPECT_EQ(encode(whites(1728), 2), (Bytes{0x4D, 0x9A, 0x80}));
  EXPECT_EQ(encode(whites(1728), 3), (Bytes{0x4D, 0x9A, 0x80, 0x00, 0x01}));
}

// 00110101 010 1111: no white pixel, one black, seven white
TEST(Fax1D, BlackFirstPixelGetsZeroWhiteRun) {
  EXPECT_EQ(encode("bwwwwwww", 2), (Bytes{0x35, 0x5E}));
  EXPECT_EQ(encode("bwwwwwww", 3), (Bytes{0x35, 0x5E, 0x00, 0x01}));
}

// 000000011111 000111
TEST(Fax1D, RunOf2561IsMakeUp2560And1) {
  EXPECT_EQ(encode(whites(2561), 2), (Bytes{0x01, 0xF1, 0xC0}));
}

// 000000011111 000000011111 11011 101010, and for black 0000001111 0000010111 at the end
TEST(Fax1D, RunOf5200IsTwoMakeUps2560And64And16) {
  EXPECT_EQ(encode(whites(5200), 2), (Bytes{0x01, 0xF0, 0x1F, 0xDD, 0x40}));
  EXPECT_EQ(encode(blacks(5200), 2), (Bytes{0x35, 0x01, 0xF0, 0x1F, 0x03, 0xC1, 0x70}));
}

// 11011 00110101, and 00110101 0000001111 0000110111
TEST(Fax1D, RunOf64IsMakeUpAndZero) {
  EXPECT_EQ(encode(whites(64), 2), (Bytes{0xD9, 0xA8}));
  EXPECT_EQ(encode(blacks(64), 2), (Bytes{0x35, 0x03, 0xC3, 0x70}));
}

// 000000011111 00110101; 000000011111 00110100; 000000011111 11011 00110101
TEST(Fax1D, RunsAroundTheLongestMakeUp) {
  EXPECT_EQ(encode(whites(2560), 2), (Bytes{0x01, 0xF3, 0x50}));
  EXPECT_EQ(encode(whites(2623), 2), (Bytes{0x01, 0xF3, 0x40}));
  EXPECT_EQ(encode(whites(2624), 2), (Bytes{0x01, 0xFD, 0x9A, 0x80}));
}

TEST(Fax1D, SinglePixelsAlternateTheirCodes) {
  EXPECT_EQ(encode("w", 2), (Bytes{0x1C}));        // 000111
  EXPECT_EQ(encode("b", 2), (Bytes{0x35, 0x40}));  // 00110101 010
}

// 0111 11 0111 11 0111 11 0111 11 0111 11 0111 ...: the codes cross every byte boundary
TEST(Fax1D, StripesOfTwoAlternateTheirCodes) {
  EXPECT_EQ(encode("wwbbwwbbwwbb", 2), (Bytes{0x7D, 0xF7, 0xC0}));
}

TEST(Fax1D, WidthZeroGivesNothing) {
  EXPECT_EQ(encode("", 2), Bytes{});
  EXPECT_EQ(encode("", 3), Bytes{});
}

TEST(Fax1D, RowTooShortForItsWidthGivesNothing) {
  const Bytes row(4, 0xFF);
  tiff::FaxBuffer buffer(runtime::allocate(100));
  EXPECT_EQ(tiff::encodeFaxRow(row, 33, RAXEL_TIFF_HUFFMAN, buffer), 0u);
  EXPECT_EQ(tiff::encodeFaxRow(row, 0xFFFFFFFFu, RAXEL_TIFF_HUFFMAN, buffer), 0u);
  EXPECT_EQ(tiff::encodeFaxRow(row, 32, RAXEL_TIFF_HUFFMAN, buffer), 1u);
  EXPECT_NE(buffer.handle(), 0u);
}

TEST(Fax1D, PadBitsAreNeverCoded) {
  for (size_t width = 1; width < 200; ++width) {
    for (const char last : {'w', 'b'}) {
      const std::string row = rowOf({{'w', width - 1}, {last, 1}});
      EXPECT_EQ(encode(row, 2, false), encode(row, 2, true)) << width;
      EXPECT_EQ(encode(row, 2, false), reference::packBits01(reference::fax1D(row))) << width;
    }
  }
}

// A run of every length, of both colours, first in its row and after another run.
TEST(Fax1D, EveryRunLengthReadsBack) {
  for (size_t run = 0; run <= 6000; ++run) {
    const std::string rows[] = {
        rowOf({{'w', run}, {'b', 1}}),
        rowOf({{'b', run}, {'w', 1}}),
        rowOf({{'b', 1}, {'w', run}, {'b', 1}}),
        rowOf({{'w', 1}, {'b', run + 1}}),
    };
    for (const std::string &row : rows) {
      ASSERT_EQ(encode(row, 2), reference::packBits01(reference::fax1D(row))) << run;
    }
  }
}

// The longest codes that one byte can give: a black make-up code of 13 bits, a terminating code of 12,
// and 33 bits for the single pixels after them, at every bit position.
TEST(Fax1D, LongestCodesOfAByte) {
  for (size_t lead = 1; lead <= 64; ++lead) {
    const std::string row = rowOf({{'w', lead}, {'b', 16}, {'w', 24 - lead % 8}, {'b', 544}}) + "wbwbwbwb" +
                            rowOf({{'w', 600}, {'b', 8}, {'w', 1}, {'b', 1}, {'w', 1}});
    EXPECT_EQ(encode(row, 2), reference::packBits01(reference::fax1D(row))) << lead;
  }
}

// 262,144 pixels of one colour in a buffer that starts with 20 bytes.
TEST(Fax1D, BufferGrowsWithinOneRun) {
  const Bytes row(32768, 0xFF);
  tiff::FaxBuffer buffer(runtime::allocate(20));
  const uint32_t n = tiff::encodeFaxRow(row, 262144, RAXEL_TIFF_HUFFMAN, buffer);
  const Bytes codes(buffer.data(), buffer.data() + n);
  EXPECT_EQ(codes, reference::packBits01(reference::runCodes(false, 262144)));
}

TEST(Fax1D, LostBufferGivesNothing) {
  Bytes row(4000, 0x55);
  tiff::FaxBuffer buffer(runtime::allocate(100), 100);
  EXPECT_EQ(tiff::encodeFaxRow(row, 32000, RAXEL_TIFF_T4, buffer), 0u);
  EXPECT_EQ(buffer.handle(), 0u);
}

// In a block that may not grow, whatever its size: all the codes, or none and no block.
TEST(Fax1D, ABlockThatIsTooSmallIsGivenUp) {
  const std::string rows[] = {whites(64), rowOf({{'w', 9000}, {'b', 70}, {'w', 100}}),
                              rowOf({{'b', 1}, {'w', 5200}}),
                              rowOf({{'w', 30}, {'b', 2}, {'w', 7}, {'b', 3000}, {'w', 3}})};
  for (const std::string &row : rows) {
    for (const uint32_t compression : {RAXEL_TIFF_HUFFMAN, RAXEL_TIFF_T4}) {
      Bytes expected = reference::packBits01(reference::fax1D(row));
      if (compression == RAXEL_TIFF_T4) expected.insert(expected.end(), {0, 1});
      const Bytes packed = reference::packRow(row);
      bool fits = false;
      for (uint32_t room = 0; room < expected.size() + 64; ++room) {
        tiff::FaxBuffer buffer(runtime::allocate(room), room);
        const uint32_t n =
            tiff::encodeFaxRow(packed, static_cast<uint32_t>(row.size()), compression, buffer);
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
}

}  // namespace
