// The colour library: pixel access, median cut, depth conversion, error diffusion, scaling, CMYK.
//
// A picture travels as separate arguments: a handle of its rows, width, height, bits per pixel and
// a handle of its colour table (3-byte entries red, green, blue; the count is kept apart). Rows are
// padded to a multiple of 4 bytes.
#ifndef RAXEL_COLOR_H
#define RAXEL_COLOR_H

#include "raxel/types.h"

RAXEL_BEGIN

// One entry of the list of distinct 15-bit colours.
typedef struct ColorFreq {
  uint16_t color15;  // red5 << 10 | green5 << 5 | blue5
  uint16_t count;    // pixels of that colour, saturated at 65535
} ColorFreq;

// One box of the median cut.
typedef struct ColorBox {
  uint16_t first;
  uint16_t last;
  uint32_t pixelCount;
  uint8_t redMin, redMax;
  uint8_t greenMin, greenMax;
  uint8_t blueMin, blueMax;
  uint8_t axis;  // 0 red, 1 green, 2 blue
  uint8_t redMean, greenMean, blueMean;
} ColorBox;

// The context of a reduction; the host knows it by its handle.
typedef struct ColorLibContext {
  Handle hHistogram;
  Handle hBoxes;
  Handle hBoxOrder;
  uint16_t nDistinct;
  uint16_t nBoxes;
  uint16_t iSplitBox;
  uint16_t iFirst;
  uint16_t iLast;
  uint16_t iMedian;
} ColorLibContext;

RAXEL_EXPORT int32_t rlBytesPerLine(uint32_t width, int16_t depth);
RAXEL_EXPORT uint32_t rlCalcNewSize(uint32_t width, uint32_t height, int16_t depth);
RAXEL_EXPORT uint32_t rlGetPixel(const uint8_t *bits, int32_t bytesPerLine, uint32_t x, uint32_t y,
                                 int16_t depth);
RAXEL_EXPORT int32_t rlSetPixel(uint8_t *bits, int32_t bytesPerLine, uint32_t x, uint32_t y, int16_t depth,
                                uint32_t value, const uint32_t *map, const uint8_t *table, uint16_t count);
RAXEL_EXPORT int32_t rlNearestRGBIndex(int16_t red, int16_t green, int16_t blue, const uint8_t *table,
                                       int16_t count);
RAXEL_EXPORT Handle rlBuildColormap(const uint8_t *sourceTable, int16_t sourceDepth, const uint8_t *table,
                                    int16_t depth, uint16_t count);
RAXEL_EXPORT int32_t rlFreeColormap(Handle map);
RAXEL_EXPORT Handle rlGetMemory(int16_t elementSize, uint32_t elementCount);
RAXEL_EXPORT void *rlLockMemory(Handle handle);
RAXEL_EXPORT int32_t rlUnlockMemory(Handle handle);
RAXEL_EXPORT int32_t rlFreeNewData(Handle handle);
RAXEL_EXPORT Handle rlPointertoHandle(const void *pointer);

RAXEL_EXPORT Handle rlReduceColorTable(Handle bits, uint32_t width, int16_t height, uint16_t *count);
RAXEL_EXPORT Handle InitColorLib(void);
RAXEL_EXPORT int32_t TermColorLib(Handle context);
RAXEL_EXPORT int32_t direct_indexed(const uint8_t *rows, int16_t width, int16_t height, uint16_t *count,
                                    uint16_t mode, uint8_t *table, Handle context);
RAXEL_EXPORT void getCRectData(ColorBox *box, const ColorFreq *list, int16_t first, int16_t last);
RAXEL_EXPORT void HeapSort(ColorFreq *list, int16_t axis, uint16_t n);
RAXEL_EXPORT void AdjustHeap(ColorFreq *list, int16_t axis, int16_t start, int16_t last);
RAXEL_EXPORT void clrswap(ColorFreq *a, ColorFreq *b);
RAXEL_EXPORT int32_t find_median(const ColorFreq *list, const ColorBox *box);
RAXEL_EXPORT int32_t split(ColorBox *boxes, uint16_t slot, uint16_t median, uint16_t *nBoxes,
                           uint16_t *states, const ColorFreq *list, uint16_t colorCount);
RAXEL_EXPORT int32_t GetMaxHistSum(const ColorBox *boxes, const uint16_t *states, uint16_t colorCount);

RAXEL_EXPORT Handle rlChangeColorResolution(Handle bits, uint32_t width, uint32_t height,
                                            int16_t sourceDepth, int16_t depth, Handle *table);
RAXEL_EXPORT Handle rlConvertBitmapDepth(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                         int16_t depth, Handle sourceTable, Handle table, uint16_t count);

RAXEL_EXPORT Handle rlDitherBitmap(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                   int16_t depth, Handle sourceTable, Handle *table);
RAXEL_EXPORT void rlDitherGetCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                int16_t depth, Handle sourceTable, Handle *table, uint16_t *count);
RAXEL_EXPORT Handle rlDitherGivenCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                                    int16_t depth, Handle sourceTable, Handle table, uint16_t count);
RAXEL_EXPORT void _rlDitherOneLine(uint8_t *current, uint8_t *next, const uint8_t *table, uint32_t width,
                                   int16_t count);
RAXEL_EXPORT void rev_rgb(uint32_t width, uint8_t *row, int32_t mode);

RAXEL_EXPORT Handle rlShrinkBitmap(Handle bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight,
                                   uint32_t width, uint32_t height);
RAXEL_EXPORT Handle rlStretchBitmap(Handle bits, int16_t depth, uint32_t sourceWidth, uint32_t sourceHeight,
                                    uint32_t width, uint32_t height);
RAXEL_EXPORT int32_t Shrink(const uint8_t *source, uint8_t *destination, int16_t depth,
                            uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width, uint32_t height);
RAXEL_EXPORT int32_t Stretch(const uint8_t *source, uint8_t *destination, int16_t depth,
                             uint32_t sourceWidth, uint32_t sourceHeight, uint32_t width, uint32_t height);
RAXEL_EXPORT int32_t ShrinkX(const uint8_t *source, uint8_t *destination, int16_t depth,
                             uint32_t sourceWidth, uint32_t rows, uint32_t width);
RAXEL_EXPORT int32_t StretchX(const uint8_t *source, uint8_t *destination, int16_t depth,
                              uint32_t sourceWidth, uint32_t rows, uint32_t width);
RAXEL_EXPORT Handle rlFlipBitmap(Handle bits, int16_t depth, uint32_t width, uint32_t height,
                                 uint16_t leftRight, uint16_t topBottom);

RAXEL_EXPORT void rlRGB4toCMYK(Handle bits, uint32_t width, uint32_t height);
RAXEL_EXPORT void rlCMYKtoRGB(Handle bits, uint32_t width, uint32_t height);
RAXEL_EXPORT void rlALPHAtoRGB(Handle bits, uint32_t width, uint32_t height);

RAXEL_EXPORT extern const uint8_t BOUNDARY_CHK[512];
RAXEL_EXPORT extern const uint8_t MonoTable[8][3];
RAXEL_EXPORT extern const uint8_t must_have_colors[8][3];

// 0 is silent; any other value prints what the library does (raised by a host that looks for trouble).
// Stored in 16 bits and compared as signed.
RAXEL_EXPORT extern uint16_t _debug_color_res;

RAXEL_END

#endif
