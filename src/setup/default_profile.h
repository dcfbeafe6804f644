// SPDX-License-Identifier: MIT
// The profile's name when the host gives none.
#pragma once

#include <span>

namespace setup {

// Puts the library's own name into export_szDLLName, unless something stands there already.
void learnLibraryName();

// The profile that goes by the library's name: the file name in export_szDLLName, cut at its first
// point, and ".ini". A name that does not fit leaves `to` empty.
void defaultProfile(std::span<char> to);

// The file name in a path: what follows its last backslash, else its last slash, else its last
// colon, without the extension that begins at its last point. What does not fit leaves `to` empty.
void fileStem(std::span<char> to, const char *path);

}  // namespace setup
