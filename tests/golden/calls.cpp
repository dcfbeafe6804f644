// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>

#include "entry/export_host.h"
#include "entry/seeded_export.h"
#include "golden/files.h"
#include "golden/output.h"

namespace golden {
namespace {

using namespace entry_test;
using support::Random;

constexpr const char *kGeometryNames[kGeometries] = {"own",    "scaled",  "resolution",
                                                     "fitted", "display", "printer"};
constexpr int kGeometriesEach = 4;

struct Call {
  int32_t mode;
  int32_t compression;
  int32_t layout;
  uint16_t bits;
  Geometry geometry;
  To to;
  struct {
    int64_t least, most;
  } width, height;
};

Bytes make(const Call &call, uint64_t seed) {
  Random random(seed);
  ExportHost host;
  host.settings().nBitmapMode = call.mode;
  host.settings().nCompressionMode = call.compression;
  host.settings().tiff.wLayoutMode = static_cast<uint16_t>(call.layout);
  const auto width = static_cast<uint16_t>(random.between(call.width.least, call.width.most));
  const auto height = static_cast<size_t>(random.between(call.height.least, call.height.most));
  std::vector<Bytes> rows(height);
  std::generate(rows.begin(), rows.end(),
                [&] { return seededRow(random, (size_t{width} * call.bits + 7) / 8); });
  Picture picture(call.bits, width, rows, seededPalette(random, call.bits));
  int32_t outWidth = -1, outHeight = -1;
  setGeometry(call.geometry, random, host.settings(), outWidth, outHeight);
  if (call.geometry == kDisplay) {
    host.info.displayWidth = static_cast<int32_t>(random.between(10, 64));
    host.info.displayHeight = static_cast<int32_t>(random.between(10, 64));
  }
  Output output(call.to, host.settings(), host.status.record());
  host.run(output.name().c_str(), picture, outWidth, outHeight);
  return output.bytes();
}

std::string nameOf(const Name &mode, const Name &compression) {
  return std::string(mode.text) + "-" + compression.text;
}

}  // namespace

void makeCalls(const Take &take) {
  int at = 0;
  for (const Name &mode : kModes) {
    for (const Name &compression : kCompressions) {
      for (const Name &layout : kLayouts) {
        for (const auto bits : std::to_array<uint16_t>({1, 4, 8, 24, 32})) {
          // Each begins with another geometry, so that all meet everything else.
          for (int i = 0; i < kGeometriesEach; ++i, ++at) {
            const auto geometry = static_cast<Geometry>((i + at / kGeometriesEach) % kGeometries);
            const auto to = static_cast<To>((at + at / 9) % 3);
            // A pixel at a lower resolution, or in a sheet of other proportions, is none.
            const int64_t least = geometry == kOwnSize || geometry == kScaled ? 1 : 4;
            const Call call{mode.code, compression.code, layout.code, bits, geometry,
                            to,        {least, 40},      {least, 40}};
            take("call-" + nameOf(mode, compression) + "-" + layout.text + "-" + std::to_string(bits) +
                     "-" + kGeometryNames[geometry] + "-" + golden::nameOf(to),
                 make(call, static_cast<uint64_t>(at)));
          }
        }
      }
    }
  }
}

void makeTall(const Take &take) {
  uint64_t at = 1000000;
  for (const Name &mode : kModes) {
    for (const char *coded : {"lzw", "g4"}) {
      const Name &compression =
          *std::find_if(std::begin(kCompressions), std::end(kCompressions),
                        [&](const Name &each) { return each.text == std::string(coded); });
      for (const auto bits : std::to_array<uint16_t>({1, 8, 24})) {
        const Call call{mode.code, compression.code, RAXEL_STORED_LAYOUT_TILES,
                        bits,      kOwnSize,         To::kProcedure,
                        {1, 30},   {1025, 1300}};
        take("tall-" + nameOf(mode, compression) + "-" + std::to_string(bits), make(call, ++at));
      }
    }
  }
}

}  // namespace golden
