// SPDX-License-Identifier: MIT
// Parts of file names, and names for temporary files, within bounds.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace runtime {

constexpr size_t kTempNameRoom = 144;  // what KVLGetTempFileName may fill, zero byte included

// Copies text into a buffer, cut to its room and terminated. Returns whether all of it fitted. No more of
// the text is read than has room.
bool copyText(std::span<char> to, const char *text);

// The length of a path's folder, with its last slash; 0 for a bare name.
size_t folderLength(const char *path);

// What follows the last backslash, or failing that the last slash, or failing that the last colon.
const char *fileNameOf(const char *path);

// The same without the extension that begins at its last point.
std::string_view stemOf(const char *path);

// Puts the folder, "/" unless the folder ends in one, and the name into a buffer. Returns whether
// all of it fitted.
bool joinPath(std::span<char> to, const char *folder, const char *name);

// Appends 12 random letters and digits. Returns whether there was room and randomness.
bool appendRandomName(std::span<char> text);

}  // namespace runtime
