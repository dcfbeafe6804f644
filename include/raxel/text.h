// SPDX-License-Identifier: MIT
// Small string and number helpers, the same in every locale.
//
// Letters are those of ASCII; the bytes 0x80 to 0xFF are left alone and compare as the negative
// numbers -128 to -1. Strings end at their zero byte and stay the caller's. A null string gives 0.
#ifndef RAXEL_TEXT_H
#define RAXEL_TEXT_H

#include "raxel/types.h"

RAXEL_BEGIN
#ifndef RAXEL_NO_SHORT_NAMES  // strupr, strlower, strlwr, stricmp, strnicmp, dabs, roundd, feqi
// Turn every letter of a string into a capital, or into a small letter, in place, and return the
// string. strlwr is strlower under a second name.
RAXEL_EXPORT char *strupr(char *text);
RAXEL_EXPORT char *strlower(char *text);
RAXEL_EXPORT char *strlwr(char *text);

// Compares two strings without regard to case. Returns 0 when they are equal; otherwise the capital
// of the first differing character of b minus that of a. The sign is thus the reverse of strcmp's:
// positive when a sorts before b.
RAXEL_EXPORT int32_t stricmp(const char *a, const char *b);

// The same over exactly n characters. It does not stop at a zero byte: both arguments must be
// readable for n bytes, or up to the first difference. n below 1 gives 0.
RAXEL_EXPORT int32_t strnicmp(const char *a, const char *b, int32_t n);

// x where x > 0, otherwise -x: 0.0 gives -0.0, and a NaN stays one.
RAXEL_EXPORT double dabs(double x);

// The integer nearest to x, halves away from zero. Values outside 32 bits become the nearest end of
// the range, and a NaN becomes 0.
RAXEL_EXPORT int32_t roundd(double x);

// 1 when a and b differ by at most `tolerance`, else 0. Distance and tolerance compare as unsigned
// numbers, so that a negative tolerance accepts every pair.
RAXEL_EXPORT int32_t feqi(int32_t a, int32_t b, int32_t tolerance);
#endif
RAXEL_END

#endif
