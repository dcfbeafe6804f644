// SPDX-License-Identifier: MIT
// Blue, green, red becomes red, green, blue.
#include "tiff/swap.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/random.h"

namespace {

using Bytes = std::vector<uint8_t>;

TEST(SwapRedBlue, SwapsTheOuterBytesOfEachPixel) {
  Bytes two = {1, 2, 3, 4, 5, 6};
  tiff::swapRedBlue(two);
  EXPECT_EQ(two, (Bytes{3, 2, 1, 6, 5, 4}));
}

TEST(SwapRedBlue, BytesThatMakeNoPixelStay) {
  Bytes bytes = {1, 2, 3, 4, 5};
  tiff::swapRedBlue(bytes);
  EXPECT_EQ(bytes, (Bytes{3, 2, 1, 4, 5}));
  Bytes none;
  tiff::swapRedBlue(none);
}

// Every length around the vector code's blocks, at every alignment of a word.
TEST(SwapRedBlue, EqualsBytesSwappedOneByOne) {
  support::Random random(1);
  for (size_t offset = 0; offset < 4; ++offset) {
    for (size_t length = 0; length < 200; ++length) {
      const Bytes source = random.bytes(offset + length);
      Bytes expected = source;
      for (size_t i = offset; i + 3 <= offset + length; i += 3) {
        expected[i] = source[i + 2];
        expected[i + 2] = source[i];
      }
      Bytes fast = source;
      tiff::swapRedBlue(std::span(fast).subspan(offset));
      ASSERT_EQ(fast, expected) << offset << " " << length;
      Bytes plain = source;
      tiff::swapRedBluePlain(std::span(plain).subspan(offset));
      ASSERT_EQ(plain, expected) << offset << " " << length;
    }
  }
}

}  // namespace
