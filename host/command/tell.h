// SPDX-License-Identifier: MIT
// What happened to a picture, told to people.
#pragma once

#include <string>
#include <string_view>

#include "order/report.h"

namespace host {

// One line on standard error: "raxel-export: " and the text. Names of files may hold control characters,
// which are written out so that they command no terminal and break no line.
void say(const std::string &text);
std::string printable(std::string_view text);

// True when the JSON document goes to standard error, because the picture has standard output. Nothing else
// is told there then.
bool reportsOnStderr(const Options &options);

// Tells people: notes and errors on standard error, and what --dry-run and --verbose ask for.
void tell(const Report &report, const Options &options);

// The same for a page of a file that is still being written.
void tellPage(const Report &page, const Options &options);

}  // namespace host
