// SPDX-License-Identifier: MIT
// The numbers behind the export settings: which escape changes what, what it takes, and what the
// settings record and the profile then hold.
//
// Four of the settings have two sets of numbers. RAXEL_ASK_... is what a host sends with an escape (and
// gets back from one); RAXEL_STORED_... is what the record and the profile hold for it:
//
//   const int32_t rgb = RAXEL_ASK_MODE_RGB;                             // 146
//   xEscapeSetup(setup, RAXEL_ESCAPE_SET_BITMAP_MODE, 4, &rgb, NULL, 1);
//   // record->nBitmapMode is now RAXEL_STORED_MODE_RGB, and the profile says "Bitmap Mode=222"
#ifndef RAXEL_SETTING_CODES_H
#define RAXEL_SETTING_CODES_H

// Numbers of the escapes of xEscapeSetup (raxel/settings.h). "Saves" names the profile key that a save
// writes.
enum RaxelEscape {
  RAXEL_ESCAPE_SET_COLOR_MODE = 1,        // input one of RaxelAskColors; saves "Color Mode"
  RAXEL_ESCAPE_SET_BITMAP_MODE = 9,       // input one of RaxelAskMode; saves "Bitmap Mode"
  RAXEL_ESCAPE_SET_COMPRESSION = 10,      // input one of RaxelAskCompress; saves "Compression Mode"
  RAXEL_ESCAPE_SET_X_RESOLUTION = 11,     // input 32..400 dots per inch; saves "X Resolution"
  RAXEL_ESCAPE_SET_Y_RESOLUTION = 12,     // the same for rows; saves "Y Resolution"
  RAXEL_ESCAPE_SET_WIDTH = 13,            // input a double, 0.03125..22.0 inches; saves "Width"
  RAXEL_ESCAPE_SET_HEIGHT = 14,           // the same for the height; saves "Height"
  RAXEL_ESCAPE_GET_RESOLUTION = 16,       // output two i32: X and Y resolution
  RAXEL_ESCAPE_GET_SIZE = 17,             // output two doubles: width and height
  RAXEL_ESCAPE_SET_RESOLUTION_MODE = 18,  // input one of RaxelAskResolution; never saved
  RAXEL_ESCAPE_SET_SIZE_MODE = 19,        // input one of RaxelAskSize; never saved
  RAXEL_ESCAPE_SET_USER_DATA = 25,        // the argument `input` itself is kept for the host
  RAXEL_ESCAPE_GET_USER_DATA = 26,        // output one u32: its low 32 bits
  RAXEL_ESCAPE_GET_RASTER_INFO = 56,      // input a RasterPictureInfo, output a RasterInfoResult
  RAXEL_ESCAPE_GET_COLOR_MODE = 57,       // output one i32 of RaxelAskColors
  RAXEL_ESCAPE_SET_OUTPUT_PROC = 81       // the argument `input` itself is the host's stream procedure
};

// What xEscapeSetup answers, besides RAXEL_REFUSED (raxel/types.h).
enum RaxelEscapeAnswer {
  RAXEL_ESCAPE_UNKNOWN = 0,  // no such escape
  RAXEL_ESCAPE_DONE = 1      // carried out
};

// ---- What is done to the colours of a picture

// Colour treatments, as the raster driver (nColorOp) and rev_rgb (raxel/color.h) count them.
typedef enum RaxelTreatment {
  RAXEL_TREAT_NONE,         // as they are
  RAXEL_TREAT_INVERT,       // every channel 255 - v
  RAXEL_TREAT_INVERT_GREY,  // the same, only for pixels whose channels lie pairwise within 10
  RAXEL_TREAT_GREY,         // (3 red + 6 green + blue) / 10 in every channel
  RAXEL_TREAT_GREY_INVERT,  // 255 less that
  RAXEL_TREATMENTS          // how many there are
} RaxelTreatment;

// Colour modes as escapes 1 and 57 number them: RAXEL_ASK_COLORS plus the treatment.
enum RaxelAskColors {
  RAXEL_ASK_COLORS = 101,              // as they are
  RAXEL_ASK_COLORS_INVERT = 102,       // RAXEL_TREAT_INVERT
  RAXEL_ASK_COLORS_INVERT_GREY = 103,  // RAXEL_TREAT_INVERT_GREY
  RAXEL_ASK_COLORS_GREY = 104,         // RAXEL_TREAT_GREY
  RAXEL_ASK_COLORS_GREY_INVERT = 105   // RAXEL_TREAT_GREY_INVERT
};

// The same in nColorMode and under "Color Mode".
enum RaxelStoredColors {
  RAXEL_STORED_COLORS = 103,              // as they are (default)
  RAXEL_STORED_COLORS_INVERT = 104,       // RAXEL_TREAT_INVERT
  RAXEL_STORED_COLORS_INVERT_GREY = 105,  // RAXEL_TREAT_INVERT_GREY
  RAXEL_STORED_COLORS_GREY = 106,         // RAXEL_TREAT_GREY
  RAXEL_STORED_COLORS_GREY_INVERT = 107   // RAXEL_TREAT_GREY_INVERT
};

// ---- What the file's pixels are

// Bitmap modes as escape 9 numbers them.
enum RaxelAskMode {
  RAXEL_ASK_MODE_BILEVEL = 140,   // 1 bit, 2 colours
  RAXEL_ASK_MODE_GREY16 = 141,    // 4 bits, 16 grey levels
  RAXEL_ASK_MODE_GREY256 = 142,   // 8 bits, 256 grey levels
  RAXEL_ASK_MODE_COLOR8 = 143,    // 4 bits, 8 fixed colours
  RAXEL_ASK_MODE_COLOR16 = 144,   // 4 bits, 16 colours
  RAXEL_ASK_MODE_COLOR256 = 145,  // 8 bits, 256 colours
  RAXEL_ASK_MODE_RGB = 146        // 24 bits: red, green, blue
};

// The same in nBitmapMode and under "Bitmap Mode". 220 is not used.
enum RaxelStoredMode {
  RAXEL_STORED_MODE_BILEVEL = 215,   // 1 bit, 2 colours
  RAXEL_STORED_MODE_GREY16 = 216,    // 4 bits, 16 grey levels
  RAXEL_STORED_MODE_GREY256 = 217,   // 8 bits, 256 grey levels
  RAXEL_STORED_MODE_COLOR8 = 218,    // 4 bits, 8 fixed colours
  RAXEL_STORED_MODE_COLOR16 = 219,   // 4 bits, 16 colours
  RAXEL_STORED_MODE_COLOR256 = 221,  // 8 bits, 256 colours (default)
  RAXEL_STORED_MODE_RGB = 222        // 24 bits: red, green, blue
};

// ---- How they are coded, and how they lie in the file

// Compressions as escape 10 numbers them.
enum RaxelAskCompress {
  RAXEL_ASK_COMPRESS_NONE = 150,      // as they are
  RAXEL_ASK_COMPRESS_PACKBITS = 151,  // PackBits
  RAXEL_ASK_COMPRESS_HUFFMAN = 152,   // CCITT modified Huffman
  RAXEL_ASK_COMPRESS_LZW = 153,       // LZW
  RAXEL_ASK_COMPRESS_T4 = 154,        // CCITT T.4, Group 3
  RAXEL_ASK_COMPRESS_T6 = 155         // CCITT T.6, Group 4
};

// The same in nCompressionMode and under "Compression Mode". 228 and every other number: none.
enum RaxelStoredCompress {
  RAXEL_STORED_COMPRESS_NONE = 224,      // as they are (default)
  RAXEL_STORED_COMPRESS_PACKBITS = 225,  // PackBits
  RAXEL_STORED_COMPRESS_HUFFMAN = 226,   // CCITT modified Huffman
  RAXEL_STORED_COMPRESS_LZW = 227,       // LZW
  RAXEL_STORED_COMPRESS_T4 = 229,        // CCITT T.4, Group 3
  RAXEL_STORED_COMPRESS_T6 = 230         // CCITT T.6, Group 4
};

// wLayoutMode. No escape sets it: a host writes it into the record, or the profile holds it under the
// key "Not Defined".
enum RaxelStoredLayout {
  RAXEL_STORED_LAYOUT_TILES = 771,  // tiles of 512 by 128 pixels
  RAXEL_STORED_LAYOUT_STRIPS = 772  // strips (default)
};

// ---- Whose resolution and whose size

// Resolution modes as escape 18 numbers them.
enum RaxelAskResolution {
  RAXEL_ASK_RESOLUTION_DISPLAY,  // the display's
  RAXEL_ASK_RESOLUTION_PRINTER,  // the printer's
  RAXEL_ASK_RESOLUTION_PICTURE,  // the picture's own
  RAXEL_ASK_RESOLUTION_USER      // nXResolution by nYResolution
};

// The same in nResolutionMode and under "Resolution Mode".
enum RaxelStoredResolution {
  RAXEL_STORED_RESOLUTION_DISPLAY = 307,  // the display's
  RAXEL_STORED_RESOLUTION_PRINTER = 308,  // the printer's; the display's without a printer
  RAXEL_STORED_RESOLUTION_PICTURE = 309,  // the picture's own (default)
  RAXEL_STORED_RESOLUTION_USER = 310      // nXResolution by nYResolution
};

// Size modes as escape 19 numbers them.
enum RaxelAskSize {
  RAXEL_ASK_SIZE_DISPLAY,  // the display's
  RAXEL_ASK_SIZE_PRINTER,  // the printer's page
  RAXEL_ASK_SIZE_PICTURE,  // the picture's own
  RAXEL_ASK_SIZE_USER      // dWidth by dHeight
};

// The same in nSizeMode and under "Size Mode".
enum RaxelStoredSize {
  RAXEL_STORED_SIZE_DISPLAY = 600,  // the display's
  RAXEL_STORED_SIZE_PRINTER = 601,  // the printer's page; the display's size without a printer
  RAXEL_STORED_SIZE_PICTURE = 602,  // the picture's own (default)
  RAXEL_STORED_SIZE_USER = 603      // dWidth by dHeight
};

// nLineMode, which the library only keeps and tells.
enum RaxelStoredLines {
  RAXEL_STORED_LINES = 119  // what a profile without the key stands for
};

#endif
