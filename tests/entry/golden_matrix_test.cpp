// SPDX-License-Identifier: MIT
// One-call exports over every mode, compression, layout and source depth, against the golden list:
// the bytes must be the same on every machine, and the same tomorrow.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "entry/export_host.h"
#include "entry/seeded_export.h"
#include "support/golden.h"
#include "support/random.h"
#include "support/stream_procedure.h"

namespace {

using entry_test::Bytes;
using entry_test::ExportHost;
using entry_test::kCompressions;
using entry_test::kLayouts;
using entry_test::kModes;
using entry_test::Name;
using entry_test::Picture;
using support::Random;

Bytes exportOne(Random &random, uint16_t bits, int32_t mode, int32_t compression, int32_t layout,
                support::HostStream *stream = nullptr) {
  ExportHost host;
  host.settings().nBitmapMode = mode;
  host.settings().nCompressionMode = compression;
  host.settings().tiff.wLayoutMode = static_cast<uint16_t>(layout);
  const auto width = static_cast<uint16_t>(random.between(1, 40));
  const auto height = static_cast<size_t>(random.between(1, 40));
  std::vector<Bytes> rows;
  for (size_t y = 0; y < height; ++y)
    rows.push_back(entry_test::seededRow(random, (size_t{width} * bits + 7) / 8));
  Picture picture(bits, width, rows, entry_test::seededPalette(random, bits));
  int32_t outWidth = -1, outHeight = -1;
  const auto geometry = static_cast<entry_test::Geometry>(random.between(0, 3));
  setGeometry(geometry, random, host.settings(), outWidth, outHeight);
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
