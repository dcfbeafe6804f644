// SPDX-License-Identifier: MIT
// The fax coding by changing elements, which the fuzz targets compare with, is that of one pixel at a time.
#include "tiff/reference_changes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/cases.h"
#include "tiff/fax_code_list.h"
#include "tiff/fax_pictures.h"

namespace {

using reference::Bytes;
using reference::ChangingRows;
using reference::Picture;

Picture inLetters(const ChangingRows &rows, size_t width) {
  Picture picture;
  for (size_t index = 0; index < rows.count(); ++index) {
    std::string row(width, 'w');
    char color = 'w';
    for (const uint32_t place : rows.row(index)) {
      color = color == 'w' ? 'b' : 'w';
      std::fill(row.begin() + static_cast<ptrdiff_t>(place), row.end(), color);
    }
    picture.push_back(row);
  }
  return picture;
}

Bytes eachRow1D(const Picture &picture) {
  Bytes codes;
  for (const std::string &row : picture) {
    const Bytes more = reference::packBits01(reference::fax1D(row));
    codes.insert(codes.end(), more.begin(), more.end());
  }
  return codes;
}

Bytes withEols(const Picture &picture) {
  std::string bits = reference::kEol;
  for (const std::string &row : picture) bits += reference::fax1D(row) + reference::kEol;
  for (int i = 0; i < 5; ++i) bits += reference::kEol;
  return reference::packBits01(bits);
}

// Both kinds of decoder read the same out of any codes.
void expectReadAlike(const Bytes &codes, size_t width, size_t rows) {
  const auto columns = static_cast<uint32_t>(width);
  ASSERT_EQ(inLetters(reference::readHuffman(codes, columns, rows), width),
            reference::unfaxHuffman(codes, width, rows));
  ASSERT_EQ(inLetters(reference::readT4(codes, columns), width), reference::unfaxT4(codes, width));
  ASSERT_EQ(inLetters(reference::readT6(codes, columns, rows), width),
            reference::unfaxT6(codes, width, rows));
}

void check(const Picture &picture, support::Random &random) {
  const size_t width = picture[0].size();
  const auto columns = static_cast<uint32_t>(width);
  const ChangingRows rows =
      reference::changingRows(reference::packPicture(picture, random.chance(50)), columns);
  ASSERT_EQ(inLetters(rows, width), picture);
  const Bytes oneD = eachRow1D(picture), twoD = reference::packBits01(reference::fax2D(picture));
  ASSERT_EQ(reference::huffman(rows, columns), oneD);
  ASSERT_EQ(reference::t6(rows, columns), twoD);
  for (Bytes codes : {oneD, twoD, withEols(picture)}) {
    ASSERT_NO_FATAL_FAILURE(expectReadAlike(codes, width, picture.size()));
    const auto last = static_cast<int64_t>(codes.size()) - 1;
    codes[static_cast<size_t>(random.between(0, last))] = random.byte();
    if (random.chance(50)) codes.resize(static_cast<size_t>(random.between(0, last)));
    ASSERT_NO_FATAL_FAILURE(expectReadAlike(codes, width, picture.size())) << "with a fault";
  }
}

TEST(ReferenceChanges, AreThePlainFormForSeededPictures) {
  support::Random random(910);
  const size_t n = support::cases(350);
  for (size_t i = 0; i < n; ++i) {
    const auto kind = static_cast<reference::Kind>(i % static_cast<size_t>(reference::Kind::kCount));
    const Picture picture = reference::faxPicture(random, kind);
    ASSERT_NO_FATAL_FAILURE(check(picture, random)) << "case " << i << " width " << picture[0].size();
  }
}

TEST(ReferenceChanges, AreThePlainFormForAllPairsOfShortRows) {
  support::Random random(911);
  const size_t width = support::cases(5);
  for (size_t pair = 0; pair < size_t{1} << 2 * width; ++pair) {
    Picture picture(2, std::string(width, 'w'));
    for (size_t x = 0; x < 2 * width; ++x) {
      if ((pair >> x & 1) != 0) picture[x / width][x % width] = 'b';
    }
    ASSERT_NO_FATAL_FAILURE(check(picture, random)) << picture[0] << " and " << picture[1];
  }
}

// Runs of more than one extended code.
TEST(ReferenceChanges, AreThePlainFormForLongRuns) {
  support::Random random(912);
  for (const size_t run : {1u, 63u, 64u, 1791u, 1792u, 2559u, 2560u, 2561u, 2624u, 5120u, 8000u}) {
    const std::string black(run, 'b'), white(run, 'w');
    ASSERT_NO_FATAL_FAILURE(check({black + white + black, white + black + white}, random)) << run;
  }
}

}  // namespace
