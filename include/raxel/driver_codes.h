// SPDX-License-Identifier: MIT
// The numbers of the raster driver: opcodes, states, primitives and kinds of rasters.
//
// The operations of its entries are those of raxel/filter_codes.h: start with RAXEL_ENTRY_START, send
// function records with RAXEL_ENTRY_EXECUTE, end with RAXEL_ENTRY_END.
#ifndef RAXEL_DRIVER_CODES_H
#define RAXEL_DRIVER_CODES_H

// nState. One is set at a time; the brackets of raxel/driver.h name them.
enum RaxelDeviceState {
  RAXEL_STATE_INITIALISED = 1,  // the device is closed
  RAXEL_STATE_OPEN = 2,         // the device is open
  RAXEL_STATE_PICTURE = 4,      // a picture has begun
  RAXEL_STATE_BODY = 8,         // its body has begun
  RAXEL_STATE_ENDED = 16        // it has ended
};

// Opcodes, the first 32-bit word of a function record, with the function that each leads to
// (raxel/driver.h). The driver accepts and ignores some forty more.
enum RaxelOpcode {
  RAXEL_OP_OPEN_DEVICE = 1,         // d_opdv
  RAXEL_OP_CLOSE_DEVICE = 2,        // d_cldv
  RAXEL_OP_BEGIN_PICTURE = 3,       // d_begp
  RAXEL_OP_BEGIN_BODY = 4,          // d_begpb
  RAXEL_OP_END_PICTURE = 5,         // d_endp
  RAXEL_OP_WINDOW = 518,            // ds_dvwn
  RAXEL_OP_BACKGROUND = 519,        // ds_bgc
  RAXEL_OP_VIEWPORT = 520,          // ds_dvvp
  RAXEL_OP_VIEWPORT_MODE = 521,     // ds_vpsm
  RAXEL_OP_INQUIRE_VIEWPORT = 765,  // dq_dvvp
  RAXEL_OP_INQUIRE_WINDOW = 767,    // dq_dvwn
  RAXEL_OP_AXC = 771,               // ds_axc, without effect
  RAXEL_OP_TRAN = 772,              // ds_tran, without effect
  RAXEL_OP_CLPR = 773,              // ds_clpr, without effect
  RAXEL_OP_CLIP = 774,              // ds_clip, without effect
  RAXEL_OP_CELL_ARRAY = 1033,       // d_ca
  RAXEL_OP_PRIMITIVE = 1034,        // d_gdp
  RAXEL_OP_COLORS = 1314,           // ds_ct
  RAXEL_OP_NEVER_SUPPORTED = 1323,  // ignored, and InquireSupport answers 0 without looking
  RAXEL_OP_DM = 2310,               // ds_dm, without effect
  RAXEL_OP_POP_ERRORS = 3842,       // d_popes
  RAXEL_OP_EMPTY_ERRORS = 3843      // d_empes
};

// Primitives of RAXEL_OP_PRIMITIVE. d_gdp ignores all others.
enum RaxelPrimitive {
  RAXEL_PRIMITIVE_BEGIN_RASTER = -5,  // rows are collected from here on
  RAXEL_PRIMITIVE_END_RASTER = -6     // the collected rows are written
};

// Colour precisions of rasters and cell arrays that are not simply bits per pixel.
enum RaxelPrecision {
  RAXEL_PRECISION_BILEVEL = -32768  // 1 bit; any other negative number means its absolute value
};

// Modes of RAXEL_OP_VIEWPORT_MODE. The driver ignores all others.
enum RaxelViewportMode {
  RAXEL_VIEWPORT_PLAIN = 0,   // no resolution
  RAXEL_VIEWPORT_METRIC = 1,  // the resolution follows from the millimetres of a unit
  RAXEL_VIEWPORT_OTHER = 2    // no resolution either
};

// What InquireSupport answers.
enum RaxelSupport {
  RAXEL_SUPPORT_NONE = 0,  // not in this state, or only accepted and ignored
  RAXEL_SUPPORT_FULL = 2   // carried out
};

// What the pixels given to RasterWriteCellData are.
enum RaxelRasterKind {
  RAXEL_RASTER_INDEXED = 0,  // indices into the colour table
  RAXEL_RASTER_RGB = 1,      // 24 bits: blue, green, red
  RAXEL_RASTER_CMYK = 2,     // 32 bits, converted in place
  RAXEL_RASTER_ALPHA = 3     // 32 bits: colour with alpha, converted in place
};

#endif
