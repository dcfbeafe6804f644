// SPDX-License-Identifier: MIT
// Pictures of four bytes a pixel, changed in place.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "raxel/color.h"
#include "raxel/memory.h"
#include "support/blocks.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Convert = void (*)(Handle bits, uint32_t width, uint32_t height);

Bytes convert(Convert function, const Bytes &bits, uint32_t width, uint32_t height) {
  const Handle block = support::newBlock(bits.size());
  if (!bits.empty()) std::memcpy(GlobalLock(block), bits.data(), bits.size());
  function(block, width, height);
  const auto *p = static_cast<const uint8_t *>(GlobalLock(block));
  Bytes out(p, p + bits.size());
  GlobalFree(block);
  return out;
}

TEST(Cmyk, IsTheComplementWithoutBlack) {
  EXPECT_EQ(convert(rlRGB4toCMYK, {255, 0, 128, 77}, 1, 1), (Bytes{0, 255, 127, 0}));
  EXPECT_EQ(convert(rlRGB4toCMYK, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 3, 1),
            (Bytes{254, 253, 252, 0, 250, 249, 248, 0, 246, 245, 244, 0}));
  EXPECT_EQ(convert(rlRGB4toCMYK, {1, 2, 3, 4, 5, 6, 7, 8}, 1, 2),
            (Bytes{254, 253, 252, 0, 250, 249, 248, 0}));
}

TEST(Cmyk, BecomesRgbPackedAtTheStart) {
  EXPECT_EQ(convert(rlCMYKtoRGB, {0, 0, 0, 0}, 1, 1), (Bytes{255, 255, 255, 0}));
  EXPECT_EQ(convert(rlCMYKtoRGB, {10, 200, 30, 100}, 1, 1), (Bytes{155, 55, 155, 100}));
  EXPECT_EQ(convert(rlCMYKtoRGB, {1, 2, 3, 255}, 1, 1), (Bytes{0, 0, 0, 255}));
  // Two rows of one pixel: no padding between them, and the last two bytes keep their values.
  EXPECT_EQ(convert(rlCMYKtoRGB, {10, 20, 30, 0, 40, 50, 60, 7}, 1, 2),
            (Bytes{245, 235, 225, 215, 205, 195, 60, 7}));
}

TEST(Alpha, EveryFourthByteIsDropped) {
  EXPECT_EQ(convert(rlALPHAtoRGB, {1, 2, 3, 4, 5, 6, 7, 8}, 2, 1), (Bytes{1, 2, 3, 5, 6, 7, 7, 8}));
  EXPECT_EQ(convert(rlALPHAtoRGB, {1, 2, 3, 4}, 1, 1), (Bytes{1, 2, 3, 4}));
}

TEST(FourBytes, NoPixelsChangeNothing) {
  for (const Convert function : {rlRGB4toCMYK, rlCMYKtoRGB, rlALPHAtoRGB}) {
    const Bytes bits{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(convert(function, bits, 0, 2), bits);
    EXPECT_EQ(convert(function, bits, 2, 0), bits);
    function(0, 2, 2);
  }
}

TEST(FourBytes, OnlyThePixelsOfTheBlockAreConverted) {
  const Bytes bits{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};  // two pixels and three bytes
  EXPECT_EQ(convert(rlRGB4toCMYK, bits, 100, 100), (Bytes{254, 253, 252, 0, 250, 249, 248, 0, 9, 10, 11}));
  EXPECT_EQ(convert(rlCMYKtoRGB, bits, 0xFFFFFFFF, 0xFFFFFFFF),
            (Bytes{251, 251, 251, 247, 247, 247, 7, 8, 9, 10, 11}));
  EXPECT_EQ(convert(rlALPHAtoRGB, bits, 65536, 65536), (Bytes{1, 2, 3, 5, 6, 7, 7, 8, 9, 10, 11}));
  for (const Convert function : {rlRGB4toCMYK, rlCMYKtoRGB, rlALPHAtoRGB}) {
    EXPECT_EQ(convert(function, {1, 2, 3}, 1, 1), (Bytes{1, 2, 3}));
    EXPECT_TRUE(convert(function, {}, 1, 1).empty());
  }
}

}  // namespace
