// SPDX-License-Identifier: MIT
// A picture handed over in bands, through the draw procedure of the filter's picture pipeline: no block
// holds more of it than a band.
#pragma once

#include "filter/handover.h"

namespace host {

// True when the file of a plan does not show in how many bands the filter got its rows: strips of coded
// rows are quarters of a band.
bool takesBands(const RaxelPlan &plan);

// The size of the block for a band: enough for some rows, and little enough to stay in a cache.
uint64_t bandBytes(const RaxelPlan &plan);

// Sends the picture, whose `rows` are made band by band into its block. The result is the library's.
uint32_t exportBands(const Library &library, Setup &setup, const RaxelPlan &plan, const Handover &picture,
                     OutputStream &stream);

}  // namespace host
