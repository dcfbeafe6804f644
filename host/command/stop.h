// SPDX-License-Identifier: MIT
// Ctrl-C and its kin: the temporary goes, the old file stays, and the process ends at once.
//
// The handlers run whatever the program is doing, be it inside the library, a decoder or a wait for the
// disk; so the end comes within milliseconds, and nothing needs to poll.
#pragma once

#include <sys/types.h>

#include <string>

namespace host::stop {

// Installs the handlers: interrupt, terminate and hang-up, and the fault that a mapped input gives when
// somebody cuts it short. (An abort, by which the filter ends a process that has no memory left, is watched
// from the start.)
void install();

// The file to remove when a signal comes; empty for none. Longer names than a path may have are cut off.
void setTemporary(const std::string &path);

// The next temporary is that of the last file: once it has the file's name, a stop comes too late, and what
// is left of the reports is written. Who asks again ends that, too.
void setLast();

// The input that is being read, for the message when somebody cuts it short; empty for none.
void setInput(const std::string &name);

// True on a terminal line that must be wiped before a message.
void setLineShown(bool shown);

// Children to be stopped along with this process.
void addChild(pid_t child);
void removeChild(pid_t child);
// In a new child: the others are not its own.
void forgetChildren();

}  // namespace host::stop
