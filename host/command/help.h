// SPDX-License-Identifier: MIT
// Texts made from the option table.
#pragma once

#include <string>

namespace host {

// What --help prints.
std::string helpText();
std::string helpJson();
// What --list prints.
std::string listText();
std::string listJson();

}  // namespace host
