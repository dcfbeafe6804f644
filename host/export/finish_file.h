// The finishing step of an export: between the filter's last write and the renaming.
#pragma once

#include "export/output.h"
#include "raxel/host.h"

namespace host {

// Gives the page that has just been written to the output the directory that the plan means. Throws a
// Failure that names the output; its old file stays.
void finishPage(Output &output, const RaxelPlan &plan, finish::Chain &chain);

}  // namespace host
