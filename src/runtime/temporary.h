// SPDX-License-Identifier: MIT
// A file in the making, beside the one whose place it is to take.
//
// Its name is `.NAME.raxel-N`: NAME that of the file, cut at 200 bytes, and N a digit. Its maker holds a
// lock on it, so one without a lock is what a dead process has left. Libraxelhost calls and locks its own
// in the same way, and each removes what the other left. Where others have taken all ten names, it is
// `.raxel-` and 12 random characters, which nobody foresees.
#pragma once

#include <sys/types.h>

#include <climits>

namespace runtime {

struct Temporary {
  int fd;  // stays open, and with it the lock, until the file has its new name or has gone
  char path[PATH_MAX];
};

// Removes what dead processes have left of such files, and makes a new one that is open for writing. Names
// that somebody else has put there, links and folders too, are neither followed nor touched. `mode` as for
// open(). Returns whether it could; if not, nothing is there.
bool makeTemporary(Temporary &made, const char *target, mode_t mode);

}  // namespace runtime
