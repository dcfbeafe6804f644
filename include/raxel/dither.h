// SPDX-License-Identifier: MIT
// Dithering by error diffusion, to depths of 1, 4 and 8 bits. Pictures and tables are those of
// raxel/color.h.
#ifndef RAXEL_DITHER_H
#define RAXEL_DITHER_H

#include "raxel/types.h"

RAXEL_BEGIN

// Chooses a table, as rlDitherGetCT does, or takes the caller's, and dithers to it. Returns 0 for any other
// depth, without bits or a place for the table, and for pictures past 4 GB at 24 bits.
//   table  in: a table of 1 << depth entries to dither to (those that its block lacks are not searched),
//          or 0; out: the table used. A table that was made is the caller's to free. When 0 is returned
//          the handle stays as it is
RAXEL_EXPORT Handle rlDitherBitmap(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                   int16_t depth, Handle sourceTable, Handle *table);

// Only chooses the table, so that a picture in several pieces can be dithered to one.
//
//   depth  the table                                                                     its count
//   1      the one handed in, else                                                       2
//          a copy of MonoTable                                                           8
//   4, 8   always a new one: the picture's colours by rlReduceColorTable, at most 8 or   16, 256
//          248, then must_have_colors, then black
//
// Heights count as signed 16-bit numbers where colours are chosen: a table for 32,768 to 65,535 rows has
// none of the picture.
//   table  in: a table for 1 bit, or 0; out: the table. One that was made is the caller's to free, and so
//          stays a table handed in at 4 and 8 bits, where its handle is overwritten
//   count  out: the table's entries, as far as a table handed in has them
// What rlDitherBitmap refuses leaves the table's handle as it is and a count of 0.
RAXEL_EXPORT void rlDitherGetCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                int16_t depth, Handle sourceTable, Handle *table, uint16_t *count);

// Dithers to a table chosen before. At 1 bit pixels take the lowest bit of their entry's index: with
// MonoTable the entries 1, 3, 5, 7 set them. Returns 0 for what rlDitherBitmap refuses.
//   table, count  its entries; the count is cut at what the table's block holds. Without a table, and
//                 when the count is then 0 or above 32767, all pixels are 0
RAXEL_EXPORT Handle rlDitherGivenCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                    int16_t depth, Handle sourceTable, Handle table, uint16_t count);

// Dithers one row of width 24-bit pixels in place, from left to right, and spreads the errors. With an
// error e of a channel, e8 = e / 8 and e716 = 7 * e / 16, both truncated toward zero, the pixel to the
// right gets e716, the one below e716 - e8, below left e716 - 2 * e8, below right e716 - 3 * e8; each
// sum is clamped to 0..255 at once. The last pixel takes the entry of the one before it (entry 0 where
// it is alone) and spreads nothing.
//   current, next  first bytes of the two rows; next is null for the last row
//   table, count   3-byte entries; without any the row becomes black
RAXEL_EXPORT void _rlDitherOneLine(uint8_t *current, uint8_t *next, const uint8_t *table, uint32_t width,
                                   int16_t count);

// Changes a row of width 24-bit pixels in place: mode 1 inverts every channel, 2 only pixels whose
// channels are pairwise within 10, 3 turns to grey, (3 * red + 6 * green + blue) / 10, 4 to inverted
// grey. Other modes do nothing.
RAXEL_EXPORT void rev_rgb(uint32_t width, uint8_t *row, int32_t mode);

// i - 128 limited to 0..255: read from index 128 on, it clamps sums from -128 to 383.
RAXEL_EXPORT extern const uint8_t BOUNDARY_CHK[512];
// What bilevel pictures are dithered to: eight greys, red, green, blue each.
RAXEL_EXPORT extern const uint8_t MonoTable[8][3];
// Appended to every table chosen for dithering: white, yellow, magenta, cyan, red, green, blue, black.
RAXEL_EXPORT extern const uint8_t must_have_colors[8][3];

RAXEL_END

#endif
