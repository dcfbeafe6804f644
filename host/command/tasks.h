// SPDX-License-Identifier: MIT
// What a command line comes to: one task for each output.
#pragma once

#include <vector>

#include "order/task.h"

namespace host {

// In the order of the inputs. With -d and --page every input is opened, to know its pages. Throws a Failure
// with kUsage when two pages would be written to one file.
std::vector<Task> tasksOf(const Options &options);

}  // namespace host
