// One picture from file to file.
#pragma once

#include "command/options.h"
#include "command/progress.h"
#include "command/report.h"
#include "filter/library.h"

namespace host {

// Exports a picture, shows the progress and fills the report as it goes. Throws a Failure; the old output
// then stands.
void exportPicture(const Library &library, const Options &options, const std::string &input,
                   const std::string &output, Progress &progress, Report &report);

}  // namespace host
