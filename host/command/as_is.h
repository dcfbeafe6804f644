// The road of an application that prepares nothing.
#pragma once

#include "command/options.h"
#include "command/report.h"
#include "filter/given.h"
#include "filter/library.h"
#include "pictures/picture.h"

namespace host {

// Throws a Failure for a picture of a size that cannot be handed over.
void checkAsIs(const Picture &picture, const std::string &input);

// Hands the picture over at its own depth and size; the filter reduces, scales and dithers in its own
// way, and writes combinations that few readers open. Output and callbacks are those of the job.
void exportAsIs(const Library &library, const Options &options, Given &given, const Picture &picture,
                const RaxelHostJob &job, Report &report);

}  // namespace host
