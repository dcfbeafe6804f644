// SPDX-License-Identifier: MIT
// The lines of a manifest, to which other processes append meanwhile.
#pragma once

#include <string>

namespace host {

// Throws a Failure when no line could be appended, or when the file has something else in it than lines of
// JSON: a slip must not spoil a picture.
void checkManifest(const std::string &path);

// Reads what has been appended since the last call. The places of lines are kept for the process, since a
// manifest of a million pictures is long; processes that are started afterwards have them, too.
void readManifest(const std::string &path);

// The last line that stands for a target, as far as the manifest has been read; empty when there is none.
// `target` is the JSON of its name.
std::string manifestLine(const std::string &path, const std::string &target);

// Appends a line by one write. Throws a Failure that names the manifest.
void appendToManifest(const std::string &path, const std::string &text);

}  // namespace host
