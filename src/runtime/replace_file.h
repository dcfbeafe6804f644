// SPDX-License-Identifier: MIT
// Replacing a file so that at every moment either the old one or the new one is there, whole.
#pragma once

#include <sys/stat.h>

namespace runtime {

// Whether nothing is at a path, or only a link that leads to nothing.
bool isAbsent(const char *path);

// Makes an empty file that was not there before, for this user alone. Returns whether it could.
bool createPrivate(const char *path);

// Puts a copy of all bytes of the open file `source` in the place of `path`: the copy is made beside the
// file that the path leads to (through links), brought to the disk, and renamed over it. `old` describes
// the file that is replaced, whose owner and permissions are kept, or is null when there is none. Returns
// whether it was done; if not, the old file is still there.
bool replaceFile(const char *path, int source, const struct stat *old);

}  // namespace runtime
