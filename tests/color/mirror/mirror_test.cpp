// SPDX-License-Identifier: MIT
// Mirroring and four-byte pictures at every level of vector instructions, beside the plain forms.
#include "color/mirror/mirror.h"

#include <gtest/gtest.h>

#include "color/levels.h"
#include "color/pictures.h"
#include "color/reference/pixels.h"
#include "color/reference/scale.h"
#include "raxel/color.h"
#include "support/cases.h"
#include "support/page_end.h"
#include "support/random.h"

namespace {

using pictures::kDepths;
using reference::Bytes;

TEST(Mirror, GivesTheSamePicturesAtEveryLevel) {
  support::Random random(141);
  for (size_t n = 0; n < support::cases(2500); ++n) {
    const int16_t depth = kDepths[n % 5];
    const auto width = static_cast<uint32_t>(n / 5 + 1);
    const auto height = static_cast<uint32_t>(random.between(1, 4));
    const bool topBottom = random.chance(50);
    const Bytes bits = random.bytes(size_t{reference::lineBytes(width, depth)} * height);
    // What lies past the memory reads as 0 and is not written.
    Bytes expected = bits;
    expected.resize(bits.size() + 4);
    reference::flip(expected, depth, width, height, true, topBottom);
    expected.resize(bits.size());
    for (const color::Vectors level : levels::all()) {
      const levels::AtMost limit(level);
      const support::PageEnd picture(bits);
      rlFlipBitmap(picture.handle(), depth, width, height, 1, topBottom ? 1 : 0);
      ASSERT_TRUE(picture.bytes() == expected)
          << depth << " bits, " << width << "x" << height << " at level " << levels::number(level);
    }
  }
}

TEST(Mirror, LeavesTheMiddlePixelsOfOddWidths) {
  // Pairs reach up to half the width, truncated: of 21 pixels, 10 and 11 keep their places.
  Bytes bits(24);
  for (size_t i = 0; i < 21; ++i) bits[i] = static_cast<uint8_t>(i);
  bits[21] = 99;
  for (const color::Vectors level : levels::all()) {
    const levels::AtMost limit(level);
    const support::PageEnd picture(bits);
    rlFlipBitmap(picture.handle(), 8, 21, 1, 1, 0);
    EXPECT_EQ(picture.bytes(),
              (Bytes{99, 20, 19, 18, 17, 16, 15, 14, 13, 12, 10, 11, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
  }
}

TEST(Mirror, ExchangesTouchingStretches) {
  // Two stretches that meet, and two with pixels between them: those stay.
  for (const color::Vectors level : levels::all()) {
    const levels::AtMost limit(level);
    for (size_t n = 0; n < 40; ++n) {
      for (const size_t between : {size_t{0}, size_t{1}, size_t{7}}) {
        Bytes pixels(3 * (2 * n + between));
        for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i);
        Bytes expected = pixels;
        const size_t count = 2 * n + between;
        for (size_t i = 0; i < count; ++i) {
          const bool stays = i >= n && i < n + between;
          for (size_t c = 0; c < 3; ++c) expected[3 * i + c] = pixels[3 * (stays ? i : count - 1 - i) + c];
        }
        color::kernels().mirrorTriples(pixels.data(), pixels.data() + pixels.size(), n);
        ASSERT_EQ(pixels, expected) << n << " and " << between;
      }
    }
  }
}

TEST(FourBytes, GiveTheSameAtEveryLevel) {
  support::Random random(142);
  for (size_t n = 0; n < support::cases(200); ++n) {
    const Bytes bits = random.bytes(4 * n + n % 4);
    const auto check = [&](auto ours, auto theirs) {
      Bytes expected(bits.begin(), bits.begin() + static_cast<ptrdiff_t>(4 * n));
      theirs(expected);
      expected.insert(expected.end(), bits.begin() + static_cast<ptrdiff_t>(4 * n), bits.end());
      for (const color::Vectors level : levels::all()) {
        const levels::AtMost limit(level);
        const support::PageEnd picture(bits);
        ours(picture.handle(), static_cast<uint32_t>(n), 1);
        ASSERT_EQ(picture.bytes(), expected) << n << " pixels at level " << levels::number(level);
      }
    };
    check(rlCMYKtoRGB, reference::cmykToRgb);
    check(rlALPHAtoRGB, reference::dropAlpha);
  }
}

}  // namespace
