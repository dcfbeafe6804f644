// SPDX-License-Identifier: MIT
// Where the project lies, for the files that tests read. One source alone knows it, so that a compiler
// cache can serve every other one to every checkout.
#pragma once

#include <string>

namespace support {

// The path of a file or folder of the project, named from its top: sourcePath("tests/golden").
std::string sourcePath(const std::string &fromTop);

}  // namespace support
