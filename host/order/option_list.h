// SPDX-License-Identifier: MIT
// The options, for programs.
#pragma once

#include <string>

namespace host {

// One JSON document of all options.
std::string optionsJson();

}  // namespace host
