// SPDX-License-Identifier: MIT
// Waiting for the disk.
#pragma once

#include <cstdint>

namespace host {

// What a file's closing would tell of, without closing it, which would give up its lock: disks of a network
// say only then what they could not write. 0, or the errno.
int troubleWithClosing(int fd);

// Has a file written to the disk, as fsync does: 0, or the errno.
int syncToDisk(int fd);

// The same for a file of `bytes`, without being held up: a signal that ends this process ends it at once,
// though the system lets nobody out of an fsync. What takes long is left to a child. Not for programs with
// threads or children of their own.
int syncInChild(int fd, uint64_t bytes);

}  // namespace host
