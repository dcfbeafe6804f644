// SPDX-License-Identifier: MIT
#pragma once

#include <string>

// The names of the host's own functions that were called, each followed by a space.
std::string hostileCalls();
