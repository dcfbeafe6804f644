// One picture from file to file.
#pragma once

#include "library.h"
#include "options.h"
#include "progress.h"
#include "report.h"

namespace host {

// Exports a picture, shows the progress and fills the report as it goes. Throws a Failure; the old output
// then stands.
void exportPicture(const Library &library, const Options &options, const std::string &input,
                   const std::string &output, Progress &progress, Report &report);

}  // namespace host
