// SPDX-License-Identifier: MIT
// All rows of a fax-coded picture as one strip. The filter cuts every picture into quarters; its coders,
// which are exported, take any number of rows.
#pragma once

#include "filter/handover.h"

namespace host {

// True for a plan whose rows go out this way and not through the filter's picture calls.
bool isOneCodedStrip(const RaxelPlan &plan);

// Writes the header's 8 bytes, whose directory is still to come, and behind them the strip. The result is a
// code of the library; a whole strip makes the stream complete.
uint32_t exportOneStrip(const Library &library, const RaxelPlan &plan, const Handover &picture,
                        OutputStream &stream);

}  // namespace host
