// SPDX-License-Identifier: MIT
// The beginning of a picture: modes, strips and tiles, palettes, remapping and the descriptor.
#include <gtest/gtest.h>

#include "runtime/unaligned.h"
#include "support/hex.h"
#include "support/tiff_reader.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::hex;
using support::InUse;

// A picture begun on a host's stream, and ended with the test.
class Begun {
 public:
  Begun(InUse &use, uint32_t width, uint32_t height, const Bytes &palette = Bytes(768))
      : state(use.setup.tiff) {
    result = BeginCellBitmap(out.file, width, height, support::depthOfMode(use.setup.nBitmapMode),
                             palette.data(), &descriptor);
  }
  ~Begun() { EndCellBitmap(out.file, descriptor); }
  Begun(const Begun &) = delete;
  Begun &operator=(const Begun &) = delete;

  const uint8_t *block() const { return static_cast<const uint8_t *>(GlobalLock(descriptor)); }

  support::HostOutput out;
  TiffWriterState &state;
  Handle descriptor = 0;
  int32_t result = 0;
};

TEST(BeginCellBitmap, SettlesTheBitmapModes) {
  const struct {
    int32_t mode;
    uint32_t photometric, bits, samples, colors;
  } rows[] = {{RAXEL_STORED_MODE_BILEVEL, RAXEL_TIFF_BLACK_IS_ZERO, 1, 1, 2},
              {RAXEL_STORED_MODE_GREY16, RAXEL_TIFF_BLACK_IS_ZERO, 4, 1, 16},
              {RAXEL_STORED_MODE_GREY256, RAXEL_TIFF_BLACK_IS_ZERO, 8, 1, 256},
              {RAXEL_STORED_MODE_COLOR8, RAXEL_TIFF_PALETTE, 4, 1, 8},
              {RAXEL_STORED_MODE_COLOR16, RAXEL_TIFF_PALETTE, 4, 1, 16},
              {RAXEL_STORED_MODE_COLOR256, RAXEL_TIFF_PALETTE, 8, 1, 256},
              {RAXEL_STORED_MODE_RGB, RAXEL_TIFF_RGB, 8, 3, 0}};
  for (const auto &row : rows) {
    InUse use(row.mode, RAXEL_STORED_COMPRESS_NONE);
    const Begun begun(use, 10, 10);
    EXPECT_EQ(begun.result, -1);
    EXPECT_EQ(begun.state.nPhotometric, row.photometric) << row.mode;
    EXPECT_EQ(begun.state.nBitsPerSample, row.bits) << row.mode;
    EXPECT_EQ(begun.state.nSamplesPerPixel, row.samples) << row.mode;
    EXPECT_EQ(begun.state.nColors, row.colors) << row.mode;
    EXPECT_EQ(begun.state.nWriterKind, RAXEL_WRITER_CELLS);
    EXPECT_EQ(begun.state.dwNewSubfileType, 0u);
    EXPECT_EQ(begun.state.hTiffFile, begun.out.file);
    EXPECT_EQ(begun.state.nImageWidth, 10u);
    EXPECT_EQ(begun.state.nImageLength, 10u);
  }
}

TEST(BeginCellBitmap, SettlesTheCompressions) {
  const struct {
    int32_t mode;
    uint32_t compression;
  } rows[] = {{RAXEL_STORED_COMPRESS_NONE, RAXEL_TIFF_UNCOMPRESSED},
              {RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_TIFF_PACKBITS},
              {RAXEL_STORED_COMPRESS_HUFFMAN, RAXEL_TIFF_HUFFMAN},
              {RAXEL_STORED_COMPRESS_LZW, RAXEL_TIFF_LZW},
              {RAXEL_STORED_COMPRESS_T4, RAXEL_TIFF_T4},
              {RAXEL_STORED_COMPRESS_T6, RAXEL_TIFF_T6},
              {228, RAXEL_TIFF_UNCOMPRESSED},
              {223, RAXEL_TIFF_UNCOMPRESSED},
              {231, RAXEL_TIFF_UNCOMPRESSED},
              {0, RAXEL_TIFF_UNCOMPRESSED},
              {-1, RAXEL_TIFF_UNCOMPRESSED}};
  for (const auto &row : rows) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, row.mode);
    const Begun begun(use, 10, 10);
    EXPECT_EQ(begun.state.nCompression, row.compression) << row.mode;
    EXPECT_EQ(support::readTiff(begun.out.bytes()).compression(), row.compression);
  }
}

TEST(BeginCellBitmap, StripsOfCodedPicturesAreQuartersRoundedDown) {
  const struct {
    uint32_t height, rows, strips;
  } rows[] = {{100, 25, 4}, {101, 25, 5}, {11, 2, 6}, {8, 2, 4}, {7, 1, 7}, {5, 1, 5},
              {4, 1, 4},    {3, 1, 3},    {2, 1, 2},  {1, 1, 1}, {0, 1, 0}, {0xFFFFFFFF, 0x3FFFFFFF, 5}};
  for (const auto &row : rows) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_PACKBITS);
    const Begun begun(use, 9, row.height);
    EXPECT_EQ(begun.state.nRowsPerStrip, row.rows) << row.height;
    EXPECT_EQ(begun.state.nStripsDown, row.strips) << row.height;
    EXPECT_EQ(begun.state.nTilesAcross, 1);
  }
}

TEST(BeginCellBitmap, UncompressedPicturesAreOneStrip) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 5, 101);
  EXPECT_EQ(begun.state.nRowsPerStrip, 101u);
  EXPECT_EQ(begun.state.nStripsDown, 1u);
  const support::TiffFile file = support::readTiff(begun.out.bytes());
  EXPECT_EQ(file.value(273), 0xBAu);  // patched before any pixel comes
  EXPECT_EQ(file.value(279), 15u * 101);
  EXPECT_EQ(begun.out.bytes().size(), 0xBAu);
}

TEST(BeginCellBitmap, UncompressedRowsHaveNoPadding) {
  const struct {
    int32_t mode;
    uint32_t width, rowBytes;
  } rows[] = {{RAXEL_STORED_MODE_BILEVEL, 1, 1}, {RAXEL_STORED_MODE_BILEVEL, 8, 1},
              {RAXEL_STORED_MODE_BILEVEL, 9, 2}, {RAXEL_STORED_MODE_COLOR16, 1, 1},
              {RAXEL_STORED_MODE_COLOR16, 3, 2}, {RAXEL_STORED_MODE_COLOR256, 5, 5},
              {RAXEL_STORED_MODE_RGB, 3, 9},     {RAXEL_STORED_MODE_RGB, 0, 0}};
  for (const auto &row : rows) {
    InUse use(row.mode, RAXEL_STORED_COMPRESS_NONE);
    const Begun begun(use, row.width, 7);
    EXPECT_EQ(support::readTiff(begun.out.bytes()).value(279), row.rowBytes * 7)
        << row.mode << " " << row.width;
  }
}

TEST(BeginCellBitmap, TilesAre512By128) {
  const struct {
    uint32_t width, height, rows, down;
    uint16_t across;
  } rows[] = {{600, 200, 128, 2, 2}, {512, 128, 128, 1, 1}, {513, 129, 128, 2, 2},     {1, 1, 1, 1, 1},
              {1024, 50, 50, 1, 2},  {0, 0, 1, 0, 0},       {512 * 65536u, 1, 1, 1, 0}};
  for (const auto &row : rows) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6, RAXEL_STORED_LAYOUT_TILES);
    const Begun begun(use, row.width, row.height);
    EXPECT_EQ(begun.state.nTilesAcross, row.across) << row.width;
    EXPECT_EQ(begun.state.nRowsPerStrip, row.rows) << row.height;
    EXPECT_EQ(begun.state.nStripsDown, row.down) << row.height;
  }
}

// The directory says tiles, and the one strip is tile 1.
TEST(BeginCellBitmap, UncompressedTilesAreOneRowOfThem) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_LAYOUT_TILES);
  const Begun begun(use, 600, 200);
  EXPECT_EQ(begun.state.nStripsDown, 1u);
  EXPECT_EQ(begun.state.nTilesAcross, 2);
  EXPECT_EQ(begun.state.nRowsPerStrip, 200u);
  const support::TiffFile file = support::readTiff(begun.out.bytes());
  EXPECT_EQ(file.find(324)->values, (std::vector<uint32_t>{0xD6, 0}));
  EXPECT_EQ(file.find(325)->values, (std::vector<uint32_t>{75 * 200, 0}));
}

TEST(BeginCellBitmap, BytesPastFourGigabytesWrap) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 65536, 65536);
  EXPECT_EQ(support::readTiff(begun.out.bytes()).value(279), 0u);  // 3 * 2^32
}

Bytes colorMapOf(const TiffWriterState &state, size_t entries) {
  return {state.abColorMap[0], state.abColorMap[0] + 3 * entries};
}

Bytes countingPalette(size_t entries) {
  Bytes out(3 * entries);
  for (size_t i = 0; i < out.size(); ++i) out[i] = static_cast<uint8_t>(i * 7 + 1);
  return out;
}

TEST(BeginCellBitmap, PaletteModesCopyTheHostsPalette) {
  for (const auto &[mode, entries] : {std::pair<int32_t, size_t>{RAXEL_STORED_MODE_BILEVEL, 2},
                                      {RAXEL_STORED_MODE_COLOR16, 16},
                                      {RAXEL_STORED_MODE_COLOR256, 256}}) {
    InUse use(mode, RAXEL_STORED_COMPRESS_NONE);
    const Begun begun(use, 8, 8, countingPalette(entries));
    EXPECT_EQ(colorMapOf(begun.state, entries), countingPalette(entries)) << mode;
    EXPECT_EQ(begun.block()[0], 0) << mode;  // nothing to remap
  }
}

TEST(BeginCellBitmap, EightColorsAreTheFixedOnes) {
  InUse use(RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 8, 8, countingPalette(16));
  EXPECT_EQ(colorMapOf(begun.state, 9),
            hex("FFFFFF 000000 0000FF 00FF00 FF0000 00FFFF FF00FF FFFF00 000000"));
  // The file's map has 16 entries: eight colours, and black.
  const support::TiffFile file = support::readTiff(begun.out.bytes());
  EXPECT_EQ(file.find(320)->count, 48u);
}

TEST(BeginCellBitmap, RgbHasNoPalette) {
  InUse use(RAXEL_STORED_MODE_RGB, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 8, 8);
  EXPECT_EQ(colorMapOf(begun.state, 256), Bytes(768));
  EXPECT_EQ(begun.block()[0], 0);
}

TEST(BeginCellBitmap, GreyMapsAreEvenStepsThatEndInWhite) {
  InUse grey16(RAXEL_STORED_MODE_GREY16, RAXEL_STORED_COMPRESS_NONE);
  const Begun sixteen(grey16, 8, 8);
  for (int i = 0; i < 15; ++i) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(sixteen.state.abColorMap[i][c], 16 * i);
  }
  EXPECT_EQ(sixteen.state.abColorMap[15][1], 255);

  InUse grey256(RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_NONE);
  const Begun all(grey256, 8, 8);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(all.state.abColorMap[i][2], i);
}

Bytes greyPalette(size_t entries, int step) {
  Bytes out;
  for (size_t i = 0; i < entries; ++i)
    out.insert(out.end(), 3, static_cast<uint8_t>(static_cast<int>(i) * step));
  return out;
}

TEST(BeginCellBitmap, SixteenGreysMapToLuminanceModuloSixteen) {
  InUse use(RAXEL_STORED_MODE_GREY16, RAXEL_STORED_COMPRESS_NONE);
  Bytes palette = greyPalette(16, 17);
  std::fill_n(palette.begin() + 3 * 5, 3, uint8_t{200});
  const Begun begun(use, 8, 8, palette);
  EXPECT_EQ(begun.block()[0], 1);
  EXPECT_EQ(begun.block()[1 + 5], 200 % 16);
  EXPECT_EQ(begun.block()[1 + 15], 255 % 16);
  EXPECT_EQ(begun.block()[1 + 6], 102 % 16);
  EXPECT_EQ(begun.block()[1 + 16], 0);  // only the inputs that 4 bits can name
}

// 256 greys whose palette is grey i at i still remap: 67 luminances fall one short.
TEST(BeginCellBitmap, EvenGreysAreRemapped) {
  InUse use(RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 8, 8, greyPalette(256, 1));
  EXPECT_EQ(begun.block()[0], 1);
  EXPECT_EQ(begun.block()[1 + 3], 3);
  EXPECT_EQ(begun.block()[1 + 4], 3);
  EXPECT_EQ(begun.block()[1 + 255], 255);
}

TEST(BeginCellBitmap, GreysThatFitAreNotRemapped) {
  InUse use(RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_NONE);
  Bytes palette;
  for (int32_t i = 0; i < 256; ++i) {
    // One more in blue, or in green, where three equal channels fall short.
    for (const auto &[g, b] : {std::pair{0, 0}, {0, 1}, {1, 0}}) {
      if (MapColors(i, i + g, i + b, nullptr, 256, 0) != i) continue;
      palette.insert(palette.end(),
                     {static_cast<uint8_t>(i), static_cast<uint8_t>(i + g), static_cast<uint8_t>(i + b)});
      break;
    }
  }
  ASSERT_EQ(palette.size(), 768u);
  const Begun begun(use, 8, 8, palette);
  EXPECT_EQ(begun.block()[0], 0);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(begun.block()[1 + i], i);
}

TEST(BeginCellBitmap, EightColorModeMapsSixteenInputs) {
  InUse use(RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_COMPRESS_NONE);
  Bytes palette(48);
  const Bytes first = hex("000000 FFFFFF 0000FF 00FF00 FF0000 00FFFF FF00FF FFFF00 808080 7F7F7F");
  std::copy(first.begin(), first.end(), palette.begin());
  std::copy_n(hex("F01010").begin(), 3, palette.begin() + 45);
  const Begun begun(use, 8, 8, palette);
  EXPECT_EQ(begun.block()[0], 1);
  EXPECT_EQ(Bytes(begun.block() + 1, begun.block() + 17),
            (Bytes{1, 0, 2, 3, 4, 5, 6, 7, 0, 1, 1, 1, 1, 1, 1, 4}));
}

TEST(BeginCellBitmap, EightFixedColorsInTheirOrderAreNotRemappedAmongThemselves) {
  InUse use(RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 8, 8, Bytes(ColorDirect[0], ColorDirect[0] + 48));
  for (int i = 0; i < 8; ++i) EXPECT_EQ(begun.block()[1 + i], i);
}

TEST(BeginCellBitmap, DescriptorIs265Bytes) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 8, 8, hex("FF0000 000000"));
  EXPECT_EQ(GlobalSize(begun.descriptor), 265u);
  EXPECT_EQ(runtime::load<uint32_t>(begun.block() + 257), 1u);    // the next strip
  EXPECT_EQ(runtime::load<uint32_t>(begun.block() + 261), 255u);  // entry 0's red
}

TEST(BeginCellBitmap, FirstRedIsKeptForOneBitOnly) {
  InUse use(RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_COMPRESS_NONE);
  const Begun begun(use, 8, 8, Bytes(48, 0xFF));
  EXPECT_EQ(runtime::load<uint32_t>(begun.block() + 261), 0u);
}

// A palette elsewhere has as many entries as its pixels can name; what lies past them, or past no palette
// at all, counts as black.
TEST(BeginCellBitmap, EntriesPastThePaletteAreBlack) {
  InUse use(RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_COMPRESS_NONE);
  const Bytes palette(48, 0xEE);
  support::HostOutput out;
  Handle descriptor = 0;
  EXPECT_EQ(BeginCellBitmap(out.file, 8, 8, 4, palette.data(), &descriptor), -1);
  EndCellBitmap(out.file, descriptor);
  EXPECT_EQ(colorMapOf(use.setup.tiff, 16), palette);
  EXPECT_EQ(use.setup.tiff.abColorMap[16][0], 0);

  for (const int32_t mode : {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16, RAXEL_STORED_MODE_GREY256,
                             RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_MODE_COLOR16,
                             RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_MODE_RGB}) {
    use.setup.nBitmapMode = mode;
    EXPECT_EQ(BeginCellBitmap(out.file, 8, 8, support::depthOfMode(mode), nullptr, &descriptor), -1);
    EndCellBitmap(out.file, descriptor);
  }
  use.setup.nBitmapMode = RAXEL_STORED_MODE_BILEVEL;
  EXPECT_EQ(BeginCellBitmap(out.file, 8, 8, 1, nullptr, &descriptor), -1);
  EXPECT_EQ(runtime::load<uint32_t>(static_cast<uint8_t *>(GlobalLock(descriptor)) + 261), 0u);
  EndCellBitmap(out.file, descriptor);
}

// In handle memory the block says how long a palette is, whatever the bitmap's depth.
TEST(BeginCellBitmap, APaletteInHandleMemoryIsAsLongAsItsBlock) {
  const struct {
    int32_t mode;
    uint16_t bits;
    size_t held, copied;  // entries
  } rows[] = {{RAXEL_STORED_MODE_COLOR256, 4, 256, 256}, {RAXEL_STORED_MODE_COLOR256, 24, 256, 256},
              {RAXEL_STORED_MODE_COLOR256, 8, 5, 5},     {RAXEL_STORED_MODE_COLOR256, 1, 0, 0},
              {RAXEL_STORED_MODE_COLOR256, 8, 256, 256}, {RAXEL_STORED_MODE_COLOR16, 1, 16, 16},
              {RAXEL_STORED_MODE_COLOR16, 4, 256, 16},   {RAXEL_STORED_MODE_BILEVEL, 24, 2, 2}};
  for (const auto &row : rows) {
    InUse use(row.mode, RAXEL_STORED_COMPRESS_NONE);
    const support::Pixels palette(countingPalette(row.held));
    const support::HostOutput out;
    Handle descriptor = 0;
    const auto *entries = static_cast<const uint8_t *>(GlobalLock(palette.handle()));
    EXPECT_EQ(BeginCellBitmap(out.file, 8, 8, row.bits, entries, &descriptor), -1);
    EndCellBitmap(out.file, descriptor);
    Bytes expected = countingPalette(row.copied);
    expected.resize(768);
    EXPECT_EQ(colorMapOf(use.setup.tiff, 256), expected) << row.mode << " at " << row.bits;
  }
}

// The greys of a palette whose bitmap is less deep are remapped to its end.
TEST(BeginCellBitmap, RemappingSeesTheWholePaletteOfABlock) {
  InUse use(RAXEL_STORED_MODE_GREY256, RAXEL_STORED_COMPRESS_NONE);
  const support::Pixels palette(Bytes(768, 200));
  const support::HostOutput out;
  Handle descriptor = 0;
  const auto *entries = static_cast<const uint8_t *>(GlobalLock(palette.handle()));
  ASSERT_EQ(BeginCellBitmap(out.file, 8, 8, 4, entries, &descriptor), -1);
  const auto *block = static_cast<const uint8_t *>(GlobalLock(descriptor));
  EXPECT_EQ(Bytes(block + 1, block + 257), Bytes(256, 200));
  EndCellBitmap(out.file, descriptor);
}

TEST(BeginCellBitmap, NothingInUseOrNowhereToAnswerGivesZero) {
  support::HostOutput out;
  Handle descriptor = 7;
  EXPECT_EQ(BeginCellBitmap(out.file, 8, 8, 1, nullptr, &descriptor), 0);
  EXPECT_EQ(descriptor, 7u);
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_NONE);
  EXPECT_EQ(BeginCellBitmap(out.file, 8, 8, 1, nullptr, nullptr), 0);
  EXPECT_TRUE(out.host.calls().empty());
}

TEST(BeginCellBitmap, NoFileIsNoHarm) {
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6);
  Handle descriptor = 0;
  EXPECT_EQ(BeginCellBitmap(0, 8, 8, 1, nullptr, &descriptor), -1);
  EXPECT_EQ(EndCellBitmap(0, descriptor), 0);
}

TEST(EndCellBitmap, NoDescriptorIsNoHarm) {
  EXPECT_EQ(EndCellBitmap(0, 0), 0);
}

}  // namespace
