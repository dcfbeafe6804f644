// The colour library: pixel access, median cut, depth conversion, error diffusion, scaling, CMYK.
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

// ---- Choosing a table by median cut (src/color/README.md explains it)

// One entry of the list of distinct 15-bit colours: the top five bits of each channel.
typedef struct ColorFreq {
  uint16_t color15;  // red5 << 10 | green5 << 5 | blue5
  uint16_t count;    // pixels of that colour, saturated at 65535
} ColorFreq;

// One box of the median cut: a stretch of the list and its colours' extremes and mean, all channels
// of 5 bits.
typedef struct ColorBox {
  uint16_t first;       // positions in the list, both included
  uint16_t last;        //
  uint32_t pixelCount;  // the sum of the counts
  uint8_t redMin, redMax;
  uint8_t greenMin, greenMax;
  uint8_t blueMin, blueMax;
  uint8_t axis;  // the longest side: 0 red, 1 green, 2 blue
  uint8_t redMean, greenMean, blueMean;
} ColorBox;

// The context of a reduction; the host knows it by its handle.
typedef struct ColorLibContext {
  Handle hHistogram;   // 32768 counters of 16 bits, made on first use
  Handle hBoxes;       // a ColorBox for each colour wanted
  Handle hBoxOrder;    // a slot state for each: 0xFFFF free, 0xFFFE cannot be split, else its number
  uint16_t nDistinct;  // distinct 15-bit colours counted so far
  uint16_t nBoxes;     // boxes in use
  uint16_t iSplitBox;  // the last split: the box's slot, its first and last position,
  uint16_t iFirst;     //
  uint16_t iLast;      //
  uint16_t iMedian;    // and where it was cut
} ColorLibContext;

// A table of at most *count colours for a 24-bit picture: its 15-bit colours themselves when they are
// fewer, else the means of a median cut. Of the 3 * wanted bytes those past the obtained entries are 0.
//   height  as a signed number; no rows when negative
//   count   in: the colours wanted; out: those obtained. Stays as it is when bits is 0, and the table
//           is then all zeros
RAXEL_EXPORT Handle rlReduceColorTable(Handle bits, uint32_t width, int16_t height, uint16_t *count);

// A new context, and its end: TermColorLib frees what it holds and returns 0, also for the null
// handle; -1 when the handle names no context.
RAXEL_EXPORT Handle InitColorLib(void);
RAXEL_EXPORT int32_t TermColorLib(Handle context);

// Adds a 24-bit picture to a context's histogram and chooses a table from all that was added.
//   rows     the picture, rlBytesPerLine(width, 24) bytes a row
//   width    more than 2147483647 pixels are none
//   height   as a signed number; no rows when negative
//   count    in: the colours wanted; out: those obtained, 0 when no table is built
//   mode     bit 0: build the table; bit 1: keep the histogram after it (without a table it is kept)
//   table    3 bytes for each colour wanted, filled for each one obtained
// Returns 0, or -1 when something is missing or there is no memory.
RAXEL_EXPORT int32_t direct_indexed(const uint8_t *rows, uint32_t width, int16_t height, uint16_t *count,
                                    uint16_t mode, uint8_t *table, Handle context);

// The steps of the median cut. All positions count from the list's first entry.
//
// Measures the box over the entries first to last.
RAXEL_EXPORT void getCRectData(ColorBox *box, const ColorFreq *list, int16_t first, int16_t last);
// Sorts n entries by one channel, ascending: axis 0 red, 1 green, any other blue. The list holds n + 1
// entries: the one past the box takes part in the heap and may change places with one of the box.
RAXEL_EXPORT void HeapSort(ColorFreq *list, int16_t axis, uint16_t n);
// Lets the entry at start sink in the heap that ends at position last, included.
RAXEL_EXPORT void AdjustHeap(ColorFreq *list, int16_t axis, int32_t start, int32_t last);
// Exchanges two entries; does nothing when one is missing.
RAXEL_EXPORT void clrswap(ColorFreq *a, ColorFreq *b);
// The position after which to cut a sorted box. The list is read one entry past the box.
RAXEL_EXPORT int32_t find_median(const ColorFreq *list, const ColorBox *box);
// Splits the box of a slot into the two lowest free slots, frees its slot and adds 1 to *nBoxes.
//   boxes, states  colorCount of each
// Returns 1, or 0 when an argument is null or the slot is none of colorCount.
RAXEL_EXPORT int32_t split(ColorBox *boxes, uint16_t slot, uint16_t median, uint16_t *nBoxes,
                           uint16_t *states, const ColorFreq *list, uint16_t colorCount);
// The slot of the box with the most pixels that can be split, the lowest of equals; 0 when none can.
RAXEL_EXPORT int32_t GetMaxHistSum(const ColorBox *boxes, const uint16_t *states, uint16_t colorCount);

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

// ---- Dithering by error diffusion, to depths of 1, 4 and 8 bits

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

// ---- Tables and the diagnostics level

// i - 128 limited to 0..255: read from index 128 on, it clamps sums from -128 to 383.
RAXEL_EXPORT extern const uint8_t BOUNDARY_CHK[512];
// What bilevel pictures are dithered to: eight greys, red, green, blue each.
RAXEL_EXPORT extern const uint8_t MonoTable[8][3];
// Appended to every table chosen for dithering: white, yellow, magenta, cyan, red, green, blue, black.
RAXEL_EXPORT extern const uint8_t must_have_colors[8][3];

// How much the library prints of what it does: reduction, conversion and pixels on standard error,
// dithering on standard output. Stored in 16 bits and compared as signed.
//   0        nothing
//   below 3  summaries, and "." for each row
//   3        summaries
//   above 3  summaries, and the place of every pixel that is set, which takes the slow road
RAXEL_EXPORT extern uint16_t _debug_color_res;

RAXEL_END

#endif
