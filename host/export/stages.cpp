// SPDX-License-Identifier: MIT
#include "export/stages.h"

#include "buffer.h"
#include "failure.h"
#include "filter/bands.h"
#include "filter/driver.h"
#include "filter/one_strip.h"

namespace host {
namespace {

[[noreturn]] void failMemory() {
  throw Failure(RAXEL_HOST_NO_MEMORY, raxelHostMessage(RAXEL_HOST_NO_MEMORY), ENOMEM);
}

// The result is a code of the library.
uint32_t send(const Library &library, Setup &setup, const Handover &picture, const RaxelPlan *plan,
              RaxelHostRoad road, OutputStream &stream) {
  if (plan && picture.rows) return exportBands(library, setup, *plan, picture, stream);
  if (plan && isOneCodedStrip(*plan)) return exportOneStrip(library, *plan, picture, stream);
  switch (plan ? road : RAXEL_ROAD_CELL) {
    case RAXEL_ROAD_DRIVER:
      return static_cast<uint32_t>(exportThroughDriver(library, setup, *plan, picture, stream));
    case RAXEL_ROAD_METAFILE: {
      const auto code = static_cast<uint32_t>(exportThroughMetafile(library, setup, stream));
      if (code != RAXEL_NO_MEMORY) return code;
      throw Failure(RAXEL_HOST_FILTER_FAILED,
                    library.path + ": records no metafiles on this platform (code 300)");
    }
    default:
      return exportCells(library, setup, picture, "output", stream);
  }
}

}  // namespace

Room::Room(const Library &library, uint64_t bytes)
    : pixels(library.services, bytes), table(library.services, 256 * 3) {
  if (!pixels.bytes() || !table.bytes()) failMemory();
  useLargePages(pixels.bytes(), static_cast<size_t>(bytes));
}

void checkMemory(uint64_t blocks) {
  if (!prepare::fits(blocks + prepare::kFilterTables)) failMemory();
}

void writePicture(const Library &library, Setup &setup, const Handover &picture, const RaxelPlan *plan,
                  RaxelHostRoad road, uint64_t writes, Output &output, Pace &pace) {
  OutputStream stream(output.sink(), pace);
  setup.setOutput(&OutputStream::procedure);
  pace.expect(writes);
  const uint32_t result = send(library, setup, picture, plan, road, stream);
  if (pace.stopped()) pace.check(output.sink().size());
  output.checkWritten();
  checkComplete(stream, result, output.name(), library);
}

}  // namespace host
