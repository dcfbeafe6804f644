// SPDX-License-Identifier: MIT
// libtiff decodes every kind of strip to the pixels that went in. Fax strips come back as the exact
// complement: this library codes a set bit as white, and libtiff gives white runs as clear bits.
#include <gtest/gtest.h>

#include "raxel/tiff_codes.h"
#include "support/cases.h"
#include "tiff/fax_pictures.h"
#include "tiff/fax_strips.h"
#include "tiff/libtiff_reader.h"
#include "tiff/lzw.h"
#include "tiff/packbits.h"

namespace {

using reference::Bytes;
using reference::Kind;
using reference::Picture;

// The rows as libtiff packs them: white clear, black set, pad bits clear.
Bytes complement(const Picture &picture) {
  Picture inverse = picture;
  for (std::string &row : inverse) {
    for (char &pixel : row) pixel = pixel == 'w' ? 'b' : 'w';
  }
  return reference::packPicture(inverse);
}

void checkFax(const Picture &picture, bool pad) {
  const auto width = static_cast<uint32_t>(picture[0].size());
  const auto rows = static_cast<uint32_t>(picture.size());
  const Bytes expected = complement(picture);
  // At the end of a strip libtiff looks 13 bits ahead and counts the missing ones too when it then looks
  // for the byte that the next row starts at. With rows of one byte it so loses the last, unless a byte
  // follows.
  Bytes huffman = support::huffmanStrip(picture, pad);
  huffman.push_back(0);
  ASSERT_EQ(support::readStripWithLibtiff(huffman, {width, rows, 1, 2}), expected);
  ASSERT_EQ(support::readStripWithLibtiff(support::t4Strip(picture, pad), {width, rows, 1, 3}), expected);
  ASSERT_EQ(support::readStripWithLibtiff(support::t6Strip(picture, pad), {width, rows, 1, 4}), expected);
}

class LibtiffReads : public testing::TestWithParam<Kind> {};

TEST_P(LibtiffReads, FaxPicturesComeBackAsTheirComplement) {
  support::Random random(1900 + static_cast<uint64_t>(GetParam()));
  const size_t n = support::cases(720);
  for (size_t i = 0; i < n; ++i) {
    const Picture picture = reference::faxPicture(random, GetParam());
    ASSERT_NO_FATAL_FAILURE(checkFax(picture, random.chance(50)))
        << "case " << i << ", width " << picture[0].size();
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, LibtiffReads,
                         testing::Values(Kind::kWhite, Kind::kBlack, Kind::kText, Kind::kHalftone,
                                         Kind::kNoise, Kind::kStripes, Kind::kDrift));

// Every row is a white run of the length and the rest black, or the other way round.
TEST(LibtiffReadsFax, EveryRunLengthComesBack) {
  const size_t kWidth = 6001;
  const size_t kRows = 100;
  const size_t step = std::max<size_t>(1, 60 / support::cases(60));
  for (size_t first = 0; first <= 6000; first += step * kRows) {
    Picture picture;
    for (size_t run = first; run < first + kRows && run <= 6000; ++run) {
      picture.push_back(std::string(run, 'w') + std::string(kWidth - run, 'b'));
      picture.push_back(std::string(run, 'b') + std::string(kWidth - run, 'w'));
    }
    ASSERT_NO_FATAL_FAILURE(checkFax(picture, false)) << first;
  }
}

TEST(LibtiffReadsFax, StripesOfEveryPeriodComeBack) {
  for (size_t period = 1; period <= 100; ++period) {
    ASSERT_NO_FATAL_FAILURE(checkFax(reference::stripes(311, 3, period), true)) << period;
  }
}

// libtiff cannot decode a strip of one byte, which holds no code for it.
TEST(LibtiffReadsLzw, StripsOfEveryLengthComeBack) {
  support::Random random(1951);
  const size_t step = std::max<size_t>(1, 5000 / support::cases(5000));
  for (size_t length = 2; length <= 5000; length += length < 300 ? 1 : step) {
    const Bytes cycle = random.bytes(static_cast<size_t>(random.between(1, 50)));
    for (size_t kind = 0; kind < 3; ++kind) {
      Bytes strip = random.bytes(length);
      if (kind == 1) strip.assign(length, cycle[0]);
      if (kind == 2) {
        for (size_t i = 0; i < length; ++i) strip[i] = cycle[i % cycle.size()];
      }
      Bytes codes(2 * length + 16);
      codes.resize(tiff::encodeLzw(strip, codes));
      ASSERT_EQ(support::readStripWithLibtiff(codes, {static_cast<uint32_t>(length), 1, 8, 5}), strip)
          << length << " kind " << kind;
    }
  }
}

TEST(LibtiffReadsPackBits, RowsOfEveryLengthComeBack) {
  support::Random random(1952);
  for (size_t length = 1; length <= 1500; ++length) {
    Bytes row(length);
    const auto letters = static_cast<uint8_t>(random.between(1, 255));
    for (uint8_t &byte : row) byte = random.byte() % letters;
    Bytes codes(2 * length + 2);
    codes.resize(tiff::encodePackBits(row, codes.data()));
    ASSERT_EQ(
        support::readStripWithLibtiff(codes, {static_cast<uint32_t>(length), 1, 8, RAXEL_TIFF_PACKBITS}),
        row)
        << length;
  }
}

}  // namespace
