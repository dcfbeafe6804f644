// SPDX-License-Identifier: MIT
// Reads and writes of a stream's file at given offsets.
//
// A file that the library opened itself is unbuffered, so its descriptor is used directly: one
// system call a transfer. A borrowed stream may hold bytes of the caller in its own buffer and goes
// through standard I/O. Offsets end at 2^31 - 1; what would lie beyond fails.
#pragma once

#include "runtime/stream_record.h"

namespace runtime {

// Returns the bytes read, fewer than asked at the end of the file; -1 on failure.
int32_t readAt(const Stream &stream, int32_t offset, std::span<uint8_t> to);
// Returns the bytes written; fewer than given means failure.
int32_t writeAt(const Stream &stream, int32_t offset, std::span<const uint8_t> from);
// Returns the position that an offset means, -1 when there is none. `whence` as in fseek.
int32_t positionOf(const Stream &stream, int32_t offset, int32_t whence);
// Returns the size of the file, at most 2^31 - 1; -1 when it has none.
int32_t sizeOf(const Stream &stream);

// Returns the size after a write that ended at `end`. A file that only this stream writes need not be
// asked.
int32_t sizeAfterWrite(const Stream &stream, int32_t end);

}  // namespace runtime
