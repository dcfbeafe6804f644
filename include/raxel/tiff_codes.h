// SPDX-License-Identifier: MIT
// Numbers of the TIFF format that the writer's state holds. Source: TIFF Revision 6.0 (Adobe, 1992).
#ifndef RAXEL_TIFF_CODES_H
#define RAXEL_TIFF_CODES_H

// nCompression, tag 259.
enum RaxelTiffCompression {
  RAXEL_TIFF_UNCOMPRESSED = 1,  // packed rows
  RAXEL_TIFF_HUFFMAN = 2,       // CCITT modified Huffman
  RAXEL_TIFF_T4 = 3,            // CCITT T.4, Group 3
  RAXEL_TIFF_T6 = 4,            // CCITT T.6, Group 4
  RAXEL_TIFF_LZW = 5,           // LZW
  RAXEL_TIFF_PACKBITS = 32773   // PackBits
};

// nPhotometric, tag 262.
enum RaxelTiffPhotometric {
  RAXEL_TIFF_BLACK_IS_ZERO = 1,  // levels from black up: bilevel and grey
  RAXEL_TIFF_RGB = 2,            // red, green, blue
  RAXEL_TIFF_PALETTE = 3         // indices into tag 320
};

// nWriterKind.
enum RaxelWriterKind {
  RAXEL_WRITER_ONE_STRIP = 3,  // WriteTiffDir sets nStripsDown to 1; BeginCellBitmap never chooses it
  RAXEL_WRITER_CELLS = 5       // what BeginCellBitmap sets
};

#endif
