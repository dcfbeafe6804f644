// SPDX-License-Identifier: MIT
// All inputs of one command.
#pragma once

#include "order/options.h"

namespace host {

// Exports every input; one that fails does not keep the others from being tried. Returns the exit code:
// that of the first input that failed.
int exportAll(const Options &options);

}  // namespace host
