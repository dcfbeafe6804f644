// SPDX-License-Identifier: MIT
// The pixels of uncompressed pictures: their order, their colours, and what happens to the host's own.
#include <gtest/gtest.h>

#include "runtime/unaligned.h"
#include "support/hex.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "support/threads.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::hex;
using support::InUse;
using support::Pixels;

constexpr size_t kData = 0xBA;  // behind a front of one strip without a colour map

// The image data of an uncompressed picture, and the host's block afterwards.
struct Written {
  int32_t code;
  Bytes data;
  Bytes pixels;
};

Written writeWith(int32_t mode, uint32_t width, uint32_t height, const Bytes &pixels,
                  const Bytes &palette = {}) {
  InUse use(mode, RAXEL_STORED_COMPRESS_NONE);
  support::HostOutput out;
  const Pixels block(pixels);
  const support::Picture picture{width, height, support::depthOfMode(mode), {}, palette};
  const int32_t code = support::writePicture(out.file, picture, block.handle());
  const size_t mapBytes = use.setup.tiff.nPhotometric == RAXEL_TIFF_PALETTE
                              ? 12 + 6 * (size_t{1} << use.setup.tiff.nBitsPerSample)
                              : 0;
  return {code, support::slice(out.bytes(), kData + mapBytes, SIZE_MAX), block.bytes()};
}

TEST(WriteCellBits, RgbGoesOutTopRowFirstAndRedFirst) {
  const Written w = writeWith(RAXEL_STORED_MODE_RGB, 2, 4, hex(R"(
    010203 111213 0000     ; the bottom row: blue, green, red
    212223 313233 0000
    414243 515253 0000
    616263 717273 0000     ; the top row
  )"));
  EXPECT_EQ(w.code, 0);
  EXPECT_EQ(w.data, hex("636261 737271  434241 535251  232221 333231  030201 131211"));
  // The host's own pixels are swapped, their padding is not.
  EXPECT_EQ(w.pixels,
            hex("030201 131211 0000  232221 333231 0000  434241 535251 0000  636261 737271 0000"));
}

TEST(WriteCellBits, AHostSeesOneWriteForEachRow) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  support::HostOutput out;
  const Pixels block(Bytes(8 * 5));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 2, 5, 24, nullptr, &descriptor);
  out.host.clearLog();
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 2, 5, 24, 1, descriptor), 0);
  EXPECT_EQ(out.host.log(), "write 6 x 5\n");
  EndCellBitmap(out.file, descriptor);
}

// Five rows make chunks of one row, taken from the top.
TEST(WriteCellBits, RowsOfEveryHeight) {
  for (uint32_t height = 1; height < 14; ++height) {
    Bytes pixels;
    Bytes expected;
    for (uint32_t row = 0; row < height; ++row) {
      const auto value = static_cast<uint8_t>(row + 1);
      pixels.insert(pixels.end(), {value, 0xEE, 0xEE, 0xEE});
      expected.insert(expected.begin(), value);
    }
    const Written w = writeWith(RAXEL_STORED_MODE_COLOR256, 1, height, pixels, Bytes(768));
    EXPECT_EQ(w.code, 0);
    EXPECT_EQ(w.data, expected) << height;
    EXPECT_EQ(w.pixels, pixels) << height;
  }
}

TEST(WriteCellBits, BilevelWithWhiteFirstIsInverted) {
  const Bytes pixels = hex("AA 55 00 00  F0 0F 00 00  00 FF 00 00  12 34 00 00");
  const Written flipped = writeWith(RAXEL_STORED_MODE_BILEVEL, 16, 4, pixels, hex("FFFFFF 000000"));
  EXPECT_EQ(flipped.data, hex("ED CB  FF 00  0F F0  55 AA"));
  // Every byte of the host's bitmap, padding included.
  EXPECT_EQ(flipped.pixels, hex("55 AA FF FF  0F F0 FF FF  FF 00 FF FF  ED CB FF FF"));

  const Written straight = writeWith(RAXEL_STORED_MODE_BILEVEL, 16, 4, pixels, hex("000000 FFFFFF"));
  EXPECT_EQ(straight.data, hex("12 34  00 FF  F0 0F  AA 55"));
  EXPECT_EQ(straight.pixels, pixels);
}

// Only a red of 255 counts as white.
TEST(WriteCellBits, BilevelWithAlmostWhiteFirstIsNotInverted) {
  const Written w = writeWith(RAXEL_STORED_MODE_BILEVEL, 8, 1, hex("AA 00 00 00"), hex("FEFFFF 000000"));
  EXPECT_EQ(w.data, hex("AA"));
}

TEST(FlipMonochromeBits, InvertsRowsWithTheirPadding) {
  Bytes bits = hex("00 0F FF 55 80 01");
  tifFlipMonochromeBits(bits.data(), 2, 2, 0);
  EXPECT_EQ(bits, hex("00 0F FF 55 80 01"));
  tifFlipMonochromeBits(bits.data(), 2, 2, 255);
  EXPECT_EQ(bits, hex("FF F0 00 AA 80 01"));
  tifFlipMonochromeBits(nullptr, 2, 2, 255);
}

// 256 greys through a palette that remaps: byte k becomes the mapping of byte k + 1, across rows and
// their padding. The chunk's last byte takes the byte after the chunk.
TEST(WriteCellBits, RemappedBytesLeadByOne) {
  Bytes palette(768);
  for (size_t i = 0; i < 256; ++i) {
    std::fill_n(palette.begin() + static_cast<std::ptrdiff_t>(3 * i), 3, static_cast<uint8_t>(255 - i));
  }
  // Luminances, truncated: 255 - i, one less for some. All of these are exact.
  ASSERT_EQ(MapColors(254, 254, 254, nullptr, 256, 0), 254);
  const Bytes pixels = hex("01 02 03 04");
  const Written w = writeWith(RAXEL_STORED_MODE_GREY256, 3, 1, pixels, palette);
  EXPECT_EQ(w.code, 0);
  // 2 -> FD? Its luminance falls short: FC. 3 -> FC, also one short: FB. 4 -> FB.
  const auto mapped = [](int32_t i) {
    return static_cast<uint8_t>(MapColors(255 - i, 255 - i, 255 - i, nullptr, 256, 0));
  };
  EXPECT_EQ(w.data, (Bytes{mapped(2), mapped(3), mapped(4)}));
  EXPECT_EQ(w.data, (Bytes{0xFC, 0xFB, 0xFB}));
  EXPECT_EQ(w.pixels, (Bytes{0xFC, 0xFB, 0xFB, 0xFF}));  // past the block's end there are zeros: index 0
}

// What follows the bitmap in its block is what the top chunk's last byte sees.
TEST(WriteCellBits, RemapReadsTheByteBehindTheBitmap) {
  InUse use(RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_NONE);
  Bytes palette(768);
  palette[3 * 7] = palette[3 * 7 + 1] = palette[3 * 7 + 2] = 200;
  support::HostOutput out;
  const Pixels block(hex("00 00 00 00  07"));
  EXPECT_EQ(support::writePicture(out.file, {4, 1, 8, {}, palette}, block.handle()), 0);
  EXPECT_EQ(support::slice(out.bytes(), kData, 9), hex("00 00 00 C8"));
  EXPECT_EQ(block.bytes(), hex("00 00 00 C8  07"));
}

// The chunks go from the top down, so a lower chunk's last byte takes the first byte of the chunk
// above it when that is mapped already.
TEST(WriteCellBits, LowerChunksSeeTheChunkAboveMapped) {
  Bytes palette(768);
  for (size_t i = 0; i < 256; ++i) palette[3 * i + 1] = static_cast<uint8_t>(i);  // green alone
  const auto map = [](uint8_t i) { return static_cast<uint8_t>(0.59 * i); };
  const Bytes pixels = hex("0A 14 1E 28  32 3C 46 50  5A 64 6E 78  82 8C 96 A0");
  const Written w = writeWith(RAXEL_STORED_MODE_GREY256, 4, 4, pixels, palette);
  Bytes expected = pixels;
  for (size_t row = 4; row-- > 0;) {
    for (size_t k = 4 * row; k < 4 * row + 4; ++k) expected[k] = k + 1 < 16 ? map(expected[k + 1]) : 0;
  }
  EXPECT_EQ(w.pixels, expected);
  EXPECT_EQ(expected[11], map(map(0x8C)));  // mapped twice
  Bytes rows;
  for (size_t row = 4; row-- > 0;) {
    rows.insert(rows.end(), expected.begin() + static_cast<std::ptrdiff_t>(4 * row),
                expected.begin() + static_cast<std::ptrdiff_t>(4 * row + 4));
  }
  EXPECT_EQ(w.data, rows);
}

// Eight fixed colours, from a palette with black first: indices 0 and 1 change places, nibble by
// nibble and a byte early.
TEST(WriteCellBits, EightColorsAreRemappedByNibbles) {
  Bytes palette(ColorDirect[0], ColorDirect[0] + 48);
  std::swap_ranges(palette.begin(), palette.begin() + 3, palette.begin() + 3);
  const Written w = writeWith(RAXEL_STORED_MODE_COLOR8, 6, 1, hex("10 23 01 45"), palette);
  EXPECT_EQ(w.data, hex("23 10 45"));
  EXPECT_EQ(w.pixels, hex("23 10 45 11"));  // index 0 behind the block: black, which is 1
}

TEST(WriteCellBits, PaletteModesKeepTheirIndices) {
  Bytes palette(48);
  for (size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<uint8_t>(i * 5);
  EXPECT_EQ(writeWith(RAXEL_STORED_MODE_COLOR16, 8, 1, hex("12 34 56 78"), palette).data,
            hex("12 34 56 78"));
}

// A block shorter than the picture: what it does not hold is zeros in the file, and nothing is
// written behind it.
TEST(WriteCellBits, ShortBlocksAreFilledWithZeros) {
  const Bytes pixels = hex("01 02 03 04  05 06");
  EXPECT_EQ(writeWith(RAXEL_STORED_MODE_COLOR256, 4, 4, pixels, Bytes(768)).data,
            hex("00 00 00 00  00 00 00 00  05 06 00 00  01 02 03 04"));
  EXPECT_EQ(writeWith(RAXEL_STORED_MODE_BILEVEL, 32, 4, pixels, hex("FFFFFF 000000")).data,
            hex("00 00 00 00  00 00 00 00  FA F9 00 00  FE FD FC FB"));
  const Written rgb = writeWith(RAXEL_STORED_MODE_RGB, 1, 3, hex("01 02 03 00  05 06"));
  EXPECT_EQ(rgb.data, hex("00 00 00  00 06 00  03 02 01"));
  EXPECT_EQ(rgb.pixels, hex("03 02 01 00  00 06"));
  EXPECT_EQ(writeWith(RAXEL_STORED_MODE_RGB, 1, 1, {}).data, hex("00 00 00"));
}

TEST(WriteCellBits, ShortRemappedBlocksGoOnInZeros) {
  Bytes palette(768, 0xFF);
  std::fill_n(palette.begin(), 3, uint8_t{0x28});  // index 0 becomes 0x28, or one less
  const Written w = writeWith(RAXEL_STORED_MODE_GREY256, 4, 2, hex("00 09 00 09  00 09"), palette);
  const auto zero = static_cast<uint8_t>(MapColors(0x28, 0x28, 0x28, nullptr, 256, 0));
  EXPECT_EQ(w.data, (Bytes{0xFF, zero, 0, 0, 0xFF, zero, 0xFF, 0xFF}));
}

// A bitmap of 8 bits handed over in RGB mode: its rows overlap as pixels of three bytes, and what
// lies past the block is left alone.
TEST(WriteCellBits, DepthOtherThanTheModesStaysInsideTheBlock) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  support::HostOutput out;
  const Pixels block(hex("01 02 03 04 05 06 07 08"));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 4, 2, 24, nullptr, &descriptor);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 4, 2, 8, 1, descriptor), 0);
  EndCellBitmap(out.file, descriptor);
  // The upper row first, as a chunk of its own: 05 06 07 | 08, and the second pixel lacks two bytes.
  // Then four pixels from the start of the lower row: 01 02 03 | 04 07 06 | 05 00.
  EXPECT_EQ(support::slice(out.bytes(), kData, 8), hex("07 06 05 00  03 02 01 06"));
  EXPECT_EQ(block.bytes(), hex("03 02 01 06 07 04 00 00"));
}

TEST(WriteCellBits, MissingBlocksAre300) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  support::HostOutput out;
  const Pixels block(Bytes(64));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 2, 2, 24, nullptr, &descriptor);
  out.host.clearLog();
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 2, 2, 24, 1, 0), RAXEL_NO_MEMORY);
  EXPECT_EQ(WriteCellBits(out.file, 0, 2, 2, 24, 1, descriptor), RAXEL_NO_MEMORY);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 2, 2, 24, 1, block.handle()),
            RAXEL_NO_MEMORY);  // no descriptor
  lpRaster = nullptr;
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 2, 2, 24, 1, descriptor), RAXEL_NO_MEMORY);
  lpRaster = &use.setup;
  EXPECT_TRUE(out.host.calls().empty());
  EndCellBitmap(out.file, descriptor);
}

TEST(WriteCellBits, PicturesWithoutPixelsWriteNone) {
  for (const int32_t compression : support::kEveryCompression) {
    for (const uint16_t layout : {RAXEL_STORED_LAYOUT_STRIPS, RAXEL_STORED_LAYOUT_TILES}) {
      InUse use(RAXEL_STORED_MODE_BILEVEL, compression, layout);
      support::HostOutput out;
      const Pixels block(Bytes(64));
      Handle descriptor = 0;
      BeginCellBitmap(out.file, 8, 8, 1, nullptr, &descriptor);
      out.host.clearLog();
      EXPECT_EQ(WriteCellBits(out.file, block.handle(), 8, 0, 1, 1, descriptor), 0);
      EXPECT_EQ(WriteCellBits(out.file, block.handle(), 0, 8, 1, 1, descriptor), RAXEL_NO_MEMORY);
      EXPECT_EQ(WriteCellBits(out.file, block.handle(), 8, 8, 0, 1, descriptor), RAXEL_NO_MEMORY);
      EXPECT_TRUE(out.host.calls().empty());
      EndCellBitmap(out.file, descriptor);
    }
  }
}

TEST(WriteCellBits, PicturesPastFourGigabytesAre300) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  support::HostOutput out;
  const Pixels block(Bytes(64));
  Handle descriptor = 0;
  BeginCellBitmap(out.file, 2, 2, 24, nullptr, &descriptor);
  out.host.clearLog();
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 65535, 65535, 24, 1, descriptor), RAXEL_NO_MEMORY);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFF, 1, descriptor),
            RAXEL_NO_MEMORY);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 0xFFFFFFFF, 1, 24, 1, descriptor), RAXEL_NO_MEMORY);
  EXPECT_EQ(WriteCellBits(out.file, block.handle(), 0xFFFFFFF0, 1, 8, 1, descriptor), RAXEL_NO_MEMORY);
  EXPECT_TRUE(out.host.calls().empty());
  EndCellBitmap(out.file, descriptor);
}

// A host that changes streams in between: plain rows follow the call, codes the picture's beginning.
TEST(WriteCellBits, PlainRowsGoToTheCallsOwnStream) {
  for (const int32_t compression : support::kEveryCompression) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, compression);
    support::HostOutput first;
    support::HostOutput second;
    const Pixels block(Bytes(4 * 4, 0xFF));
    Handle descriptor = 0;
    BeginCellBitmap(first.file, 8, 4, 1, nullptr, &descriptor);
    first.host.clearLog();
    EXPECT_EQ(WriteCellBits(second.file, block.handle(), 8, 4, 1, 1, descriptor), 0);
    EXPECT_EQ(first.host.calls().empty(), compression == RAXEL_STORED_COMPRESS_NONE) << compression;
    EXPECT_EQ(second.host.calls().empty(), compression != RAXEL_STORED_COMPRESS_NONE) << compression;
    EndCellBitmap(first.file, descriptor);
  }
}

// An uncompressed picture in two bands: the rows just follow each other.
TEST(WriteCellBits, BandsFollowEachOther) {
  InUse use(RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_COMPRESS_NONE);
  support::HostOutput out;
  Handle descriptor = 0;
  const Bytes palette(768);
  BeginCellBitmap(out.file, 1, 3, 8, palette.data(), &descriptor);
  const Pixels upper(hex("02 00 00 00  03 00 00 00"));
  const Pixels lower(hex("01 00 00 00"));
  EXPECT_EQ(WriteCellBits(out.file, upper.handle(), 1, 2, 8, 1, descriptor), 0);
  EXPECT_EQ(WriteCellBits(out.file, lower.handle(), 1, 1, 8, 1, descriptor), 0);
  EXPECT_EQ(runtime::load<uint32_t>(static_cast<uint8_t *>(GlobalLock(descriptor)) + 257), 1u);
  EndCellBitmap(out.file, descriptor);
  EXPECT_EQ(support::slice(out.bytes(), out.bytes().size() - 3, 3), hex("03 02 01"));
}

// Rows that overlap as pixels of three bytes are turned in order: on every road the same.
TEST(WriteCellBits, DepthOtherThanTheModesIsTheSameOnEveryRoad) {
  support::Random random(5);
  const Bytes pixels = random.bytes(40 * 16);
  const support::TempDir dir;
  const std::string name = dir.file("out");
  for (const int32_t compression : support::kEveryCompression) {
    const auto write = [&](Handle file) {
      const InUse use(RAXEL_STORED_MODE_RGB, compression);
      const Pixels block(pixels);
      Handle descriptor = 0;
      BeginCellBitmap(file, 40, 16, 24, nullptr, &descriptor);
      EXPECT_EQ(WriteCellBits(file, block.handle(), 40, 16, 8, 1, descriptor), RAXEL_OK);
      EndCellBitmap(file, descriptor);
      return block.bytes();
    };
    support::HostOutput out;
    const Bytes left = write(out.file);
    const support::Threads forced(8);
    support::HostOutput apart;
    EXPECT_EQ(write(apart.file), left) << compression;
    EXPECT_EQ(apart.bytes(), out.bytes()) << compression;
    const Handle file = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
    EXPECT_EQ(write(file), left) << compression;
    EXPECT_EQ(kvlClose(file), 0);
    EXPECT_EQ(support::readFile(name), out.bytes()) << compression;
  }
}

}  // namespace
