// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "pictures/pam.h"
#include "pictures/picture.h"

namespace {

using host::Picture;

std::span<const uint8_t> bytesOf(const std::string &text) {
  return {reinterpret_cast<const uint8_t *>(text.data()), text.size()};
}

void read(const std::string &file, Picture &out) {
  host::readPnm(bytesOf(file), out);
}

std::string errorOf(const std::string &file) {
  Picture picture;
  try {
    read(file, picture);
  } catch (const host::Unreadable &why) {
    return why.what();
  }
  return "";
}

using namespace std::string_literals;

}  // namespace

TEST(Pnm, SaysWhenFurtherPicturesFollow) {
  const auto notesOf = [](const std::string &text) {
    Picture picture;
    read(text, picture);
    return picture.notes.size();
  };
  EXPECT_EQ(notesOf("P5 1 1 255\nA"), 0u);
  EXPECT_EQ(notesOf("P5 1 1 255\nA\n\n\n"), 0u);
  EXPECT_EQ(notesOf("P5 1 1 255\nAP5 1 1 255\nB"), 1u);
}

TEST(Pnm, ReadsRawColorsWhereTheyLie) {
  const std::string file = "P6\n2 1\n255\nabcdef";
  Picture picture;
  read(file, picture);
  EXPECT_EQ(picture.view.width, 2u);
  EXPECT_EQ(picture.view.height, 1u);
  EXPECT_EQ(picture.view.bits, 24u);
  EXPECT_EQ(picture.view.stride, 6u);
  EXPECT_EQ(static_cast<const void *>(picture.view.rows), file.data() + 11);
  EXPECT_EQ(picture.view.table, nullptr);
}

TEST(Pnm, ReadsRawGreysWhereTheyLie) {
  const std::string file = "P5 3 2 255\n123456";
  Picture picture;
  read(file, picture);
  EXPECT_EQ(picture.view.bits, 8u);
  EXPECT_EQ(static_cast<const void *>(picture.view.rows), file.data() + 11);
}

TEST(Pnm, ASetBitOfABitmapIsBlack) {
  const std::string file = "P4\n9 1\n\x80\x00"s;
  Picture picture;
  read(file, picture);
  EXPECT_EQ(picture.view.bits, 1u);
  EXPECT_EQ(picture.view.stride, 2u);
  ASSERT_EQ(picture.view.colors, 2u);
  EXPECT_EQ(picture.view.table[0], 255);
  EXPECT_EQ(picture.view.table[3], 0);
}

TEST(Pnm, FewerGreyLevelsBecomeATable) {
  const std::string file = "P5 2 1 15\n\x00\x0F"s;
  Picture picture;
  read(file, picture);
  EXPECT_EQ(static_cast<const void *>(picture.view.rows), file.data() + 10);
  EXPECT_EQ(picture.view.table[3], 17);
  EXPECT_EQ(picture.view.table[3 * 15], 255);
  EXPECT_EQ(picture.view.table[3 * 200], 255);  // more than the largest value
}

TEST(Pnm, TwoGreyLevelsTakeOneBit) {
  // Values above the largest are white.
  for (const std::string &file :
       {"P5 3 3 1\n\x00\x01\x00\x01\x00\x07\x00\x00\x01"s, "P2 3 3 1 0 1 0 1 0 7 0 0 1"s}) {
    Picture picture;
    read(file, picture);
    EXPECT_EQ(picture.view.bits, 1u);
    EXPECT_EQ(picture.view.table, nullptr);
    EXPECT_EQ(std::string(picture.view.rows, picture.view.rows + 3), "\x40\xA0\x20"s);
  }
}

TEST(Pnm, SixteenBitsAreReducedWithANote) {
  Picture picture;
  read("P5 2 1 65535\n\x80\x80\xFF\xFF"s, picture);
  EXPECT_EQ(picture.view.rows[0], 128);
  EXPECT_EQ(picture.view.rows[1], 255);
  ASSERT_EQ(picture.notes.size(), 1u);
  EXPECT_EQ(picture.notes[0], "16-bit channels are reduced to 8");
  Picture colors;
  read("P6 1 1 1023\n\x03\xFF\x00\x00\x02\x00"s, colors);
  EXPECT_EQ(colors.view.rows[0], 255);
  EXPECT_EQ(colors.view.rows[1], 0);
  EXPECT_EQ(colors.view.rows[2], 128);
}

TEST(Pnm, ReadsPlainPicturesWithComments) {
  Picture bits;
  read("P1 # a bitmap\n3 2\n1 0 1\n010", bits);
  EXPECT_EQ(std::string(bits.view.rows, bits.view.rows + 2), "\x40\xA0"s);
  Picture greys;
  read("P2\n2 2\n#most\n10\n0 5\n10 10", greys);
  EXPECT_EQ(std::string(greys.view.rows, greys.view.rows + 4), "\x00\x80\xFF\xFF"s);
  Picture colors;
  read("P3 1 1 255 1 2 3", colors);
  EXPECT_EQ(std::string(colors.view.rows, colors.view.rows + 3), "\x01\x02\x03");
}

TEST(Pnm, HeaderFieldsMayBeSplitByAnySpaceAndComments) {
  const std::string file = "P6\r\n# one\n#two\r2\t# three\n1\v\f255 abcdef";
  Picture picture;
  read(file, picture);
  EXPECT_EQ(picture.view.width, 2u);
  EXPECT_EQ(picture.view.rows[0], 'a');
}

TEST(Pnm, RefusesEveryMalformedHeader) {
  EXPECT_EQ(errorOf("P6"), "ends before the width");
  EXPECT_EQ(errorOf("P6\n"), "ends before the width");
  EXPECT_EQ(errorOf("P6\n# only a comment"), "ends before the width");
  EXPECT_EQ(errorOf("P6\n12"), "ends before the height");
  EXPECT_EQ(errorOf("P6\n12 4"), "ends before the largest value");
  EXPECT_EQ(errorOf("P6\nx 4 255\n"), "has no number for the width");
  EXPECT_EQ(errorOf("P6\n-1 4 255\n"), "has no number for the width");
  EXPECT_EQ(errorOf("P6\n1.5 4 255\n"), "has no number for the height");
  EXPECT_EQ(errorOf("P6\n0 4 255\n"), "has no pixels");
  EXPECT_EQ(errorOf("P6\n4 0 255\n"), "has no pixels");
  EXPECT_EQ(errorOf("P6\n1 1 0\nabc"), "has a largest value of 0");
  EXPECT_EQ(errorOf("P6\n1 1 65536\nabc"), "has a largest value above 65535");
  EXPECT_EQ(errorOf("P6\n1 1 255"), "has no space after its header");
  EXPECT_EQ(errorOf("P6\n1 1 255x"), "has no space after its header");
  EXPECT_EQ(errorOf("P4\n1 1"), "has no space after its header");
  EXPECT_EQ(errorOf("P6\n99999999999999999999 1 255\n"), "has a width above 2147483647");
  EXPECT_EQ(errorOf("P6\n2147483648 1 255\n"), "has a width above 2147483647");
}

TEST(Pnm, RefusesMissingPixels) {
  EXPECT_EQ(errorOf("P6\n2 1 255\nabcde"), "ends after 5 of 6 bytes of pixels");
  EXPECT_EQ(errorOf("P5\n2 1 255\n"), "ends after 0 of 2 bytes of pixels");
  EXPECT_EQ(errorOf("P4\n9 2\nabc"), "ends after 3 of 4 bytes of pixels");
  EXPECT_EQ(errorOf("P5\n2 1 256\nabc"), "ends after 3 of 4 bytes of pixels");
  EXPECT_EQ(errorOf("P6\n2147483647 2147483647 255\nabc"),
            "ends after 3 of 13835058042397261827 bytes of pixels");
  EXPECT_EQ(errorOf("P6\n2147483647 1431655767 65535\nabc"),
            "is too large: 2147483647 by 1431655767 pixels");
  EXPECT_EQ(errorOf("P2\n2 2 255\n1 2 3"), "ends before the pixel");
  EXPECT_EQ(errorOf("P3\n65535 65535 255\n1 2 3"), "ends in the middle of its pixels");
  EXPECT_EQ(errorOf("P1\n4 1\n10x1"), "has a pixel that is neither 0 nor 1");
  EXPECT_EQ(errorOf("P2\n1 1 255\n70000"), "has a pixel above 65535");
}

TEST(Pnm, EveryPrefixOfAPictureIsReadOrRefused) {
  for (const std::string &file : {"P6\n3 2\n255\nabcdefghijklmnopqr"s, "P3 2 2 9\n1 2 3 4 5 6 7 8 9 1 2 3"s,
                                  "P4\n10 3\n123456"s, "P5 4 2 700\n1234567812345678"s}) {
    for (size_t length = 2; length <= file.size(); ++length) {
      // A block of just this size, so that a read beyond it is seen by the sanitizer.
      const std::vector<char> part(file.begin(), file.begin() + static_cast<ptrdiff_t>(length));
      Picture picture;
      try {
        host::readPnm({reinterpret_cast<const uint8_t *>(part.data()), part.size()}, picture);
        // Only a plain picture may lose the last digit of its last number.
        EXPECT_GE(length + 1, file.size());
      } catch (const host::Unreadable &) {
        EXPECT_LT(length, file.size());
      }
    }
  }
}

namespace {

std::string pam(const std::string &depth, const std::string &most, const std::string &pixels) {
  return "P7\nWIDTH 2\nHEIGHT 1\nDEPTH " + depth + "\nMAXVAL " + most + "\nTUPLTYPE ANY\nENDHDR\n" + pixels;
}

std::vector<uint8_t> rowOf(const std::string &file, uint32_t bits) {
  Picture picture;
  read(file, picture);
  EXPECT_EQ(picture.view.bits, bits);
  EXPECT_EQ(picture.view.width, 2u);
  EXPECT_EQ(picture.view.height, 1u);
  const uint8_t *row = picture.view.rows;
  return {row, row + (2 * bits + 7) / 8};
}

using Row = std::vector<uint8_t>;

}  // namespace

TEST(Pam, HasThePixelsOfARawPgmOrPpm) {
  EXPECT_EQ(rowOf(pam("1", "255", "\x12\x34"), 8), (Row{0x12, 0x34}));
  EXPECT_EQ(rowOf(pam("1", "65535", "\x40\x00\xFF\xFF"s), 8), (Row{0x40, 0xFF}));
  EXPECT_EQ(rowOf(pam("3", "255", "abcdef"), 24), (Row{'a', 'b', 'c', 'd', 'e', 'f'}));
  EXPECT_EQ(rowOf(pam("3", "65535", "\x12\x34\x56\x78\x9A\xBC\xDE\xF0\x11\x22\x33\x44"), 24),
            (Row{0x12, 0x56, 0x9A, 0xDE, 0x11, 0x33}));
  // Black and white: 1 is white, a byte each.
  EXPECT_EQ(rowOf(pam("1", "1", "\0\1"s), 1), (Row{0x40}));
}

TEST(Pam, NeedsAHeaderThatIsWhole) {
  EXPECT_TRUE(host::isOpaquePam(bytesOf(pam("1", "255", ""))));
  EXPECT_TRUE(
      host::isOpaquePam(bytesOf("P7\n# so\n\n MAXVAL\t7 \nDEPTH 3\nHEIGHT 1\nWIDTH 9\r\nENDHDR\n"s)));
  EXPECT_FALSE(host::isOpaquePam(bytesOf(pam("2", "255", ""))));
  EXPECT_FALSE(host::isOpaquePam(bytesOf(pam("4", "255", ""))));
  EXPECT_TRUE(host::pamHeader(bytesOf(pam("4", "255", ""))));
  for (const std::string &wrong :
       {pam("5", "255", ""), pam("0", "255", ""), pam("1", "65536", ""), pam("1", "0", ""),
        pam("1", "-1", ""), pam("1", "2x", ""), pam("1", "", "")})
    EXPECT_FALSE(host::pamHeader(bytesOf(wrong))) << wrong;
  const std::string whole = pam("1", "255", "");
  for (size_t size = 0; size < whole.size(); ++size)
    EXPECT_FALSE(host::pamHeader(bytesOf(whole.substr(0, size)))) << size;
  EXPECT_EQ(host::pamHeader(bytesOf(whole))->pixelsAt, whole.size());
  // Long comments, but not without end.
  EXPECT_TRUE(host::pamHeader(bytesOf("P7\n#" + std::string(5000, 'x') + "\n" + whole.substr(3))));
  EXPECT_FALSE(host::pamHeader(bytesOf("P7\n#" + std::string(1 << 20, 'x') + "\n" + whole.substr(3))));
}

TEST(Pam, EndsInTheMiddleOfItsPixels) {
  EXPECT_EQ(errorOf(pam("3", "255", "abcde")), "ends after 5 of 6 bytes of pixels");
}
