// SPDX-License-Identifier: MIT
// Fax coders over seeded pictures: equal to the plain form, and decoded to the same pixels.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/cases.h"
#include "tiff/fax_pictures.h"
#include "tiff/fax_strips.h"

namespace {

using reference::Bytes;
using reference::Kind;
using reference::Picture;

void check(const Picture &picture, bool pad) {
  const size_t width = picture[0].size();
  for (const std::string &row : picture) {
    ASSERT_EQ(support::faxRow(row, 2, pad), reference::packBits01(reference::fax1D(row)));
  }
  ASSERT_EQ(reference::unfaxHuffman(support::huffmanStrip(picture, pad), width, picture.size()), picture);
  ASSERT_EQ(reference::unfaxT4(support::t4Strip(picture, pad), width), picture);
  const Bytes t6 = support::t6Strip(picture, pad);
  ASSERT_EQ(t6, reference::packBits01(reference::fax2D(picture)));
  ASSERT_EQ(support::t6StripPlain(picture, pad), t6);
  ASSERT_EQ(reference::unfaxT6(t6, width, picture.size()), picture);
}

class FaxPictures : public testing::TestWithParam<Kind> {};

TEST_P(FaxPictures, EqualThePlainFormAndDecode) {
  support::Random random(900 + static_cast<uint64_t>(GetParam()));
  const size_t n = support::cases(720);
  for (size_t i = 0; i < n; ++i) {
    const Picture picture = reference::faxPicture(random, GetParam());
    ASSERT_NO_FATAL_FAILURE(check(picture, random.chance(50)))
        << "case " << i << " width " << picture[0].size();
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, FaxPictures,
                         testing::Values(Kind::kWhite, Kind::kBlack, Kind::kText, Kind::kHalftone,
                                         Kind::kNoise, Kind::kStripes, Kind::kDrift));

TEST(FaxStripes, StripesOfEveryPeriodReadBack) {
  const size_t step = std::max<size_t>(1, 200 / support::cases(200));
  for (size_t period = 1; period <= 200; period += step) {
    for (const size_t width : {period, 2 * period + 1, size_t{257}}) {
      ASSERT_NO_FATAL_FAILURE(check(reference::stripes(width, 3, period), period % 2 == 0)) << period;
    }
  }
  for (size_t period = 201; period <= 3000; period += 9 * step) {
    ASSERT_NO_FATAL_FAILURE(check(reference::stripes(3000, 2, period), period % 2 == 0)) << period;
  }
}

// Rows that differ from each other in one place, at every place of two 64-pixel words.
TEST(FaxStripes, OnePixelAtEveryPlaceReadsBack) {
  for (size_t x = 0; x < 140; x += 1) {
    Picture picture(3, std::string(140, 'w'));
    picture[0][x] = 'b';
    picture[2][139 - x] = 'b';
    ASSERT_NO_FATAL_FAILURE(check(picture, true)) << x;
    for (std::string &row : picture) {
      for (char &pixel : row) pixel = pixel == 'w' ? 'b' : 'w';
    }
    ASSERT_NO_FATAL_FAILURE(check(picture, false)) << x;
  }
}

}  // namespace
