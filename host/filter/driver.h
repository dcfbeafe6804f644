// SPDX-License-Identifier: MIT
// The road of an application that drives the filter like a graphics device.
#pragma once

#include "filter/handover.h"

namespace host {

// Why a plan cannot go this road; empty when it can.
std::string driverRefusal(const RaxelPlan &plan);

// One driver session: open, picture, colour table, the rows as cell arrays, close. Returns the first code
// that a function pushed, 0 for none. The picture's units are ignored: it is sent at the plan's
// resolution.
int32_t exportThroughDriver(const Library &library, Setup &setup, const RaxelPlan &plan,
                            const Handover &picture, OutputStream &stream);

// One metafile session. This platform records no metafile, so the library ends every session with a code.
int32_t exportThroughMetafile(const Library &library, Setup &setup, OutputStream &stream);

}  // namespace host
