// SPDX-License-Identifier: MIT
#include "pictures/peek.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "pictures/picture.h"

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

Bytes control(uint8_t flags, uint8_t index) {
  return {0x21, 0xF9, 4, flags, 0, 0, index, 0};
}

Bytes box(const char *kind, const Bytes &content) {
  const auto size = static_cast<uint8_t>(8 + content.size());
  return Bytes{0,
               0,
               0,
               size,
               static_cast<uint8_t>(kind[0]),
               static_cast<uint8_t>(kind[1]),
               static_cast<uint8_t>(kind[2]),
               static_cast<uint8_t>(kind[3])} +
         content;
}

// Height 9, width 8, the channels, 8 bits, and what does not matter.
Bytes imageHeader(uint8_t channels) {
  return box("ihdr", {0, 0, 0, 9, 0, 0, 0, 8, 0, channels, 7, 7, 0, 0});
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

TEST(Peek, FindsTheChannelsOfAJpeg2000) {
  const Bytes front = box("jP  ", {13, 10, 0x87, 10}) + box("ftyp", {'j', 'p', '2', ' '});
  EXPECT_EQ(host::jpeg2000Channels(front + box("jp2h", box("colr", {1, 0, 0}) + imageHeader(4))), 4u);
  EXPECT_EQ(host::jpeg2000Channels(front + box("jp2h", imageHeader(3))), 3u);
  EXPECT_EQ(host::jpeg2000Channels(front + box("jp2c", imageHeader(3))), 0u);
  Bytes bare(50);
  const Bytes markers{0xFF, 0x4F, 0xFF, 0x51};
  std::copy(markers.begin(), markers.end(), bare.begin());
  bare[41] = 2;
  EXPECT_EQ(host::jpeg2000Channels(bare), 2u);
}

TEST(Peek, FindsTheGridOfAJpeg2000) {
  // 11 by 5 samples, of which 7 by 4 are the picture's.
  Bytes code{0xFF, 0x4F, 0xFF, 0x51, 0, 0, 0, 0, 0, 0, 0, 11, 0, 0, 0, 5, 0, 0, 0, 4, 0, 0, 0, 1};
  code.resize(42);
  code[41] = 2;
  const Bytes whole{7, 1, 1}, half{7, 2, 1}, third{7, 1, 3};
  const Bytes front = box("jP  ", {13, 10, 0x87, 10}) + box("jp2h", imageHeader(2));
  const auto gridOf = [](const Bytes &file) {
    const host::Jpeg2000Grid grid = host::jpeg2000Grid(file);
    return std::array<uint32_t, 3>{grid.width, grid.height, grid.isCoarse};
  };
  using Grid = std::array<uint32_t, 3>;
  const auto inBox = [&](const Bytes &content) { return front + box("jp2c", content); };
  for (const Bytes &channels : {whole + half, third + whole, whole}) {  // the last one ends too early
    EXPECT_EQ(gridOf(code + channels), (Grid{7, 4, true}));
    EXPECT_EQ(gridOf(inBox(code + channels)), (Grid{7, 4, true}));
  }
  EXPECT_EQ(gridOf(code + whole + whole), (Grid{7, 4, false}));
  EXPECT_EQ(gridOf(inBox(code + whole + whole)), (Grid{7, 4, false}));
  Bytes longer = inBox(code + whole + half);
  longer[front.size()] = 0x7F;  // a length beyond the file's end
  EXPECT_EQ(gridOf(longer), (Grid{7, 4, true}));
  Bytes outside = code + whole + whole;
  outside[19] = 12;  // begins behind the grid's end
  EXPECT_EQ(gridOf(outside), (Grid{0, 4, false}));
  EXPECT_EQ(gridOf(front), (Grid{0, 0, false}));
  EXPECT_EQ(gridOf(inBox({0xFF, 0x4F, 0xFF, 0x64, 0, 2, 0xFF, 0x51})), (Grid{0, 0, false}));
}

TEST(Peek, AJpeg2000IsNotDecodedWithoutItsGrid) {
  const auto refusalOf = [](const Bytes &file) -> std::string {
    host::Picture picture;
    picture.format = "JPEG 2000";
    try {
      host::readWithLeptonica(file, {255, 255, 255}, picture);
    } catch (const host::Unreadable &why) {
      return why.what();
    }
    return "";
  };
  Bytes code{0xFF, 0x4F, 0xFF, 0x51, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 4};
  code.resize(42);
  code[41] = 2;
  EXPECT_EQ(refusalOf(code + Bytes{7, 1, 1, 7, 2, 1}),
            "has channels of fewer samples than pixels; convert it to PNG first");
  EXPECT_EQ(refusalOf({0xFF, 0x4F, 0xFF, 0x64}), "is damaged: it does not begin with its size");
}

TEST(Peek, CutsTheFramesOutOfAGif) {
  const Bytes picture(kGifPicture.begin(), kGifPicture.end() - 1), end{0x3B};
  const Bytes file = kGifFront + kComment + control(9, 1) + picture + picture + control(0x0C, 1) +
                     kComment + picture + kComment + end;
  const std::vector<host::GifFrame> frames = host::gifFrames(file);
  ASSERT_EQ(frames.size(), 3u);
  const auto alone = [&](const host::GifFrame &frame) { return host::gifFrameAlone(file, frame.start); };
  EXPECT_EQ(alone(frames[0]), kGifFront + kComment + control(9, 1) + picture + end);
  EXPECT_EQ(alone(frames[1]), kGifFront + picture + end);
  EXPECT_EQ(alone(frames[2]), kGifFront + control(0x0C, 1) + kComment + picture + end);
  EXPECT_EQ(frames[0].transparent, 1);
  EXPECT_EQ(frames[1].transparent, -1);
  EXPECT_EQ(frames[2].transparent, -1);
  EXPECT_EQ(frames[0].disposal, 2u);
  EXPECT_EQ(frames[2].disposal, 3u);
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
  const Bytes gif = kGifFront + kComment + control(1, 1) + kGifPicture,
              jp2 = box("jp2h", box("colr", {1, 0, 0}) + imageHeader(4)),
              code = box("jp2c", Bytes{0xFF, 0x4F, 0xFF, 0x51} + Bytes(44, 1));
  for (const Bytes &whole : {gif, jp2, code}) {
    for (size_t length = 0; length <= whole.size(); ++length) {
      for (size_t at = 0; at < length; ++at) {
        for (const uint8_t value : Bytes{0, 1, 255}) {
          Bytes part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
          part[at] = value;
          EXPECT_LT(host::gifTransparentIndex(part), 256);
          EXPECT_LE(host::jpeg2000Channels(part), 65535u);
          host::jpeg2000Grid(part);
          EXPECT_LE(host::gifScreen(part).width, 131070u);
          host::gifHasFurtherPictures(part);
          for (const host::GifFrame &frame : host::gifFrames(part))
            EXPECT_LE(host::gifFrameAlone(part, frame.start).size(), part.size() + 1);
        }
      }
    }
  }
}
