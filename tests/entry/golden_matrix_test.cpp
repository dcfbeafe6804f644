// SPDX-License-Identifier: MIT
// One-call exports over every mode, compression, layout and source depth, against the golden list:
// the bytes must be the same on every machine, and the same tomorrow.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "entry/export_host.h"
#include "support/golden.h"
#include "support/random.h"
#include "support/stream_procedure.h"

namespace {

using entry_test::Bytes;
using entry_test::ExportHost;
using entry_test::Picture;
using support::Random;

struct Name {
  int32_t code;
  const char *text;
};
constexpr Name kModes[] = {{RAXEL_STORED_MODE_BILEVEL, "bilevel"}, {RAXEL_STORED_MODE_GREY16, "grey16"},
                           {RAXEL_STORED_MODE_GREY256, "grey256"}, {RAXEL_STORED_MODE_COLOR8, "color8"},
                           {RAXEL_STORED_MODE_COLOR16, "color16"}, {RAXEL_STORED_MODE_COLOR256, "color256"},
                           {RAXEL_STORED_MODE_RGB, "rgb"}};
constexpr Name kCompressions[] = {
    {RAXEL_STORED_COMPRESS_NONE, "none"},       {RAXEL_STORED_COMPRESS_PACKBITS, "packbits"},
    {RAXEL_STORED_COMPRESS_HUFFMAN, "huffman"}, {RAXEL_STORED_COMPRESS_LZW, "lzw"},
    {RAXEL_STORED_COMPRESS_T4, "g3"},           {RAXEL_STORED_COMPRESS_T6, "g4"}};
constexpr Name kLayouts[] = {{RAXEL_STORED_LAYOUT_STRIPS, "strips"}, {RAXEL_STORED_LAYOUT_TILES, "tiles"}};

// Runs of equal bytes between stretches of noise.
Bytes row(Random &random, size_t size) {
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
Bytes palette(Random &random, uint16_t bits) {
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

// How the output's size comes about: the picture's own, another one, or by resolution and size modes.
void chooseGeometry(Random &random, RasterSetup &settings, int32_t &width, int32_t &height) {
  settings.nSizeMode = RAXEL_STORED_SIZE_PICTURE;
  settings.nResolutionMode = RAXEL_STORED_RESOLUTION_PICTURE;
  switch (random.between(0, 3)) {
    case 0:
      break;
    case 1:  // smaller or larger in either direction
      width = static_cast<int32_t>(random.between(1, 60));
      height = static_cast<int32_t>(random.between(1, 60));
      break;
    case 2:  // the setup's own resolution
      settings.nResolutionMode = RAXEL_STORED_RESOLUTION_USER;
      settings.tiff.nXResolution = static_cast<int16_t>(random.between(32, 200));
      settings.tiff.nYResolution = static_cast<int16_t>(random.between(32, 200));
      break;
    default:  // fitted into the setup's own size
      settings.nSizeMode = RAXEL_STORED_SIZE_USER;
      settings.dWidth = static_cast<double>(random.between(1, 64)) / 96;
      settings.dHeight = static_cast<double>(random.between(1, 64)) / 96;
  }
}

Bytes exportOne(Random &random, uint16_t bits, int32_t mode, int32_t compression, int32_t layout,
                support::HostStream *stream = nullptr) {
  ExportHost host;
  host.settings().nBitmapMode = mode;
  host.settings().nCompressionMode = compression;
  host.settings().tiff.wLayoutMode = static_cast<uint16_t>(layout);
  const auto width = static_cast<uint16_t>(random.between(1, 40));
  const auto height = static_cast<size_t>(random.between(1, 40));
  std::vector<Bytes> rows;
  for (size_t y = 0; y < height; ++y) rows.push_back(row(random, (size_t{width} * bits + 7) / 8));
  Picture picture(bits, width, rows, palette(random, bits));
  int32_t outWidth = -1, outHeight = -1;
  chooseGeometry(random, host.settings(), outWidth, outHeight);
  if (!stream) return host.runInMemory(picture, outWidth, outHeight);
  host.settings().lpfnOutputProc = stream->procedure();
  host.status.word(RAXEL_STATUS_PROC_CONTEXT) = stream->context();
  host.run("picture.tif", picture, outWidth, outHeight);
  return stream->bytes();
}

class GoldenMatrix : public testing::TestWithParam<Name> {};

TEST_P(GoldenMatrix, FilesAreTheSameOnEveryMachine) {
  const Name mode = GetParam();
  for (const Name &compression : kCompressions) {
    for (const Name &layout : kLayouts) {
      Random random(static_cast<uint64_t>(mode.code * 1000000 + compression.code * 1000 + layout.code));
      Bytes all;
      for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
        for (int i = 0; i < 6; ++i) {
          const Bytes file = exportOne(random, bits, mode.code, compression.code, layout.code);
          all.insert(all.end(), file.begin(), file.end());
        }
      }
      support::golden(std::string("entry/") + mode.text + "-" + compression.text + "-" + layout.text, all);
    }
  }
}

TEST_P(GoldenMatrix, PicturesOf32BitsToo) {
  const Name mode = GetParam();
  for (const Name &compression : kCompressions) {
    Random random(static_cast<uint64_t>(mode.code * 1000000 + compression.code * 1000 + 500));
    Bytes all;
    for (int i = 0; i < 12; ++i) {
      const int32_t layout = kLayouts[i % 2].code;
      const Bytes file = exportOne(random, 32, mode.code, compression.code, layout);
      all.insert(all.end(), file.begin(), file.end());
    }
    support::golden(std::string("entry/") + mode.text + "-" + compression.text + "-depth32", all);
  }
}

// Which calls a stream procedure sees, in which order and of which sizes, and what they leave.
TEST_P(GoldenMatrix, StreamProceduresAreCalledAlike) {
  const Name mode = GetParam();
  for (const Name &compression : kCompressions) {
    Random random(static_cast<uint64_t>(mode.code * 1000000 + compression.code * 1000 + 700));
    Bytes all;
    for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
      for (const Name &layout : kLayouts) {
        support::HostStream stream;
        const Bytes file = exportOne(random, bits, mode.code, compression.code, layout.code, &stream);
        const std::string log = stream.log();
        ASSERT_FALSE(log.empty()) << bits;
        all.insert(all.end(), log.begin(), log.end());
        all.insert(all.end(), file.begin(), file.end());
      }
    }
    support::golden(std::string("entry/") + mode.text + "-" + compression.text + "-procedure", all);
  }
}

std::string nameOf(const testing::TestParamInfo<Name> &parameter) {
  return parameter.param.text;
}
INSTANTIATE_TEST_SUITE_P(Modes, GoldenMatrix, testing::ValuesIn(kModes), nameOf);

}  // namespace
