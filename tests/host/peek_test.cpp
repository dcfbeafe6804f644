// SPDX-License-Identifier: MIT
#include "pictures/peek.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pictures/picture.h"
#include "pictures/webp_pieces.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes operator+(Bytes a, const Bytes &b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// Screen of 1 by 1 with a table of two colours, and where the picture begins.
const Bytes kGifFront{'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0x80, 0, 0, 0, 0, 0, 255, 255, 255};
const Bytes kGifPicture{0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0, 2, 2, 0x44, 1, 0, 0x3B};
const Bytes kComment{0x21, 0xFE, 3, 'a', 'b', 'c', 1, '!', 0};

// A still of the lossless code, 1 by 1, as far as its size.
const Bytes kWebp{'R', 'I', 'F', 'F', 22, 0,    0, 0, 'W', 'E', 'B', 'P', 'V', 'P', '8',
                  'L', 10,  0,   0,   0,  0x2F, 0, 0, 0,   0,   0,   0,   0,   0,   0};

Bytes control(uint8_t flags, uint8_t index) {
  return {0x21, 0xF9, 4, flags, 0, 0, index, 0};
}

}  // namespace

TEST(Peek, FindsTheTransparentColorOfAGif) {
  EXPECT_EQ(host::gifTransparentIndex(kGifFront + kGifPicture), -1);
  EXPECT_EQ(host::gifTransparentIndex(kGifFront + control(1, 1) + kGifPicture), 1);
  EXPECT_EQ(host::gifTransparentIndex(kGifFront + control(0, 1) + kGifPicture), -1);
  EXPECT_EQ(host::gifTransparentIndex(kGifFront + kComment + control(9, 0) + kComment + kGifPicture), 0);
  // That of a second picture does not count.
  EXPECT_EQ(host::gifTransparentIndex(kGifFront + kGifPicture + control(1, 1) + kGifPicture), -1);
}

TEST(Peek, SeesFurtherPicturesOfAGif) {
  const Bytes picture(kGifPicture.begin(), kGifPicture.end() - 1), end{0x3B};
  EXPECT_FALSE(host::gifHasFurtherPictures(kGifFront + picture + end));
  EXPECT_FALSE(
      host::gifHasFurtherPictures(kGifFront + kComment + control(1, 1) + picture + kComment + end));
  EXPECT_TRUE(host::gifHasFurtherPictures(kGifFront + picture + picture + end));
  EXPECT_TRUE(host::gifHasFurtherPictures(kGifFront + picture + control(1, 1) + kComment + picture + end));
  // The first one with a table of its own, of four colours; what follows the end does not count.
  const Bytes own = Bytes{0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0x81} + Bytes(12, 0x2C) + Bytes{2, 2, 0x44, 1, 0};
  EXPECT_FALSE(host::gifHasFurtherPictures(kGifFront + own + end + picture));
  EXPECT_TRUE(host::gifHasFurtherPictures(kGifFront + own + picture + end));
}

TEST(Peek, FindsTheWidthOfAWebp) {
  const auto widthOf = [](const char *kind, const Bytes &rest) {
    Bytes file = kWebp;
    std::copy(kind, kind + 4, file.begin() + 12);
    std::ranges::copy(rest, file.begin() + 20);
    file.resize(20 + rest.size());
    return host::webpWidth(file);
  };
  // In 14 bits, of which the lossless code has one less than there are pixels; and of a canvas in 24.
  EXPECT_EQ(widthOf("VP8 ", {0, 0, 0, 0x9D, 1, 0x2A, 0x39, 0xF0, 7, 0}), 0x3039u);
  EXPECT_EQ(widthOf("VP8L", {0x2F, 0x38, 0xF0, 1, 0, 0, 0, 0, 0, 0}), 0x3039u);
  EXPECT_EQ(widthOf("VP8X", {0, 0, 0, 0, 0x38, 0x30, 1, 0, 0, 0}), 0x13039u);
  EXPECT_EQ(widthOf("VP8 ", {0, 0, 0, 0x9D, 1, 0x2A, 0x39, 0xF0, 7}), 0u);
  EXPECT_EQ(widthOf("VP8X", {0, 0, 0, 0, 0x38, 0x30, 1, 0, 0}), 0u);
  EXPECT_EQ(widthOf("ALPH", {0, 0, 0, 0x9D, 1, 0x2A, 0x39, 0xF0, 7, 0}), 0u);
  EXPECT_EQ(host::webpWidth(Bytes(kWebp.begin(), kWebp.begin() + 26)), 1u);
  EXPECT_EQ(host::webpWidth(Bytes(kWebp.begin(), kWebp.begin() + 25)), 0u);
  Bytes other = kWebp;
  other[0] = 'r';
  EXPECT_EQ(host::webpWidth(other), 0u);
}

TEST(Peek, CutsTheFramesOutOfAGif) {
  const Bytes picture(kGifPicture.begin(), kGifPicture.end() - 1), end{0x3B};
  const Bytes file = kGifFront + kComment + control(9, 1) + picture + picture + control(0x0C, 1) +
                     kComment + picture + kComment + end;
  const std::vector<host::GifFrame> frames = host::gifFrames(file);
  ASSERT_EQ(frames.size(), 3u);
  const auto alone = [&](const host::GifFrame &frame) { return host::gifFrameAlone(file, frame.start); };
  EXPECT_EQ(alone(frames[0]), kGifFront + kComment + control(9, 1) + picture + end);
  EXPECT_EQ(host::gifFrameAlone(file, 0), alone(frames[0]));
  EXPECT_EQ(alone(frames[1]), kGifFront + picture + end);
  EXPECT_EQ(alone(frames[2]), kGifFront + control(0x0C, 1) + kComment + picture + end);
  EXPECT_EQ(frames[0].transparent, 1);
  EXPECT_EQ(frames[1].transparent, -1);
  EXPECT_EQ(frames[2].transparent, -1);
  EXPECT_EQ(frames[0].disposal, 2u);
  EXPECT_EQ(frames[2].disposal, 3u);
}

TEST(Peek, AGifGoesOnToItsEnd) {
  const Bytes picture(kGifPicture.begin(), kGifPicture.end() - 1), end{0x3B};
  const Bytes shortComment{0x21, 0xFE, 1, 'a', 0}, none{0x21, 0xFE, 0};
  EXPECT_TRUE(host::gifIsWhole(kGifFront + picture + end));
  EXPECT_TRUE(host::gifIsWhole(kGifFront + picture + shortComment + none + end));
  EXPECT_TRUE(host::gifIsWhole(kGifFront + kComment + picture + control(9, 1) + picture + end + kComment));
  const Bytes whole = kGifFront + picture + control(9, 1) + picture + shortComment + end;
  for (size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(host::gifIsWhole(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length))))
        << length;
  EXPECT_FALSE(host::gifIsWhole(kGifFront + picture + Bytes(20)));
}

TEST(Peek, FindsTheScreenOfAGif) {
  const auto screenOf = [](uint8_t width, uint8_t height, const Bytes &place) {
    Bytes file =
        kGifFront + kComment + control(1, 1) + Bytes{0x2C} + place + Bytes{0, 2, 2, 0x44, 1, 0, 0x3B};
    file[6] = width;
    file[8] = height;
    const host::GifScreen screen = host::gifScreen(file);
    return std::vector<uint32_t>{screen.width, screen.height, screen.left, screen.top};
  };
  EXPECT_EQ(screenOf(9, 8, {3, 0, 2, 0, 4, 0, 5, 0}), (std::vector<uint32_t>{9, 8, 3, 2}));
  EXPECT_EQ(screenOf(9, 8, {3, 0, 2, 0, 7, 0, 9, 1}), (std::vector<uint32_t>{10, 267, 3, 2}));
  const Bytes none = kGifFront + kComment;
  EXPECT_EQ(host::gifScreen(none).width, 0u);
}

TEST(Peek, TrustsNoLength) {
  const Bytes gif = kGifFront + kComment + control(1, 1) + kGifPicture;
  for (const Bytes &whole : {gif, kWebp}) {
    for (size_t length = 0; length <= whole.size(); ++length) {
      for (size_t at = 0; at < length; ++at) {
        for (const uint8_t value : Bytes{0, 1, 255}) {
          Bytes part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
          part[at] = value;
          EXPECT_LT(host::gifTransparentIndex(part), 256);
          EXPECT_LE(host::webpWidth(part), 1u << 24);
          EXPECT_LE(host::gifScreen(part).width, 131070u);
          host::gifIsWhole(part);
          host::gifHasFurtherPictures(part);
          for (const host::GifFrame &frame : host::gifFrames(part))
            EXPECT_LE(host::gifFrameAlone(part, frame.start).size(), part.size() + 1);
        }
      }
    }
  }
}
