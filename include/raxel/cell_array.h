// SPDX-License-Identifier: MIT
// Cell arrays of the raster driver (raxel/driver.h): pixels, framed by begin and end raster or each a
// picture of its own.
//
// Rows take ((w * bits + 7) / 8) bytes, rounded up to a multiple of 4, where w is the window's width in
// pixels, |x2 - x1| + 1 of the integer parts, at most the record's columns. The buffer's first row is the
// lowest of the picture, and 24-bit pixels are blue, green, red, as in raxel/filter.h.
#ifndef RAXEL_CELL_ARRAY_H
#define RAXEL_CELL_ARRAY_H

#include "raxel/driver_codes.h"
#include "raxel/types.h"

RAXEL_BEGIN

// 1034 [body]   16 i32 primitive, 20 u32 n, 24 n points of 3 f64, then a u32 length and the data
//   -5  begin raster. Data, at least 28 bytes:
//          0 u32 columns, 4 u32 rows, 8 i32 precision, 14 u16 flags
//       Precision is bits per pixel; -32768 means 1, any other negative value its absolute value. Less
//       data, and more than 5592405 points, is a call to ignore.
//   -6  end raster: writes the collected rows through OutputPicture, with the colour table as the palette
//       below 24 bits. Progress goes to the settings record's own lpStatus, which ExportCellData and
//       initdvr set: never to RAXEL_START_STATUS of the initialisation record. RESULT 300 without a setup
//       or a palette. What OutputPicture answers is not passed on.
// Other primitives do nothing.
RAXEL_EXPORT HostWord d_gdp(HostWord record);

// 1033 [body]   24 f64 first corner's y, 48 f64 second corner's y, 88 u32 columns, 92 u32 rows,
//               96 i32 precision, 102 the rows; with a negative precision a pointer to them
// Between begin and end raster the rows are collected; rows beyond the announced ones are dropped. Outside
// such a frame the array is a picture of its own and written at once. When the corners' y and the window's
// run in opposite directions the rows go bottom-up: the first lands in buffer row height - 2, and the last
// buffer row is never filled. Wider 24-bit source rows carry all their columns; rows of other depths are as
// wide as w. After each 24-bit row nColorOp is applied to it. The pointer takes sizeof(void *) bytes; a
// null one copies nothing and moves no counter. RESULT 300 without a buffer or a setup.
RAXEL_EXPORT HostWord d_ca(HostWord record);

// Writes a complete picture from one buffer to the open output. `pixels` is borrowed: bottom row first,
// rows padded to a multiple of 4 bytes. Where nothing has to be converted or filled up the writer works in
// it, whatever the kind (a RaxelRasterKind): it swaps, inverts and maps the caller's own pixels.
// `resolution` is dots per inch of the window, 0: none. Reports 20 percent for each conversion and at
// least 50 before writing; a host that answers stop gets no file structure. Pushes 300 without a setup, and
// when a callback destroys it. A target size that no block holds is not written.
RAXEL_EXPORT void RasterWriteCellData(Handle pixels, uint32_t width, uint32_t rows, uint32_t resolution,
                                      uint32_t bitsPerPixel, int32_t kind);

RAXEL_END

#endif
