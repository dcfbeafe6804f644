// Waiting for the disk without being held up by it.
#pragma once

#include <cstdint>

namespace host {

// Has `bytes` of a file written to the disk, as fsync does: 0, or the errno. A signal that ends this
// process ends it at once, though the system lets nobody out of an fsync: what takes long is left to a
// child.
int syncToDisk(int fd, uint64_t bytes);

}  // namespace host
