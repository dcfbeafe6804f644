// SPDX-License-Identifier: MIT
// What the golden files are made from: modes, compressions and layouts by name, and pictures, colour tables
// and output sizes from seeds.
#pragma once

#include <cstdint>
#include <vector>

#include "raxel/settings.h"
#include "support/random.h"

namespace entry_test {

using Bytes = std::vector<uint8_t>;

struct Name {
  int32_t code;
  const char *text;
};
inline constexpr Name kModes[] = {
    {RAXEL_STORED_MODE_BILEVEL, "bilevel"}, {RAXEL_STORED_MODE_GREY16, "grey16"},
    {RAXEL_STORED_MODE_GREY256, "grey256"}, {RAXEL_STORED_MODE_COLOR8, "color8"},
    {RAXEL_STORED_MODE_COLOR16, "color16"}, {RAXEL_STORED_MODE_COLOR256, "color256"},
    {RAXEL_STORED_MODE_RGB, "rgb"}};
inline constexpr Name kCompressions[] = {
    {RAXEL_STORED_COMPRESS_NONE, "none"},       {RAXEL_STORED_COMPRESS_PACKBITS, "packbits"},
    {RAXEL_STORED_COMPRESS_HUFFMAN, "huffman"}, {RAXEL_STORED_COMPRESS_LZW, "lzw"},
    {RAXEL_STORED_COMPRESS_T4, "g3"},           {RAXEL_STORED_COMPRESS_T6, "g4"}};
inline constexpr Name kLayouts[] = {{RAXEL_STORED_LAYOUT_STRIPS, "strips"},
                                    {RAXEL_STORED_LAYOUT_TILES, "tiles"}};

// Runs of equal bytes between stretches of noise.
inline Bytes seededRow(support::Random &random, size_t size) {
  Bytes out;
  while (out.size() < size) {
    const auto length = static_cast<size_t>(random.between(1, 12));
    if (random.chance(50)) {
      out.insert(out.end(), length, random.byte());
    } else {
      const Bytes noise = random.bytes(length);
      out.insert(out.end(), noise.begin(), noise.end());
    }
  }
  out.resize(size);
  return out;
}

// A colour table of noise with a third of its entries grey. One in four pictures has a short one.
inline Bytes seededPalette(support::Random &random, uint16_t bits) {
  if (bits >= 24) return {};
  const size_t entries = size_t{1} << bits;
  Bytes out;
  for (size_t i = 0; i < entries; ++i) {
    const uint8_t grey = random.byte();
    const Bytes color = random.chance(33) ? Bytes{grey, grey, grey} : random.bytes(3);
    out.insert(out.end(), color.begin(), color.end());
  }
  if (random.chance(25))
    out.resize(static_cast<size_t>(random.between(1, static_cast<int64_t>(out.size()))));
  return out;
}

// How the output's size comes about.
enum Geometry {
  kOwnSize,        // the picture's
  kScaled,         // smaller or larger in either direction
  kOwnResolution,  // the setup's resolution
  kFitted,         // into the setup's size
  kDisplay,        // the display's size and resolution
  kPrinter,        // the printer's
  kGeometries
};

inline void setGeometry(Geometry geometry, support::Random &random, RasterSetup &settings, int32_t &width,
                        int32_t &height) {
  settings.nSizeMode = RAXEL_STORED_SIZE_PICTURE;
  settings.nResolutionMode = RAXEL_STORED_RESOLUTION_PICTURE;
  switch (geometry) {
    case kScaled:
      width = static_cast<int32_t>(random.between(1, 60));
      height = static_cast<int32_t>(random.between(1, 60));
      break;
    case kOwnResolution:
      settings.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
      settings.tiff.nXResolution = static_cast<int16_t>(random.between(32, 200));
      settings.tiff.nYResolution = static_cast<int16_t>(random.between(32, 200));
      break;
    case kFitted:
      settings.nSizeMode = RAXEL_STORED_SIZE_USER;
      settings.dWidth = static_cast<double>(random.between(1, 64)) / 96;
      settings.dHeight = static_cast<double>(random.between(1, 64)) / 96;
      break;
    case kDisplay:  // whose size comes with the picture
      settings.nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
      settings.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY;
      break;
    case kPrinter:
      settings.nSizeMode = RAXEL_STORED_SIZE_PRINTER;
      settings.nResolutionMode = RAXEL_STORED_RESOLUTION_PRINTER;
      settings.dWidth = static_cast<double>(random.between(10, 64)) / 72;
      settings.dHeight = static_cast<double>(random.between(10, 64)) / 72;
      settings.tiff.nXResolution = 72;
      settings.tiff.nYResolution = static_cast<int16_t>(random.between(50, 120));
      break;
    default:
      break;
  }
}

}  // namespace entry_test
