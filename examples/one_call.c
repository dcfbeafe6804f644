// SPDX-License-Identifier: MIT
/* A host that hands over a finished picture in one call.

     one_call path/to/raxel.so picture.tif

   The picture is a 64 by 48 colour ramp at 96 dots per inch, written with PackBits. */
#include "host.h"

enum { WIDTH = 64, HEIGHT = 48, DPI = 96 };

/* The host's status callback: percentages arrive as value d. Answering 1 asks to stop. */
static int32_t on_status(HostWord context, HostWord a, HostWord b, HostWord c, HostWord d, HostWord e,
                         HostWord f) {
  (void)context, (void)c, (void)e, (void)f;
  if (a == 0 && b == 0) printf("%u%%\n", (unsigned)d);
  return 0;
}

int main(int argc, char **argv) {
  Handle (*alloc)(uint32_t, uint32_t);
  void *(*lock)(Handle);
  int32_t (*release)(Handle);
  Handle (*create_setup)(HostWord, const char *, const char *, const char *);
  int32_t (*escape_setup)(Handle, int32_t, int32_t, const void *, void *, int32_t);
  int32_t (*destroy_setup)(Handle);
  uint32_t (*export_cells)(const char *, PictureRecord *, const void *, HostWord *);
  if (argc != 3) fail("usage: one_call LIBRARY OUTPUT");
  open_library(argv[1]);
  FIND(alloc, "GlobalAlloc");
  FIND(lock, "GlobalLock");
  FIND(release, "GlobalFree");
  FIND(create_setup, "CreateSetup");
  FIND(escape_setup, "xEscapeSetup"); /* the table's row "EscapeSetup" */
  FIND(destroy_setup, "DestroySetup");
  FIND(export_cells, "ExportCellData");

  /* Settings: no profile, then RGB and PackBits. */
  Handle setup = create_setup(0, "", "", "");
  int32_t rgb = RAXEL_ASK_MODE_RGB, packbits = RAXEL_ASK_COMPRESS_PACKBITS;
  if (escape_setup(setup, RAXEL_ESCAPE_SET_BITMAP_MODE, 4, &rgb, NULL, 0) != RAXEL_ESCAPE_DONE)
    fail("bitmap mode refused");
  if (escape_setup(setup, RAXEL_ESCAPE_SET_COMPRESSION, 4, &packbits, NULL, 0) != RAXEL_ESCAPE_DONE)
    fail("compression refused");

  /* Pixels in handle memory: bottom row first, blue, green, red, rows padded to 4 bytes. The library
     works in place, so the block is fresh for every export. */
  uint32_t stride = (WIDTH * 3 + 3) / 4 * 4;
  Handle bits = alloc(RAXEL_MOVEABLE_ZERO, stride * HEIGHT);
  uint8_t *rows = lock(bits);
  for (uint32_t y = 0; y < HEIGHT; ++y) {
    uint8_t *row = rows + (HEIGHT - 1 - y) * stride;
    for (uint32_t x = 0; x < WIDTH; ++x) {
      row[3 * x] = 128;
      row[3 * x + 1] = (uint8_t)(y * 5);
      row[3 * x + 2] = (uint8_t)(x * 4);
    }
  }

  PictureRecord picture;
  memset(&picture, 0, sizeof picture);
  picture.nBits = 24;
  picture.nWidth = WIDTH;
  picture.nHeight = HEIGHT;
  picture.hBits = bits;

  /* The call's own numbers: 28 bytes at fixed offsets. Extents are in pixels, DPI of them an inch. */
  uint8_t info[EXPORT_CELL_INFO_BYTES] = {0};
  uint16_t dpi = DPI;
  int32_t extent[2] = {WIDTH, HEIGHT};
  memcpy(info + 2, &dpi, 2);
  memcpy(info + 10, &dpi, 2);
  memcpy(info + 12, extent, 8);

  HostWord status[RAXEL_STATUS_WORDS] = {0};
  status[RAXEL_STATUS_CALLBACK] = (HostWord)&on_status;
  HostWord record[RAXEL_RECORD_WORDS] = {0};
  record[RAXEL_RECORD_SETUP] = setup;
  record[RAXEL_RECORD_STATUS] = (HostWord)status;

  uint32_t result = export_cells(argv[2], &picture, info, record);
  release(bits);
  destroy_setup(setup);
  if (result != RAXEL_OK) fail("cannot write the file");
  return 0;
}
