// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "pictures/picture.h"

// The picture
//   a b c
//   d e f
// stored in each of the eight ways of Exif; upright it reads abc, def again.
TEST(Upright, UndoesEveryOrientation) {
  struct Stored {
    int orientation;
    uint32_t width;
    const char *pixels;
  };
  for (const Stored &stored :
       {Stored{1, 3, "abcdef"}, Stored{2, 3, "cbafed"}, Stored{3, 3, "fedcba"}, Stored{4, 3, "defabc"},
        Stored{5, 2, "adbecf"}, Stored{6, 2, "cfbead"}, Stored{7, 2, "fcebda"}, Stored{8, 2, "daebfc"}}) {
    for (uint32_t bits : {8u, 24u}) {
      host::Picture picture;
      picture.allocate(stored.width, 6 / stored.width, bits);
      const size_t bytes = bits / 8;
      for (size_t i = 0; i < 6 * bytes; ++i)
        picture.pixels.data()[i] = static_cast<uint8_t>(stored.pixels[i / bytes]);
      host::turnUpright(picture, stored.orientation);
      ASSERT_EQ(picture.view.width, 3u);
      std::string got;
      for (size_t i = 0; i < 6; ++i) got += static_cast<char>(picture.view.rows[i * bytes]);
      EXPECT_EQ(got, "abcdef") << stored.orientation;
    }
  }
}

// The picture
//   0 1 1
//   1 0 0
// in pixels of less than a byte: mirrored, upside down, and on each side.
TEST(Upright, TurnsPixelsOfLessThanAByte) {
  struct Stored {
    int orientation;
    uint32_t width;
    std::vector<uint8_t> rows1, rows2, rows4;  // by bits a pixel
  };
  for (const Stored &stored : {Stored{1, 3, {0x60, 0x80}, {0x14, 0x40}, {0x01, 0x10, 0x10, 0x00}},
                               Stored{2, 3, {0xC0, 0x20}, {0x50, 0x04}, {0x11, 0x00, 0x00, 0x10}},
                               Stored{3, 3, {0x20, 0xC0}, {0x04, 0x50}, {0x00, 0x10, 0x11, 0x00}},
                               Stored{5, 2, {0x40, 0x80, 0x80}, {0x10, 0x40, 0x40}, {0x01, 0x10, 0x10}},
                               Stored{6, 2, {0x80, 0x80, 0x40}, {0x40, 0x40, 0x10}, {0x10, 0x10, 0x01}},
                               Stored{8, 2, {0x80, 0x40, 0x40}, {0x40, 0x10, 0x10}, {0x10, 0x01, 0x01}}}) {
    for (const uint32_t bits : {1u, 2u, 4u}) {
      const std::vector<uint8_t> &rows = bits == 1 ? stored.rows1 : bits == 2 ? stored.rows2 : stored.rows4;
      host::Picture picture;
      picture.allocate(stored.width, 6 / stored.width, bits);
      ASSERT_EQ(picture.pixels.size(), rows.size());
      std::copy(rows.begin(), rows.end(), picture.pixels.data());
      host::turnUpright(picture, stored.orientation);
      ASSERT_EQ(picture.view.width, 3u);
      std::string got;
      for (uint32_t y = 0; y < 2; ++y) {
        for (uint32_t x = 0; x < 3; ++x) {
          const uint8_t byte = picture.view.rows[picture.view.stride * y + x * bits / 8];
          got += static_cast<char>('0' + (byte >> (8 - bits - x * bits % 8) & ((1 << bits) - 1)));
        }
      }
      EXPECT_EQ(got, "011100") << stored.orientation << " in " << bits << " bits";
    }
  }
}

TEST(Upright, ExchangesTheResolutions) {
  host::Picture picture;
  picture.allocate(2, 3, 8);
  picture.dpiX = 100;
  picture.dpiY = 200;
  host::turnUpright(picture, 8);
  EXPECT_EQ(picture.dpiX, 200);
  EXPECT_EQ(picture.dpiY, 100);
}
