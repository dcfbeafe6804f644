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

constexpr Named kModes[] = {{"bilevel", 215},  {"grey16", 216},    {"grey256", 217}, {"fixed8", 218},
                            {"colors16", 219}, {"colors256", 221}, {"rgb", 222}};
constexpr Named kCompressions[] = {{"none", 224}, {"packbits", 225}, {"huffman", 226},
                                   {"lzw", 227},  {"t4", 229},       {"t6", 230}};

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
  if (mode == support::kBilevel) std::fill_n(picture.palette.begin(), 3, uint8_t{255});
  return picture;
}

Bytes fileOf(const support::Picture &picture, int32_t mode, int32_t compression, uint16_t layout) {
  InUse use(mode, compression, layout);
  support::HostOutput out;
  const Pixels block(picture.pixels);
  EXPECT_EQ(support::writePicture(out.file, picture, block.handle()), 0);
  return out.bytes();
}

TEST(GoldenPictures, EveryModeInEveryCompression) {
  for (const Named &mode : kModes) {
    for (const Named &compression : kCompressions) {
      SCOPED_TRACE(std::string(mode.name) + " " + compression.name);
      const support::Picture picture = samplePicture(mode.code, 61, 23);
      support::golden(std::string("tiff/") + mode.name + "-" + compression.name + "-61x23",
                      fileOf(picture, mode.code, compression.code, support::kStrips));
    }
  }
}

TEST(GoldenPictures, Tiles) {
  const support::Picture picture = samplePicture(support::kBilevel, 1100, 300);
  support::golden("tiff/bilevel-t6-tiles-1100x300",
                  fileOf(picture, support::kBilevel, support::kT6Mode, support::kTiles));
}

}  // namespace
