// SPDX-License-Identifier: MIT
// Choosing a colour table for a picture by median cut; src/color/README.md explains it. Pictures and tables
// are those of raxel/color.h.
#ifndef RAXEL_MEDIAN_CUT_H
#define RAXEL_MEDIAN_CUT_H

#include "raxel/types.h"

RAXEL_BEGIN

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
// Lets the entry at start sink in the heap that ends at position last, included.
RAXEL_EXPORT void AdjustHeap(ColorFreq *list, int16_t axis, int32_t start, int32_t last);
// The position after which to cut a sorted box. The list is read one entry past the box.
RAXEL_EXPORT int32_t find_median(const ColorFreq *list, const ColorBox *box);
// The slot of the box with the most pixels that can be split, the lowest of equals; 0 when none can.
RAXEL_EXPORT int32_t GetMaxHistSum(const ColorBox *boxes, const uint16_t *states, uint16_t colorCount);
#ifndef RAXEL_NO_SHORT_NAMES  // HeapSort, clrswap, split
// Sorts n entries by one channel, ascending: axis 0 red, 1 green, any other blue. The list holds n + 1
// entries: the one past the box takes part in the heap and may change places with one of the box.
RAXEL_EXPORT void HeapSort(ColorFreq *list, int16_t axis, uint16_t n);
// Exchanges two entries; does nothing when one is missing.
RAXEL_EXPORT void clrswap(ColorFreq *a, ColorFreq *b);
// Splits the box of a slot into the two lowest free slots, frees its slot and adds 1 to *nBoxes.
//   boxes, states  colorCount of each
// Returns 1, or 0 when an argument is null or the slot is none of colorCount.
RAXEL_EXPORT int32_t split(ColorBox *boxes, uint16_t slot, uint16_t median, uint16_t *nBoxes,
                           uint16_t *states, const ColorFreq *list, uint16_t colorCount);
#endif
RAXEL_END

#endif
