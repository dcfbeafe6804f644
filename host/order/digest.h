// SPDX-License-Identifier: MIT
// SHA-256 of files, from libcrypto, which is loaded when the first one is asked for.
#pragma once

#include <string>
#include <vector>

namespace host {

// In hexadecimal, of these files one after the other. Throws a Failure that names the one which cannot be
// read, or says that there is no libcrypto.
std::string digestOf(const std::vector<std::string> &paths);

}  // namespace host
