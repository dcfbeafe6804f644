// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <spng.h>

#include <memory>

#include "pictures/picture.h"
#include "support/random.h"

namespace {

using host::Picture;
using Bytes = std::vector<uint8_t>;

struct Png {
  uint32_t width, height;
  uint8_t depth, type;
  Bytes rows;  // as the file has them
  std::vector<spng_plte_entry> table{};
  const spng_trns *transparent = nullptr;
  const spng_phys *resolution = nullptr;
  bool interlaced = false;
};

Bytes encode(const Png &png) {
  spng_ctx *context = spng_ctx_new(SPNG_CTX_ENCODER);
  spng_set_option(context, SPNG_ENCODE_TO_BUFFER, 1);
  spng_ihdr header{png.width, png.height, png.depth, png.type, 0, 0, 0};
  EXPECT_EQ(spng_set_ihdr(context, &header), 0);
  if (!png.table.empty()) {
    spng_plte table{};
    table.n_entries = static_cast<uint32_t>(png.table.size());
    std::copy(png.table.begin(), png.table.end(), table.entries);
    EXPECT_EQ(spng_set_plte(context, &table), 0);
  }
  if (png.transparent) {
    spng_trns copy = *png.transparent;
    EXPECT_EQ(spng_set_trns(context, &copy), 0);
  }
  if (png.resolution) {
    spng_phys copy = *png.resolution;
    EXPECT_EQ(spng_set_phys(context, &copy), 0);
  }
  EXPECT_EQ(
      spng_encode_image(context, png.rows.data(), png.rows.size(), SPNG_FMT_RAW, SPNG_ENCODE_FINALIZE), 0);
  size_t length = 0;
  int error = 0;
  uint8_t *buffer = static_cast<uint8_t *>(spng_get_png_buffer(context, &length, &error));
  const Bytes file(buffer, buffer + length);
  std::free(buffer);
  spng_ctx_free(context);
  return file;
}

constexpr host::Background kBlue{0, 0, 200};

void read(const Bytes &file, Picture &out) {
  host::readPng(file, kBlue, out);
}

Bytes rowsOf(const Picture &picture) {
  Bytes rows;
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    const uint8_t *row = picture.view.rows + picture.view.stride * y;
    rows.insert(rows.end(), row, row + (picture.view.width * picture.view.bits + 7) / 8);
  }
  return rows;
}

}  // namespace

TEST(Png, KeepsDepthsOfOneTwoAndFourBits) {
  for (uint8_t depth : {uint8_t{1}, uint8_t{2}, uint8_t{4}, uint8_t{8}}) {
    const Bytes rows(static_cast<size_t>(5 * depth + 7) / 8 * 3, 0x90);
    Picture picture;
    read(encode({5, 3, depth, SPNG_COLOR_TYPE_GRAYSCALE, rows}), picture);
    EXPECT_EQ(picture.view.bits, depth);
    EXPECT_EQ(picture.view.table, nullptr);
    EXPECT_EQ(rowsOf(picture), rows);
  }
}

TEST(Png, KeepsColorTables) {
  Picture picture;
  read(encode({3, 1, 4, SPNG_COLOR_TYPE_INDEXED, {0x01, 0x20}, {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}}}),
       picture);
  EXPECT_EQ(picture.view.bits, 4u);
  ASSERT_EQ(picture.view.colors, 3u);
  EXPECT_EQ(Bytes(picture.view.table, picture.view.table + 9), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(rowsOf(picture), (Bytes{0x01, 0x20}));
}

TEST(Png, LaysTransparentEntriesOnTheBackground) {
  spng_trns transparent{};
  transparent.n_type3_entries = 2;
  transparent.type3_alpha[0] = 0;
  transparent.type3_alpha[1] = 128;
  Picture picture;
  read(encode({1,
               1,
               8,
               SPNG_COLOR_TYPE_INDEXED,
               {0},
               {{9, 9, 9, 0}, {255, 255, 0, 0}, {1, 2, 3, 0}},
               &transparent}),
       picture);
  EXPECT_EQ(Bytes(picture.view.table, picture.view.table + 9), (Bytes{0, 0, 200, 128, 128, 100, 1, 2, 3}));
}

TEST(Png, ATransparentGreyLevelShowsTheBackground) {
  for (const unsigned level : {1u, 0xFF01u, 0xFFFDu}) {  // its two lowest bits count
    spng_trns transparent{};
    transparent.gray = static_cast<uint16_t>(level);
    Picture picture;
    read(encode({4, 1, 2, SPNG_COLOR_TYPE_GRAYSCALE, {0x1B}, {}, &transparent}), picture);
    ASSERT_EQ(picture.view.colors, 4u) << level;
    EXPECT_EQ(Bytes(picture.view.table, picture.view.table + 12),
              (Bytes{0, 0, 0, 0, 0, 200, 170, 170, 170, 255, 255, 255}));
  }
}

TEST(Png, ATransparentColorShowsTheBackground) {
  spng_trns transparent{};
  transparent.red = 0xFF0A;  // of which the lower byte counts
  transparent.green = 20;
  transparent.blue = 30;
  Picture picture;
  read(encode({2, 1, 8, SPNG_COLOR_TYPE_TRUECOLOR, {10, 20, 30, 10, 20, 31}, {}, &transparent}), picture);
  EXPECT_EQ(rowsOf(picture), (Bytes{0, 0, 200, 10, 20, 31}));
}

TEST(Png, LaysAlphaOnTheBackground) {
  Picture colors;
  read(encode({3, 1, 8, SPNG_COLOR_TYPE_TRUECOLOR_ALPHA, {255, 0, 0, 255, 255, 0, 0, 0, 255, 0, 0, 51}}),
       colors);
  EXPECT_EQ(rowsOf(colors), (Bytes{255, 0, 0, 0, 0, 200, 51, 0, 160}));
  Picture greys;
  read(encode({2, 1, 8, SPNG_COLOR_TYPE_GRAYSCALE_ALPHA, {100, 255, 100, 0}}), greys);
  EXPECT_EQ(rowsOf(greys), (Bytes{100, 100, 100, 0, 0, 200}));
}

TEST(Png, GreysOnAGreyBackgroundStayGreys) {
  Picture eight;
  host::readPng(encode({3, 1, 8, SPNG_COLOR_TYPE_GRAYSCALE_ALPHA, {100, 255, 100, 0, 100, 51}}),
                {200, 200, 200}, eight);
  EXPECT_EQ(eight.view.bits, 8u);
  EXPECT_EQ(rowsOf(eight), (Bytes{100, 200, 180}));
  Picture sixteen;
  host::readPng(encode({2, 1, 16, SPNG_COLOR_TYPE_GRAYSCALE_ALPHA, {100, 100, 255, 255, 9, 9, 0, 0}}),
                {255, 255, 255}, sixteen);
  EXPECT_EQ(sixteen.view.bits, 8u);
  EXPECT_EQ(rowsOf(sixteen), (Bytes{100, 255}));
}

TEST(Png, ReducesSixteenBitsWithANote) {
  Picture greys;
  read(encode({2, 1, 16, SPNG_COLOR_TYPE_GRAYSCALE, {0x80, 0x80, 0xFF, 0xFF}}), greys);
  EXPECT_EQ(greys.view.bits, 8u);
  EXPECT_EQ(rowsOf(greys), (Bytes{128, 255}));
  EXPECT_EQ(greys.notes.size(), 1u);
  Picture colors;
  read(encode({1, 1, 16, SPNG_COLOR_TYPE_TRUECOLOR, {0, 0, 0x12, 0x34, 0xFF, 0xFF}}), colors);
  EXPECT_EQ(rowsOf(colors), (Bytes{0, 18, 255}));
  Picture deep;
  read(encode({1, 1, 16, SPNG_COLOR_TYPE_TRUECOLOR_ALPHA, {0xFF, 0xFF, 0, 0, 0, 0, 0, 0}}), deep);
  EXPECT_EQ(rowsOf(deep), (Bytes{0, 0, 200}));
}

TEST(Png, KnowsItsResolutionInMetres) {
  const spng_phys metres{11811, 5906, 1}, ratio{3, 2, 0};
  Picture picture;
  read(encode({1, 1, 8, SPNG_COLOR_TYPE_GRAYSCALE, {0}, {}, nullptr, &metres}), picture);
  EXPECT_NEAR(picture.dpiX, 300, 0.01);
  EXPECT_NEAR(picture.dpiY, 150, 0.02);
  Picture without;
  read(encode({1, 1, 8, SPNG_COLOR_TYPE_GRAYSCALE, {0}, {}, nullptr, &ratio}), without);
  EXPECT_EQ(without.dpiX, 0);
}

// All but the last checksum and the end mark: without them the pixels are whole.
TEST(Png, EveryPrefixAndEveryDamagedByteIsReadOrRefused) {
  support::Random random(7);
  const Bytes file = encode({9, 7, 8, SPNG_COLOR_TYPE_TRUECOLOR, random.bytes(9 * 7 * 3)});
  for (size_t length = 0; length < file.size() - 16; ++length) {
    const Bytes part(file.begin(), file.begin() + static_cast<ptrdiff_t>(length));
    Picture picture;
    EXPECT_THROW(read(part, picture), host::Unreadable) << length;
  }
  for (size_t at = 8; at < file.size(); ++at) {
    Bytes damaged = file;
    damaged[at] ^= 0x41;
    Picture picture;
    try {
      read(damaged, picture);
    } catch (const host::Unreadable &) {
    }
  }
}

TEST(Png, AHugeHeaderIsRefusedWithoutTakingMemory) {
  Bytes file = encode({1, 1, 8, SPNG_COLOR_TYPE_TRUECOLOR, {1, 2, 3}});
  // 2147483647 by 2147483647, with the checksum of that header.
  const Bytes header{0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 8, 2, 0, 0, 0};
  std::copy(header.begin(), header.end(), file.begin() + 16);
  uint32_t crc = 0xFFFFFFFF;
  for (size_t i = 12; i < 29; ++i) {
    crc ^= file[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  for (size_t i = 0; i < 4; ++i) file[29 + i] = static_cast<uint8_t>(~crc >> (24 - 8 * i));
  Picture picture;
  try {
    read(file, picture);
    ADD_FAILURE() << "was read";
  } catch (const host::Unreadable &why) {
    EXPECT_STREQ(why.what(), "is too large: 2147483647 by 2147483647 pixels");
  }
}

// What the gate refuses is not decoded: here the pixels are damaged, and nobody notices.
TEST(Png, TheGateIsAskedBeforeThePixels) {
  Bytes file = encode({2, 3, 8, SPNG_COLOR_TYPE_TRUECOLOR, Bytes(18, 7)});
  const Bytes pixels{'I', 'D', 'A', 'T'};
  const auto at = std::search(file.begin(), file.end(), pixels.begin(), pixels.end());
  at[8] ^= 0xFF;
  struct Refused {};
  Picture picture;
  picture.gate = [](const Picture &announced) {
    EXPECT_EQ(announced.view.width, 2u);
    EXPECT_EQ(announced.view.height, 3u);
    EXPECT_EQ(announced.view.bits, 24u);
    throw Refused();
  };
  EXPECT_THROW(read(file, picture), Refused);
  picture.gate = nullptr;
  EXPECT_THROW(read(file, picture), host::Unreadable);
}
