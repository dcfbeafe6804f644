// Fax coders over seeded pictures: equal to the plain form, and decoded to the same pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/cases.h"
#include "tiff/fax_1d.h"
#include "tiff/fax_2d.h"
#include "tiff/fax_pictures.h"

namespace {

using Bytes = std::vector<uint8_t>;
using reference::Kind;
using reference::Picture;

Bytes take(const tiff::FaxBuffer &buffer, uint32_t n) {
  return Bytes(buffer.data(), buffer.data() + n);
}

uint32_t widthOf(const Picture &picture) {
  return static_cast<uint32_t>(picture[0].size());
}

Bytes encodeRow(const std::string &row, uint32_t compression, bool pad) {
  const Bytes packed = reference::packRow(row, pad);
  tiff::FaxBuffer buffer(runtime::allocate(packed.size() * 2));
  return take(buffer, tiff::encodeFaxRow(packed, static_cast<uint32_t>(row.size()), compression, buffer));
}

void append(Bytes &to, const Bytes &more) {
  to.insert(to.end(), more.begin(), more.end());
}

// A strip as a file holds it.
Bytes huffmanStrip(const Picture &picture, bool pad) {
  Bytes strip;
  for (const std::string &row : picture) append(strip, encodeRow(row, 2, pad));
  return strip;
}

Bytes t4Strip(const Picture &picture, bool pad) {
  Bytes strip = {0x00, 0x01};
  for (const std::string &row : picture) append(strip, encodeRow(row, 3, pad));
  for (int i = 0; i < 5; ++i) append(strip, {0x00, 0x01});
  return strip;
}

Bytes t6Strip(const Picture &picture, bool pad) {
  const Bytes packed = reference::packPicture(picture, pad);
  tiff::FaxBuffer buffer(runtime::allocate(packed.size() * 2));
  return take(buffer,
              tiff::encodeFax2D(packed, widthOf(picture), static_cast<uint32_t>(picture.size()), buffer));
}

void check(const Picture &picture, bool pad) {
  const size_t width = picture[0].size();
  for (const std::string &row : picture) {
    ASSERT_EQ(encodeRow(row, 2, pad), reference::packBits01(reference::fax1D(row)));
  }
  ASSERT_EQ(reference::unfaxHuffman(huffmanStrip(picture, pad), width, picture.size()), picture);
  ASSERT_EQ(reference::unfaxT4(t4Strip(picture, pad), width), picture);
  const Bytes t6 = t6Strip(picture, pad);
  ASSERT_EQ(t6, reference::packBits01(reference::fax2D(picture)));
  ASSERT_EQ(reference::unfaxT6(t6, width, picture.size()), picture);
}

class FaxPictures : public testing::TestWithParam<Kind> {};

TEST_P(FaxPictures, EqualThePlainFormAndDecode) {
  support::Random random(900 + static_cast<uint64_t>(GetParam()));
  const size_t n = support::cases(720);
  for (size_t i = 0; i < n; ++i) {
    const Picture picture = reference::faxPicture(random, GetParam());
    ASSERT_NO_FATAL_FAILURE(check(picture, random.chance(50)))
        << "case " << i << " width " << widthOf(picture);
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, FaxPictures,
                         testing::Values(Kind::kWhite, Kind::kBlack, Kind::kText, Kind::kHalftone,
                                         Kind::kNoise, Kind::kStripes, Kind::kDrift));

TEST(FaxStripes, EveryPeriod) {
  const size_t step = std::max<size_t>(1, 200 / support::cases(200));
  for (size_t period = 1; period <= 200; period += step) {
    for (const size_t width : {period, 2 * period + 1, size_t{257}}) {
      ASSERT_NO_FATAL_FAILURE(check(reference::stripes(width, 3, period), period % 2 == 0)) << period;
    }
  }
}

// Rows that differ from each other in one place, at every place of two 64-pixel words.
TEST(FaxStripes, OnePixelAtEveryPlace) {
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
