// SPDX-License-Identifier: MIT
#include "entry/drawn_picture.h"
#include "entry/export_host.h"
#include "entry/seeded_export.h"
#include "golden/files.h"
#include "golden/output.h"

namespace golden {
namespace {

using namespace entry_test;
using support::Random;

// A picture of noise whose rows do not depend on the bands that they are asked for in.
void seed(DrawnPicture &picture, Random &random, bool inBands) {
  picture.width = static_cast<double>(random.between(4, 60)) / 96;
  picture.height = static_cast<double>(random.between(inBands ? 20 : 4, 60)) / 96;
  if (inBands) picture.bandRows = static_cast<uint32_t>(random.between(1, 9));
  picture.palette = random.bytes(size_t{256} * 3);
  const uint64_t rows = random.next();
  picture.fill = [rows](uint32_t number, std::span<uint8_t> bytes) {
    Random row(rows + number);
    const Bytes made = seededRow(row, bytes.size());
    std::copy(made.begin(), made.end(), bytes.begin());
  };
}

Bytes make(Random &random, int32_t mode, int32_t compression, int32_t layout, bool inBands, To to) {
  ExportHost host;
  host.settings().nBitmapMode = mode;
  host.settings().nCompressionMode = compression;
  host.settings().tiff.wLayoutMode = static_cast<uint16_t>(layout);
  int32_t width = 0, height = 0;
  if (random.chance(50)) setGeometry(kOwnResolution, random, host.settings(), width, height);
  DrawnPicture picture;
  seed(picture, random, inBands);

  Output output(to, host.settings(), host.status.record());
  std::string name = output.name();
  HostWord record[RAXEL_START_WORDS] = {};
  record[RAXEL_START_NAME] = word(name.data());
  record[RAXEL_START_SETUP] = host.setup();
  record[RAXEL_START_STATUS] = word(host.status.record());
  initdvr(record);
  OutputPicture(host.settings().hOutFile, &picture, DrawnPicture::draw);
  termdvr(0);
  return output.bytes();
}

}  // namespace

void makeSessions(const Take &take) {
  Random random(3);
  int at = 0;
  for (const Name &mode : kModes) {
    for (const Name &compression : kCompressions) {
      for (const Name &layout : kLayouts) {
        for (const To to : {To::kFile, To::kMemory, To::kProcedure}) {
          const bool inBands = ++at % 2 == 0;
          take(std::string("session-") + mode.text + "-" + compression.text + "-" + layout.text +
                   (inBands ? "-bands-" : "-one-") + nameOf(to),
               make(random, mode.code, compression.code, layout.code, inBands, to));
        }
      }
    }
  }
}

}  // namespace golden
