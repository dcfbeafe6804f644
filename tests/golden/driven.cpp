// SPDX-License-Identifier: MIT
#include "entry/seeded_export.h"
#include "golden/files.h"
#include "golden/output.h"
#include "raster/session.h"
#include "support/globals.h"

namespace golden {
namespace {

using namespace entry_test;
using raster_test::Host;
using support::Random;

struct Session {
  int32_t mode;
  int32_t compression;
  int32_t layout;
  int32_t bits;
  bool framed;
  To to;
};

// A cell array whose pixels lie in the record, or where the record says.
void sendCells(Host &host, Random &random, uint32_t columns, uint32_t rows, int32_t bits, bool upward) {
  const size_t stride = (size_t{columns} * static_cast<uint32_t>(bits) + 31) / 32 * 4;
  Bytes pixels;
  for (uint32_t y = 0; y < rows; ++y) {
    const Bytes row = seededRow(random, stride);
    pixels.insert(pixels.end(), row.begin(), row.end());
  }
  const bool elsewhere = random.chance(30);
  const int32_t there = bits == 1 && random.chance(50) ? int32_t{RAXEL_PRECISION_BILEVEL} : -bits;
  auto record =
      Host::cellArray(columns, rows, elsewhere ? there : bits, elsewhere ? Bytes() : pixels, upward);
  if (elsewhere) Host::put(record, 102, pixels.data());
  host.send(record);
}

Bytes make(Random &random, const Session &session) {
  support::Globals globals;
  Host host(session.to == To::kFile ? Output::fileName() : "");
  host.settings().nBitmapMode = session.mode;
  host.settings().nCompressionMode = session.compression;
  host.settings().tiff.wLayoutMode = static_cast<uint16_t>(session.layout);
  host.settings().nColorMode =
      static_cast<int32_t>(random.between(RAXEL_STORED_COLORS, RAXEL_STORED_COLORS_GREY_INVERT));
  int32_t width = 0, height = 0;
  const Geometry geometries[] = {kOwnSize, kOwnResolution, kFitted};
  setGeometry(geometries[random.between(0, 2)], random, host.settings(), width, height);
  // Rows without a resolution are fitted into the setup's size as well.
  host.settings().dWidth = static_cast<double>(random.between(20, 64)) / 96;
  host.settings().dHeight = static_cast<double>(random.between(20, 64)) / 96;
  Output output(session.to, host.settings(), host.status_.data());

  const auto columns = static_cast<uint32_t>(random.between(16, 40));
  const auto rows = static_cast<uint32_t>(random.between(16, 40));
  const double millimetres = random.chance(50) ? 25.4 / static_cast<double>(random.between(60, 140)) : 0;
  host.openBody(columns, rows, millimetres);
  if (session.bits < 24 && random.chance(75)) host.setColors(0, random.bytes((size_t{3} << session.bits)));
  const bool upward = random.chance(50);
  if (session.framed) {
    const auto above = static_cast<uint32_t>(random.between(1, rows - 1));
    host.beginRaster(columns, rows, session.bits);
    sendCells(host, random, columns, above, session.bits, upward);
    sendCells(host, random, columns, rows - above, session.bits, upward);
    host.endRaster();
  } else {
    sendCells(host, random, columns, rows, session.bits, upward);
  }
  host.finish();
  return output.bytes();
}

}  // namespace

void makeDriven(const Take &take) {
  Random random(2);
  int at = 0;
  for (const Name &mode : kModes) {
    for (const Name &compression : kCompressions) {
      for (const Name &layout : kLayouts) {
        for (const int32_t bits : {1, 4, 8, 24}) {
          for (const bool framed : {true, false}) {
            const To to = ++at % 4 == 0 ? To::kFile : To::kProcedure;  // a block is the driver's own
            take(std::string("driver-") + mode.text + "-" + compression.text + "-" + layout.text + "-" +
                     std::to_string(bits) + (framed ? "-framed-" : "-alone-") + nameOf(to),
                 make(random, {mode.code, compression.code, layout.code, bits, framed, to}));
          }
        }
      }
    }
  }
}

}  // namespace golden
