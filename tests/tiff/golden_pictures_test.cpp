// SPDX-License-Identifier: MIT
// Whole files in every mode, compression and layout: the same bytes on every machine, release after
// release. What the bytes mean is tested elsewhere.
#include <gtest/gtest.h>

#include <string>

#include "support/golden.h"
#include "support/random.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::InUse;
using support::Pixels;

struct Named {
  const char *name;
  int32_t code;
};

constexpr Named kModes[] = {
    {"bilevel", RAXEL_STORED_MODE_BILEVEL},  {"grey16", RAXEL_STORED_MODE_GREY16},
    {"grey256", RAXEL_STORED_MODE_GREY256},  {"fixed8", RAXEL_STORED_MODE_COLOR8},
    {"colors16", RAXEL_STORED_MODE_COLOR16}, {"colors256", RAXEL_STORED_MODE_COLOR256},
    {"rgb", RAXEL_STORED_MODE_RGB}};
constexpr Named kCompressions[] = {
    {"none", RAXEL_STORED_COMPRESS_NONE},       {"packbits", RAXEL_STORED_COMPRESS_PACKBITS},
    {"huffman", RAXEL_STORED_COMPRESS_HUFFMAN}, {"lzw", RAXEL_STORED_COMPRESS_LZW},
    {"t4", RAXEL_STORED_COMPRESS_T4},           {"t6", RAXEL_STORED_COMPRESS_T6}};

// Flat areas with some noise, and a random palette whose first entry is white for bilevel.
support::Picture samplePicture(int32_t mode, uint32_t width, uint32_t height) {
  support::Picture picture{width, height, support::depthOfMode(mode), {}, {}};
  support::Random random(100 + static_cast<uint64_t>(mode));
  picture.pixels.resize(picture.stride() * height);
  uint8_t value = 0;
  for (uint8_t &byte : picture.pixels) {
    if (random.chance(25)) value = random.byte();
    byte = value;
  }
  picture.palette = random.bytes(768);
  if (mode == RAXEL_STORED_MODE_BILEVEL) std::fill_n(picture.palette.begin(), 3, uint8_t{255});
  return picture;
}

Bytes fileOf(const support::Picture &picture, int32_t mode, int32_t compression, uint16_t layout) {
  InUse use(mode, compression, layout);
  support::HostOutput out;
  const Pixels block(picture.pixels);
  EXPECT_EQ(support::writePicture(out.file, picture, block.handle()), 0);
  return out.bytes();
}

TEST(GoldenPictures, EveryModeInEveryCompressionIsTheSameOnEveryMachine) {
  for (const Named &mode : kModes) {
    for (const Named &compression : kCompressions) {
      SCOPED_TRACE(std::string(mode.name) + " " + compression.name);
      const support::Picture picture = samplePicture(mode.code, 61, 23);
      support::golden(std::string("tiff/") + mode.name + "-" + compression.name + "-61x23",
                      fileOf(picture, mode.code, compression.code, RAXEL_STORED_LAYOUT_STRIPS));
    }
  }
}

TEST(GoldenPictures, TilesAreTheSameOnEveryMachine) {
  const support::Picture picture = samplePicture(RAXEL_STORED_MODE_BILEVEL, 1100, 300);
  support::golden(
      "tiff/bilevel-t6-tiles-1100x300",
      fileOf(picture, RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T6, RAXEL_STORED_LAYOUT_TILES));
}

}  // namespace
