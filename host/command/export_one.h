// One output, from the files of its pictures.
#pragma once

#include "command/options.h"
#include "command/progress.h"
#include "command/report.h"
#include "command/task.h"
#include "filter/library.h"

namespace host {

// Exports the picture or the pages of a task, shows the progress and fills the report as it goes. Throws a
// Failure; the old output then stands.
void exportPicture(const Library &library, const Options &options, const Task &task, Progress &progress,
                   Report &report);

}  // namespace host
