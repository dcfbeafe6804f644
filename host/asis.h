// The road of an application that prepares nothing.
#pragma once

#include "library.h"
#include "options.h"
#include "pictures/picture.h"
#include "progress.h"
#include "report.h"
#include "setup.h"

namespace host {

// Hands the picture over at its own depth and size; the filter reduces, scales and dithers in its own
// way, and writes combinations that few readers open.
void exportAsIs(const Library &library, const Options &options, Setup &setup, const Picture &picture,
                const std::string &output, Progress &progress, Report &report);

}  // namespace host
