// SPDX-License-Identifier: MIT
// The command line.
#pragma once

#include "order/options.h"

namespace host {

// Reads the command line. Throws a Failure with kUsage.
Options parseOptions(int argc, char **argv);

}  // namespace host
