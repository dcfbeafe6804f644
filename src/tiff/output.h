// SPDX-License-Identifier: MIT
// What the writer needs from its output stream beyond the exported calls.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/stream.h"

namespace tiff {

// Whether every call on the stream goes to a procedure of the host. Such a host sees each write and
// seek with its size, so their sequence is fixed; on streams of our own only the bytes are.
bool isHostStream(Handle file);

// Whether the stream is a file on disk behind a buffer of our own, where a seek far back costs a
// flush. Memory streams and host streams are not.
bool isDiskFile(Handle file);

// The current position. A stream that cannot tell gives 0xFFFFFFFF, which no offset in a file can be.
uint32_t tell(Handle file);
// Goes to a position at which the next bytes will be written.
void seekTo(Handle file, uint32_t position);
// Goes back to where the file goes on. What lies behind is there to be read, as after kvlSeek.
void seekBack(Handle file, uint32_t position);

// Writes all the bytes in one call; false when the stream took fewer.
bool writeAll(Handle file, std::span<const uint8_t> bytes);

}  // namespace tiff
