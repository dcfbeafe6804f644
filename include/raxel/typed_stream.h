// SPDX-License-Identifier: MIT
// Numbers and records on streams, in a byte order of their own.
#ifndef RAXEL_TYPED_STREAM_H
#define RAXEL_TYPED_STREAM_H

#include "raxel/stream_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

// Set and return the two format words of a stream. Both return 0; either address may be null.
RAXEL_EXPORT int32_t kvlSetDataFormat(Handle stream, uint16_t dataFormat, uint16_t floatFormat);
RAXEL_EXPORT int32_t kvlGetDataFormat(Handle stream, uint16_t *dataFormat, uint16_t *floatFormat);

// Read `count` native items of 2, 4, 4 or 8 bytes, at any address, out of the stream's byte order.
// Return count, or 0 when not all of the bytes came. kvlReadChar reads one byte, whatever the count,
// and returns what kvlRead does.
RAXEL_EXPORT int32_t kvlReadChar(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadShort(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadLong(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadFloat(Handle stream, void *data, int32_t count);
RAXEL_EXPORT int32_t kvlReadDouble(Handle stream, void *data, int32_t count);

// Write native items in the stream's byte order, one kvlWrite each. Return count; 0 or -1 when a
// write failed. kvlWriteChar writes one byte, whatever the count.
RAXEL_EXPORT int32_t kvlWriteChar(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteShort(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteLong(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteFloat(Handle stream, const void *data, int32_t count);
RAXEL_EXPORT int32_t kvlWriteDouble(Handle stream, const void *data, int32_t count);

// Move `count` native records, member by member, as a format describes them:
//
//   C S L F D   a member of 1, 2, 4, 4, 8 bytes, aligned to its size; digits before it repeat it
//   { ... }     a nested record: starts at the largest alignment inside; too deep, it
//               is an unknown character
//   ( | | )     a union: as many raw bytes as its largest alternative has, in no byte order
//   [ ... ]     members that are stepped over
//   P           nothing, and so does a closing character
//
// Letters may be small. Padding is in the record only, not in the file; reading clears it, but for
// the byte before a short. Every record ends at a multiple of its largest alignment. Return the
// number of records, or the result of the member that failed when that is below 1. An unknown
// character sets the count so far to -1.
RAXEL_EXPORT int32_t kvlReadStruct(Handle stream, void *data, const char *format, int32_t count);
RAXEL_EXPORT int32_t kvlWriteStruct(Handle stream, const void *data, const char *format, int32_t count);

// The largest alignment between the opening brace or parenthesis at `format` and its match.
RAXEL_EXPORT int32_t GetPadWidth(const char *format);

// Measures the union at `format`: stores its size, and returns the character after the group.
RAXEL_EXPORT const char *GetUnionSize(const char *format, int32_t *size);

// Store the n low-order bytes of a value, least or most significant byte first. Bytes past the
// eighth are 0.
RAXEL_EXPORT void kvlNativeToLE(uint64_t value, uint8_t *out, int32_t n);
RAXEL_EXPORT void kvlNativeToBE(uint64_t value, uint8_t *out, int32_t n);

RAXEL_END

#endif
