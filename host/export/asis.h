// The road of an application that prepares nothing.
#pragma once

#include "command/options.h"
#include "command/progress.h"
#include "command/report.h"
#include "filter/library.h"
#include "filter/setup.h"
#include "pictures/picture.h"

namespace host {

// Hands the picture over at its own depth and size; the filter reduces, scales and dithers in its own
// way, and writes combinations that few readers open.
void exportAsIs(const Library &library, const Options &options, Setup &setup, const Picture &picture,
                const std::string &output, Progress &progress, Report &report);

}  // namespace host
