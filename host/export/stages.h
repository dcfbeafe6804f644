// SPDX-License-Identifier: MIT
// The stages that every export goes through between its plan and its report. First comes the room: memory
// for pixels and table is asked for before the filter could end the process. Then the caller fills it, with
// prepared pixels or with the picture as it is; where rows are made on the way there is nothing to fill.
// Then the picture is written through the filter into the output, with a look at whether all of it arrived.
// Last the caller checks the file, and the output commits it: it takes the old one's place.
#pragma once

#include "export/output.h"
#include "export/pace.h"
#include "filter/handover.h"

namespace host {

// A block for the pixels, or for those of a band, and one for a table of 256 colours.
struct Room {
  prepare::HandleMemory pixels, table;

  // Throws a Failure when there is not enough memory.
  Room(const Library &library, uint64_t bytes);
};

// Throws a Failure when the filter would run out of memory while it writes: it takes its tables, and on
// some roads blocks of the picture's size.
void checkMemory(uint64_t blocks);

// Sends the picture by a road, in `writes` writes of image data or so. Throws a Failure when the filter,
// the output or a callback stopped on the way. The pixels are of no use afterwards.
void writePicture(const Library &library, Setup &setup, const Handover &picture, const RaxelPlan *plan,
                  RaxelHostRoad road, uint64_t writes, Output &output, Pace &pace);

}  // namespace host
