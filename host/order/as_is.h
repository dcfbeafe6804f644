// SPDX-License-Identifier: MIT
// The road of an application that prepares nothing.
#pragma once

#include "filter/given.h"
#include "filter/library.h"
#include "order/options.h"
#include "order/report.h"
#include "pictures/picture.h"

namespace host {

// Throws a Failure for a picture of a size that cannot be handed over.
void checkAsIs(const Picture &picture, const std::string &input);

// Hands the picture over at its own depth and size; the filter reduces, scales and dithers in its own
// way, and writes combinations that few readers open. Output and callbacks are those of the job; a file in
// memory goes to *memory, unless that is null.
void exportAsIs(const Library &library, const Options &options, Given &given, const Picture &picture,
                const RaxelHostJob &job, Report &report, uint8_t **memory);

}  // namespace host
