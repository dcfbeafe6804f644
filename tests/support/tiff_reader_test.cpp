// SPDX-License-Identifier: MIT
// The tests' own reader against a file written out by hand.
#include "support/tiff_reader.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Two rows of two 8-bit grey pixels in two strips, the entries out of order on purpose.
const std::vector<uint8_t> kFile = {
    'I',  'I',  42, 0, 8,   0, 0, 0,               //   0  header, directory at 8
    6,    0,                                       //   8  six entries
    0x01, 0x01, 3,  0, 1,   0, 0, 0, 2,  0, 0, 0,  //  10  ImageLength 2
    0x00, 0x01, 3,  0, 1,   0, 0, 0, 2,  0, 0, 0,  //  22  ImageWidth 2
    0x02, 0x01, 3,  0, 1,   0, 0, 0, 8,  0, 0, 0,  //  34  BitsPerSample 8
    0x11, 0x01, 4,  0, 2,   0, 0, 0, 86, 0, 0, 0,  //  46  StripOffsets, two at 86
    0x17, 0x01, 3,  0, 2,   0, 0, 0, 2,  0, 2, 0,  //  58  StripByteCounts 2, 2, in place
    0x1A, 0x01, 5,  0, 1,   0, 0, 0, 94, 0, 0, 0,  //  70  XResolution at 94
    0,    0,    0,  0,                             //  82  no further directory
    102,  0,    0,  0, 104, 0, 0, 0,               //  86  the strips' offsets
    96,   0,    0,  0, 1,   0, 0, 0,               //  94  96 over 1
    0x10, 0x20,                                    // 102  first row
    0x30, 0x40,                                    // 104  second row
};

TEST(TiffReader, ReadsAHandWrittenFile) {
  const support::TiffFile file = support::readTiff(kFile);
  ASSERT_TRUE(file.ok()) << file.error;
  EXPECT_EQ(file.tags(), (std::vector<uint16_t>{257, 256, 258, 273, 279, 282}));
  EXPECT_EQ(file.width(), 2u);
  EXPECT_EQ(file.height(), 2u);
  EXPECT_EQ(file.value(282, 0, 0), 96u);
  EXPECT_EQ(file.value(282, 0, 1), 1u);
  EXPECT_EQ(file.find(282)->valuesAt, 94u);
  EXPECT_EQ(file.find(279)->valuesAt, 66u);
  EXPECT_EQ(file.find(279)->field, 0x00020002u);
  EXPECT_EQ(file.find(320), nullptr);
  EXPECT_EQ(file.value(320, 7), 7u);
  ASSERT_EQ(file.pieces.size(), 2u);
  EXPECT_EQ(file.piece(1)[0], 0x30);
  EXPECT_EQ(support::uncompressedRows(file), (std::vector<uint8_t>{0x10, 0x20, 0x30, 0x40}));
}

// Every shorter form of the file is refused or has a strip missing; none is read past its end.
TEST(TiffReader, NeverReadsPastTheEnd) {
  for (size_t length = 0; length < kFile.size(); ++length) {
    const std::vector<uint8_t> cut(kFile.begin(), kFile.begin() + static_cast<ptrdiff_t>(length));
    const support::TiffFile file = support::readTiff(cut);
    EXPECT_EQ(file.ok(), length >= 102) << length;
    EXPECT_TRUE(support::uncompressedRows(file).empty()) << length;
  }
}

TEST(TiffReader, SaysWhatIsWrong) {
  std::vector<uint8_t> bytes = kFile;
  bytes[0] = 'M';
  EXPECT_EQ(support::readTiff(bytes).error, "not little-endian");
  bytes = kFile;
  bytes[2] = 43;
  EXPECT_EQ(support::readTiff(bytes).error, "not a TIFF file");
  bytes = kFile;
  bytes[12] = 13;
  EXPECT_EQ(support::readTiff(bytes).error, "entry 257 has the unknown type 13");
  bytes = kFile;
  bytes[57] = 1;
  EXPECT_EQ(support::readTiff(bytes).error, "entry 273 points outside the file");
}

}  // namespace
