// SPDX-License-Identifier: MIT
// Sources for the shells' completions and for the manual page, made from the option table at build time.
#pragma once

#include <string>

namespace host {

std::string bashCompletion();
std::string zshCompletion();
std::string fishCompletion();
// The options as a section of a page in scdoc's form.
std::string manualOptions();

}  // namespace host
