// SPDX-License-Identifier: MIT
#include "pictures/jpeg2000.h"

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

TEST(Jpeg2000, HasChannels) {
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

TEST(Jpeg2000, HasAGrid) {
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

TEST(Jpeg2000, IsNotDecodedWithoutItsGrid) {
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

namespace {

const Bytes kEnd{0xFF, 0xD9};

// A codestream's front of one channel, width by height, cut into tiles of that size.
Bytes sizeOf(uint8_t width, uint8_t height, uint8_t tileWidth, uint8_t tileHeight) {
  return {
      0xFF, 0x4F, 0xFF, 0x51, 0, 41, 0, 0, 0, 0,         0,    width, 0, 0,          0, height, 0, 0,
      0,    0,    0,    0,    0, 0,  0, 0, 0, tileWidth, 0,    0,     0, tileHeight, 0, 0,      0, 0,
      0,    0,    0,    0,    0, 1,  7, 1, 1, 0xFF,      0x64, 0,     4, 0,          1};  // and a comment
                                                                                          // of nothing
}

// A part of a tile with two bytes of data; `length` 0: as far as the end. Of `parts`, 0: unknown.
Bytes tilePart(uint8_t tile, uint8_t part, uint8_t parts, uint8_t length = 16) {
  return {0xFF, 0x90, 0, 10, 0, tile, 0, 0, 0, length, part, parts, 0xFF, 0x93, 0x80, 0x80};
}

}  // namespace

TEST(Jpeg2000, IsWholeWithAllOfItsTiles) {
  const Bytes front = sizeOf(9, 8, 5, 8);  // two tiles side by side
  const Bytes first = tilePart(0, 0, 1), second = tilePart(1, 0, 0);
  const auto missing = [](const Bytes &file) { return host::jpeg2000Missing(file); };
  EXPECT_EQ(missing(front + first + second + kEnd), "");
  EXPECT_EQ(missing(front + second + first + kEnd), "");
  EXPECT_EQ(missing(box("jp2c", front + first + second + kEnd)), "");
  Bytes behind = box("jp2c", front + first + second + kEnd);
  behind[3] = static_cast<uint8_t>(behind[3] - 4);  // which decoders do not mind
  EXPECT_EQ(missing(behind), "");
  EXPECT_EQ(missing(front + first + tilePart(1, 0, 0, 0) + kEnd + Bytes(5)), "");
  EXPECT_EQ(missing(front + first + kEnd), "1 of 2 tiles are missing");
  EXPECT_EQ(missing(front + kEnd), "2 of 2 tiles are missing");
  EXPECT_EQ(missing(front + first + first + kEnd), "1 of 2 tiles are missing");
  EXPECT_EQ(missing(front + first + second), "it has no end");
  EXPECT_EQ(missing(front + first + second + Bytes{0xFF}), "it has no end");
  EXPECT_EQ(missing(front + first + tilePart(1, 0, 0, 17)), "a tile reaches beyond its end");
  EXPECT_EQ(missing(front + first + tilePart(1, 0, 0, 11) + kEnd), "a tile reaches beyond its end");
  EXPECT_EQ(missing(front + first + tilePart(1, 0, 0, 0)), "a tile reaches beyond its end");
  EXPECT_EQ(missing(front + first + tilePart(2, 0, 0) + kEnd), "it has a tile that does not belong to it");
  EXPECT_EQ(missing({}), "its size makes no sense");
  EXPECT_EQ(missing(sizeOf(9, 8, 0, 8) + kEnd), "its size makes no sense");
}

TEST(Jpeg2000, IsWholeWithAllPartsOfATile) {
  const Bytes front = sizeOf(9, 8, 9, 8);
  const auto missing = [](const Bytes &file) { return host::jpeg2000Missing(file); };
  EXPECT_EQ(missing(front + tilePart(0, 0, 2) + tilePart(0, 1, 2) + kEnd), "");
  EXPECT_EQ(missing(front + tilePart(0, 0, 0) + tilePart(0, 1, 2) + kEnd), "");
  EXPECT_EQ(missing(front + tilePart(0, 0, 2) + kEnd), "1 of 1 tiles are missing");
  // One without data is none of them.
  Bytes empty = tilePart(0, 0, 1, 12);
  empty.resize(12);
  EXPECT_EQ(missing(front + empty + kEnd), "1 of 1 tiles are missing");
  EXPECT_EQ(missing(front + tilePart(0, 0, 1) + empty + kEnd), "");
  EXPECT_EQ(missing(front + tilePart(0, 0, 0) + tilePart(0, 1, 3) + kEnd), "1 of 1 tiles are missing");
}

TEST(Jpeg2000, TrustsNoLength) {
  const Bytes jp2 = box("jp2h", box("colr", {1, 0, 0}) + imageHeader(4)),
              code = box("jp2c", sizeOf(9, 8, 5, 8) + tilePart(0, 0, 1) + tilePart(1, 0, 0) + kEnd);
  for (const Bytes &whole : {jp2, code}) {
    for (size_t length = 0; length <= whole.size(); ++length) {
      for (size_t at = 0; at < length; ++at) {
        for (const uint8_t value : Bytes{0, 1, 255}) {
          Bytes part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
          part[at] = value;
          EXPECT_LE(host::jpeg2000Channels(part), 65535u);
          host::jpeg2000Grid(part);
          host::jpeg2000Extras(part);
          if (length < whole.size()) {
            EXPECT_NE(host::jpeg2000Missing(part), "") << length << " " << at;
          }
        }
      }
    }
  }
}
