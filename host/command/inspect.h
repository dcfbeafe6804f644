// SPDX-License-Identifier: MIT
// --inspect: what a TIFF file holds, for people and for programs.
#pragma once

#include "order/options.h"

namespace host {

// Prints each input's directory, strips or tiles, and faults. Returns the exit code: kNoInput when a
// file cannot be read or its pixels cannot be decoded.
int inspectAll(const Options &options);

}  // namespace host
