// SPDX-License-Identifier: MIT
// The colour library: pixel access, depth conversion, scaling, CMYK; with raxel/median_cut.h, which chooses
// tables, and raxel/dither.h, which diffuses errors.
//
// A picture is not a record: it travels as separate arguments.
//
//   bits    handle of the rows (raxel/memory.h), one after another from row 0 on; each row takes
//           rlBytesPerLine(width, depth) bytes, a multiple of 4
//   width   pixels of a row               height  rows
//   depth   bits a pixel: 1, 4, 8, 24 or 32. Any other depth reads as 0 and writes nothing
//   table   entries of 3 bytes red, green, blue, without padding; their count is kept apart
//
//   depth  a row holds                                               value word of a pixel
//       1  8 pixels a byte, the leftmost in the most significant bit   the colour index
//       4  2 pixels a byte, the left one in the high nibble            the colour index
//       8  1 index byte a pixel                                        the colour index
//      24  red, green, blue bytes                                      red << 24 | green << 16 | blue << 8
//      32  red, green, blue and a fourth byte: 0, alpha or black       the same | fourth byte
//
// The writer (raxel/tiff.h) takes the first and third byte of a 24-bit pixel the other way round. The
// library does not reconcile the two: a host hands over the order that its destination expects.
//
// Functions that return a picture, a table or a map return the handle of a new block, which the
// caller owns and frees with rlFreeNewData; they never free or change their source. They return 0 when
// a handle or pointer that they need is null, and when the result would be larger than 4 GB (2 GB
// where addresses have 32 bits). Where a block is shorter than its picture's width, height and depth
// say, the missing bytes read as 0 and are not written. Functions that take plain pointers trust them.
#ifndef RAXEL_COLOR_H
#define RAXEL_COLOR_H

#include "raxel/dither.h"
#include "raxel/median_cut.h"
#include "raxel/types.h"

RAXEL_BEGIN

// ---- Rows, pixels, and the library's names for handle memory

// Bytes of one row: width * depth bits, rounded up to whole bytes and then to a multiple of 4. All
// rows together: that times the height. Both answer modulo 2^32, and 0 for a depth below 1.
RAXEL_EXPORT int32_t rlBytesPerLine(uint32_t width, int16_t depth);
RAXEL_EXPORT uint32_t rlCalcNewSize(uint32_t width, uint32_t height, int16_t depth);

// The value word of a pixel.
//   bits          first byte of row 0
//   bytesPerLine  from one row to the next; negative where rows run backwards
RAXEL_EXPORT uint32_t rlGetPixel(const uint8_t *bits, int32_t bytesPerLine, uint32_t x, uint32_t y,
                                 int16_t depth);

// Sets a pixel; always returns 0. What is stored is a word v:
//   map given             v = map[value], one word for each value that the caller uses
//   table alone           at depths 1, 4, 8: v = the table's entry nearest to the value as an RGB word
//   neither               v = value
// Depths 1, 4 and 8 store the low bits of v. Depths 24 and 32 store the bytes v >> 24, v >> 16, v >> 8,
// or with both map and table the colour of entry v (black when there is none); the fourth byte is the
// low byte of v without a table, and 0 with one.
//   table, count  the destination's colour table
RAXEL_EXPORT int32_t rlSetPixel(uint8_t *bits, int32_t bytesPerLine, uint32_t x, uint32_t y, int16_t depth,
                                uint32_t value, const uint32_t *map, const uint8_t *table, uint16_t count);

// The index of the table's entry nearest to a colour: least sum of squared differences, the lowest
// index of equals. Greys match only greys and colours only colours. A request is grey when its
// channels are pairwise within 4, an entry when its bytes are equal. 0 when no entry qualifies.
//   red, green, blue  0 to 255      count  entries; none when negative
RAXEL_EXPORT int32_t rlNearestRGBIndex(int16_t red, int16_t green, int16_t blue, const uint8_t *table,
                                       int16_t count);

// The map from a source's indexes to what rlSetPixel stores: 1 << sourceDepth words, the index of the
// nearest destination entry each, or for a destination of 24 bits the RGB word of the source entry.
// Without a destination table the source's own serves, when the destination is at least as deep.
// Where a table is missing the words stay 0. Returns 0 for source depths outside 1 to 8: deeper
// pixels are no indexes.
//   sourceTable  1 << sourceDepth entries, or null      table, count  may be null
RAXEL_EXPORT Handle rlBuildColormap(const uint8_t *sourceTable, int16_t sourceDepth, const uint8_t *table,
                                    int16_t depth, uint16_t count);
// Frees a map; returns 0.
RAXEL_EXPORT int32_t rlFreeColormap(Handle map);

// A new block of elementSize * elementCount zero bytes; 0 for a negative size or one past 4 GB.
RAXEL_EXPORT Handle rlGetMemory(int16_t elementSize, uint32_t elementCount);
// The address of a block; null for the null handle.
RAXEL_EXPORT void *rlLockMemory(Handle handle);
// Returns 0: nothing ever moves.
RAXEL_EXPORT int32_t rlUnlockMemory(Handle handle);
// Frees a block and returns 1; returns 0 for the null handle.
RAXEL_EXPORT int32_t rlFreeNewData(Handle handle);
// The handle of an address that came from rlLockMemory.
RAXEL_EXPORT Handle rlPointertoHandle(const void *pointer);

// ---- Changing the depth

// Brings a picture to another depth, choosing a table and dithering where the depth falls:
//
//   from        to          what is done
//   24          8           a table of up to 256 colours by rlReduceColorTable, and for each pixel the
//                           nearest entry of it
//   24, 8       4           dithered by rlDitherBitmap, to a table that it chooses
//   24, 8, 4    1           the same
//   any         as deep or  converted by rlConvertBitmapDepth, without a table for the destination
//               deeper
//
// Returns 0 for pictures of 32 bits that are to become shallower (rlCMYKtoRGB and rlALPHAtoRGB bring
// them to 24 first), for shallower destinations below 8 bits other than 1 and 4, and for pictures past
// 4 GB.
//
// Heights count as signed 16-bit numbers where colours are chosen: a table for 32,768 to 65,535 rows has
// none of the picture. To 8 bits all indexes are 0 then, to 4 bits the table is must_have_colors.
//   table  in: handle of the source's table, or 0, which stays the caller's; out: handle of the new
//          table, the caller's to free, or 0 when none was made (to the same depth or a deeper one).
//          When 0 is returned it stays as it is
RAXEL_EXPORT Handle rlChangeColorResolution(Handle bits, uint32_t width, uint32_t height,
                                            int16_t sourceDepth, int16_t depth, Handle *table);

// Converts a picture pixel by pixel:
//
//   from      to            a pixel becomes
//   24, 32    1, 4, 8       the nearest entry of the table. Without a table 0 from 24 bits, and from 32
//                           the low bits of the fourth byte
//   24, 32    24, 32        its red, green, blue; the fourth byte goes along where both have one and no
//                           table is given, else it is 0
//   1, 4, 8   as deep or    the entry of its own table nearest to its colour, mostly its own index; with
//             deeper        a table for the destination the nearest of that
//   1, 4, 8   shallower     the nearest entry of the table, 0 without one
//   1, 4, 8   24            its colour in the source's table. With a table for the destination black: that
//                           is asked for the entry whose number is the colour as an RGB word, which is
//                           there for black, entry 0, and in tables of more than 256 for a few dark blues
//   1, 4, 8   32            its colour in the source's table, with a table for the destination the nearest
//                           colour of that; the fourth byte is 0
//
// Source depths that cannot be read are all zeros, and destination depths that cannot be written give a
// block of zeros. Returns 0 for pictures past 4 GB, of either depth.
//   sourceTable   1 << sourceDepth entries for a source of indexes; may be 0, and indexes become 0, or
//                 black, then
//   table, count  the destination's table and its entries; may be 0. Entries past the end of the table's
//                 block are not searched, and none are when the count is above 32767
RAXEL_EXPORT Handle rlConvertBitmapDepth(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                         int16_t depth, Handle sourceTable, Handle table, uint16_t count);

// ---- Scaling and mirroring

// A picture made smaller or larger by leaving out and repeating pixels. The two entries do the same:
// what gets lower is shrunk, what gets higher is stretched. In a row that gets narrower, or stays as
// wide, pixel k is source pixel trunc(k * ratio), and the last one is the source's last; a row that
// gets wider is filled from the right. The same of rows, where going down the last one is no
// exception. A source that is widened has its width taken as a signed 16-bit number: of 65,538 pixels
// the first 2 fill the whole row, and rows of 32,768 to 65,536 pixels, where none is left, stay 0.
RAXEL_EXPORT Handle rlShrinkBitmap(Handle bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight,
                                   uint32_t width, uint32_t height);
RAXEL_EXPORT Handle rlStretchBitmap(Handle bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight,
                                    uint32_t width, uint32_t height);
#ifndef RAXEL_NO_SHORT_NAMES  // Shrink, Stretch, ShrinkX, StretchX
// The workers of whole pictures and of single rows, over memory that the caller owns; source and
// destination must not overlap. They return 0. Rows are counted as 1, whatever `rows` says.
RAXEL_EXPORT int32_t Shrink(const uint8_t *source, uint8_t *destination, int16_t depth,
                            uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width, uint32_t height);
RAXEL_EXPORT int32_t Stretch(const uint8_t *source, uint8_t *destination, int16_t depth,
                             uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width, uint32_t height);
RAXEL_EXPORT int32_t ShrinkX(const uint8_t *source, uint8_t *destination, int16_t depth,
                             uint32_t sourceWidth, uint32_t rows, uint32_t width);
RAXEL_EXPORT int32_t StretchX(const uint8_t *source, uint8_t *destination, int16_t depth,
                              uint32_t sourceWidth, uint32_t rows, uint32_t width);
#endif
// Mirrors a picture in place and returns its handle.
//   leftRight, topBottom  which way, when not 0
// Left-right, pixel x changes places with pixel width - x: the first pixel with what lies just past
// its row, the last one with the second. Past the end of the block's bytes that is 0, and lost.
RAXEL_EXPORT Handle rlFlipBitmap(Handle bits, int16_t depth, uint32_t width, uint32_t height,
                                 uint16_t leftRight, uint16_t topBottom);

// ---- Pictures of four bytes a pixel, changed in place, as far as the block reaches

// Red, green, blue, any -> cyan, magenta, yellow, 0: complements, without taking out black.
RAXEL_EXPORT void rlRGB4toCMYK(Handle bits, uint32_t width, uint32_t height);
// Cyan, magenta, yellow, black -> red, green, blue: the complement of the larger of each ink and black.
// The pixels come out packed, 3 bytes each, without padding between rows.
RAXEL_EXPORT void rlCMYKtoRGB(Handle bits, uint32_t width, uint32_t height);
// Drops every fourth byte; packed in the same way.
RAXEL_EXPORT void rlALPHAtoRGB(Handle bits, uint32_t width, uint32_t height);

// ---- Diagnostics

// How much the library prints of what it does: reduction, conversion and pixels on standard error,
// dithering on standard output. Stored in 16 bits and compared as signed.
//   0        nothing
//   below 3  summaries, and "." for each row
//   3        summaries
//   above 3  summaries, and at every depth the place of each pixel set, which takes the slow road
RAXEL_EXPORT extern uint16_t _debug_color_res;

RAXEL_END

#endif
