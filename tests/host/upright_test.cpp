#include <gtest/gtest.h>

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

TEST(Upright, ExchangesTheResolutions) {
  host::Picture picture;
  picture.allocate(2, 3, 8);
  picture.dpiX = 100;
  picture.dpiY = 200;
  host::turnUpright(picture, 8);
  EXPECT_EQ(picture.dpiX, 200);
  EXPECT_EQ(picture.dpiY, 100);
}
