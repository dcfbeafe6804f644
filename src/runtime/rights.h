// SPDX-License-Identifier: MIT
// Who may do what with a file that takes another's place.
#pragma once

#include <sys/stat.h>

namespace runtime {

// Gives an open new file the owner, the permissions and the list of further users of the file at `path`,
// which `old` describes, as far as the process may. Nobody gets more by it than the old file gave him.
// Returns whether the permissions are settled; on a disk that has none they are.
bool takeOver(int fd, const char *path, const struct stat &old);

}  // namespace runtime
